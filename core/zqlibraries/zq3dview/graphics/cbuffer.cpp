#include "zq3dview/graphics/cbuffer.h"

#include "zq3dview/graphics/cexceptiongraphics.h"

#include <epoxy/gl.h>

namespace Graphics
{
namespace
{
unsigned int createBuffer(const void* data, std::size_t size)
{
    GLuint name = 0;
    glCreateBuffers(1, &name);
    // An empty mesh still gets a valid buffer: storage of size 0 is an error in GL.
    glNamedBufferStorage(name, size ? GLsizeiptr(size) : 1, size ? data : nullptr, 0);
    return name;
}
} // namespace

CBuffer::CBuffer(const void* data, std::size_t size) : CGLObject(createBuffer(data, size)), m_size(size)
{
    CExceptionGraphics::ThrowOnGLError("Graphics::CBuffer::CBuffer");
}
} // namespace Graphics
