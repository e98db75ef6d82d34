// The scene-dependent test base: subtests are its cases, a case's boolean decides between passed
// and aborted, each case gets a live scene that takes messages through the main-thread dispatcher,
// and the steps run in their order.

#include "zq3dview/zqscenedependentunittest.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace
{
using S = ZqSceneDependentUnitTest;

class SceneTest : public ZqSceneDependentUnitTest
{
public:
    const CbRTTI& GetRTTI() const override
    {
        static const CbRTTI record(L"SceneTest", ZqSceneDependentUnitTest::RTTI, nullptr, nullptr);
        return record;
    }

    std::vector<std::string> steps;
    using ZqSceneDependentUnitTest::runTestCase;

protected:
    void initSubtests() override
    {
        addTestCase(CreateTestCase(desc(L"Gut", true)));
        addTestCase(CreateTestCase(desc(L"Schlecht", false)));
        addTestCase(CreateTestCase(desc(L"Gut", false)));
    }

private:
    S::STestDesc desc(const wchar_t* name, bool result)
    {
        S::STestDesc d;
        d.sName = name;
        d.fnSetupScene = [this](ZqD3DScene& scene)
        {
            steps.push_back("setup");
            SetupSceneDefault(scene, ZqColorRGBA::Black);
        };
        d.fnSetupScene2 = [this](ZqD3DScene&) { steps.push_back("setup2"); };
        d.fnTest = [this, result](ZqD3DScene& scene)
        {
            steps.push_back(CbWideToUtf8(scene.GetMessageDispatcherName().Std()));
            return result && scene.GetDevice() && scene.GetClientRect().right == 1600 &&
                   scene.GetSceneGraph().GetActiveCamera();
        };
        d.fnCleanup = [this](ZqD3DScene&) { steps.push_back("cleanup"); };
        return d;
    }
};
} // namespace

TEST(ZqSceneDependentUnitTest, ACaseThatReturnsFalseIsAbortedAndIndicesBeyondFail)
{
    SceneTest test;
    ASSERT_EQ(test.GetSubtestCount(), 2u);
    EXPECT_EQ(test.GetSubtestName(1), CString(L"Schlecht"));
    EXPECT_EQ(test.GetSubtestName(2), CString());
    EXPECT_EQ(test.RunUnitTest(0), ZqUnitTest::ePassed);
    EXPECT_EQ(test.steps,
              (std::vector<std::string>{"setup", "setup2", "MainThreadMessageDispatcher", "cleanup"}));
    EXPECT_EQ(test.RunUnitTest(1), ZqUnitTest::eAborted);
    EXPECT_EQ(test.RunUnitTest(2), ZqUnitTest::eFailed);
}

TEST(ZqSceneDependentUnitTest, AnUnregisteredCaseFailsWithTheSystemMessage)
{
    SceneTest test;
    test.Configure();
    S::STestDesc desc;
    desc.sName = L"Fremd";
    EXPECT_FALSE(test.runTestCase(*S::CreateTestCase(desc)));
    const auto messages = test.GetMessageStream().Take();
    ASSERT_EQ(messages.size(), 1u);
    EXPECT_EQ(messages[0].text, CString(L"Keine Testfunktion mit Namen Fremd gefunden."));
    EXPECT_TRUE(test.steps.empty());
}
