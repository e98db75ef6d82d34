// MurmurHash3_x86_128 against its published verification value, which covers every key length
// from 0 to 255 (all tail lengths and block counts) and 256 seeds.

#include "zqbase/zqmurmurhash3.h"

#include <gtest/gtest.h>

#include <cstring>
#include <vector>

TEST(ZqMurmurHash3, MatchesThePublishedVerificationValueOfTheX86Variant)
{
    unsigned char key[256] = {};
    std::vector<unsigned char> digests(16 * 256);
    for (int i = 0; i < 256; ++i)
    {
        key[i] = static_cast<unsigned char>(i);
        const ZqMurmurHash3::Digest128 d =
            ZqMurmurHash3::GetChecksum128(key, std::size_t(i), 256u - unsigned(i));
        std::memcpy(&digests[std::size_t(i) * 16], d.data(), 16); // little-endian lanes, as the reference
    }
    const ZqMurmurHash3::Digest128 final = ZqMurmurHash3::GetChecksum128(digests.data(), digests.size(), 0);
    EXPECT_EQ(final[0], 0xB3ECE62Au);
}

TEST(ZqMurmurHash3, EmptyInputDependsOnlyOnTheSeed)
{
    EXPECT_EQ(ZqMurmurHash3::GetChecksum128(nullptr, 0, 0), (ZqMurmurHash3::Digest128{0, 0, 0, 0}));
    EXPECT_NE(ZqMurmurHash3::GetChecksum128(nullptr, 0, 1), ZqMurmurHash3::GetChecksum128(nullptr, 0, 2));
}

TEST(ZqMurmurHash3, ReadsUnalignedInputByteByByte)
{
    unsigned char buffer[64];
    for (int i = 0; i < 64; ++i)
        buffer[i] = static_cast<unsigned char>(i * 37 + 11);
    std::vector<unsigned char> copy(buffer + 1, buffer + 1 + 40);
    EXPECT_EQ(ZqMurmurHash3::GetChecksum128(buffer + 1, 40, 9),
              ZqMurmurHash3::GetChecksum128(copy.data(), 40, 9));
}
