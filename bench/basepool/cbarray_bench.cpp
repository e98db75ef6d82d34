// CbArray against std::vector in the same run: appending 10^6 elements one at a time (ints and
// strings, so that growth moves elements), and summing 10^6 ints by index, with the ratio
// CbArray / std::vector per case.

#include "basepool/cbarray.h"
#include "basepool/cstring.h"

#include "zqbenchmain.h"

#include <string>
#include <vector>

namespace
{
constexpr int kElements = 1000000;

void appendIntsCbArray(benchmark::State& state)
{
    for (auto _ : state)
    {
        CbArray<int> array;
        for (int i = 0; i < kElements; ++i)
            array.Add(i);
        benchmark::DoNotOptimize(array.GetData());
    }
}
void appendIntsVector(benchmark::State& state)
{
    for (auto _ : state)
    {
        std::vector<int> vector;
        for (int i = 0; i < kElements; ++i)
            vector.push_back(i);
        benchmark::DoNotOptimize(vector.data());
    }
}

void appendStringsCbArray(benchmark::State& state)
{
    const CString text(L"eine Zeichenkette, die nicht in den kleinen Puffer passt");
    for (auto _ : state)
    {
        CbArray<CString> array;
        for (int i = 0; i < kElements / 10; ++i)
            array.Add(text);
        benchmark::DoNotOptimize(array.GetData());
    }
}
void appendStringsVector(benchmark::State& state)
{
    const CString text(L"eine Zeichenkette, die nicht in den kleinen Puffer passt");
    for (auto _ : state)
    {
        std::vector<CString> vector;
        for (int i = 0; i < kElements / 10; ++i)
            vector.push_back(text);
        benchmark::DoNotOptimize(vector.data());
    }
}

template <class TArray> void sumByIndex(benchmark::State& state, const TArray& array)
{
    for (auto _ : state)
    {
        long long sum = 0;
        for (unsigned int i = 0; i < static_cast<unsigned int>(kElements); ++i)
            sum += array[i];
        benchmark::DoNotOptimize(sum);
    }
}
void sumCbArray(benchmark::State& state)
{
    CbArray<int> array;
    array.SetCount(kElements);
    sumByIndex(state, array);
}
void sumVector(benchmark::State& state)
{
    const std::vector<int> vector(kElements, 1);
    sumByIndex(state, vector);
}

BENCHMARK(appendIntsCbArray)->Name("AppendInts/CbArray")->Unit(benchmark::kMillisecond);
BENCHMARK(appendIntsVector)->Name("AppendInts/std::vector")->Unit(benchmark::kMillisecond);
BENCHMARK(appendStringsCbArray)->Name("AppendStrings/CbArray")->Unit(benchmark::kMillisecond);
BENCHMARK(appendStringsVector)->Name("AppendStrings/std::vector")->Unit(benchmark::kMillisecond);
BENCHMARK(sumCbArray)->Name("SumByIndex/CbArray")->Unit(benchmark::kMicrosecond);
BENCHMARK(sumVector)->Name("SumByIndex/std::vector")->Unit(benchmark::kMicrosecond);

} // namespace

int main(int argc, char** argv)
{
    std::vector<ZqBenchPair> pairs;
    for (const char* kind : {"AppendInts", "AppendStrings", "SumByIndex"})
        pairs.push_back({std::string(kind) + "/CbArray", std::string(kind) + "/std::vector"});
    return ZqBenchMain(argc, argv, pairs);
}
