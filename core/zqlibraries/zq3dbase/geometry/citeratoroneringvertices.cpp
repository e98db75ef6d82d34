#include "zq3dbase/geometry/citeratoroneringvertices.h"

#include "basepool/cbexception.h"

#include <string>

namespace Geometry
{
void CIteratorOneRingVertices::throwNoCentre(CTriangleRef triangle) const
{
    CB_THROW(CbException, "Geometry::CIteratorOneRingVertices::getCornerIndex",
             "triangle " + std::to_string(triangle.GetIndex()) + " does not use vertex " +
                 std::to_string(GetCentre().GetIndex()));
}
} // namespace Geometry
