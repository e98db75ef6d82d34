#pragma once

// The shared main of the peer comparisons in bench/ (one Google Benchmark program per *_bench.cpp).
//
//     BENCHMARK(sumCbArray)->Name("Sum/CbArray");
//     BENCHMARK(sumVector)->Name("Sum/std::vector");
//
//     int main(int argc, char** argv)
//     {
//         return ZqBenchMain(argc, argv, {{"Sum/CbArray", "Sum/std::vector"}});
//     }
//
// ZqBenchMain runs every registered benchmark with Google Benchmark's own options (--benchmark_filter,
// --benchmark_repetitions, ...) and its console table, then prints one line per pair:
//
//     ours                                      peer                                      time ours / peer
//     Sum/CbArray                               Sum/std::vector                           0.93
//
// The ratio is the CPU time per iteration of ours over the peer's, each the fastest of its repetitions:
// below 1 ours is faster. CPU time and the fastest repetition, because the machines these run on are
// shared and other load stretches wall-clock time (the benchmarks here are single-threaded and wait
// for nothing). Pair benchmarks that do the same work per iteration. A pair with a side that did not run
// (filtered out, not built) is left out.
//
// after, when given, runs last, for what a program reports beyond the ratios (accuracy, memory); it reads
// the fastest repetition of a benchmark through reporter.GetTime(name) (CPU seconds per iteration) and
// reporter.GetCounter(name, counter) (a user counter of that repetition, rates per second); both give NaN
// for a benchmark that did not run. Names are the run names the console table shows.

#include <benchmark/benchmark.h>

#include <cmath>
#include <cstdio>
#include <functional>
#include <limits>
#include <map>
#include <string>
#include <vector>

struct ZqBenchPair
{
    std::string ours;
    std::string peer;
};

class ZqBenchReporter : public benchmark::ConsoleReporter
{
public:
    void ReportRuns(const std::vector<Run>& runs) override
    {
        ConsoleReporter::ReportRuns(runs);
        for (const Run& run : runs)
        {
            if (run.error_occurred || run.run_type != Run::RT_Iteration)
                continue;
            const double seconds = run.GetAdjustedCPUTime() / benchmark::GetTimeUnitMultiplier(run.time_unit);
            const auto [it, inserted] = m_fastest.try_emplace(run.run_name.str(), SRun{seconds, {}});
            if (!inserted && it->second.seconds <= seconds)
                continue;
            it->second.seconds = seconds;
            it->second.counters.clear();
            for (const auto& [counter, value] : run.counters)
                it->second.counters[counter] = value.value;
        }
    }

    double GetTime(const std::string& name) const
    {
        const auto it = m_fastest.find(name);
        return it == m_fastest.end() ? std::numeric_limits<double>::quiet_NaN() : it->second.seconds;
    }

    double GetCounter(const std::string& name, const std::string& counter) const
    {
        const auto it = m_fastest.find(name);
        if (it == m_fastest.end())
            return std::numeric_limits<double>::quiet_NaN();
        const auto value = it->second.counters.find(counter);
        return value == it->second.counters.end() ? std::numeric_limits<double>::quiet_NaN() : value->second;
    }

private:
    struct SRun
    {
        double seconds;
        std::map<std::string, double> counters;
    };
    std::map<std::string, SRun> m_fastest;
};

inline int ZqBenchMain(int argc, char** argv, const std::vector<ZqBenchPair>& pairs,
                       const std::function<void(const ZqBenchReporter&)>& after = {})
{
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv))
        return 1;
    ZqBenchReporter reporter;
    benchmark::RunSpecifiedBenchmarks(&reporter);
    bool header = false;
    for (const ZqBenchPair& pair : pairs)
    {
        const double ratio = reporter.GetTime(pair.ours) / reporter.GetTime(pair.peer);
        if (std::isnan(ratio))
            continue;
        if (!header)
            std::printf("\n%-41s %-41s %s\n", "ours", "peer", "time ours / peer");
        header = true;
        std::printf("%-41s %-41s %.2f\n", pair.ours.c_str(), pair.peer.c_str(), ratio);
    }
    if (after)
        after(reporter);
    benchmark::Shutdown();
    return 0;
}
