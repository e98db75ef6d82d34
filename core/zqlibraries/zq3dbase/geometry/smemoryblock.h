#pragma once

#include "basepool/cbarrayex.h"
#include "basepool/cbarraypolicyconstructuninitialized.h"

namespace Geometry
{
// A contiguous block of plain values (positions, corner triples, attribute words) that is filled
// right after it grows: new elements are left uninitialised, so sizing a block for ten million
// positions read from a file costs no clearing pass. Growth, element access and the exceptions are
// those of CbArrayEx.
//
//     SMemoryBlock<CbVector3f> positions;
//     positions.SetCount(n);          // n positions of unspecified value
//     std::fill(positions.begin(), positions.end(), CbVector3f());
template <class T> struct SMemoryBlock : public CbArrayEx<T, CbArrayPolicyConstructUninitialized>
{
    using CbArrayEx<T, CbArrayPolicyConstructUninitialized>::CbArrayEx;
};
} // namespace Geometry
