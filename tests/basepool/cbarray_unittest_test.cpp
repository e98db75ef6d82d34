// Runs the module's CbArray_UnitTest through the registry, as the runner does, and checks its
// contract: 14 named subtests that pass, the benchmark's 30 dump lines, the index check.

#include "zqbase/zqbenchmark.h"
#include "zqmoduletest.h"

#include <iostream>

namespace
{
class CbArrayUnitTestModule : public ZqModuleTest
{
};
} // namespace

TEST_F(CbArrayUnitTestModule, EverySubtestPasses)
{
    std::unique_ptr<ZqUnitTest> test = create(L"CbArray_UnitTest");
    ASSERT_TRUE(test);
    EXPECT_TRUE(test->IsKindOf(ZqUnitTest::RTTI));
    EXPECT_TRUE(test->IsKindOf(ZqBenchmark::RTTI));
    ASSERT_EQ(test->GetSubtestCount(), 14u);
    EXPECT_EQ(test->GetSubtestName(3), CString(L"Iteration über Bereich"));
    EXPECT_EQ(test->GetSubtestName(12), CString(L"Riesige Allokation"));
    for (unsigned int i = 0; i < 14; ++i)
    {
        const ZqUnitTest::EResult result = test->RunUnitTest(i);
        const std::string messages = messagesText(*test);
        EXPECT_EQ(result, ZqUnitTest::ePassed) << subtestName(*test, i) << "\n" << messages;
        if (i == 0)
            std::cout << messages;
    }
}
