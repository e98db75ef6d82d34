#pragma once

#include "basepool/inoncopyable.h"
#include "zq3dview/graphics/idevice.h"
#include "zq3dview/zqscenegraph.h"
#include "zqbase/zqcolorrgba.h"

#include <memory>

class ZqBitmap;

// A scene: a scene graph drawn on its own graphics device into an off-screen picture of the
// client area's size. There is no window: the client area is what GetClientRect reports (a test
// scene reports its fixed size), the window rectangle given at construction only stands in for it.
//
//     ZqD3DScene scene({0, 0, 800, 600});
//     scene.CreateDevice();                       // throws Graphics::CExceptionGraphics without GL 4.5
//     ... fill scene.GetSceneGraph(), set its active camera ...
//     scene.LookAt(scene.GetSceneGraph().GetRoot(), {0, 0, -1}, 0.0f);
//     scene.Render();
//     ZqBitmap picture;
//     scene.GetScreenshot(picture);               // 800 x 600, top row first
class ZQ3DVIEW_API ZqD3DScene : private INonCopyable
{
public:
    struct SRect
    {
        int left = 0;
        int top = 0;
        int right = 0;
        int bottom = 0;
    };
    enum ECreateFlags : unsigned int
    {
        eCF_None = 0,
        // The window's visibility does not matter: the scene renders while nothing is shown.
        eCF_IgnoreVisibility = 1,
    };

    explicit ZqD3DScene(const SRect& windowRect, unsigned int flags = eCF_None);
    virtual ~ZqD3DScene();

    // The drawing area; the window rectangle moved to the origin unless a subclass knows better.
    virtual SRect GetClientRect() const;
    unsigned int GetFlags() const { return m_flags; }

    // Makes the device with the client area's size (throws Graphics::CExceptionGraphics with one
    // line naming what was found when there is no usable OpenGL 4.5). A second call does nothing.
    void CreateDevice();
    // Null before CreateDevice.
    Graphics::IDevice* GetDevice() const { return m_device.get(); }

    ZqSceneGraph& GetSceneGraph() { return m_graph; }
    const ZqSceneGraph& GetSceneGraph() const { return m_graph; }

    const ZqColorRGBA& GetBackgroundColor() const { return m_background; }
    void SetBackgroundColor(const ZqColorRGBA& color) { m_background = color; }

    // The name of the message dispatcher through which an interactive host routes input to this
    // scene; a headless scene only keeps it for that host.
    const CString& GetMessageDispatcherName() const { return m_dispatcherName; }
    void SetMessageDispatcherName(const CString& name) { m_dispatcherName = name; }

    // Points the active camera (nothing happens without one) along direction at the centre of the
    // bounds of root, keeping the camera's up vector as far as it is not parallel to direction.
    // distance > 0: the camera stands that far from the centre.
    // distance 0 (or less): it frames the bounds: it stands just far enough back that all eight
    // corners of the bounding box lie inside its field of view with a margin of 5 %, so the object
    // fills the picture whatever its size. The clip planes enclose the bounds either way. Empty
    // bounds count as the unit cube around the origin.
    void LookAt(const ZqSceneObject& root, const CbVector3f& direction, float distance);

    // Draws one frame (creating the device when needed): clears to the background, initialises the
    // view items, draws the graph through the active camera with its lights, waits for the result.
    void Render();
    // Rendering starts now: there is no message loop to defer the frame to.
    void InitiateRendering() { Render(); }
    // The last frame, top row first, 8-bit RGBA; false before the device exists.
    bool GetScreenshot(ZqBitmap& image);
    // Gives back the device resources of the scene graph (objects and view items); the next frame
    // makes them again.
    void ReleaseDeviceResources();

private:
    float getAspect() const;

    SRect m_windowRect;
    unsigned int m_flags;
    ZqSceneGraph m_graph;
    ZqColorRGBA m_background = ZqColorRGBA::Black;
    CString m_dispatcherName;
    std::unique_ptr<Graphics::IDevice> m_device;
};
