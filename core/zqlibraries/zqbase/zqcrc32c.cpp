#include "zqbase/zqcrc32c.h"

#include <array>
#include <cstring>

#if defined(__x86_64__)
#include <cpuid.h>
#endif

namespace
{
constexpr std::uint32_t kPolynomial = 0x82F63B78u;

// Slice-by-8 tables: table[k][b] is the CRC of byte b followed by k zero bytes.
using Tables = std::array<std::array<std::uint32_t, 256>, 8>;

constexpr Tables makeTables()
{
    Tables tables{};
    for (std::uint32_t b = 0; b < 256; ++b)
    {
        std::uint32_t crc = b;
        for (int bit = 0; bit < 8; ++bit)
            crc = (crc >> 1) ^ ((crc & 1u) ? kPolynomial : 0u);
        tables[0][b] = crc;
    }
    for (std::size_t k = 1; k < 8; ++k)
        for (std::size_t b = 0; b < 256; ++b)
            tables[k][b] = (tables[k - 1][b] >> 8) ^ tables[0][tables[k - 1][b] & 0xFFu];
    return tables;
}

constexpr Tables s_tables = makeTables();

std::uint32_t portable(const unsigned char* bytes, std::size_t size, std::uint32_t crc)
{
    for (; size >= 8; size -= 8, bytes += 8)
    {
        std::uint64_t word;
        std::memcpy(&word, bytes, 8);
        word ^= crc;
        crc = s_tables[7][word & 0xFF] ^ s_tables[6][(word >> 8) & 0xFF] ^ s_tables[5][(word >> 16) & 0xFF] ^
              s_tables[4][(word >> 24) & 0xFF] ^ s_tables[3][(word >> 32) & 0xFF] ^
              s_tables[2][(word >> 40) & 0xFF] ^ s_tables[1][(word >> 48) & 0xFF] ^ s_tables[0][word >> 56];
    }
    for (; size; --size, ++bytes)
        crc = (crc >> 8) ^ s_tables[0][(crc ^ *bytes) & 0xFFu];
    return crc;
}

#if defined(__x86_64__)
// Bytes per lane of the three-lane loop. The instruction has a latency of three cycles and a
// throughput of one, so three independent lanes run about three times as fast as one; their
// registers are then joined by appending zero bytes, which is a linear map of the register.
constexpr std::size_t kLane = 8192;

// Column i: the register that bit i alone becomes after kLane zero bytes.
const std::array<std::uint32_t, 32>& laneShift()
{
    static const std::array<std::uint32_t, 32> columns = []
    {
        static const unsigned char zeros[kLane] = {};
        std::array<std::uint32_t, 32> result{};
        for (unsigned int bit = 0; bit < 32; ++bit)
            result[bit] = portable(zeros, kLane, 1u << bit);
        return result;
    }();
    return columns;
}

std::uint32_t shiftLane(std::uint32_t crc)
{
    const std::array<std::uint32_t, 32>& columns = laneShift();
    std::uint32_t result = 0;
    for (unsigned int bit = 0; crc; ++bit, crc >>= 1)
        if (crc & 1u)
            result ^= columns[bit];
    return result;
}

__attribute__((target("sse4.2"))) std::uint32_t hardware(const unsigned char* bytes, std::size_t size,
                                                         std::uint32_t crc)
{
    for (; size >= 3 * kLane; size -= 3 * kLane, bytes += 3 * kLane)
    {
        std::uint64_t lanes[3] = {crc, 0, 0};
        for (std::size_t i = 0; i < kLane; i += 8)
            for (std::size_t lane = 0; lane < 3; ++lane)
            {
                std::uint64_t word;
                std::memcpy(&word, bytes + lane * kLane + i, 8);
                lanes[lane] = __builtin_ia32_crc32di(lanes[lane], word);
            }
        crc = shiftLane(shiftLane(static_cast<std::uint32_t>(lanes[0])) ^
                        static_cast<std::uint32_t>(lanes[1])) ^
              static_cast<std::uint32_t>(lanes[2]);
    }
    std::uint64_t wide = crc;
    for (; size >= 8; size -= 8, bytes += 8)
    {
        std::uint64_t word;
        std::memcpy(&word, bytes, 8);
        wide = __builtin_ia32_crc32di(wide, word);
    }
    crc = static_cast<std::uint32_t>(wide);
    for (; size; --size, ++bytes)
        crc = __builtin_ia32_crc32qi(crc, *bytes);
    return crc;
}

bool cpuHasSse42()
{
    unsigned int eax = 0, ebx = 0, ecx = 0, edx = 0;
    return __get_cpuid(1, &eax, &ebx, &ecx, &edx) && (ecx & bit_SSE4_2) != 0;
}
#endif
} // namespace

bool ZqCrc32c::HasHardwareSupport()
{
#if defined(__x86_64__)
    static const bool supported = cpuHasSse42();
    return supported;
#else
    return false;
#endif
}

std::uint32_t ZqCrc32c::Compute(const void* data, std::size_t size, std::uint32_t crc)
{
#if defined(__x86_64__)
    if (HasHardwareSupport())
        return ~hardware(static_cast<const unsigned char*>(data), size, ~crc);
#endif
    return ComputePortable(data, size, crc);
}

std::uint32_t ZqCrc32c::ComputePortable(const void* data, std::size_t size, std::uint32_t crc)
{
    return ~portable(static_cast<const unsigned char*>(data), size, ~crc);
}
