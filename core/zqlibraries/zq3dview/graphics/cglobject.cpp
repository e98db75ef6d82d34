#include "zq3dview/graphics/cglobject.h"

#include <epoxy/egl.h>
#include <epoxy/gl.h>

namespace Graphics
{
namespace
{
bool hasCurrentContext() noexcept
{
    return eglGetCurrentContext() != EGL_NO_CONTEXT;
}
} // namespace

void SBufferTraits::Delete(unsigned int name) noexcept
{
    if (hasCurrentContext())
        glDeleteBuffers(1, &name);
}

void SVertexArrayTraits::Delete(unsigned int name) noexcept
{
    if (hasCurrentContext())
        glDeleteVertexArrays(1, &name);
}

void SShaderTraits::Delete(unsigned int name) noexcept
{
    if (hasCurrentContext())
        glDeleteShader(name);
}

void SProgramTraits::Delete(unsigned int name) noexcept
{
    if (hasCurrentContext())
        glDeleteProgram(name);
}

void SRenderbufferTraits::Delete(unsigned int name) noexcept
{
    if (hasCurrentContext())
        glDeleteRenderbuffers(1, &name);
}

void SFramebufferTraits::Delete(unsigned int name) noexcept
{
    if (hasCurrentContext())
        glDeleteFramebuffers(1, &name);
}
} // namespace Graphics
