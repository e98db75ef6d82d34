// Crashes and hangs in supervised child processes: each is reported against the subtest it
// happened in, the subtests before it keep their results and the run goes on.

#include "zqtestharness.h"

#include <chrono>
#include <gtest/gtest.h>

using namespace zqtest;

namespace
{
nlohmann::json RunForJson(std::vector<std::string> args, SResult& result,
                          const CTemporaryDirectory& directory)
{
    args.insert(args.end(), {"--json", directory / "results.json", kFixture});
    result = RunZqTest(args);
    return nlohmann::json::parse(ReadFile(directory / "results.json"));
}
} // namespace

TEST(ZqTestIsolation, CrashesAreReportedAgainstTheirSubtestAndTheClassGoesOn)
{
    CTemporaryDirectory directory;
    SResult result;
    const auto byName = SubtestsByName(RunForJson(
        {"--filter", "ZqFixtureCrash_UnitTest:ZqFixturePass_UnitTest", "--jobs", "1"}, result, directory));
    EXPECT_EQ(result.exitCode, 1) << result.output;

    EXPECT_EQ(byName.at("ZqFixtureCrash_UnitTest.#0").at("result"), "ePassed");
    // The message written before the crash is kept with the subtest it belongs to.
    EXPECT_EQ(byName.at("ZqFixtureCrash_UnitTest.#0").at("messages").at(0).at("text"), "vor dem Absturz\n");
    const auto& segv = byName.at("ZqFixtureCrash_UnitTest.#1");
    EXPECT_EQ(segv.at("result"), "crashed");
    EXPECT_TRUE(segv.at("outcome").is_null());
    EXPECT_EQ(segv.at("messages").at(0).at("text"), "gleich knallt es\n");
    // Printed without a newline or a flush just before the crash, and kept all the same.
    // (A sanitizer's report of the crash may follow it.)
    EXPECT_EQ(segv.at("output").get<std::string>().rfind("Ausgabe vor dem Absturz", 0), 0u) << segv;
    EXPECT_EQ(byName.at("ZqFixtureCrash_UnitTest.#2").at("result"), "ePassed");
    EXPECT_EQ(byName.at("ZqFixtureCrash_UnitTest.#3").at("result"), "crashed");
    EXPECT_EQ(byName.at("ZqFixtureCrash_UnitTest.#4").at("result"), "ePassed");
    for (int i = 0; i < 3; ++i)
        EXPECT_EQ(byName.at("ZqFixturePass_UnitTest.#" + std::to_string(i)).at("result"), "ePassed");

    EXPECT_TRUE(result.Contains("[  FAILED  ] ZqFixtureCrash_UnitTest.Speicherzugriffsfehler"))
        << result.output;
    EXPECT_EQ(result.LastLine(), "6 passed, 2 failed");
}

TEST(ZqTestIsolation, AHangIsKilledAfterTheTimeoutAndTheRestRuns)
{
    CTemporaryDirectory directory;
    SResult result;
    const auto start = std::chrono::steady_clock::now();
    const auto byName = SubtestsByName(
        RunForJson({"--filter", "ZqFixtureHang_UnitTest", "--timeout", "1"}, result, directory));
    const double seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
    EXPECT_EQ(result.exitCode, 1) << result.output;
    EXPECT_EQ(byName.at("ZqFixtureHang_UnitTest.#0").at("result"), "ePassed");
    EXPECT_EQ(byName.at("ZqFixtureHang_UnitTest.#1").at("result"), "timeout");
    EXPECT_GE(byName.at("ZqFixtureHang_UnitTest.#1").at("seconds").get<double>(), 0.9);
    EXPECT_EQ(byName.at("ZqFixtureHang_UnitTest.#1").at("output"), "Ausgabe vor dem Hängen");
    EXPECT_EQ(byName.at("ZqFixtureHang_UnitTest.#2").at("result"), "ePassed");
    EXPECT_LT(seconds, 30.0);
    EXPECT_TRUE(result.Contains("[  FAILED  ] ZqFixtureHang_UnitTest.hängt (timeout)")) << result.output;
}

TEST(ZqTestIsolation, ACrashBeforeTheFirstSubtestFailsTheClassOnceAndOthersRunInParallel)
{
    CTemporaryDirectory directory;
    SResult result;
    const auto byName = SubtestsByName(
        RunForJson({"--filter", "ZqFixtureSetupCrash_UnitTest:ZqFixturePass_UnitTest:ZqFixtureMixed_UnitTest",
                    "--jobs", "3"},
                   result, directory));
    EXPECT_EQ(result.exitCode, 1);
    for (const char* name : {"ZqFixtureSetupCrash_UnitTest.#0", "ZqFixtureSetupCrash_UnitTest.#1"})
    {
        EXPECT_EQ(byName.at(name).at("result"), "crashed");
        EXPECT_NE(byName.at(name).at("failure").get<std::string>().find("PreallocateStaticData"),
                  std::string::npos);
    }
    EXPECT_EQ(byName.at("ZqFixturePass_UnitTest.#2").at("result"), "ePassed");
    EXPECT_EQ(byName.at("ZqFixtureMixed_UnitTest.#1").at("result"), "eFailed");
}

TEST(ZqTestIsolation, OutcomesExceptionsAndOutputOfEachSubtest)
{
    for (const char* mode : {"--jobs=2", "--in-process"})
    {
        SCOPED_TRACE(mode);
        CTemporaryDirectory directory;
        SResult result;
        const auto byName =
            SubtestsByName(RunForJson({"--filter", "ZqFixtureMixed_UnitTest", mode}, result, directory));
        EXPECT_EQ(result.exitCode, 1);
        EXPECT_EQ(byName.at("ZqFixtureMixed_UnitTest.#1").at("outcome"), 2);
        EXPECT_EQ(byName.at("ZqFixtureMixed_UnitTest.#1").at("messages").at(0).at("type"), 1);
        const auto& thrown = byName.at("ZqFixtureMixed_UnitTest.#2");
        EXPECT_EQ(thrown.at("result"), "eException");
        EXPECT_EQ(thrown.at("outcome"), 3);
        EXPECT_NE(thrown.at("failure").get<std::string>().find("kaputt im Test"), std::string::npos);
        EXPECT_EQ(byName.at("ZqFixtureMixed_UnitTest.#3").at("result"), "eAborted");
        EXPECT_EQ(byName.at("ZqFixtureMixed_UnitTest.#4").at("result"), "ePassed");
        EXPECT_EQ(result.LastLine(), "3 passed, 3 failed");
        // The error message stands under its own subtest, between its RUN and FAILED lines.
        const std::size_t run =
            result.output.find("[ RUN      ] ZqFixtureMixed_UnitTest.scheitert mit Meldung");
        const std::size_t message = result.output.find("Summe ist nicht korrekt");
        const std::size_t failed =
            result.output.find("[  FAILED  ] ZqFixtureMixed_UnitTest.scheitert mit Meldung");
        EXPECT_LT(run, message);
        EXPECT_LT(message, failed);
        EXPECT_LT(failed, result.output.find("[ RUN      ] ZqFixtureMixed_UnitTest.wirft eine Ausnahme"));
    }
    // Only an isolated run captures what a subtest printed, and gives it to that subtest.
    CTemporaryDirectory directory;
    SResult result;
    const auto byName =
        SubtestsByName(RunForJson({"--filter", "ZqFixtureMixed_UnitTest"}, result, directory));
    EXPECT_EQ(byName.at("ZqFixtureMixed_UnitTest.#5").at("output"), "Ausgabe auf stdout\n");
    EXPECT_FALSE(byName.at("ZqFixtureMixed_UnitTest.#2").contains("output"));
}

TEST(ZqTestIsolation, FailFastSkipsEverythingAfterTheFirstFailure)
{
    for (const char* mode : {"--jobs=1", "--in-process"})
    {
        SCOPED_TRACE(mode);
        const SResult result = RunZqTest(
            {"--filter", "ZqFixtureMixed_UnitTest:ZqFixturePass_UnitTest", "--fail-fast", mode, kFixture});
        EXPECT_EQ(result.exitCode, 1);
        // Pass runs first (registration order), then Mixed stops at its second subtest.
        EXPECT_EQ(result.LastLine(), "4 passed, 1 failed, 4 skipped") << result.output;
    }
}

TEST(ZqTestIsolation, FailFastStopsAtAClassWhoseSubtestsCannotBeRead)
{
    for (const char* mode : {"--jobs=1", "--in-process"})
    {
        SCOPED_TRACE(mode);
        const SResult result = RunZqTest({"--filter", "ZqFixtureInitThrows_UnitTest:ZqFixturePass_UnitTest",
                                          "--fail-fast", mode, kFixture});
        EXPECT_EQ(result.exitCode, 1);
        EXPECT_TRUE(result.Contains("Tabelle fehlt")) << result.output;
        EXPECT_EQ(result.LastLine(), "0 passed, 1 failed, 3 skipped") << result.output;
    }
}

TEST(ZqTestIsolation, AnOutcomeOutsideEResultFailsWithAReason)
{
    CTemporaryDirectory directory;
    SResult result;
    const auto byName =
        SubtestsByName(RunForJson({"--filter", "ZqFixtureOutcome_UnitTest", "--jobs=1"}, result, directory));
    EXPECT_EQ(result.exitCode, 1);
    for (int outcome : {0, 7})
    {
        const auto& subtest = byName.at("ZqFixtureOutcome_UnitTest.#" + std::to_string(outcome ? 1 : 0));
        EXPECT_EQ(subtest.at("result"), "invalid(" + std::to_string(outcome) + ")");
        EXPECT_EQ(subtest.at("outcome"), outcome);
        const std::string reason =
            "returned " + std::to_string(outcome) + ", which is no EResult value (ePassed 1, eFailed 2";
        EXPECT_NE(subtest.at("failure").get<std::string>().find(reason), std::string::npos);
        EXPECT_TRUE(result.Contains("    " + reason)) << result.output;
    }
}

TEST(ZqTestIsolation, AGarbledEventStreamIsEndedByTheRunnerAndTheClassGoesOn)
{
    CTemporaryDirectory directory;
    SResult result;
    const auto byName = SubtestsByName(
        RunForJson({"--filter", "ZqFixtureGarble_UnitTest", "--timeout", "20"}, result, directory));
    const auto& garbled = byName.at("ZqFixtureGarble_UnitTest.#0");
    EXPECT_EQ(garbled.at("result"), "crashed");
    const std::string failure = garbled.at("failure");
    EXPECT_NE(failure.find("ended by the runner"), std::string::npos) << failure;
    EXPECT_NE(failure.find("kaputt"), std::string::npos) << failure;
    EXPECT_EQ(failure.find("signal"), std::string::npos) << failure;
    EXPECT_EQ(byName.at("ZqFixtureGarble_UnitTest.#1").at("result"), "ePassed");
}

TEST(ZqTestIsolation, AnExitInTheMiddleOfASubtest)
{
    CTemporaryDirectory directory;
    const std::string marker = directory / "premature";
    // Isolated, it is a crash of that subtest, and the run ends properly.
    const SResult isolated =
        RunZqTest({"--filter", "ZqFixtureExit_UnitTest", kFixture}, "TEST_PREMATURE_EXIT_FILE=" + marker);
    EXPECT_EQ(isolated.exitCode, 1);
    EXPECT_TRUE(isolated.Contains("crashed: the process exited with code 0")) << isolated.output;
    EXPECT_EQ(isolated.LastLine(), "1 passed, 1 failed");
    EXPECT_FALSE(std::filesystem::exists(marker));
    // In process nothing can save the run: it ends with 0 and no summary, but the marker that a
    // harness checks for stays.
    const SResult inProcess = RunZqTest({"--in-process", "--filter", "ZqFixtureExit_UnitTest", kFixture},
                                        "TEST_PREMATURE_EXIT_FILE=" + marker);
    EXPECT_EQ(inProcess.exitCode, 0);
    EXPECT_FALSE(inProcess.Contains(" passed, ")) << inProcess.output;
    EXPECT_TRUE(std::filesystem::exists(marker));
}
