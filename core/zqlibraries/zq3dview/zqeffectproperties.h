#pragma once

#include "basepool/cbexception.h"
#include "basepool/cbrefcounted.h"
#include "zqbase/zqcolorrgba.h"

#include <string>

// The colours an effect draws a material with; one object may serve several materials.
//   colour 0 (eC_Surface):   the surface: ambient and diffuse light are this colour, its alpha is the
//                            alpha written;
//   colour 1 (eC_Highlight): the specular highlight.
class ZqEffectProperties : public virtual CbRefCounted
{
public:
    enum EColor : unsigned int
    {
        eC_Surface = 0,
        eC_Highlight = 1,
        eC_Count = 2,
    };

    ZqEffectProperties() = default;
    ZqEffectProperties(const ZqColorRGBA& surface, const ZqColorRGBA& highlight)
        : m_colors{surface, highlight}
    {
    }

    // An index from eC_Count on throws CbExceptionPreconditionViolation.
    void SetColor(unsigned int index, const ZqColorRGBA& color)
    {
        m_colors[checked(index, "SetColor")] = color;
    }
    const ZqColorRGBA& GetColor(unsigned int index) const { return m_colors[checked(index, "GetColor")]; }

private:
    static unsigned int checked(unsigned int index, const char* function)
    {
        if (index >= eC_Count)
            CB_THROW(CbExceptionPreconditionViolation,
                     (std::string("ZqEffectProperties::") + function).c_str(),
                     "colour index " + std::to_string(index));
        return index;
    }

    ZqColorRGBA m_colors[eC_Count] = {ZqColorRGBA::Gray, ZqColorRGBA::White};
};
