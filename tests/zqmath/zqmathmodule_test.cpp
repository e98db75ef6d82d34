// The numerics test classes of the module, driven through the registry as the runner drives them: what
// CTest never runs (the quadratic timing with no counted subtest, the line minimization's hidden third
// subtest).

#include "zqmoduletest.h"

#include <string>
#include <vector>

namespace
{
class NumericsModuleTest : public ZqModuleTest
{
};
} // namespace

TEST_F(NumericsModuleTest, QuadraticTimingIsNamedButNeverScheduled)
{
    auto test = create(L"ZqQuadraticEquation_UnitTest");
    ASSERT_TRUE(test);
    EXPECT_EQ(test->GetSubtestCount(), 0u);
    EXPECT_EQ(CbWideToUtf8(test->GetSubtestName(0).Std()),
              "Zeitmessung für das Lösen quadratischer Gleichungen");
    EXPECT_EQ(thrownFunction([&] { test->RunUnitTest(1); }), "ZqQuadraticEquation_UnitTest::runUnitTest");
}

TEST_F(NumericsModuleTest, QuadraticTimingReportsSeedAndTimings)
{
    auto test = create(L"ZqQuadraticEquation_UnitTest");
    ASSERT_TRUE(test);
    EXPECT_EQ(test->RunUnitTest(0), ZqUnitTest::ePassed);
    const auto messages = test->GetMessageStream().Take();
    ASSERT_GE(messages.size(), 2u);
    EXPECT_EQ(messages[0].text.Find(L"Startwert des Zufallsgenerators: "), 0);
    EXPECT_EQ(messages[1].text.Find(L"Timings: float "), 0);
}

TEST_F(NumericsModuleTest, LineMinimizationRunsAHiddenThirdSubtest)
{
    auto test = create(L"ZqLineMinimization_UnitTest");
    ASSERT_TRUE(test);
    EXPECT_TRUE(test->GetSubtestName(2).IsEmpty());
    EXPECT_EQ(run(*test, 2), ZqUnitTest::ePassed);
    EXPECT_EQ(thrownFunction([&] { test->RunUnitTest(3); }), "ZqLineMinimization_UnitTest::runUnitTest");
    EXPECT_EQ(thrownFunction([&] { test->GetSubtestName(3); }),
              "ZqLineMinimization_UnitTest::getSubtestName");
}
