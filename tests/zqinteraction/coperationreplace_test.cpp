// The replace operation for each of the five value types: undo restores the old value and redo
// the new one; a lock that cannot be had throws naming the step and the instantiation and changes
// nothing.

#include "toolsession.h"

#include <gtest/gtest.h>

#include <atomic>
#include <optional>
#include <thread>

namespace zqinteraction
{
namespace
{
// Two different values of T and T's spelling in exception texts.
template <class T> struct SSamples;
template <> struct SSamples<unsigned int>
{
    static unsigned int First() { return 7; }
    static unsigned int Second() { return 4000000000u; }
    static constexpr const char* kName = "unsigned int";
};
template <> struct SSamples<bool>
{
    static bool First() { return false; }
    static bool Second() { return true; }
    static constexpr const char* kName = "bool";
};
template <> struct SSamples<CbVector2f>
{
    static CbVector2f First() { return {1, 2}; }
    static CbVector2f Second() { return {-0.5f, 1e30f}; }
    static constexpr const char* kName = "class CbVector2f";
};
template <> struct SSamples<CbVector3f>
{
    static CbVector3f First() { return {1, 2, 3}; }
    static CbVector3f Second() { return {1, 2, 42}; }
    static constexpr const char* kName = "class CbVector3f";
};
template <> struct SSamples<STest>
{
    static STest First() { return MakeProbe(1); }
    static STest Second() { return MakeProbe(2); }
    static constexpr const char* kName = "struct Tools::STest";
};

template <class T> class COperationReplaceTest : public ::testing::Test
{
};
using ValueTypes = ::testing::Types<unsigned int, bool, CbVector2f, CbVector3f, STest>;
TYPED_TEST_SUITE(COperationReplaceTest, ValueTypes);
} // namespace

TYPED_TEST(COperationReplaceTest, UndoRestoresTheOldValueAndRedoTheNewOne)
{
    using T = TypeParam;
    CFramework framework;
    auto data = CbMakeSmart<CDataSimple<T, 0>>(framework, "Value", SSamples<T>::First());
    auto operation =
        CbMakeSmart<COperationReplace<T>>(CbSmartPointer<ITypedData<T>>(data.Get()), SSamples<T>::Second());
    CEventDispatcher& dispatcher = *framework.GetDispatcher();
    dispatcher.NextInteraction();
    dispatcher.Execute(operation);
    EXPECT_TRUE(ReadValue<T>(*data) == SSamples<T>::Second());
    EXPECT_TRUE(operation->GetOldValue() == SSamples<T>::First());
    dispatcher.Undo();
    EXPECT_TRUE(ReadValue<T>(*data) == SSamples<T>::First());
    dispatcher.Redo();
    EXPECT_TRUE(ReadValue<T>(*data) == SSamples<T>::Second());
    dispatcher.Undo();
    EXPECT_TRUE(ReadValue<T>(*data) == SSamples<T>::First());
    EXPECT_FALSE(data->GetLockable().IsLocked());
}

TYPED_TEST(COperationReplaceTest, LockOfAnotherManagerCannotBeHadAndNothingChanges)
{
    using T = TypeParam;
    CFramework framework;
    CLockingManager otherManager;
    auto data = CbMakeSmart<CDataSimple<T, 0>>(framework, "Value", SSamples<T>::First());
    COperationReplace<T> operation(CbSmartPointer<ITypedData<T>>(data.Get()), SSamples<T>::Second());
    const std::string prefix = std::string("Tools::COperationReplace<") + SSamples<T>::kName + ">::";
    EXPECT_EQ(ThrownFunction([&] { operation(otherManager); }), prefix + "operator ()");
    EXPECT_EQ(ThrownFunction([&] { operation.Undo(otherManager); }), prefix + "Undo");
    EXPECT_TRUE(ReadValue<T>(*data) == SSamples<T>::First());
    EXPECT_FALSE(data->GetLockable().IsLocked());
    EXPECT_EQ(otherManager.GetHeldCount(), 0u);
}

// The operation runs on a thread holding a lock that a waiting thread owns the other way round:
// the wait would deadlock, so it is refused.
TEST(COperationReplace, WaitThatWouldDeadlockThrowsAndTheOtherThreadGoesOn)
{
    CFramework framework;
    CLockingManager& manager = framework.GetLockingManager();
    auto first = CbMakeSmart<CDataSimple<unsigned int, 0>>(framework, "First", 1u);
    auto second = CbMakeSmart<CDataSimple<unsigned int, 1>>(framework, "Second", 2u);
    std::optional<CDataLock> holdSecond(std::in_place, second->GetAccessInterface());
    ASSERT_TRUE(holdSecond->Wait(manager));
    std::atomic<bool> holdsFirst{false};
    bool otherGotBoth = false;
    std::thread other(
        [&]
        {
            CDataLock lockFirst(first->GetAccessInterface());
            lockFirst.Wait(manager);
            holdsFirst = true;
            CDataLock lockSecond(second->GetAccessInterface());
            otherGotBoth = lockSecond.Wait(manager);
        });
    while (manager.GetWaitingCount() != 1)
        std::this_thread::yield();
    COperationReplace<unsigned int> operation(CbSmartPointer<ITypedData<unsigned int>>(first.Get()), 5u);
    EXPECT_EQ(ThrownFunction([&] { operation(manager); }),
              "Tools::COperationReplace<unsigned int>::operator ()");
    EXPECT_EQ(manager.GetDeadlocksAvoided(), 1u);
    holdSecond.reset();
    other.join();
    EXPECT_TRUE(otherGotBoth);
    EXPECT_EQ(ReadValue<unsigned int>(*first), 1u);
}
} // namespace zqinteraction
