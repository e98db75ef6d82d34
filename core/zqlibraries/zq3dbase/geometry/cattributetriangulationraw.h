#pragma once

#include "basepool/cbexception.h"
#include "basepool/cbtypename.h"
#include "zq3dbase/geometry/cattributestorage.h"

#include <string>

namespace Geometry
{
// A store of one untyped value per element of a triangulation: elementSize bytes for each element
// of its kind (see EElementKind), addressed by index or by a reference of type TRef
// (CVertexRef, CTriangleRef). The named attributes of CTriangulation are such stores; an algorithm
// may keep one of its own for per-element scratch data.
//
// The store caches its element count: after the triangulation gained or lost elements, call
// SetAccurate() to follow it (existing elements keep their bytes, new ones are zero).
//
//     CAttributeTriangulationRaw<CVertexRef> scratch(triangulation, sizeof(int), eEK_Vertices);
//     *static_cast<int*>(scratch.GetElement(CVertexRef(3))) = 7;
//
// Throws: SetAccurate with a kind outside 0 to 4 throws CbException naming
// "Geometry::CAttributeTriangulationRaw<class Geometry::CVertexRef>::SetAccurate" (for that TRef).
template <class TRef> class CAttributeTriangulationRaw : public CAttributeStorage
{
public:
    CAttributeTriangulationRaw(const CTriangulation& triangulation, unsigned int elementSize,
                               unsigned int kind = eEK_Vertices)
        : CAttributeStorage(triangulation, elementSize)
    {
        SetAccurate(kind);
    }

    // Sets the element kind (0 to 4) and sizes the store to the triangulation's count of it.
    void SetAccurate(unsigned int kind)
    {
        if (kind >= kElementKindCount)
            CB_THROW(CbException, functionName("SetAccurate").c_str(),
                     "element kind " + std::to_string(kind) + " outside 0 to 4");
        resize(kind);
    }
    // Follows the triangulation's present count of the store's kind.
    void SetAccurate() { SetAccurate(GetKind()); }

    using CAttributeStorage::GetElement;
    void* GetElement(TRef element) { return GetElement(element.GetIndex()); }
    const void* GetElement(TRef element) const { return GetElement(element.GetIndex()); }

    // "Geometry::CAttributeTriangulationRaw<class Geometry::CVertexRef>::" + member.
    static std::string functionName(const char* member)
    {
        return CbTypeNameTemplate("Geometry::CAttributeTriangulationRaw", CbTypeName<TRef>::Get()) +
               "::" + member;
    }
};
} // namespace Geometry

template <class TRef> struct CbTypeName<Geometry::CAttributeTriangulationRaw<TRef>>
{
    static std::string Get()
    {
        return "class " + CbTypeNameTemplate("Geometry::CAttributeTriangulationRaw", CbTypeName<TRef>::Get());
    }
};
