// Test of ZqFtConvexHull2D: two former bugs (orientation, collinearity), small inputs, several
// extremal points on one vertical line, and 5000 random point sets in each of three variants.

#include "zq3dbase/zqftconvexhull2d.h"

#include "basepool/cbexception.h"
#include "zqbase/zqrandomseed.h"
#include "zqbase/zqtestenvironment.h"
#include "zqbase/zqunittest.h"

#include <cmath>
#include <cstdint>
#include <optional>
#include <random>

class ZqFtConvexHull2D_UnitTest : public ZqUnitTest
{
    CB_DECLARE_RTTI(ZqFtConvexHull2D_UnitTest)

public:
    ZqFtConvexHull2D_UnitTest() = default;
    ZqFtConvexHull2D_UnitTest(const ZqFtConvexHull2D_UnitTest&) = default;
    ZqFtConvexHull2D_UnitTest(ZqFtConvexHull2D_UnitTest&&) = default;
    ZqFtConvexHull2D_UnitTest& operator=(const ZqFtConvexHull2D_UnitTest&) = default;
    ZqFtConvexHull2D_UnitTest& operator=(ZqFtConvexHull2D_UnitTest&&) = default;
    ~ZqFtConvexHull2D_UnitTest() override = default;

protected:
    unsigned int getSubtestCount() const override { return 7; }
    CString getSubtestName(unsigned int index) override;
    EResult runUnitTest(unsigned int index) override;

private:
    EResult runConvexHullUnitTestBugDetection0();
    EResult runConvexHullUnitTestBugDetection1();
    EResult runConvexHullUnitTestSmallInput();
    EResult runConvexHullUnitTestRandomized(bool integerCoordinates, bool rotatedGrid);
    EResult runConvexHullUnitTestSameXCoordinate();

    // Runs the hull on a copy of input and compares it with expected, up to the starting vertex.
    static EResult compareHull(const CbArray<CbVector2f>& input, const CbArray<CbVector2f>& expected);
    // One random point set drawn from seed, checked for duplicate corners and points outside.
    static EResult runRandomizedCase(std::uint32_t seed, bool integerCoordinates, bool rotatedGrid);
    void writeSeed(std::uint32_t seed) const
    {
        WriteMessageFormat(eInfo, L"Startwert des Zufallsgenerators: %d\n", static_cast<int>(seed));
    }
};

CB_IMPLEMENT_RTTI(ZqFtConvexHull2D_UnitTest, ZqUnitTest::RTTI);

CString ZqFtConvexHull2D_UnitTest::getSubtestName(unsigned int index)
{
    if (index > 6)
        CB_THROW(CbException, "ZqFtConvexHull2D_UnitTest::getSubtestName");
    static const wchar_t* const names[] = {
        L"Konvexe Hülle, Test auf Bug mit Umlaufsinn",
        L"Konvexe Hülle, Test auf Bug im Kollinearitäts-Test",
        L"Konvexe Hülle von wenigen Punkten (0,1,2)",
        L"Konvexe Hülle von zufälligen Punkten",
        L"Konvexe Hülle von zufälligen Punkten (ganzzahlige Koordinaten)",
        L"Konvexe Hülle von zufälligen Punkten (verdrehtes Gitter)",
        L"Konvexe Hülle, mehrere extremale Punkte mit gleicher x-Koordinate",
    };
    return names[index];
}

ZqUnitTest::EResult ZqFtConvexHull2D_UnitTest::runUnitTest(unsigned int index)
{
    if (index > 6)
        CB_THROW(CbException, "ZqFtConvexHull2D_UnitTest::runUnitTest");
    switch (index)
    {
    case 0:
        return runConvexHullUnitTestBugDetection0();
    case 1:
        return runConvexHullUnitTestBugDetection1();
    case 2:
        return runConvexHullUnitTestSmallInput();
    case 3:
        return runConvexHullUnitTestRandomized(false, false);
    case 4:
        return runConvexHullUnitTestRandomized(true, false);
    case 5:
        return runConvexHullUnitTestRandomized(true, true);
    default:
        return runConvexHullUnitTestSameXCoordinate();
    }
}

ZqUnitTest::EResult ZqFtConvexHull2D_UnitTest::compareHull(const CbArray<CbVector2f>& input,
                                                           const CbArray<CbVector2f>& expected)
{
    CbArray<CbVector2f> hull(input);
    ZqFtConvexHull2D::Compute(hull);
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
    // A replayed seed is the seed of the one case that failed.
    if (const std::optional<std::uint32_t> replay = ZqTestEnvironment::GetReplaySeed())
    {
        const EResult result = runRandomizedCase(*replay, integerCoordinates, rotatedGrid);
        if (result != ePassed)
            writeSeed(*replay);
        return result;
    }
    std::mt19937 seeds(ZqRandomSeed::FromClock());
    for (int i = 0; i < 5000; ++i)
    {
        const std::uint32_t seed = seeds();
        EResult result;
        try
        {
            result = runRandomizedCase(seed, integerCoordinates, rotatedGrid);
        }
        catch (...)
        {
            writeSeed(seed);
            throw;
        }
        if (result != ePassed)
        {
            writeSeed(seed);
            return result;
        }
    }
    return ePassed;
}

ZqUnitTest::EResult ZqFtConvexHull2D_UnitTest::runRandomizedCase(std::uint32_t seed, bool integerCoordinates,
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

    CbArray<CbVector2f> hull(points);
    ZqFtConvexHull2D::Compute(hull);
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
