#include "zqbase/zqmurmurhash3.h"

#include <cstring>

namespace
{
constexpr std::uint32_t kC1 = 0x239b961b;
constexpr std::uint32_t kC2 = 0xab0e9789;
constexpr std::uint32_t kC3 = 0x38b34ae5;
constexpr std::uint32_t kC4 = 0xa1e38b93;

constexpr std::uint32_t rotl(std::uint32_t x, int r)
{
    return (x << r) | (x >> (32 - r));
}

constexpr std::uint32_t fmix(std::uint32_t h)
{
    h ^= h >> 16;
    h *= 0x85ebca6b;
    h ^= h >> 13;
    h *= 0xc2b2ae35;
    h ^= h >> 16;
    return h;
}

// The per-lane mixing of one key word: multiplier, rotation, multiplier.
constexpr std::uint32_t mixKey(std::uint32_t k, std::uint32_t ca, int r, std::uint32_t cb)
{
    return rotl(k * ca, r) * cb;
}

std::uint32_t readLittleEndian(const unsigned char* p)
{
    return std::uint32_t(p[0]) | std::uint32_t(p[1]) << 8 | std::uint32_t(p[2]) << 16 |
           std::uint32_t(p[3]) << 24;
}
} // namespace

ZqMurmurHash3::Digest128 ZqMurmurHash3::GetChecksum128(const void* data, std::size_t length,
                                                       std::uint32_t seed)
{
    const unsigned char* bytes = static_cast<const unsigned char*>(data);
    std::uint32_t h1 = seed, h2 = seed, h3 = seed, h4 = seed;

    const std::size_t blocks = length / 16;
    for (std::size_t i = 0; i < blocks; ++i)
    {
        const unsigned char* block = bytes + i * 16;
        h1 ^= mixKey(readLittleEndian(block), kC1, 15, kC2);
        h1 = (rotl(h1, 19) + h2) * 5 + 0x561ccd1b;
        h2 ^= mixKey(readLittleEndian(block + 4), kC2, 16, kC3);
        h2 = (rotl(h2, 17) + h3) * 5 + 0x0bcaa747;
        h3 ^= mixKey(readLittleEndian(block + 8), kC3, 17, kC4);
        h3 = (rotl(h3, 15) + h4) * 5 + 0x96cd1c35;
        h4 ^= mixKey(readLittleEndian(block + 12), kC4, 18, kC1);
        h4 = (rotl(h4, 13) + h1) * 5 + 0x32ac3b17;
    }

    // The tail: up to 15 bytes, zero-padded into the four key words, each word mixed only when one
    // of its bytes is present.
    const std::size_t tailLength = length & 15;
    unsigned char tail[16] = {};
    if (tailLength)
        std::memcpy(tail, bytes + blocks * 16, tailLength);
    if (tailLength > 12)
        h4 ^= mixKey(readLittleEndian(tail + 12), kC4, 18, kC1);
    if (tailLength > 8)
        h3 ^= mixKey(readLittleEndian(tail + 8), kC3, 17, kC4);
    if (tailLength > 4)
        h2 ^= mixKey(readLittleEndian(tail + 4), kC2, 16, kC3);
    if (tailLength > 0)
        h1 ^= mixKey(readLittleEndian(tail), kC1, 15, kC2);

    const std::uint32_t length32 = static_cast<std::uint32_t>(length);
    h1 ^= length32;
    h2 ^= length32;
    h3 ^= length32;
    h4 ^= length32;
    h1 += h2 + h3 + h4;
    h2 += h1;
    h3 += h1;
    h4 += h1;
    h1 = fmix(h1);
    h2 = fmix(h2);
    h3 = fmix(h3);
    h4 = fmix(h4);
    h1 += h2 + h3 + h4;
    h2 += h1;
    h3 += h1;
    h4 += h1;
    return {h1, h2, h3, h4};
}
