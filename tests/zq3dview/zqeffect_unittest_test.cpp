// The effect tests of the module as the runner sees them: subtests and their order, an index past
// the last, and what recreating writes (one reference per case and view, nothing for benchmarks),
// in a data folder of their own so the committed references stay untouched.

#include "zqmoduletest.h"

#include "zqbase/iunittestrecreate.h"
#include "zqbase/zqtestenvironment.h"

#include <filesystem>
#include <set>

namespace
{
class EffectUnitTestModule : public ZqModuleTest
{
protected:
    void SetUp() override
    {
        m_previousRoot = ZqTestEnvironment::GetDataRoot();
        m_root = std::filesystem::path(ZqTestEnvironment::GetScratchDirectory()) / "effects";
        std::filesystem::remove_all(m_root);
        // The restoration case reads its meshes from the data folder.
        std::filesystem::create_directories(m_root / "ZqEffectPhong_UnitTest");
        std::filesystem::copy(std::filesystem::path(m_previousRoot) / "ZqEffectPhong_UnitTest" / "Data",
                              m_root / "ZqEffectPhong_UnitTest" / "Data");
        ZqTestEnvironment::SetDataRoot(m_root.string());
    }
    void TearDown() override
    {
        ZqTestEnvironment::SetDataRoot(m_previousRoot);
        std::filesystem::remove_all(m_root);
    }

    std::set<std::string> snapshots(const char* test) const
    {
        std::set<std::string> names;
        for (const auto& entry : std::filesystem::directory_iterator(m_root / test / "Snapshots"))
            names.insert(entry.path().filename().string());
        return names;
    }

    std::filesystem::path m_root;
    std::string m_previousRoot;
};
} // namespace

TEST_F(EffectUnitTestModule, PhongHasTwoCasesAndABenchmarkAndRecreatesOneReferencePerView)
{
    std::unique_ptr<ZqUnitTest> test = create(L"ZqEffectPhong_UnitTest");
    ASSERT_TRUE(test);
    EXPECT_EQ(names(*test),
              (std::vector<std::string>{"EffectPhong", "EffectPhong (Restoration)", "Benchmark"}));
    EXPECT_EQ(test->RunUnitTest(3), ZqUnitTest::eFailed);
    auto* recreate = dynamic_cast<IUnitTestRecreate*>(test.get());
    ASSERT_NE(recreate, nullptr);
    for (unsigned int i = 0; i < 4; ++i)
        EXPECT_TRUE(recreate->Recreate(i)) << i;
    const std::vector<std::string> errors = ZqErrorTexts(*test);
    EXPECT_TRUE(errors.empty()) << errors.front();
    std::set<std::string> expected;
    for (const char* name : {"EffectPhong", "EffectPhong (Restoration)"})
        for (const char* view : {"X", "Y", "Z", "0", "1"})
            expected.insert(std::string(name) + "-" + view + "-Ref.png");
    EXPECT_EQ(snapshots("ZqEffectPhong_UnitTest"), expected);
}

TEST_F(EffectUnitTestModule, SimpleUsesOnlyViewsOfItsOwn)
{
    std::unique_ptr<ZqUnitTest> test = create(L"ZqEffectSimple_UnitTest");
    ASSERT_TRUE(test);
    EXPECT_EQ(names(*test), std::vector<std::string>{"EffectSimple"});
    ASSERT_TRUE(dynamic_cast<IUnitTestRecreate&>(*test).Recreate(0));
    EXPECT_EQ(
        snapshots("ZqEffectSimple_UnitTest"),
        (std::set<std::string>{"EffectSimple-0-Ref.png", "EffectSimple-1-Ref.png", "EffectSimple-2-Ref.png",
                               "EffectSimple-3-Ref.png", "EffectSimple-fern-Ref.png"}));
}
