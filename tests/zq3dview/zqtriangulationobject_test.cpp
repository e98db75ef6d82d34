// ZqTriangulationObject: what it takes over from a triangulation (normals, materials) and what it
// refuses, and a .tri file that cannot be read leaving the object as it was.

#include "zq3dview/zqtriangulationobject.h"

#include "basepool/cbexception.h"
#include "zq3dbase/zqtriangulationdynamic.h"
#include "zqbase/zqtestenvironment.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>

namespace
{
// A square of two triangles in the plane z = 0, with the given material per triangle when any.
ZqTriangulationDynamic square(std::initializer_list<unsigned int> materials = {})
{
    ZqTriangulationDynamic t;
    t.AddVertex({0, 0, 0});
    t.AddVertex({1, 0, 0});
    t.AddVertex({1, 1, 0});
    t.AddVertex({0, 1, 0});
    t.AddTriangle(0u, 1u, 2u);
    t.AddTriangle(0u, 2u, 3u);
    if (materials.size())
    {
        t.Assert(eTA_Material);
        t.SetSerialize(eTA_Material, true);
        unsigned int i = 0;
        for (unsigned int m : materials)
            t.Get<eTA_Material>(CbTriangleRef(i++)) = m;
    }
    return t;
}
} // namespace

TEST(ZqTriangulationObject, TakesPositionsTrianglesAndMaterialsAndComputesMissingNormals)
{
    ZqTriangulationObject object(L"quadrat");
    object.SetTriangulation(square({0, 3}));
    EXPECT_EQ(object.GetVertexCount(), 4u);
    ASSERT_EQ(object.GetTriangleCount(), 2u);
    EXPECT_EQ(object.GetTriangle(1), (ZqTriangleCorners{0, 2, 3}));
    EXPECT_EQ(object.GetMaterialCount(), 4u);
    EXPECT_EQ(object.GetTriangleMaterial(0), 0u);
    EXPECT_EQ(object.GetTriangleMaterial(1), 3u);
    // Counter-clockwise seen from +z: the computed normals point up.
    for (unsigned int v = 0; v < 4; ++v)
        EXPECT_EQ(object.GetNormal(v), CbVector3f(0, 0, 1)) << v;
    ZqBoundingBox3f box;
    object.ExtendBounds(box);
    EXPECT_EQ(box.max, CbVector3f(1, 1, 0));
}

TEST(ZqTriangulationObject, GivenNormalsWinAndAreNormalised)
{
    ZqTriangulationDynamic t = square();
    t.Assert(eVA_Normal);
    for (unsigned int v = 0; v < 4; ++v)
        t.Get<eVA_Normal>(CbVertexRef(v)) = {0, 3, 0};
    t.Get<eVA_Normal>(CbVertexRef(2)) = {0, 0, 0};
    ZqTriangulationObject object;
    object.SetTriangulation(t);
    EXPECT_EQ(object.GetNormal(0), CbVector3f(0, 1, 0));
    EXPECT_EQ(object.GetNormal(2), CbVector3f(0, 0, 1));
}

TEST(ZqTriangulationObject, AMaterialIndexPastTheLimitIsRefusedBeforeAnythingChanges)
{
    ZqTriangulationObject object;
    object.SetTriangulation(square({1, 1}));
    try
    {
        object.SetTriangulation(square({0, ZqTriangulationObject::kMaxMaterials}));
        FAIL() << "nothing thrown";
    }
    catch (const CbExceptionPreconditionViolation& e)
    {
        EXPECT_STREQ(e.GetDetail(), "material 256 is above the limit of 255");
    }
    EXPECT_EQ(object.GetMaterialCount(), 2u);
    EXPECT_EQ(object.GetTriangleMaterial(0), 1u);
}

TEST(ZqTriangulationObject, AFileThatCannotBeReadLeavesTheObjectAsItWas)
{
    const std::filesystem::path folder =
        std::filesystem::path(ZqTestEnvironment::GetScratchDirectory()) / "tri";
    std::filesystem::create_directories(folder);
    const CString good = CString(CbUtf8ToWide((folder / "quadrat.tri").string()));
    square({0, 1}).WriteFile(good);
    ZqTriangulationObject object;
    object.Load(good);
    EXPECT_EQ(object.GetTriangleCount(), 2u);
    EXPECT_EQ(object.GetMaterialCount(), 2u);
    std::ofstream((folder / "kaputt.tri").string(), std::ios::binary) << "ZQTRI\r\n";
    EXPECT_THROW(object.Load(CString(CbUtf8ToWide((folder / "kaputt.tri").string()))), CbException);
    EXPECT_THROW(object.Load(CString(CbUtf8ToWide((folder / "fehlt.tri").string()))), CbException);
    EXPECT_EQ(object.GetTriangleCount(), 2u);
    EXPECT_EQ(object.GetTriangleMaterial(1), 1u);
    std::filesystem::remove_all(folder);
}
