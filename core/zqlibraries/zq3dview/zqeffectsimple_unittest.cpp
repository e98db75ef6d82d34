// Test of ZqEffectSimple: an icosahedron whose twenty faces are twenty materials in well separated
// hues, drawn unlit, seen from reproducible random directions and from one fixed distance.

#include "zq3dview/zqeffectsimple.h"

#include "basepool/cbexception.h"
#include "zq3dbase/zqmptriangulationprimitive.h"
#include "zq3dview/zqrenderunittest.h"
#include "zq3dview/zqtriangulationobject.h"

class ZqEffectSimple_UnitTest : public ZqRenderUnitTest
{
    CB_DECLARE_RTTI(ZqEffectSimple_UnitTest)

protected:
    void initSubtests() override;

private:
    static void setupScene(ZqD3DScene& scene);
};

CB_IMPLEMENT_RTTI(ZqEffectSimple_UnitTest, ZqRenderUnitTest::RTTI);

namespace
{
ZqTriangulationStatic icosahedron(unsigned int subdivision)
{
    ZqMpTriangulationPrimitive primitive;
    primitive.SetPrimitive(L"icosahedron");
    ZqTriangulationPrimitiveConfiguration configuration;
    configuration.SetSubdivision(subdivision);
    primitive.SetConfiguration(configuration);
    if (!primitive.Compute())
        CB_THROW(CbException, "ZqEffectSimple_UnitTest::setupScene", "no icosahedron");
    return primitive.GetOutput();
}
} // namespace

void ZqEffectSimple_UnitTest::setupScene(ZqD3DScene& scene)
{
    SetupSceneDefault(scene, ZqColorRGBA(0.2f, 0.2f, 0.25f));
    // Each triangle of the refined icosahedron belongs to the face of the plain one whose centre
    // is nearest to its own, whatever order the primitive puts its triangles in.
    const ZqTriangulationStatic faces = icosahedron(0);
    const auto object = CbMakeSmart<ZqTriangulationObject>(L"icosahedron");
    object->SetTriangulation(icosahedron(2));
    object->SetMaterialCount(faces.GetTriangleCount());
    const auto positions = faces.GetPositions();
    const auto corners = faces.GetTriangles();
    for (unsigned int t = 0; t < object->GetTriangleCount(); ++t)
    {
        const CbVector3f centre = object->GetTriangleCentroid(t).Normalized();
        unsigned int nearest = 0;
        float best = -2.0f;
        for (unsigned int f = 0; f < corners.size(); ++f)
        {
            const CbVector3f face =
                (positions[corners[f][0]] + positions[corners[f][1]] + positions[corners[f][2]]);
            const float alignment = Dot(face.Normalized(), centre);
            if (alignment > best)
            {
                best = alignment;
                nearest = f;
            }
        }
        object->SetTriangleMaterial(t, nearest);
    }
    const auto effect = CbMakeSmart<ZqEffectSimple>();
    for (unsigned int m = 0; m < object->GetMaterialCount(); ++m)
    {
        object->GetMaterial(m).SetShader(effect);
        object->GetMaterial(m).SetEffectProperties(
            CbMakeSmart<ZqEffectProperties>(CreateUniqueHue(m, 0.5f), ZqColorRGBA::White));
    }
    scene.GetSceneGraph().AppendItem(object);
    scene.GetSceneGraph().AppendViewItem(effect);
}

void ZqEffectSimple_UnitTest::initSubtests()
{
    STestDesc desc;
    desc.sName = L"EffectSimple";
    desc.fnSetupScene = setupScene;
    for (unsigned int i = 0; i < 4; ++i)
        desc.aViews.Add(CreateView(CbFormat(L"%u", i), CreateRandomDir(i), {0, 0, 1}, 0.0f));
    // From a fixed distance of six radii the icosahedron fills about two thirds of the height.
    desc.aViews.Add(CreateView(L"fern", {1, 1, -1}, {0, 0, 1}, 6.0f));
    desc.fPSNRThreshold = sc_fDefaultPSNRThreshold;
    addTestCase(CreateTestCase(desc));
}
