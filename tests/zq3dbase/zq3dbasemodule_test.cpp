// The fitting and principal-component test classes of the module, driven through the registry as
// the runner drives them: the seed message and its replay, the benchmark's report, and many seeds
// where CTest runs one.

#include "zqbase/zqtestenvironment.h"
#include "zqmoduletest.h"

#include <string>
#include <vector>

namespace
{
class GeometryModuleTest : public ZqModuleTest
{
protected:
    void TearDown() override { ZqTestEnvironment::SetReplaySeed(std::nullopt); }
};
} // namespace

TEST_F(GeometryModuleTest, LineFitRunsItsTestAndItsBenchmark)
{
    auto test = create(L"ZqMpFitLine2D_UnitTest");
    ASSERT_TRUE(test);
    ZqTestEnvironment::SetReplaySeed(123456u);
    const std::vector<std::string> infos = runPassing(*test, 0);
    ASSERT_EQ(infos.size(), 1u);
    EXPECT_EQ(infos[0], "Startwert des Zufallsgenerators: 123456\n");

    const std::vector<std::string> dump = runPassing(*test, 1);
    // The title, the header line and one line per case: two methods at three sizes.
    ASSERT_EQ(dump.size(), 8u);
    EXPECT_NE(dump[7].find("Robust (Tukey), 100000 Punkte"), std::string::npos) << dump[7];
}

TEST_F(GeometryModuleTest, LineFitPassesForManySeeds)
{
    auto test = create(L"ZqMpFitLine2D_UnitTest");
    ASSERT_TRUE(test);
    for (std::uint32_t seed = 1; seed <= 200 && !HasFailure(); ++seed)
    {
        SCOPED_TRACE("seed " + std::to_string(seed));
        ZqTestEnvironment::SetReplaySeed(seed);
        runPassing(*test, 0);
    }
}

TEST_F(GeometryModuleTest, PrincipalComponentsPassForManySeeds)
{
    auto test = create(L"ZqMpPointsToPrincipalComponents_UnitTest");
    ASSERT_TRUE(test);
    for (std::uint32_t seed = 1; seed <= 20 && !HasFailure(); ++seed)
    {
        SCOPED_TRACE("seed " + std::to_string(seed));
        ZqTestEnvironment::SetReplaySeed(seed);
        for (unsigned int i = 0; i < test->GetSubtestCount(); ++i)
            runPassing(*test, i);
    }
}
