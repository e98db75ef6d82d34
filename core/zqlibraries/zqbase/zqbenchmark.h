#pragma once

#include "basepool/cbrtti.h"
#include "basepool/cstring.h"
#include "zqbase/zqbase_export.h"

#include <limits>

// Second base of a test that also times code. A derived class supplies its cases (count, names,
// groups, iteration count) and runs one case per runBenchmark call, timing what it measures itself
// and folding the time into the case's SBenchmarkData (AddSample). RunBenchmark() runs every case
// getIterationCount() times and reports one dump line per case with its minimum, mean and maximum
// and its ratio against the fastest case of its group, so related contenders can be read side by side.
class ZQBASE_API ZqBenchmark
{
public:
    static const CbRTTI RTTI;

    struct SBenchmarkData
    {
        double total = 0.0;                                  // seconds over all runs
        double minimum = std::numeric_limits<double>::max(); // seconds of the fastest run
        double maximum = 0.0;                                // seconds of the slowest run
        double result = 0.0;                                 // what the case computed (a checksum)
        unsigned int runs = 0;
        // Set by a case whose contender does not exist on this platform; it is reported, not timed.
        bool notAvailable = false;

        void AddSample(double seconds)
        {
            total += seconds;
            minimum = seconds < minimum ? seconds : minimum;
            maximum = seconds > maximum ? seconds : maximum;
            ++runs;
        }
        double GetMean() const { return runs ? total / runs : 0.0; }
    };

    ZqBenchmark() = default;
    ZqBenchmark(const ZqBenchmark&) = default;
    ZqBenchmark& operator=(const ZqBenchmark&) = default;
    virtual ~ZqBenchmark();

    // Runs every case; false when any case failed (the failing case reports why).
    bool RunBenchmark();

    unsigned int GetBenchmarkCount() const { return getBenchmarkCount(); }
    CString GetBenchmarkName(unsigned int index) { return getBenchmarkName(index); }
    unsigned int GetGroup(unsigned int index) const { return getGroup(index); }

    // "12.3 µs", "4.56 ms", "1.23 s".
    static CString FormatTime(double seconds);

protected:
    virtual unsigned int getBenchmarkCount() const = 0;
    virtual CString getBenchmarkName(unsigned int index) = 0;
    // Cases of one group are compared with each other; all in group 0 by default.
    virtual unsigned int getGroup(unsigned int index) const;
    virtual unsigned int getIterationCount() const = 0;
    virtual bool runBenchmark(unsigned int index, SBenchmarkData& data) = 0;
    virtual void dump(const CString& text) = 0;
    virtual void onBeforeRun();
    virtual void onAfterRun(bool success);
};
