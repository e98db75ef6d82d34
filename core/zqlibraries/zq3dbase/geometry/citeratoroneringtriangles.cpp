#include "zq3dbase/geometry/citeratoroneringtriangles.h"

#include "basepool/cbexception.h"

#include <string>

namespace Geometry
{
void CIteratorOneRingTriangles::throwNoCentre(CTriangleRef triangle) const
{
    CB_THROW(CbException, "Geometry::CIteratorOneRingTriangles::getCornerIndex",
             "triangle " + std::to_string(triangle.GetIndex()) + " does not use vertex " +
                 std::to_string(m_centre.GetIndex()));
}

unsigned int CIteratorOneRingTriangles::countFlag(unsigned int flag) const
{
    unsigned int count = 0;
    for (const unsigned int entry : m_entries)
        count += (entry & flag) != 0;
    return count;
}
} // namespace Geometry
