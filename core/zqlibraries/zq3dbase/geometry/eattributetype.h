#pragma once

#include "basepool/cbvector2.h"
#include "basepool/cbvector3.h"
#include "zqbase/zqcolorrgba.h"

namespace Geometry
{
// Value type of a named attribute of a CTriangulation. The numbers are stored in streams.
enum EAttributeType : unsigned int
{
    eAT_Float = 1,
    eAT_Double = 2,
    eAT_Vector3f = 3,
    eAT_ColorRGBA = 4,
    eAT_Vector2f = 5,
    eAT_UnsignedInt = 6,
};

// Bytes of one value of type; 0 for a number that names no type.
constexpr unsigned int AttributeTypeSize(unsigned int type)
{
    switch (type)
    {
    case eAT_Float:
        return sizeof(float);
    case eAT_Double:
        return sizeof(double);
    case eAT_Vector3f:
        return sizeof(CbVector3f);
    case eAT_ColorRGBA:
        return sizeof(ZqColorRGBA);
    case eAT_Vector2f:
        return sizeof(CbVector2f);
    case eAT_UnsignedInt:
        return sizeof(unsigned int);
    default:
        return 0;
    }
}

// The EAttributeType of a C++ value type; only the attribute types have one.
template <class T> struct SAttributeTypeOf;
template <> struct SAttributeTypeOf<float>
{
    static constexpr EAttributeType value = eAT_Float;
};
template <> struct SAttributeTypeOf<double>
{
    static constexpr EAttributeType value = eAT_Double;
};
template <> struct SAttributeTypeOf<CbVector3f>
{
    static constexpr EAttributeType value = eAT_Vector3f;
};
template <> struct SAttributeTypeOf<ZqColorRGBA>
{
    static constexpr EAttributeType value = eAT_ColorRGBA;
};
template <> struct SAttributeTypeOf<CbVector2f>
{
    static constexpr EAttributeType value = eAT_Vector2f;
};
template <> struct SAttributeTypeOf<unsigned int>
{
    static constexpr EAttributeType value = eAT_UnsignedInt;
};

static_assert(sizeof(CbVector2f) == 8 && sizeof(CbVector3f) == 12 && sizeof(ZqColorRGBA) == 16,
              "attribute values are packed 32-bit scalars or one double");
} // namespace Geometry
