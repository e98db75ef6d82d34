// CRC-32C: published check values, and the instruction path agreeing with the table path for every
// length, alignment and split.

#include "zqbase/zqcrc32c.h"

#include <gtest/gtest.h>
#include <numeric>
#include <random>
#include <vector>

TEST(ZqCrc32cTest, PublishedCheckValues)
{
    EXPECT_EQ(ZqCrc32c::Compute("123456789", 9), 0xE3069283u);
    std::vector<unsigned char> bytes(32, 0);
    EXPECT_EQ(ZqCrc32c::Compute(bytes.data(), 32), 0x8A9136AAu);
    std::fill(bytes.begin(), bytes.end(), 0xFF);
    EXPECT_EQ(ZqCrc32c::Compute(bytes.data(), 32), 0x62A8AB43u);
    std::iota(bytes.begin(), bytes.end(), 0);
    EXPECT_EQ(ZqCrc32c::Compute(bytes.data(), 32), 0x46DD794Eu);
    EXPECT_EQ(ZqCrc32c::ComputePortable(bytes.data(), 32), 0x46DD794Eu);
    EXPECT_EQ(ZqCrc32c::Compute(nullptr, 0), 0u);
}

TEST(ZqCrc32cTest, BothPathsAgreeForEveryLengthOffsetAndSplit)
{
    // Long enough for several blocks of the three-lane loop and a remainder.
    std::mt19937 random(17);
    std::vector<unsigned char> bytes(100000);
    for (unsigned char& byte : bytes)
        byte = static_cast<unsigned char>(random());
    for (std::size_t offset = 0; offset < 8; ++offset)
        for (std::size_t size = 0; offset + size <= bytes.size(); size += 1 + size / 8)
        {
            const unsigned char* data = bytes.data() + offset;
            const std::uint32_t whole = ZqCrc32c::Compute(data, size);
            ASSERT_EQ(ZqCrc32c::ComputePortable(data, size), whole) << offset << " " << size;
            const std::size_t split = size / 3;
            ASSERT_EQ(ZqCrc32c::Compute(data + split, size - split, ZqCrc32c::ComputePortable(data, split)),
                      whole);
        }
}
