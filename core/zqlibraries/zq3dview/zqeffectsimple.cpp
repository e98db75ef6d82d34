#include "zq3dview/zqeffectsimple.h"

#include "zq3dview/zqeffectproperties.h"

namespace
{
const char* const s_vertexSource =
#include "zqeffectsimple.vert.inc"
    ;
const char* const s_fragmentSource =
#include "zqeffectsimple.frag.inc"
    ;
} // namespace

ZqEffectSimple::ZqEffectSimple() = default;

const char* ZqEffectSimple::getVertexShaderSource() const
{
    return s_vertexSource;
}

const char* ZqEffectSimple::getFragmentShaderSource() const
{
    return s_fragmentSource;
}

void ZqEffectSimple::initUniforms(const Graphics::CProgram& program)
{
    m_surfaceColor = program.GetUniformLocation("uSurfaceColor");
}

void ZqEffectSimple::setEffectConstants(const ZqDrawContext&, const ZqEffectProperties& properties)
{
    getProgram().SetUniformColor(m_surfaceColor, properties.GetColor(ZqEffectProperties::eC_Surface));
}
