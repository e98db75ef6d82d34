// The runner's processes under abuse: signals that end the runner, helper processes a test leaves
// behind, a child whose parent is gone before it could watch it.

#include "zqtestharness.h"

#include <gtest/gtest.h>

using namespace zqtest;

namespace
{
// A directory for the pids the fixture notes, and one as TMPDIR, so that the run's scratch
// directory can be seen to go.
struct SProcessDirectories
{
    CTemporaryDirectory pids;
    CTemporaryDirectory temp;

    std::map<std::string, std::string> Environment() const
    {
        return {{"ZQ_FIXTURE_PIDS", pids.Path()}, {"TMPDIR", temp.Path()}};
    }
    bool ScratchIsGone() const { return std::filesystem::is_empty(temp.Path()); }
};

bool Dies(pid_t pid)
{
    return WaitFor([pid] { return !IsAlive(pid); }, 5);
}
} // namespace

TEST(ZqTestProcesses, ChildAndItsHelpersDieWithTheRunnerWhateverSignalEndsIt)
{
    for (int signal : {SIGKILL, SIGHUP})
    {
        SCOPED_TRACE(strsignal(signal));
        SProcessDirectories directories;
        CBackgroundRun runner({"--filter", "ZqFixtureHelper_UnitTest.#2", "--timeout", "60", kFixture},
                              directories.Environment(), directories.pids / "console.txt");
        const pid_t child = AwaitPid(directories.pids.Path(), "hanger");
        const pid_t helper = AwaitPid(directories.pids.Path(), "helper2");
        ASSERT_GT(child, 0);
        ASSERT_GT(helper, 0);
        runner.Signal(signal);
        const int status = runner.Wait();
        EXPECT_TRUE(WIFSIGNALED(status) && WTERMSIG(status) == signal) << status;
        EXPECT_TRUE(Dies(child));
        EXPECT_TRUE(Dies(helper));
        // Nobody is left to clean up after SIGKILL.
        if (signal != SIGKILL)
        {
            EXPECT_TRUE(directories.ScratchIsGone());
        }
    }
}

TEST(ZqTestProcesses, ASignalStopsTheRunWritesTheReportsAndCleansUp)
{
    for (int signal : {SIGINT, SIGTERM})
    {
        SCOPED_TRACE(strsignal(signal));
        SProcessDirectories directories;
        const std::string report = directories.pids / "results.json";
        CBackgroundRun runner({"--jobs", "1", "--filter", "ZqFixtureHang_UnitTest:ZqFixtureRecreate_UnitTest",
                               "--json", report, kFixture},
                              directories.Environment(), directories.pids / "console.txt");
        const pid_t child = AwaitPid(directories.pids.Path(), "hang");
        ASSERT_GT(child, 0);
        runner.Signal(signal);
        const int status = runner.Wait();
        // Ended by the same signal, as a shell expects of a program stopped with Ctrl-C.
        EXPECT_TRUE(WIFSIGNALED(status) && WTERMSIG(status) == signal) << status;
        EXPECT_TRUE(Dies(child));
        EXPECT_TRUE(directories.ScratchIsGone());

        const auto byName = SubtestsByName(nlohmann::json::parse(ReadFile(report)));
        EXPECT_EQ(byName.at("ZqFixtureHang_UnitTest.#0").at("result"), "ePassed");
        const auto& interrupted = byName.at("ZqFixtureHang_UnitTest.#1");
        EXPECT_EQ(interrupted.at("result"), "interrupted");
        EXPECT_NE(interrupted.at("failure").get<std::string>().find(sigabbrev_np(signal)), std::string::npos);
        for (const char* name :
             {"ZqFixtureHang_UnitTest.#2", "ZqFixtureRecreate_UnitTest.#0", "ZqFixtureRecreate_UnitTest.#1"})
            EXPECT_EQ(byName.at(name).at("result"), "skipped") << name;
        const std::string console = ReadFile(directories.pids / "console.txt");
        EXPECT_NE(console.find("1 passed, 1 failed, 3 skipped\n"), std::string::npos) << console;
        // What the subtest printed without a newline ends its line before the runner's own.
        EXPECT_NE(console.find("Ausgabe vor dem Hängen\n    interrupted: the runner received SIG"),
                  std::string::npos)
            << console;
    }
}

TEST(ZqTestProcesses, ASignalIgnoredFromTheStartStaysIgnored)
{
    // As under nohup: the runner inherits SIGHUP ignored and must not stop for it.
    SProcessDirectories directories;
    struct sigaction ignore
    {
    }, previous{};
    ignore.sa_handler = SIG_IGN;
    sigaction(SIGHUP, &ignore, &previous);
    CBackgroundRun runner({"--filter", "ZqFixtureHang_UnitTest.#1", "--timeout", "1", kFixture},
                          directories.Environment(), directories.pids / "console.txt");
    sigaction(SIGHUP, &previous, nullptr);
    ASSERT_GT(AwaitPid(directories.pids.Path(), "hang"), 0);
    runner.Signal(SIGHUP);
    const int status = runner.Wait();
    EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 1) << status;
    EXPECT_NE(ReadFile(directories.pids / "console.txt").find("timeout: still running after 1 s"),
              std::string::npos);
}

TEST(ZqTestProcesses, AChildWhoseRunnerIsAlreadyGoneEndsAtOnce)
{
    // The child was meant for a runner that ended before it could ask to die with it: its parent is
    // not the one named. It must not go on to hang in the subtest.
    CTemporaryDirectory directory;
    CBackgroundRun child(
        {"--child-class=ZqFixtureHang_UnitTest", "--child-indices=1", "--child-parent=1", "--", kFixture}, {},
        directory / "output.txt");
    const int status = child.Wait(5);
    EXPECT_TRUE(WIFSIGNALED(status) && WTERMSIG(status) == SIGKILL) << status;
    EXPECT_EQ(ReadFile(directory / "output.txt").find("Ausgabe vor dem Hängen"), std::string::npos);
}

TEST(ZqTestProcesses, AHelperLeftBehindCannotHoldTheRunAndIsKilled)
{
    SProcessDirectories directories;
    const std::string report = directories.pids / "results.json";
    const auto start = std::chrono::steady_clock::now();
    CBackgroundRun runner({"--filter", "ZqFixtureHelper_UnitTest.#0:ZqFixtureHelper_UnitTest.#1", "--timeout",
                           "10", "--json", report, kFixture},
                          directories.Environment(), directories.pids / "console.txt");
    const int status = runner.Wait();
    const double seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
    EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 0) << ReadFile(directories.pids / "console.txt");
    // The helper sleeps 20 s; the run is judged by the child's exit, not by the end of its pipes.
    EXPECT_LT(seconds, 5.0);
    const pid_t helper = AwaitPid(directories.pids.Path(), "helper", 0);
    ASSERT_GT(helper, 0);
    EXPECT_TRUE(Dies(helper));

    const auto json = nlohmann::json::parse(ReadFile(report));
    const auto& record = json.at("tests").at(0);
    EXPECT_FALSE(record.contains("error"));
    EXPECT_NE(record.at("output").get<std::string>().find("killed what the test left running in its process "
                                                          "group: " +
                                                          std::to_string(helper) + " ("),
              std::string::npos)
        << record;
    for (const auto& subtest : record.at("subtests"))
        EXPECT_EQ(subtest.at("result"), "ePassed");
}
