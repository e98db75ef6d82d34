#include "zq3dview/graphics/cdevicegl.h"

#include "zq3dview/graphics/cexceptiongraphics.h"
#include "zqbase/zqbitmap.h"
#include "zqbase/zqcolorrgba.h"

#include <epoxy/gl.h>

#include <algorithm>
#include <vector>

namespace Graphics
{
namespace
{
std::string glString(GLenum name)
{
    const auto* text = reinterpret_cast<const char*>(glGetString(name));
    return text ? text : "";
}
} // namespace

CString SRendererInfo::ToString() const
{
    return CString(CbUtf8ToWide(vendor + " / " + renderer + " / " + version + " (" + platform + ")"));
}

CString SRendererInfo::GetFolderName() const
{
    std::string name = renderer;
    for (char& c : name)
        if (!((c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') || c == '.' ||
              c == '-'))
            c = '_';
    // Runs of '_' from ", " and " (" collapse to one.
    name.erase(std::unique(name.begin(), name.end(), [](char a, char b) { return a == '_' && b == '_'; }),
               name.end());
    while (!name.empty() && name.back() == '_')
        name.pop_back();
    return CString(CbUtf8ToWide(name));
}

CDeviceGL::CDeviceGL(unsigned int width, unsigned int height)
    : m_width(width), m_height(height), m_context(std::make_unique<CEglContext>())
{
    m_info = {glString(GL_VENDOR), glString(GL_RENDERER), glString(GL_VERSION), m_context->GetPlatformName()};
    createFramebuffer();
}

CDeviceGL::~CDeviceGL()
{
    // The GL names go while their context is current (a context that cannot be made current keeps
    // them until it is destroyed); the context goes last.
    m_context->TryMakeCurrent();
    m_framebuffer.Reset();
    m_depth.Reset();
    m_colour.Reset();
}

void CDeviceGL::createFramebuffer()
{
    GLuint names[2] = {};
    glCreateRenderbuffers(2, names);
    m_colour = CRenderbufferName(names[0]);
    m_depth = CRenderbufferName(names[1]);
    glNamedRenderbufferStorage(m_colour.GetName(), GL_RGBA8, GLsizei(m_width), GLsizei(m_height));
    glNamedRenderbufferStorage(m_depth.GetName(), GL_DEPTH_COMPONENT24, GLsizei(m_width), GLsizei(m_height));
    GLuint framebuffer = 0;
    glCreateFramebuffers(1, &framebuffer);
    m_framebuffer = CGLObject<SFramebufferTraits>(framebuffer);
    glNamedFramebufferRenderbuffer(framebuffer, GL_COLOR_ATTACHMENT0, GL_RENDERBUFFER, m_colour.GetName());
    glNamedFramebufferRenderbuffer(framebuffer, GL_DEPTH_ATTACHMENT, GL_RENDERBUFFER, m_depth.GetName());
    const GLenum status = glCheckNamedFramebufferStatus(framebuffer, GL_FRAMEBUFFER);
    CheckErrors("Graphics::CDeviceGL::createFramebuffer");
    if (status != GL_FRAMEBUFFER_COMPLETE)
        throw CExceptionGraphics(__FILE__, __LINE__, "Graphics::CDeviceGL::createFramebuffer",
                                 "framebuffer of " + std::to_string(m_width) + " x " +
                                     std::to_string(m_height) + " incomplete (status " +
                                     std::to_string(status) + ")");
}

void CDeviceGL::MakeCurrent()
{
    m_context->MakeCurrent();
}

CBuffer CDeviceGL::CreateBuffer(const void* data, std::size_t size)
{
    MakeCurrent();
    return CBuffer(data, size);
}

CVertexArray CDeviceGL::CreateVertexArray()
{
    MakeCurrent();
    return CVertexArray::Create();
}

CProgram CDeviceGL::CreateProgram(const char* label, const char* vertexSource, const char* fragmentSource)
{
    MakeCurrent();
    return CProgram::Build(label, vertexSource, fragmentSource);
}

void CDeviceGL::BeginFrame(const ZqColorRGBA& background)
{
    MakeCurrent();
    glBindFramebuffer(GL_FRAMEBUFFER, m_framebuffer.GetName());
    glViewport(0, 0, GLsizei(m_width), GLsizei(m_height));
    glDisable(GL_DITHER);
    glDisable(GL_BLEND);
    glDisable(GL_CULL_FACE);
    glEnable(GL_DEPTH_TEST);
    glDepthFunc(GL_LESS);
    glDepthMask(GL_TRUE);
    glClearColor(background.r, background.g, background.b, background.a);
    glClearDepth(1.0);
    glClear(GL_COLOR_BUFFER_BIT | GL_DEPTH_BUFFER_BIT);
    CheckErrors("Graphics::CDeviceGL::BeginFrame");
}

void CDeviceGL::EndFrame()
{
    glFinish();
    CheckErrors("Graphics::CDeviceGL::EndFrame");
}

void CDeviceGL::ReadPixels(ZqBitmap& image)
{
    MakeCurrent();
    image.Create(m_width, m_height);
    glBindFramebuffer(GL_READ_FRAMEBUFFER, m_framebuffer.GetName());
    glReadBuffer(GL_COLOR_ATTACHMENT0);
    glPixelStorei(GL_PACK_ALIGNMENT, 4);
    glReadPixels(0, 0, GLsizei(m_width), GLsizei(m_height), GL_RGBA, GL_UNSIGNED_BYTE, image.GetRow(0));
    CheckErrors("Graphics::CDeviceGL::ReadPixels");
    // GL's first row is the bottom one; the bitmap's is the top one.
    const std::size_t stride = image.GetStride();
    std::vector<std::uint8_t> swap(stride);
    for (unsigned int top = 0, bottom = m_height - 1; top < bottom; ++top, --bottom)
    {
        std::copy_n(image.GetRow(top), stride, swap.data());
        std::copy_n(image.GetRow(bottom), stride, image.GetRow(top));
        std::copy_n(swap.data(), stride, image.GetRow(bottom));
    }
}

void CDeviceGL::CheckErrors(const char* where)
{
    CExceptionGraphics::ThrowOnGLError(where);
}
} // namespace Graphics
