// The vertex-triangle relation: fans in counter-clockwise order, open fans first and starting at
// their border, vertices of very high valence, non-manifold and inconsistently oriented
// neighbourhoods, and when a triangulation drops its relation.

#include "basepool/cbexception.h"
#include "zq3dbase/zqtriangulationdynamic.h"
#include "zq3dbase/zqtriangulationshapes.h"
#include "zq3dbase/zqtriangulationstatic.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <numeric>
#include <random>
#include <vector>

namespace
{
using Relation = ZqVertexTriangleRelation;

// 4 x 4 vertices v = 4 y + x; square (x, y) holds triangles 2 s and 2 s + 1, s = 3 y + x, split from
// its lower left to its upper right corner.
ZqTriangulationStatic grid()
{
    ZqTriangulationStatic t;
    ZqTriangulationShapes::Grid(t, 3, 3);
    t.ComputeVertexTriangleRelationship();
    return t;
}

// The entries of v as (triangle, flags) pairs written out, for comparing with a hand-made list.
std::vector<unsigned int> entries(const ZqTriangulationBase& t, unsigned int v)
{
    const auto span = t.GetVertexTriangleRelationship().GetEntries(v);
    return {span.begin(), span.end()};
}

constexpr unsigned int E = Relation::kFanEnd;
constexpr unsigned int C = Relation::kFanClosed;

// A fan of k triangles around vertex 0 at the origin, closed or with one gap, added in a shuffled order.
ZqTriangulationDynamic disc(unsigned int k, bool closed, std::uint32_t seed)
{
    ZqTriangulationDynamic t;
    t.AddVertex({0, 0, 0});
    for (unsigned int i = 0; i < k; ++i)
    {
        const float angle = 6.2831853f * float(i) / float(k);
        t.AddVertex({std::cos(angle), std::sin(angle), 0});
    }
    std::vector<unsigned int> order(closed ? k : k - 1);
    std::iota(order.begin(), order.end(), 0u);
    std::shuffle(order.begin(), order.end(), std::mt19937(seed));
    for (const unsigned int i : order)
        t.AddTriangle(0u, 1 + i, 1 + (i + 1) % k);
    t.ComputeVertexTriangleRelationship();
    return t;
}

// Each triangle of the fan of vertex 0 follows its predecessor counter-clockwise.
void expectChained(const ZqTriangulationBase& t, bool closed)
{
    const Relation& r = t.GetVertexTriangleRelationship();
    const unsigned int k = r.GetTriangleCount(0);
    EXPECT_EQ(r.GetFanCount(0), 1u);
    EXPECT_EQ(r.IsBorder(0), !closed);
    for (unsigned int i = 0; i + 1 < k; ++i)
    {
        const ZqTriangleCorners& a = t.Get(CbTriangleRef(r.GetTriangle(0, i)));
        const ZqTriangleCorners& b = t.Get(CbTriangleRef(r.GetTriangle(0, i + 1)));
        ASSERT_EQ(a[2], b[1]) << "entry " << i;
    }
    if (!closed)
    {
        EXPECT_EQ(t.Get(CbTriangleRef(r.GetTriangle(0, 0)))[1], 1u) << "an open fan starts at its border";
    }
}
} // namespace

TEST(ZqVertexTriangleRelationTest, GridFans)
{
    const ZqTriangulationStatic t = grid();
    // Inner vertex: one closed fan, counter-clockwise from the lowest triangle index.
    EXPECT_EQ(entries(t, 5), (std::vector<unsigned int>{0, 3, 8, 9, 6, 1 | E | C}));
    // Border vertex: an open fan from the border triangle on its right to the one on its left.
    EXPECT_EQ(entries(t, 1), (std::vector<unsigned int>{2, 3, 0 | E}));
    EXPECT_EQ(entries(t, 0), (std::vector<unsigned int>{0, 1 | E}));
    EXPECT_EQ(entries(t, 3), (std::vector<unsigned int>{4 | E}));
    const Relation& r = t.GetVertexTriangleRelationship();
    EXPECT_FALSE(r.IsBorder(5));
    EXPECT_TRUE(r.IsBorder(1));
    unsigned int total = 0;
    for (unsigned int v = 0; v < 16; ++v)
        total += r.GetTriangleCount(v);
    EXPECT_EQ(total, 3u * 18);
}

TEST(ZqVertexTriangleRelationTest, HighValenceFansAreOrderedLikeSmallOnes)
{
    for (const unsigned int k : {5u, 16u, 17u, 40u, 1000u})
        for (const bool closed : {true, false})
        {
            SCOPED_TRACE("valence " + std::to_string(k) + (closed ? " closed" : " open"));
            expectChained(disc(k, closed, k * 7 + closed), closed);
        }
}

TEST(ZqVertexTriangleRelationTest, NonManifoldAndFlippedNeighbourhoods)
{
    // Two triangles touching only at vertex 0 (a bow tie): two open fans.
    ZqTriangulationDynamic bowTie;
    for (const CbVector3f& p : {CbVector3f(0, 0, 0), CbVector3f(1, 0, 0), CbVector3f(1, 1, 0),
                                CbVector3f(-1, 0, 0), CbVector3f(-1, -1, 0)})
        bowTie.AddVertex(p);
    bowTie.AddTriangle(0u, 1u, 2u);
    bowTie.AddTriangle(0u, 3u, 4u);
    bowTie.ComputeVertexTriangleRelationship();
    EXPECT_EQ(entries(bowTie, 0), (std::vector<unsigned int>{0 | E, 1 | E}));

    // A closed fan of six with one triangle flipped: the flipped one breaks the fan into open pieces.
    ZqTriangulationDynamic flipped = disc(6, true, 1);
    ZqTriangulationStatic copy(flipped);
    const ZqTriangleCorners c = copy.Get(CbTriangleRef(2));
    copy.SetConnectivity(2, c[0], c[2], c[1]);
    copy.ComputeVertexTriangleRelationship();
    const Relation& r = copy.GetVertexTriangleRelationship();
    EXPECT_EQ(r.GetTriangleCount(0), 6u);
    EXPECT_EQ(r.GetFanCount(0), 2u);
    EXPECT_TRUE(r.IsBorder(0));
}

TEST(ZqVertexTriangleRelationTest, ChangesThatDropTheRelation)
{
    ZqTriangulationDynamic t(grid());
    EXPECT_TRUE(t.HasVertexTriangleRelationship());
    t.GetPositions()[3].z = 1.0f;
    EXPECT_TRUE(t.HasVertexTriangleRelationship()) << "moving a vertex keeps the relation";
    t.AddTriangle(0u, 4u, 12u);
    EXPECT_FALSE(t.HasVertexTriangleRelationship());
    EXPECT_EQ(t.GetVertexTriangleRelationship().GetVertexCount(), 0u);
    t.ComputeVertexTriangleRelationship();
    t.AddVertex({9, 9, 9});
    EXPECT_FALSE(t.HasVertexTriangleRelationship());

    ZqTriangulationStatic s(grid());
    s.SetTriangleCount(19);
    EXPECT_THROW(s.ComputeVertexTriangleRelationship(), CbExceptionPreconditionViolation);
    s.SetConnectivity(18, 0, 4, 12);
    EXPECT_NO_THROW(s.ComputeVertexTriangleRelationship());
}

TEST(ZqVertexTriangleRelationTest, CornersAreChecked)
{
    ZqTriangulationDynamic t(grid());
    EXPECT_THROW(t.AddTriangle(0u, 1u, 16u), CbExceptionPreconditionViolation);
    EXPECT_THROW(t.AddTriangle(0u, 1u, 1u), CbExceptionPreconditionViolation);
    ZqTriangulationStatic s(grid());
    EXPECT_THROW(s.SetConnectivity(18, 0, 1, 2), CbExceptionPreconditionViolation);
    EXPECT_THROW(s.SetVertex(16, {}), CbExceptionPreconditionViolation);
    EXPECT_EQ(t.GetTriangleCount(), 18u);
}
