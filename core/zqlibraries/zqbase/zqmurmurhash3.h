#pragma once

#include "zqbase/zqbase_export.h"

#include <array>
#include <cstddef>
#include <cstdint>

// MurmurHash3, the 128-bit variant for 32-bit platforms (MurmurHash3_x86_128): four 32-bit lanes,
// a 32-bit seed, little-endian reads. Not a cryptographic hash; it spreads small keys well, which
// is what reproducible pseudo-random values need (ZqRenderUnitTest::CreateRandomDir).
//
// The digest is the four lanes h1..h4 in that order; in memory (little-endian) they are the 16
// bytes the reference implementation writes. The variant is pinned by its published verification
// value: hash the keys {}, {0}, {0, 1}, ..., {0, ..., 254} with seeds 256, 255, ..., 1, hash the
// 256 concatenated digests with seed 0, and read the first four bytes little-endian: 0xB3ECE62A.
//
//     const std::uint32_t block[4] = {1, 2, 3, 4};
//     ZqMurmurHash3::Digest128 d = ZqMurmurHash3::GetChecksum128(block, sizeof(block), 2);
class ZQBASE_API ZqMurmurHash3
{
public:
    using Digest128 = std::array<std::uint32_t, 4>;

    // The digest of length bytes at data (data may be null when length is 0). Lengths above
    // 2^32 - 1 bytes are hashed as the reference does with a 32-bit length: only its low 32 bits
    // enter the finalisation.
    static Digest128 GetChecksum128(const void* data, std::size_t length, std::uint32_t seed);
};
