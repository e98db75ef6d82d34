#pragma once

#include "basepool/cstring.h"
#include "zq3dbase/geometry/ctriangulation.h"
#include "zq3dbase/zq3dbase_export.h"
#include "zq3dbase/zqtriangulationdynamic.h"
#include "zq3dbase/zqtriangulationstatic.h"

#include <vector>

namespace Geometry
{
// Copies between the two triangulation types of the library: ZqTriangulationBase (dynamic or
// static) and CTriangulation. It lives on the Geometry side, so the older type needs no Geometry
// header. Positions and triangles are copied as they are (same order, same indices), and so is
// every attribute that has a place on the other side, with its values and its serialize switch.
//
// Names: an attribute of ZqTriangulationBase is named as in the triangulation file; on the
// Geometry side a vertex attribute keeps that name, a triangle attribute gets "triangle " before
// it (Geometry names are unique over both domains):
//
//     eVA_Color "color" ZqColorRGBA      eVA_Parameter "parameters" CbVector2f
//     eVA_Normal "normal" CbVector3f     eVA_Scalar "scalar" float     eVA_Flags "flags" unsigned int
//     eTA_Normal "triangle normal" CbVector3f      eTA_Material "triangle material" unsigned int
//     eTA_Flags "triangle flags" unsigned int
//
// What has no place on the other side is left out and listed in the returned names: a Geometry
// attribute of another name, domain or type (a double attribute, say), and the parameter object of
// a ZqTriangulationBase attribute (listed as its Geometry name followed by " (parameter)").
//
// Failure: a ZqTriangulationStatic with a triangle whose corners are not set yet, or a
// CTriangulation whose bulk-edited corners are not valid, throws CbExceptionPreconditionViolation;
// the target is replaced only after the copy has succeeded.
class ZQ3DBASE_API CTriangulationConversion
{
public:
    static std::vector<CString> Convert(const ZqTriangulationBase& source, CTriangulation& target);
    static std::vector<CString> Convert(const CTriangulation& source, ZqTriangulationDynamic& target);
    static std::vector<CString> Convert(const CTriangulation& source, ZqTriangulationStatic& target);

    // The Geometry name of an attribute of ZqTriangulationBase.
    static CString GetAttributeName(EVertexAttribute attribute);
    static CString GetAttributeName(ETriangleAttribute attribute);

private:
    // Builds the copy and assigns it to target, which is changed only when that succeeded.
    template <class TTarget>
    static std::vector<CString> replace(const CTriangulation& source, TTarget& target);
    static std::vector<CString> toDynamic(const CTriangulation& source, ZqTriangulationDynamic& result);
};
} // namespace Geometry
