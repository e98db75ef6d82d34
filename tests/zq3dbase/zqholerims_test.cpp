// Finding hole loops: rims given in any order, direction and starting step give the same loop in
// fill orientation; rims that do not run round a hole are refused; every border loop of a surface is
// found; walks that pass a vertex twice are split.

#include "zq3dbase/zqholerims.h"
#include "zq3dbase/zqpolylinetriangulationlist.h"
#include "zq3dbase/zqtriangulationdynamic.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <vector>

namespace
{
using Loop = ZqHoleRims::Loop;

// A 6 x 6 grid of unit squares (vertex 7x + y at (x, y)), each square split along its rising
// diagonal; the squares listed in skip (by their lower left corner) are left out.
ZqTriangulationDynamic grid(std::vector<std::pair<int, int>> skip)
{
    ZqTriangulationDynamic t(100);
    for (int x = 0; x < 7; ++x)
        for (int y = 0; y < 7; ++y)
            t.AddVertex({float(x), float(y), 0});
    for (int x = 0; x < 6; ++x)
        for (int y = 0; y < 6; ++y)
        {
            if (std::find(skip.begin(), skip.end(), std::make_pair(x, y)) != skip.end())
                continue;
            const unsigned int a = 7 * x + y, b = a + 7, c = b + 1, d = a + 1;
            t.AddTriangle(a, b, c);
            t.AddTriangle(a, c, d);
        }
    t.ComputeVertexTriangleRelationship();
    return t;
}

// The triangle of t that runs the edge from -> to.
unsigned int triangleWith(const ZqTriangulationBase& t, unsigned int from, unsigned int to)
{
    for (unsigned int i = 0; i < t.GetTriangleCount(); ++i)
        for (unsigned int k = 0; k < 3; ++k)
            if (t.GetTriangles()[i][k] == from && t.GetTriangles()[i][(k + 1) % 3] == to)
                return i;
    ADD_FAILURE() << "no triangle runs " << from << "-" << to;
    return 0;
}

ZqPolylineTriangulation rimOf(const ZqTriangulationBase& t, const std::vector<unsigned int>& triangles)
{
    ZqPolylineTriangulation rim(t);
    for (unsigned int triangle : triangles)
        rim.AppendVertexTail(CbVertexRef(7), CbTriangleRef(triangle));
    return rim;
}

// The loop turned to start at its smallest vertex, for comparing loops.
Loop canonical(Loop loop)
{
    std::rotate(loop.begin(), std::min_element(loop.begin(), loop.end()), loop.end());
    return loop;
}
} // namespace

TEST(ZqHoleRims, RimInEitherDirectionFromAnyStepGivesOneLoop)
{
    // The hole of the squares (1,1) and (2,1): rim 8, 15, 22, 23, 16, 9 (counter-clockwise).
    ZqTriangulationDynamic t = grid({{1, 1}, {2, 1}});
    const std::vector<unsigned int> loopVertices{8, 15, 22, 23, 16, 9};
    std::vector<unsigned int> rimTriangles;
    for (std::size_t i = 0; i < loopVertices.size(); ++i)
        rimTriangles.push_back(triangleWith(t, loopVertices[(i + 1) % 6], loopVertices[i]));
    for (int turn = 0; turn < 6; ++turn)
    {
        std::rotate(rimTriangles.begin(), rimTriangles.begin() + 1, rimTriangles.end());
        for (bool reverse : {false, true})
        {
            std::vector<unsigned int> steps = rimTriangles;
            if (reverse)
                std::reverse(steps.begin(), steps.end());
            const std::vector<Loop> loops = ZqHoleRims::FromRim(t, rimOf(t, steps));
            ASSERT_EQ(loops.size(), 1u);
            EXPECT_EQ(canonical(loops[0]), loopVertices) << "turn " << turn << (reverse ? " reversed" : "");
        }
    }
}

TEST(ZqHoleRims, TrianglesThatDoNotRunRoundAHoleAreRefused)
{
    ZqTriangulationDynamic t = grid({{1, 1}});
    // Inner triangles with no border edge, then triangles of the hole out of order.
    EXPECT_THROW(ZqHoleRims::FromRim(t, rimOf(t, {triangleWith(t, 32, 39), triangleWith(t, 39, 40)})),
                 CbExceptionPreconditionViolation);
    const unsigned int a = triangleWith(t, 15, 8), b = triangleWith(t, 16, 15), c = triangleWith(t, 9, 16);
    EXPECT_THROW(ZqHoleRims::FromRim(t, rimOf(t, {a, c, b, a})), CbExceptionPreconditionViolation);
    EXPECT_THROW(ZqHoleRims::FromRim(t, rimOf(t, {a, 999})), CbExceptionPreconditionViolation);
    ZqTriangulationDynamic withoutRelation(t);
    withoutRelation.AddVertex({9, 9, 9});
    EXPECT_THROW(ZqHoleRims::FromRim(withoutRelation, rimOf(withoutRelation, {a})),
                 CbExceptionPreconditionViolation);
    EXPECT_TRUE(ZqHoleRims::FromRim(t, rimOf(t, {})).empty());
}

TEST(ZqHoleRims, FindAllReturnsEveryBorderLoopInFillOrientation)
{
    // Two holes and the outer border.
    ZqTriangulationDynamic t = grid({{1, 1}, {3, 3}});
    const std::vector<Loop> loops = ZqHoleRims::FindAll(t);
    ASSERT_EQ(loops.size(), 3u);
    std::vector<Loop> sorted;
    for (const Loop& loop : loops)
        sorted.push_back(canonical(loop));
    std::sort(sorted.begin(), sorted.end());
    EXPECT_EQ(sorted[0].size(), 24u) << "the outer border";
    EXPECT_EQ(sorted[1], (Loop{8, 15, 16, 9}));
    EXPECT_EQ(sorted[2], (Loop{24, 31, 32, 25}));
}

TEST(ZqHoleRims, HolesMeetingInAVertexBecomeTwoLoops)
{
    // The squares (1,1) and (2,2) touch in vertex 16.
    ZqTriangulationDynamic t = grid({{1, 1}, {2, 2}});
    std::vector<Loop> loops = ZqHoleRims::FindAll(t);
    std::erase_if(loops, [](const Loop& loop) { return loop.size() != 4; });
    ASSERT_EQ(loops.size(), 2u);
    std::vector<Loop> sorted{canonical(loops[0]), canonical(loops[1])};
    std::sort(sorted.begin(), sorted.end());
    EXPECT_EQ(sorted[0], (Loop{8, 15, 16, 9}));
    EXPECT_EQ(sorted[1], (Loop{16, 23, 24, 17}));
}

TEST(ZqHoleRims, SplitAtRepeatedVertices)
{
    EXPECT_EQ(ZqHoleRims::SplitAtRepeatedVertices({1, 2, 3}), (std::vector<Loop>{{1, 2, 3}}));
    EXPECT_EQ(ZqHoleRims::SplitAtRepeatedVertices({1, 2, 3, 1, 4, 5}),
              (std::vector<Loop>{{1, 2, 3}, {1, 4, 5}}));
    // A vertex passed three times, and a loop nested in another.
    EXPECT_EQ(ZqHoleRims::SplitAtRepeatedVertices({0, 1, 2, 0, 3, 4, 0, 5, 6}),
              (std::vector<Loop>{{0, 1, 2}, {0, 3, 4}, {0, 5, 6}}));
    EXPECT_EQ(ZqHoleRims::SplitAtRepeatedVertices({0, 1, 2, 3, 2, 4}),
              (std::vector<Loop>{{2, 3}, {0, 1, 2, 4}}));
}

TEST(ZqPolylineTriangulation, StepsKeepTheirReferencesAndCopiesTheirTriangulation)
{
    ZqTriangulationDynamic t = grid({});
    ZqPolylineTriangulation rim(t);
    rim.AppendVertexTail(CbVertexRef(3), CbTriangleRef(4));
    rim.AppendVertexTail(CbVertexRef(), CbTriangleRef(5));
    EXPECT_EQ(rim.GetHeadVertex()->GetVertex(), CbVertexRef(3));
    EXPECT_EQ(rim.GetTailVertex()->GetTriangle(), CbTriangleRef(5));
    EXPECT_FALSE(rim.GetTailVertex()->GetVertex().IsValid());
    ZqPolylineTriangulationList list;
    list.AddTail(rim);
    rim.RemoveAll();
    ASSERT_EQ(list.GetCount(), 1u);
    EXPECT_EQ(&list.begin()->GetTriangulation(), &t);
    EXPECT_EQ(list.begin()->GetVertexCount(), 2u);
}
