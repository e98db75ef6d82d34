// Both hole fillers on holes the module tests do not build: random star-shaped planar holes (the fill
// must tile the polygon exactly; the new filler's must be the constrained Delaunay triangulation),
// rims given from another step or the other way round, holes whose every diagonal exists, rims
// whose projection winds twice, and input that must be refused without touching the surface.

#include "zq3dbase/zqfttriangulationfillholesearcut.h"
#include "zq3dbase/zqfttriangulationfillholesearcutold.h"
#include "zq3dbase/zqtriangulationdynamic.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <map>
#include <numbers>
#include <random>
#include <vector>

namespace
{
using Corners = ZqTriangleCorners;
using Fill = std::vector<Corners>;

// A surface made of one triangle outside each edge of the loop (given counter-clockwise), the
// rim that lists them, and the loop's vertices 0 .. n-1.
struct SCrown
{
    ZqTriangulationDynamic surface{1000};
    ZqPolylineTriangulationList holes;
    unsigned int rimVertices = 0;

    explicit SCrown(const std::vector<CbVector3f>& loop, unsigned int firstStep = 0, bool reverse = false)
    {
        const unsigned int n = rimVertices = static_cast<unsigned int>(loop.size());
        CbVector3d centre;
        for (const CbVector3f& p : loop)
            centre += CbVector3d(p);
        centre /= n;
        for (const CbVector3f& p : loop)
            surface.AddVertex(p);
        for (unsigned int i = 0; i < n; ++i)
        {
            const CbVector3d middle = (CbVector3d(loop[i]) + CbVector3d(loop[(i + 1) % n])) / 2.0;
            const ZqDynamicVertex outside = surface.AddVertex(CbVector3f(middle + (middle - centre) * 0.5));
            surface.AddTriangle(CbVertexRef((i + 1) % n), CbVertexRef(i), outside);
        }
        ZqPolylineTriangulation rim(surface);
        for (unsigned int k = 0; k < n; ++k)
        {
            const unsigned int step = (firstStep + (reverse ? n - k : k)) % n;
            rim.AppendVertexTail(CbVertexRef(), CbTriangleRef(step));
        }
        holes.AddTail(rim);
    }

    // Runs a filter on the listed holes; the fill triangles, or nothing when Compute failed.
    template <class Filter> bool fill(Filter& filter)
    {
        filter.SetInput(surface, holes);
        return filter.Compute();
    }
    Fill added() const
    {
        return Fill(surface.GetTriangles().begin() + rimVertices, surface.GetTriangles().end());
    }
};

std::vector<CbVector3f> starPolygon(std::mt19937& random, unsigned int n)
{
    std::uniform_real_distribution<double> radius(0.2, 1.0), jitter(-0.4, 0.4);
    std::vector<CbVector3f> loop;
    for (unsigned int i = 0; i < n; ++i)
    {
        const double a = 2.0 * std::numbers::pi * (i + jitter(random)) / n, r = radius(random);
        loop.push_back(CbVector3f(CbVector3d(r * std::cos(a), r * std::sin(a), 0)));
    }
    return loop;
}

double polygonArea(const std::vector<CbVector3f>& loop)
{
    double area = 0.0;
    for (std::size_t i = 0; i < loop.size(); ++i)
    {
        const CbVector3d a(loop[i]), b(loop[(i + 1) % loop.size()]);
        area += a.x * b.y - a.y * b.x;
    }
    return area / 2.0;
}

double angleAt(const ZqTriangulationBase& t, unsigned int at, unsigned int b, unsigned int c)
{
    const CbVector3d p(t.GetPositions()[at]);
    const CbVector3d u = CbVector3d(t.GetPositions()[b]) - p, v = CbVector3d(t.GetPositions()[c]) - p;
    return std::atan2(Cross(u, v).Length(), u.Dot(v));
}

double smallestAngle(const ZqTriangulationBase& t, const Fill& fill)
{
    double smallest = std::numbers::pi;
    for (const Corners& c : fill)
        for (unsigned int k = 0; k < 3; ++k)
            smallest = std::min(smallest, angleAt(t, c[k], c[(k + 1) % 3], c[(k + 2) % 3]));
    return smallest;
}

// The signed area of the fill in the xy plane; negative when a triangle runs clockwise.
double fillArea(const ZqTriangulationBase& t, const Fill& fill, bool& allCounterClockwise)
{
    double area = 0.0;
    allCounterClockwise = true;
    for (const Corners& c : fill)
    {
        const CbVector3d a(t.GetPositions()[c[0]]), b(t.GetPositions()[c[1]]), d(t.GetPositions()[c[2]]);
        const double twice = Cross(b - a, d - a).z;
        allCounterClockwise = allCounterClockwise && twice > 0.0;
        area += twice / 2.0;
    }
    return area;
}

// Each pair of fill triangles sharing an edge: the angles opposite that edge add up to at most 180
// degrees (the empty circle property of the Delaunay triangulation).
bool locallyDelaunay(const ZqTriangulationBase& t, const Fill& fill)
{
    std::map<std::pair<unsigned int, unsigned int>, unsigned int> opposite;
    for (const Corners& c : fill)
        for (unsigned int k = 0; k < 3; ++k)
            opposite[{c[k], c[(k + 1) % 3]}] = c[(k + 2) % 3];
    for (const auto& [edge, apex] : opposite)
    {
        const auto other = opposite.find({edge.second, edge.first});
        if (other != opposite.end() &&
            angleAt(t, apex, edge.first, edge.second) + angleAt(t, other->second, edge.first, edge.second) >
                std::numbers::pi + 1e-6)
            return false;
    }
    return true;
}

// Every edge used at most twice, in opposite directions, and the rim edges of the crown exactly
// twice: the fill closes the hole without overlapping itself edge-wise.
::testing::AssertionResult closesTheCrown(const SCrown& crown)
{
    std::map<std::pair<unsigned int, unsigned int>, int> uses;
    for (const Corners& c : crown.surface.GetTriangles())
        for (unsigned int k = 0; k < 3; ++k)
            if (++uses[{c[k], c[(k + 1) % 3]}] > 1)
                return ::testing::AssertionFailure()
                       << "edge " << c[k] << "-" << c[(k + 1) % 3] << " runs twice";
    for (unsigned int i = 0; i < crown.rimVertices; ++i)
        if (!uses.contains({i, (i + 1) % crown.rimVertices}))
            return ::testing::AssertionFailure() << "rim edge " << i << " is not closed";
    return ::testing::AssertionSuccess();
}

Fill sorted(Fill fill)
{
    std::sort(fill.begin(), fill.end());
    return fill;
}
} // namespace

TEST(ZqTriangulationFillHoles, PlanarStarHolesAreTiledAndTheNewFillIsDelaunay)
{
    std::mt19937 random(20240601);
    for (int round = 0; round < 40; ++round)
    {
        const std::vector<CbVector3f> loop = starPolygon(random, 4 + round % 37);
        SCrown old(loop), plain(loop), flipped(loop);
        ZqFtTriangulationFillHolesEarcutOld oldFilter;
        ZqFtTriangulationFillHolesEarCut plainFilter, flippedFilter;
        plainFilter.SetFlags(
            CbFlags<ZqFtTriangulationFillHolesEarCut::EFlags>(ZqFtTriangulationFillHolesEarCut::eF_None));
        ASSERT_TRUE(old.fill(oldFilter) && plain.fill(plainFilter) && flipped.fill(flippedFilter)) << round;
        for (const SCrown* crown : {&old, &plain, &flipped})
        {
            ASSERT_EQ(crown->added().size(), loop.size() - 2) << round;
            bool counterClockwise = false;
            EXPECT_NEAR(fillArea(crown->surface, crown->added(), counterClockwise), polygonArea(loop), 1e-9)
                << round;
            EXPECT_TRUE(counterClockwise) << round;
            EXPECT_TRUE(closesTheCrown(*crown)) << round;
        }
        EXPECT_TRUE(locallyDelaunay(flipped.surface, flipped.added())) << round;
        // The constrained Delaunay triangulation has the largest smallest angle of all.
        const double best = smallestAngle(flipped.surface, flipped.added());
        EXPECT_GE(best, smallestAngle(old.surface, old.added()) - 1e-12) << round;
        EXPECT_GE(best, smallestAngle(plain.surface, plain.added()) - 1e-12) << round;
    }
}

TEST(ZqTriangulationFillHoles, RimFromAnyStepEitherWayGivesTheSameFill)
{
    std::mt19937 random(7);
    const std::vector<CbVector3f> loop = starPolygon(random, 23);
    SCrown reference(loop);
    ZqFtTriangulationFillHolesEarcutOld oldReference;
    ZqFtTriangulationFillHolesEarCut newReference;
    SCrown newCrown(loop);
    ASSERT_TRUE(reference.fill(oldReference) && newCrown.fill(newReference));
    for (unsigned int first : {1u, 11u, 22u})
        for (bool reverse : {false, true})
        {
            SCrown turnedOld(loop, first, reverse), turnedNew(loop, first, reverse);
            ZqFtTriangulationFillHolesEarcutOld oldFilter;
            ZqFtTriangulationFillHolesEarCut newFilter;
            ASSERT_TRUE(turnedOld.fill(oldFilter) && turnedNew.fill(newFilter));
            EXPECT_EQ(turnedOld.added(), reference.added()) << first << reverse;
            EXPECT_EQ(sorted(turnedNew.added()), sorted(newCrown.added())) << first << reverse;
        }
}

TEST(ZqTriangulationFillHoles, HoleWhoseEveryDiagonalExistsIsClosedByAFan)
{
    for (bool useOld : {true, false})
    {
        SCrown crown({{0, 0, 0}, {1, 0, 0}, {1, 1, 0}, {0, 1, 0}});
        // Tents above and below the square join both pairs of opposite corners.
        const ZqDynamicVertex up = crown.surface.AddVertex({0.5f, 0.5f, 1}),
                              down = crown.surface.AddVertex({0.5f, 0.5f, -1});
        crown.surface.AddTriangle(CbVertexRef(0), CbVertexRef(2), up);
        crown.surface.AddTriangle(CbVertexRef(3), CbVertexRef(1), down);
        const unsigned int vertices = crown.surface.GetVertexCount(),
                           before = crown.surface.GetTriangleCount();
        ZqFtTriangulationFillHolesEarcutOld oldFilter;
        ZqFtTriangulationFillHolesEarCut newFilter;
        ASSERT_TRUE(useOld ? crown.fill(oldFilter) : crown.fill(newFilter));
        ASSERT_EQ(crown.surface.GetVertexCount(), vertices + 1) << useOld;
        EXPECT_EQ(crown.surface.GetPositions()[vertices], CbVector3f(0.5f, 0.5f, 0));
        EXPECT_EQ(crown.surface.GetTriangleCount(), before + 4) << useOld;
        EXPECT_TRUE(closesTheCrown(crown)) << useOld;
    }
}

TEST(ZqTriangulationFillHoles, RimWhoseProjectionWindsTwiceStillCloses)
{
    // Twice round a circle, rising on the first turn and sinking on the second: no plane sees it as
    // a simple polygon.
    std::vector<CbVector3f> loop;
    for (int i = 0; i < 40; ++i)
    {
        const double a = 4.0 * std::numbers::pi * i / 40;
        loop.push_back(CbVector3f(CbVector3d(std::cos(a), std::sin(a), 0.5 * std::sin(a / 2))));
    }
    for (bool useOld : {true, false})
    {
        SCrown crown(loop);
        ZqFtTriangulationFillHolesEarcutOld oldFilter;
        ZqFtTriangulationFillHolesEarCut newFilter;
        ASSERT_TRUE(useOld ? crown.fill(oldFilter) : crown.fill(newFilter));
        EXPECT_GE(crown.added().size(), loop.size() - 2) << useOld;
        EXPECT_TRUE(closesTheCrown(crown)) << useOld;
    }
}

TEST(ZqTriangulationFillHoles, RefusedInputLeavesTheSurfaceAlone)
{
    SCrown crown({{0, 0, 0}, {1, 0, 0}, {1, 1, 0}, {0, 1, 0}});
    const unsigned int before = crown.surface.GetTriangleCount();

    ZqTriangulationDynamic other(crown.surface);
    ZqPolylineTriangulationList foreign;
    foreign.AddTail(*crown.holes.begin());
    ZqFtTriangulationFillHolesEarcutOld oldFilter;
    oldFilter.SetInput(other, foreign);
    EXPECT_FALSE(oldFilter.Compute());
    ZqFtTriangulationFillHolesEarCut newFilter;
    newFilter.SetInput(other, foreign);
    EXPECT_FALSE(newFilter.Compute());

    ZqPolylineTriangulationList unrelated;
    ZqPolylineTriangulation rim(crown.surface);
    rim.AppendVertexTail(CbVertexRef(), CbTriangleRef(0));
    rim.AppendVertexTail(CbVertexRef(), CbTriangleRef(2));
    unrelated.AddTail(rim);
    oldFilter.SetInput(crown.surface, unrelated);
    EXPECT_FALSE(oldFilter.Compute());
    newFilter.SetInput(crown.surface, unrelated);
    EXPECT_FALSE(newFilter.Compute());

    crown.surface.GetPositions()[2].z = std::numeric_limits<float>::quiet_NaN();
    oldFilter.SetInput(crown.surface, crown.holes);
    EXPECT_FALSE(oldFilter.Compute());
    newFilter.SetInput(crown.surface, crown.holes);
    EXPECT_FALSE(newFilter.Compute());
    EXPECT_EQ(crown.surface.GetTriangleCount(), before);
    EXPECT_EQ(other.GetTriangleCount(), before);
}

TEST(ZqTriangulationFillHoles, HoleListedTwiceIsFilledOnce)
{
    for (bool useOld : {true, false})
    {
        SCrown crown({{0, 0, 0}, {1, 0, 0}, {1, 1, 0}, {0, 1, 0}, {-0.5f, 0.5f, 0}});
        crown.holes.AddTail(*crown.holes.begin());
        ZqFtTriangulationFillHolesEarcutOld oldFilter;
        ZqFtTriangulationFillHolesEarCut newFilter;
        ASSERT_TRUE(useOld ? crown.fill(oldFilter) : crown.fill(newFilter));
        EXPECT_EQ(crown.added().size(), 3u) << useOld;
        EXPECT_TRUE(closesTheCrown(crown)) << useOld;
    }
}

TEST(ZqTriangulationFillHoles, WithoutAListEveryLoopUpToTheCapIsFilled)
{
    // A crown round a square has two border loops: the square (4 vertices) and the crown's outside
    // (8: the corners and the outer tips).
    for (unsigned int cap : {0u, 4u, 3u})
    {
        SCrown crown({{0, 0, 0}, {1, 0, 0}, {1, 1, 0}, {0, 1, 0}});
        ZqFtTriangulationFillHolesEarCut filter;
        filter.SetInput(crown.surface);
        filter.SetMaxRimVertexCount(cap);
        ASSERT_TRUE(filter.Compute());
        EXPECT_EQ(filter.GetFilledLoopCount(), cap == 0 ? 2u : cap == 4 ? 1u : 0u) << cap;
        EXPECT_EQ(filter.GetSkippedLoopCount(), cap == 0 ? 0u : cap == 4 ? 1u : 2u) << cap;
        EXPECT_EQ(filter.GetAddedTriangleCount(), cap == 0 ? 2u + 6u : cap == 4 ? 2u : 0u) << cap;
    }
}
