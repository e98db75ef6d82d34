// Test of the tool framework of zqinteraction: record and replay of port changes, operations run
// interaction by interaction, undo and redo, the locking manager between threads, interaction ids,
// concurrent readers and writers, member access into a structure, slot callbacks, and the set-up
// order of a configuration. Each subtest builds its own framework and releases it before it returns.

#include "zqunittests/tools/ctoolframeworktestparts.h"

#include "basepool/cbstreamreadbinary.h"
#include "basepool/cbstreamwritebinary.h"
#include "zqinteraction/tools/ccompportserializer.h"
#include "zqinteraction/tools/cconfiguration.h"
#include "zqinteraction/tools/cdataexclusivesimple.h"
#include "zqinteraction/tools/cdatamemberaccess.h"
#include "zqinteraction/tools/ceventdispatcher.h"
#include "zqinteraction/tools/cscene.h"
#include "zqinteraction/tools/cundoredomanager.h"

#include <atomic>
#include <chrono>
#include <functional>
#include <iterator>
#include <optional>
#include <thread>

// Every member of the templates, for each value type the module uses.
template class Tools::CCompPortSerializer<unsigned int>;
template class Tools::CCompPortSerializer<bool>;
template class Tools::CCompPortSerializer<CbVector2f>;
template class Tools::CCompPortSerializer<CbVector3f>;
template class Tools::CCompPortSerializer<Tools::STest>;
template class Tools::COperationReplace<unsigned int>;
template class Tools::COperationReplace<bool>;
template class Tools::COperationReplace<CbVector2f>;
template class Tools::COperationReplace<CbVector3f>;
template class Tools::COperationReplace<Tools::STest>;

namespace Tools
{
class CToolFramework_UnitTest : public ZqUnitTest
{
    CB_DECLARE_RTTI(CToolFramework_UnitTest)

protected:
    unsigned int getSubtestCount() const override;
    CString getSubtestName(unsigned int index) override;
    EResult runUnitTest(unsigned int index) override;
};
} // namespace Tools

CB_IMPLEMENT_RTTI(Tools::CToolFramework_UnitTest, ZqUnitTest::RTTI);

namespace Tools
{
namespace
{
using EResult = ZqUnitTest::EResult;
using UIntData = CbSmartPointer<ITypedData<unsigned int>>;

template <class T> CbSmartPointer<COperationReplace<T>> replace(CbSmartPointer<ITypedData<T>> data, T value)
{
    return CbMakeSmart<COperationReplace<T>>(std::move(data), std::move(value));
}

template <class T, class D> CbSmartPointer<ITypedData<T>> typed(const CbSmartPointer<D>& data)
{
    return CbSmartPointer<ITypedData<T>>(data.Get());
}

// A scene with a camera and the configuration of "TestComp", recording or replaying the changes
// of its two ports.
struct SSerializerSession
{
    CFramework framework;
    CConfiguration config;
    CbSmartPointer<CTestComponent> component = CbMakeSmart<CTestComponent>();
    CbSmartPointer<CComponentSerializer> serializer;

    template <class Stream> explicit SSerializerSession(Stream& stream)
    {
        framework.GetScene().GetCamera().SetView(CbVector3f(0, -5, 2), CbVector3f(0, 0, 0));
        config.AddComponent(component);
        serializer = CComponentSerializer::CreateSerializer(framework, stream);
        serializer->Watch<unsigned int>(config, "TestComp", "In", CCompPortSerializerBase::eCompareImmediate);
        serializer->Watch<unsigned int>(config, "TestComp", "Out",
                                        CCompPortSerializerBase::eCompareImmediate);
        framework.RegisterLockingMechanism(CbMakeSmart<CLockingManager>());
        config.LoadConfigForUnitTest(framework);
    }

    // One interaction per value, each setting "In" (and through the component "Out").
    void Run(std::initializer_list<unsigned int> values)
    {
        for (unsigned int value : values)
        {
            framework.GetDispatcher()->NextInteraction();
            framework.GetDispatcher()->Execute(CbMakeSmart<CTestOperationSet<unsigned int>>(
                component->GetIn(), std::vector<unsigned int>{value}));
        }
    }
};

EResult runComponentSerializer()
{
    std::vector<unsigned char> recording;
    {
        CbStreamWriteBinary out(recording);
        SSerializerSession session(out);
        session.Run({3, 5, 8});
        TOOLS_ASSERT_EQUAL(ReadValue(*session.component->GetOut()), 16u);
        TOOLS_ASSERT_EQUAL(session.serializer->GetRecordCount(), 6u);
    }
    {
        CbStreamReadBinary in(recording);
        SSerializerSession session(in);
        session.framework.GetScene().GetCamera().SetView(CbVector3f(1, 1, 1), CbVector3f(2, 2, 2));
        session.Run({3, 5, 8});
        session.serializer->FinishReplay();
        TOOLS_ASSERT_EQUAL(session.framework.GetScene().GetCamera().GetEye(), CbVector3f(0, -5, 2));
    }
    CbStreamReadBinary in(recording);
    SSerializerSession session(in);
    TOOLS_ASSERT_EQUAL(ThrownFunction(
                           [&session] {
                               session.Run({3, 6, 8});
                           }),
                       "Tools::CCompPortSerializer<unsigned int>::onDataChanged");
    return ZqUnitTest::ePassed;
}

EResult runDispatcherOperations()
{
    CFramework framework;
    CEventDispatcher* pDispatcher = framework.GetDispatcher();
    CConfiguration config;
    auto component = CbMakeSmart<CTestComponent>();
    config.AddComponent(component);
    config.LoadConfigForUnitTest(framework);
    auto position = CbMakeSmart<CDataSimple<CbVector2f, 0>>(framework, "Position");

    TOOLS_ASSERT_EQUAL(ThrownFunction(
                           [&] {
                               pDispatcher->Execute(replace(typed<CbVector2f>(position), {1, 1}));
                           }),
                       "Tools::CEventDispatcher::Execute");
    pDispatcher->NextInteraction();
    const CEventDispatcher::SReport direct = pDispatcher->Execute(replace(component->GetIn(), 4u));
    // The change of In returns the operation that sets Out: both run, both in one undo step.
    TOOLS_ASSERT_EQUAL(direct.operations, 2u);
    TOOLS_ASSERT_EQUAL(direct.changes, 2u);
    TOOLS_ASSERT_EQUAL(direct.handledEvents, 1u);
    TOOLS_ASSERT_EQUAL(ReadValue(*component->GetOut()), 8u);
    TOOLS_ASSERT_EQUAL(framework.GetUndoRedoManager().GetUndoOperationCount(), 2u);
    TOOLS_ASSERT_EQUAL(framework.GetUndoRedoManager().GetUndoInteractionId(),
                       pDispatcher->GetCurrentInteractionId());

    // Another thread hands over an operation; it runs on the dispatcher's thread, and only there.
    std::string executeElsewhere;
    std::thread worker(
        [&]
        {
            pDispatcher->Post(replace(typed<CbVector2f>(position), {1.5f, -2}));
            executeElsewhere = ThrownFunction([&] { pDispatcher->Execute(replace(component->GetIn(), 1u)); });
        });
    worker.join();
    TOOLS_ASSERT_EQUAL(executeElsewhere, "Tools::CEventDispatcher::Execute");
    TOOLS_ASSERT_EQUAL(ReadValue<CbVector2f>(*position), CbVector2f(0, 0));
    pDispatcher->NextInteraction();
    TOOLS_ASSERT_EQUAL(pDispatcher->ProcessPosted().operations, 1u);
    TOOLS_ASSERT_EQUAL(ReadValue<CbVector2f>(*position), CbVector2f(1.5f, -2));
    TOOLS_ASSERT_EQUAL(framework.GetUndoRedoManager().GetUndoCount(), 2u);
    return ZqUnitTest::ePassed;
}

EResult runUndoRedoManager()
{
    CFramework framework;
    CEventDispatcher* pDispatcher = framework.GetDispatcher();
    CUndoRedoManager& undoRedo = framework.GetUndoRedoManager();
    auto value = typed<unsigned int>(CbMakeSmart<CDataSimple<unsigned int, 0>>(framework, "Value", 0u));
    for (unsigned int i = 1; i <= 3; ++i)
    {
        pDispatcher->NextInteraction();
        pDispatcher->Execute(replace(value, i));
    }
    pDispatcher->Undo();
    pDispatcher->Undo();
    TOOLS_ASSERT_EQUAL(ReadValue(*value), 1u);
    pDispatcher->Redo();
    TOOLS_ASSERT_EQUAL(ReadValue(*value), 2u);
    TOOLS_ASSERT_EQUAL(undoRedo.CanRedo(), true);
    // A new operation drops what could have been redone.
    pDispatcher->NextInteraction();
    pDispatcher->Execute(replace(value, 10u));
    pDispatcher->Execute(replace(value, 20u));
    TOOLS_ASSERT_EQUAL(undoRedo.CanRedo(), false);
    pDispatcher->Undo();
    TOOLS_ASSERT_EQUAL(ReadValue(*value), 2u);

    // Additions of one interaction merge into one step.
    pDispatcher->NextInteraction();
    for (unsigned int delta : {1u, 2u, 3u})
        pDispatcher->Execute(CbMakeSmart<CTestOperationAdd>(value, delta));
    TOOLS_ASSERT_EQUAL(undoRedo.GetUndoOperationCount(), 1u);
    pDispatcher->Undo();
    TOOLS_ASSERT_EQUAL(ReadValue(*value), 2u);

    // A step whose older operation cannot be undone stays as it was.
    auto other = typed<unsigned int>(CbMakeSmart<CDataSimple<unsigned int, 1>>(framework, "Other", 0u));
    pDispatcher->NextInteraction();
    pDispatcher->Execute(CbMakeSmart<CTestOperationSet<unsigned int>>(other, std::vector<unsigned int>{5}));
    pDispatcher->Execute(replace(value, 40u));
    const std::size_t steps = undoRedo.GetUndoCount();
    std::string error;
    try
    {
        pDispatcher->Undo();
    }
    catch (const std::logic_error& e)
    {
        error = e.what();
    }
    TOOLS_ASSERT_EQUAL(error, "The method or operation is not implemented.");
    TOOLS_ASSERT_EQUAL(ReadValue(*value), 40u);
    TOOLS_ASSERT_EQUAL(undoRedo.GetUndoCount(), steps);
    TOOLS_ASSERT_EQUAL(ThrownFunction([&] { replace(value, 1u)->Accumulate(*replace(value, 2u)); }),
                       "Tools::IOperation::Accumulate");
    return ZqUnitTest::ePassed;
}

// Spins until done() holds; false after ten seconds.
bool waitUntil(const std::function<bool()>& done)
{
    const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(10);
    while (!done())
    {
        if (std::chrono::steady_clock::now() > deadline)
            return false;
        std::this_thread::yield();
    }
    return true;
}

EResult runLockingManager()
{
    CFramework framework;
    CLockingManager& manager = framework.GetLockingManager();
    auto first = CbMakeSmart<CDataSimple<unsigned int, 0>>(framework, "First", 0u);
    auto second = CbMakeSmart<CDataSimple<unsigned int, 1>>(framework, "Second", 0u);

    // While one thread holds the lock, another waits for it and a third gives up after 20 ms; on
    // release the waiter goes on and sees what the holder wrote.
    std::optional<CDataLock> held(std::in_place, first->GetAccessInterface());
    held->Wait(manager);
    std::atomic<bool> acquired{false};
    unsigned int seen = 0;
    std::thread waiter(
        [&]
        {
            CDataLock lock(first->GetAccessInterface());
            if (lock.Wait(manager))
            {
                seen = first->GetAccessInterface().Get();
                acquired = true;
            }
        });
    const bool waited = waitUntil([&] { return manager.GetWaitingCount() == 1; });
    bool timedOut = false;
    std::thread(
        [&]
        {
            CDataLock lock(first->GetAccessInterface());
            timedOut = !lock.Wait(manager, 20);
        })
        .join();
    first->GetAccessInterface().Set(42u);
    const bool acquiredWhileHeld = acquired;
    held.reset();
    waiter.join();
    TOOLS_ASSERT_EQUAL(waited, true);
    TOOLS_ASSERT_EQUAL(acquiredWhileHeld, false);
    TOOLS_ASSERT_EQUAL(timedOut, true);
    TOOLS_ASSERT_EQUAL(acquired.load(), true);
    TOOLS_ASSERT_EQUAL(seen, 42u);

    // Two threads lock the same two data in opposite orders: the wait that would close the cycle
    // is refused, and the other thread finishes.
    std::atomic<int> holding{0};
    bool firstGotBoth = false, secondGotBoth = true, firstSawSecond = false;
    std::thread a(
        [&]
        {
            CDataLock lockFirst(first->GetAccessInterface());
            lockFirst.Wait(manager);
            ++holding;
            waitUntil([&] { return holding == 2; });
            CDataLock lockSecond(second->GetAccessInterface());
            firstGotBoth = lockSecond.Wait(manager);
        });
    std::thread b(
        [&]
        {
            CDataLock lockSecond(second->GetAccessInterface());
            lockSecond.Wait(manager);
            ++holding;
            firstSawSecond = waitUntil([&] { return manager.GetWaitingCount() == 1; });
            CDataLock lockFirst(first->GetAccessInterface());
            secondGotBoth = lockFirst.Wait(manager);
        });
    a.join();
    b.join();
    TOOLS_ASSERT_EQUAL(firstSawSecond, true);
    TOOLS_ASSERT_EQUAL(firstGotBoth, true);
    TOOLS_ASSERT_EQUAL(secondGotBoth, false);
    TOOLS_ASSERT_EQUAL(manager.GetDeadlocksAvoided(), 1u);
    return ZqUnitTest::ePassed;
}
EResult runNextIteration()
{
    CFramework framework;
    CEventDispatcher* pDispatcher = framework.GetDispatcher();
    CConfiguration config;
    auto value = CbMakeSmart<CDataSimple<unsigned int, 0>>(framework, "Value", 0u);
    auto counter =
        CbMakeSmart<CCountingComponent<unsigned int>>("Counter", std::vector<std::string>{"Value"});
    config.AddComponent(counter);
    counter->GetPort("Value")->Bind(value);
    config.LoadConfigForUnitTest(framework);

    pDispatcher->NextInteraction();
    const unsigned int uiPastInterationId = pDispatcher->GetCurrentInteractionId();
    TOOLS_ASSERT_EQUAL(pDispatcher->NextInteraction(), uiPastInterationId + 1);
    pDispatcher->NextInteraction();
    TOOLS_ASSERT_EQUAL(pDispatcher->GetCurrentInteractionId(), uiPastInterationId + 2);
    // Slots and the undo step see the interaction an operation ran in; interactions without
    // operations leave no step.
    pDispatcher->Execute(replace(typed<unsigned int>(value), 7u));
    TOOLS_ASSERT_EQUAL(counter->GetLastInteraction(), uiPastInterationId + 2);
    TOOLS_ASSERT_EQUAL(framework.GetUndoRedoManager().GetUndoCount(), 1u);
    TOOLS_ASSERT_EQUAL(framework.GetUndoRedoManager().GetUndoInteractionId(), uiPastInterationId + 2);
    pDispatcher->NextInteraction();
    pDispatcher->Execute(replace(typed<unsigned int>(value), 8u));
    TOOLS_ASSERT_EQUAL(counter->GetLastInteraction(), uiPastInterationId + 3);
    TOOLS_ASSERT_EQUAL(framework.GetUndoRedoManager().GetUndoCount(), 2u);
    return ZqUnitTest::ePassed;
}

// Readers check that the three components of the position agree and never go back; writers
// count up a shared counter, while the dispatcher moves the position and records each move.
EResult runMultithreading()
{
    constexpr unsigned int kMoves = 1000, kReaders = 3, kWriters = 2, kIncrements = 500;
    std::vector<unsigned char> recording;
    CbStreamWriteBinary out(recording);
    CFramework framework;
    CEventDispatcher* pDispatcher = framework.GetDispatcher();
    CConfiguration config;
    auto position = CbMakeSmart<CDataSimple<CbVector3f, 0>>(framework, "Position");
    auto counter = CbMakeSmart<CDataSimple<unsigned int, 0>>(framework, "Counter", 0u);
    auto watcher =
        CbMakeSmart<CCountingComponent<CbVector3f>>("Watcher", std::vector<std::string>{"Position"});
    auto counted =
        CbMakeSmart<CCountingComponent<unsigned int>>("Counted", std::vector<std::string>{"Counter"});
    config.AddComponent(watcher);
    config.AddComponent(counted);
    watcher->GetPort("Position")->Bind(position);
    counted->GetPort("Counter")->Bind(counter);
    auto recorder = CComponentSerializer::CreateSerializer(framework, out);
    recorder->Watch<CbVector3f>(config, "Watcher", "Position", CCompPortSerializerBase::eCompareImmediate);
    config.LoadConfigForUnitTest(framework);

    std::atomic<bool> done{false};
    std::atomic<unsigned int> torn{0};
    std::vector<std::thread> threads;
    for (unsigned int r = 0; r < kReaders; ++r)
        threads.emplace_back(
            [&]
            {
                float last = 0;
                while (!done)
                {
                    const CbVector3f p = ReadValue<CbVector3f>(*position);
                    if (p.x != p.y || p.y != p.z || p.x < last)
                        ++torn;
                    last = p.x;
                }
            });
    for (unsigned int w = 0; w < kWriters; ++w)
        threads.emplace_back(
            [&]
            {
                ITypedDataAccess<unsigned int>& access = counter->GetAccessInterface();
                for (unsigned int i = 0; i < kIncrements; ++i)
                {
                    CDataLock lock(access);
                    if (lock.Wait(framework.GetLockingManager()))
                        access.Set(access.Get() + 1);
                }
            });
    for (unsigned int k = 1; k <= kMoves; ++k)
    {
        pDispatcher->NextInteraction();
        const float f = static_cast<float>(k);
        pDispatcher->Execute(replace(typed<CbVector3f>(position), CbVector3f(f, f, f)));
    }
    done = true;
    for (std::thread& thread : threads)
        thread.join();
    pDispatcher->DeliverChanges();
    TOOLS_ASSERT_EQUAL(torn.load(), 0u);
    TOOLS_ASSERT_EQUAL(ReadValue<unsigned int>(*counter), kWriters * kIncrements);
    TOOLS_ASSERT_EQUAL(recorder->GetRecordCount(), kMoves);
    TOOLS_ASSERT_EQUAL(watcher->GetCount("Position"), kMoves);
    TOOLS_ASSERT_EQUAL(counted->GetCount("Counter") > 0, true);
    return ZqUnitTest::ePassed;
}

EResult runDataMemberAccess()
{
    CFramework framework;
    CEventDispatcher* pDispatcher = framework.GetDispatcher();
    auto probe = CbMakeSmart<CSceneObject>("Probe");
    framework.GetScene().AddObject(probe);
    STest initial;
    initial.uiValue = 7;
    auto structure = CbMakeSmart<CDataExclusiveSimple<STest, 0>>(framework, *probe, "Probe", initial);
    auto vec3 = CbMakeSmart<CDataMemberAccess<CbVector3f, 0, STest>>(typed<STest>(structure), &STest::vec3,
                                                                     "Probe.vec3");
    auto flag =
        CbMakeSmart<CDataMemberAccess<bool, 0, STest>>(typed<STest>(structure), &STest::bFlag, "Probe.bFlag");
    CConfiguration config;
    auto whole = CbMakeSmart<CCountingComponent<STest>>("Whole", std::vector<std::string>{"Probe"});
    auto member = CbMakeSmart<CCountingComponent<CbVector3f>>("Member", std::vector<std::string>{"vec3"});
    config.AddComponent(whole);
    config.AddComponent(member);
    whole->GetPort("Probe")->Bind(structure);
    member->GetPort("vec3")->Bind(vec3);
    config.LoadConfigForUnitTest(framework);

    pDispatcher->NextInteraction();
    pDispatcher->Execute(replace(typed<CbVector3f>(vec3), CbVector3f(1.0f, 2.0f, 42)));
    pDispatcher->Execute(replace(typed<bool>(flag), true));
    {
        ITypedDataAccess<CbVector3f>& hVec3f = vec3->GetAccessInterface();
        CDataLock lock(hVec3f);
        lock.Wait(framework.GetLockingManager());
        TOOLS_ASSERT_EQUAL(hVec3f.Get(), CbVector3f(1.0f, 2.0f, 42));
        // Locking the member locks the whole structure.
        TOOLS_ASSERT_EQUAL(structure->GetLockable().IsLockedByCurrentThread(), true);
        TOOLS_ASSERT_EQUAL(hVec3f.GetSceneObject(), static_cast<CSceneObject*>(probe.Get()));
    }
    const STest afterMembers = ReadValue<STest>(*structure);
    TOOLS_ASSERT_EQUAL(afterMembers.uiValue, 7u);
    TOOLS_ASSERT_EQUAL(afterMembers.bFlag, true);
    // A member's change reaches the structure's ports; the change of the other member not the vec3 port.
    TOOLS_ASSERT_EQUAL(whole->GetCount("Probe"), 2u);
    TOOLS_ASSERT_EQUAL(member->GetCount("vec3"), 1u);
    // Replacing the structure reaches the member's ports; undo restores the member.
    STest replaced = afterMembers;
    replaced.vec3 = CbVector3f(-1, -1, -1);
    pDispatcher->Execute(replace(typed<STest>(structure), replaced));
    TOOLS_ASSERT_EQUAL(member->GetCount("vec3"), 2u);
    TOOLS_ASSERT_EQUAL(ReadValue<CbVector3f>(*vec3), CbVector3f(-1, -1, -1));
    // Undo changes the structure and both members at once: each port hears of it once.
    pDispatcher->Undo();
    TOOLS_ASSERT_EQUAL(ReadValue<STest>(*structure), initial);
    TOOLS_ASSERT_EQUAL(whole->GetCount("Probe"), 4u);
    TOOLS_ASSERT_EQUAL(member->GetCount("vec3"), 3u);
    return ZqUnitTest::ePassed;
}

EResult runCallbacks()
{
    CFramework framework;
    CEventDispatcher* pDispatcher = framework.GetDispatcher();
    CConfiguration config;
    auto component = CbMakeSmart<CTestComponent>();
    auto callback = CbMakeSmart<CCountingComponent<unsigned int>>("Callback", std::vector<std::string>{"In"});
    auto second = CbMakeSmart<CCountingComponent<unsigned int>>("Second", std::vector<std::string>{"In"});
    config.AddComponent(component);
    const CConfiguration::HComponent hCallback = config.AddComponent(callback);
    config.AddComponent(second);
    config.Connect("TestComp", "Out", "Callback", "In");
    config.Connect("TestComp", "Out", "Second", "In");
    config.LoadConfigForUnitTest(framework);
    auto unrelated = CbMakeSmart<CDataSimple<unsigned int, 0>>(framework, "Unrelated", 0u);

    pDispatcher->NextInteraction();
    pDispatcher->Execute(replace(component->GetIn(), 1u));
    TOOLS_ASSERT_EQUAL(callback->GetCount("In"), 1u);
    TOOLS_ASSERT_EQUAL(second->GetCount("In"), 1u);
    // Three writes in one operation are one change.
    pDispatcher->Execute(CbMakeSmart<CTestOperationSet<unsigned int>>(component->GetOut(),
                                                                      std::vector<unsigned int>{5, 6, 7}));
    TOOLS_ASSERT_EQUAL(callback->GetCount("In"), 2u);
    pDispatcher->Execute(replace(typed<unsigned int>(unrelated), 3u));
    TOOLS_ASSERT_EQUAL(callback->GetCount("In"), 2u);
    // An inactive component hears nothing; the others go on.
    config.GetComponentByRef(hCallback)->SetActive(false);
    pDispatcher->Execute(replace(component->GetIn(), 2u));
    TOOLS_ASSERT_EQUAL(config.GetComponentByRef(hCallback)->IsActive(), false);
    TOOLS_ASSERT_EQUAL(callback->GetCount("In"), 2u);
    TOOLS_ASSERT_EQUAL(second->GetCount("In"), 3u);
    return ZqUnitTest::ePassed;
}

// A component with one input and one output port (unsigned int) that logs its set-up and starts
// its output at one more than its input (or at 1 without an input).
class CChainComponent : public CComponent
{
public:
    CChainComponent(std::string name, bool hasInput, std::vector<std::string>& log)
        : CComponent(std::move(name)), m_log(log)
    {
        if (hasInput)
            AddPort<unsigned int>("In", CPort::eIn);
        AddPort<unsigned int>("Out", CPort::eOut);
    }

protected:
    void setUp(CFramework& framework) override
    {
        m_log.push_back(GetName());
        const CPort* in = GetPort("In");
        const unsigned int start = in ? ReadValue(in->GetTypedData<unsigned int>()) + 1 : 1;
        GetPort("Out")->Bind(CbMakeSmart<CDataSimple<unsigned int, 0>>(framework, GetName() + ".Out", start));
    }

private:
    std::vector<std::string>& m_log;
};

// Sets up A -> B -> C and a free D, added in the order given; the log receives the set-up order.
void loadChain(CFramework& framework, CConfiguration& config, const char* order,
               std::vector<std::string>& log)
{
    for (const char* name = order; *name; ++name)
        config.AddComponent(
            CbMakeSmart<CChainComponent>(std::string(1, *name), *name == 'B' || *name == 'C', log));
    config.Connect("A", "Out", "B", "In");
    config.Connect("B", "Out", "C", "In");
    config.LoadConfigForUnitTest(framework);
}

EResult runSetupOrder()
{
    const std::vector<std::string> expected = {"A", "B", "C", "D"};
    std::vector<std::string> log1, log2;
    CFramework framework1, framework2;
    CConfiguration config1, config2;
    loadChain(framework1, config1, "CDBA", log1);
    loadChain(framework2, config2, "ABDC", log2);
    TOOLS_ASSERT_EQUAL(log1, expected);
    TOOLS_ASSERT_EQUAL(log2, expected);
    TOOLS_ASSERT_EQUAL(config1.GetSetupOrder(), expected);
    TOOLS_ASSERT_EQUAL(ReadValue(config1.GetPort("C", "Out").GetTypedData<unsigned int>()), 3u);

    // Components that feed each other cannot be set up; none stays active.
    std::vector<std::string> log3;
    CFramework framework3;
    CConfiguration config3;
    auto x = CbMakeSmart<CChainComponent>("X", true, log3);
    auto y = CbMakeSmart<CChainComponent>("Y", true, log3);
    config3.AddComponent(x);
    config3.AddComponent(y);
    config3.Connect("X", "Out", "Y", "In");
    config3.Connect("Y", "Out", "X", "In");
    TOOLS_ASSERT_EQUAL(ThrownFunction([&] { config3.LoadConfigForUnitTest(framework3); }),
                       "Tools::CConfiguration::LoadConfigForUnitTest");
    TOOLS_ASSERT_EQUAL(log3.empty(), true);
    TOOLS_ASSERT_EQUAL(x->IsActive() || y->IsActive(), false);
    return ZqUnitTest::ePassed;
}

const ZqSubtestRow s_rows[] = {
    {"ComponentSerializer", runComponentSerializer},
    {"Dispatcher/Operations", runDispatcherOperations},
    {"UndoRedoManager", runUndoRedoManager},
    {"LockingManager", runLockingManager},
    {"NextIteration", runNextIteration},
    {"Multithreading", runMultithreading},
    {"CDataMemberAccess", runDataMemberAccess},
    {"Callbacks", runCallbacks},
    {"SetupOrder", runSetupOrder},
};
} // namespace
} // namespace Tools

unsigned int Tools::CToolFramework_UnitTest::getSubtestCount() const
{
    return static_cast<unsigned int>(std::size(s_rows));
}

CString Tools::CToolFramework_UnitTest::getSubtestName(unsigned int index)
{
    if (index >= std::size(s_rows))
        CB_THROW(CbException, "Tools::CToolFramework_UnitTest::getSubtestName");
    return CString(s_rows[index].name);
}

ZqUnitTest::EResult Tools::CToolFramework_UnitTest::runUnitTest(unsigned int index)
{
    if (index >= std::size(s_rows))
        CB_THROW(CbException, "Tools::CToolFramework_UnitTest::runUnitTest");
    return s_rows[index].function();
}
