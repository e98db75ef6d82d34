// The attribute store at the edges the module test does not reach: enumerators outside the range,
// attributes following counts that shrink and grow, and what Clear keeps.

#include "basepool/cbexception.h"
#include "zq3dbase/zqparametrizationplanar.h"
#include "zq3dbase/zqtriangulationshapes.h"
#include "zq3dbase/zqtriangulationstatic.h"

#include <gtest/gtest.h>

#include <vector>

TEST(ZqTriangulationBaseTest, AttributeEnumeratorsOutsideTheRangeAreRefused)
{
    ZqTriangulationStatic t;
    EXPECT_THROW(t.Assert(EVertexAttribute(eVA_Count)), CbExceptionPreconditionViolation);
    EXPECT_THROW(t.SetSerialize(ETriangleAttribute(7), true), CbExceptionPreconditionViolation);
    EXPECT_THROW(t.GetAttributeParameter(EVertexAttribute(99)), CbExceptionPreconditionViolation);
    EXPECT_FALSE(t.GetSerialize(eTA_Flags)) << "a refused switch must not land on another slot";
}

TEST(ZqTriangulationBaseTest, AttributesFollowCountsThatShrinkAndGrow)
{
    ZqTriangulationStatic t;
    ZqTriangulationShapes::Grid(t, 2, 2);
    t.Assert(eTA_Material);
    t.Get<eTA_Material>(CbTriangleRef(1)) = 5;
    t.Get<eTA_Material>(CbTriangleRef(7)) = 9;
    t.SetTriangleCount(2);
    t.SetTriangleCount(4);
    EXPECT_EQ(t.GetAttribute<eTA_Material>().size(), 4u);
    EXPECT_EQ(t.Get<eTA_Material>(CbTriangleRef(1)), 5u);
    EXPECT_EQ(t.Get<eTA_Material>(CbTriangleRef(3)), 0u) << "a regrown element starts value-initialised";
    t.SetVertexCount(3);
    EXPECT_EQ(t.GetAttribute<eVA_Normal>().size(), 3u);
    // Triangles that now name missing vertices are neither indexed nor written.
    EXPECT_THROW(t.ComputeVertexTriangleRelationship(), CbExceptionPreconditionViolation);
    std::vector<unsigned char> bytes;
    CbStreamWriteBinary stream(bytes);
    EXPECT_THROW(t.Serialize(stream), CbExceptionPreconditionViolation);
    EXPECT_TRUE(bytes.empty());

    t.SetSerialize(eVA_Normal, true);
    t.SetAttributeParameter(eVA_Normal, CbMakeSmart<ZqParametrizationPlanar>());
    t.Clear();
    EXPECT_TRUE(t.IsPresent(eVA_Normal));
    EXPECT_EQ(t.GetAttribute<eVA_Normal>().size(), 0u);
    EXPECT_TRUE(t.GetSerialize(eVA_Normal));
    EXPECT_TRUE(t.GetAttributeParameter(eVA_Normal));
    EXPECT_EQ(t.AppendVertex({1, 2, 3}).GetIndex(), 0u);
    EXPECT_EQ(t.GetAttribute<eVA_Normal>().size(), 1u);
}
