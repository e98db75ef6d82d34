// CbMap against std::unordered_map with 64-bit keys: inserting, looking up (hits, in random order),
// and the peak resident memory of a map of 10^6 pairs. Keys are either 0 .. n-1 (the standard map's
// best case: its identity hash spreads them perfectly) or random 64-bit values.

#include "basepool/cbmap.h"

#include "zqbenchmain.h"

#include <algorithm>
#include <bit>
#include <cstdint>
#include <cstdio>
#include <fstream>
#include <random>
#include <string>
#include <unordered_map>
#include <vector>

namespace
{
using Key = std::uint64_t;
using CCbMap = CbMap<Key, Key>;
using CStdMap = std::unordered_map<Key, Key>;

enum EKeys
{
    eSequential,
    eRandom
};

std::vector<Key> makeKeys(std::size_t count, EKeys kind)
{
    std::vector<Key> keys(count);
    std::mt19937_64 generator(20240521);
    for (std::size_t i = 0; i < count; ++i)
        keys[i] = kind == eSequential ? Key(i) : generator();
    return keys;
}

void insert(CCbMap& map, Key key)
{
    map.SetAt(key, key);
}
void insert(CStdMap& map, Key key)
{
    map.insert_or_assign(key, key);
}
const Key* lookup(const CCbMap& map, Key key)
{
    return map.PLookup(key);
}
const Key* lookup(const CStdMap& map, Key key)
{
    const auto it = map.find(key);
    return it == map.end() ? nullptr : &it->second;
}

// Builds a map of n keys and tears it down again.
template <class Map, EKeys Kind> void BM_Insert(benchmark::State& state)
{
    const std::vector<Key> keys = makeKeys(static_cast<std::size_t>(state.range(0)), Kind);
    for (auto _ : state)
    {
        Map map;
        for (Key key : keys)
            insert(map, key);
        benchmark::DoNotOptimize(map);
    }
    state.SetItemsProcessed(state.iterations() * state.range(0));
}

// Looks up every key of a map of n keys once, in random order.
template <class Map, EKeys Kind> void BM_Lookup(benchmark::State& state)
{
    std::vector<Key> keys = makeKeys(static_cast<std::size_t>(state.range(0)), Kind);
    Map map;
    for (Key key : keys)
        insert(map, key);
    std::shuffle(keys.begin(), keys.end(), std::mt19937_64(7));
    for (auto _ : state)
    {
        Key sum = 0;
        for (Key key : keys)
            sum += *lookup(map, key);
        benchmark::DoNotOptimize(sum);
    }
    state.SetItemsProcessed(state.iterations() * state.range(0));
}

// The floor under every CbMap lookup: only the bucket index of each key (its FNV-1a hash AND the
// mask), no memory touched but the key. Compared with a whole lookup of the standard map, whose
// hash of an integer is the integer itself.
void BM_BucketIndexOnly(benchmark::State& state)
{
    std::vector<Key> keys = makeKeys(static_cast<std::size_t>(state.range(0)), eSequential);
    std::shuffle(keys.begin(), keys.end(), std::mt19937_64(7));
    const std::uint32_t mask = std::bit_ceil(static_cast<std::uint32_t>(keys.size())) - 1;
    for (auto _ : state)
    {
        std::uint64_t sum = 0;
        for (Key key : keys)
            sum += CbMapTypes::SKeyTraits<Key>::BucketHash(key) & mask;
        benchmark::DoNotOptimize(sum);
    }
    state.SetItemsProcessed(state.iterations() * state.range(0));
}
BENCHMARK(BM_BucketIndexOnly)->Arg(1000);

#define ZQ_MAP_BENCHMARKS(Function, Kind)                                                                    \
    BENCHMARK_TEMPLATE(Function, CCbMap, Kind)->Arg(1000)->Arg(100000)->Arg(1000000);                        \
    BENCHMARK_TEMPLATE(Function, CStdMap, Kind)->Arg(1000)->Arg(100000)->Arg(1000000)

ZQ_MAP_BENCHMARKS(BM_Insert, eSequential);
ZQ_MAP_BENCHMARKS(BM_Insert, eRandom);
ZQ_MAP_BENCHMARKS(BM_Lookup, eSequential);
ZQ_MAP_BENCHMARKS(BM_Lookup, eRandom);

long statusKilobytes(const char* field)
{
    std::ifstream file("/proc/self/status");
    std::string line;
    while (std::getline(file, line))
        if (line.rfind(field, 0) == 0)
            return std::stol(line.substr(std::string(field).size()));
    return -1;
}

// In a fresh process (this program started again with --zq-peak-rss=NAME): builds the map of 10^6
// random keys and prints how far its resident memory peaked above what it held before.
template <class Map> int printPeakResidentKilobytes()
{
    const std::vector<Key> keys = makeKeys(1000000, eRandom);
    const long before = statusKilobytes("VmRSS:");
    Map map;
    for (Key key : keys)
        insert(map, key);
    benchmark::DoNotOptimize(map);
    std::printf("%ld\n", statusKilobytes("VmHWM:") - before);
    return 0;
}

long peakResidentKilobytes(const char* self, const char* name)
{
    const std::string command = std::string("'") + self + "' --zq-peak-rss=" + name;
    FILE* child = popen(command.c_str(), "r");
    long kilobytes = -1;
    if (child && std::fscanf(child, "%ld", &kilobytes) != 1)
        kilobytes = -1;
    if (child)
        pclose(child);
    return kilobytes;
}
} // namespace

int main(int argc, char** argv)
{
    if (argc == 2 && std::string(argv[1]) == "--zq-peak-rss=CbMap")
        return printPeakResidentKilobytes<CCbMap>();
    if (argc == 2 && std::string(argv[1]) == "--zq-peak-rss=std")
        return printPeakResidentKilobytes<CStdMap>();

    std::vector<ZqBenchPair> ratios;
    for (const char* function : {"BM_Insert", "BM_Lookup"})
        for (const char* kind : {"eSequential", "eRandom"})
            for (const char* count : {"1000", "100000", "1000000"})
                ratios.push_back({std::string(function) + "<CCbMap, " + kind + ">/" + count,
                                  std::string(function) + "<CStdMap, " + kind + ">/" + count});
    ratios.push_back({"BM_BucketIndexOnly/1000", "BM_Lookup<CStdMap, eSequential>/1000"});
    const int result = ZqBenchMain(argc, argv, ratios);

    const long ours = peakResidentKilobytes(argv[0], "CbMap");
    const long peer = peakResidentKilobytes(argv[0], "std");
    std::printf("\nPeak resident memory above the start, 10^6 random 64-bit pairs: CbMap %ld kB, "
                "std::unordered_map %ld kB, ratio %.2f\n",
                ours, peer, peer > 0 ? double(ours) / double(peer) : 0.0);
    return result;
}
