// Runs the module's table-driven string test through the registry, as the runner does.

#include "basepool/cbfactory.h"
#include "zqbase/zqunittest.h"

#include <dlfcn.h>
#include <gtest/gtest.h>

namespace
{
class CbStrModule : public ::testing::Test
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
void* CbStrModule::s_module = nullptr;
} // namespace

TEST_F(CbStrModule, TableOfTwentyTwoRowsNamesAndPassesEveryOperation)
{
    const CbRTTI* record = CbRTTI::Find(L"CbStr_UnitTest");
    ASSERT_NE(record, nullptr);
    ASSERT_NE(record->GetBaseClassRTTI(), nullptr);
    ASSERT_EQ(record->GetBaseClassRTTI()->count, 1u);
    EXPECT_TRUE(*record->GetBaseClassRTTI()->parents[0] == ZqUnitTest::RTTI);

    std::unique_ptr<ZqUnitTest> test = CbFactory::CreateAs<ZqUnitTest>(L"CbStr_UnitTest");
    ASSERT_TRUE(test);
    test->PreallocateStaticData();
    test->InitSubtests();
    ASSERT_EQ(test->GetSubtestCount(), 22u);
    EXPECT_EQ(test->GetSubtestName(0).Std(), L"Compare / operator ==");
    EXPECT_EQ(test->GetSubtestName(4).Std(), L"Find / ReverseFind / FindOneOf");
    EXPECT_EQ(test->GetSubtestName(15).Std(), L"const CharType * operator");
    EXPECT_EQ(test->GetSubtestName(20).Std(), L"Trim / TrimLeft / TrimRight");
    EXPECT_EQ(test->GetSubtestName(21).Std(), L"Convert");
    for (unsigned int i = 0; i < test->GetSubtestCount(); ++i)
    {
        EXPECT_EQ(test->RunUnitTest(i), ZqUnitTest::ePassed) << CbWideToUtf8(test->GetSubtestName(i).Std());
        for (const auto& message : test->GetMessageStream().Take())
            ADD_FAILURE() << CbWideToUtf8(test->GetSubtestName(i).Std()) << ": "
                          << CbWideToUtf8(message.text.Std());
    }
}
