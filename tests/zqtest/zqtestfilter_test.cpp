// Selection and command-line parsing of the runner, in this process.

#include "zqbase/zqtest/zqtestfilter.h"
#include "zqbase/zqtest/zqtestoptions.h"

#include <gtest/gtest.h>
#include <map>

TEST(ZqTestFilter, GlobMatchesCodePointsAndBacktracks)
{
    EXPECT_TRUE(ZqTestFilter::Glob("h?ngt", "hängt"));
    EXPECT_FALSE(ZqTestFilter::Glob("h??ngt", "hängt"));
    EXPECT_TRUE(ZqTestFilter::Glob("*a*b*c", "xxaxxbxxbc"));
    EXPECT_FALSE(ZqTestFilter::Glob("*a*b*c", "xxaxxbxxb"));
    EXPECT_TRUE(ZqTestFilter::Glob("**", ""));
    EXPECT_FALSE(ZqTestFilter::Glob("?", ""));
    EXPECT_TRUE(ZqTestFilter::Glob("*ü", "üüü"));
}

TEST(ZqTestFilter, PositiveNegativeAndIndexPatterns)
{
    const ZqTestFilter filter("A_UnitTest:B_UnitTest.#2:*.Konvexe*-*Bug*:A_UnitTest.#0");
    EXPECT_FALSE(filter.Matches("A_UnitTest", 0, "x"));
    EXPECT_TRUE(filter.Matches("A_UnitTest", 1, "x"));
    EXPECT_FALSE(filter.Matches("A_UnitTest", 2, "mit Bug"));
    EXPECT_TRUE(filter.Matches("B_UnitTest", 2, "y"));
    EXPECT_FALSE(filter.Matches("B_UnitTest", 20, "y"));
    EXPECT_TRUE(filter.Matches("C_UnitTest", 5, "Konvexe Hülle"));
    EXPECT_FALSE(filter.Matches("C_UnitTest", 5, "Konvexe Hülle, Test auf Bug"));
    // Only negative patterns: everything else is selected.
    const ZqTestFilter negative("-A_UnitTest");
    EXPECT_FALSE(negative.Matches("A_UnitTest", 0, "x"));
    EXPECT_TRUE(negative.Matches("AB_UnitTest", 0, "x"));
    EXPECT_TRUE(ZqTestFilter().Matches("Any", 0, ""));
}

namespace
{
ZqTestOptions parse(std::vector<std::string> args, std::map<std::string, std::string> env = {})
{
    return ZqTestOptions::Parse(args,
                                [&env](const char* name) -> const char*
                                {
                                    auto it = env.find(name);
                                    return it == env.end() ? nullptr : it->second.c_str();
                                });
}
} // namespace

TEST(ZqTestOptions, GoogleTestFlagsAndVariables)
{
    const ZqTestOptions options = parse(
        {"--gtest_output=xml:out/", "--gtest_shuffle", "--gtest_random_seed=9", "--gtest_brief=1", "m.so"},
        {{"GTEST_FILTER", "A*"},
         {"GTEST_OUTPUT", "json:r.json"},
         {"TEST_TOTAL_SHARDS", "4"},
         {"TEST_SHARD_INDEX", "3"},
         {"GTEST_COLOR", "no"}});
    EXPECT_EQ(options.filter, "A*");
    EXPECT_EQ(options.junit, "out/zqtest.xml");
    EXPECT_EQ(options.googleTestJson, "r.json");
    EXPECT_TRUE(options.shuffle);
    EXPECT_EQ(options.seed, 9u);
    EXPECT_TRUE(options.brief);
    EXPECT_EQ(options.shardIndex, 3u);
    EXPECT_EQ(options.shardCount, 4u);
    EXPECT_EQ(options.color, ZqTestOptions::EColor::eNo);
    EXPECT_EQ(options.modules, std::vector<std::string>{"m.so"});
    // GoogleTest's variables win over Bazel's; the command line wins over both.
    const ZqTestOptions shards = parse({"--shard=1/2"}, {{"GTEST_TOTAL_SHARDS", "3"},
                                                         {"GTEST_SHARD_INDEX", "2"},
                                                         {"TEST_TOTAL_SHARDS", "9"},
                                                         {"TEST_SHARD_INDEX", "8"}});
    EXPECT_EQ(shards.shardIndex, 1u);
    EXPECT_EQ(shards.shardCount, 2u);
    EXPECT_EQ(parse({}, {{"GTEST_TOTAL_SHARDS", "3"},
                         {"GTEST_SHARD_INDEX", "2"},
                         {"TEST_TOTAL_SHARDS", "9"},
                         {"TEST_SHARD_INDEX", "8"}})
                  .shardCount,
              3u);
}

TEST(ZqTestOptions, RejectsWhatItCannotUse)
{
    for (const std::vector<std::string>& args :
         std::vector<std::vector<std::string>>{{"--jobs"},
                                               {"--jobs", "-1"},
                                               {"--timeout", "soon"},
                                               {"--shard", "2"},
                                               {"--shard", "0/0"},
                                               {"--gtest_output=html:x"},
                                               {"--list=1"},
                                               {"--repeat", "0"},
                                               {"--random-seed", "4294967296"},
                                               {"--json", "-"}})
        EXPECT_THROW(parse(args), ZqTestUsageError) << args[0];
    EXPECT_THROW(parse({}, {{"GTEST_TOTAL_SHARDS", "3"}}), ZqTestUsageError);
    EXPECT_EQ(parse({"--random-seed", "-1"}).randomSeed, 0xFFFFFFFFu);
    EXPECT_EQ(parse({"--", "--list"}).modules, std::vector<std::string>{"--list"});
}
