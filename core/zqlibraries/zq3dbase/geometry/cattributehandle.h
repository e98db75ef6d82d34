#pragma once

#include "basepool/cbexception.h"
#include "basepool/cbtypename.h"
#include "zq3dbase/geometry/ctriangulation.h"

#include <string>

namespace Geometry
{
// Typed access to a named attribute of a CTriangulation: one value of type T (float, double,
// CbVector3f, ZqColorRGBA, CbVector2f, unsigned int) per element of TRef's domain (CVertexRef:
// vertices, CTriangleRef: triangles). A handle is a pointer to the attribute's store; it stays valid while
// the attribute exists, also when the triangulation grows or is moved, and is cheap to copy.
//
//     triangulation.AddAttribute<CVertexRef, ZqColorRGBA>(L"colour");
//     CAttributeHandle<CVertexRef, ZqColorRGBA> colour(triangulation, L"colour");
//     colour[CVertexRef(0)] = ZqColorRGBA::Chocolate;
//
// Throws: constructing a handle for a name that has no attribute of that domain and type throws
// CbExceptionPreconditionViolation naming
// "Geometry::CAttributeHandle<class Geometry::CVertexRef,float>::CAttributeHandle" (for that TRef, T).
template <class TRef, class T> class CAttributeHandle
{
public:
    CAttributeHandle(CTriangulation& triangulation, const CString& name)
        : m_store(triangulation.FindAttribute<TRef>(name, SAttributeTypeOf<T>::value))
    {
        if (!m_store)
            CB_THROW(CbExceptionPreconditionViolation, functionName("CAttributeHandle").c_str(),
                     "no attribute \"" + CbWideToUtf8(name.Std()) + "\" of type " + CbTypeName<T>::Get());
    }

    // Values of element (below GetCount(); not checked).
    T& operator[](TRef element) { return data()[element.GetIndex()]; }
    const T& operator[](TRef element) const { return data()[element.GetIndex()]; }
    const T& Get(TRef element) const { return data()[element.GetIndex()]; }
    void Set(TRef element, const T& value) { data()[element.GetIndex()] = value; }

    unsigned int GetCount() const { return m_store->GetCount(); }
    // All values at once, for loops over millions of elements.
    std::span<T> GetValues() { return {data(), GetCount()}; }
    std::span<const T> GetValues() const { return {data(), GetCount()}; }

    // "Geometry::CAttributeHandle<class Geometry::CVertexRef,float>::" + member.
    static std::string functionName(const char* member)
    {
        return CbTypeNameTemplate("Geometry::CAttributeHandle", CbTypeName<TRef>::Get(),
                                  CbTypeName<T>::Get()) +
               "::" + member;
    }

private:
    T* data() const { return reinterpret_cast<T*>(m_store->GetData()); }

    CAttributeTriangulationRaw<TRef>* m_store;
};
} // namespace Geometry

template <class TRef, class T> struct CbTypeName<Geometry::CAttributeHandle<TRef, T>>
{
    static std::string Get()
    {
        return "class " + CbTypeNameTemplate("Geometry::CAttributeHandle", CbTypeName<TRef>::Get(),
                                             CbTypeName<T>::Get());
    }
};
