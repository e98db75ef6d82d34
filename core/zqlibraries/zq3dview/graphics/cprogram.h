#pragma once

#include "zq3dview/graphics/cglobject.h"

class ZqColorRGBA;

namespace Graphics
{
// A linked shader program of a vertex and a fragment shader (GLSL 4.50). Uniforms are set through
// the program's name (direct state access), so setting them does not disturb what is bound.
class ZQ3DVIEW_API CProgram : public CGLObject<SProgramTraits>
{
public:
    CProgram() = default;
    // Compiles and links; throws CExceptionGraphics with label and the first line of the driver's
    // log when a stage does not compile or the program does not link.
    static CProgram Build(const char* label, const char* vertexSource, const char* fragmentSource);

    // The location of a uniform, -1 when the program has none of that name (the optimiser drops
    // unused ones; setting location -1 is a no-op in GL).
    int GetUniformLocation(const char* name) const;

    void Use() const;
    void SetUniform(int location, int value) const;
    void SetUniform(int location, float value) const;
    // count vectors of 3 or 4 floats, or 3 x 3 and 4 x 4 matrices in column order.
    void SetUniformVec3(int location, const float* values, int count = 1) const;
    void SetUniformVec4(int location, const float* values, int count = 1) const;
    void SetUniformMat3(int location, const float* values) const;
    void SetUniformMat4(int location, const float* values) const;
    // A colour as vec4 (r, g, b, a).
    void SetUniformColor(int location, const ZqColorRGBA& color) const;

private:
    using CGLObject::CGLObject;
};
} // namespace Graphics
