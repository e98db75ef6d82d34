// The static helpers of the render test base: time formatting, axis views, reproducible random
// directions and distinct hues.

#include "zq3dview/zqrenderunittest.h"

#include <gtest/gtest.h>

#include <cmath>
#include <set>

namespace
{
using R = ZqRenderUnitTest;

std::string text(const CString& s)
{
    return CbWideToUtf8(s.Std());
}

float hueOf(const ZqColorRGBA& c)
{
    float h, s, l;
    c.ToHSL(h, s, l);
    return h;
}
} // namespace

TEST(ZqRenderUnitTestHelpers, FormatTimePicksTheUnitAtEachBound)
{
    EXPECT_EQ(text(R::FormatTime(0.0)), "0 s");
    EXPECT_EQ(text(R::FormatTime(0.0005)), "500.00µs");
    EXPECT_EQ(text(R::FormatTime(2.5)), "2.50s");
    // A bound belongs to the larger unit.
    EXPECT_EQ(text(R::FormatTime(1e-6)), "1.00µs");
    EXPECT_EQ(text(R::FormatTime(0.001)), "1.00ms");
    EXPECT_EQ(text(R::FormatTime(1.0)), "1.00s");
    EXPECT_EQ(text(R::FormatTime(2.5e-8)), "25.00ns");
    EXPECT_EQ(text(R::FormatTime(0.0234567)), "23.46ms");
}

TEST(ZqRenderUnitTestHelpers, AxisViewsLookAlongTheNegativeAxesWithTheirUpVectors)
{
    const CbArray<R::SView> views = R::CreateAxisViews(0.0f);
    ASSERT_EQ(views.GetCount(), 3u);
    EXPECT_EQ(text(views[0].sName), "X");
    EXPECT_EQ(text(views[1].sName), "Y");
    EXPECT_EQ(text(views[2].sName), "Z");
    // Applied to a scene (no device needed), each view points the camera along its axis.
    const CbVector3f directions[3] = {{-1, 0, 0}, {0, -1, 0}, {0, 0, -1}};
    const CbVector3f ups[3] = {{0, 0, -1}, {1, 0, 0}, {1, 0, 0}};
    for (int i = 0; i < 3; ++i)
    {
        ZqD3DScene scene({0, 0, 160, 90});
        R::SetupSceneDefault(scene, ZqColorRGBA::Black);
        views[i].fnSetupCamera(scene);
        const ZqCameraObject* camera = scene.GetSceneGraph().GetActiveCamera();
        ASSERT_NE(camera, nullptr);
        EXPECT_EQ(camera->GetDirection(), directions[i]) << i;
        EXPECT_EQ(camera->GetUpVector(), ups[i]) << i;
    }
}

TEST(ZqRenderUnitTestHelpers, CreateViewNormalisesAndDoesNothingWithoutCamera)
{
    ZqD3DScene scene({0, 0, 160, 90});
    // No active camera: nothing to place, nothing thrown.
    R::CreateView(L"leer", {0, 0, 5}, {0, 3, 0}, 2.0f).fnSetupCamera(scene);
    R::SetupSceneDefault(scene, ZqColorRGBA::Black);
    R::CreateView(L"schräg", {0, 0, 5}, {0, 3, 0}, 2.0f).fnSetupCamera(scene);
    const ZqCameraObject* camera = scene.GetSceneGraph().GetActiveCamera();
    EXPECT_EQ(camera->GetDirection(), CbVector3f(0, 0, 1));
    EXPECT_EQ(camera->GetUpVector(), CbVector3f(0, 1, 0));
    // An empty scene counts as the unit cube: the camera stands 2 from its centre.
    EXPECT_EQ(camera->GetPosition(), CbVector3f(0, 0, -2));
}

TEST(ZqRenderUnitTestHelpers, RandomDirectionsAreReproducibleUnitVectorsThatDependOnBothIndices)
{
    std::set<std::tuple<float, float, float>> seen;
    for (unsigned int i = 0; i < 200; ++i)
    {
        const CbVector3f d = R::CreateRandomDir(i);
        EXPECT_NEAR(d.Length(), 1.0f, 1e-6f) << i;
        EXPECT_EQ(d, R::CreateRandomDir(i)) << i;
        // The one-index form hashes another second word than (i, 0).
        EXPECT_NE(d, R::CreateRandomDir(i, 0)) << i;
        EXPECT_NEAR(R::CreateRandomDir(i, 7).Length(), 1.0f, 1e-6f) << i;
        seen.insert({d.x, d.y, d.z});
    }
    EXPECT_EQ(seen.size(), 200u);
    EXPECT_NE(R::CreateRandomDir(3, 4), R::CreateRandomDir(4, 3));
    // Spread over the sphere: the mean of many directions is near the centre.
    CbVector3f sum;
    for (unsigned int i = 0; i < 2000; ++i)
        sum += R::CreateRandomDir(i, i * 31);
    EXPECT_LT((sum / 2000.0f).Length(), 0.1f);
}

TEST(ZqRenderUnitTestHelpers, UniqueHuesStepByTheGoldenRatio)
{
    const ZqColorRGBA red = R::CreateUniqueHue(0, 0.5f);
    EXPECT_NEAR(red.r, 1.0f, 1e-6f);
    EXPECT_NEAR(red.g + red.b, 0.0f, 1e-6f);
    EXPECT_NEAR(hueOf(R::CreateUniqueHue(1, 0.5f)), 222.4922f, 1e-3f);
    EXPECT_NEAR(hueOf(R::CreateUniqueHue(2, 0.5f)), 84.9845f, 1e-3f);
    const ZqColorRGBA light = R::CreateUniqueHue(5, 0.8f);
    float h, s, l;
    light.ToHSL(h, s, l);
    EXPECT_NEAR(s, 1.0f, 1e-5f);
    EXPECT_NEAR(l, 0.8f, 1e-5f);
    // Any eight successive hues stay more than 20 degrees apart.
    for (unsigned int start = 0; start < 50; ++start)
        for (unsigned int i = start; i < start + 8; ++i)
            for (unsigned int j = i + 1; j < start + 8; ++j)
            {
                const float d =
                    std::fabs(hueOf(R::CreateUniqueHue(i, 0.5f)) - hueOf(R::CreateUniqueHue(j, 0.5f)));
                EXPECT_GT(std::min(d, 360.0f - d), 20.0f) << i << " " << j;
            }
}
