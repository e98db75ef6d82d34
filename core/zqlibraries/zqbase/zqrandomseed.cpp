#include "zqbase/zqrandomseed.h"

#include "zqbase/zqtestenvironment.h"

#include <atomic>
#include <ctime>
#include <optional>
#include <random>

namespace
{
template <int Bytes> std::uint32_t hashBytes(std::uint64_t value)
{
    // Byte 0 (the lowest) is weighted 257^(Bytes-1), the highest byte 1.
    std::uint32_t hash = 0;
    for (int i = 0; i < Bytes; ++i)
        hash = hash * 257u + static_cast<std::uint8_t>(value >> (8 * i));
    return hash;
}

std::atomic<std::uint32_t> g_counter{0};
} // namespace

std::uint32_t ZqRandomSeed::HashTime(std::uint64_t seconds)
{
    return hashBytes<8>(seconds);
}

std::uint32_t ZqRandomSeed::HashClock(std::uint32_t ticks)
{
    return hashBytes<4>(ticks);
}

std::uint32_t ZqRandomSeed::FromClock()
{
    const auto seconds = static_cast<std::uint64_t>(std::time(nullptr));
    const auto ticks = static_cast<std::uint32_t>(std::clock());
    return (g_counter.fetch_add(1) + HashTime(seconds)) ^ HashClock(ticks);
}

void ZqRandomSeed::Write(const ZqUnitTest& test, std::uint32_t seed)
{
    test.WriteMessageFormat(ZqUnitTest::eInfo, L"Startwert des Zufallsgenerators: %d\n",
                            static_cast<int>(seed));
}

std::uint32_t ZqRandomSeed::Start(const ZqUnitTest& test)
{
    const std::uint32_t seed = ZqTestEnvironment::GetReplaySeed().value_or(FromClock());
    Write(test, seed);
    return seed;
}

ZqUnitTest::EResult
ZqRandomSeed::RunCases(const ZqUnitTest& test, unsigned int cases,
                       const std::function<ZqUnitTest::EResult(std::uint32_t seed)>& runCase)
{
    const auto runOne = [&](std::uint32_t seed)
    {
        ZqUnitTest::EResult result;
        try
        {
            result = runCase(seed);
        }
        catch (...)
        {
            Write(test, seed);
            throw;
        }
        if (result != ZqUnitTest::ePassed)
            Write(test, seed);
        return result;
    };
    if (const std::optional<std::uint32_t> replay = ZqTestEnvironment::GetReplaySeed())
        return runOne(*replay);
    std::mt19937 seeds(FromClock());
    for (unsigned int i = 0; i < cases; ++i)
        if (const ZqUnitTest::EResult result = runOne(seeds()); result != ZqUnitTest::ePassed)
            return result;
    return ZqUnitTest::ePassed;
}
