// The dispatcher around operations: runaway chains of operations stop, undo delivers without
// running follow-ups, writes of other threads reach the slots on the dispatcher's thread only,
// and the undo limit, the locking-manager registration and data outside smart pointers.

#include "toolsession.h"

#include <gtest/gtest.h>

#include <thread>

namespace zqinteraction
{
namespace
{
// An input port "Value" whose slot answers each change with an operation writing offset + value
// to target, also while an undo is delivered.
class CFollowerComponent : public CComponent
{
public:
    CFollowerComponent(CbSmartPointer<ITypedData<unsigned int>> target, unsigned int offset)
        : CComponent("Follower"), m_target(std::move(target)), m_offset(offset)
    {
        AddPort<unsigned int>("Value", CPort::eIn);
    }

    std::thread::id lastThread;
    unsigned int calls = 0;
    bool lastWasUndoRedo = false;

protected:
    void setUp(CFramework&) override
    {
        CPort& port = *GetPort("Value");
        port.AddSlot(CSlot(
            [this, &port](const CSlot::SState& state, CScene&)
            {
                ++calls;
                lastThread = std::this_thread::get_id();
                lastWasUndoRedo = state.undoRedo;
                const unsigned int value = ReadValue(port.GetTypedData<unsigned int>());
                return CSlot::Operation(
                    CbMakeSmart<COperationReplace<unsigned int>>(m_target, value + m_offset));
            },
            this));
    }

private:
    CbSmartPointer<ITypedData<unsigned int>> m_target;
    unsigned int m_offset;
};

struct SFollowerSession
{
    CFramework framework;
    CConfiguration config;
    CbSmartPointer<ITypedData<unsigned int>> source;
    CbSmartPointer<ITypedData<unsigned int>> target;
    CbSmartPointer<CFollowerComponent> follower;

    // target follows source, or (selfFeeding) the source feeds itself.
    explicit SFollowerSession(bool selfFeeding)
    {
        source = CbMakeSmart<CDataSimple<unsigned int, 0>>(framework, "Source", 0u);
        target = selfFeeding ? source : CbMakeSmart<CDataSimple<unsigned int, 1>>(framework, "Target", 0u);
        follower = CbMakeSmart<CFollowerComponent>(target, 100);
        config.AddComponent(follower);
        follower->GetPort("Value")->Bind(source);
        config.LoadConfigForUnitTest(framework);
        framework.GetDispatcher()->NextInteraction();
    }
};
} // namespace

TEST(CEventDispatcher, OperationsThatKeepTriggeringEachOtherAreStopped)
{
    SFollowerSession session(true);
    CbException thrown("", 0, "");
    try
    {
        session.framework.GetDispatcher()->Execute(
            CbMakeSmart<COperationReplace<unsigned int>>(session.source, 1u));
        FAIL() << "no exception";
    }
    catch (const CbException& e)
    {
        thrown = e;
    }
    EXPECT_STREQ(thrown.GetFunction(), "Tools::CEventDispatcher::Execute");
    EXPECT_STREQ(thrown.GetDetail(), "operations kept triggering operations for 64 rounds");
    EXPECT_EQ(ReadValue(*session.source), 1u + 63 * 100);
}

TEST(CEventDispatcher, UndoAndRedoAreDeliveredWithoutRunningFollowUps)
{
    SFollowerSession session(false);
    CEventDispatcher& dispatcher = *session.framework.GetDispatcher();
    const CEventDispatcher::SReport report =
        dispatcher.Execute(CbMakeSmart<COperationReplace<unsigned int>>(session.source, 5u));
    EXPECT_EQ(report.operations, 2u);
    EXPECT_EQ(ReadValue(*session.target), 105u);
    EXPECT_FALSE(session.follower->lastWasUndoRedo);
    const CEventDispatcher::SReport undo = dispatcher.Undo();
    EXPECT_EQ(undo.operations, 2u);
    EXPECT_EQ(undo.changes, 2u);
    EXPECT_TRUE(session.follower->lastWasUndoRedo);
    EXPECT_EQ(ReadValue(*session.source), 0u);
    EXPECT_EQ(ReadValue(*session.target), 0u);
    dispatcher.Redo();
    EXPECT_EQ(ReadValue(*session.target), 105u);
    EXPECT_EQ(session.framework.GetUndoRedoManager().GetUndoOperationCount(), 2u);
}

TEST(CEventDispatcher, WritesOfOtherThreadsReachTheSlotsOnTheDispatchersThread)
{
    SFollowerSession session(false);
    std::thread writer(
        [&]
        {
            ITypedDataAccess<unsigned int>& access = session.source->GetAccessInterface();
            CDataLock lock(access);
            ASSERT_TRUE(lock.Wait(session.framework.GetLockingManager()));
            access.Set(7);
            access.Set(8);
        });
    writer.join();
    EXPECT_EQ(session.follower->calls, 0u);
    const CEventDispatcher::SReport report = session.framework.GetDispatcher()->DeliverChanges();
    EXPECT_EQ(session.follower->calls, 1u);
    EXPECT_EQ(session.follower->lastThread, std::this_thread::get_id());
    EXPECT_EQ(report.operations, 1u);
    EXPECT_EQ(ReadValue(*session.target), 108u);
    EXPECT_EQ(session.framework.GetDispatcher()->DeliverChanges().changes, 0u);
}

TEST(CEventDispatcher, UndoLimitDropsTheOldestSteps)
{
    SToolSession session;
    session.Load();
    session.framework.GetUndoRedoManager().SetLimit(2);
    for (unsigned int i = 1; i <= 3; ++i)
        session.Set("Count", i);
    CUndoRedoManager& undoRedo = session.framework.GetUndoRedoManager();
    EXPECT_EQ(undoRedo.GetUndoCount(), 2u);
    session.framework.GetDispatcher()->Undo();
    session.framework.GetDispatcher()->Undo();
    EXPECT_FALSE(undoRedo.CanUndo());
    EXPECT_EQ(ReadValue(*session.Data<unsigned int>("Count")), 1u);
    EXPECT_EQ(ThrownFunction([&] { session.framework.GetDispatcher()->Undo(); }),
              "Tools::CUndoRedoManager::Undo");
}

TEST(CFramework, LockingMechanismIsRegisteredBeforeAnyData)
{
    CFramework framework;
    auto manager = CbMakeSmart<CLockingManager>();
    {
        auto data = CbMakeSmart<CDataSimple<unsigned int, 0>>(framework, "Data", 0u);
        EXPECT_EQ(framework.GetDataCount(), 1u);
        EXPECT_THROW(framework.RegisterLockingMechanism(manager), CbExceptionPreconditionViolation);
        EXPECT_EQ(&data->GetLockingManager(), &framework.GetLockingManager());
    }
    framework.RegisterLockingMechanism(manager);
    auto data = CbMakeSmart<CDataSimple<unsigned int, 0>>(framework, "Data", 0u);
    EXPECT_EQ(&data->GetLockingManager(), manager.Get());
}

TEST(CEventDispatcher, ChangeOfDataOutsideASmartPointerIsRefused)
{
    CFramework framework;
    CDataSimple<unsigned int, 0> data(framework, "OnTheStack", 0u);
    CDataLock lock(data.GetAccessInterface());
    ASSERT_TRUE(lock.Wait(framework.GetLockingManager()));
    EXPECT_EQ(ThrownFunction([&] { data.GetAccessInterface().Set(1); }),
              "Tools::CEventDispatcher::OnDataChanged");
}
} // namespace zqinteraction
