// Test of ZqFtConvexHull2D: two former bugs (orientation, collinearity), small inputs, several
// extremal points on one vertical line, and 5000 random point sets in each of three variants.

#include "zq3dbase/zqftconvexhull2d.h"

#include "basepool/cbexception.h"
#include "zqbase/zqrandomseed.h"
#include "zqbase/zqunittest.h"

#include <cmath>
#include <cstdint>
#include <iterator>
#include <random>

class ZqFtConvexHull2D_UnitTest : public ZqUnitTest
{
    CB_DECLARE_RTTI(ZqFtConvexHull2D_UnitTest)
    ZQ_DECLARE_SUBTEST_TABLE(ZqFtConvexHull2D_UnitTest)

protected:
    // The comparison of subtests 0, 1, 2 and 6: hull must be expected, up to its starting vertex.
    static EResult matchHull(const CbArray<CbVector2f>& hull, const CbArray<CbVector2f>& expected);
    // The check of a randomized case: no corner repeated by the next, no point of points outside a
    // counter-clockwise edge by more than the relative tolerance.
    static EResult checkRandomHull(const CbArray<CbVector2f>& points, const CbArray<CbVector2f>& hull);

private:
    EResult runConvexHullUnitTestBugDetection0();
    EResult runConvexHullUnitTestBugDetection1();
    EResult runConvexHullUnitTestSmallInput();
    EResult runConvexHullUnitTestRandomized(bool integerCoordinates, bool rotatedGrid);
    EResult runConvexHullUnitTestSameXCoordinate();

    // Runs the hull on a copy of input and matches it with expected.
    static EResult compareHull(const CbArray<CbVector2f>& input, const CbArray<CbVector2f>& expected);
    // One random point set drawn from seed, its hull checked.
    static EResult runRandomizedCase(std::uint32_t seed, bool integerCoordinates, bool rotatedGrid);
    static CbArray<CbVector2f> drawRandomPoints(std::uint32_t seed, bool integerCoordinates,
                                                bool rotatedGrid);
};

CB_IMPLEMENT_RTTI(ZqFtConvexHull2D_UnitTest, ZqUnitTest::RTTI);

const ZqSubtestRowOf<ZqFtConvexHull2D_UnitTest> ZqFtConvexHull2D_UnitTest::s_subtests[] = {
    {"Konvexe Hülle, Test auf Bug mit Umlaufsinn",
     &ZqFtConvexHull2D_UnitTest::runConvexHullUnitTestBugDetection0},
    {"Konvexe Hülle, Test auf Bug im Kollinearitäts-Test",
     &ZqFtConvexHull2D_UnitTest::runConvexHullUnitTestBugDetection1},
    {"Konvexe Hülle von wenigen Punkten (0,1,2)",
     &ZqFtConvexHull2D_UnitTest::runConvexHullUnitTestSmallInput},
    {"Konvexe Hülle von zufälligen Punkten",
     [](ZqFtConvexHull2D_UnitTest& test) { return test.runConvexHullUnitTestRandomized(false, false); }},
    {"Konvexe Hülle von zufälligen Punkten (ganzzahlige Koordinaten)",
     [](ZqFtConvexHull2D_UnitTest& test) { return test.runConvexHullUnitTestRandomized(true, false); }},
    {"Konvexe Hülle von zufälligen Punkten (verdrehtes Gitter)",
     [](ZqFtConvexHull2D_UnitTest& test) { return test.runConvexHullUnitTestRandomized(true, true); }},
    {"Konvexe Hülle, mehrere extremale Punkte mit gleicher x-Koordinate",
     &ZqFtConvexHull2D_UnitTest::runConvexHullUnitTestSameXCoordinate},
};

ZQ_IMPLEMENT_SUBTEST_TABLE(ZqFtConvexHull2D_UnitTest)

ZqUnitTest::EResult ZqFtConvexHull2D_UnitTest::compareHull(const CbArray<CbVector2f>& input,
                                                           const CbArray<CbVector2f>& expected)
{
    CbArray<CbVector2f> hull(input);
    ZqFtConvexHull2D::Compute(hull);
    return matchHull(hull, expected);
}

ZqUnitTest::EResult ZqFtConvexHull2D_UnitTest::matchHull(const CbArray<CbVector2f>& hull,
                                                         const CbArray<CbVector2f>& expected)
{
    const unsigned int n = hull.GetCount();
    if (n != expected.GetCount())
        return eFailed;
    if (n == 0)
        return ePassed;
    unsigned int start = 0;
    while (start < n && !(hull[start] == expected[0]))
        ++start;
    if (start == n)
        return eFailed;
    for (unsigned int i = 0; i < n; ++i)
    {
        const CbVector2f& p = hull[(start + i) % n];
        if (p.x != expected[i].x || p.y != expected[i].y)
            return eFailed;
    }
    return ePassed;
}

ZqUnitTest::EResult ZqFtConvexHull2D_UnitTest::runConvexHullUnitTestBugDetection0()
{
    return compareHull({{0, 0}, {1, 1}, {0, 1}, {1, 0}}, {{0, 0}, {1, 0}, {1, 1}, {0, 1}});
}

ZqUnitTest::EResult ZqFtConvexHull2D_UnitTest::runConvexHullUnitTestBugDetection1()
{
    return compareHull({{0, 0}, {1, 0}, {0, 1}, {10, 0}}, {{10, 0}, {0, 1}, {0, 0}});
}

ZqUnitTest::EResult ZqFtConvexHull2D_UnitTest::runConvexHullUnitTestSmallInput()
{
    CbArray<CbVector2f> input;
    CbArray<CbVector2f> expected;
    // Each stage changes the input (and the expected hull) and compares; the first failure ends it.
    const auto stages = {
        +[](CbArray<CbVector2f>&, CbArray<CbVector2f>&) {},
        +[](CbArray<CbVector2f>& a, CbArray<CbVector2f>& e)
        {
            a.Add({1, 0});
            e.Add({1, 0});
        },
        +[](CbArray<CbVector2f>& a, CbArray<CbVector2f>& e)
        {
            a.Add({2, 0});
            e.Add({2, 0});
        },
        +[](CbArray<CbVector2f>& a, CbArray<CbVector2f>&) {
            a.Add({1, 0});
        },
        +[](CbArray<CbVector2f>& a, CbArray<CbVector2f>&) {
            a.Add({2, 0});
        },
        +[](CbArray<CbVector2f>& a, CbArray<CbVector2f>& e)
        {
            a = {{1, 0}, {1, 0}};
            e = {{1, 0}};
        },
        +[](CbArray<CbVector2f>& a, CbArray<CbVector2f>&) {
            a.Add({1, 0});
        },
        +[](CbArray<CbVector2f>& a, CbArray<CbVector2f>& e)
        {
            a = {{1, 0}, {1, 0}, {2, 0}, {2, 0}};
            e = {{1, 0}, {2, 0}};
        },
    };
    for (const auto stage : stages)
    {
        stage(input, expected);
        const EResult result = compareHull(input, expected);
        if (result != ePassed)
            return result;
    }
    return ePassed;
}

ZqUnitTest::EResult ZqFtConvexHull2D_UnitTest::runConvexHullUnitTestSameXCoordinate()
{
    return compareHull({{0, 0}, {0, 1}, {0, 2}, {0, 3}, {1, -1}, {2, 0}, {2, 1}, {2, 2}, {2, 3}, {1, 4}},
                       {{0, 0}, {1, -1}, {2, 0}, {2, 3}, {1, 4}, {0, 3}});
}

ZqUnitTest::EResult ZqFtConvexHull2D_UnitTest::runConvexHullUnitTestRandomized(bool integerCoordinates,
                                                                               bool rotatedGrid)
{
    return ZqRandomSeed::RunCases(*this, 5000,
                                  [&](std::uint32_t seed)
                                  { return runRandomizedCase(seed, integerCoordinates, rotatedGrid); });
}

ZqUnitTest::EResult ZqFtConvexHull2D_UnitTest::runRandomizedCase(std::uint32_t seed, bool integerCoordinates,
                                                                 bool rotatedGrid)
{
    const CbArray<CbVector2f> points = drawRandomPoints(seed, integerCoordinates, rotatedGrid);
    CbArray<CbVector2f> hull(points);
    ZqFtConvexHull2D::Compute(hull);
    return checkRandomHull(points, hull);
}

CbArray<CbVector2f> ZqFtConvexHull2D_UnitTest::drawRandomPoints(std::uint32_t seed, bool integerCoordinates,
                                                                bool rotatedGrid)
{
    std::mt19937 random(seed);
    const auto unit = [&random] { return double(random()) * (1.0 / 4294967296.0); };
    unsigned int count;
    do
        count = random() & 0x1FF;
    while (count > 497);
    count += 3;

    CbArray<CbVector2f> points;
    points.SetCapacity(count);
    for (unsigned int i = 0; i < count; ++i)
    {
        const auto x = static_cast<float>(unit() * 10.0 - 5.0);
        const auto y = static_cast<float>(unit() * 10.0 - 5.0);
        points.Add({x, y});
    }
    if (integerCoordinates)
        for (CbVector2f& p : points)
            p = {std::floor(p.x), std::floor(p.y)};
    if (rotatedGrid)
    {
        float m[6];
        for (float& value : m)
            value = static_cast<float>(unit()) - 0.5f;
        const auto [a, b, c, d, e, f] = m;
        for (CbVector2f& p : points)
            p = {a * p.x + b * p.y + 10.0f * c, d * p.x + e * p.y + 10.0f * f};
    }
    return points;
}

ZqUnitTest::EResult ZqFtConvexHull2D_UnitTest::checkRandomHull(const CbArray<CbVector2f>& points,
                                                               const CbArray<CbVector2f>& hull)
{
    const unsigned int n = hull.GetCount();
    for (unsigned int i = 0; n > 1 && i < n; ++i)
        if (hull[i] == hull[(i + 1) % n])
            return eFailed;

    // No input point may lie outside a counter-clockwise edge by more than the relative tolerance,
    // measured from the edge's end point nearer to it.
    for (unsigned int i = 0; i < n; ++i)
    {
        const CbVector2f& from = hull[(i + n - 1) % n];
        const CbVector2f& to = hull[i];
        const CbVector2f edgeFromStart = to - from;
        const CbVector2f edgeFromEnd = from - to;
        for (const CbVector2f& x : points)
        {
            const CbVector2f fromStart = x - from;
            const CbVector2f fromEnd = x - to;
            // Positive on the right-hand (outer) side of the edge, measured from either end point.
            const float outsideFromStart = fromStart.Cross(edgeFromStart);
            const float outsideFromEnd = edgeFromEnd.Cross(fromEnd);
            // Inside as seen from both ends: whichever end is nearer, the check holds.
            if (outsideFromStart <= 0.0f && outsideFromEnd <= 0.0f)
                continue;
            if (fromEnd.Length() > fromStart.Length())
            {
                if (outsideFromStart > 1e-6f * edgeFromStart.Length() * fromStart.Length())
                    return eFailed;
            }
            else if (outsideFromEnd > 1e-6f * edgeFromEnd.Length() * fromEnd.Length())
                return eFailed;
        }
    }
    return ePassed;
}
