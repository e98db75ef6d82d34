#pragma once

// Google Benchmark main for peer comparisons: runs the registered benchmarks with the usual console
// table, then prints for each (ours, peer) pair the ratio of their times, so that one run shows how
// our container compares with its standard counterpart on the same machine and load.

#include <benchmark/benchmark.h>

#include <algorithm>
#include <cstdio>
#include <limits>
#include <map>
#include <string>
#include <vector>

struct SBenchRatio
{
    std::string ours;
    std::string peer;
};

class CRatioReporter : public benchmark::ConsoleReporter
{
public:
    void ReportRuns(const std::vector<Run>& runs) override
    {
        ConsoleReporter::ReportRuns(runs);
        for (const Run& run : runs)
            if (!run.error_occurred && run.run_type == Run::RT_Iteration)
            {
                // The fastest repetition: the least disturbed by other work on the machine.
                const std::string name = run.run_name.str();
                auto [it, inserted] = m_times.emplace(name, run.GetAdjustedRealTime());
                if (!inserted)
                    it->second = std::min(it->second, run.GetAdjustedRealTime());
            }
    }
    // Real time of the named benchmark per iteration, or NaN when it did not run.
    double GetTime(const std::string& name) const
    {
        const auto it = m_times.find(name);
        return it == m_times.end() ? std::numeric_limits<double>::quiet_NaN() : it->second;
    }

private:
    std::map<std::string, double> m_times;
};

// ratio = time(ours) / time(peer): below 1 means ours is faster.
inline int RunBenchmarksWithRatios(int argc, char** argv, const std::vector<SBenchRatio>& ratios)
{
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv))
        return 1;
    CRatioReporter reporter;
    benchmark::RunSpecifiedBenchmarks(&reporter);
    std::printf("\n%-48s %-48s %s\n", "ours", "peer", "time ours / time peer");
    for (const SBenchRatio& ratio : ratios)
    {
        const double ours = reporter.GetTime(ratio.ours);
        const double peer = reporter.GetTime(ratio.peer);
        if (ours == ours && peer == peer)
            std::printf("%-48s %-48s %.2f\n", ratio.ours.c_str(), ratio.peer.c_str(), ours / peer);
    }
    benchmark::Shutdown();
    return 0;
}
