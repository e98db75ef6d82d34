// What the module's tool framework test cannot see of itself: the runner lists and selects a class
// in a namespace by its qualified name, and the test's assertion reports the system's text.

#include "toolsession.h"
#include "zqbase/zqtest/zqtestfilter.h"
#include "zqtest/zqtestharness.h"

#include <gtest/gtest.h>

namespace zqinteraction
{
namespace
{
const std::string kModule = ZQ_BINARY_DIR "/libZqUnitTests.so";

// Runs body as its only subtest.
class CAssertionProbe : public ZqUnitTest
{
public:
    explicit CAssertionProbe(std::function<EResult()> body) : m_body(std::move(body)) {}
    const CbRTTI& GetRTTI() const override { return ZqUnitTest::RTTI; }

protected:
    EResult runUnitTest(unsigned int) override { return m_body(); }

private:
    std::function<EResult()> m_body;
};
} // namespace

TEST(ToolFrameworkModule, RunnerListsAndSelectsTheClassByItsQualifiedName)
{
    const zqtest::SResult listing = zqtest::RunZqTest({"--gtest_list_tests", kModule});
    ASSERT_EQ(listing.exitCode, 0) << listing.output;
    EXPECT_TRUE(
        listing.Contains("Tools::CToolFramework_UnitTest.\n  ComponentSerializer\n  Dispatcher/Operations\n"
                         "  UndoRedoManager\n  LockingManager\n  NextIteration\n  Multithreading\n"
                         "  CDataMemberAccess\n  Callbacks\n  SetupOrder\n"))
        << listing.output;
    // The form CMake's discovery passes back: one subtest of the class.
    const zqtest::SResult one =
        zqtest::RunZqTest({"--gtest_filter=Tools::CToolFramework_UnitTest.NextIteration", kModule});
    EXPECT_EQ(one.exitCode, 0) << one.output;
    EXPECT_EQ(one.LastLine(), "1 passed, 0 failed");
    EXPECT_TRUE(one.Contains("[       OK ] Tools::CToolFramework_UnitTest.NextIteration"));
}

TEST(ToolFrameworkModule, FilterKeepsDoubleColonsInsideAPattern)
{
    const ZqTestFilter filter("Other_UnitTest:Tools::CToolFramework_UnitTest.Call*-Tools::*.#1");
    EXPECT_TRUE(filter.Matches("Tools::CToolFramework_UnitTest", 7, "Callbacks"));
    EXPECT_TRUE(filter.Matches("Other_UnitTest", 1, "x"));
    EXPECT_FALSE(filter.Matches("Tools::CToolFramework_UnitTest", 6, "CDataMemberAccess"));
    EXPECT_FALSE(ZqTestFilter("Tools::*.#1").Matches("Tools", 1, "x"));
    EXPECT_TRUE(ZqTestFilter("Tools::*.#1").Matches("Tools::X", 1, "x"));
    EXPECT_FALSE(ZqTestFilter("-Tools::*").Matches("Tools::X", 0, "x"));
}

TEST(ToolFrameworkModule, FailedAssertionWritesTheSystemsText)
{
    CAssertionProbe probe(
        []
        {
            CFramework framework;
            CEventDispatcher* pDispatcher = framework.GetDispatcher();
            const unsigned int uiPastInterationId = pDispatcher->GetCurrentInteractionId();
            pDispatcher->NextInteraction();
            TOOLS_ASSERT_EQUAL(pDispatcher->GetCurrentInteractionId(), uiPastInterationId + 2);
            return ZqUnitTest::ePassed;
        });
    EXPECT_EQ(probe.RunUnitTest(0), ZqUnitTest::eFailed);
    const auto messages = probe.GetMessageStream().Take();
    ASSERT_EQ(messages.size(), 1u);
    EXPECT_EQ(messages[0].type, ZqUnitTest::eError);
    EXPECT_EQ(messages[0].text,
              CString(L"UnitTest Assertion: 'pDispatcher->GetCurrentInteractionId()' must be "
                      L"equal to 'uiPastInterationId + 2'."));
}
} // namespace zqinteraction
