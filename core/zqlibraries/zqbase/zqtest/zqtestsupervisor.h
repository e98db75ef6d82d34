#pragma once

#include "zqbase/zqbase_export.h"

#include <string>
#include <vector>

class ZqTestClassRun;

// Runs test classes in child processes, up to a number at once, and watches them. A child is the
// runner itself started again for one class and a list of subtest indices; it reports its events
// over a pipe (ZqTestEventWriter on descriptor 3). Its stdout and stderr go to one in-memory file,
// and the output marks among the events tell which part of that file each subtest printed.
//
// A child that dies (a signal, an exit before its class ended) or outlives the timeout of one
// subtest (killed with SIGKILL) is reported against the subtest it was in; the subtests before it
// keep their results, and a new child goes on with the ones after it.
class ZQBASE_API ZqTestSupervisor
{
public:
    struct SSettings
    {
        // The program and the arguments every child gets before --child-class and its indices.
        std::string program;
        std::vector<std::string> arguments;
        // Root of the run's scratch space; each class gets a directory of its own below it.
        std::string scratch;
        unsigned jobs = 1;
        // Per subtest (and for the set-up before the first one); 0 for none.
        double timeoutSeconds = 0;
        bool failFast = false;
    };

    explicit ZqTestSupervisor(SSettings settings) : m_settings(std::move(settings)) {}

    // Runs every class to its end and Finish()es each; with failFast, after the first failure the
    // running children are stopped and everything left is reported skipped. Returns false when it
    // stopped early that way.
    bool Run(const std::vector<ZqTestClassRun*>& classes);

private:
    SSettings m_settings;
};
