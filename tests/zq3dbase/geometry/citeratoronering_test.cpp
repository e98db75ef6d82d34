// The one-ring iterators of the Geometry generation on open, closed and non-manifold
// neighbourhoods, with the sequences worked out by hand, the same walk after Reset, high valences
// that take the sorted linking path, a whole shuffled mesh checked for the ring's invariants, and
// the getCornerIndex throw sites.

#include "geometryfixtures.h"
#include "zq3dbase/geometry/citeratoroneringtriangles.h"
#include "zq3dbase/geometry/citeratoroneringvertices.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <numeric>
#include <random>
#include <vector>

using namespace Geometry;
using GeometryFixtures::thrown;

namespace
{
// The walk as text: each element's index, "|" after one that reports the border, "/" before the
// first of every fan but the first. Walked twice, with a Reset in between; both must agree.
template <class TIterator> std::string walk(TIterator& ring)
{
    std::string runs[2];
    for (std::string& text : runs)
    {
        ring.Reset();
        for (; !ring.IsEnd(); ring.Next())
        {
            if (ring.IsFanStart() && !text.empty())
                text += "/ ";
            text += std::to_string(ring.GetIndex()) + (ring.IsBorder() ? "| " : " ");
        }
    }
    EXPECT_EQ(runs[0], runs[1]);
    return runs[0];
}

std::string triangles(const CTriangulation& t, unsigned int centre)
{
    CIteratorOneRingTriangles ring(t, CVertexRef(centre));
    return walk(ring);
}

std::string vertices(const CTriangulation& t, unsigned int centre)
{
    CIteratorOneRingVertices ring(t, CVertexRef(centre));
    return walk(ring);
}
} // namespace

TEST(IteratorOneRing, GridInnerBorderAndCornerVertices)
{
    const CTriangulation grid = GeometryFixtures::Grid(3);
    // Inner vertex: one closed fan from its lowest triangle, counter-clockwise seen from +z.
    EXPECT_EQ(triangles(grid, 4), "0 3 6 7 4 1 ");
    EXPECT_EQ(vertices(grid, 4), "0 1 5 8 7 3 ");
    EXPECT_TRUE(CIteratorOneRingTriangles(grid, CVertexRef(4)).IsClosed());
    // Border vertex: from the triangle no other precedes, the last one reporting the border.
    EXPECT_EQ(triangles(grid, 1), "2 3 0| ");
    EXPECT_EQ(vertices(grid, 1), "2 5 4 0| ");
    EXPECT_FALSE(CIteratorOneRingVertices(grid, CVertexRef(1)).IsClosed());
    // Corners: two triangles, and a fan of a single triangle.
    EXPECT_EQ(triangles(grid, 0), "0 1| ");
    EXPECT_EQ(vertices(grid, 0), "1 4 3| ");
    EXPECT_EQ(triangles(grid, 2), "2| ");
    EXPECT_EQ(vertices(grid, 2), "5 1| ");
    EXPECT_EQ(vertices(grid, 6), "3 7| ");
}

TEST(IteratorOneRing, NonManifoldCentresAreWalkedFanByFan)
{
    // Around vertex 0: triangles 0 and 1 form an open fan; triangle 3 lies on edge 0-2 as well, so
    // its predecessor (triangle 0) is taken, and it starts a fan of its own that goes on across edge
    // 0-4 into triangle 2, which touches the others only at vertex 0.
    CTriangulation t;
    t.SetVertexCount(6);
    t.AddTriangle(0, 1, 2);
    t.AddTriangle(0, 2, 3);
    t.AddTriangle(0, 4, 5);
    t.AddTriangle(0, 2, 4);
    EXPECT_EQ(triangles(t, 0), "0 1| / 3 2| ");
    EXPECT_EQ(vertices(t, 0), "1 2 3| / 2 4 5| ");
    const CIteratorOneRingTriangles ring(t, CVertexRef(0));
    EXPECT_EQ(ring.GetFanCount(), 2u);
    EXPECT_EQ(ring.GetOpenFanCount(), 2u);

    // Triangles 0 and 1 both end at vertex 2, where triangle 2 begins: the lower one takes it.
    CTriangulation contested;
    contested.SetVertexCount(5);
    contested.AddTriangle(0, 1, 2);
    contested.AddTriangle(0, 3, 2);
    contested.AddTriangle(0, 2, 4);
    EXPECT_EQ(triangles(contested, 0), "0 2| / 1| ");
    EXPECT_EQ(vertices(contested, 0), "1 2 4| / 3 2| ");

    // Neighbours across edge 0-1 that run it in the same direction do not continue each other.
    CTriangulation flipped;
    flipped.SetVertexCount(4);
    flipped.AddTriangle(0, 1, 2);
    flipped.AddTriangle(0, 1, 3);
    EXPECT_EQ(triangles(flipped, 0), "0| / 1| ");
    EXPECT_EQ(triangles(flipped, 1), "0| / 1| ");

    // Two closed cones touching at their tips (over 1 2 3 and 4 5 6), their triangles interleaved.
    CTriangulation cones;
    cones.SetVertexCount(7);
    for (const CTriangulation::SCorners& c :
         {CTriangulation::SCorners{0, 4, 5}, {0, 1, 2}, {0, 5, 6}, {0, 2, 3}, {0, 6, 4}, {0, 3, 1}})
        cones.AddTriangle(c[0], c[1], c[2]);
    EXPECT_EQ(triangles(cones, 0), "0 2 4 / 1 3 5 ");
    EXPECT_EQ(vertices(cones, 0), "4 5 6 / 1 2 3 ");
    EXPECT_FALSE(CIteratorOneRingTriangles(cones, CVertexRef(0)).IsClosed());

    // A vertex without triangles has an empty ring, neither closed nor open.
    flipped.AddVertex({});
    const CIteratorOneRingVertices lone(flipped, CVertexRef(4));
    EXPECT_TRUE(lone.IsEnd());
    EXPECT_EQ(lone.GetFanCount(), 0u);
    EXPECT_FALSE(lone.IsClosed());
}

TEST(IteratorOneRing, HighValenceFansInShuffledOrder)
{
    // 40 triangles (0, i, i + 1) around vertex 0, added in a shuffled order; the last one closes
    // the fan or not.
    for (const bool closed : {false, true})
    {
        std::vector<unsigned int> order(40);
        std::iota(order.begin(), order.end(), 1u);
        std::shuffle(order.begin(), order.end(), std::mt19937(7));
        CTriangulation t;
        t.SetVertexCount(42);
        for (const unsigned int i : order)
            t.AddTriangle(0, i, closed && i == 40 ? 1 : i + 1);

        CIteratorOneRingVertices ring(t, CVertexRef(0));
        std::vector<unsigned int> seen;
        for (; !ring.IsEnd(); ring.Next())
        {
            seen.push_back(ring.GetIndex());
            EXPECT_EQ(ring.IsBorder(), !closed && seen.size() == 41u);
        }
        // An open fan runs from 1 to 41; a closed one starts at its lowest triangle, the first added.
        std::vector<unsigned int> expected(closed ? 40 : 41);
        std::iota(expected.begin(), expected.end(), 1u);
        if (closed)
            std::rotate(expected.begin(), expected.begin() + (order[0] - 1), expected.end());
        EXPECT_EQ(seen, expected) << (closed ? "closed" : "open");
        EXPECT_EQ(ring.IsClosed(), closed);
    }
}

TEST(IteratorOneRing, EveryRingOfAShuffledGridKeepsTheInvariants)
{
    // A 12 x 12 grid with its triangles shuffled and their corners rotated: every triangle of a
    // vertex is visited once, consecutive triangles share the side through the centre, the fan is
    // open exactly on the grid's boundary and closes on itself inside.
    const unsigned int n = 12;
    CTriangulation grid = GeometryFixtures::Grid(n);
    std::mt19937 random(11);
    std::span<CTriangulation::SCorners> corners = grid.EditTriangles();
    std::shuffle(corners.begin(), corners.end(), random);
    for (CTriangulation::SCorners& c : corners)
        std::rotate(c.begin(), c.begin() + random() % 3, c.end());

    CIteratorOneRingTriangles ring(grid);
    for (unsigned int v = 0; v < n * n; ++v)
    {
        ring.SetCentre(CVertexRef(v));
        std::vector<unsigned int> incident;
        for (unsigned int t = 0; t < grid.GetTriangleCount(); ++t)
            if (CTriangulation::FindCorner(grid.GetCorners(CTriangleRef(t)), v) < 3)
                incident.push_back(t);
        std::vector<unsigned int> visited;
        std::vector<CTriangulation::SCorners> sides; // (after, before, triangle)
        for (; !ring.IsEnd(); ++ring)
        {
            const CTriangulation::SCorners& c = grid.GetCorners(ring.Get());
            ASSERT_EQ(c[ring.GetCorner()], v);
            visited.push_back(ring.GetIndex());
            sides.push_back({c[(ring.GetCorner() + 1) % 3], c[(ring.GetCorner() + 2) % 3], ring.GetIndex()});
        }
        std::sort(visited.begin(), visited.end());
        ASSERT_EQ(visited, incident) << v;
        for (std::size_t i = 1; i < sides.size(); ++i)
            ASSERT_EQ(sides[i - 1][1], sides[i][0]) << v;
        const unsigned int x = v % n;
        const unsigned int y = v / n;
        const bool boundary = x == 0 || y == 0 || x == n - 1 || y == n - 1;
        ASSERT_EQ(ring.GetFanCount(), 1u);
        ASSERT_EQ(ring.IsClosed(), !boundary) << v;
        if (!boundary)
        {
            ASSERT_EQ(sides.back()[1], sides.front()[0]) << v;
        }
    }
}

TEST(IteratorOneRing, GetCornerIndexFindsTheCentreAndThrowsWithoutIt)
{
    const CTriangulation grid = GeometryFixtures::Grid(3);
    CIteratorOneRingTriangles triangleRing(grid, CVertexRef(4));
    CIteratorOneRingVertices vertexRing(grid, CVertexRef(4));
    EXPECT_EQ(triangleRing.getCornerIndex(CTriangleRef(6)), 0u);
    EXPECT_EQ(triangleRing.getCornerIndex(CTriangleRef(1)), 1u);
    EXPECT_EQ(vertexRing.getCornerIndex(CTriangleRef(0)), 2u);
    EXPECT_EQ(vertexRing.getCornerIndex(CTriangleRef(4)), 1u);

    std::string kind;
    EXPECT_EQ(thrown([&] { triangleRing.getCornerIndex(CTriangleRef(2)); }, &kind),
              "Geometry::CIteratorOneRingTriangles::getCornerIndex");
    EXPECT_EQ(kind, "CbException");
    EXPECT_EQ(thrown([&] { vertexRing.getCornerIndex(CTriangleRef(5)); }, &kind),
              "Geometry::CIteratorOneRingVertices::getCornerIndex");
    EXPECT_EQ(kind, "CbException");
}
