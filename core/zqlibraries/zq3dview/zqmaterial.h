#pragma once

#include "basepool/cbsmartpointer.h"
#include "zq3dview/zqeffect.h"
#include "zq3dview/zqeffectproperties.h"

// How a part of a mesh is drawn: the effect that shades it (its shader) and the properties the
// effect reads (colours). A material without a shader is not drawn; one without properties is drawn
// with the default ZqEffectProperties.
class ZqMaterial
{
public:
    const CbSmartPointer<ZqEffect>& GetShader() const { return m_shader; }
    void SetShader(const CbSmartPointer<ZqEffect>& shader) { m_shader = shader; }
    const CbSmartPointer<ZqEffectProperties>& GetEffectProperties() const { return m_properties; }
    void SetEffectProperties(const CbSmartPointer<ZqEffectProperties>& properties)
    {
        m_properties = properties;
    }

private:
    CbSmartPointer<ZqEffect> m_shader;
    CbSmartPointer<ZqEffectProperties> m_properties;
};
