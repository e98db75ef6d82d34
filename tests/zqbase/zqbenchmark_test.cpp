// ZqBenchmark::RunBenchmark with scripted cases whose times are given, not measured: how often each
// case runs, what a failing or unavailable case does to the result, and the ratios of the dump.

#include "zqbase/zqbenchmark.h"

#include <gtest/gtest.h>
#include <string>
#include <vector>

namespace
{
struct SCase
{
    const wchar_t* name;
    unsigned int group;
    std::vector<double> samples; // seconds of successive runs; the last one repeats
    int failOnRun = -1;          // the run (0-based) that returns false
    bool notAvailable = false;
};

class ScriptedBenchmark : public ZqBenchmark
{
public:
    ScriptedBenchmark(std::vector<SCase> cases, unsigned int iterations)
        : m_cases(std::move(cases)), m_iterations(iterations), m_calls(m_cases.size(), 0)
    {
    }

    std::vector<std::string> lines;
    std::vector<int> Calls() const { return m_calls; }
    int beforeRuns = 0;
    std::vector<bool> afterRuns;

protected:
    unsigned int getBenchmarkCount() const override { return static_cast<unsigned int>(m_cases.size()); }
    CString getBenchmarkName(unsigned int index) override { return m_cases[index].name; }
    unsigned int getGroup(unsigned int index) const override { return m_cases[index].group; }
    unsigned int getIterationCount() const override { return m_iterations; }
    bool runBenchmark(unsigned int index, SBenchmarkData& data) override
    {
        const SCase& c = m_cases[index];
        const int run = m_calls[index]++;
        if (c.notAvailable)
        {
            data.notAvailable = true;
            return true;
        }
        if (run == c.failOnRun)
            return false;
        if (!c.samples.empty())
            data.AddSample(c.samples[std::min<std::size_t>(run, c.samples.size() - 1)]);
        return true;
    }
    void dump(const CString& text) override { lines.push_back(CbWideToUtf8(text.Std())); }
    void onBeforeRun() override { ++beforeRuns; }
    void onAfterRun(bool success) override { afterRuns.push_back(success); }

private:
    std::vector<SCase> m_cases;
    unsigned int m_iterations;
    std::vector<int> m_calls;
};

// The dump line of case index (the first line is the header).
const std::string& lineOf(const ScriptedBenchmark& benchmark, std::size_t index)
{
    return benchmark.lines.at(index + 1);
}

bool contains(const std::string& text, const std::string& part)
{
    return text.find(part) != std::string::npos;
}
} // namespace

TEST(ZqBenchmarkRun, EveryCaseRunsTheIterationCountAndHooksBracketTheRun)
{
    ScriptedBenchmark benchmark({{L"A", 0, {1e-3}}, {L"B", 0, {2e-3}}}, 5);
    EXPECT_TRUE(benchmark.RunBenchmark());
    EXPECT_EQ(benchmark.Calls(), (std::vector<int>{5, 5}));
    EXPECT_EQ(benchmark.beforeRuns, 1);
    EXPECT_EQ(benchmark.afterRuns, std::vector<bool>{true});
    ASSERT_EQ(benchmark.lines.size(), 3u);
    EXPECT_TRUE(contains(benchmark.lines[0], "2 Fälle, je 5 Durchläufe")) << benchmark.lines[0];

    // An iteration count of 0 still runs every case once.
    ScriptedBenchmark once({{L"A", 0, {1e-3}}}, 0);
    EXPECT_TRUE(once.RunBenchmark());
    EXPECT_EQ(once.Calls(), std::vector<int>{1});
}

TEST(ZqBenchmarkRun, DumpGivesMinimumMeanMaximumAndRatiosWithinEachGroup)
{
    ScriptedBenchmark benchmark({{L"schnell", 0, {4e-3, 2e-3, 3e-3}},
                                 {L"langsam", 0, {5e-3}},
                                 {L"andere Gruppe", 1, {0.5}},
                                 {L"Gruppe 1, doppelt", 1, {1.0, 1.5}}},
                                3);
    EXPECT_TRUE(benchmark.RunBenchmark());
    ASSERT_EQ(benchmark.lines.size(), 5u);
    EXPECT_EQ(lineOf(benchmark, 0),
              "[00] schnell: min 2.00 ms, mittel 3.00 ms, max 4.00 ms, Gruppe 0, Verhältnis 1.00");
    EXPECT_TRUE(contains(lineOf(benchmark, 1), "Gruppe 0, Verhältnis 2.50")) << lineOf(benchmark, 1);
    EXPECT_TRUE(contains(lineOf(benchmark, 2), "min 500.00 ms")) << lineOf(benchmark, 2);
    EXPECT_TRUE(contains(lineOf(benchmark, 2), "Gruppe 1, Verhältnis 1.00")) << lineOf(benchmark, 2);
    EXPECT_TRUE(
        contains(lineOf(benchmark, 3), "min 1.00 s, mittel 1.33 s, max 1.50 s, Gruppe 1, Verhältnis 2.00"))
        << lineOf(benchmark, 3);
}

TEST(ZqBenchmarkRun, FailingCaseMakesTheRunFailButTheOthersStillRun)
{
    ScriptedBenchmark benchmark({{L"A", 0, {2e-3}}, {L"kaputt", 0, {1e-3}, 1}, {L"C", 0, {4e-3}}}, 3);
    EXPECT_FALSE(benchmark.RunBenchmark());
    // The failing case stops at its failing run; the case after it runs in full.
    EXPECT_EQ(benchmark.Calls(), (std::vector<int>{3, 2, 3}));
    EXPECT_EQ(benchmark.afterRuns, std::vector<bool>{false});
    EXPECT_EQ(lineOf(benchmark, 1), "[01] kaputt: fehlgeschlagen");
    // The failed case's sample does not become the group's reference.
    EXPECT_TRUE(contains(lineOf(benchmark, 0), "Verhältnis 1.00")) << lineOf(benchmark, 0);
    EXPECT_TRUE(contains(lineOf(benchmark, 2), "Verhältnis 2.00")) << lineOf(benchmark, 2);
}

TEST(ZqBenchmarkRun, UnavailableContenderIsReportedNotTimed)
{
    SCase missing{L"CArray", 0, {1e-9}};
    missing.notAvailable = true;
    ScriptedBenchmark benchmark({{L"CbArray", 0, {2e-3}}, missing, {L"std::vector", 0, {3e-3}}}, 4);
    EXPECT_TRUE(benchmark.RunBenchmark());
    EXPECT_EQ(benchmark.Calls(), (std::vector<int>{4, 1, 4}));
    EXPECT_EQ(lineOf(benchmark, 1), "[01] CArray: not available on this platform");
    EXPECT_TRUE(contains(lineOf(benchmark, 0), "Verhältnis 1.00")) << lineOf(benchmark, 0);
    EXPECT_TRUE(contains(lineOf(benchmark, 2), "Verhältnis 1.50")) << lineOf(benchmark, 2);
}

TEST(ZqBenchmarkRun, UnavailableCaseThatTimedSomethingDoesNotSetTheGroupsReference)
{
    // A contender that measured before finding out that it is not available.
    class EarlySample : public ScriptedBenchmark
    {
    public:
        EarlySample() : ScriptedBenchmark({{L"A", 0, {2e-3}}, {L"B", 0, {}}}, 2) {}

    protected:
        bool runBenchmark(unsigned int index, SBenchmarkData& data) override
        {
            if (index == 1)
            {
                data.AddSample(1e-6);
                data.notAvailable = true;
                return true;
            }
            return ScriptedBenchmark::runBenchmark(index, data);
        }
    } benchmark;
    EXPECT_TRUE(benchmark.RunBenchmark());
    EXPECT_TRUE(contains(lineOf(benchmark, 0), "Verhältnis 1.00")) << lineOf(benchmark, 0);
    EXPECT_EQ(lineOf(benchmark, 1), "[01] B: not available on this platform");
}

TEST(ZqBenchmarkRun, CaseWithoutSamplesIsReportedAsUnmeasured)
{
    ScriptedBenchmark benchmark({{L"leer", 0, {}}}, 2);
    EXPECT_TRUE(benchmark.RunBenchmark());
    EXPECT_EQ(lineOf(benchmark, 0), "[00] leer: keine Messung");
}

TEST(ZqBenchmarkRun, FormatTimePicksTheUnit)
{
    EXPECT_EQ(ZqBenchmark::FormatTime(12.34e-6).Std(), L"12.3 µs");
    EXPECT_EQ(ZqBenchmark::FormatTime(4.561e-3).Std(), L"4.56 ms");
    EXPECT_EQ(ZqBenchmark::FormatTime(1.234).Std(), L"1.23 s");
    EXPECT_EQ(ZqBenchmark::FormatTime(1e-3).Std(), L"1.00 ms");
    EXPECT_EQ(ZqBenchmark::FormatTime(0.0).Std(), L"0.0 µs");
}
