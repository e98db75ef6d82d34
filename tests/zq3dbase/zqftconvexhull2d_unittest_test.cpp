// The checks of ZqFtConvexHull2D_UnitTest reject wrong hulls: its comparison a clockwise, reordered or
// incomplete hull, its randomized check a hull that repeats a corner, runs clockwise or leaves a point
// outside. The test class is compiled into this program from its source (its checks are protected
// members, reached through a derived class); the module's copy is the one the registry finds while the
// module is loaded.

#include "zq3dbase/zqftconvexhull2d_unittest.cpp"

#include <gtest/gtest.h>

#include <limits>

namespace
{
using CPoints = CbArray<CbVector2f>;

struct HullChecks : ZqFtConvexHull2D_UnitTest
{
    using ZqFtConvexHull2D_UnitTest::checkRandomHull;
    using ZqFtConvexHull2D_UnitTest::matchHull;
};

const CPoints kSquare = {{0, 0}, {1, 0}, {1, 1}, {0, 1}};
constexpr ZqUnitTest::EResult ePassed = ZqUnitTest::ePassed;
constexpr ZqUnitTest::EResult eFailed = ZqUnitTest::eFailed;
} // namespace

TEST(ZqFtConvexHull2DUnitTestChecks, ComparisonTakesAnyStartButOnlyTheSameCornersCounterClockwise)
{
    EXPECT_EQ(HullChecks::matchHull(kSquare, kSquare), ePassed);
    EXPECT_EQ(HullChecks::matchHull({{1, 1}, {0, 1}, {0, 0}, {1, 0}}, kSquare), ePassed);
    EXPECT_EQ(HullChecks::matchHull({}, {}), ePassed);
    // Clockwise: the same corners in reverse order.
    EXPECT_EQ(HullChecks::matchHull({{0, 0}, {0, 1}, {1, 1}, {1, 0}}, kSquare), eFailed);
    // Rotated, with two corners swapped.
    EXPECT_EQ(HullChecks::matchHull({{1, 1}, {0, 0}, {0, 1}, {1, 0}}, kSquare), eFailed);
    // A corner missing (one input point left outside), a corner too many, a corner one ulp off.
    EXPECT_EQ(HullChecks::matchHull({{0, 0}, {1, 0}, {0, 1}}, kSquare), eFailed);
    EXPECT_EQ(HullChecks::matchHull({{0, 0}, {1, 0}, {1, 1}, {0.5f, 1}, {0, 1}}, kSquare), eFailed);
    EXPECT_EQ(HullChecks::matchHull({{0, 0}, {1, 0}, {1, std::nextafter(1.0f, 2.0f)}, {0, 1}}, kSquare),
              eFailed);
    EXPECT_EQ(HullChecks::matchHull({}, kSquare), eFailed);
    // The expected start is never found in a hull of NaNs.
    const float nan = std::numeric_limits<float>::quiet_NaN();
    EXPECT_EQ(HullChecks::matchHull({{nan, nan}}, {{nan, nan}}), eFailed);
}

TEST(ZqFtConvexHull2DUnitTestChecks, RandomizedCheckFindsRepeatedCornersClockwiseHullsAndPointsOutside)
{
    CPoints points = kSquare;
    points.Append(CPoints({{0.5f, 0.5f}, {0.2f, 0.9f}, {1, 0.5f}}));
    EXPECT_EQ(HullChecks::checkRandomHull(points, kSquare), ePassed);
    EXPECT_EQ(HullChecks::checkRandomHull(points, {{1, 1}, {0, 1}, {0, 0}, {1, 0}}), ePassed);
    // The corner (1, 1) left out lies outside the edge from (1, 0) to (0, 1).
    EXPECT_EQ(HullChecks::checkRandomHull(points, {{0, 0}, {1, 0}, {0, 1}}), eFailed);
    EXPECT_EQ(HullChecks::checkRandomHull(points, {{0, 0}, {0, 1}, {1, 1}, {1, 0}}), eFailed);
    EXPECT_EQ(HullChecks::checkRandomHull(points, {{0, 0}, {1, 0}, {1, 0}, {1, 1}, {0, 1}}), eFailed);
    // The last corner repeats the first.
    EXPECT_EQ(HullChecks::checkRandomHull(points, {{0, 0}, {1, 0}, {1, 1}, {0, 1}, {0, 0}}), eFailed);

    // Below the bottom edge: by 1e-5 (beyond the relative tolerance of 1e-6) fails, by 1e-7 passes.
    CPoints below = points;
    below.Add({0.5f, -1e-5f});
    EXPECT_EQ(HullChecks::checkRandomHull(below, kSquare), eFailed);
    below.GetLast() = {0.5f, -1e-7f};
    EXPECT_EQ(HullChecks::checkRandomHull(below, kSquare), ePassed);
}

TEST(ZqFtConvexHull2DUnitTestChecks, IndexPastTheLastThrowsFromTheTestsFile)
{
    HullChecks test;
    try
    {
        test.RunUnitTest(7);
        FAIL() << "no exception";
    }
    catch (const CbException& e)
    {
        EXPECT_STREQ(e.GetFunction(), "ZqFtConvexHull2D_UnitTest::runUnitTest");
        EXPECT_STREQ(e.GetFile(), "core/zqlibraries/zq3dbase/zqftconvexhull2d_unittest.cpp");
    }
}
