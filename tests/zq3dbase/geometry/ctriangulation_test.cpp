// Geometry::CTriangulation: counts and their preconditions, the attribute store (values following
// the element counts, names unique over both domains, switches, copies and moves), the edge
// numbering and the checks before the vertex-triangle relation is built.

#include "geometryfixtures.h"
#include "zq3dbase/geometry/cattributehandle.h"

#include <gtest/gtest.h>

#include <vector>

using namespace Geometry;
using GeometryFixtures::thrown;

TEST(CTriangulation, CornersPastTheVerticesAreRefusedAndLeaveItUnchanged)
{
    CTriangulation t = GeometryFixtures::Grid(3);
    std::string kind;
    EXPECT_EQ(thrown([&] { t.AddTriangle(0, 1, 9); }, &kind), "Geometry::CTriangulation::AddTriangle");
    EXPECT_EQ(kind, "CbExceptionPreconditionViolation");
    EXPECT_EQ(thrown(
                  [&] {
                      t.SetCorners(CTriangleRef(0), {9, 1, 2});
                  }),
              "Geometry::CTriangulation::SetCorners");
    // Vertex 8 is used by triangles 6 and 7.
    EXPECT_EQ(thrown([&] { t.SetVertexCount(8); }), "Geometry::CTriangulation::SetVertexCount");
    EXPECT_EQ(t.GetVertexCount(), 9u);
    EXPECT_EQ(t.GetTriangleCount(), 8u);
    EXPECT_EQ(t.GetCorners(CTriangleRef(0)), (CTriangulation::SCorners{0, 1, 4}));
    // A vertex twice in one triangle.
    EXPECT_EQ(thrown([&] { t.AddTriangle(3, 5, 3); }), "Geometry::CTriangulation::AddTriangle");
    EXPECT_EQ(thrown(
                  [&] {
                      t.SetCorners(CTriangleRef(1), {2, 2, 0});
                  }),
              "Geometry::CTriangulation::SetCorners");
    EXPECT_EQ(t.GetTriangleCount(), 8u);
}

TEST(CTriangulation, AttributeValuesFollowTheCountsWithZeroForNewElements)
{
    CTriangulation t = GeometryFixtures::Grid(2);
    t.AddAttribute<CVertexRef, float>(L"weight");
    t.AddAttribute<CTriangleRef, CbVector3f>(L"normal");
    CAttributeHandle<CVertexRef, float> weight(t, L"weight");
    CAttributeHandle<CTriangleRef, CbVector3f> normal(t, L"normal");
    ASSERT_EQ(weight.GetCount(), 4u);
    ASSERT_EQ(normal.GetCount(), 2u);
    for (unsigned int v = 0; v < 4; ++v)
        weight[CVertexRef(v)] = 1.0f + float(v);
    normal[CTriangleRef(1)] = {0, 0, 1};

    // Growing one at a time, by count and after a shrink: old values stay, new ones are zero,
    // including those where a shrink left stale bytes behind.
    t.AddVertex({5, 5, 5});
    t.AddTriangle(0, 1, 4);
    EXPECT_EQ(normal.GetCount(), 3u);
    EXPECT_EQ(normal[CTriangleRef(1)], CbVector3f(0, 0, 1));
    EXPECT_EQ(normal[CTriangleRef(2)], CbVector3f());
    t.SetTriangleCount(0);
    t.SetVertexCount(2);
    t.SetVertexCount(40);
    EXPECT_EQ(weight.GetCount(), 40u);
    EXPECT_EQ(weight[CVertexRef(0)], 1.0f);
    EXPECT_EQ(weight[CVertexRef(1)], 2.0f);
    for (unsigned int v = 2; v < 40; ++v)
        ASSERT_EQ(weight[CVertexRef(v)], 0.0f) << v;
    t.SetTriangleCount(2);
    EXPECT_EQ(normal[CTriangleRef(1)], CbVector3f());

    t.Clear();
    EXPECT_EQ(weight.GetCount(), 0u);
    EXPECT_EQ(t.GetAttributeCount(), 2u);
}

TEST(CTriangulation, AttributeNamesAreUniqueOverBothDomains)
{
    CTriangulation t = GeometryFixtures::Grid(2);
    t.AddAttribute<CVertexRef, float>(L"a", true);
    // The same again is no change (the switch stays as it was); another domain or type is refused.
    t.AddAttribute<CVertexRef, float>(L"a", false);
    EXPECT_TRUE(t.IsSerialized(L"a"));
    EXPECT_EQ(thrown([&] { t.AddAttribute<CTriangleRef, float>(L"a"); }),
              "Geometry::CTriangulation::AddAttribute");
    EXPECT_EQ(thrown([&] { t.AddAttribute<CVertexRef, double>(L"a"); }),
              "Geometry::CTriangulation::AddAttribute");
    EXPECT_EQ(thrown([&] { t.AddAttribute<CVertexRef, double>(L""); }),
              "Geometry::CTriangulation::AddAttribute");
    EXPECT_EQ(t.GetAttributeCount(), 1u);

    EXPECT_TRUE(t.RemoveAttribute(L"a"));
    EXPECT_FALSE(t.RemoveAttribute(L"a"));
    t.AddAttribute<CTriangleRef, ZqColorRGBA>(L"a");
    const CTriangulation::SAttributeInfo info = t.GetAttributeInfo(0);
    EXPECT_EQ(info.domain, eEK_Triangles);
    EXPECT_EQ(info.type, eAT_ColorRGBA);
    EXPECT_FALSE(info.serialize);

    // Serialize switches exist only for attributes that do.
    std::string kind;
    EXPECT_EQ(thrown([&] { t.SetSerialize(L"A", true); }, &kind), "Geometry::CTriangulation::SetSerialize");
    EXPECT_EQ(kind, "CbExceptionPreconditionViolation");
    EXPECT_EQ(thrown([&] { t.IsSerialized(L"b"); }), "Geometry::CTriangulation::IsSerialized");
}

TEST(CTriangulation, CopiesAreDeepAndMovesKeepHandlesValid)
{
    CTriangulation t = GeometryFixtures::Grid(2);
    t.AddAttribute<CVertexRef, ZqColorRGBA>(L"colour", true);
    CAttributeHandle<CVertexRef, ZqColorRGBA> colour(t, L"colour");
    colour[CVertexRef(2)] = ZqColorRGBA::Aquamarine;

    CTriangulation copy(t);
    CAttributeHandle<CVertexRef, ZqColorRGBA> copied(copy, L"colour");
    copied[CVertexRef(2)] = ZqColorRGBA::Chocolate;
    EXPECT_EQ(colour[CVertexRef(2)], ZqColorRGBA::Aquamarine);
    EXPECT_TRUE(copy.IsSerialized(L"colour"));

    CTriangulation moved(std::move(t));
    EXPECT_EQ(colour[CVertexRef(2)], ZqColorRGBA::Aquamarine);
    // The store follows its new owner's counts, not the emptied source's.
    moved.AddVertex({1, 2, 3});
    EXPECT_EQ(colour.GetCount(), 5u);
    EXPECT_EQ(t.GetVertexCount(), 0u);

    copy = moved;
    const CAttributeHandle<CVertexRef, ZqColorRGBA> assigned(copy, L"colour");
    EXPECT_EQ(assigned.GetCount(), 5u);
}

TEST(CTriangulation, EdgesAreNumberedByTheirVerticesAndSharedBetweenSides)
{
    CTriangulation t = GeometryFixtures::Grid(3);
    const CTriangleEdges& edges = t.GetEdges();
    ASSERT_EQ(edges.GetEdgeCount(), 16u);
    for (unsigned int e = 1; e < 16; ++e)
        EXPECT_LT(edges.GetVertices(e - 1), edges.GetVertices(e)) << e;
    // Side 1 of triangle 0 (1, 4) is side 2 of triangle 3 (1, 5, 4); side 2 of triangle 0 is (4, 0).
    EXPECT_EQ(edges.GetEdge(0, 1), edges.GetEdge(3, 2));
    EXPECT_EQ(edges.GetVertices(edges.GetEdge(0, 2)), (std::array<unsigned int, 2>{0, 4}));

    // A third triangle on one edge and an isolated vertex add no edge beyond their own sides.
    t.AddVertex({9, 9, 9});
    t.AddTriangle(1, 4, 9);
    EXPECT_EQ(t.GetEdgeCount(), 18u);
    EXPECT_EQ(t.GetEdges().GetEdge(8, 0), t.GetEdges().GetEdge(0, 1));
    EXPECT_EQ(t.GetElementCount(eEK_Cells), 10u + 9u + 18u);
    EXPECT_EQ(thrown([&] { t.GetElementCount(5); }), "Geometry::CTriangulation::GetElementCount");
    // Euler characteristic 2 of the closed octahedron: 6 - 12 + 8.
    EXPECT_EQ(GeometryFixtures::Octahedron().GetEdgeCount(), 12u);
}

TEST(CTriangulation, TheRelationFollowsEditsOfTheTrianglesAndChecksThem)
{
    CTriangulation t = GeometryFixtures::Grid(2);
    EXPECT_EQ(t.GetVertexTriangleRelation().GetTriangleCount(3), 2u);
    t.EditTriangles()[0] = {0, 1, 2};
    EXPECT_EQ(t.GetVertexTriangleRelation().GetTriangleCount(3), 1u);
    t.AddVertex({});
    EXPECT_EQ(t.GetVertexTriangleRelation().GetVertexCount(), 5u);

    // Placeholders of new triangles and bulk edits are checked before the relation trusts them.
    t.SetTriangleCount(3);
    EXPECT_EQ(thrown([&] { t.GetVertexTriangleRelation(); }),
              "Geometry::CTriangulation::GetVertexTriangleRelation");
    t.EditTriangles()[2] = {4, 1, 7};
    EXPECT_EQ(thrown([&] { t.GetEdgeCount(); }), "Geometry::CTriangulation::GetVertexTriangleRelation");
    t.EditTriangles()[2] = {4, 1, 3};
    EXPECT_EQ(t.GetVertexTriangleRelation().GetTriangleCount(4), 1u);
}
