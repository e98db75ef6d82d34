// The locking manager between threads: time-outs, all-or-nothing acquisition, recursion and
// ownership, and many rounds of two threads locking the same data in opposite orders.

#include "toolsession.h"

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <thread>

namespace zqinteraction
{
namespace
{
class CLockingManagerTest : public ::testing::Test
{
protected:
    CFramework framework;
    CLockingManager& manager = framework.GetLockingManager();
    CbSmartPointer<CDataSimple<unsigned int, 0>> a =
        CbMakeSmart<CDataSimple<unsigned int, 0>>(framework, "A", 0u);
    CbSmartPointer<CDataSimple<unsigned int, 1>> b =
        CbMakeSmart<CDataSimple<unsigned int, 1>>(framework, "B", 0u);

    // Runs body on another thread while that thread holds the lock of data.
    template <class F> void whileHeldElsewhere(IData& data, F body)
    {
        std::atomic<bool> held{false}, done{false};
        std::thread holder(
            [&]
            {
                manager.requestLock(data.GetLockable());
                ASSERT_TRUE(manager.TryLockAndWait(CLockingManager::kWaitWithoutLimit));
                held = true;
                while (!done)
                    std::this_thread::yield();
                manager.unlock(data.GetLockable());
            });
        while (!held)
            std::this_thread::yield();
        body();
        done = true;
        holder.join();
    }
};
} // namespace

TEST_F(CLockingManagerTest, LockThatCannotBeHadInTimeIsNotTaken)
{
    whileHeldElsewhere(*a,
                       [&]
                       {
                           manager.requestLock(a->GetAccessInterface());
                           const auto start = std::chrono::steady_clock::now();
                           EXPECT_FALSE(manager.TryLockAndWait(30));
                           EXPECT_GE(std::chrono::steady_clock::now() - start, std::chrono::milliseconds(30));
                           EXPECT_EQ(manager.GetHeldCount(), 0u);
                           // The failed wait dropped its requests: nothing is left to take.
                           EXPECT_TRUE(manager.TryLockAndWait(0));
                           EXPECT_EQ(manager.GetHeldCount(), 0u);
                       });
    EXPECT_FALSE(a->GetLockable().IsLocked());
}

TEST_F(CLockingManagerTest, RequestedLocksAreTakenAllOrNone)
{
    whileHeldElsewhere(*b,
                       [&]
                       {
                           manager.requestLock(a->GetAccessInterface());
                           manager.requestLock(b->GetAccessInterface());
                           EXPECT_FALSE(manager.TryLockAndWait(0));
                           EXPECT_FALSE(a->GetLockable().IsLocked());
                       });
    manager.requestLock(a->GetAccessInterface());
    manager.requestLock(b->GetAccessInterface());
    ASSERT_TRUE(manager.TryLockAndWait(0));
    EXPECT_EQ(manager.GetHeldCount(), 2u);
    manager.unlock(b->GetAccessInterface());
    manager.unlock(a->GetAccessInterface());
}

TEST_F(CLockingManagerTest, LocksAreRecursiveAndOwnedByOneThread)
{
    ITypedDataAccess<unsigned int>& access = a->GetAccessInterface();
    EXPECT_THROW(access.Get(), CbExceptionPreconditionViolation);
    EXPECT_EQ(ThrownFunction([&] { access.Set(1); }), "Tools::ITypedDataAccess<unsigned int>::Set");
    for (int i = 0; i < 2; ++i)
    {
        manager.requestLock(access);
        ASSERT_TRUE(manager.TryLockAndWait(0));
    }
    EXPECT_EQ(manager.GetHeldCount(), 2u);
    std::string otherUnlock, otherGet;
    std::thread(
        [&]
        {
            otherUnlock = ThrownFunction([&] { manager.unlock(access); });
            otherGet = ThrownFunction([&] { access.Get(); });
        })
        .join();
    EXPECT_EQ(otherUnlock, "Tools::CLockingManager::unlock");
    EXPECT_EQ(otherGet, "Tools::ITypedDataAccess<unsigned int>::Get");
    manager.unlock(access);
    EXPECT_TRUE(access.IsLockedByCurrentThread());
    manager.unlock(access);
    EXPECT_FALSE(a->GetLockable().IsLocked());
    EXPECT_THROW(manager.unlock(access), CbExceptionPreconditionViolation);

    CLockingManager other;
    EXPECT_EQ(ThrownFunction([&] { other.requestLock(access); }), "Tools::CLockingManager::requestLock");
    CDataLock wrongManager(access);
    EXPECT_FALSE(wrongManager.Wait(other));
    EXPECT_FALSE(a->GetLockable().IsLocked());
}

// Requested together, opposite orders never need to be refused; taken one inside the other, the
// thread that would close a cycle is refused and retries. Either way both threads finish every
// round and no update is lost.
TEST_F(CLockingManagerTest, OppositeOrdersNeverDeadlock)
{
    constexpr unsigned int kRounds = 2000;
    IDataAccessInterface& accessA = a->GetAccessInterface();
    IDataAccessInterface& accessB = b->GetAccessInterface();
    std::atomic<unsigned int> refused{0};
    const auto together = [&](IDataAccessInterface& first, IDataAccessInterface& second)
    {
        for (unsigned int i = 0; i < kRounds; ++i)
        {
            manager.requestLock(first);
            manager.requestLock(second);
            ASSERT_TRUE(manager.TryLockAndWait(CLockingManager::kWaitWithoutLimit));
            a->GetAccessInterface().Set(a->GetAccessInterface().Get() + 1);
            manager.unlock(second);
            manager.unlock(first);
        }
    };
    const auto nested = [&](IDataAccessInterface& first, IDataAccessInterface& second)
    {
        for (unsigned int i = 0; i < kRounds;)
        {
            CDataLock outer(first);
            ASSERT_TRUE(outer.Wait(manager));
            CDataLock inner(second);
            if (!inner.Wait(manager))
            {
                ++refused;
                continue;
            }
            b->GetAccessInterface().Set(b->GetAccessInterface().Get() + 1);
            ++i;
        }
    };
    std::thread t1([&] { together(accessA, accessB); });
    std::thread t2([&] { together(accessB, accessA); });
    t1.join();
    t2.join();
    EXPECT_EQ(manager.GetDeadlocksAvoided(), 0u);
    std::thread t3([&] { nested(accessA, accessB); });
    std::thread t4([&] { nested(accessB, accessA); });
    t3.join();
    t4.join();
    EXPECT_EQ(manager.GetDeadlocksAvoided(), refused.load());
    EXPECT_EQ(ReadValue<unsigned int>(*a), 2 * kRounds);
    EXPECT_EQ(ReadValue<unsigned int>(*b), 2 * kRounds);
}
} // namespace zqinteraction
