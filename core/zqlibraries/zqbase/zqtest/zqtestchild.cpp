#include "zqbase/zqtest/zqtestchild.h"

#include "zqbase/zqtest/zqtestcatalog.h"
#include "zqbase/zqtest/zqtestexecutor.h"
#include "zqbase/zqtest/zqtestoptions.h"
#include "zqbase/zqtest/zqtestprotocol.h"
#include "zqbase/zqtestenvironment.h"

#include <csignal>
#include <cstdio>
#include <filesystem>
#include <sys/prctl.h>
#include <unistd.h>

namespace
{
// The supervisor makes each child the leader of a process group of its own; only then is the group
// the child's to kill.
void killOwnGroup(int)
{
    if (getpgrp() == getpid())
        kill(0, SIGKILL);
    kill(getpid(), SIGKILL);
}

// The kernel sends the parent-death signal when the runner ends, even by SIGKILL. A real-time
// signal, so that no test is likely to handle or block it; its handler takes the helpers of the
// test along. The parent may have ended before the signal was asked for: then it never comes, and
// the parent id already tells.
void dieWithParent(int parent)
{
    const int signal = SIGRTMAX;
    struct sigaction action
    {
    };
    action.sa_handler = killOwnGroup;
    sigemptyset(&action.sa_mask);
    sigaction(signal, &action, nullptr);
    sigset_t set;
    sigemptyset(&set);
    sigaddset(&set, signal);
    pthread_sigmask(SIG_UNBLOCK, &set, nullptr);
    prctl(PR_SET_PDEATHSIG, signal);
    if (parent > 0 && getppid() != parent)
        killOwnGroup(signal);
}
} // namespace

int ZqTestChild::Main(const ZqTestOptions& options)
{
    dieWithParent(options.childParent);
    // What a test prints just before it crashes or hangs must reach the output file.
    std::setvbuf(stdout, nullptr, _IONBF, 0);

    ZqTestCatalog catalog;
    for (const std::string& module : options.modules)
        catalog.LoadModule(module);
    if (options.dataDirectory)
        ZqTestEnvironment::SetDataRoot(*options.dataDirectory);
    if (options.randomSeed)
        ZqTestEnvironment::SetReplaySeed(options.randomSeed);
    ZqTestEnvironment::SetDebugOutputEnabled(options.debugImages);
    if (!options.childScratch.empty())
    {
        std::filesystem::create_directories(options.childScratch);
        ZqTestEnvironment::SetScratchDirectory(options.childScratch);
    }
    ZqTestEventWriter writer(3);
    ZqTestExecutor::SSettings settings;
    settings.recreate = options.recreate;
    settings.failFast = options.failFast;
    ZqTestExecutor::Run(options.childClass, options.childIndices, settings, writer);
    return 0;
}
