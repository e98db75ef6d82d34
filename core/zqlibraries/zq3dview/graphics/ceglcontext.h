#pragma once

#include "basepool/inoncopyable.h"
#include "zq3dview/zq3dview_export.h"

#include <string>

namespace Graphics
{
struct SEglDisplay;

// An OpenGL 4.5 core context without a window, made through EGL and current on the thread that made
// it. Which EGL platform serves it is decided when it is made, from $ZQ_EGL_PLATFORM:
//   "surfaceless"  Mesa's surfaceless platform (llvmpipe, or Mesa's driver of a local GPU);
//   "device"       the EGL device platform: the first device that is not a software renderer,
//                  else the first device;
//   unset, "auto"  the device platform when a device that is not a software renderer exists (a
//                  GPU), else the surfaceless platform: llvmpipe on a machine without GPU.
// Contexts of one platform share one initialised display, kept for the life of the process.
//
// When no 4.5 core context can be had the constructor throws CExceptionGraphics with one line that
// names what was found (no EGL library, no platform, or the version the driver offers instead).
class ZQ3DVIEW_API CEglContext : private INonCopyable
{
public:
    static constexpr const char* kPlatformVariable = "ZQ_EGL_PLATFORM";

    CEglContext();
    ~CEglContext();

    // Throws CExceptionGraphics when EGL refuses.
    void MakeCurrent() const;
    // False when EGL refuses; for destructors.
    bool TryMakeCurrent() const noexcept;
    // "EGL surfaceless" or "EGL device <n>" with the device's driver when EGL names it.
    const std::string& GetPlatformName() const { return m_platformName; }

private:
    SEglDisplay* m_display = nullptr;
    void* m_context = nullptr;
    std::string m_platformName;
};
} // namespace Graphics
