#pragma once

#include "basepool/cbtypename.h"

#include "basepool/cbarrayex.h"
#include "basepool/cbarraypolicyconstructdefault.h"

// The contiguous growable array of the libraries: CbArrayEx with value-initialised new elements.
// See CbArrayEx for its layout, growth rule and operations.
//
//     CbArray<CbVector2f> points = {{0, 0}, {1, 0}};
//     points.Add({1, 1});
//     for (const CbVector2f& p : points) ...
template <class T> class CbArray : public CbArrayEx<T, CbArrayPolicyConstructDefault>
{
    using Base = CbArrayEx<T, CbArrayPolicyConstructDefault>;

public:
    using Base::Base;
    CbArray() noexcept = default;
    CbArray(const CbArray&) = default;
    CbArray(CbArray&&) noexcept = default;
    CbArray& operator=(const CbArray&) = default;
    CbArray& operator=(CbArray&&) noexcept = default;
    CbArray& operator=(std::initializer_list<T> values)
    {
        Base::operator=(values);
        return *this;
    }
};

template <class T> struct CbTypeName<CbArray<T>>
{
    static std::string Get() { return "class " + CbTypeNameTemplate("CbArray", CbTypeName<T>::Get()); }
};
