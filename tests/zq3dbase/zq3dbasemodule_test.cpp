// The fitting and principal-component test classes of the module, driven through the registry as
// the runner drives them: names, outcomes, the seed message and its replay, the index checks.

#include "basepool/cbexception.h"
#include "basepool/cbfactory.h"
#include "zqbase/zqtestenvironment.h"
#include "zqbase/zqunittest.h"

#include <dlfcn.h>
#include <gtest/gtest.h>

#include <functional>
#include <string>
#include <vector>

namespace
{
class GeometryModuleTest : public ::testing::Test
{
protected:
    static void SetUpTestSuite()
    {
        s_module = dlopen(ZQ_BINARY_DIR "/libZqUnitTests.so", RTLD_NOW | RTLD_LOCAL);
        ASSERT_NE(s_module, nullptr) << dlerror();
    }
    static void TearDownTestSuite()
    {
        if (s_module)
            dlclose(s_module);
        s_module = nullptr;
    }
    void TearDown() override { ZqTestEnvironment::SetReplaySeed(std::nullopt); }

    static std::unique_ptr<ZqUnitTest> create(const wchar_t* name)
    {
        std::unique_ptr<ZqUnitTest> test = CbFactory::CreateAs<ZqUnitTest>(name);
        if (test)
        {
            test->PreallocateStaticData();
            test->InitSubtests();
        }
        return test;
    }
    static std::vector<std::string> names(ZqUnitTest& test)
    {
        std::vector<std::string> result;
        for (unsigned int i = 0; i < test.GetSubtestCount(); ++i)
            result.push_back(CbWideToUtf8(test.GetSubtestName(i).Std()));
        return result;
    }
    // Runs subtest i, which must pass without an error message; returns its info messages.
    static std::vector<std::string> runPassing(ZqUnitTest& test, unsigned int i)
    {
        EXPECT_EQ(test.RunUnitTest(i), ZqUnitTest::ePassed) << CbWideToUtf8(test.GetSubtestName(i).Std());
        std::vector<std::string> infos;
        for (const auto& message : test.GetMessageStream().Take())
            if (message.type == ZqUnitTest::eError)
                ADD_FAILURE() << CbWideToUtf8(message.text.Std());
            else
                infos.push_back(CbWideToUtf8(message.text.Std()));
        return infos;
    }
    static std::string thrownFunction(const std::function<void()>& call)
    {
        try
        {
            call();
        }
        catch (const CbException& e)
        {
            return e.GetFunction();
        }
        return "nothing thrown";
    }

    static void* s_module;
};
void* GeometryModuleTest::s_module = nullptr;
} // namespace

TEST_F(GeometryModuleTest, LineFitRunsItsTestAndItsBenchmark)
{
    auto test = create(L"ZqMpFitLine2D_UnitTest");
    ASSERT_TRUE(test);
    EXPECT_TRUE(test->IsKindOf(ZqUnitTest::RTTI));
    EXPECT_EQ(names(*test), (std::vector<std::string>{"Unit-Test", "Benchmark"}));

    ZqTestEnvironment::SetReplaySeed(123456u);
    const std::vector<std::string> infos = runPassing(*test, 0);
    ASSERT_EQ(infos.size(), 1u);
    EXPECT_EQ(infos[0], "Startwert des Zufallsgenerators: 123456\n");

    const std::vector<std::string> dump = runPassing(*test, 1);
    // The title, the header line and one line per case: two methods at three sizes.
    ASSERT_EQ(dump.size(), 8u);
    EXPECT_NE(dump[7].find("Robust (Tukey), 100000 Punkte"), std::string::npos) << dump[7];

    EXPECT_EQ(thrownFunction([&] { test->RunUnitTest(2); }), "ZqMpFitLine2D_UnitTest::runUnitTest");
    EXPECT_EQ(thrownFunction([&] { test->GetSubtestName(2); }), "ZqMpFitLine2D_UnitTest::getSubtestName");
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

TEST_F(GeometryModuleTest, PrincipalComponentsPassAllFiveSubtests)
{
    auto test = create(L"ZqMpPointsToPrincipalComponents_UnitTest");
    ASSERT_TRUE(test);
    EXPECT_EQ(names(*test), (std::vector<std::string>{"Ellipsoidförmige Punktwolke",
                                                      "Punkte auf einer Geraden", "Punkte in einer Ebene",
                                                      "Weniger als drei Punkte", "Zweimalige Berechnung"}));
    for (std::uint32_t seed = 1; seed <= 20 && !HasFailure(); ++seed)
    {
        SCOPED_TRACE("seed " + std::to_string(seed));
        ZqTestEnvironment::SetReplaySeed(seed);
        for (unsigned int i = 0; i < test->GetSubtestCount(); ++i)
            runPassing(*test, i);
    }
    EXPECT_EQ(thrownFunction([&] { test->RunUnitTest(5); }),
              "ZqMpPointsToPrincipalComponents_UnitTest::runUnitTest");
}
