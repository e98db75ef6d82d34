#include "zqbase/zqbenchmark.h"

#include <algorithm>
#include <map>
#include <vector>

const CbRTTI ZqBenchmark::RTTI(L"ZqBenchmark", nullptr, nullptr);

ZqBenchmark::~ZqBenchmark() = default;

unsigned int ZqBenchmark::getGroup(unsigned int) const
{
    return 0;
}

void ZqBenchmark::onBeforeRun() {}

void ZqBenchmark::onAfterRun(bool) {}

CString ZqBenchmark::FormatTime(double seconds)
{
    if (seconds < 1e-3)
        return CbFormat(L"%.1f µs", seconds * 1e6);
    if (seconds < 1.0)
        return CbFormat(L"%.2f ms", seconds * 1e3);
    return CbFormat(L"%.2f s", seconds);
}

bool ZqBenchmark::RunBenchmark()
{
    onBeforeRun();
    const unsigned int count = getBenchmarkCount();
    const unsigned int iterations = std::max(1u, getIterationCount());
    std::vector<SBenchmarkData> data(count);
    std::vector<bool> passed(count, true);
    bool success = true;
    for (unsigned int i = 0; i < count; ++i)
    {
        for (unsigned int run = 0; run < iterations && !data[i].notAvailable; ++run)
            if (!runBenchmark(i, data[i]))
            {
                passed[i] = false;
                success = false;
                break;
            }
    }

    std::map<unsigned int, double> fastest;
    for (unsigned int i = 0; i < count; ++i)
        if (passed[i] && data[i].runs && !data[i].notAvailable)
        {
            auto [it, inserted] = fastest.emplace(getGroup(i), data[i].minimum);
            if (!inserted)
                it->second = std::min(it->second, data[i].minimum);
        }

    dump(CbFormat(L"%u Fälle, je %u Durchläufe; Verhältnis = Minimum / schnellstes Minimum der Gruppe", count,
                  iterations));
    for (unsigned int i = 0; i < count; ++i)
    {
        // Names that carry their own "[NN] " index are shown as they are.
        const CString given = getBenchmarkName(i);
        const CString name = given.Left(1) == L"[" ? given : CbFormat(L"[%02u] %s", i, given.GetString());
        const unsigned int group = getGroup(i);
        if (data[i].notAvailable)
            dump(CbFormat(L"%s: not available on this platform", name.GetString()));
        else if (!passed[i])
            dump(CbFormat(L"%s: fehlgeschlagen", name.GetString()));
        else if (data[i].runs == 0)
            dump(CbFormat(L"%s: keine Messung", name.GetString()));
        else
        {
            const double best = fastest[group];
            const double ratio = best > 0.0 ? data[i].minimum / best : 1.0;
            dump(CbFormat(L"%s: min %s, mittel %s, max %s, Gruppe %u, Verhältnis %.2f", name.GetString(),
                          FormatTime(data[i].minimum).GetString(), FormatTime(data[i].GetMean()).GetString(),
                          FormatTime(data[i].maximum).GetString(), group, ratio));
        }
    }
    onAfterRun(success);
    return success;
}
