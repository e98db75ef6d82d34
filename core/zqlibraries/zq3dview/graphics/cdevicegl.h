#pragma once

#include "zq3dview/graphics/ceglcontext.h"
#include "zq3dview/graphics/idevice.h"

#include <memory>

namespace Graphics
{
// IDevice over an EGL context (CEglContext) with a framebuffer object of RGBA8 colour and 24-bit
// depth: the same path for llvmpipe and for a GPU. Dithering is off, so a frame depends only on
// its commands. Made and used on one thread.
class ZQ3DVIEW_API CDeviceGL : public IDevice, private INonCopyable
{
public:
    // Throws CExceptionGraphics when there is no usable OpenGL 4.5 (one line naming what was found)
    // or the framebuffer cannot be made.
    CDeviceGL(unsigned int width, unsigned int height);
    ~CDeviceGL() override;

    const SRendererInfo& GetRendererInfo() const override { return m_info; }
    unsigned int GetWidth() const override { return m_width; }
    unsigned int GetHeight() const override { return m_height; }
    void MakeCurrent() override;

    CBuffer CreateBuffer(const void* data, std::size_t size) override;
    CVertexArray CreateVertexArray() override;
    CProgram CreateProgram(const char* label, const char* vertexSource, const char* fragmentSource) override;

    void BeginFrame(const ZqColorRGBA& background) override;
    void EndFrame() override;
    void ReadPixels(ZqBitmap& image) override;
    void CheckErrors(const char* where) override;

private:
    void createFramebuffer();

    unsigned int m_width;
    unsigned int m_height;
    std::unique_ptr<CEglContext> m_context;
    SRendererInfo m_info;
    CRenderbufferName m_colour;
    CRenderbufferName m_depth;
    CGLObject<SFramebufferTraits> m_framebuffer;
};
} // namespace Graphics
