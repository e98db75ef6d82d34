// The replay seed from the environment: seed messages print the 32-bit seed with %d, so a
// negative number names the seed of its two's complement.

#include "zqbase/zqtestenvironment.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <cstdlib>

namespace
{
// Exits with 0 when $ZQ_RANDOM_SEED = text gives expected (or no seed, for expected < 0).
[[noreturn]] void exitWithSeedCheck(const char* text, long long expected)
{
    setenv("ZQ_RANDOM_SEED", text, 1);
    const std::optional<std::uint32_t> seed = ZqTestEnvironment::GetReplaySeed();
    const bool ok = expected < 0 ? !seed : (seed && *seed == static_cast<std::uint32_t>(expected));
    std::exit(ok ? 0 : 1);
}
} // namespace

TEST(ZqTestEnvironmentReplaySeed, ReadsThePrintedFormsOfASeed)
{
    // A fresh process per case: a seed set in this one would hide the environment.
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    EXPECT_EXIT(exitWithSeedCheck("123", 123), ::testing::ExitedWithCode(0), "");
    EXPECT_EXIT(exitWithSeedCheck("-5", 0xFFFFFFFB), ::testing::ExitedWithCode(0), "");
    EXPECT_EXIT(exitWithSeedCheck("-2147483648", 0x80000000), ::testing::ExitedWithCode(0), "");
    EXPECT_EXIT(exitWithSeedCheck("4294967295", 0xFFFFFFFF), ::testing::ExitedWithCode(0), "");
    EXPECT_EXIT(exitWithSeedCheck("-2147483649", -1), ::testing::ExitedWithCode(0), "");
    EXPECT_EXIT(exitWithSeedCheck("4294967296", -1), ::testing::ExitedWithCode(0), "");
    EXPECT_EXIT(exitWithSeedCheck("12abc", -1), ::testing::ExitedWithCode(0), "");
    EXPECT_EXIT(exitWithSeedCheck("-", -1), ::testing::ExitedWithCode(0), "");
}
