#include "zq3dview/graphics/cglobject.h"

#include <epoxy/egl.h>
#include <epoxy/gl.h>

namespace Graphics
{
void* GetCurrentContext() noexcept
{
    return eglGetCurrentContext();
}

void SBufferTraits::Delete(unsigned int name) noexcept
{
    glDeleteBuffers(1, &name);
}

void SVertexArrayTraits::Delete(unsigned int name) noexcept
{
    glDeleteVertexArrays(1, &name);
}

void SShaderTraits::Delete(unsigned int name) noexcept
{
    glDeleteShader(name);
}

void SProgramTraits::Delete(unsigned int name) noexcept
{
    glDeleteProgram(name);
}

void SRenderbufferTraits::Delete(unsigned int name) noexcept
{
    glDeleteRenderbuffers(1, &name);
}

void SFramebufferTraits::Delete(unsigned int name) noexcept
{
    glDeleteFramebuffers(1, &name);
}
} // namespace Graphics
