// The checks of CbMap_UnitTest's benchmark reject wrong results: a wrong sum, a wrong count of accesses,
// a case run over a map that lost a key; an unknown case throws. The test class is compiled into this
// program from its source (the checks are protected members, reached through a derived class).

#include "basepool/cbmap_unittest.cpp"

#include "zqmoduletest.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace
{
struct MapChecks : CbMap_UnitTest
{
    using CbMap_UnitTest::checkCase;
    using CbMap_UnitTest::m_containers;
    using CbMap_UnitTest::onAfterRun;
    using CbMap_UnitTest::onBeforeRun;
    using CbMap_UnitTest::runBenchmark;
};
using Errors = std::vector<std::string>;
} // namespace

TEST(CbMapUnitTestChecks, CaseCheckRejectsAWrongSumOrAWrongCountOfAccesses)
{
    MapChecks test;
    EXPECT_EQ(test.GetBenchmarkCount(), 38u);
    EXPECT_TRUE(test.checkCase(7, kKeySum, kPasses));
    EXPECT_EQ(ZqErrorTexts(test), Errors{});
    EXPECT_FALSE(test.checkCase(7, kKeySum - 1, kPasses));
    EXPECT_EQ(ZqErrorTexts(test), Errors{"Summe ist nicht korrekt (7)"});
    EXPECT_FALSE(test.checkCase(12, kKeySum, kPasses - 1));
    EXPECT_EQ(ZqErrorTexts(test), Errors{"Anzahl Zugriffe ist nicht korrekt"});
    // Both wrong: the sum is reported.
    EXPECT_FALSE(test.checkCase(3, kKeySum + 5, 0));
    EXPECT_EQ(ZqErrorTexts(test), Errors{"Summe ist nicht korrekt (3)"});
}

TEST(CbMapUnitTestChecks, CaseOverAMapThatLostAKeyFailsAndIsNotTimed)
{
    MapChecks test;
    test.onBeforeRun();
    ASSERT_TRUE(test.m_containers->wide.cbMap.RemoveKey(5));
    ZqBenchmark::SBenchmarkData data;
    EXPECT_FALSE(test.runBenchmark(0, data));
    EXPECT_EQ(ZqErrorTexts(test), Errors{"Summe ist nicht korrekt (0)"});
    EXPECT_EQ(data.runs, 0u);
    // The standard map of the same keys still holds them all.
    EXPECT_TRUE(test.runBenchmark(4, data));
    EXPECT_EQ(data.runs, 1u);
    EXPECT_EQ(data.result, double(kKeySum));
    test.onAfterRun(false);
}

TEST(CbMapUnitTestChecks, UnknownCaseWritesAnErrorAndThrows)
{
    MapChecks test;
    ZqBenchmark::SBenchmarkData data;
    try
    {
        test.runBenchmark(38, data);
        ADD_FAILURE() << "no exception";
    }
    catch (const CbException& e)
    {
        EXPECT_STREQ(e.GetFunction(), "CbMap_UnitTest::runBenchmark");
        EXPECT_STREQ(e.GetFile(), "core/basepool/cbmap_unittest.cpp");
    }
    EXPECT_EQ(ZqErrorTexts(test), Errors{"Unbekannter Benchmark"});
}
