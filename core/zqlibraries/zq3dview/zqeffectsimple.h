#pragma once

#include "zq3dview/zqeffect.h"

// Unlit drawing: every triangle in the surface colour (ZqEffectProperties colour 0), with its
// alpha; lights and normals play no part. Sources: zqeffectsimple.vert, zqeffectsimple.frag.
class ZQ3DVIEW_API ZqEffectSimple : public ZqEffect
{
public:
    ZqEffectSimple();

    const char* GetEffectName() const override { return "ZqEffectSimple"; }

protected:
    const char* getVertexShaderSource() const override;
    const char* getFragmentShaderSource() const override;
    void initUniforms(const Graphics::CProgram& program) override;
    void setEffectConstants(const ZqDrawContext& context, const ZqEffectProperties& properties) override;

private:
    int m_surfaceColor = -1;
};
