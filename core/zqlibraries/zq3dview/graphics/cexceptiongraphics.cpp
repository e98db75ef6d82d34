#include "zq3dview/graphics/cexceptiongraphics.h"

#include <epoxy/gl.h>

#include <string>

namespace Graphics
{
CExceptionGraphics::~CExceptionGraphics() = default;

const char* CExceptionGraphics::GetKind() const
{
    return "Graphics::CExceptionGraphics";
}

namespace
{
const char* errorName(GLenum error)
{
    switch (error)
    {
    case GL_INVALID_ENUM:
        return "GL_INVALID_ENUM";
    case GL_INVALID_VALUE:
        return "GL_INVALID_VALUE";
    case GL_INVALID_OPERATION:
        return "GL_INVALID_OPERATION";
    case GL_INVALID_FRAMEBUFFER_OPERATION:
        return "GL_INVALID_FRAMEBUFFER_OPERATION";
    case GL_OUT_OF_MEMORY:
        return "GL_OUT_OF_MEMORY";
    case GL_STACK_OVERFLOW:
        return "GL_STACK_OVERFLOW";
    case GL_STACK_UNDERFLOW:
        return "GL_STACK_UNDERFLOW";
    default:
        return "unknown GL error";
    }
}
} // namespace

void CExceptionGraphics::ThrowOnGLError(const char* where)
{
    std::string errors;
    // glGetError returns one recorded flag per call; a context can hold several. The bound keeps a
    // lost context (which may report an error forever) from looping.
    for (int i = 0; i < 16; ++i)
    {
        const GLenum error = glGetError();
        if (error == GL_NO_ERROR)
            break;
        errors += (errors.empty() ? "" : ", ") + std::string(errorName(error));
    }
    if (!errors.empty())
        throw CExceptionGraphics(__FILE__, __LINE__, where, errors);
}
} // namespace Graphics
