// ZqRandomSeed: the seed hashes (base-257 polynomials of the bytes, the lowest byte weighted highest,
// modulo 2^32; expected values worked out by hand from powers of 257), and the seeds and messages of
// randomized subtests with and without a replay seed.

#include "zqbase/zqrandomseed.h"
#include "zqbase/zqtestenvironment.h"

#include <gtest/gtest.h>

#include <set>
#include <string>
#include <vector>

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

namespace
{
class SeedProbe : public ZqUnitTest
{
public:
    const CbRTTI& GetRTTI() const override { return ZqUnitTest::RTTI; }

    std::vector<std::wstring> Texts() const
    {
        std::vector<std::wstring> out;
        for (const auto& message : GetMessageStream().Take())
        {
            EXPECT_EQ(message.type, eInfo);
            out.push_back(message.text.Std());
        }
        return out;
    }

protected:
    EResult runUnitTest(unsigned int) override { return ePassed; }
};

class ZqRandomSeedRun : public ::testing::Test
{
protected:
    void TearDown() override { ZqTestEnvironment::SetReplaySeed(std::nullopt); }
    SeedProbe m_test;
};
} // namespace

TEST_F(ZqRandomSeedRun, StartWritesTheSeedItReturnsAndPrefersTheReplay)
{
    const std::uint32_t fresh = ZqRandomSeed::Start(m_test);
    EXPECT_EQ(m_test.Texts(), std::vector<std::wstring>{L"Startwert des Zufallsgenerators: " +
                                                        std::to_wstring(static_cast<int>(fresh)) + L"\n"});
    ZqTestEnvironment::SetReplaySeed(3000000000u);
    EXPECT_EQ(ZqRandomSeed::Start(m_test), 3000000000u);
    // Printed as a signed number, which the replay accepts as it stands.
    EXPECT_EQ(m_test.Texts(), std::vector<std::wstring>{L"Startwert des Zufallsgenerators: -1294967296\n"});
}

TEST_F(ZqRandomSeedRun, CasesThatPassWriteNothingAndDrawDifferentSeeds)
{
    std::set<std::uint32_t> seeds;
    EXPECT_EQ(ZqRandomSeed::RunCases(m_test, 500,
                                     [&](std::uint32_t seed)
                                     {
                                         seeds.insert(seed);
                                         return ZqUnitTest::ePassed;
                                     }),
              ZqUnitTest::ePassed);
    EXPECT_EQ(seeds.size(), 500u);
    EXPECT_TRUE(m_test.Texts().empty());
}

TEST_F(ZqRandomSeedRun, FirstFailingCaseWritesItsSeedAndEndsTheRun)
{
    std::vector<std::uint32_t> seeds;
    EXPECT_EQ(ZqRandomSeed::RunCases(m_test, 500,
                                     [&](std::uint32_t seed)
                                     {
                                         seeds.push_back(seed);
                                         return seeds.size() == 3 ? ZqUnitTest::eAborted
                                                                  : ZqUnitTest::ePassed;
                                     }),
              ZqUnitTest::eAborted);
    ASSERT_EQ(seeds.size(), 3u);
    EXPECT_EQ(m_test.Texts(), std::vector<std::wstring>{L"Startwert des Zufallsgenerators: " +
                                                        std::to_wstring(static_cast<int>(seeds[2])) + L"\n"});

    // The printed seed, replayed, runs that case alone.
    ZqTestEnvironment::SetReplaySeed(seeds[2]);
    std::vector<std::uint32_t> replayed;
    EXPECT_EQ(ZqRandomSeed::RunCases(m_test, 500,
                                     [&](std::uint32_t seed)
                                     {
                                         replayed.push_back(seed);
                                         return ZqUnitTest::eFailed;
                                     }),
              ZqUnitTest::eFailed);
    EXPECT_EQ(replayed, std::vector<std::uint32_t>{seeds[2]});
    EXPECT_EQ(m_test.Texts().size(), 1u);
}

TEST_F(ZqRandomSeedRun, CaseThatThrowsWritesItsSeedAndPassesTheExceptionOn)
{
    ZqTestEnvironment::SetReplaySeed(77u);
    EXPECT_THROW(ZqRandomSeed::RunCases(m_test, 10, [](std::uint32_t) -> ZqUnitTest::EResult { throw 5; }),
                 int);
    EXPECT_EQ(m_test.Texts(), std::vector<std::wstring>{L"Startwert des Zufallsgenerators: 77\n"});
}
