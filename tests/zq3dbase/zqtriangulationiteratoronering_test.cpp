// The one-ring iterator in all eight instances: on a closed sphere every walk visits exactly the
// neighbourhood the relation knows and runs opposite ways in the two directions; start triangles,
// missing relations and ends of walks.

#include "basepool/cbexception.h"
#include "triangulationtesting.h"
#include "zq3dbase/zqtriangulationdynamic.h"
#include "zq3dbase/zqtriangulationiteratoronering.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <set>
#include <vector>

namespace
{
template <class TIterator> std::vector<unsigned int> walk(TIterator it)
{
    std::vector<unsigned int> indices;
    for (; !it.IsEnd() && indices.size() < 1000;)
    {
        indices.push_back((*it).GetIndex());
        if ((++it).IsAtStart())
            break;
    }
    return indices;
}

ZqTriangulationDynamic sphere()
{
    ZqTriangulationDynamic t(MakePrimitive(L"icosahedron", 2));
    t.ComputeVertexTriangleRelationship();
    return t;
}

// A square of four triangles around centre 0 with the last one missing: an open fan of three.
ZqTriangulationDynamic openFan()
{
    ZqTriangulationDynamic t;
    for (const CbVector3f& p : {CbVector3f(0, 0, 0), CbVector3f(1, 0, 0), CbVector3f(0, 1, 0),
                                CbVector3f(-1, 0, 0), CbVector3f(0, -1, 0), CbVector3f(5, 5, 5)})
        t.AddVertex(p);
    t.AddTriangle(0u, 2u, 3u);
    t.AddTriangle(0u, 1u, 2u);
    t.AddTriangle(0u, 3u, 4u);
    t.ComputeVertexTriangleRelationship();
    return t;
}

template <class T> class ZqTriangulationIteratorOneRingTest : public ::testing::Test
{
};
template <class TRef, bool A, bool B> struct SInstance
{
    using Iterator = ZqTriangulationIteratorOneRing<TRef, A, B>;
    using Reverse = ZqTriangulationIteratorOneRing<TRef, !A, B>;
    static constexpr bool kVertices = std::is_same_v<TRef, CbVertexRef>;
};
using Instances =
    ::testing::Types<SInstance<CbVertexRef, true, true>, SInstance<CbVertexRef, true, false>,
                     SInstance<CbVertexRef, false, true>, SInstance<CbVertexRef, false, false>,
                     SInstance<CbTriangleRef, true, true>, SInstance<CbTriangleRef, true, false>,
                     SInstance<CbTriangleRef, false, true>, SInstance<CbTriangleRef, false, false>>;
TYPED_TEST_SUITE(ZqTriangulationIteratorOneRingTest, Instances);
} // namespace

TYPED_TEST(ZqTriangulationIteratorOneRingTest, EveryRingOfASphereIsItsNeighbourhood)
{
    const ZqTriangulationDynamic t = sphere();
    const ZqVertexTriangleRelation& relation = t.GetVertexTriangleRelationship();
    for (unsigned int v = 0; v < t.GetVertexCount(); ++v)
    {
        std::set<unsigned int> expected;
        for (unsigned int i = 0; i < relation.GetTriangleCount(v); ++i)
        {
            const unsigned int triangle = relation.GetTriangle(v, i);
            if (TypeParam::kVertices)
            {
                for (const unsigned int corner : t.Get(CbTriangleRef(triangle)))
                    if (corner != v)
                        expected.insert(corner);
            }
            else
                expected.insert(triangle);
        }
        const std::vector<unsigned int> forward = walk(typename TypeParam::Iterator(t, CbVertexRef(v)));
        ASSERT_EQ(std::set<unsigned int>(forward.begin(), forward.end()), expected) << "vertex " << v;
        ASSERT_EQ(forward.size(), expected.size()) << "vertex " << v;
        // The other direction from the same start: the same first element for triangles, the rest reversed.
        std::vector<unsigned int> backward = walk(typename TypeParam::Reverse(t, CbVertexRef(v)));
        if (TypeParam::kVertices)
            std::rotate(backward.begin(), backward.begin() + 1, backward.end());
        std::reverse(backward.begin() + 1, backward.end());
        ASSERT_EQ(backward, forward) << "vertex " << v;
    }
}

TYPED_TEST(ZqTriangulationIteratorOneRingTest, OpenFansRunFromBorderToBorderWhateverTheStart)
{
    const ZqTriangulationDynamic t = openFan();
    using Iterator = typename TypeParam::Iterator;
    const std::vector<unsigned int> whole = walk(Iterator(t, CbVertexRef(0)));
    for (unsigned int start = 0; start < 3; ++start)
        EXPECT_EQ(walk(Iterator(t, CbVertexRef(0), CbTriangleRef(start))), whole) << "start " << start;
    EXPECT_EQ(whole.size(), TypeParam::kVertices ? 4u : 3u);

    Iterator it(t, CbVertexRef(0));
    while (!it.IsEnd())
        ++it;
    EXPECT_TRUE(it.IsBorder());
    ++it;
    EXPECT_TRUE(it.IsEnd()) << "stepping past the end stays there";
    it.Reset();
    EXPECT_TRUE(it.IsAtStart());
    EXPECT_EQ((*it).GetIndex(), whole[0]);

    const Iterator isolated(t, CbVertexRef(5));
    EXPECT_TRUE(isolated.IsEnd());
    EXPECT_FALSE(isolated.IsBorder());
}

TYPED_TEST(ZqTriangulationIteratorOneRingTest, ClosedFansStartAtTheStartTriangle)
{
    const ZqTriangulationDynamic t = sphere();
    using Iterator = typename TypeParam::Iterator;
    const ZqVertexTriangleRelation& relation = t.GetVertexTriangleRelationship();
    const unsigned int third = relation.GetTriangle(7, 2);
    Iterator it(t, CbVertexRef(7), CbTriangleRef(third));
    EXPECT_EQ(it.GetTriangle().GetIndex(), third);
    const std::vector<unsigned int> fromThird = walk(it);
    std::vector<unsigned int> fromFirst = walk(Iterator(t, CbVertexRef(7)));
    std::rotate(fromFirst.begin(), std::find(fromFirst.begin(), fromFirst.end(), fromThird[0]),
                fromFirst.end());
    EXPECT_EQ(fromThird, fromFirst);
}

TYPED_TEST(ZqTriangulationIteratorOneRingTest, RefusedUses)
{
    ZqTriangulationDynamic t = openFan();
    using Iterator = typename TypeParam::Iterator;
    t.AddVertex({1, 1, 1});
    EXPECT_THROW(Iterator(t, CbVertexRef(0)), CbExceptionPreconditionViolation) << "stale relation";
    t.ComputeVertexTriangleRelationship();
    EXPECT_THROW(Iterator(t, CbVertexRef(7)), CbExceptionPreconditionViolation);
    try
    {
        Iterator(t, CbVertexRef(5), CbTriangleRef(0));
        ADD_FAILURE() << "a start triangle away from the centre was accepted";
    }
    catch (const CbException& e)
    {
        EXPECT_TRUE(std::string(e.GetFunction()).ends_with("::getCornerIndex")) << e.GetFunction();
        EXPECT_STREQ(e.GetDetail(), "triangle 0 does not touch vertex 5");
    }
    EXPECT_THROW(Iterator(t, CbVertexRef(0)).getCornerIndex(CbTriangleRef(99)), CbException);
}
