#include "zq3dview/zqscenegraph.h"

#include "basepool/cbexception.h"
#include "zq3dview/zqdrawcontext.h"
#include "zq3dview/zqlightobject.h"

ZqSceneGraph::ZqSceneGraph() : m_root(CbMakeSmart<ZqGroupObject>(L"root")) {}

ZqSceneGraph::~ZqSceneGraph() = default;

void ZqSceneGraph::AppendItem(const CbSmartPointer<ZqSceneObject>& object, ZqGroupObject* parent)
{
    (parent ? parent : m_root.Get())->Append(object);
}

void ZqSceneGraph::AppendViewItem(const CbSmartPointer<ZqViewItem>& item)
{
    if (!item)
        CB_THROW(CbExceptionPreconditionViolation, "ZqSceneGraph::AppendViewItem", "null view item");
    m_viewItems.Add(item);
}

void ZqSceneGraph::InitViewItems(Graphics::IDevice& device)
{
    for (const auto& item : m_viewItems)
        if (!item->IsInitialized())
            item->Init(device);
}

void ZqSceneGraph::ReleaseDeviceResources()
{
    m_root->ReleaseDeviceResources();
    for (const auto& item : m_viewItems)
        item->Release();
}

namespace
{
// A camera-frame vector (x right, y up, z forward) in OpenGL view space (z backward).
CbVector3f cameraFrameToView(const CbVector3f& v)
{
    return {v.x, v.y, -v.z};
}

void collect(const ZqSceneObject& object, ZqDrawContext& context)
{
    if (context.lightCount == ZqDrawContext::kMaxLights)
        return;
    if (const auto* lightObject = dynamic_cast<const ZqLightObject*>(&object))
    {
        const ZqLight* light = lightObject->GetLight();
        if (light && light->IsEnabled())
        {
            const CbVector3f travel = (light->flags & ZqLight::eLF_CameraFrame)
                                          ? cameraFrameToView(light->direction)
                                          : context.view.TransformDirection(light->direction);
            context.lights[context.lightCount++] = {(-travel).Normalized(), light->ambient, light->diffuse,
                                                    light->specular};
        }
    }
    for (unsigned int i = 0; i < object.GetChildCount(); ++i)
        collect(*object.GetChild(i), context);
}
} // namespace

void ZqSceneGraph::CollectLights(ZqDrawContext& context) const
{
    context.lightCount = 0;
    collect(*m_root, context);
}
