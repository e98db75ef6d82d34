#pragma once

#include "basepool/cbrefcounted.h"
#include "basepool/inoncopyable.h"
#include "zq3dview/zq3dview_export.h"
#include "zq3dview/zqd3dscene.h"
#include "zq3dview/zqscenetestsupport.h"
#include "zqbase/zqdebugging.h"
#include "zqbase/zqunittest.h"

#include <functional>

// The base of tests that need a live scene but compare no images: each case sets a scene up, runs
// its test step on it, whose boolean is the result, and cleans up. The subtests are the cases in
// registration order; a case that returns false gives eAborted (4). Registration runs once, lazily,
// as in ZqRenderUnitTest.
class ZQ3DVIEW_API ZqSceneDependentUnitTest : public ZqUnitTest, public ZqDebugging, private INonCopyable
{
    CB_DECLARE_RTTI(ZqSceneDependentUnitTest)

public:
    // The dispatcher through which the case scenes take interactive messages.
    static constexpr const wchar_t* kMessageDispatcherName = L"MainThreadMessageDispatcher";

    using SceneFunction = std::function<void(ZqD3DScene&)>;
    using SView = ZqSceneView;

    struct STestDesc
    {
        CString sName;
        SceneFunction fnSetupScene;              // builds the scene
        SceneFunction fnSetupScene2;             // right after the first; may be empty
        std::function<bool(ZqD3DScene&)> fnTest; // the test step: true when it passed
        SceneFunction fnCleanup;                 // after the test step; may be empty
    };

    class ITestCase : public virtual CbRefCounted
    {
    public:
        virtual CString GetName() const = 0;
        virtual void SetupScene(ZqD3DScene& scene) = 0;
        virtual void SetupScene2(ZqD3DScene& scene) = 0;
        virtual bool Test(ZqD3DScene& scene) = 0;
        virtual void Cleanup(ZqD3DScene& scene) = 0;
    };

    ZqSceneDependentUnitTest();
    ~ZqSceneDependentUnitTest() override;

    static SView CreateView(const CString& name, const CbVector3f& direction, const CbVector3f& up,
                            float distance);
    static void SetupSceneDefault(ZqD3DScene& scene, const ZqColorRGBA& background);
    static CbSmartPointer<ITestCase> CreateTestCase(const STestDesc& desc);

    // Runs the lazy registration now.
    void Configure();

protected:
    void initSubtests() override = 0;
    unsigned int getSubtestCount() const override;
    CString getSubtestName(unsigned int index) override;
    EResult runUnitTest(unsigned int index) override;

    // A null case throws CbException ("ZqSceneDependentUnitTest::addTestCase"); a taken name is
    // dropped.
    void addTestCase(const CbSmartPointer<ITestCase>& testCase);
    // Runs the case in a fresh hidden 1600 x 900 scene; false when its name is not registered, the
    // scene has no device, or its test step said so.
    bool runTestCase(ITestCase& testCase);

private:
    void assertConfigured();

    ZqNamedCases<ITestCase> m_cases;
    ZqLazyRegistration m_registration;
};
