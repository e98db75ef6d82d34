#include "zq3dview/graphics/cvertexarray.h"

#include "zq3dview/graphics/cexceptiongraphics.h"

#include <epoxy/gl.h>

namespace Graphics
{
CVertexArray CVertexArray::Create()
{
    GLuint name = 0;
    glCreateVertexArrays(1, &name);
    CVertexArray array(name);
    CExceptionGraphics::ThrowOnGLError("Graphics::CVertexArray::Create");
    return array;
}

void CVertexArray::SetFloatAttribute(unsigned int location, const CBuffer& buffer, unsigned int components,
                                     std::size_t stride, std::size_t offset)
{
    // One binding point per attribute keeps the mapping obvious; meshes have few attributes.
    glVertexArrayVertexBuffer(GetName(), location, buffer.GetName(), GLintptr(offset), GLsizei(stride));
    glVertexArrayAttribFormat(GetName(), location, GLint(components), GL_FLOAT, GL_FALSE, 0);
    glVertexArrayAttribBinding(GetName(), location, location);
    glEnableVertexArrayAttrib(GetName(), location);
    CExceptionGraphics::ThrowOnGLError("Graphics::CVertexArray::SetFloatAttribute");
}

void CVertexArray::SetIndexBuffer(const CBuffer& buffer)
{
    glVertexArrayElementBuffer(GetName(), buffer.GetName());
    CExceptionGraphics::ThrowOnGLError("Graphics::CVertexArray::SetIndexBuffer");
}

void CVertexArray::Bind() const
{
    glBindVertexArray(GetName());
}
} // namespace Graphics
