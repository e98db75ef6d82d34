// Loads the module into this process and runs its type-record test through the registry, as the
// runner does.

#include "basepool/cbfactory.h"
#include "zqbase/zqunittest.h"

#include <dlfcn.h>
#include <gtest/gtest.h>

namespace
{
class ModuleTest : public ::testing::Test
{
protected:
    static void SetUpTestSuite()
    {
        s_module = dlopen(ZQ_BINARY_DIR "/libZqUnitTests.so", RTLD_NOW | RTLD_LOCAL);
        ASSERT_NE(s_module, nullptr) << dlerror();
    }
    static void TearDownTestSuite()
    {
        if (s_module)
            dlclose(s_module);
        s_module = nullptr;
    }
    static void* s_module;
};
void* ModuleTest::s_module = nullptr;
} // namespace

TEST_F(ModuleTest, TypeRecordTestPassesThroughTheFactory)
{
    std::unique_ptr<ZqUnitTest> test = CbFactory::CreateAs<ZqUnitTest>(L"CbRTTI_UnitTest");
    ASSERT_TRUE(test);
    EXPECT_STREQ(test->GetClassName(), L"CbRTTI_UnitTest");
    test->PreallocateStaticData();
    test->InitSubtests();
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
