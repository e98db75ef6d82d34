#pragma once

#include "zqbase/zqbase_export.h"

#include <cstddef>
#include <cstdint>

// CRC-32C (Castagnoli, reflected polynomial 0x82F63B78), the checksum that guards the entries of
// generic container files. It detects every error of up to three bits and every burst of up to 32
// bits in the lengths we store, and the SSE 4.2 instruction computes it at several GB/s.
//
//     ZqCrc32c::Compute("123456789", 9)                          // 0xE3069283
//     ZqCrc32c::Compute("6789", 4, ZqCrc32c::Compute("12345", 5)) // the same: crc continues a value
class ZQBASE_API ZqCrc32c
{
public:
    // The checksum of size bytes at data, continuing the checksum crc of the bytes before them.
    static std::uint32_t Compute(const void* data, std::size_t size, std::uint32_t crc = 0);
    // The same without the processor's CRC instruction (the tests compare both).
    static std::uint32_t ComputePortable(const void* data, std::size_t size, std::uint32_t crc = 0);
    // True when Compute uses the SSE 4.2 CRC instruction.
    static bool HasHardwareSupport();
};
