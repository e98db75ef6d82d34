// The --debug-images page: which messages of which subtests it shows, how it refers to the files,
// and a real run of the runner over a render test whose reference was swapped for another view's.

#include "zqtestharness.h"

#include "zqbase/zqtest/zqtestdebugimages.h"
#include "zqbase/zqtestenvironment.h"

#include <gtest/gtest.h>

namespace
{
ZqSubtestRecord subtest(const std::string& name, EZqTestStatus status, std::vector<std::string> texts)
{
    ZqSubtestRecord record;
    record.name = name;
    record.status = status;
    for (std::string& text : texts)
        record.messages.push_back({0, std::move(text)});
    return record;
}
} // namespace

TEST(ZqTestDebugImages, CollectsTheAnnouncedViewsOfFailingSubtestsWithTheirNotes)
{
    ZqClassRecord record;
    record.name = "ZqEffectSimple_UnitTest";
    record.subtests.push_back(
        subtest("Bestanden", EZqTestStatus::ePassed, {"Debug-Bilder View 'a': Bild /x/a-Test.png"}));
    record.subtests.push_back(subtest(
        "EffectSimple", EZqTestStatus::eFailed,
        {"Renderer: llvmpipe", "ø Pixelfehler View '1': 2.500e+01 (PSNR 12.00 dB).",
         "Debug-Bilder View '1': Referenz /d/E-1-Ref.png | Bild /d/E-1-Test.png | Differenz /d/E-1-Diff.png",
         "Debug-Bilder View '<2>': Bild /d/E 2-Test.png"}));
    ZqRunRecord run;
    run.classes.push_back(record);
    const std::vector<ZqTestDebugImages::SView> views = ZqTestDebugImages::Collect(run);
    ASSERT_EQ(views.size(), 2u);
    EXPECT_EQ(views[0].test, "ZqEffectSimple_UnitTest.EffectSimple");
    EXPECT_EQ(views[0].view, "1");
    EXPECT_EQ(views[0].reference, "/d/E-1-Ref.png");
    EXPECT_EQ(views[0].render, "/d/E-1-Test.png");
    EXPECT_EQ(views[0].difference, "/d/E-1-Diff.png");
    EXPECT_EQ(views[0].notes, std::vector<std::string>{"ø Pixelfehler View '1': 2.500e+01 (PSNR 12.00 dB)."});
    // A missing reference: only the render.
    EXPECT_EQ(views[1].reference, "");
    EXPECT_EQ(views[1].difference, "");
    const std::string html = ZqTestDebugImages::ToHtml(views);
    EXPECT_NE(html.find("View '&lt;2&gt;'"), std::string::npos);
    EXPECT_NE(html.find("src=\"file:///d/E%202-Test.png\""), std::string::npos);
    EXPECT_EQ(html.find("/x/a-Test.png"), std::string::npos) << "a passing subtest has no place on the page";
}

TEST(ZqTestDebugImages, ARunWithDebugImagesLinksAPageOfTheFailingView)
{
    const std::filesystem::path root =
        std::filesystem::path(ZqTestEnvironment::GetScratchDirectory()) / "debug-page";
    std::filesystem::remove_all(root);
    const std::filesystem::path snapshots = root / "ZqEffectSimple_UnitTest" / "Snapshots";
    std::filesystem::create_directories(snapshots);
    std::filesystem::copy(std::filesystem::path(ZQ_SOURCE_DIR) /
                              "testing/zqunittests/data/ZqEffectSimple_UnitTest/Snapshots",
                          snapshots);
    // View 1's reference shows view 0: that view fails, the others pass.
    std::filesystem::copy_file(snapshots / "EffectSimple-0-Ref.png", snapshots / "EffectSimple-1-Ref.png",
                               std::filesystem::copy_options::overwrite_existing);
    const zqtest::SResult result = zqtest::RunZqTest(
        {"--debug-images", "--data-dir", root.string(), "--filter", "ZqEffectSimple_UnitTest"},
        "cd " + zqtest::Quote(root.string()) + " &&");
    EXPECT_EQ(result.exitCode, 1) << result.output;
    const std::filesystem::path page = root / ZqTestDebugImages::kFileName;
    EXPECT_TRUE(result.Contains("Debug-Bilder: 1 View, " + ZqTestDebugImages::FileUri(page.string())))
        << result.output;
    EXPECT_EQ(result.LastLine(), "0 passed, 1 failed");
    std::ifstream in(page);
    const std::string html((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
    EXPECT_NE(html.find("ZqEffectSimple_UnitTest.EffectSimple &ndash; View '1'"), std::string::npos) << html;
    EXPECT_NE(html.find(ZqTestDebugImages::FileUri((snapshots / "EffectSimple-1-Diff.png").string())),
              std::string::npos);
    EXPECT_TRUE(std::filesystem::exists(snapshots / "EffectSimple-1-Test.png"));
    EXPECT_FALSE(std::filesystem::exists(snapshots / "EffectSimple-0-Test.png"));
    std::filesystem::remove_all(root);
}
