// The primitive generators: every shape closed, oriented outward, without duplicate vertices and of
// the documented size; refused configurations make Compute fail.

#include "triangulationtesting.h"
#include "zq3dbase/zqmptriangulationprimitive.h"
#include "zq3dbase/zqmptriangulationprimitiveold.h"

#include <gtest/gtest.h>

#include <cmath>

namespace
{
void expectClosedOutward(const ZqTriangulationBase& t, const std::string& what)
{
    EXPECT_EQ(WatertightProblem(t), "") << what;
    EXPECT_GT(SignedVolume6(t), 0.0) << what;
    EXPECT_EQ(DuplicateVertexCount(t), 0u) << what;
    // Euler characteristic of a sphere: V - E + F = 2 with E = 3F / 2.
    EXPECT_EQ(2 * int(t.GetVertexCount()) - int(t.GetTriangleCount()), 4) << what;
    ASSERT_TRUE(t.IsPresent(eVA_Normal)) << what;
    for (const CbVector3f& n : t.GetAttribute<eVA_Normal>())
        ASSERT_NEAR(n.Length(), 1.0f, 1e-5f) << what;
}

} // namespace

TEST(ZqMpTriangulationPrimitiveTest, NamedPrimitivesAreClosedAndOutward)
{
    for (unsigned int s = 0; s <= 3; ++s)
    {
        const ZqTriangulationStatic ico = MakePrimitive(L"icosahedron", s);
        EXPECT_EQ(ico.GetTriangleCount(), 20u << (2 * s));
        expectClosedOutward(ico, "icosahedron " + std::to_string(s));
        for (const CbVector3f& p : ico.GetPositions())
            ASSERT_NEAR(p.Length(), 1.0f, 1e-6f);

        const ZqTriangulationStatic cube = MakePrimitive(L"cube", s);
        EXPECT_EQ(cube.GetTriangleCount(), 12u << (2 * s));
        expectClosedOutward(cube, "cube " + std::to_string(s));
        EXPECT_NEAR(SignedVolume6(cube), 6.0 * 8.0, 1e-3);

        const ZqTriangulationStatic cylinder = MakePrimitive(L"Cylinder", s);
        EXPECT_EQ(cylinder.GetTriangleCount(), 2u * (8u << s) * ((1u << s) + 1));
        expectClosedOutward(cylinder, "cylinder " + std::to_string(s));
    }
}

TEST(ZqMpTriangulationPrimitiveTest, RenderSceneIcosahedronHasItsDocumentedSize)
{
    const ZqTriangulationStatic ico = MakePrimitive(L"icosahedron", 6);
    EXPECT_EQ(ico.GetTriangleCount(), 81920u);
    EXPECT_EQ(ico.GetVertexCount(), 40962u);
    EXPECT_EQ(WatertightProblem(ico), "");
}

TEST(ZqMpTriangulationPrimitiveTest, RefusedConfigurations)
{
    ZqMpTriangulationPrimitive primitive;
    primitive.SetPrimitive(L"dodecahedron");
    EXPECT_FALSE(primitive.Compute());
    EXPECT_NE(primitive.GetLastError().find("unknown primitive name"), std::string::npos);
    primitive.SetPrimitive(L"icosahedron");
    ZqTriangulationPrimitiveConfiguration configuration;
    configuration.SetSubdivision(ZqMpTriangulationPrimitive::GetMaxSubdivision(L"icosahedron") + 1);
    primitive.SetConfiguration(configuration);
    EXPECT_FALSE(primitive.Compute());
    configuration.SetSubdivision(0);
    configuration.SetRadius(std::nanf(""));
    primitive.SetConfiguration(configuration);
    EXPECT_FALSE(primitive.Compute());
    configuration.SetRadius(2.0f);
    primitive.SetConfiguration(configuration);
    ASSERT_TRUE(primitive.Compute());
    EXPECT_NEAR(primitive.GetOutput().GetPositions()[0].Length(), 2.0f, 1e-6f);
}

TEST(ZqMpTriangulationPrimitiveOldTest, CubeAndSphereConfigurations)
{
    ZqMpTriangulationPrimitiveOld primitive;
    primitive.SetInput(ZqMpTriangulationPrimitiveOld::eP_Cube);
    ASSERT_TRUE(primitive.Compute());
    EXPECT_EQ(primitive.GetOutput().GetVertexCount(), 8u);
    EXPECT_EQ(primitive.GetOutput().GetTriangleCount(), 12u);
    expectClosedOutward(primitive.GetOutput(), "default cube");

    primitive.SetInput(ZqMpTriangulationPrimitiveOld::SConfigurationCube(32, 32, 32));
    ASSERT_TRUE(primitive.Compute());
    EXPECT_NEAR(SignedVolume6(primitive.GetOutput()), 6.0 * 32 * 32 * 32, 1.0);

    primitive.SetInput(ZqMpTriangulationPrimitiveOld::SConfigurationCube(1, 2, 3, 5));
    ASSERT_TRUE(primitive.Compute());
    EXPECT_EQ(primitive.GetOutput().GetTriangleCount(), 12u * 25);
    expectClosedOutward(primitive.GetOutput(), "5 x 5 cube");

    primitive.SetInput(ZqMpTriangulationPrimitiveOld::SConfigurationSphere(4));
    ASSERT_TRUE(primitive.Compute());
    EXPECT_EQ(primitive.GetOutput().GetTriangleCount(), 2048u);
    EXPECT_EQ(primitive.GetOutput().GetVertexCount(), 1026u);
    expectClosedOutward(primitive.GetOutput(), "sphere 4");

    primitive.SetInput(ZqMpTriangulationPrimitiveOld::eP_Tetrahedron);
    ASSERT_TRUE(primitive.Compute());
    expectClosedOutward(primitive.GetOutput(), "tetrahedron");

    primitive.SetInput(ZqMpTriangulationPrimitiveOld::SConfigurationCube(1, 0, 1));
    EXPECT_FALSE(primitive.Compute());
    primitive.SetInput(ZqMpTriangulationPrimitiveOld::SConfigurationSphere(11));
    EXPECT_FALSE(primitive.Compute());
}
