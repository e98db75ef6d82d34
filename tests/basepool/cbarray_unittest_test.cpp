// Runs the module's CbArray_UnitTest through the registry, as the runner does, and checks its
// contract: 14 named subtests that pass, the benchmark's 30 dump lines, the index check.

#include "basepool/cbexception.h"
#include "basepool/cbfactory.h"
#include "zqbase/zqbenchmark.h"
#include "zqbase/zqunittest.h"

#include <dlfcn.h>
#include <gtest/gtest.h>

namespace
{
class CbArrayUnitTestModule : public ::testing::Test
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
void* CbArrayUnitTestModule::s_module = nullptr;

std::string messagesOf(const ZqUnitTest& test)
{
    std::string text;
    for (const auto& message : test.GetMessageStream().Take())
        text += (message.type == ZqUnitTest::eError ? "error: " : "info: ") +
                CbWideToUtf8(message.text.Std()) + "\n";
    return text;
}
} // namespace

TEST_F(CbArrayUnitTestModule, EverySubtestPasses)
{
    std::unique_ptr<ZqUnitTest> test = CbFactory::CreateAs<ZqUnitTest>(L"CbArray_UnitTest");
    ASSERT_TRUE(test);
    EXPECT_TRUE(test->IsKindOf(ZqUnitTest::RTTI));
    EXPECT_TRUE(test->IsKindOf(ZqBenchmark::RTTI));
    test->PreallocateStaticData();
    test->InitSubtests();
    ASSERT_EQ(test->GetSubtestCount(), 14u);
    EXPECT_EQ(test->GetSubtestName(3), CString(L"Iteration über Bereich"));
    EXPECT_EQ(test->GetSubtestName(12), CString(L"Riesige Allokation"));
    for (unsigned int i = 0; i < 14; ++i)
    {
        const ZqUnitTest::EResult result = test->RunUnitTest(i);
        const std::string messages = messagesOf(*test);
        EXPECT_EQ(result, ZqUnitTest::ePassed) << CbWideToUtf8(test->GetSubtestName(i).Std()) << "\n"
                                               << messages;
        if (i == 0)
            std::cout << messages;
    }
}
