#pragma once

#include "basepool/cstring.h"
#include "zq3dview/graphics/cbuffer.h"
#include "zq3dview/graphics/cprogram.h"
#include "zq3dview/graphics/cvertexarray.h"
#include "zq3dview/zq3dview_export.h"

#include <cstddef>
#include <string>

class ZqBitmap;
class ZqColorRGBA;

namespace Graphics
{
// What renders: the three strings of the OpenGL driver and the EGL platform that serves it.
struct ZQ3DVIEW_API SRendererInfo
{
    std::string vendor;   // GL_VENDOR
    std::string renderer; // GL_RENDERER
    std::string version;  // GL_VERSION
    std::string platform; // "EGL surfaceless", "EGL device 0", ...

    // "GL_VENDOR / GL_RENDERER / GL_VERSION (platform)", for reports.
    CString ToString() const;
    // GL_RENDERER reduced to letters, digits, '.', '-' and '_' (others become '_'), usable as a
    // folder name: "llvmpipe (LLVM 15.0.6, 256 bits)" gives "llvmpipe_LLVM_15.0.6_256_bits".
    CString GetFolderName() const;
};

// A graphics device: an OpenGL 4.5 core context with an off-screen framebuffer of a fixed size,
// which hands out the GL objects that scenes and effects own. Every GL object lives in the
// context of the device that made it; a scene releases its objects before its device goes.
class ZQ3DVIEW_API IDevice
{
public:
    virtual ~IDevice() = default;

    virtual const SRendererInfo& GetRendererInfo() const = 0;
    virtual unsigned int GetWidth() const = 0;
    virtual unsigned int GetHeight() const = 0;

    // Makes the device's context current on this thread.
    virtual void MakeCurrent() = 0;

    virtual CBuffer CreateBuffer(const void* data, std::size_t size) = 0;
    virtual CVertexArray CreateVertexArray() = 0;
    // Compiles and links a GLSL 4.50 program; label names it in errors.
    virtual CProgram CreateProgram(const char* label, const char* vertexSource,
                                   const char* fragmentSource) = 0;

    // Binds the framebuffer and clears it to background with depth 1.
    virtual void BeginFrame(const ZqColorRGBA& background) = 0;
    // Waits until every command of the frame has finished (glFinish).
    virtual void EndFrame() = 0;
    // The framebuffer's pixels, top row first, 8-bit RGBA.
    virtual void ReadPixels(ZqBitmap& image) = 0;

    // Throws CExceptionGraphics naming where when GL has recorded errors since the last check.
    virtual void CheckErrors(const char* where) = 0;
};
} // namespace Graphics
