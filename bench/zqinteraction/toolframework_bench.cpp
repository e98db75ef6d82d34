// What an interaction costs in the tool framework: one replace operation run through the event
// dispatcher with undo recording and one observing slot (and, in a second case, a recorder writing
// the change), against the same work written by hand (a std::mutex, a std::function callback and
// an undo log). And one uncontended lock and unlock through the locking manager against a plain
// std::mutex.

#include "basepool/benchratio.h"

#include "zqinteraction/tools/ccompportserializer.h"
#include "zqinteraction/tools/cconfiguration.h"
#include "zqinteraction/tools/cdatasimple.h"
#include "zqinteraction/tools/ceventdispatcher.h"
#include "zqinteraction/tools/coperationreplace.h"
#include "zqinteraction/tools/cundoredomanager.h"

#include <deque>
#include <functional>
#include <mutex>

namespace
{
using namespace Tools;

// Undo steps kept, as an application would limit them.
constexpr std::size_t kUndoSteps = 1000;

void BM_LockUnlock_LockingManager(benchmark::State& state)
{
    CFramework framework;
    auto data = CbMakeSmart<CDataSimple<unsigned int, 0>>(framework, "Value", 0u);
    CLockingManager& manager = framework.GetLockingManager();
    ITypedDataAccess<unsigned int>& access = data->GetAccessInterface();
    for (auto _ : state)
    {
        manager.requestLock(access);
        if (!manager.TryLockAndWait(CLockingManager::kWaitWithoutLimit))
            state.SkipWithError("lock refused");
        benchmark::DoNotOptimize(access.Get());
        manager.unlock(access);
    }
}

void BM_LockUnlock_DataLock(benchmark::State& state)
{
    CFramework framework;
    auto data = CbMakeSmart<CDataSimple<unsigned int, 0>>(framework, "Value", 0u);
    CLockingManager& manager = framework.GetLockingManager();
    ITypedDataAccess<unsigned int>& access = data->GetAccessInterface();
    for (auto _ : state)
    {
        CDataLock lock(access);
        if (!lock.Wait(manager))
            state.SkipWithError("lock refused");
        benchmark::DoNotOptimize(access.Get());
    }
}

void BM_LockUnlock_StdMutex(benchmark::State& state)
{
    std::mutex mutex;
    unsigned int value = 0;
    for (auto _ : state)
    {
        std::lock_guard<std::mutex> lock(mutex);
        benchmark::DoNotOptimize(value);
    }
}

// A component with an input port whose slot reads the new value under its lock.
class CObserver : public CComponent
{
public:
    CObserver() : CComponent("Observer") { AddPort<unsigned int>("Value", CPort::eIn); }

protected:
    void setUp(CFramework&) override
    {
        GetPort("Value")->AddSlot(CSlot(
            [this](const CSlot::SState&, CScene&)
            {
                ITypedDataAccess<unsigned int>& access =
                    GetPort("Value")->GetTypedData<unsigned int>().GetAccessInterface();
                CDataLock lock(access);
                lock.Wait(GetLockingManager());
                benchmark::DoNotOptimize(access.Get());
                return CSlot::NoOperation(CSlot::eEventHandled);
            },
            this));
    }
};

void runInteractions(benchmark::State& state, bool recording)
{
    std::vector<unsigned char> bytes;
    CbStreamWriteBinary out(bytes);
    CFramework framework;
    framework.GetUndoRedoManager().SetLimit(kUndoSteps);
    auto value = CbMakeSmart<CDataSimple<unsigned int, 0>>(framework, "Value", 0u);
    CConfiguration config;
    auto observer = CbMakeSmart<CObserver>();
    config.AddComponent(observer);
    observer->GetPort("Value")->Bind(value);
    CbSmartPointer<CComponentSerializer> recorder;
    if (recording)
    {
        recorder = CComponentSerializer::CreateSerializer(framework, out);
        recorder->Watch<unsigned int>(config, "Observer", "Value",
                                      CCompPortSerializerBase::eCompareImmediate);
    }
    config.LoadConfigForUnitTest(framework);
    CEventDispatcher& dispatcher = *framework.GetDispatcher();
    CbSmartPointer<ITypedData<unsigned int>> target(value.Get());
    unsigned int next = 0;
    for (auto _ : state)
    {
        dispatcher.NextInteraction();
        dispatcher.Execute(CbMakeSmart<COperationReplace<unsigned int>>(target, ++next));
        if (bytes.size() > (1u << 20))
            bytes.clear();
    }
    state.SetItemsProcessed(state.iterations());
}

void BM_Interaction_Dispatcher(benchmark::State& state)
{
    runInteractions(state, false);
}

void BM_Interaction_DispatcherRecording(benchmark::State& state)
{
    runInteractions(state, true);
}

// The same work by hand: lock, keep the old value for undo, write, unlock, call the observer,
// which locks again to read.
void BM_Interaction_Direct(benchmark::State& state)
{
    std::mutex mutex;
    unsigned int value = 0;
    struct SUndo
    {
        unsigned int oldValue;
        unsigned int newValue;
    };
    std::deque<SUndo> undo;
    const std::function<void()> observer = [&]
    {
        std::lock_guard<std::mutex> lock(mutex);
        benchmark::DoNotOptimize(value);
    };
    unsigned int next = 0;
    for (auto _ : state)
    {
        {
            std::lock_guard<std::mutex> lock(mutex);
            undo.push_back({value, ++next});
            value = next;
        }
        if (undo.size() > kUndoSteps)
            undo.pop_front();
        observer();
    }
    state.SetItemsProcessed(state.iterations());
}
} // namespace

BENCHMARK(BM_LockUnlock_LockingManager);
BENCHMARK(BM_LockUnlock_DataLock);
BENCHMARK(BM_LockUnlock_StdMutex);
BENCHMARK(BM_Interaction_Dispatcher);
BENCHMARK(BM_Interaction_DispatcherRecording);
BENCHMARK(BM_Interaction_Direct);

int main(int argc, char** argv)
{
    return RunBenchmarksWithRatios(argc, argv,
                                   {
                                       {"BM_LockUnlock_LockingManager", "BM_LockUnlock_StdMutex"},
                                       {"BM_LockUnlock_DataLock", "BM_LockUnlock_StdMutex"},
                                       {"BM_Interaction_Dispatcher", "BM_Interaction_Direct"},
                                       {"BM_Interaction_DispatcherRecording", "BM_Interaction_Direct"},
                                   });
}
