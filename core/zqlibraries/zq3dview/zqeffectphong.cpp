#include "zq3dview/zqeffectphong.h"

#include "zq3dview/zqeffectproperties.h"

namespace
{
const char* const s_vertexSource =
#include "zqeffectphong.vert.inc"
    ;
const char* const s_fragmentSource =
#include "zqeffectphong.frag.inc"
    ;
} // namespace

ZqEffectPhong::ZqEffectPhong() = default;

const char* ZqEffectPhong::getVertexShaderSource() const
{
    return s_vertexSource;
}

const char* ZqEffectPhong::getFragmentShaderSource() const
{
    return s_fragmentSource;
}

void ZqEffectPhong::initUniforms(const Graphics::CProgram& program)
{
    m_surfaceColor = program.GetUniformLocation("uSurfaceColor");
    m_highlightColor = program.GetUniformLocation("uHighlightColor");
    m_ambientLocation = program.GetUniformLocation("uAmbient");
    m_shininessLocation = program.GetUniformLocation("uShininess");
}

void ZqEffectPhong::setEffectConstants(const ZqDrawContext&, const ZqEffectProperties& properties)
{
    const Graphics::CProgram& program = getProgram();
    program.SetUniformColor(m_surfaceColor, properties.GetColor(ZqEffectProperties::eC_Surface));
    program.SetUniformColor(m_highlightColor, properties.GetColor(ZqEffectProperties::eC_Highlight));
    program.SetUniform(m_ambientLocation, m_ambient);
    program.SetUniform(m_shininessLocation, m_shininess);
}
