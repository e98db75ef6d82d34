// Small meshes and scenes for the rendering tests, made here so that they do not depend on the
// geometry library's primitives.

#pragma once

#include "zq3dview/zqd3dscene.h"
#include "zq3dview/zqeffectphong.h"
#include "zq3dview/zqmeshobject.h"
#include "zq3dview/zqrenderunittest.h"

#include <cmath>
#include <numbers>

namespace ZqTestGeometry
{
// A sphere of the given radius and centre, triangulated by latitude and longitude, wound
// counter-clockwise seen from outside.
inline CbSmartPointer<ZqMeshObject> Sphere(const CString& name, float radius, const CbVector3f& centre,
                                           unsigned int longitudes = 48, unsigned int latitudes = 24)
{
    CbArray<CbVector3f> positions;
    CbArray<ZqMeshObject::Triangle> triangles;
    const float pi = std::numbers::pi_v<float>;
    for (unsigned int j = 0; j <= latitudes; ++j)
        for (unsigned int i = 0; i < longitudes; ++i)
        {
            const float theta = pi * float(j) / float(latitudes),
                        phi = 2.0f * pi * float(i) / float(longitudes);
            positions.Add(centre + radius * CbVector3f(std::sin(theta) * std::cos(phi),
                                                       std::sin(theta) * std::sin(phi), std::cos(theta)));
        }
    for (unsigned int j = 0; j < latitudes; ++j)
        for (unsigned int i = 0; i < longitudes; ++i)
        {
            const unsigned int a = j * longitudes + i, b = j * longitudes + (i + 1) % longitudes;
            const unsigned int c = a + longitudes, d = b + longitudes;
            triangles.Add({a, c, b});
            triangles.Add({b, c, d});
        }
    auto mesh = CbMakeSmart<ZqMeshObject>(name);
    mesh->SetGeometry(std::move(positions), std::move(triangles));
    return mesh;
}

// Gives every material of mesh the effect and one properties object of that colour.
inline void Paint(ZqMeshObject& mesh, const CbSmartPointer<ZqEffect>& effect, const ZqColorRGBA& color)
{
    const auto properties = CbMakeSmart<ZqEffectProperties>(color, ZqColorRGBA::White);
    for (unsigned int m = 0; m < mesh.GetMaterialCount(); ++m)
    {
        mesh.GetMaterial(m).SetShader(effect);
        mesh.GetMaterial(m).SetEffectProperties(properties);
    }
}

// The default scene with two Phong spheres side by side, left one in left, right one in right;
// a null colour leaves that sphere out.
inline void TwoSpheres(ZqD3DScene& scene, const ZqColorRGBA* left, const ZqColorRGBA* right)
{
    ZqRenderUnitTest::SetupSceneDefault(scene, ZqColorRGBA(0.2f, 0.2f, 0.25f));
    const auto effect = CbMakeSmart<ZqEffectPhong>();
    scene.GetSceneGraph().AppendViewItem(effect);
    // The two spheres' bounds stand in for each other when one is left out, so the framing stays.
    const CbVector3f centres[2] = {{-1.2f, 0, 0}, {1.2f, 0, 0}};
    const ZqColorRGBA* colors[2] = {left, right};
    for (int k = 0; k < 2; ++k)
    {
        auto sphere = Sphere(k == 0 ? L"left" : L"right", 1.0f, centres[k]);
        if (colors[k])
            Paint(*sphere, effect, *colors[k]);
        scene.GetSceneGraph().AppendItem(sphere);
    }
}
} // namespace ZqTestGeometry
