#pragma once

#include "zq3dview/zqeffect.h"

// Phong shading per fragment with every light of the scene: ambient light (a share of the surface
// colour), diffuse light in the surface colour (ZqEffectProperties colour 0) and a specular
// highlight in the highlight colour (colour 1). Both faces of a triangle are lit. Sources:
// zqeffectphong.vert, zqeffectphong.frag.
class ZQ3DVIEW_API ZqEffectPhong : public ZqEffect
{
public:
    ZqEffectPhong();

    // Share of the ambient light reflected, 0..1; 0.2 by default.
    float GetAmbient() const { return m_ambient; }
    void SetAmbient(float ambient) { m_ambient = ambient; }
    // Exponent of the highlight: larger is smaller and sharper; 32 by default.
    float GetShininess() const { return m_shininess; }
    void SetShininess(float shininess) { m_shininess = shininess; }

    const char* GetEffectName() const override { return "ZqEffectPhong"; }

protected:
    const char* getVertexShaderSource() const override;
    const char* getFragmentShaderSource() const override;
    void initUniforms(const Graphics::CProgram& program) override;
    void setEffectConstants(const ZqDrawContext& context, const ZqEffectProperties& properties) override;

private:
    float m_ambient = 0.2f;
    float m_shininess = 32.0f;
    int m_surfaceColor = -1;
    int m_highlightColor = -1;
    int m_ambientLocation = -1;
    int m_shininessLocation = -1;
};
