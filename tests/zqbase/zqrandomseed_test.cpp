// The seed hashes of ZqRandomSeed: base-257 polynomials of the bytes, the lowest byte weighted
// highest, modulo 2^32. Expected values are worked out by hand from powers of 257.

#include "zqbase/zqrandomseed.h"

#include <gtest/gtest.h>

TEST(ZqRandomSeedHash, TimeWeightsByteZeroWith257ToTheSeventh)
{
    EXPECT_EQ(ZqRandomSeed::HashTime(0), 0u);
    // 257^7 = 2^32 * 20 + 588580609
    EXPECT_EQ(ZqRandomSeed::HashTime(1), 588580609u);
    // 257^6 mod 2^32
    EXPECT_EQ(ZqRandomSeed::HashTime(0x100), 336528897u);
    EXPECT_EQ(ZqRandomSeed::HashTime(0x0100000000000000ULL), 1u);
    // 8*257^7 + 7*257^6 + 6*257^5 + 5*257^4 + 4*257^3 + 3*257^2 + 2*257 + 1 mod 2^32
    EXPECT_EQ(ZqRandomSeed::HashTime(0x0102030405060708ULL), 4185565220u);
    EXPECT_EQ(ZqRandomSeed::HashTime(~0ULL), 4058246136u);
}

TEST(ZqRandomSeedHash, ClockWeightsByteZeroWith257Cubed)
{
    EXPECT_EQ(ZqRandomSeed::HashClock(0), 0u);
    EXPECT_EQ(ZqRandomSeed::HashClock(1), 16974593u);
    EXPECT_EQ(ZqRandomSeed::HashClock(0x01000000), 1u);
    // 0x78*257^3 + 0x56*257^2 + 0x34*257 + 0x12 = 2036951160 + 5680214 + 13364 + 18
    EXPECT_EQ(ZqRandomSeed::HashClock(0x12345678), 2042644756u);
    // 255 * (257^3 + 257^2 + 257 + 1) = 4345429500, less 2^32
    EXPECT_EQ(ZqRandomSeed::HashClock(0xFFFFFFFF), 50462204u);
}
