#include "zq3dview/zqd3dscene.h"

#include "zq3dview/graphics/cdevicegl.h"
#include "zq3dview/graphics/cexceptiongraphics.h"
#include "zq3dview/zqdrawcontext.h"
#include "zqbase/zqbitmap.h"

#include <algorithm>
#include <cmath>

namespace
{
// Share of the field of view kept free around framed bounds.
constexpr float kFrameMargin = 1.05f;

// An up vector orthogonal to the unit direction: up with its part along direction removed, or
// the axis least aligned with direction when up is (nearly) parallel to it.
CbVector3f orthogonalUp(const CbVector3f& up, const CbVector3f& direction)
{
    CbVector3f result = up - direction * Dot(up, direction);
    if (result.SquaredLength() > 1e-8f)
        return result.Normalized();
    const CbVector3f absolute{std::fabs(direction.x), std::fabs(direction.y), std::fabs(direction.z)};
    const CbVector3f axis = absolute.x <= absolute.y && absolute.x <= absolute.z ? CbVector3f(1, 0, 0)
                            : absolute.y <= absolute.z                           ? CbVector3f(0, 1, 0)
                                                                                 : CbVector3f(0, 0, 1);
    return (axis - direction * Dot(axis, direction)).Normalized();
}
} // namespace

ZqD3DScene::ZqD3DScene(const SRect& windowRect, unsigned int flags) : m_windowRect(windowRect), m_flags(flags)
{
}

ZqD3DScene::~ZqD3DScene()
{
    // The graph's GL objects go while the device's context is still there. A context that cannot be
    // made current any more has nothing left to free.
    try
    {
        ReleaseDeviceResources();
    }
    catch (const Graphics::CExceptionGraphics&)
    {
    }
}

ZqD3DScene::SRect ZqD3DScene::GetClientRect() const
{
    return {0, 0, m_windowRect.right - m_windowRect.left, m_windowRect.bottom - m_windowRect.top};
}

void ZqD3DScene::CreateDevice()
{
    if (m_device)
        return;
    const SRect client = GetClientRect();
    m_device = std::make_unique<Graphics::CDeviceGL>(unsigned(std::max(client.right - client.left, 1)),
                                                     unsigned(std::max(client.bottom - client.top, 1)));
}

float ZqD3DScene::getAspect() const
{
    const SRect client = GetClientRect();
    const int width = client.right - client.left, height = client.bottom - client.top;
    return width > 0 && height > 0 ? float(width) / float(height) : 1.0f;
}

void ZqD3DScene::LookAt(const ZqSceneObject& root, const CbVector3f& direction, float distance)
{
    ZqCameraObject* camera = m_graph.GetActiveCamera();
    if (!camera)
        return;
    ZqBoundingBox3f box;
    root.ExtendBounds(box);
    if (box.IsEmpty())
        box = {{-1, -1, -1}, {1, 1, 1}};
    const CbVector3f forward =
        direction.SquaredLength() > 0.0f ? direction.Normalized() : CbVector3f(0.0f, 0.0f, -1.0f);
    const CbVector3f up = orthogonalUp(camera->GetUpVector(), forward);
    const CbVector3f right = Cross(forward, up);
    const CbVector3f centre = box.GetCenter();
    const float radius = std::max((box.max - box.min).Length() * 0.5f, 1e-6f);

    float standOff = distance;
    if (!(distance > 0.0f))
    {
        // A corner at offset c from the centre lies inside the view when its sideways offsets,
        // divided by the half-angle tangents, stay below its depth from the eye, D + c.forward.
        const float tanV = std::tan(camera->GetFieldOfView() * 0.5f) / kFrameMargin;
        const float tanH = tanV * getAspect();
        standOff = 0.0f;
        for (unsigned int i = 0; i < 8; ++i)
        {
            const CbVector3f c = box.GetCorner(i) - centre;
            const float sideways = std::max(std::fabs(Dot(c, right)) / tanH, std::fabs(Dot(c, up)) / tanV);
            standOff = std::max(standOff, sideways - Dot(c, forward));
        }
        standOff = std::max(standOff, radius * 1e-3f);
    }
    camera->SetPosition(centre - forward * standOff);
    camera->SetDirection(forward);
    camera->SetUpVector(up);
    camera->SetClipPlanes(std::max(standOff - radius * 1.01f, radius * 1e-3f), standOff + radius * 1.01f);
}

void ZqD3DScene::Render()
{
    CreateDevice();
    Graphics::IDevice& device = *m_device;
    device.BeginFrame(m_background);
    m_graph.InitViewItems(device);
    if (const ZqCameraObject* camera = m_graph.GetActiveCamera())
    {
        ZqDrawContext context{device, camera->GetViewMatrix(), camera->GetProjectionMatrix(getAspect())};
        m_graph.CollectLights(context);
        m_graph.GetRoot().Draw(context);
    }
    device.EndFrame();
}

bool ZqD3DScene::GetScreenshot(ZqBitmap& image)
{
    if (!m_device)
        return false;
    m_device->ReadPixels(image);
    return true;
}

void ZqD3DScene::ReleaseDeviceResources()
{
    if (m_device)
        m_device->MakeCurrent();
    m_graph.ReleaseDeviceResources();
}
