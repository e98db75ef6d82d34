#include "zqbase/zqtest/zqtestexecutor.h"

#include "basepool/cbfactory.h"
#include "zqbase/cbtimer.h"
#include "zqbase/iunittestrecreate.h"
#include "zqbase/zqunittest.h"

#include <memory>

namespace
{
struct SOutcome
{
    EZqTestStatus status;
    int outcome;
    std::string failure;
};

SOutcome judge(int outcome)
{
    if (outcome == ZqUnitTest::ePassed)
        return {EZqTestStatus::ePassed, outcome, ""};
    if (outcome >= ZqUnitTest::eFailed && outcome <= ZqUnitTest::eAborted)
        return {EZqTestStatus::eFailed, outcome, ""};
    return {EZqTestStatus::eFailed, outcome,
            "returned " + std::to_string(outcome) +
                ", which is no EResult value (ePassed 1, eFailed 2, eException 3, eAborted 4)"};
}

SOutcome runOne(ZqUnitTest& test, unsigned index, bool recreate)
{
    try
    {
        if (!recreate)
            return judge(test.RunUnitTest(index));
        auto* recreator = dynamic_cast<IUnitTestRecreate*>(&test);
        if (!recreator || !recreator->CanRecreate(index))
            return {EZqTestStatus::eSkipped, 0, "cannot recreate its reference"};
        return recreator->Recreate(index) ? SOutcome{EZqTestStatus::ePassed, ZqUnitTest::ePassed, ""}
                                          : SOutcome{EZqTestStatus::eFailed, ZqUnitTest::eFailed, ""};
    }
    catch (const std::exception& e)
    {
        return {EZqTestStatus::eFailed, ZqUnitTest::eException,
                std::string("uncaught exception: ") + e.what()};
    }
    catch (...)
    {
        return {EZqTestStatus::eFailed, ZqUnitTest::eException, "uncaught exception of unknown type"};
    }
}

std::string describe(const char* where)
{
    try
    {
        throw;
    }
    catch (const std::exception& e)
    {
        return std::string("exception in ") + where + ": " + e.what();
    }
    catch (...)
    {
        return std::string("exception of unknown type in ") + where;
    }
}
} // namespace

const char* ZqTestPhaseName(EZqTestPhase phase)
{
    switch (phase)
    {
    case EZqTestPhase::eCreate:
        return "creation";
    case EZqTestPhase::ePreallocate:
        return "PreallocateStaticData";
    case EZqTestPhase::eInit:
        return "InitSubtests";
    case EZqTestPhase::eRun:
        return "the subtests";
    case EZqTestPhase::eDestroy:
        return "destruction";
    }
    return "?";
}

void ZqTestExecutor::Run(const std::string& className, const std::vector<unsigned>& indices,
                         const SSettings& settings, IZqTestEvents& events)
{
    std::unique_ptr<ZqUnitTest> test;
    EZqTestPhase phase = EZqTestPhase::eCreate;
    try
    {
        events.OnPhase(phase);
        test = CbFactory::CreateAs<ZqUnitTest>(CbUtf8ToWide(className).c_str());
        if (!test)
        {
            events.OnClassError("no test class '" + className + "' is registered");
            events.OnClassEnd();
            return;
        }
        test->GetMessageStream().SetSink(
            [&events](const ZqMessageStream::SMessage& message)
            { events.OnMessage(message.type, CbWideToUtf8(message.text.Std())); });
        events.OnPhase(phase = EZqTestPhase::ePreallocate);
        test->PreallocateStaticData();
        events.OnPhase(phase = EZqTestPhase::eInit);
        test->InitSubtests();
        events.OnPhase(phase = EZqTestPhase::eRun);
    }
    catch (...)
    {
        events.OnClassError(describe(ZqTestPhaseName(phase)));
        events.OnClassEnd();
        return;
    }

    const unsigned count = test->GetSubtestCount();
    for (unsigned index : indices)
    {
        if (settings.stop && settings.stop())
            break;
        if (index >= count)
        {
            events.OnClassError("subtest #" + std::to_string(index) + " does not exist (the test has " +
                                std::to_string(count) + ")");
            break;
        }
        std::string name;
        try
        {
            name = CbWideToUtf8(test->GetSubtestName(index).Std());
        }
        catch (...)
        {
            events.OnSubtestStart(index, "#" + std::to_string(index));
            events.OnSubtestEnd(index, EZqTestStatus::eFailed, ZqUnitTest::eException, 0,
                                describe("GetSubtestName"));
            if (settings.failFast)
                break;
            continue;
        }
        events.OnSubtestStart(index, name);
        CbTimer timer;
        SOutcome result = runOne(*test, index, settings.recreate);
        const double seconds = timer.GetElapsedSeconds();
        test->GetMessageStream().Take();
        events.OnSubtestEnd(index, result.status, result.outcome, seconds, result.failure);
        if (settings.failFast && result.status == EZqTestStatus::eFailed)
            break;
    }

    events.OnPhase(EZqTestPhase::eDestroy);
    try
    {
        test.reset();
    }
    catch (...)
    {
        events.OnClassError(describe("destruction"));
    }
    events.OnClassEnd();
}
