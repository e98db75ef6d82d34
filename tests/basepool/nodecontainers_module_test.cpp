// Runs the module's test classes of the node containers through the registry, as the runner does:
// names, counts, parents, outcomes, the throw sites of unknown indices, and the benchmark reports.

#include "basepool/cbexception.h"
#include "basepool/cbfactory.h"
#include "zqbase/zqbenchmark.h"
#include "zqbase/zqunittest.h"

#include "zqmoduletest.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <ostream>
#include <string>
#include <vector>

namespace
{
struct SExpectedClass
{
    const wchar_t* name;
    bool benchmark;
    std::vector<const wchar_t*> subtests;
    unsigned int benchmarkCases;
};
// Names the class where GoogleTest shows a parameter, instead of dumping its bytes.
void PrintTo(const SExpectedClass& expected, std::ostream* out)
{
    *out << CbWideToUtf8(expected.name);
}

const std::vector<SExpectedClass>& expectedClasses()
{
    static const std::vector<SExpectedClass> classes = {
        {L"CbList_UnitTest", true, {L"Unit-Test", L"Benchmark"}, 22},
        {L"CbListSort_UnitTest",
         false,
         {L"Sortieren von verketteten Listen (kurze Listen, Stabilität)",
          L"Sortieren von verketteten Listen (lange Listen)", L"Zeitmessung, Vergleich zu Bubble-Sort"},
         0},
        {L"CbMap_UnitTest", true, {L"Unit-Test", L"Benchmark"}, 38},
        {L"CbSet_UnitTest",
         true,
         {L"Unit-Test", L"Benchmark", L"Intersection, &=, ==", L"Intersect, &, !=", L"Union, |=, ==",
          L"Union, |, !=", L"Subsets"},
         10},
        {L"CbQueue_UnitTest", false, {L"Unit-Test"}, 0},
    };
    return classes;
}

std::string utf8(const CString& text)
{
    return CbWideToUtf8(text.Std());
}

class NodeContainerModuleTest : public ZqModuleTest, public ::testing::WithParamInterface<SExpectedClass>
{
};
} // namespace

TEST_P(NodeContainerModuleTest, RecordNamesTheParents)
{
    const SExpectedClass& expected = GetParam();
    const CbRTTI* record = CbRTTI::Find(expected.name);
    ASSERT_NE(record, nullptr);
    const CbRTTI::SBaseClassList* bases = record->GetBaseClassRTTI();
    ASSERT_NE(bases, nullptr);
    ASSERT_EQ(bases->count, expected.benchmark ? 2u : 1u);
    EXPECT_TRUE(*bases->parents[0] == ZqUnitTest::RTTI);
    if (expected.benchmark)
    {
        EXPECT_TRUE(*bases->parents[1] == ZqBenchmark::RTTI);
    }
}

TEST_P(NodeContainerModuleTest, EverySubtestPassesUnderItsName)
{
    const SExpectedClass& expected = GetParam();
    std::unique_ptr<ZqUnitTest> test = CbFactory::CreateAs<ZqUnitTest>(expected.name);
    ASSERT_TRUE(test);
    test->PreallocateStaticData();
    test->InitSubtests();
    ASSERT_EQ(test->GetSubtestCount(), expected.subtests.size());
    for (unsigned int i = 0; i < test->GetSubtestCount(); ++i)
    {
        EXPECT_EQ(utf8(test->GetSubtestName(i)), CbWideToUtf8(expected.subtests[i]));
        const ZqUnitTest::EResult result = test->RunUnitTest(i);
        std::string messages;
        for (const auto& message : test->GetMessageStream().Take())
            messages += utf8(message.text);
        EXPECT_EQ(result, ZqUnitTest::ePassed) << utf8(test->GetSubtestName(i)) << "\n" << messages;
    }
}

TEST_P(NodeContainerModuleTest, UnknownIndexThrowsNamingTheFunction)
{
    const SExpectedClass& expected = GetParam();
    std::unique_ptr<ZqUnitTest> test = CbFactory::CreateAs<ZqUnitTest>(expected.name);
    ASSERT_TRUE(test);
    const unsigned int count = test->GetSubtestCount();
    const std::string name = CbWideToUtf8(expected.name);
    try
    {
        test->GetSubtestName(count);
        ADD_FAILURE() << "no exception from getSubtestName";
    }
    catch (const CbException& e)
    {
        EXPECT_EQ(std::string(e.GetFunction()), name + "::getSubtestName");
        EXPECT_NE(std::string(e.GetFile()).find("core/basepool/"), std::string::npos);
    }
    try
    {
        test->RunUnitTest(count);
        ADD_FAILURE() << "no exception from runUnitTest";
    }
    catch (const CbException& e)
    {
        EXPECT_EQ(std::string(e.GetFunction()), name + "::runUnitTest");
    }
}

TEST_P(NodeContainerModuleTest, BenchmarkReportsEveryCase)
{
    const SExpectedClass& expected = GetParam();
    if (expected.benchmarkCases == 0)
        GTEST_SKIP() << "no fixed case list";
    std::unique_ptr<ZqUnitTest> test = CbFactory::CreateAs<ZqUnitTest>(expected.name);
    auto* benchmark = dynamic_cast<ZqBenchmark*>(test.get());
    ASSERT_NE(benchmark, nullptr);
    ASSERT_EQ(benchmark->GetBenchmarkCount(), expected.benchmarkCases);
    ASSERT_TRUE(benchmark->RunBenchmark());
    std::vector<std::string> lines;
    for (const auto& message : test->GetMessageStream().Take())
    {
        lines.push_back(utf8(message.text));
        std::printf("%s%s", lines.back().c_str(), lines.back().ends_with('\n') ? "" : "\n");
    }
    for (unsigned int i = 0; i < expected.benchmarkCases; ++i)
    {
        const std::string name = utf8(benchmark->GetBenchmarkName(i));
        EXPECT_FALSE(name.empty()) << i;
        bool reported = false;
        for (const std::string& line : lines)
            reported = reported || line.find(name) != std::string::npos;
        EXPECT_TRUE(reported) << name;
    }
}

INSTANTIATE_TEST_SUITE_P(NodeContainers, NodeContainerModuleTest, ::testing::ValuesIn(expectedClasses()),
                         [](const ::testing::TestParamInfo<SExpectedClass>& info)
                         { return CbWideToUtf8(info.param.name); });
