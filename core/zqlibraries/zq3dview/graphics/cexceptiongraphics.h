#pragma once

#include "basepool/cbexception.h"
#include "zq3dview/zq3dview_export.h"

namespace Graphics
{
// A graphics device could not do what was asked: no usable OpenGL 4.5, a GL error after a block
// of calls, a shader that does not compile. The detail is one line naming what was found, e.g.
// "no OpenGL 4.5 core context on EGL surfaceless: eglCreateContext failed (EGL_BAD_MATCH); the
// driver offers 3.3 (Compatibility Profile) Mesa 22.3.6 on llvmpipe (LLVM 15.0.6, 256 bits)".
class ZQ3DVIEW_API CExceptionGraphics : public CbException
{
public:
    using CbException::CbException;
    ~CExceptionGraphics() override;
    const char* GetKind() const override;

    // Throws when glGetError reports errors, naming them and where (the function that ran the block).
    static void ThrowOnGLError(const char* where);
};
} // namespace Graphics
