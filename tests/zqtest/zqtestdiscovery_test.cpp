// CMake's own GoogleTest discovery on the fixture's class of awkward subtest names: every name it
// discovers becomes a CTest test that runs exactly its own subtest and passes or fails as that does.

#include "zqtestharness.h"

#include <gtest/gtest.h>
#include <tinyxml2.h>

using namespace zqtest;

namespace
{
// The one test case of a test's own report: how many there were, and the index its subtest wrote.
std::pair<int, int> ReportedCase(const std::string& path)
{
    tinyxml2::XMLDocument document;
    if (document.LoadFile(path.c_str()) != tinyxml2::XML_SUCCESS)
        return {0, -1};
    int cases = 0, index = -1;
    for (auto* suite = document.RootElement()->FirstChildElement("testsuite"); suite;
         suite = suite->NextSiblingElement("testsuite"))
        for (auto* testcase = suite->FirstChildElement("testcase"); testcase;
             testcase = testcase->NextSiblingElement("testcase"))
        {
            ++cases;
            const auto* out = testcase->FirstChildElement("system-out");
            if (out && out->GetText())
                std::sscanf(out->GetText(), "Index %d", &index);
        }
    return {cases, index};
}
} // namespace

TEST(ZqTestDiscovery, CMakeDiscoversEveryAwkwardNameAsATestThatRunsItsOwnSubtest)
{
    CTemporaryDirectory directory;
    const SResult configured = RunProgram(
        ZQ_CMAKE_COMMAND,
        {"-S", ZQ_SOURCE_DIR "/tests/zqtest/discovery", "-B", directory / "build", "-G", "Ninja",
         "-DZQ_RUNNER=" ZQ_BINARY_DIR "/ZqTestFixtureRunner", "-DZQ_XML_DIR=" + directory / "xml"});
    ASSERT_EQ(configured.exitCode, 0) << configured.output;
    const SResult tested = RunProgram(ZQ_CTEST_COMMAND, {"--test-dir", directory / "build", "-j2",
                                                         "--output-junit", directory / "ctest.xml"});

    tinyxml2::XMLDocument junit;
    ASSERT_EQ(junit.LoadFile((directory / "ctest.xml").c_str()), tinyxml2::XML_SUCCESS) << tested.output;
    std::map<std::string, bool> failed;
    for (auto* testcase = junit.RootElement()->FirstChildElement("testcase"); testcase;
         testcase = testcase->NextSiblingElement("testcase"))
        failed[testcase->Attribute("name")] = std::string(testcase->Attribute("status")) != "run";
    ASSERT_EQ(failed.size(), 20u) << tested.output;

    std::multiset<int> ran;
    for (const auto& [name, fails] : failed)
    {
        SCOPED_TRACE(name);
        // CMake names each report after the test: <prefix><Class>.<listed name>.xml.
        const auto [cases, index] = ReportedCase(directory / "xml/" + name + ".xml");
        EXPECT_EQ(cases, 1);
        ran.insert(index);
        // The fixture's odd subtests fail.
        EXPECT_EQ(fails, index % 2 != 0) << tested.output;
    }
    std::multiset<int> all;
    for (int i = 0; i < 20; ++i)
        all.insert(i);
    EXPECT_EQ(ran, all);
}
