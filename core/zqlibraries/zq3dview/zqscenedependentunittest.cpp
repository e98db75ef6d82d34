#include "zq3dview/zqscenedependentunittest.h"

#include "zq3dview/graphics/cexceptiongraphics.h"
#include "zq3dview/zqrenderunittest.h"

CB_IMPLEMENT_RTTI(ZqSceneDependentUnitTest, ZqUnitTest::RTTI);

namespace
{
class CTestCase : public ZqSceneDependentUnitTest::ITestCase
{
public:
    explicit CTestCase(const ZqSceneDependentUnitTest::STestDesc& desc) : m_desc(desc) {}

    CString GetName() const override { return m_desc.sName; }
    void SetupScene(ZqD3DScene& scene) override { run(m_desc.fnSetupScene, scene); }
    void SetupScene2(ZqD3DScene& scene) override { run(m_desc.fnSetupScene2, scene); }
    bool Test(ZqD3DScene& scene) override { return m_desc.fnTest && m_desc.fnTest(scene); }
    void Cleanup(ZqD3DScene& scene) override { run(m_desc.fnCleanup, scene); }

private:
    static void run(const ZqSceneDependentUnitTest::SceneFunction& function, ZqD3DScene& scene)
    {
        if (function)
            function(scene);
    }

    ZqSceneDependentUnitTest::STestDesc m_desc;
};
} // namespace

ZqSceneDependentUnitTest::ZqSceneDependentUnitTest() = default;

ZqSceneDependentUnitTest::~ZqSceneDependentUnitTest() = default;

ZqSceneDependentUnitTest::SView ZqSceneDependentUnitTest::CreateView(const CString& name,
                                                                     const CbVector3f& direction,
                                                                     const CbVector3f& up, float distance)
{
    return ZqSceneTestSupport::CreateView(name, direction, up, distance);
}

void ZqSceneDependentUnitTest::SetupSceneDefault(ZqD3DScene& scene, const ZqColorRGBA& background)
{
    ZqSceneTestSupport::SetupSceneDefault(scene, background);
}

CbSmartPointer<ZqSceneDependentUnitTest::ITestCase>
ZqSceneDependentUnitTest::CreateTestCase(const STestDesc& desc)
{
    return CbSmartPointer<ITestCase>(new CTestCase(desc));
}

void ZqSceneDependentUnitTest::assertConfigured()
{
    m_registration.Ensure([this] { initSubtests(); });
}

void ZqSceneDependentUnitTest::Configure()
{
    assertConfigured();
}

void ZqSceneDependentUnitTest::addTestCase(const CbSmartPointer<ITestCase>& testCase)
{
    if (!testCase)
        CB_THROW(CbException, "ZqSceneDependentUnitTest::addTestCase");
    if (m_registration.Accept())
        m_cases.Add(testCase, "ZqSceneDependentUnitTest::addTestCase");
}

unsigned int ZqSceneDependentUnitTest::getSubtestCount() const
{
    const_cast<ZqSceneDependentUnitTest*>(this)->assertConfigured();
    return m_cases.GetCount();
}

CString ZqSceneDependentUnitTest::getSubtestName(unsigned int index)
{
    assertConfigured();
    return index < m_cases.GetCount() ? m_cases.Get(index)->GetName() : CString();
}

ZqUnitTest::EResult ZqSceneDependentUnitTest::runUnitTest(unsigned int index)
{
    assertConfigured();
    if (index >= m_cases.GetCount())
        return eFailed;
    return runTestCase(*m_cases.Get(index)) ? ePassed : eAborted;
}

bool ZqSceneDependentUnitTest::runTestCase(ITestCase& testCase)
{
    const CString caseName = testCase.GetName();
    if (!m_cases.Contains(caseName))
    {
        WriteMessageFormat(eError, L"Keine Testfunktion mit Namen %s gefunden.", caseName);
        return false;
    }
    try
    {
        ZqRenderUnitTest::ZqTestScene scene;
        scene.SetMessageDispatcherName(kMessageDispatcherName);
        scene.CreateDevice();
        testCase.SetupScene(scene);
        testCase.SetupScene2(scene);
        const bool passed = testCase.Test(scene);
        testCase.Cleanup(scene);
        return passed;
    }
    catch (const Graphics::CExceptionGraphics& e)
    {
        WriteMessageFormat(eError, L"Rendern nicht möglich: %S", e.GetDetail());
        return false;
    }
}
