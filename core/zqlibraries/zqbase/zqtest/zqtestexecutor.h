#pragma once

#include "zqbase/zqbase_export.h"
#include "zqbase/zqtest/zqtestrecord.h"

#include <functional>
#include <string>
#include <vector>

// Where a test object is in its life; a failure outside a subtest is reported against the phase.
enum class EZqTestPhase
{
    eCreate,
    ePreallocate,
    eInit,
    eRun,
    eDestroy,
};

ZQBASE_API const char* ZqTestPhaseName(EZqTestPhase phase);

// What happens while one test class runs, in order: phases, and for each subtest its start, its
// messages as they are written and its end. Implemented by the run's bookkeeping and, in a child
// process, by the writer that sends the events to the supervising runner.
class IZqTestEvents
{
public:
    virtual ~IZqTestEvents() = default;
    virtual void OnPhase(EZqTestPhase phase) = 0;
    virtual void OnSubtestStart(unsigned index, const std::string& name) = 0;
    virtual void OnMessage(int type, const std::string& text) = 0;
    // status is ePassed, eFailed or eSkipped; outcome the EResult value (0 for none).
    virtual void OnSubtestEnd(unsigned index, EZqTestStatus status, int outcome, double seconds,
                              const std::string& failure) = 0;
    // The test could not be created or set up; no subtest of it runs.
    virtual void OnClassError(const std::string& text) = 0;
    virtual void OnClassEnd() = 0;
};

// Drives one test object through its contract in this process: create it through the factory,
// PreallocateStaticData, InitSubtests, then for each index GetSubtestName and RunUnitTest (or, when
// recreating, IUnitTestRecreate::Recreate), and destroy it. An exception escaping a subtest is that
// subtest's failure (outcome eException, its what() as the failure text); the next subtest runs.
class ZQBASE_API ZqTestExecutor
{
public:
    struct SSettings
    {
        bool recreate = false;
        // Stop after the first failing subtest.
        bool failFast = false;
        // Asked before each subtest; true stops the class there (the rest stays pending).
        std::function<bool()> stop;
    };

    static void Run(const std::string& className, const std::vector<unsigned>& indices,
                    const SSettings& settings, IZqTestEvents& events);
};
