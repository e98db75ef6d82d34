// The scene and its device: framing by LookAt, the screenshot's orientation, releasing and making
// the device resources again, and the errors a wrong use of effects and shaders must give.

#include "zqtestgeometry.h"

#include "zq3dview/graphics/cexceptiongraphics.h"
#include "zq3dview/zqeffectsimple.h"
#include "zqbase/zqbitmap.h"

#include <gtest/gtest.h>

namespace
{
using R = ZqRenderUnitTest;

// The normalised device coordinates of p seen through the scene's active camera.
CbVector3f project(const ZqD3DScene& scene, const CbVector3f& p, float aspect)
{
    const ZqCameraObject& camera = *scene.GetSceneGraph().GetActiveCamera();
    const ZqMatrix4f m = camera.GetProjectionMatrix(aspect) * camera.GetViewMatrix();
    float v[4];
    for (int row = 0; row < 4; ++row)
        v[row] = m(row, 0) * p.x + m(row, 1) * p.y + m(row, 2) * p.z + m(row, 3);
    return {v[0] / v[3], v[1] / v[3], v[2] / v[3]};
}

// A long box, so that framing depends on the direction.
CbSmartPointer<ZqMeshObject> box(const CbVector3f& min, const CbVector3f& max)
{
    CbArray<CbVector3f> corners;
    for (unsigned int i = 0; i < 8; ++i)
        corners.Add({(i & 1) ? max.x : min.x, (i & 2) ? max.y : min.y, (i & 4) ? max.z : min.z});
    CbArray<ZqMeshObject::Triangle> triangles;
    triangles.Add({0, 1, 7});
    auto mesh = CbMakeSmart<ZqMeshObject>(L"box");
    mesh->SetGeometry(std::move(corners), std::move(triangles));
    return mesh;
}
} // namespace

TEST(ZqD3DScene, LookAtWithDistanceZeroFitsTheBoundsJustInsideTheView)
{
    ZqD3DScene scene({0, 0, 1600, 900});
    R::SetupSceneDefault(scene, ZqColorRGBA::Black);
    const CbVector3f min{-3, -1, -0.5f}, max{5, 1, 0.5f};
    scene.GetSceneGraph().AppendItem(box(min, max));
    for (unsigned int i = 0; i < 20; ++i)
    {
        R::CreateView(L"v", R::CreateRandomDir(i), {0, 0, 1}, 0.0f).fnSetupCamera(scene);
        float largest = 0.0f;
        for (unsigned int c = 0; c < 8; ++c)
        {
            const CbVector3f p =
                project(scene, {(c & 1) ? max.x : min.x, (c & 2) ? max.y : min.y, (c & 4) ? max.z : min.z},
                        16.0f / 9);
            EXPECT_LE(std::fabs(p.x), 1.0f) << i;
            EXPECT_LE(std::fabs(p.y), 1.0f) << i;
            EXPECT_GT(p.z, -1.0f) << "in front of the near plane " << i;
            EXPECT_LT(p.z, 1.0f) << "before the far plane " << i;
            largest = std::max({largest, std::fabs(p.x), std::fabs(p.y)});
        }
        // One corner touches the 5 % margin: the bounds fill the view.
        EXPECT_NEAR(largest, 1.0f / 1.05f, 1e-3f) << i;
    }
}

TEST(ZqD3DScene, LookAtWithADistanceStandsThatFarFromTheCentre)
{
    ZqD3DScene scene({0, 0, 1600, 900});
    R::SetupSceneDefault(scene, ZqColorRGBA::Black);
    scene.GetSceneGraph().AppendItem(box({1, 1, 1}, {3, 5, 7}));
    // An up vector along the direction is replaced by one orthogonal to it.
    R::CreateView(L"v", {0, 0, -2}, {0, 0, 1}, 25.0f).fnSetupCamera(scene);
    const ZqCameraObject& camera = *scene.GetSceneGraph().GetActiveCamera();
    EXPECT_EQ(camera.GetPosition(), CbVector3f(2, 3, 29));
    EXPECT_EQ(camera.GetDirection(), CbVector3f(0, 0, -1));
    EXPECT_NEAR(Dot(camera.GetUpVector(), camera.GetDirection()), 0.0f, 1e-6f);
    EXPECT_NEAR(camera.GetUpVector().Length(), 1.0f, 1e-6f);
    // The clip planes enclose the bounding sphere of radius sqrt(1 + 4 + 9).
    EXPECT_LT(camera.GetNearPlane(), 25.0f - std::sqrt(14.0f));
    EXPECT_GT(camera.GetFarPlane(), 25.0f + std::sqrt(14.0f));
}

TEST(ZqD3DScene, TheScreenshotIsTopRowFirstAndKeepsTheColours)
{
    ZqD3DScene scene({0, 0, 320, 180});
    R::SetupSceneDefault(scene, ZqColorRGBA::Transparent);
    const auto simple = CbMakeSmart<ZqEffectSimple>();
    scene.GetSceneGraph().AppendViewItem(simple);
    auto top = ZqTestGeometry::Sphere(L"oben", 1.0f, {0, 2, 0});
    auto bottom = ZqTestGeometry::Sphere(L"unten", 1.0f, {0, -2, 0});
    ZqTestGeometry::Paint(*top, simple, ZqColorRGBA::Red);
    ZqTestGeometry::Paint(*bottom, simple, ZqColorRGBA(0, 1, 0, 0.5f));
    scene.GetSceneGraph().AppendItem(top);
    scene.GetSceneGraph().AppendItem(bottom);
    R::CreateView(L"v", {0, 0, -1}, {0, 1, 0}, 0.0f).fnSetupCamera(scene);
    scene.Render();
    ZqBitmap image;
    ASSERT_TRUE(scene.GetScreenshot(image));
    ASSERT_EQ(image.GetWidth(), 320u);
    ASSERT_EQ(image.GetHeight(), 180u);
    EXPECT_EQ(image.GetPixel(160, 45), 0xFF0000FFu);  // red, opaque, in the upper half
    EXPECT_EQ(image.GetPixel(160, 135), 0x8000FF00u); // green with alpha 128 below
    EXPECT_EQ(image.GetPixel(5, 5), 0u);              // transparent background
}

TEST(ZqD3DScene, ReleasedResourcesAreMadeAgainForTheSamePicture)
{
    R::ZqTestScene scene;
    const ZqColorRGBA blue = ZqColorRGBA::Blue;
    ZqTestGeometry::TwoSpheres(scene, &blue, &blue);
    R::CreateView(L"v", R::CreateRandomDir(3), {0, 0, 1}, 0.0f).fnSetupCamera(scene);
    scene.Render();
    ZqBitmap first, second;
    scene.GetScreenshot(first);
    ZqViewItem* effect = scene.GetSceneGraph().GetViewItem(0);
    ASSERT_TRUE(effect->IsInitialized());
    scene.ReleaseDeviceResources();
    EXPECT_FALSE(effect->IsInitialized());
    scene.Render();
    EXPECT_TRUE(effect->IsInitialized());
    scene.GetScreenshot(second);
    EXPECT_TRUE(first == second);
    EXPECT_EQ(R::CompareImages(first, second, R::eIgnoreTransparent | R::ePremultiplyAlpha).fMeanAbsError,
              0.0f);
}

TEST(ZqD3DScene, AnEffectThatIsNoViewItemCannotDraw)
{
    ZqD3DScene scene({0, 0, 64, 64});
    R::SetupSceneDefault(scene, ZqColorRGBA::Black);
    auto sphere = ZqTestGeometry::Sphere(L"kugel", 1.0f, {0, 0, 0});
    ZqTestGeometry::Paint(*sphere, CbMakeSmart<ZqEffectPhong>(), ZqColorRGBA::White);
    scene.GetSceneGraph().AppendItem(sphere);
    try
    {
        scene.Render();
        FAIL() << "nothing thrown";
    }
    catch (const CbExceptionPreconditionViolation& e)
    {
        EXPECT_STREQ(e.GetFunction(), "ZqEffect::DrawShader");
        EXPECT_STREQ(e.GetDetail(),
                     "ZqEffectPhong is not initialised: append it to the scene graph as a view item");
    }
}

TEST(ZqD3DScene, AShaderThatDoesNotCompileNamesItsEffectAndStage)
{
    ZqD3DScene scene({0, 0, 8, 8});
    scene.CreateDevice();
    try
    {
        scene.GetDevice()->CreateProgram("Kaputt",
                                         "#version 450 core\nvoid main() { gl_Position = vec4(1.0); }",
                                         "#version 450 core\nout vec4 c;\nvoid main() { c = undefined; }");
        FAIL() << "nothing thrown";
    }
    catch (const Graphics::CExceptionGraphics& e)
    {
        EXPECT_EQ(std::string(e.GetDetail()).rfind("Kaputt fragment shader: ", 0), 0u) << e.GetDetail();
        EXPECT_EQ(std::string(e.GetDetail()).find('\n'), std::string::npos);
    }
}

TEST(ZqD3DScene, GLObjectsHaveOneOwnerAndOutliveTheirContextHarmlessly)
{
    Graphics::CBuffer kept;
    {
        ZqD3DScene scene({0, 0, 8, 8});
        scene.CreateDevice();
        const float data[3] = {1, 2, 3};
        Graphics::CBuffer buffer = scene.GetDevice()->CreateBuffer(data, sizeof(data));
        const unsigned int name = buffer.GetName();
        ASSERT_NE(name, 0u);
        kept = std::move(buffer);
        EXPECT_EQ(buffer.GetName(), 0u);
        EXPECT_EQ(kept.GetName(), name);
        EXPECT_EQ(kept.GetSize(), sizeof(data));
    }
    // The scene and its context are gone; destroying the buffer now must not touch GL.
    kept.Reset();
    EXPECT_FALSE(kept);
}

TEST(ZqD3DScene, ReleasingOneScenesObjectsWhileAnotherIsCurrentLeavesTheOtherIntact)
{
    // Both scenes number their GL objects alike, so a name deleted in the wrong context would take
    // the other scene's buffers and program with it.
    const ZqColorRGBA blue = ZqColorRGBA::Blue;
    ZqD3DScene a({0, 0, 64, 64}), b({0, 0, 64, 64});
    ZqTestGeometry::TwoSpheres(a, &blue, &blue);
    ZqTestGeometry::TwoSpheres(b, &blue, &blue);
    for (ZqD3DScene* scene : {&a, &b})
        R::CreateView(L"v", {0, 0, -1}, {0, 1, 0}, 0.0f).fnSetupCamera(*scene);
    a.Render();
    b.Render();
    ZqBitmap before, after;
    b.GetScreenshot(before);
    // b's context is current now; a's objects let go of their names without a's context.
    a.GetSceneGraph().GetRoot().ReleaseDeviceResources();
    a.GetSceneGraph().GetViewItem(0)->Release();
    b.Render();
    b.GetScreenshot(after);
    EXPECT_TRUE(before == after);
    // a makes what it released again in its own context.
    a.Render();
    ZqBitmap again;
    a.GetScreenshot(again);
    EXPECT_TRUE(again == before);
}

TEST(ZqD3DScene, AnEffectSharedByMaterialsAndTheSceneGoesWithItsLastHolder)
{
    // ZqEffect::Release gives back device resources; the reference count must not be confused with it.
    static int destroyed = 0;
    struct CountedEffect : ZqEffectSimple
    {
        ~CountedEffect() override { ++destroyed; }
    };
    {
        ZqD3DScene scene({0, 0, 32, 32});
        R::SetupSceneDefault(scene, ZqColorRGBA::Black);
        const CbSmartPointer<ZqEffect> effect = CbMakeSmart<CountedEffect>();
        auto sphere = ZqTestGeometry::Sphere(L"kugel", 1.0f, {0, 0, 0});
        ZqTestGeometry::Paint(*sphere, effect, ZqColorRGBA::White);
        scene.GetSceneGraph().AppendItem(sphere);
        scene.GetSceneGraph().AppendViewItem(effect);
        scene.Render();
        EXPECT_EQ(effect->GetReferenceCount(), 3u);
        EXPECT_TRUE(effect->IsInitialized());
    }
    EXPECT_EQ(destroyed, 1);
}
