// The sum check of CbArray_UnitTest's benchmark rejects a walk over an array that holds a wrong element,
// and an unknown case fails. The test class is compiled into this program from its sources (the
// benchmark's data and hooks are protected members, reached through a derived class).

#include "basepool/cbarray_unittest.cpp"
#include "basepool/cbarraybenchmark_unittest.cpp"

#include "zqmoduletest.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace
{
struct ArrayChecks : CbArray_UnitTest
{
    using CbArray_UnitTest::m_cbArray;
    using CbArray_UnitTest::m_vector;
    using CbArray_UnitTest::onAfterRun;
    using CbArray_UnitTest::onBeforeRun;
    using CbArray_UnitTest::runBenchmark;
};
using Errors = std::vector<std::string>;
} // namespace

TEST(CbArrayUnitTestChecks, WalkOverAWrongElementFailsTheSumCheck)
{
    ArrayChecks test;
    test.onBeforeRun();
    ZqBenchmark::SBenchmarkData data;
    EXPECT_TRUE(test.runBenchmark(4, data));
    EXPECT_EQ(data.result, double(kBenchmarkSum));

    test.m_cbArray[1234] += 1;
    for (unsigned int index : {4u, 5u, 6u, 7u, 8u, 9u, 22u, 23u})
    {
        EXPECT_FALSE(test.runBenchmark(index, data)) << index;
        EXPECT_EQ(ZqErrorTexts(test), Errors{"Summe ist nicht korrekt"}) << index;
    }
    // The other contenders hold their own copies of the numbers.
    EXPECT_TRUE(test.runBenchmark(0, data));
    EXPECT_TRUE(test.runBenchmark(10, data));
    test.m_vector.back() = 0;
    EXPECT_FALSE(test.runBenchmark(24, data));
    EXPECT_EQ(ZqErrorTexts(test), Errors{"Summe ist nicht korrekt"});
    test.onAfterRun(false);
}

TEST(CbArrayUnitTestChecks, UnknownCaseFails)
{
    ArrayChecks test;
    ZqBenchmark::SBenchmarkData data;
    EXPECT_FALSE(test.runBenchmark(test.GetBenchmarkCount(), data));
    EXPECT_EQ(ZqErrorTexts(test), Errors{"Unbekannter Benchmark"});
}
