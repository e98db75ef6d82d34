#include "zqbase/zqrandomseed.h"

#include <atomic>
#include <ctime>

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
