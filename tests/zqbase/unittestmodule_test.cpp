// Loads the module into this process and runs its type-record test through the registry, as the
// runner does.

#include "zqmoduletest.h"

namespace
{
class ModuleTest : public ZqModuleTest
{
};
} // namespace

TEST_F(ModuleTest, TypeRecordTestPassesThroughTheFactory)
{
    std::unique_ptr<ZqUnitTest> test = create(L"CbRTTI_UnitTest");
    ASSERT_TRUE(test);
    EXPECT_STREQ(test->GetClassName(), L"CbRTTI_UnitTest");
    ASSERT_EQ(test->GetSubtestCount(), 1u);
    EXPECT_EQ(test->RunUnitTest(0), ZqUnitTest::ePassed);
    for (const auto& message : test->GetMessageStream().Take())
        ADD_FAILURE() << CbWideToUtf8(message.text.Std());
}

TEST_F(ModuleTest, EveryTestClassHasAMatchingNameAndCreates)
{
    int tests = 0;
    for (const CbRTTI* record : CbRTTI::GetRegistered())
    {
        if (!record->IsKindOf(ZqUnitTest::RTTI) || !record->CanCreate())
            continue;
        std::unique_ptr<IObject> object = CbFactory::Create(record->GetName());
        ASSERT_TRUE(object);
        EXPECT_STREQ(object->GetClassName(), record->GetName());
        EXPECT_TRUE(object->GetRTTI() == *record);
        ++tests;
    }
    EXPECT_GT(tests, 0);
}
