#include "zq3dview/zqeffect.h"

#include "basepool/cbexception.h"
#include "zq3dview/graphics/idevice.h"
#include "zq3dview/zqdrawcontext.h"

#include <epoxy/gl.h>

#include <string>

ZqEffect::ZqEffect() = default;

ZqEffect::~ZqEffect() = default;

void ZqEffect::Init(Graphics::IDevice& device)
{
    m_program = device.CreateProgram(GetEffectName(), getVertexShaderSource(), getFragmentShaderSource());
    m_modelView = m_program.GetUniformLocation("uModelView");
    m_projection = m_program.GetUniformLocation("uProjection");
    m_lightCount = m_program.GetUniformLocation("uLightCount");
    m_lightTowards = m_program.GetUniformLocation("uLightTowards");
    m_lightAmbient = m_program.GetUniformLocation("uLightAmbient");
    m_lightDiffuse = m_program.GetUniformLocation("uLightDiffuse");
    m_lightSpecular = m_program.GetUniformLocation("uLightSpecular");
    initUniforms(m_program);
}

void ZqEffect::Release()
{
    m_program.Reset();
}

void ZqEffect::initUniforms(const Graphics::CProgram&) {}

void ZqEffect::setCommonConstants(const ZqDrawContext& context) const
{
    // Objects carry no transform, so the model-view matrix is the view matrix.
    m_program.SetUniformMat4(m_modelView, context.view.GetData());
    m_program.SetUniformMat4(m_projection, context.projection.GetData());
    const int count = int(context.lightCount);
    m_program.SetUniform(m_lightCount, count);
    if (count == 0)
        return;
    float towards[ZqDrawContext::kMaxLights * 3], ambient[ZqDrawContext::kMaxLights * 4],
        diffuse[ZqDrawContext::kMaxLights * 4], specular[ZqDrawContext::kMaxLights * 4];
    const auto put = [](float* out, const ZqColorRGBA& c)
    {
        out[0] = c.r;
        out[1] = c.g;
        out[2] = c.b;
        out[3] = c.a;
    };
    for (int i = 0; i < count; ++i)
    {
        const ZqDrawContext::SLight& light = context.lights[i];
        towards[i * 3] = light.towardsLight.x;
        towards[i * 3 + 1] = light.towardsLight.y;
        towards[i * 3 + 2] = light.towardsLight.z;
        put(ambient + i * 4, light.ambient);
        put(diffuse + i * 4, light.diffuse);
        put(specular + i * 4, light.specular);
    }
    m_program.SetUniformVec3(m_lightTowards, towards, count);
    m_program.SetUniformVec4(m_lightAmbient, ambient, count);
    m_program.SetUniformVec4(m_lightDiffuse, diffuse, count);
    m_program.SetUniformVec4(m_lightSpecular, specular, count);
}

void ZqEffect::DrawShader(const ZqDrawContext& context, const ZqMeshRange& range,
                          const ZqEffectProperties& properties)
{
    if (!IsInitialized())
        CB_THROW(CbExceptionPreconditionViolation, "ZqEffect::DrawShader",
                 std::string(GetEffectName()) +
                     " is not initialised: append it to the scene graph as a view item");
    if (range.indexCount == 0)
        return;
    setCommonConstants(context);
    setEffectConstants(context, properties);
    m_program.Use();
    range.vertexArray.Bind();
    glDrawElements(GL_TRIANGLES, GLsizei(range.indexCount), GL_UNSIGNED_INT,
                   reinterpret_cast<const void*>(std::size_t(range.firstIndex) * sizeof(std::uint32_t)));
    context.device.CheckErrors("ZqEffect::DrawShader");
}
