#include "zq3dview/zqscenetestsupport.h"

#include "zq3dview/zqd3dscene.h"
#include "zq3dview/zqlightobject.h"

#include <limits>

namespace
{
// v scaled to length 1; the zero vector when its squared length is not above the smallest normal
// float.
CbVector3f normalizedOrZero(const CbVector3f& v)
{
    const float squared = v.SquaredLength();
    if (!(squared > std::numeric_limits<float>::min()))
        return {};
    return v / std::sqrt(squared);
}
} // namespace

ZqSceneView ZqSceneTestSupport::CreateView(const CString& name, const CbVector3f& direction,
                                           const CbVector3f& up, float distance)
{
    return {name, [direction, up, distance](ZqD3DScene& scene)
            {
                ZqSceneGraph& graph = scene.GetSceneGraph();
                ZqCameraObject* camera = graph.GetActiveCamera();
                if (!camera)
                    return;
                camera->SetUpVector(normalizedOrZero(up));
                scene.LookAt(graph.GetRoot(), normalizedOrZero(direction), distance);
            }};
}

void ZqSceneTestSupport::SetupSceneDefault(ZqD3DScene& scene, const ZqColorRGBA& background)
{
    scene.SetBackgroundColor(background);
    ZqSceneGraph& graph = scene.GetSceneGraph();
    const auto cameras = CbMakeSmart<ZqGroupObject>(L"cameras");
    const auto top = CbMakeSmart<ZqCameraObject>(L"top");
    cameras->Append(top);
    graph.AppendItem(cameras);
    graph.SetActiveCamera(top);
    const auto light = CbMakeSmart<ZqLight>();
    light->kind = ZqLight::eK_Directional;
    light->flags = ZqLight::eLF_Enabled | ZqLight::eLF_CameraFrame;
    light->direction = {0.0f, 0.0f, 1.0f};
    // Behind the eye; a directional light does not use it.
    light->position = {0.0f, 0.0f, -1000.0f};
    light->ambient = light->diffuse = light->specular = ZqColorRGBA::White;
    graph.AppendItem(CbMakeSmart<ZqLightObject>(L"light", light));
}
