// ZqFtConvexHull2D on degenerate inputs, extreme magnitudes, heavy collinearity and large sets.
// Every result is checked exactly: its corners are input points, turn strictly counter-clockwise,
// and leave no input point outside; integer inputs are also compared with an exact reference.

#include "zq3dbase/zqftconvexhull2d.h"

#include "basepool/cbexception.h"
#include "zq3dbase/zqorientation2d.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <limits>
#include <random>
#include <string>
#include <utility>
#include <vector>

namespace
{
using CPoints = CbArray<CbVector2f>;

bool lexicographicLess(const CbVector2f& a, const CbVector2f& b)
{
    return a.x < b.x || (a.x == b.x && a.y < b.y);
}

CPoints hullOf(const CPoints& points)
{
    CPoints hull(points);
    ZqFtConvexHull2D::Compute(hull);
    return hull;
}

// True when p lies inside or on the strictly convex counter-clockwise polygon hull (n >= 3): the
// fan of hull[0] is searched for p's wedge, then p is tested against that wedge's outer edge.
bool isInsideOrOn(const CPoints& hull, const CbVector2f& p)
{
    const unsigned int n = hull.GetCount();
    if (ZqOrientation2D::Sign(hull[0], hull[1], p) < 0 || ZqOrientation2D::Sign(hull[0], hull[n - 1], p) > 0)
        return false;
    unsigned int low = 1, high = n - 1;
    while (high - low > 1)
    {
        const unsigned int middle = (low + high) / 2;
        (ZqOrientation2D::Sign(hull[0], hull[middle], p) >= 0 ? low : high) = middle;
    }
    return ZqOrientation2D::Sign(hull[low], hull[low + 1], p) >= 0;
}

// The hull of input must be exactly hull: corners only, counter-clockwise, nothing outside,
// starting at the lowest of the leftmost points.
::testing::AssertionResult isExactHull(const CPoints& input, const CPoints& hull)
{
    const unsigned int n = hull.GetCount();
    if (input.IsEmpty() != (n == 0))
        return ::testing::AssertionFailure() << "empty input and empty hull must go together";
    if (n == 0)
        return ::testing::AssertionSuccess();
    CPoints sorted(input);
    std::sort(sorted.begin(), sorted.end(), lexicographicLess);
    for (const CbVector2f& corner : hull)
        if (!std::binary_search(sorted.begin(), sorted.end(), corner, lexicographicLess))
            return ::testing::AssertionFailure()
                   << "corner (" << corner.x << ", " << corner.y << ") is no input point";
    if (!(hull[0] == sorted[0]))
        return ::testing::AssertionFailure() << "hull does not start at the lowest of the leftmost points";
    if (n == 1)
    {
        if (!(sorted.GetLast() == hull[0]))
            return ::testing::AssertionFailure() << "one corner, but the points differ";
        return ::testing::AssertionSuccess();
    }
    if (n == 2)
    {
        if (!(hull[1] == sorted.GetLast()))
            return ::testing::AssertionFailure() << "two corners, but not the ends of the range";
        for (const CbVector2f& p : input)
            if (ZqOrientation2D::Sign(hull[0], hull[1], p) != 0)
                return ::testing::AssertionFailure()
                       << "two corners, but (" << p.x << ", " << p.y << ") is off their line";
        return ::testing::AssertionSuccess();
    }
    for (unsigned int i = 0; i < n; ++i)
        if (ZqOrientation2D::Sign(hull[i], hull[(i + 1) % n], hull[(i + 2) % n]) != 1)
            return ::testing::AssertionFailure() << "no strict counter-clockwise turn after corner " << i;
    for (const CbVector2f& p : input)
        if (!isInsideOrOn(hull, p))
            return ::testing::AssertionFailure() << "(" << p.x << ", " << p.y << ") lies outside";
    return ::testing::AssertionSuccess();
}

// Monotone chain over small integer coordinates with exact 64-bit cross products.
std::vector<std::pair<long long, long long>> integerHull(const CPoints& points)
{
    std::vector<std::pair<long long, long long>> p;
    for (const CbVector2f& v : points)
        p.emplace_back(static_cast<long long>(v.x), static_cast<long long>(v.y));
    std::sort(p.begin(), p.end());
    p.erase(std::unique(p.begin(), p.end()), p.end());
    if (p.size() < 2)
        return p;
    const auto cross = [](const auto& o, const auto& a, const auto& b)
    { return (a.first - o.first) * (b.second - o.second) - (a.second - o.second) * (b.first - o.first); };
    std::vector<std::pair<long long, long long>> hull(2 * p.size());
    std::size_t k = 0;
    for (const auto& q : p)
    {
        while (k >= 2 && cross(hull[k - 2], hull[k - 1], q) <= 0)
            --k;
        hull[k++] = q;
    }
    for (std::size_t i = p.size() - 1, lower = k + 1; i-- > 0;)
    {
        while (k >= lower && cross(hull[k - 2], hull[k - 1], p[i]) <= 0)
            --k;
        hull[k++] = p[i];
    }
    hull.resize(k - 1);
    return hull;
}

CPoints randomPoints(std::mt19937& random, unsigned int count, float range)
{
    std::uniform_real_distribution<float> coordinate(-range, range);
    CPoints points;
    for (unsigned int i = 0; i < count; ++i)
    {
        const float x = coordinate(random);
        points.Add({x, coordinate(random)});
    }
    return points;
}
} // namespace

TEST(ZqFtConvexHull2D, DegenerateInputs)
{
    EXPECT_TRUE(hullOf({}).IsEmpty());
    EXPECT_TRUE(hullOf({{3, 4}}) == CPoints({{3, 4}}));
    EXPECT_TRUE(hullOf({{2, 0}, {1, 0}}) == CPoints({{1, 0}, {2, 0}}));
    // A vertical line, given top down, with repeats.
    EXPECT_TRUE(hullOf({{0, 5}, {0, 3}, {0, 5}, {0, -1}, {0, 2}}) == CPoints({{0, -1}, {0, 5}}));
    // -0 and +0 are one coordinate.
    EXPECT_TRUE(hullOf({{0.0f, 1}, {-0.0f, 1}, {1, 1}}) == CPoints({{0, 1}, {1, 1}}));
    // A triangle with points on every edge and on the line between its leftmost and rightmost corner.
    const CPoints triangle = {{0, 0}, {5, 0}, {10, 0}, {10, 10}, {5, 5}, {2, 2}, {10, 4}, {7.5f, 5}, {4, 0}};
    EXPECT_TRUE(hullOf(triangle) == CPoints({{0, 0}, {10, 0}, {10, 10}}));
}

TEST(ZqFtConvexHull2D, CornersKeepTheBitsOfTheirInputPoints)
{
    const auto sameBits = [](const CPoints& a, const CPoints& b)
    { return a.GetCount() == b.GetCount() && std::memcmp(a.GetData(), b.GetData(), a.GetCount() * 8) == 0; };
    // The unit square with negative zeros, filled below and above the interior filter and the radix sort.
    const CPoints square = {{-0.0f, -0.0f}, {1, -0.0f}, {1, 1}, {-0.0f, 1}};
    std::mt19937 random(12);
    std::uniform_real_distribution<float> inside(0.01f, 0.99f);
    for (unsigned int count : {0u, 100u, 5000u})
    {
        CPoints points = square;
        for (unsigned int i = 0; i < count; ++i)
            points.InsertAt(random() % points.GetCount(), CbVector2f(inside(random), inside(random)));
        EXPECT_TRUE(sameBits(hullOf(points), square)) << count;
    }
    EXPECT_TRUE(sameBits(hullOf({{-0.0f, 2}}), CPoints({{-0.0f, 2}})));
    EXPECT_TRUE(sameBits(hullOf({{3, -0.0f}, {-0.0f, -0.0f}}), CPoints({{-0.0f, -0.0f}, {3, -0.0f}})));
    // Of two points that differ in the sign of a zero only, the first one given is the corner.
    EXPECT_TRUE(sameBits(hullOf({{-0.0f, 1}, {0.0f, 1}, {1, 1}}), CPoints({{-0.0f, 1}, {1, 1}})));
    EXPECT_TRUE(sameBits(hullOf({{0.0f, 1}, {-0.0f, 1}, {1, 1}}), CPoints({{0.0f, 1}, {1, 1}})));
}

TEST(ZqFtConvexHull2D, AllPointsEqualButOne)
{
    for (unsigned int count : {2u, 3u, 100u, 10000u})
    {
        CPoints points;
        for (unsigned int i = 0; i < count; ++i)
            points.Add({1.5f, -2.0f});
        points.InsertAt(count / 2, CbVector2f(-7, 3));
        const CPoints hull = hullOf(points);
        EXPECT_TRUE(hull == CPoints({{-7, 3}, {1.5f, -2.0f}})) << count;
    }
}

TEST(ZqFtConvexHull2D, ResultDoesNotDependOnInputOrder)
{
    std::mt19937 random(5);
    CPoints points = randomPoints(random, 300, 1.0f);
    points.Append(CPoints({{-1, -1}, {1, -1}, {1, 1}, {-1, 1}, {0, -1}, {1, 0}}));
    const CPoints expected = hullOf(points);
    ASSERT_TRUE(expected == CPoints({{-1, -1}, {1, -1}, {1, 1}, {-1, 1}}));
    for (int i = 0; i < 20; ++i)
    {
        std::shuffle(points.begin(), points.end(), random);
        EXPECT_TRUE(hullOf(points) == expected);
        std::reverse(points.begin(), points.end());
        EXPECT_TRUE(hullOf(points) == expected);
    }
}

TEST(ZqFtConvexHull2D, HugeAndTinyCoordinates)
{
    const float huge = std::numeric_limits<float>::max();
    const float tiny = std::numeric_limits<float>::denorm_min();
    const CPoints big = {{-huge, -huge}, {huge, -huge}, {0, huge},     {0, -huge},
                         {tiny, -huge},  {0, 0},        {-huge / 2, 0}};
    EXPECT_TRUE(hullOf(big) == CPoints({{-huge, -huge}, {huge, -huge}, {0, huge}}));
    const CPoints small = {{0, 0}, {tiny, 0}, {0, tiny}, {tiny, tiny}, {0, 0}};
    EXPECT_TRUE(hullOf(small) == CPoints({{0, 0}, {tiny, 0}, {tiny, tiny}, {0, tiny}}));

    // Points of the line y = x from 1e-30 to 1e30 and one nudged off it at each magnitude.
    CPoints line;
    for (int e = -30; e <= 30; ++e)
        line.Add({std::pow(10.0f, float(e)), std::pow(10.0f, float(e))});
    EXPECT_TRUE(hullOf(line) == CPoints({line[0], line.GetLast()}));
    for (int e = -29; e <= 29; e += 4)
    {
        CPoints nudged = line;
        const float v = std::pow(10.0f, float(e));
        nudged.Add({v, std::nextafter(v, huge)});
        nudged.Add({std::nextafter(v, huge), v});
        EXPECT_TRUE(isExactHull(nudged, hullOf(nudged))) << e;
        EXPECT_EQ(hullOf(nudged).GetCount(), 4u) << e;
    }
}

TEST(ZqFtConvexHull2D, RotatedIntegerGridsMatchExactReference)
{
    // Integer grids under a random affine map, rounded: a great many exact and near collinearities.
    std::mt19937 random(31337);
    std::uniform_real_distribution<float> coefficient(-0.5f, 0.5f);
    for (int round = 0; round < 300; ++round)
    {
        const unsigned int count = 3 + random() % (round < 250 ? 500 : 20000);
        CPoints grid;
        for (unsigned int i = 0; i < count; ++i)
            grid.Add({float(int(random() % 21) - 10), float(int(random() % 21) - 10)});
        // On the plain grid the hull must equal the integer reference, start included.
        const CPoints hull = hullOf(grid);
        const auto expected = integerHull(grid);
        ASSERT_EQ(hull.GetCount(), expected.size());
        for (unsigned int i = 0; i < hull.GetCount(); ++i)
            ASSERT_TRUE(hull[i].x == expected[i].first && hull[i].y == expected[i].second)
                << round << " " << i;

        const float a = coefficient(random), b = coefficient(random), c = coefficient(random);
        const float d = coefficient(random), e = coefficient(random), f = coefficient(random);
        CPoints mapped;
        for (const CbVector2f& p : grid)
            mapped.Add({a * p.x + b * p.y + 10 * c, d * p.x + e * p.y + 10 * f});
        ASSERT_TRUE(isExactHull(mapped, hullOf(mapped))) << round;
    }
}

TEST(ZqFtConvexHull2D, LargeSetsOfEveryShape)
{
    // Sizes below and above the interior filter and the radix sort, on clouds, circles and lines.
    std::mt19937 random(8);
    std::uniform_real_distribution<double> angle(0.0, 6.283185307179586);
    for (unsigned int count : {50u, 70u, 5000u, 200000u})
    {
        const CPoints cloud = randomPoints(random, count, 1e3f);
        EXPECT_TRUE(isExactHull(cloud, hullOf(cloud))) << count;

        CPoints circle;
        for (unsigned int i = 0; i < count; ++i)
        {
            const double t = angle(random);
            circle.Add({static_cast<float>(50 * std::cos(t)), static_cast<float>(50 * std::sin(t))});
        }
        const CPoints circleHull = hullOf(circle);
        EXPECT_TRUE(isExactHull(circle, circleHull)) << count;
        EXPECT_GT(circleHull.GetCount(), std::min(count, 1000u) / 2) << count;

        // Three lines through a common point and the points of a diagonal: collinear everywhere,
        // and the extreme points in several directions coincide.
        CPoints lines;
        for (unsigned int i = 0; i < count; ++i)
        {
            const float t = static_cast<float>(random() % 2001) - 1000.0f;
            const CbVector2f direction[3] = {{1, 0}, {1, 1}, {1, -3}};
            lines.Add(t * direction[i % 3]);
        }
        EXPECT_TRUE(isExactHull(lines, hullOf(lines))) << count;
        CPoints diagonal;
        for (unsigned int i = 0; i < count; ++i)
        {
            const float t = static_cast<float>(random() % 100000) * 0.01f;
            diagonal.Add({t, t});
        }
        EXPECT_EQ(hullOf(diagonal).GetCount(), 2u);
        EXPECT_TRUE(isExactHull(diagonal, hullOf(diagonal))) << count;
    }
}

TEST(ZqFtConvexHull2D, NonFiniteCoordinateIsRejectedAndLeavesInputAlone)
{
    std::mt19937 random(3);
    for (float bad : {std::numeric_limits<float>::quiet_NaN(), std::numeric_limits<float>::infinity(),
                      -std::numeric_limits<float>::infinity()})
        for (unsigned int count : {10u, 10000u})
        {
            CPoints points = randomPoints(random, count, 5.0f);
            points[count / 2].y = bad;
            const CPoints before = points;
            try
            {
                ZqFtConvexHull2D::Compute(points);
                ADD_FAILURE() << "no exception for " << bad;
            }
            catch (const CbExceptionPreconditionViolation& e)
            {
                EXPECT_NE(std::string(e.GetDetail()).find(std::to_string(count / 2)), std::string::npos);
            }
            ASSERT_EQ(points.GetCount(), before.GetCount());
            EXPECT_TRUE(std::equal(points.begin(), points.end(), before.begin(),
                                   [](const CbVector2f& a, const CbVector2f& b)
                                   { return std::memcmp(&a, &b, sizeof(a)) == 0; }));
        }
}
