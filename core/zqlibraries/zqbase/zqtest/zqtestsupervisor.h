#pragma once

#include "zqbase/zqbase_export.h"

#include <string>
#include <vector>

class ZqTestClassRun;
class ZqTestInterrupt;

// Runs test classes in child processes, up to a number at once, and watches them. A child is the
// runner itself started again for one class and a list of subtest indices, as the leader of a
// process group of its own; it reports its events over a pipe (ZqTestEventWriter on descriptor 3).
// Its stdout and stderr go to one in-memory file, and the output marks among the events tell which
// part of that file each subtest printed.
//
// A child is judged by its exit, not by the end of its pipe, which a helper process of the test may
// hold open. A child that dies (a signal, an exit before its class ended) or outlives the timeout of
// one subtest (its group is killed with SIGKILL) is reported against the subtest it was in; the
// subtests before it keep their results, and a new child goes on with the ones after it. Processes
// left in a child's group when it is reaped are killed and named in the class's output.
class ZQBASE_API ZqTestSupervisor
{
public:
    struct SSettings
    {
        // The program and the arguments every child gets after its --child-* options.
        std::string program;
        std::vector<std::string> arguments;
        // Root of the run's scratch space; each class gets a directory of its own below it.
        std::string scratch;
        unsigned jobs = 1;
        // Per subtest (and for the set-up before the first one); 0 for none.
        double timeoutSeconds = 0;
        bool failFast = false;
        // When it catches a signal, the children are killed and the run ends; null: never.
        const ZqTestInterrupt* interrupt = nullptr;
    };

    enum class EEnd
    {
        eCompleted,
        // failFast: a failure stopped the run.
        eFailedFast,
        eInterrupted,
    };

    explicit ZqTestSupervisor(SSettings settings) : m_settings(std::move(settings)) {}

    // Runs every class to its end and Finish()es each. A failure with failFast, or a signal, stops
    // the children that are running (an interrupted subtest is marked eInterrupted) and reports
    // everything left as skipped.
    EEnd Run(const std::vector<ZqTestClassRun*>& classes);

private:
    SSettings m_settings;
};
