// Runs the module's ZqFtConvexHull2D_UnitTest through the registry, as the runner does: its seven
// subtests pass, a replayed seed runs one case, and indices past the last throw.

#include "zqbase/cbtimer.h"
#include "zqbase/zqtestenvironment.h"
#include "zqmoduletest.h"

#include <iostream>

namespace
{
class ConvexHullUnitTestModule : public ZqModuleTest
{
protected:
    void SetUp() override
    {
        m_test = create(L"ZqFtConvexHull2D_UnitTest");
        ASSERT_TRUE(m_test);
    }
    void TearDown() override { ZqTestEnvironment::SetReplaySeed(std::nullopt); }

    std::unique_ptr<ZqUnitTest> m_test;
};
} // namespace

TEST_F(ConvexHullUnitTestModule, EverySubtestPasses)
{
    ASSERT_EQ(m_test->GetSubtestCount(), 7u);
    EXPECT_EQ(m_test->GetSubtestName(3), CString(L"Konvexe Hülle von zufälligen Punkten"));
    for (unsigned int i = 0; i < 7; ++i)
    {
        const CbTimer timer;
        EXPECT_EQ(m_test->RunUnitTest(i), ZqUnitTest::ePassed) << subtestName(*m_test, i) << "\n"
                                                               << messagesText(*m_test);
        std::cout << "subtest " << i << ": " << timer.GetElapsedSeconds() << " s\n";
    }
}

TEST_F(ConvexHullUnitTestModule, IndexPastTheLastThrowsNamingTheFunction)
{
    try
    {
        m_test->RunUnitTest(7);
        FAIL() << "no exception";
    }
    catch (const CbException& e)
    {
        EXPECT_STREQ(e.GetFunction(), "ZqFtConvexHull2D_UnitTest::runUnitTest");
        EXPECT_STREQ(e.GetFile(), "core/zqlibraries/zq3dbase/zqftconvexhull2d_unittest.cpp");
    }
    try
    {
        m_test->GetSubtestName(7);
        FAIL() << "no exception";
    }
    catch (const CbException& e)
    {
        EXPECT_STREQ(e.GetFunction(), "ZqFtConvexHull2D_UnitTest::getSubtestName");
    }
}

TEST_F(ConvexHullUnitTestModule, ReplayedSeedRunsOneCase)
{
    // 5000 cases take far longer than one; compare the run times of both forms.
    CbTimer timer;
    ASSERT_EQ(m_test->RunUnitTest(5), ZqUnitTest::ePassed);
    const double all = timer.GetElapsedSeconds();
    ZqTestEnvironment::SetReplaySeed(0x9E3779B9u);
    timer.Reset();
    ASSERT_EQ(m_test->RunUnitTest(5), ZqUnitTest::ePassed);
    EXPECT_LT(timer.GetElapsedSeconds() * 100, all);
    EXPECT_EQ(messagesText(*m_test), "");
}
