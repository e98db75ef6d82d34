// Linked lists of 10^6 elements: building through the plex allocator against std::list with the
// default allocator, and walking them. Build times include tearing the list down again, which is
// part of what a node allocator decides.

#include "basepool/cblist.h"

#include "zqbenchmain.h"

#include <cstdint>
#include <list>
#include <numeric>

namespace
{
constexpr std::int64_t kElements = 1000000;

using COptimized = CbListEx<std::int64_t, CbListNodePolicyOptimized<std::int64_t>>;

template <class List> void add(List& list, std::int64_t value)
{
    if constexpr (std::is_same_v<List, std::list<std::int64_t>>)
        list.push_back(value);
    else
        list.AddTail(value);
}

template <class List> void BM_Build(benchmark::State& state)
{
    for (auto _ : state)
    {
        List list;
        for (std::int64_t i = 0; i < kElements; ++i)
            add(list, i);
        benchmark::DoNotOptimize(list);
    }
    state.SetItemsProcessed(state.iterations() * kElements);
}

// The optimised policy's use case: one list filled and emptied again and again.
template <class List> void BM_Refill(benchmark::State& state)
{
    List list;
    for (auto _ : state)
    {
        for (std::int64_t i = 0; i < kElements; ++i)
            add(list, i);
        benchmark::DoNotOptimize(list);
        list.clear();
    }
    state.SetItemsProcessed(state.iterations() * kElements);
}

template <class List> void BM_WalkForward(benchmark::State& state)
{
    List list;
    for (std::int64_t i = 0; i < kElements; ++i)
        add(list, i);
    for (auto _ : state)
        benchmark::DoNotOptimize(std::accumulate(list.begin(), list.end(), std::int64_t(0)));
    state.SetItemsProcessed(state.iterations() * kElements);
}

template <class List> void BM_WalkBackward(benchmark::State& state)
{
    List list;
    for (std::int64_t i = 0; i < kElements; ++i)
        add(list, i);
    for (auto _ : state)
        benchmark::DoNotOptimize(std::accumulate(list.rbegin(), list.rend(), std::int64_t(0)));
    state.SetItemsProcessed(state.iterations() * kElements);
}

class CStandardRefill : public CbList<std::int64_t>
{
public:
    void clear() { RemoveAll(); }
};
class COptimizedRefill : public COptimized
{
public:
    void clear() { RemoveAll(); }
};
} // namespace

BENCHMARK_TEMPLATE(BM_Build, CbList<std::int64_t>)->Unit(benchmark::kMillisecond);
BENCHMARK_TEMPLATE(BM_Build, COptimized)->Unit(benchmark::kMillisecond);
BENCHMARK_TEMPLATE(BM_Build, std::list<std::int64_t>)->Unit(benchmark::kMillisecond);
BENCHMARK_TEMPLATE(BM_Refill, CStandardRefill)->Unit(benchmark::kMillisecond);
BENCHMARK_TEMPLATE(BM_Refill, COptimizedRefill)->Unit(benchmark::kMillisecond);
BENCHMARK_TEMPLATE(BM_Refill, std::list<std::int64_t>)->Unit(benchmark::kMillisecond);
BENCHMARK_TEMPLATE(BM_WalkForward, CbList<std::int64_t>)->Unit(benchmark::kMillisecond);
BENCHMARK_TEMPLATE(BM_WalkForward, COptimized)->Unit(benchmark::kMillisecond);
BENCHMARK_TEMPLATE(BM_WalkForward, std::list<std::int64_t>)->Unit(benchmark::kMillisecond);
BENCHMARK_TEMPLATE(BM_WalkBackward, CbList<std::int64_t>)->Unit(benchmark::kMillisecond);
BENCHMARK_TEMPLATE(BM_WalkBackward, std::list<std::int64_t>)->Unit(benchmark::kMillisecond);

int main(int argc, char** argv)
{
    const std::string standard = "<CbList<std::int64_t>>";
    const std::string optimized = "<COptimized>";
    const std::string peer = "<std::list<std::int64_t>>";
    return ZqBenchMain(argc, argv,
                       {
                           {"BM_Build" + standard, "BM_Build" + peer},
                           {"BM_Build" + optimized, "BM_Build" + peer},
                           {"BM_Refill<CStandardRefill>", "BM_Refill" + peer},
                           {"BM_Refill<COptimizedRefill>", "BM_Refill" + peer},
                           {"BM_WalkForward" + standard, "BM_WalkForward" + peer},
                           {"BM_WalkForward" + optimized, "BM_WalkForward" + peer},
                           {"BM_WalkBackward" + standard, "BM_WalkBackward" + peer},
                       });
}
