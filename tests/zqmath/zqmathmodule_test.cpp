// The numerics test classes of the module, driven through the registry as the runner drives them:
// names, counts, outcomes, and the index checks.

#include "zqmoduletest.h"

#include <string>
#include <vector>

namespace
{
class NumericsModuleTest : public ZqModuleTest
{
};
} // namespace

TEST_F(NumericsModuleTest, CubicEquationTableKeepsItsNamesAndPasses)
{
    auto test = create(L"ZqCubicEquation_UnitTest");
    ASSERT_TRUE(test);
    const std::vector<std::string> expected = {"01.) Quadratisch 1 Lösung   ", "02.) Quadratisch 2 Lösungen ",
                                               "03.) Quadratisch 2 Lösungen ", "04.) Quadratisch 0 Lösungen ",
                                               "05.) Kubisch 1 Lösung ",       "06.) Kubisch 1 Lösung ",
                                               "07.) Kubisch 2 Lösungen ",     "08.) Kubisch 3 Lösungen ",
                                               "09.) Affin 1 Lösung ",         "10.) Konstanz 0 Lösungen "};
    EXPECT_EQ(names(*test), expected);
    expectAllPass(*test);
    EXPECT_EQ(thrownFunction([&] { test->RunUnitTest(10); }), "ZqCubicEquation_UnitTest::runUnitTest");
}

TEST_F(NumericsModuleTest, FloatCompareRunsBothTypesAndRejectsOtherIndices)
{
    auto test = create(L"ZqFloatCompare_UnitTest");
    ASSERT_TRUE(test);
    EXPECT_EQ(names(*test), (std::vector<std::string>{"FloatCompare<float>", "FloatCompare<double>"}));
    expectAllPass(*test);
    EXPECT_EQ(thrownFunction([&] { test->RunUnitTest(2); }), "ZqFloatCompare_UnitTest::runUnitTest");
    EXPECT_EQ(thrownFunction([&] { test->GetSubtestName(2); }), "ZqFloatCompare_UnitTest::getSubtestName");
}

TEST_F(NumericsModuleTest, QuadraticTimingIsRegisteredButNeverScheduled)
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

TEST_F(NumericsModuleTest, LineMinimizationCountsTwoAndRunsAHiddenThird)
{
    auto test = create(L"ZqLineMinimization_UnitTest");
    ASSERT_TRUE(test);
    EXPECT_EQ(names(*test), (std::vector<std::string>{"Minimum-Test", "Maximum-Test"}));
    expectAllPass(*test);
    EXPECT_TRUE(test->GetSubtestName(2).IsEmpty());
    EXPECT_EQ(test->RunUnitTest(2), ZqUnitTest::ePassed);
    EXPECT_EQ(thrownFunction([&] { test->RunUnitTest(3); }), "ZqLineMinimization_UnitTest::runUnitTest");
}

TEST_F(NumericsModuleTest, PowellPassesItsThreeSubtests)
{
    auto test = create(L"ZqPowell_UnitTest");
    ASSERT_TRUE(test);
    EXPECT_EQ(names(*test), (std::vector<std::string>{"Standard-Test", "Bounds-Test", "NoBracketing-Test"}));
    expectAllPass(*test);
    EXPECT_EQ(thrownFunction([&] { test->GetSubtestName(3); }), "ZqPowell_UnitTest::getSubtestName");
}
