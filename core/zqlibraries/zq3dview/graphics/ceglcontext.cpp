#include "zq3dview/graphics/ceglcontext.h"

#include "zq3dview/graphics/cexceptiongraphics.h"

#include <epoxy/egl.h>
#include <epoxy/gl.h>

#include <dlfcn.h>

#include <cstdlib>
#include <cstring>
#include <memory>
#include <mutex>
#include <vector>

namespace Graphics
{
namespace
{
const char* const kFunction = "Graphics::CEglContext::CEglContext";

[[noreturn]] void fail(const std::string& detail)
{
    throw CExceptionGraphics(__FILE__, __LINE__, kFunction, detail);
}

std::string eglErrorName(EGLint error)
{
    switch (error)
    {
    case EGL_NOT_INITIALIZED:
        return "EGL_NOT_INITIALIZED";
    case EGL_BAD_ACCESS:
        return "EGL_BAD_ACCESS";
    case EGL_BAD_ALLOC:
        return "EGL_BAD_ALLOC";
    case EGL_BAD_ATTRIBUTE:
        return "EGL_BAD_ATTRIBUTE";
    case EGL_BAD_CONFIG:
        return "EGL_BAD_CONFIG";
    case EGL_BAD_CONTEXT:
        return "EGL_BAD_CONTEXT";
    case EGL_BAD_DISPLAY:
        return "EGL_BAD_DISPLAY";
    case EGL_BAD_MATCH:
        return "EGL_BAD_MATCH";
    case EGL_BAD_PARAMETER:
        return "EGL_BAD_PARAMETER";
    default:
        return "EGL error " + std::to_string(error);
    }
}

bool hasExtension(const char* list, const char* name)
{
    if (!list)
        return false;
    const std::size_t length = std::strlen(name);
    for (const char* p = list; (p = std::strstr(p, name)) != nullptr; p += length)
        if ((p == list || p[-1] == ' ') && (p[length] == ' ' || p[length] == '\0'))
            return true;
    return false;
}

// libepoxy loads libEGL itself and aborts the process when it cannot; loading it first turns a
// machine without EGL into an error message.
void requireEglLibrary()
{
    static void* const library = dlopen("libEGL.so.1", RTLD_NOW | RTLD_GLOBAL);
    if (!library)
        fail("no EGL library: libEGL.so.1 cannot be loaded");
}

enum class EChoice
{
    eAuto,
    eSurfaceless,
    eDevice
};

EChoice choiceFromEnvironment()
{
    const char* value = std::getenv(CEglContext::kPlatformVariable);
    if (!value || !*value || std::strcmp(value, "auto") == 0)
        return EChoice::eAuto;
    if (std::strcmp(value, "surfaceless") == 0)
        return EChoice::eSurfaceless;
    if (std::strcmp(value, "device") == 0)
        return EChoice::eDevice;
    fail(std::string("unknown ") + CEglContext::kPlatformVariable + " '" + value +
         "' (surfaceless, device or auto)");
}

struct SDeviceChoice
{
    EGLDeviceEXT device = EGL_NO_DEVICE_EXT;
    int index = -1;
    bool software = true;
};

// The first device that is not a software renderer, else the first device. NVIDIA advertises
// EGL_EXT_device_base rather than EGL_EXT_device_enumeration (driver 580); both provide the query.
SDeviceChoice findDevice(const char* clientExtensions)
{
    SDeviceChoice choice;
    if (!hasExtension(clientExtensions, "EGL_EXT_platform_device") ||
        !(hasExtension(clientExtensions, "EGL_EXT_device_enumeration") ||
          hasExtension(clientExtensions, "EGL_EXT_device_base")))
        return choice;
    EGLDeviceEXT devices[16];
    EGLint count = 0;
    if (!eglQueryDevicesEXT(16, devices, &count))
        return choice;
    for (EGLint i = 0; i < count; ++i)
    {
        const bool software =
            hasExtension(eglQueryDeviceStringEXT(devices[i], EGL_EXTENSIONS), "EGL_MESA_device_software");
        if (choice.index < 0 || (choice.software && !software))
            choice = {devices[i], int(i), software};
    }
    return choice;
}
} // namespace

// One initialised display per platform and device, shared by the contexts made on it. Displays are
// never terminated: terminating unloads the driver, the next display loads it again (20 ms on
// llvmpipe), and Mesa 22.3 leaks a little at every load. The process's exit frees them.
struct SEglDisplay
{
    EGLenum platform = 0;
    void* nativeDisplay = nullptr;
    EGLDisplay display = EGL_NO_DISPLAY;
    std::string name;
};

namespace
{
std::mutex s_displayMutex;
std::vector<std::unique_ptr<SEglDisplay>> s_displays;

// The platform and native display that the environment asks for, with a name for messages.
SEglDisplay choosePlatform()
{
    const EChoice choice = choiceFromEnvironment();
    const char* clientExtensions = eglQueryString(EGL_NO_DISPLAY, EGL_EXTENSIONS);
    if (!hasExtension(clientExtensions, "EGL_EXT_platform_base"))
        fail("EGL without EGL_EXT_platform_base: no display without a window system");
    const bool surfaceless = hasExtension(clientExtensions, "EGL_MESA_platform_surfaceless");
    const SDeviceChoice device =
        choice == EChoice::eSurfaceless ? SDeviceChoice() : findDevice(clientExtensions);
    const bool useDevice = choice == EChoice::eDevice ? device.index >= 0
                                                      : choice == EChoice::eAuto && device.index >= 0 &&
                                                            (!device.software || !surfaceless);
    SEglDisplay platform;
    if (useDevice)
    {
        platform.platform = EGL_PLATFORM_DEVICE_EXT;
        platform.nativeDisplay = device.device;
        platform.name = "EGL device " + std::to_string(device.index) + (device.software ? " (software)" : "");
    }
    else if (choice != EChoice::eDevice && surfaceless)
    {
        platform.platform = EGL_PLATFORM_SURFACELESS_MESA;
        platform.nativeDisplay = EGL_DEFAULT_DISPLAY;
        platform.name = "EGL surfaceless";
    }
    else
        fail(choice == EChoice::eDevice ? "EGL offers no device platform or no device"
                                        : "EGL offers neither the surfaceless nor the device platform");
    return platform;
}

// Finds or initialises the display of the chosen platform.
// eglGetPlatformDisplayEXT, not the EGL 1.5 core eglGetPlatformDisplay: libepoxy cannot resolve a
// core entry point before a display exists (libepoxy 1.5.10).
SEglDisplay* acquireDisplay()
{
    requireEglLibrary();
    const SEglDisplay wanted = choosePlatform();
    std::lock_guard<std::mutex> lock(s_displayMutex);
    for (const auto& display : s_displays)
        if (display->platform == wanted.platform && display->nativeDisplay == wanted.nativeDisplay)
            return display.get();
    auto display = std::make_unique<SEglDisplay>(wanted);
    display->display = eglGetPlatformDisplayEXT(wanted.platform, wanted.nativeDisplay, nullptr);
    EGLint major = 0, minor = 0;
    if (display->display == EGL_NO_DISPLAY || !eglInitialize(display->display, &major, &minor))
        fail(wanted.name + ": no display (" + eglErrorName(eglGetError()) + ")");
    const char* extensions = eglQueryString(display->display, EGL_EXTENSIONS);
    if (!hasExtension(extensions, "EGL_KHR_surfaceless_context"))
    {
        eglTerminate(display->display);
        fail(wanted.name + ": contexts need a surface (no EGL_KHR_surfaceless_context)");
    }
    s_displays.push_back(std::move(display));
    return s_displays.back().get();
}

// A configuration for contexts that never draw to an EGL surface: none at all where the display
// allows that, else any that can render OpenGL.
EGLConfig chooseConfig(EGLDisplay display)
{
    if (hasExtension(eglQueryString(display, EGL_EXTENSIONS), "EGL_KHR_no_config_context"))
        return EGL_NO_CONFIG_KHR;
    const EGLint attributes[] = {EGL_RENDERABLE_TYPE, EGL_OPENGL_BIT, EGL_NONE};
    EGLConfig config = nullptr;
    EGLint count = 0;
    if (!eglChooseConfig(display, attributes, &config, 1, &count) || count < 1)
        return nullptr;
    return config;
}

// What the driver offers when it refuses a 4.5 core context: the version and renderer of a
// context made without asking for a version, for the error message.
std::string describeOffer(EGLDisplay display, EGLConfig config)
{
    EGLContext context = eglCreateContext(display, config, EGL_NO_CONTEXT, nullptr);
    if (context == EGL_NO_CONTEXT)
        return "no OpenGL context at all";
    std::string offer = "nothing readable";
    if (eglMakeCurrent(display, EGL_NO_SURFACE, EGL_NO_SURFACE, context))
    {
        const auto* version = reinterpret_cast<const char*>(glGetString(GL_VERSION));
        const auto* renderer = reinterpret_cast<const char*>(glGetString(GL_RENDERER));
        offer = std::string(version ? version : "an unknown version") + " on " + (renderer ? renderer : "?");
        eglMakeCurrent(display, EGL_NO_SURFACE, EGL_NO_SURFACE, EGL_NO_CONTEXT);
    }
    eglDestroyContext(display, context);
    return offer;
}
} // namespace

CEglContext::CEglContext()
{
    m_display = acquireDisplay();
    m_platformName = m_display->name;
    const EGLDisplay display = m_display->display;
    try
    {
        if (!eglBindAPI(EGL_OPENGL_API))
            fail(m_platformName + ": no desktop OpenGL (" + eglErrorName(eglGetError()) + ")");
        const EGLConfig config = chooseConfig(display);
        const EGLint attributes[] = {EGL_CONTEXT_MAJOR_VERSION,
                                     4,
                                     EGL_CONTEXT_MINOR_VERSION,
                                     5,
                                     EGL_CONTEXT_OPENGL_PROFILE_MASK,
                                     EGL_CONTEXT_OPENGL_CORE_PROFILE_BIT,
                                     EGL_NONE};
        m_context = eglCreateContext(display, config, EGL_NO_CONTEXT, attributes);
        if (m_context == EGL_NO_CONTEXT)
        {
            const std::string error = eglErrorName(eglGetError());
            fail("no OpenGL 4.5 core context on " + m_platformName + ": eglCreateContext failed (" + error +
                 "); the driver offers " + describeOffer(display, config));
        }
        MakeCurrent();
        if (epoxy_gl_version() < 45 || epoxy_is_desktop_gl() == 0)
            fail("no OpenGL 4.5 core context on " + m_platformName + ": the context reports " +
                 reinterpret_cast<const char*>(glGetString(GL_VERSION)));
    }
    catch (...)
    {
        if (m_context != EGL_NO_CONTEXT)
        {
            eglMakeCurrent(display, EGL_NO_SURFACE, EGL_NO_SURFACE, EGL_NO_CONTEXT);
            eglDestroyContext(display, m_context);
        }
        throw;
    }
}

CEglContext::~CEglContext()
{
    const EGLDisplay display = m_display->display;
    if (eglGetCurrentContext() == m_context)
        eglMakeCurrent(display, EGL_NO_SURFACE, EGL_NO_SURFACE, EGL_NO_CONTEXT);
    eglDestroyContext(display, m_context);
}

bool CEglContext::TryMakeCurrent() const noexcept
{
    return eglGetCurrentContext() == m_context ||
           eglMakeCurrent(m_display->display, EGL_NO_SURFACE, EGL_NO_SURFACE, m_context);
}

void CEglContext::MakeCurrent() const
{
    if (!TryMakeCurrent())
        throw CExceptionGraphics(__FILE__, __LINE__, "Graphics::CEglContext::MakeCurrent",
                                 m_platformName + ": eglMakeCurrent failed (" + eglErrorName(eglGetError()) +
                                     ")");
}
} // namespace Graphics
