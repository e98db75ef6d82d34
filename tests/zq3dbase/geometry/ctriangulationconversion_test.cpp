// Copies between ZqTriangulationBase and Geometry::CTriangulation: geometry, every attribute slot
// with its values and switch, and what has no place on the other side, which must be named rather
// than dropped silently; a failed copy leaves the target alone.

#include "geometryfixtures.h"
#include "zq3dbase/geometry/cattributehandle.h"
#include "zq3dbase/geometry/citeratoroneringvertices.h"
#include "zq3dbase/geometry/ctriangulationconversion.h"
#include "zq3dbase/zqmpcomparetriangulations.h"
#include "zq3dbase/zqmpcomparetriangulationsold.h"
#include "zq3dbase/zqmptriangulationprimitiveold.h"
#include "zq3dbase/zqparametrizationplanar.h"
#include "zq3dbase/zqtriangulationiteratoronering.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

using namespace Geometry;

namespace
{
// A cube of 2 x 2 segments per side with all eight attribute slots present, each element holding
// values derived from its index, some switches on, and a parameter object on the surface
// parameters.
ZqTriangulationDynamic firstGeneration()
{
    ZqMpTriangulationPrimitiveOld primitive;
    primitive.SetInput(ZqMpTriangulationPrimitiveOld::SConfigurationCube(1, 2, 3, 2));
    EXPECT_TRUE(primitive.Compute());
    ZqTriangulationDynamic t(primitive.GetOutput());
    for (unsigned int a = 0; a < eVA_Count; ++a)
        t.Assert(EVertexAttribute(a));
    for (unsigned int a = 0; a < eTA_Count; ++a)
        t.Assert(ETriangleAttribute(a));
    for (unsigned int v = 0; v < t.GetVertexCount(); ++v)
    {
        const float f = float(v);
        t.Get<eVA_Color>(CbVertexRef(v)) = ZqColorRGBA(f / 100, 0.5f, 1, 0.25f);
        t.Get<eVA_Parameter>(CbVertexRef(v)) = CbVector2f(f, -f);
        t.Get<eVA_Normal>(CbVertexRef(v)) = CbVector3f(0, f, 1);
        t.Get<eVA_Scalar>(CbVertexRef(v)) = f * 0.125f;
        t.Get<eVA_Flags>(CbVertexRef(v)) = v * 7u;
    }
    for (unsigned int i = 0; i < t.GetTriangleCount(); ++i)
    {
        t.Get<eTA_Normal>(CbTriangleRef(i)) = CbVector3f(float(i), 0, 0);
        t.Get<eTA_Material>(CbTriangleRef(i)) = i % 3;
        t.Get<eTA_Flags>(CbTriangleRef(i)) = 1u << (i % 32);
    }
    t.SetSerialize(eVA_Normal, true);
    t.SetSerialize(eTA_Material, true);
    t.SetAttributeParameter(eVA_Parameter, CbMakeSmart<ZqParametrizationPlanar>(
                                               CbVector3f(), CbVector3f(1, 0, 0), CbVector3f(0, 1, 0)));
    return t;
}

// Equal in geometry, attributes and switches; parameters are not compared.
bool equal(const ZqTriangulationBase& a, const ZqTriangulationBase& b)
{
    ZqMpCompareTriangulationsOld compare;
    compare.SetFlags(CbFlags<ZqMpCompareTriangulationsOld::EFlags>::FromBits(
        ZqMpCompareTriangulationsOld::eF_CompareAttributes |
        ZqMpCompareTriangulationsOld::eF_CompareSerializeSwitches));
    const bool same = compare.Compute(a, b, 0.0f, 0.0f);
    for (const auto& message : compare.GetMessageStream().Take())
        ADD_FAILURE() << CbWideToUtf8(message.text.Std());
    return same;
}

std::vector<std::string> utf8(const std::vector<CString>& names)
{
    std::vector<std::string> result;
    for (const CString& name : names)
        result.push_back(CbWideToUtf8(name.Std()));
    return result;
}
} // namespace

TEST(TriangulationConversion, EveryAttributeSlotArrivesUnderItsGeometryName)
{
    const ZqTriangulationDynamic source = firstGeneration();
    CTriangulation converted;
    EXPECT_EQ(utf8(CTriangulationConversion::Convert(source, converted)),
              (std::vector<std::string>{"parameters (parameter)"}));

    // Values and switches under the Geometry names (a round trip alone would not see two slots
    // swapped both ways).
    ASSERT_EQ(converted.GetAttributeCount(), 8u);
    const unsigned int v = source.GetVertexCount() - 1;
    const unsigned int t = source.GetTriangleCount() - 1;
    EXPECT_EQ((CAttributeHandle<CVertexRef, ZqColorRGBA>(converted, L"color")[CVertexRef(v)]),
              source.Get<eVA_Color>(CbVertexRef(v)));
    EXPECT_EQ((CAttributeHandle<CVertexRef, CbVector2f>(converted, L"parameters")[CVertexRef(v)]),
              source.Get<eVA_Parameter>(CbVertexRef(v)));
    EXPECT_EQ((CAttributeHandle<CVertexRef, unsigned int>(converted, L"flags")[CVertexRef(v)]), v * 7u);
    EXPECT_EQ((CAttributeHandle<CTriangleRef, unsigned int>(converted, L"triangle flags")[CTriangleRef(t)]),
              1u << (t % 32));
    EXPECT_TRUE(converted.IsSerialized(L"normal"));
    EXPECT_TRUE(converted.IsSerialized(L"triangle material"));
    EXPECT_FALSE(converted.IsSerialized(L"scalar"));
}

TEST(TriangulationConversion, ARoundTripGivesBackTheDynamicAndTheStaticTriangulation)
{
    const ZqTriangulationDynamic source = firstGeneration();
    CTriangulation converted;
    CTriangulationConversion::Convert(source, converted);
    ZqTriangulationDynamic dynamic(10);
    ZqTriangulationStatic fixed;
    EXPECT_TRUE(CTriangulationConversion::Convert(converted, dynamic).empty());
    EXPECT_TRUE(CTriangulationConversion::Convert(converted, fixed).empty());
    EXPECT_TRUE(equal(source, dynamic));
    EXPECT_TRUE(equal(source, fixed));
    // Slots that were absent stay absent.
    ZqTriangulationDynamic bare(source);
    bare.Remove(eVA_Color);
    bare.Remove(eTA_Flags);
    CTriangulationConversion::Convert(bare, converted);
    CTriangulationConversion::Convert(converted, dynamic);
    EXPECT_FALSE(dynamic.IsPresent(eVA_Color));
    EXPECT_TRUE(equal(bare, dynamic));
}

TEST(TriangulationConversion, GeometryAttributesWithoutASlotAreNamed)
{
    CTriangulation t = GeometryFixtures::Octahedron();
    t.AddAttribute<CVertexRef, double>(L"curvature", true);
    t.AddAttribute<CVertexRef, float>(L"normal");          // the slot holds CbVector3f
    t.AddAttribute<CTriangleRef, CbVector3f>(L"material"); // triangle slots are "triangle ..."
    t.AddAttribute<CVertexRef, float>(L"scalar", true);
    CAttributeHandle<CVertexRef, float>(t, L"scalar")[CVertexRef(5)] = 2.5f;
    ZqTriangulationStatic converted;
    EXPECT_EQ(utf8(CTriangulationConversion::Convert(t, converted)),
              (std::vector<std::string>{"curvature", "normal", "material"}));
    ASSERT_TRUE(converted.IsPresent(eVA_Scalar));
    EXPECT_TRUE(converted.GetSerialize(eVA_Scalar));
    EXPECT_EQ(converted.Get<eVA_Scalar>(CbVertexRef(5)), 2.5f);
    EXPECT_FALSE(converted.IsPresent(eVA_Normal));

    // And back: the kept attribute compares equal with the Geometry original.
    t.RemoveAttribute(L"curvature");
    t.RemoveAttribute(L"normal");
    t.RemoveAttribute(L"material");
    CTriangulation back;
    CTriangulationConversion::Convert(converted, back);
    ZqMpCompareTriangulations compare;
    compare.SetFlags(CbFlags<ZqMpCompareTriangulations::EFlags>::FromBits(
        ZqMpCompareTriangulations::eF_Attributes | ZqMpCompareTriangulations::eF_SerializeSwitches));
    EXPECT_TRUE(compare.Compute(t, back));
}

TEST(TriangulationConversion, InvalidCornersAreRefusedAndTheTargetKept)
{
    ZqTriangulationStatic unset;
    unset.SetVertexCount(3);
    unset.SetTriangleCount(1);
    CTriangulation target = GeometryFixtures::Grid(2);
    std::string kind;
    EXPECT_EQ(GeometryFixtures::thrown([&] { CTriangulationConversion::Convert(unset, target); }, &kind),
              "Geometry::CTriangulationConversion::Convert");
    EXPECT_EQ(kind, "CbExceptionPreconditionViolation");
    EXPECT_EQ(target.GetVertexCount(), 4u);

    CTriangulation edited = GeometryFixtures::Grid(2);
    edited.EditTriangles()[1] = {0, 3, 3};
    ZqTriangulationDynamic dynamic = firstGeneration();
    const ZqTriangulationDynamic before(dynamic);
    EXPECT_EQ(GeometryFixtures::thrown([&] { CTriangulationConversion::Convert(edited, dynamic); }),
              "Geometry::CTriangulation::GetVertexTriangleRelation");
    EXPECT_TRUE(equal(before, dynamic));
}

TEST(TriangulationConversion, BothKindsWalkEveryOneRingInTheSameOrder)
{
    // A grid with a third triangle on the inner edge 6-7 and a triangle touching vertex 12 only.
    CTriangulation geometry = GeometryFixtures::Grid(5);
    geometry.AddVertex({1, 1, 1});
    geometry.AddVertex({3, 3, 1});
    geometry.AddVertex({2, 3, 1});
    geometry.AddTriangle(6, 7, 25);
    geometry.AddTriangle(12, 26, 27);
    ZqTriangulationStatic older;
    CTriangulationConversion::Convert(geometry, older);
    older.ComputeVertexTriangleRelationship();
    for (unsigned int v = 0; v < geometry.GetVertexCount(); ++v)
    {
        std::vector<unsigned int> ours, theirs;
        for (CIteratorOneRingTriangles ring(geometry, CVertexRef(v)); !ring.IsEnd(); ring.Next())
            ours.push_back(ring.GetIndex());
        for (CIteratorOneRingVertices ring(geometry, CVertexRef(v)); !ring.IsEnd(); ring.Next())
            ours.push_back(ring.GetIndex());
        for (ZqTriangulationIteratorOneRing<CbTriangleRef, true, true> ring(older, CbVertexRef(v));
             !ring.IsEnd(); ++ring)
            theirs.push_back((*ring).GetIndex());
        for (ZqTriangulationIteratorOneRing<CbVertexRef, true, true> ring(older, CbVertexRef(v));
             !ring.IsEnd(); ++ring)
            theirs.push_back((*ring).GetIndex());
        ASSERT_EQ(ours, theirs) << "vertex " << v;
    }
}
