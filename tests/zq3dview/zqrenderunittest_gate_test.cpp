// The image gate itself, with real renders on the device: references are made and reported, a
// recoloured or a missing object fails the case with the system's messages, a missing reference
// fails without being made, a renderer's own references are looked up first, and a machine
// without a usable OpenGL fails the case with one line instead of crashing.

#include "zqrendertest_fixture.h"
#include "zqtest/zqtestharness.h"
#include "zqtestgeometry.h"

#include "zqbase/zqbitmap.h"

#include <cstdlib>
#include <memory>

namespace
{
using R = ZqRenderUnitTest;

// What the scene of the case "Kugeln" shows; the tests change it between runs.
struct SSpheres
{
    ZqColorRGBA left{0.1f, 0.3f, 1.0f};
    ZqColorRGBA right = ZqColorRGBA::Chocolate;
    bool rightVisible = true;
};

std::unique_ptr<ZqConfigurableRenderTest> spheresTest(const std::shared_ptr<SSpheres>& state)
{
    return std::make_unique<ZqConfigurableRenderTest>(
        [state](ZqConfigurableRenderTest& t)
        {
            R::STestDesc desc;
            desc.sName = L"Kugeln";
            desc.fnSetupScene = [state](ZqD3DScene& scene) {
                ZqTestGeometry::TwoSpheres(scene, &state->left,
                                           state->rightVisible ? &state->right : nullptr);
            };
            desc.aViews.Add(R::CreateView(L"oben", {0, 0, -1}, {0, 1, 0}, 0.0f));
            desc.aViews.Add(R::CreateView(L"0", R::CreateRandomDir(0), {0, 0, 1}, 0.0f));
            t.addTestCase(R::CreateTestCase(desc));
        });
}

// The PSNR of the "ø Pixelfehler" line of view, or -1 when there is none.
double reportedPSNR(const std::vector<std::string>& lines, const std::string& view)
{
    const std::string prefix = "info: ø Pixelfehler View '" + view + "': ";
    for (const std::string& line : lines)
        if (line.rfind(prefix, 0) == 0)
        {
            const std::size_t at = line.find("(PSNR ");
            return at == std::string::npos ? -1.0 : std::atof(line.c_str() + at + 6);
        }
    return -1.0;
}

// Temporarily sets an environment variable.
class ScopedEnvironment
{
public:
    ScopedEnvironment(const char* name, const char* value) : m_name(name)
    {
        if (const char* old = std::getenv(name))
            m_old = old;
        setenv(name, value, 1);
    }
    ~ScopedEnvironment()
    {
        if (m_old)
            setenv(m_name, m_old->c_str(), 1);
        else
            unsetenv(m_name);
    }

private:
    const char* m_name;
    std::optional<std::string> m_old;
};
} // namespace

using ZqRenderUnitTestGate = ZqRenderTestData;

TEST_F(ZqRenderUnitTestGate, RecreateWritesEachViewAndTheSameRenderThenPasses)
{
    const auto state = std::make_shared<SSpheres>();
    auto test = spheresTest(state);
    ASSERT_TRUE(test->Recreate(0));
    std::vector<std::string> lines = messages(*test);
    const std::filesystem::path top = snapshots() / "Kugeln-oben-Ref.png";
    EXPECT_TRUE(contains(lines, "info: Referenz geschrieben: " + top.string() + " (neu)"))
        << testing::PrintToString(lines);
    ASSERT_TRUE(std::filesystem::exists(snapshots() / "Kugeln-0-Ref.png"));

    // The picture shows both spheres in their colours on the background, framed inside the image.
    ZqBitmap image;
    ASSERT_TRUE(image.Read(CString(CbUtf8ToWide(top.string()))));
    ASSERT_EQ(image.GetWidth(), 1600u);
    ASSERT_EQ(image.GetHeight(), 900u);
    const ZqColorRGBA corner = ZqColorRGBA::FromRGBA8(image.GetPixel(0, 0));
    EXPECT_NEAR(corner.r, 0.2f, 0.01f);
    const ZqColorRGBA leftCentre = ZqColorRGBA::FromRGBA8(image.GetPixel(800 - 230, 450));
    const ZqColorRGBA rightCentre = ZqColorRGBA::FromRGBA8(image.GetPixel(800 + 230, 450));
    EXPECT_GT(leftCentre.b, 0.8f);
    EXPECT_GT(rightCentre.r, 0.6f);
    EXPECT_LT(rightCentre.b, rightCentre.r);
    for (unsigned int x = 0; x < 1600; x += 7)
        EXPECT_EQ(image.GetPixel(x, 0), image.GetPixel(0, 0)) << "the top row is background, x " << x;

    // The same scene again: unchanged, and the case passes without a difference message.
    ASSERT_TRUE(test->Recreate(0));
    EXPECT_TRUE(contains(messages(*test), "info: Referenz geschrieben: " + top.string() + " (unverändert)"));
    EXPECT_EQ(test->RunUnitTest(0), ZqUnitTest::ePassed);
    lines = messages(*test);
    EXPECT_TRUE(contains(lines, "info: Renderer: "));
    EXPECT_TRUE(contains(lines, "info: View 'oben': Mittel 0.000, RMS 0.000, PSNR inf dB"));
    EXPECT_EQ(reportedPSNR(lines, "oben"), -1.0);
}

TEST_F(ZqRenderUnitTestGate, ARecolouredObjectFailsTheCaseAndLeavesDebugImages)
{
    const auto state = std::make_shared<SSpheres>();
    ASSERT_TRUE(spheresTest(state)->Recreate(0));
    state->right = ZqColorRGBA::Aquamarine;
    ZqTestEnvironment::SetDebugOutputEnabled(true);
    auto test = spheresTest(state);
    EXPECT_EQ(test->RunUnitTest(0), ZqUnitTest::eAborted);
    const std::vector<std::string> lines = messages(*test);
    for (const char* view : {"oben", "0"})
    {
        const double psnr = reportedPSNR(lines, view);
        EXPECT_GT(psnr, 0.0) << view << testing::PrintToString(lines);
        EXPECT_LT(psnr, R::sc_fDefaultPSNRThreshold) << view;
        EXPECT_TRUE(std::filesystem::exists(snapshots() / ("Kugeln-" + std::string(view) + "-Test.png")));
        EXPECT_TRUE(std::filesystem::exists(snapshots() / ("Kugeln-" + std::string(view) + "-Diff.png")));
    }
    EXPECT_TRUE(contains(lines, "info: Debug-Bilder View 'oben': Referenz " +
                                    (snapshots() / "Kugeln-oben-Ref.png").string() + " | Bild " +
                                    (snapshots() / "Kugeln-oben-Test.png").string() + " | Differenz " +
                                    (snapshots() / "Kugeln-oben-Diff.png").string()))
        << testing::PrintToString(lines);
    // Seen from above, the recoloured sphere is the right one: the largest error lies right of the middle.
    for (const std::string& line : lines)
        if (line.rfind("info: View 'oben': Mittel ", 0) == 0)
        {
            const std::size_t at = line.find("bei Pixel (");
            ASSERT_NE(at, std::string::npos) << line;
            EXPECT_GT(std::atoi(line.c_str() + at + 11), 800) << line;
        }
}

TEST_F(ZqRenderUnitTestGate, AMissingObjectFailsTheCase)
{
    const auto state = std::make_shared<SSpheres>();
    ASSERT_TRUE(spheresTest(state)->Recreate(0));
    state->rightVisible = false;
    auto test = spheresTest(state);
    EXPECT_EQ(test->RunUnitTest(0), ZqUnitTest::eAborted);
    const std::vector<std::string> lines = messages(*test);
    EXPECT_LT(reportedPSNR(lines, "oben"), R::sc_fDefaultPSNRThreshold) << testing::PrintToString(lines);
    EXPECT_LT(reportedPSNR(lines, "0"), R::sc_fDefaultPSNRThreshold);
    // Without the debugging switch nothing is written beside the references.
    EXPECT_FALSE(std::filesystem::exists(snapshots() / "Kugeln-oben-Test.png"));
}

TEST_F(ZqRenderUnitTestGate, AMissingReferenceFailsEachViewWithoutMakingIt)
{
    auto test = spheresTest(std::make_shared<SSpheres>());
    EXPECT_EQ(test->RunUnitTest(0), ZqUnitTest::eAborted);
    std::vector<std::string> lines = messages(*test);
    EXPECT_TRUE(contains(lines, "error: Keine Referenzdatei für View 'oben' gefunden."));
    EXPECT_TRUE(contains(lines, "error: Keine Referenzdatei für View '0' gefunden."));
    EXPECT_TRUE(std::filesystem::is_directory(snapshots()));
    EXPECT_TRUE(std::filesystem::is_empty(snapshots()));
    // With the debugging switch the render is kept for inspection, still without a reference.
    ZqTestEnvironment::SetDebugOutputEnabled(true);
    EXPECT_EQ(test->RunUnitTest(0), ZqUnitTest::eAborted);
    lines = messages(*test);
    EXPECT_TRUE(contains(lines, "info: Debug-Bilder View 'oben': Bild " +
                                    (snapshots() / "Kugeln-oben-Test.png").string()));
    EXPECT_TRUE(std::filesystem::exists(snapshots() / "Kugeln-oben-Test.png"));
    EXPECT_FALSE(std::filesystem::exists(snapshots() / "Kugeln-oben-Ref.png"));
}

TEST_F(ZqRenderUnitTestGate, ARenderersOwnReferenceIsLookedUpFirstAndRecreatedThere)
{
    const auto state = std::make_shared<SSpheres>();
    auto test = spheresTest(state);
    ASSERT_TRUE(test->Recreate(0));
    const std::vector<std::string> lines = messages(*test);
    // The renderer's folder name, from the report line "Renderer: vendor / renderer / ...".
    ZqD3DScene probe({0, 0, 4, 4});
    probe.CreateDevice();
    const std::filesystem::path own =
        snapshots() / CbWideToUtf8(probe.GetDevice()->GetRendererInfo().GetFolderName().Std());
    std::filesystem::create_directories(own);
    // A different picture under the renderer's own name makes the view fail, although the default
    // reference would pass.
    state->left = ZqColorRGBA::Yellow;
    ASSERT_TRUE(spheresTest(state)->Recreate(0));
    EXPECT_TRUE(std::filesystem::exists(own / "Kugeln-oben-Ref.png"));
    state->left = SSpheres().left;
    auto rerun = spheresTest(state);
    EXPECT_EQ(rerun->RunUnitTest(0), ZqUnitTest::eAborted);
    EXPECT_GT(reportedPSNR(messages(*rerun), "oben"), 0.0);
    // Without the renderer's own file the default one is used again.
    std::filesystem::remove_all(own);
    EXPECT_EQ(spheresTest(state)->RunUnitTest(0), ZqUnitTest::ePassed);
}

TEST_F(ZqRenderUnitTestGate, WithoutAUsableOpenGLTheCaseFailsWithOneLine)
{
    const ScopedEnvironment platform("ZQ_EGL_PLATFORM", "keine");
    auto test = spheresTest(std::make_shared<SSpheres>());
    EXPECT_EQ(test->RunUnitTest(0), ZqUnitTest::eAborted);
    EXPECT_EQ(messages(*test),
              std::vector<std::string>{
                  "error: Rendern nicht möglich: unknown ZQ_EGL_PLATFORM 'keine' (surfaceless, "
                  "device or auto)"});
    EXPECT_TRUE(test->Recreate(0));
    EXPECT_TRUE(contains(messages(*test), "error: Rendern nicht möglich: "));
    EXPECT_TRUE(std::filesystem::is_empty(snapshots()));
}

TEST_F(ZqRenderUnitTestGate, ARunOnAnOpenGLOlderThan45FailsItsRenderSubtestsWithOneLine)
{
    {
        ZqD3DScene probe({0, 0, 4, 4});
        probe.CreateDevice();
        if (probe.GetDevice()->GetRendererInfo().version.find("Mesa") == std::string::npos)
            GTEST_SKIP() << "the version override is Mesa's";
    }
    // The driver reads the override when its display is initialised, once per process: a runner of
    // its own.
    const zqtest::SResult result =
        zqtest::RunZqTest({"--filter", "ZqEffectSimple_UnitTest"}, "MESA_GL_VERSION_OVERRIDE=3.3");
    EXPECT_EQ(result.exitCode, 1) << result.output;
    EXPECT_TRUE(
        result.Contains("error: Rendern nicht möglich: no OpenGL 4.5 core context on EGL surfaceless: "
                        "eglCreateContext failed (EGL_BAD_MATCH); the driver offers 3.3"))
        << result.output;
    EXPECT_EQ(result.LastLine(), "0 passed, 1 failed");
}
