// How the render test base turns registered cases and benchmarks into subtests: order, names,
// outcomes, the once-only registration, duplicate names, null arguments, and the benchmark's
// steps and median.

#include "zqrendertest_fixture.h"

#include "zq3dview/graphics/cexceptiongraphics.h"

namespace
{
using R = ZqRenderUnitTest;

R::STestDesc desc(const wchar_t* name, unsigned int views)
{
    R::STestDesc d;
    d.sName = name;
    for (unsigned int i = 0; i < views; ++i)
        d.aViews.Add(R::CreateView(CbFormat(L"%u", i), R::CreateRandomDir(i), {0, 0, 1}, 0.0f));
    return d;
}

// Counts the calls of each step; Measure does nothing but count.
class CountingBenchCase : public R::IBenchCase
{
public:
    int create = 0, prepare = 0, warmUp = 0, measure = 0;
    CString GetName() const override { return L"Zähler"; }
    void Create(ZqD3DScene&) override { ++create; }
    void Prepare(ZqD3DScene&) override { ++prepare; }
    void WarmUp(ZqD3DScene&) override { ++warmUp; }
    void Measure(ZqD3DScene&) override { ++measure; }
};

std::string name(ZqUnitTest& test, unsigned int i)
{
    return CbWideToUtf8(test.GetSubtestName(i).Std());
}
} // namespace

using ZqRenderUnitTestSubtests = ZqRenderTestData;

TEST_F(ZqRenderUnitTestSubtests, CasesComeFirstThenBenchmarksAndIndicesBeyondFail)
{
    ZqConfigurableRenderTest test(
        [](ZqConfigurableRenderTest& t)
        {
            t.addTestCase(R::CreateTestCase(desc(L"Erster", 1)));
            R::ZqRenderBenchmark benchmark(L"Benchmark", 2);
            t.addBenchmark(benchmark);
            t.addTestCase(R::CreateTestCase(desc(L"Zweiter", 0)));
        });
    // The first hook to run registers.
    ASSERT_EQ(test.GetSubtestCount(), 3u);
    EXPECT_EQ(name(test, 0), "Erster");
    EXPECT_EQ(name(test, 1), "Zweiter");
    EXPECT_EQ(name(test, 2), "Benchmark");
    EXPECT_EQ(name(test, 3), "");
    EXPECT_EQ(test.RunUnitTest(3), ZqUnitTest::eFailed);
    EXPECT_EQ(test.RunUnitTest(1000), ZqUnitTest::eFailed);
    EXPECT_TRUE(test.CanRecreate(1000));
    EXPECT_TRUE(test.Recreate(1000));
    EXPECT_EQ(test.initCalls, 1);
}

TEST_F(ZqRenderUnitTestSubtests, RegistrationRunsOnceWhoeverCallsItFirst)
{
    const auto registration = [](ZqConfigurableRenderTest& t)
    {
        t.addTestCase(R::CreateTestCase(desc(L"Fall", 1)));
        t.addBenchmark(R::ZqRenderBenchmark(L"Benchmark", 1));
    };
    // The runner's InitSubtests first: the lazy registration does not repeat it.
    ZqConfigurableRenderTest direct(registration);
    direct.InitSubtests();
    EXPECT_EQ(direct.GetSubtestCount(), 2u);
    direct.InitSubtests();
    EXPECT_EQ(direct.GetSubtestCount(), 2u);
    EXPECT_EQ(direct.initCalls, 2);
    // Configure first: InitSubtests later adds nothing.
    ZqConfigurableRenderTest configured(registration);
    configured.Configure();
    configured.Configure();
    configured.InitSubtests();
    EXPECT_EQ(configured.GetSubtestCount(), 2u);
    EXPECT_EQ(configured.initCalls, 2);
}

TEST_F(ZqRenderUnitTestSubtests, ASecondCaseOfTheSameNameIsDroppedAndTheFirstStays)
{
    ZqConfigurableRenderTest test(
        [](ZqConfigurableRenderTest& t)
        {
            t.addTestCase(R::CreateTestCase(desc(L"Fall", 2)));
            t.addTestCase(R::CreateTestCase(desc(L"Fall", 5)));
        });
    EXPECT_EQ(test.GetSubtestCount(), 1u);
    ASSERT_TRUE(test.GetTestCase(L"Fall"));
    EXPECT_EQ(test.GetTestCase(L"Fall")->GetViewCount(), 2u);
    EXPECT_FALSE(test.GetTestCase(L"Anderer"));
    EXPECT_EQ(test.GetTestCases().GetCount(), 1u);
}

TEST_F(ZqRenderUnitTestSubtests, NullCasesThrowNamingTheFunction)
{
    ZqConfigurableRenderTest test;
    try
    {
        test.addTestCase(nullptr);
        FAIL() << "nothing thrown";
    }
    catch (const CbException& e)
    {
        EXPECT_STREQ(e.GetFunction(), "ZqRenderUnitTest::addTestCase");
    }
    R::ZqRenderBenchmark benchmark(L"Benchmark", 1);
    try
    {
        benchmark.AddBenchCase(nullptr);
        FAIL() << "nothing thrown";
    }
    catch (const CbException& e)
    {
        EXPECT_STREQ(e.GetFunction(), "ZqRenderUnitTest::ZqRenderBenchmark::AddBenchCase");
    }
}

TEST_F(ZqRenderUnitTestSubtests, AnUnregisteredCaseFailsWithTheSystemMessage)
{
    ZqConfigurableRenderTest test([](ZqConfigurableRenderTest& t)
                                  { t.addTestCase(R::CreateTestCase(desc(L"A", 0))); });
    test.Configure();
    const auto stranger = R::CreateTestCase(desc(L"Fremd", 1));
    EXPECT_FALSE(test.runTestCase(*stranger, false));
    EXPECT_EQ(messages(test),
              std::vector<std::string>{"error: Keine Testfunktion mit Namen Fremd gefunden."});
}

TEST_F(ZqRenderUnitTestSubtests, MedianOfAnEvenCountIsTheMeanOfTheMiddleTwo)
{
    EXPECT_DOUBLE_EQ(R::ZqRenderBenchmark::GetMedian({4.0, 1.0, 3.0, 2.0}), 2.5);
    EXPECT_DOUBLE_EQ(R::ZqRenderBenchmark::GetMedian({5.0, 1.0, 3.0}), 3.0);
    EXPECT_DOUBLE_EQ(R::ZqRenderBenchmark::GetMedian({7.0}), 7.0);
    EXPECT_DOUBLE_EQ(R::ZqRenderBenchmark::GetMedian({}), 0.0);
    EXPECT_EQ(R::ZqRenderBenchmark::GetDefaultIterationCount(), 10u);
}

TEST_F(ZqRenderUnitTestSubtests, BenchmarkTimesOnlyTheMeasuredStepOfEachIteration)
{
    auto counting = CbMakeSmart<CountingBenchCase>();
    ZqConfigurableRenderTest test(
        [counting](ZqConfigurableRenderTest& t)
        {
            R::ZqRenderBenchmark benchmark(L"Benchmark", 4);
            benchmark.AddBenchCase(counting);
            t.addBenchmark(benchmark);
        });
    ASSERT_EQ(test.RunUnitTest(0), ZqUnitTest::ePassed) << testing::PrintToString(messages(test));
    EXPECT_EQ(counting->create, 1);
    EXPECT_EQ(counting->prepare, 1);
    EXPECT_EQ(counting->warmUp, 4);
    EXPECT_EQ(counting->measure, 4);
    const std::vector<std::string> lines = messages(test);
    ASSERT_EQ(lines.size(), 3u);
    EXPECT_TRUE(contains(lines, "info: Renderer: ")) << lines[0];
    EXPECT_EQ(lines[1], "info: Iterationen: 4");
    EXPECT_TRUE(lines[2].rfind("info: [Min ", 0) == 0 && lines[2].find(", Median ") != std::string::npos &&
                lines[2].find("] Zähler") != std::string::npos)
        << lines[2];
}

TEST_F(ZqRenderUnitTestSubtests, ViewCaseShowsAViewInTheCallersSceneWithoutItsFirstSetUp)
{
    int first = 0, second = 0, cameras = 0;
    ZqConfigurableRenderTest test(
        [&](ZqConfigurableRenderTest& t)
        {
            R::STestDesc d;
            d.sName = L"Fall";
            d.fnSetupScene = [&](ZqD3DScene&) { ++first; };
            d.fnSetupScene2 = [&](ZqD3DScene&) { ++second; };
            d.aViews.Add({L"v", [&](ZqD3DScene&) { ++cameras; }});
            t.addTestCase(R::CreateTestCase(d));
        });
    ZqD3DScene scene({0, 0, 16, 16});
    test.ViewCase(scene, L"Fall", 1);
    EXPECT_EQ(second + cameras, 0) << "a view index beyond the views does nothing";
    EXPECT_EQ(scene.GetDevice(), nullptr);
    test.ViewCase(scene, L"Fall", 0);
    EXPECT_EQ(first, 0);
    EXPECT_EQ(second, 1);
    EXPECT_EQ(cameras, 1);
    EXPECT_NE(scene.GetDevice(), nullptr) << "the scene was asked to render";
    test.ViewCase(scene, L"Unbekannt", 0);
    EXPECT_EQ(second, 1);
}
