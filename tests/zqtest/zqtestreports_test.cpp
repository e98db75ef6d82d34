// The report files of a run: our own JSON, GoogleTest's JSON and the JUnit XML, read back with
// independent parsers.

#include "zqtestharness.h"

#include "zqbase/zqtest/zqtestreports.h"

#include <gtest/gtest.h>
#include <tinyxml2.h>

using namespace zqtest;

namespace
{
class ZqTestReportFiles : public ::testing::Test
{
protected:
    static void SetUpTestSuite()
    {
        s_directory = new CTemporaryDirectory;
        s_result = RunZqTest(
            {"--filter", "ZqFixtureMixed_UnitTest:ZqFixtureCrash_UnitTest.#1:ZqFixtureRandom_UnitTest",
             "--seed", "4711", "--json", *s_directory / "own.json", "--junit", *s_directory / "junit.xml",
             "--gtest_output=json:" + *s_directory / "google.json", kFixture});
    }
    static void TearDownTestSuite()
    {
        delete s_directory;
        s_directory = nullptr;
    }
    static CTemporaryDirectory* s_directory;
    static SResult s_result;
};
CTemporaryDirectory* ZqTestReportFiles::s_directory = nullptr;
SResult ZqTestReportFiles::s_result;
} // namespace

TEST_F(ZqTestReportFiles, OwnJsonCarriesOutcomesMessagesCountsAndSeed)
{
    ASSERT_EQ(s_result.exitCode, 1) << s_result.output;
    const auto report = nlohmann::json::parse(ReadFile(*s_directory / "own.json"));
    EXPECT_EQ(report.at("passed"), 3);
    EXPECT_EQ(report.at("failed"), 5);
    EXPECT_EQ(report.at("skipped"), 0);
    EXPECT_EQ(report.at("seed"), 4711);
    const auto byName = SubtestsByName(report);
    const auto& failed = byName.at("ZqFixtureMixed_UnitTest.#1");
    EXPECT_EQ(failed.at("name"), "scheitert mit Meldung");
    EXPECT_EQ(failed.at("outcome"), 2);
    EXPECT_EQ(failed.at("result"), "eFailed");
    EXPECT_GE(failed.at("seconds").get<double>(), 0.0);
    EXPECT_EQ(failed.at("messages"),
              nlohmann::json::parse(R"([{"type": 1, "text": "Summe ist nicht korrekt\n"}])"));
    EXPECT_EQ(byName.at("ZqFixtureCrash_UnitTest.#1").at("result"), "crashed");
    EXPECT_EQ(report.at("tests").at(0).at("parents"), nlohmann::json::array({"ZqUnitTest"}));
    // Nothing but the three reports is left in the directory: temporaries were renamed.
    EXPECT_EQ(std::distance(std::filesystem::directory_iterator(s_directory->Path()), {}), 3);
}

TEST_F(ZqTestReportFiles, GoogleTestJsonHasSuitesCasesAndFailures)
{
    const auto report = nlohmann::json::parse(ReadFile(*s_directory / "google.json"));
    EXPECT_EQ(report.at("tests"), 8);
    EXPECT_EQ(report.at("failures"), 5);
    EXPECT_EQ(report.at("random_seed"), 4711);
    std::map<std::string, nlohmann::json> cases;
    for (const auto& suite : report.at("testsuites"))
        for (const auto& testcase : suite.at("testsuite"))
            cases[suite.at("name").get<std::string>() + "." + testcase.at("name").get<std::string>()] =
                testcase;
    EXPECT_FALSE(cases.at("ZqFixtureMixed_UnitTest.besteht").contains("failures"));
    const auto& failure = cases.at("ZqFixtureMixed_UnitTest.scheitert mit Meldung").at("failures").at(0);
    EXPECT_EQ(failure.at("failure"), "Summe ist nicht korrekt\n");
    EXPECT_EQ(cases.at("ZqFixtureRandom_UnitTest.zufällig").at("classname"), "ZqFixtureRandom_UnitTest");
}

TEST_F(ZqTestReportFiles, JUnitXmlParsesWithFailuresAndInformationInSystemOut)
{
    tinyxml2::XMLDocument document;
    ASSERT_EQ(document.LoadFile((*s_directory / "junit.xml").c_str()), tinyxml2::XML_SUCCESS);
    const tinyxml2::XMLElement* root = document.FirstChildElement("testsuites");
    ASSERT_NE(root, nullptr);
    EXPECT_EQ(root->IntAttribute("tests"), 8);
    EXPECT_EQ(root->IntAttribute("failures"), 5);
    int cases = 0, failures = 0;
    for (auto* suite = root->FirstChildElement("testsuite"); suite;
         suite = suite->NextSiblingElement("testsuite"))
        for (auto* testcase = suite->FirstChildElement("testcase"); testcase;
             testcase = testcase->NextSiblingElement("testcase"))
        {
            ++cases;
            EXPECT_STREQ(testcase->Attribute("classname"), suite->Attribute("name"));
            const tinyxml2::XMLElement* failure = testcase->FirstChildElement("failure");
            failures += failure ? 1 : 0;
            if (std::string(testcase->Attribute("name")) == "zufällig")
            {
                ASSERT_NE(failure, nullptr);
                EXPECT_STREQ(failure->GetText(), "Punkt liegt außerhalb der Hülle\n");
                const tinyxml2::XMLElement* out = testcase->FirstChildElement("system-out");
                ASSERT_NE(out, nullptr);
                EXPECT_STREQ(out->GetText(), "Startwert des Zufallsgenerators: -1294967296\n");
            }
            if (std::string(testcase->Attribute("name")) == "schreibt auf stdout")
            {
                ASSERT_NE(testcase->FirstChildElement("system-err"), nullptr);
                EXPECT_STREQ(testcase->FirstChildElement("system-err")->GetText(), "Ausgabe auf stdout\n");
            }
        }
    EXPECT_EQ(cases, 8);
    EXPECT_EQ(failures, 5);
}

TEST(ZqTestReportText, EscapingKeepsEveryCharacterReadable)
{
    const std::string nasty = "a\"b\\c\nd\x01<&>'ü";
    EXPECT_EQ(nlohmann::json::parse(ZqTestReports::JsonString(nasty)).get<std::string>(), nasty);
    tinyxml2::XMLDocument document;
    const std::string xml =
        "<x a=\"" + ZqTestReports::XmlEscape(nasty) + "\">" + ZqTestReports::XmlEscape(nasty) + "</x>";
    ASSERT_EQ(document.Parse(xml.c_str()), tinyxml2::XML_SUCCESS);
    // XML 1.0 cannot hold U+0001; it becomes U+FFFD, everything else survives.
    const std::string expected = "a\"b\\c\nd\xEF\xBF\xBD<&>'ü";
    EXPECT_EQ(document.RootElement()->Attribute("a"), expected);
    EXPECT_EQ(document.RootElement()->GetText(), expected);
}
