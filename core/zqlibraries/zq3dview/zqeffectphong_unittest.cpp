// Test of ZqEffectPhong: a subdivided icosahedron whose two halves are two materials with a Phong
// effect each, a crown over its prepared tooth, both from the axes and two reproducible random
// directions, and the timing of re-rendering the icosahedron with and without releasing its device
// resources first.

#include "zq3dview/zqeffectphong.h"

#include "basepool/cbexception.h"
#include "zq3dbase/zqmptriangulationprimitive.h"
#include "zq3dview/zqrenderunittest.h"
#include "zq3dview/zqtriangulationobject.h"
#include "zqbase/zqtestenvironment.h"

class ZqEffectPhong_UnitTest : public ZqRenderUnitTest
{
    CB_DECLARE_RTTI(ZqEffectPhong_UnitTest)

protected:
    void initSubtests() override;

private:
    static void setupIcosahedron(ZqD3DScene& scene);
    static void setupRestoration(ZqD3DScene& scene);
};

CB_IMPLEMENT_RTTI(ZqEffectPhong_UnitTest, ZqRenderUnitTest::RTTI);

namespace
{
const ZqColorRGBA kBackground{0.2f, 0.2f, 0.25f};

CbArray<ZqRenderUnitTest::SView> views()
{
    CbArray<ZqRenderUnitTest::SView> views = ZqRenderUnitTest::CreateAxisViews(0.0f);
    for (unsigned int i = 0; i < 2; ++i)
        views.Add(ZqRenderUnitTest::CreateView(CbFormat(L"%u", i), ZqRenderUnitTest::CreateRandomDir(i),
                                               {0, 0, 1}, 0.0f));
    return views;
}

// The Phong effect of an object, appended to the scene as a view item.
CbSmartPointer<ZqEffectPhong> addEffect(ZqD3DScene& scene)
{
    const auto effect = CbMakeSmart<ZqEffectPhong>();
    scene.GetSceneGraph().AppendViewItem(effect);
    return effect;
}
} // namespace

void ZqEffectPhong_UnitTest::setupIcosahedron(ZqD3DScene& scene)
{
    SetupSceneDefault(scene, kBackground);
    ZqMpTriangulationPrimitive primitive;
    primitive.SetPrimitive(L"icosahedron");
    ZqTriangulationPrimitiveConfiguration configuration;
    configuration.SetSubdivision(6);
    primitive.SetConfiguration(configuration);
    if (!primitive.Compute())
        CB_THROW(CbException, "ZqEffectPhong_UnitTest::setupIcosahedron", "no icosahedron of subdivision 6");
    const auto icosahedron = CbMakeSmart<ZqTriangulationObject>(L"icosahedron");
    icosahedron->SetTriangulation(primitive.GetOutput());
    // Material 1 is the lower half; each material has an effect of its own.
    icosahedron->SetMaterialCount(2);
    for (unsigned int t = 0; t < icosahedron->GetTriangleCount(); ++t)
        if (icosahedron->GetTriangleCentroid(t).z < 0.0f)
            icosahedron->SetTriangleMaterial(t, 1);
    const auto upper = addEffect(scene);
    const auto lower = addEffect(scene);
    const auto properties = CbMakeSmart<ZqEffectProperties>();
    properties->SetColor(ZqEffectProperties::eC_Surface, ZqColorRGBA::Blue);
    properties->SetColor(ZqEffectProperties::eC_Highlight, ZqColorRGBA::White);
    icosahedron->GetMaterial(0).SetShader(upper);
    icosahedron->GetMaterial(1).SetShader(lower);
    icosahedron->GetMaterial(0).SetEffectProperties(properties);
    icosahedron->GetMaterial(1).SetEffectProperties(properties);
    scene.GetSceneGraph().AppendItem(icosahedron);
}

void ZqEffectPhong_UnitTest::setupRestoration(ZqD3DScene& scene)
{
    SetupSceneDefault(scene, kBackground);
    const CString data =
        CString(CbUtf8ToWide(ZqTestEnvironment::GetDataDirectory(RTTI.GetName()))) + L"/Data/";
    const auto effect = addEffect(scene);
    // Dentine for the prepared tooth (its root shows below the crown), porcelain for the crown.
    const struct
    {
        const wchar_t* name;
        const wchar_t* file;
        ZqColorRGBA color;
    } parts[] = {{L"Preparation", L"Preparation.tri", {0.86f, 0.72f, 0.55f}},
                 {L"Restauration", L"Restauration.tri", {0.94f, 0.93f, 0.87f}}};
    for (const auto& part : parts)
    {
        const auto object = CbMakeSmart<ZqTriangulationObject>(part.name);
        object->Load(data + part.file);
        object->GetMaterial(0).SetShader(effect);
        object->GetMaterial(0).SetEffectProperties(
            CbMakeSmart<ZqEffectProperties>(part.color, ZqColorRGBA::White));
        scene.GetSceneGraph().AppendItem(object);
    }
}

void ZqEffectPhong_UnitTest::initSubtests()
{
    const auto describe = [](const wchar_t* name, SceneFunction setup)
    {
        STestDesc desc;
        desc.sName = name;
        desc.fnSetupScene = std::move(setup);
        desc.aViews = views();
        desc.fPSNRThreshold = sc_fDefaultPSNRThreshold;
        return desc;
    };
    const STestDesc icosahedron = describe(L"EffectPhong", setupIcosahedron);
    addTestCase(CreateTestCase(icosahedron));
    addTestCase(CreateTestCase(describe(L"EffectPhong (Restoration)", setupRestoration)));

    ZqRenderBenchmark benchmark(L"Benchmark", ZqRenderBenchmark::GetDefaultIterationCount());
    benchmark.AddBenchCase(CreateRenderBenchCase(icosahedron, icosahedron.sName + L"-Render", eRender, 0));
    benchmark.AddBenchCase(
        CreateRenderBenchCase(icosahedron, icosahedron.sName + L"-ReleaseAndRender", eReleaseAndRender, 0));
    addBenchmark(benchmark);
}
