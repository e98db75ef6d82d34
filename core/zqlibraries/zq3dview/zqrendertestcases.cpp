// The case objects behind ZqRenderUnitTest::CreateTestCase and CreateRenderBenchCase, and the
// hidden test scene they run in.

#include "zq3dview/zqrenderunittest.h"

#include <vector>

namespace
{
using ITestCase = ZqRenderUnitTest::ITestCase;
using IBenchCase = ZqRenderUnitTest::IBenchCase;
using STestDesc = ZqRenderUnitTest::STestDesc;

void runIfSet(const ZqRenderUnitTest::SceneFunction& function, ZqD3DScene& scene)
{
    if (function)
        function(scene);
}

class CTestCase : public ITestCase
{
public:
    explicit CTestCase(const STestDesc& desc)
        : m_desc(desc), m_thresholds(desc.aViews.GetCount(), desc.fPSNRThreshold)
    {
    }

    CString GetName() const override { return m_desc.sName; }
    void SetupScene(ZqD3DScene& scene) override { runIfSet(m_desc.fnSetupScene, scene); }
    void SetupScene2(ZqD3DScene& scene) override { runIfSet(m_desc.fnSetupScene2, scene); }
    unsigned int GetViewCount() const override { return m_desc.aViews.GetCount(); }
    CString GetViewName(unsigned int index) const override { return m_desc.aViews.GetAt(index).sName; }
    void SetupView(unsigned int index, ZqD3DScene& scene) override
    {
        runIfSet(m_desc.aViews.GetAt(index).fnSetupCamera, scene);
    }
    float GetPSNRThreshold(unsigned int index) const override { return m_thresholds.at(index); }

private:
    STestDesc m_desc;
    std::vector<float> m_thresholds;
};

class CBenchCase : public IBenchCase
{
public:
    CBenchCase(const STestDesc& desc, const CString& name, ZqRenderUnitTest::EMeasureMode mode,
               unsigned int view)
        : m_desc(desc), m_name(name), m_mode(mode), m_view(view)
    {
    }

    CString GetName() const override { return m_name; }
    void Create(ZqD3DScene& scene) override { runIfSet(m_desc.fnSetupScene, scene); }
    void Prepare(ZqD3DScene& scene) override
    {
        runIfSet(m_desc.fnSetupScene2, scene);
        runIfSet(m_desc.aViews.GetAt(m_view).fnSetupCamera, scene);
    }
    void WarmUp(ZqD3DScene& scene) override
    {
        scene.Render();
        if (m_mode == ZqRenderUnitTest::eReleaseAndRender)
            scene.ReleaseDeviceResources();
    }
    void Measure(ZqD3DScene& scene) override { scene.Render(); }

private:
    STestDesc m_desc;
    CString m_name;
    ZqRenderUnitTest::EMeasureMode m_mode;
    unsigned int m_view;
};
} // namespace

CbSmartPointer<ZqRenderUnitTest::ITestCase> ZqRenderUnitTest::CreateTestCase(const STestDesc& desc)
{
    return CbSmartPointer<ITestCase>(new CTestCase(desc));
}

CbSmartPointer<ZqRenderUnitTest::IBenchCase> ZqRenderUnitTest::CreateRenderBenchCase(const STestDesc& desc,
                                                                                     const CString& name,
                                                                                     EMeasureMode mode,
                                                                                     unsigned int viewIndex)
{
    return CbSmartPointer<IBenchCase>(new CBenchCase(desc, name, mode, viewIndex));
}

ZqRenderUnitTest::ZqTestScene::ZqTestScene() : ZqD3DScene({0, 0, 1, 1}, eCF_IgnoreVisibility) {}

ZqD3DScene::SRect ZqRenderUnitTest::ZqTestScene::GetClientRect() const
{
    return {0, 0, kWidth, kHeight};
}
