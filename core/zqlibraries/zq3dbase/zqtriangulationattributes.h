#pragma once

#include "basepool/cbvector2.h"
#include "basepool/cbvector3.h"
#include "zqbase/zqcolorrgba.h"

#include <cstdint>

// The optional per-element data of a ZqTriangulationBase. Each attribute has a fixed value type and
// a name under which the triangulation file stores it (see docs/triangulation.md):
//
//     attribute          value type     file name      file layout
//     eVA_Color          ZqColorRGBA    "color"        4 x float32
//     eVA_Parameter      CbVector2f     "parameters"   2 x float32   (surface parameters, texture
//     coordinates) eVA_Normal         CbVector3f     "normal"       3 x float32 eVA_Scalar         float
//     "scalar"       1 x float32 eVA_Flags          unsigned int   "flags"        1 x uint32 eTA_Normal
//     CbVector3f     "normal"       3 x float32 eTA_Material       unsigned int   "material"     1 x uint32
//     eTA_Flags          unsigned int   "flags"        1 x uint32
enum EVertexAttribute : unsigned int
{
    eVA_Color = 0,
    eVA_Parameter = 1,
    eVA_Normal = 2,
    eVA_Scalar = 3,
    eVA_Flags = 4,
    eVA_Count = 5,
};

enum ETriangleAttribute : unsigned int
{
    eTA_Normal = 0,
    eTA_Material = 1,
    eTA_Flags = 2,
    eTA_Count = 3,
};

template <EVertexAttribute A> struct ZqVertexAttributeTraits;
template <> struct ZqVertexAttributeTraits<eVA_Color>
{
    using Type = ZqColorRGBA;
};
template <> struct ZqVertexAttributeTraits<eVA_Parameter>
{
    using Type = CbVector2f;
};
template <> struct ZqVertexAttributeTraits<eVA_Normal>
{
    using Type = CbVector3f;
};
template <> struct ZqVertexAttributeTraits<eVA_Scalar>
{
    using Type = float;
};
template <> struct ZqVertexAttributeTraits<eVA_Flags>
{
    using Type = unsigned int;
};

template <ETriangleAttribute A> struct ZqTriangleAttributeTraits;
template <> struct ZqTriangleAttributeTraits<eTA_Normal>
{
    using Type = CbVector3f;
};
template <> struct ZqTriangleAttributeTraits<eTA_Material>
{
    using Type = unsigned int;
};
template <> struct ZqTriangleAttributeTraits<eTA_Flags>
{
    using Type = unsigned int;
};

template <EVertexAttribute A> using ZqVertexAttributeType = typename ZqVertexAttributeTraits<A>::Type;
template <ETriangleAttribute A> using ZqTriangleAttributeType = typename ZqTriangleAttributeTraits<A>::Type;

// How a value type is laid out in the triangulation file: a number of 32-bit scalars.
template <class T> struct ZqAttributeValueLayout;
template <> struct ZqAttributeValueLayout<float>
{
    static constexpr bool kFloat = true;
    static constexpr unsigned int kComponents = 1;
};
template <> struct ZqAttributeValueLayout<unsigned int>
{
    static constexpr bool kFloat = false;
    static constexpr unsigned int kComponents = 1;
};
template <> struct ZqAttributeValueLayout<CbVector2f>
{
    static constexpr bool kFloat = true;
    static constexpr unsigned int kComponents = 2;
};
template <> struct ZqAttributeValueLayout<CbVector3f>
{
    static constexpr bool kFloat = true;
    static constexpr unsigned int kComponents = 3;
};
template <> struct ZqAttributeValueLayout<ZqColorRGBA>
{
    static constexpr bool kFloat = true;
    static constexpr unsigned int kComponents = 4;
};

static_assert(sizeof(CbVector2f) == 8 && sizeof(CbVector3f) == 12 && sizeof(ZqColorRGBA) == 16,
              "attribute values are stored as packed 32-bit scalars");

// The file name of an attribute; the index must be below eVA_Count / eTA_Count.
inline const char* ZqGetAttributeName(EVertexAttribute attribute)
{
    static constexpr const char* names[eVA_Count] = {"color", "parameters", "normal", "scalar", "flags"};
    return names[attribute];
}
inline const char* ZqGetAttributeName(ETriangleAttribute attribute)
{
    static constexpr const char* names[eTA_Count] = {"normal", "material", "flags"};
    return names[attribute];
}
