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

unsigned int CIteratorOneRingTriangles::GetFanCount() const
{
    unsigned int count = 0;
    for (const unsigned int entry : m_entries)
        count += (entry & ZqVertexTriangleRelation::kFanEnd) != 0;
    return count;
}

unsigned int CIteratorOneRingTriangles::GetOpenFanCount() const
{
    unsigned int count = 0;
    for (const unsigned int entry : m_entries)
        count += isOpenFanEnd(entry);
    return count;
}
} // namespace Geometry
