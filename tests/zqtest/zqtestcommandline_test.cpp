// The runner's command line: usage errors, listing, selection, sharding, repetition, replay,
// recreation and the environment it sets up for the tests.

#include "zqtestharness.h"

#include <gtest/gtest.h>
#include <set>

using namespace zqtest;

namespace
{
// Full names "Class.#N" that a listing with these arguments selects.
std::set<std::string> Listed(std::vector<std::string> args, const std::string& environment = "")
{
    args.insert(args.end(), {"--list", "--json", "-", kFixture});
    const SResult result = RunZqTest(args, environment);
    EXPECT_EQ(result.exitCode, 0) << result.output;
    std::set<std::string> names;
    const nlohmann::json listing = nlohmann::json::parse(result.output);
    for (const auto& test : listing.at("tests"))
        for (const auto& subtest : test.at("subtests"))
            names.insert(test.at("class").get<std::string>() + ".#" +
                         std::to_string(subtest.at("index").get<int>()));
    return names;
}

// Full names "Class.#N" that a run with these arguments executed.
std::set<std::string> Ran(std::vector<std::string> args, const std::string& environment = "")
{
    CTemporaryDirectory directory;
    args.insert(args.end(), {"--in-process", "--json", directory / "results.json", kFixture});
    const SResult result = RunZqTest(args, environment);
    EXPECT_LE(result.exitCode, 1) << result.output;
    std::set<std::string> names;
    for (const auto& [name, subtest] :
         SubtestsByName(nlohmann::json::parse(ReadFile(directory / "results.json"))))
        names.insert(name);
    return names;
}
} // namespace

TEST(ZqTestCommandLine, BadInputGivesOneLineAndExitCode2)
{
    CTemporaryDirectory directory;
    std::ofstream(directory / "text.so") << "not a module";
    const std::vector<std::pair<std::vector<std::string>, std::string>> cases = {
        {{directory / "missing.so"}, "does not exist"},
        {{directory / "text.so"}, "cannot load module"},
        {{kEmptyModule}, "registers no test class"},
        {{"--filter", "Nichts*", kFixture}, "matches no subtest"},
        {{"--frobnicate", kFixture}, "unknown option --frobnicate"},
        {{"--shard", "3/3", kFixture}, "shard index 3"},
        {{"--repeat", "x", kFixture}, "--repeat expects a number"},
        {{"--data-dir", directory / "nowhere", kFixture}, "data directory"},
        {{"--data-dir", directory / "text.so", kFixture}, "is not a directory"},
    };
    for (const auto& [args, expected] : cases)
    {
        const SResult result = RunZqTest(args);
        SCOPED_TRACE(result.output);
        EXPECT_EQ(result.exitCode, 2);
        ASSERT_EQ(result.Lines().size(), 1u);
        EXPECT_NE(result.output.find("zqtest: error: "), std::string::npos);
        EXPECT_NE(result.output.find(expected), std::string::npos);
    }
}

TEST(ZqTestCommandLine, ExitCodeIsZeroOnlyWhenEverythingPassed)
{
    const SResult passed = RunZqTest({"--filter", "ZqFixturePass_UnitTest", kFixture});
    EXPECT_EQ(passed.exitCode, 0);
    EXPECT_EQ(passed.LastLine(), "3 passed, 0 failed");
    // 0 jobs: one per core.
    EXPECT_EQ(RunZqTest({"--jobs", "0", "--filter", "ZqFixturePass_UnitTest", kFixture}).LastLine(),
              "3 passed, 0 failed");
    EXPECT_EQ(RunZqTest({"--filter", "ZqFixturePass_UnitTest:ZqFixtureMixed_UnitTest.#1", kFixture}).exitCode,
              1);
}

TEST(ZqTestCommandLine, ListingsShowTheTestClassesOfTheModuleOnly)
{
    const SResult plain = RunZqTest({"--list", kFixture});
    EXPECT_EQ(plain.exitCode, 0);
    EXPECT_TRUE(plain.Contains("ZqFixtureHang_UnitTest (3 subtests)\n  #0   schnell\n  #1   hängt\n"))
        << plain.output;
    // Registered without a creation function, so not a runnable test.
    EXPECT_FALSE(plain.Contains("ZqFixtureAbstract_UnitTest"));
    // The module beside the runner is not listed when another module is named.
    EXPECT_FALSE(plain.Contains("CbRTTI_UnitTest"));

    const SResult google =
        RunZqTest({"--gtest_list_tests", "--gtest_filter=ZqFixtureMixed_UnitTest.*", kFixture});
    EXPECT_EQ(google.output,
              "ZqFixtureMixed_UnitTest.\n  besteht\n  scheitert mit Meldung\n  wirft eine Ausnahme\n"
              "  abgebrochen\n  Name mit ? und ? und ?1?\n  schreibt auf stdout\n");

    // A class without subtests is a class all the same, in our own listings; GoogleTest's has no
    // place for an empty suite.
    EXPECT_TRUE(plain.Contains("\nZqFixtureNoSubtests_UnitTest (0 subtests)\n")) << plain.output;
    EXPECT_FALSE(RunZqTest({"--gtest_list_tests", kFixture}).Contains("ZqFixtureNoSubtests_UnitTest"));
    const auto empty = nlohmann::json::parse(
        RunZqTest({"--list", "--json", "-", "--filter", "ZqFixtureNoSubtests_UnitTest.*", kFixture}).output);
    ASSERT_EQ(empty.at("tests").size(), 1u);
    EXPECT_EQ(empty["tests"][0]["class"], "ZqFixtureNoSubtests_UnitTest");
    EXPECT_EQ(empty["tests"][0]["subtests"], nlohmann::json::array());
    // Selected, it has nothing to run.
    EXPECT_TRUE(
        RunZqTest({"--filter", "ZqFixtureNoSubtests_UnitTest", kFixture}).Contains("matches no subtest"));

    const SResult json =
        RunZqTest({"--list", "--json", "-", "--filter", "ZqFixtureRandom_UnitTest", kFixture});
    const auto listing = nlohmann::json::parse(json.output);
    ASSERT_EQ(listing.at("tests").size(), 1u);
    EXPECT_EQ(listing["tests"][0]["class"], "ZqFixtureRandom_UnitTest");
    EXPECT_EQ(listing["tests"][0]["parents"], nlohmann::json::array({"ZqUnitTest"}));
    EXPECT_EQ(listing["tests"][0]["subtests"][0]["name"], "zufällig");
}

TEST(ZqTestCommandLine, AModuleUnderTwoPathsIsLoadedOnce)
{
    CTemporaryDirectory directory;
    const std::string copy = directory / "copy.so";
    const std::string link = directory / "link.so";
    std::filesystem::copy_file(kFixture, copy);
    std::filesystem::create_symlink(kFixture, link);
    const SResult listing = RunZqTest({"--list", kFixture, copy, link});
    EXPECT_EQ(listing.exitCode, 0);
    // The copy is another file that registers the same classes: said once, then left out.
    EXPECT_TRUE(listing.Contains("zqtest: warning: module '" + copy + "' registers only test classes that '" +
                                 kFixture + "' registered already"))
        << listing.output;
    std::size_t count = 0;
    for (const std::string& line : listing.Lines())
        count += line == "ZqFixturePass_UnitTest (3 subtests)";
    EXPECT_EQ(count, 1u);
    // The children load the first module alone, and each subtest runs once.
    const SResult run = RunZqTest({"--filter", "ZqFixturePass_UnitTest", copy, kFixture});
    EXPECT_EQ(run.LastLine(), "3 passed, 0 failed") << run.output;
    EXPECT_TRUE(run.Contains("warning: module '" + kFixture + "'")) << run.output;
}

TEST(ZqTestCommandLine, GoogleTestNamesFedBackSelectExactlyTheirSubtest)
{
    // What CMake's test discovery does: every listed name goes back through --gtest_filter.
    const SResult google =
        RunZqTest({"--gtest_list_tests", "--gtest_filter=ZqFixtureMixed_UnitTest.*", kFixture});
    std::set<std::string> selected;
    std::string suite;
    for (const std::string& line : google.Lines())
    {
        if (line.rfind("  ", 0) != 0)
        {
            suite = line;
            continue;
        }
        const std::set<std::string> one = Listed({"--gtest_filter=" + suite + line.substr(2)});
        ASSERT_EQ(one.size(), 1u) << line;
        selected.insert(*one.begin());
    }
    EXPECT_EQ(selected.size(), 6u);
}

TEST(ZqTestCommandLine, FilterForms)
{
    EXPECT_EQ(Listed({"--filter", "ZqFixtureHang_UnitTest"}).size(), 3u);
    EXPECT_EQ(Listed({"--filter", "ZqFixtureHang_UnitTest.*"}).size(), 3u);
    EXPECT_EQ(Listed({"--filter", "ZqFixtureHang_UnitTest.h?ngt"}),
              std::set<std::string>{"ZqFixtureHang_UnitTest.#1"});
    EXPECT_EQ(Listed({"--filter", "ZqFixtureHang_UnitTest.#2"}),
              std::set<std::string>{"ZqFixtureHang_UnitTest.#2"});
    EXPECT_EQ(Listed({"--filter", "ZqFixtureHang*-*.#0:*danach"}),
              std::set<std::string>{"ZqFixtureHang_UnitTest.#1"});
    EXPECT_EQ(Listed({"--filter", "-ZqFixtureTrivial_UnitTest"}).size(), Listed({}).size() - 1000);
    // A '-' inside a name is matched by '?'.
    EXPECT_EQ(Listed({"--filter", "*.Name mit ? und*"}), std::set<std::string>{"ZqFixtureMixed_UnitTest.#4"});
    // The variable counts unless the command line names a filter.
    EXPECT_EQ(Listed({}, "GTEST_FILTER='ZqFixturePass_UnitTest.#0'").size(), 1u);
    EXPECT_EQ(Listed({"--filter", "ZqFixtureHang*"}, "GTEST_FILTER='ZqFixturePass_UnitTest.#0'").size(), 3u);
}

TEST(ZqTestCommandLine, EverySubtestRunsInExactlyOneShard)
{
    const std::vector<std::string> selection = {"--filter",
                                                "ZqFixtureTrivial_UnitTest.#1?:ZqFixturePass*:*Mixed*"};
    const std::set<std::string> all = Ran(selection);
    ASSERT_EQ(all.size(), 10u + 3 + 6);
    CTemporaryDirectory directory;
    std::multiset<std::string> union_;
    for (int shard = 0; shard < 3; ++shard)
    {
        std::set<std::string> part;
        if (shard == 1)
        {
            // GoogleTest's variables, with the status file that tells a harness sharding is supported.
            const std::string status = directory / "shard-status";
            part =
                Ran(selection, "GTEST_TOTAL_SHARDS=3 GTEST_SHARD_INDEX=1 GTEST_SHARD_STATUS_FILE=" + status);
            EXPECT_TRUE(std::filesystem::exists(status));
        }
        else
        {
            std::vector<std::string> args = selection;
            args.insert(args.end(), {"--shard", std::to_string(shard) + "/3"});
            part = Ran(args);
        }
        EXPECT_GE(part.size(), 6u);
        union_.insert(part.begin(), part.end());
    }
    EXPECT_EQ(union_.size(), all.size());
    EXPECT_EQ(std::set<std::string>(union_.begin(), union_.end()), all);
}

TEST(ZqTestCommandLine, RepeatAndShuffleAreReproducibleFromTheSeed)
{
    auto order = [](const std::string& seed)
    {
        CTemporaryDirectory directory;
        const SResult result = RunZqTest({"--filter", "ZqFixtureTrivial_UnitTest.leer 000?:ZqFixturePass*",
                                          "--in-process", "--shuffle", "--seed", seed, "--repeat", "2",
                                          "--json", directory / "r.json", kFixture});
        EXPECT_TRUE(result.Contains("Note: Randomizing tests' orders with a seed of " + seed + " ."))
            << result.output;
        const auto report = nlohmann::json::parse(ReadFile(directory / "r.json"));
        EXPECT_EQ(report.at("seed").get<unsigned>(), std::stoul(seed));
        std::vector<std::string> names;
        for (const auto& test : report.at("tests"))
            for (const auto& subtest : test.at("subtests"))
                names.push_back(test.at("class").get<std::string>() + "." +
                                subtest.at("name").get<std::string>());
        return names;
    };
    const std::vector<std::string> first = order("17");
    ASSERT_EQ(first.size(), 2u * (10 + 3));
    EXPECT_EQ(order("17"), first);
    EXPECT_NE(order("18"), first);
    // The two iterations use different seeds, so they run in different orders.
    EXPECT_NE(std::vector<std::string>(first.begin(), first.begin() + 13),
              std::vector<std::string>(first.begin() + 13, first.end()));
}

TEST(ZqTestCommandLine, AReportedSeedIsReplayed)
{
    const SResult failed = RunZqTest({"--filter", "ZqFixtureRandom_UnitTest", kFixture});
    EXPECT_EQ(failed.exitCode, 1);
    // The seed was written with %d as -1294967296; the replay line gives it as the unsigned seed.
    const std::string expected = " --filter 'ZqFixtureRandom_UnitTest.#0' --random-seed 3000000000";
    EXPECT_TRUE(failed.Contains("    replay: " + kRunner + " " + kFixture + expected)) << failed.output;
    EXPECT_EQ(RunZqTest({"--filter", "ZqFixtureRandom_UnitTest.#0", "--random-seed", "3000000000", kFixture})
                  .exitCode,
              0);
    EXPECT_EQ(RunZqTest({"--filter", "ZqFixtureRandom_UnitTest", "--random-seed", "-1294967296", kFixture})
                  .exitCode,
              0);
    EXPECT_EQ(
        RunZqTest({"--filter", "ZqFixtureRandom_UnitTest", kFixture}, "ZQ_RANDOM_SEED=-1294967296").exitCode,
        0);
}

TEST(ZqTestCommandLine, RecreateReportsTheReferencesAndSkipsWhatCannotBeRecreated)
{
    const SResult result = RunZqTest({"--recreate", "--filter", "ZqFixtureRecreate_UnitTest", kFixture});
    EXPECT_EQ(result.exitCode, 0);
    EXPECT_TRUE(result.Contains("Referenz geschrieben: ")) << result.output;
    EXPECT_TRUE(result.Contains("[  SKIPPED ] ZqFixtureRecreate_UnitTest.ohne Referenz"));
    EXPECT_EQ(result.LastLine(), "1 passed, 0 failed, 1 skipped");
}

TEST(ZqTestCommandLine, TheRunSetsUpScratchDataAndExitMarkerAndCleansUp)
{
    CTemporaryDirectory directory;
    const std::string marker = directory / "premature";
    const SResult result = RunZqTest({"--verbose", "--debug-images", "--data-dir", directory.Path(),
                                      "--filter", "ZqFixtureEnvironment_UnitTest", kFixture},
                                     "TEST_PREMATURE_EXIT_FILE=" + marker);
    EXPECT_EQ(result.exitCode, 0) << result.output;
    EXPECT_TRUE(result.Contains("    data=" + directory.Path() + "\n"));
    EXPECT_TRUE(result.Contains("    debug=1\n"));
    EXPECT_TRUE(result.Contains("    premature=1\n"));
    EXPECT_FALSE(std::filesystem::exists(marker));
    const std::size_t at = result.output.find("scratch=");
    ASSERT_NE(at, std::string::npos);
    const std::string scratch = result.output.substr(at + 8, result.output.find('\n', at) - at - 8);
    EXPECT_FALSE(scratch.empty());
    EXPECT_FALSE(std::filesystem::exists(scratch)) << scratch;

    // Information messages only with --verbose; errors always.
    EXPECT_FALSE(RunZqTest({"--filter", "ZqFixtureEnvironment_UnitTest", kFixture}).Contains("debug="));
}
