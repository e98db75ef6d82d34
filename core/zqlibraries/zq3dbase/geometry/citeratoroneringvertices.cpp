#include "zq3dbase/geometry/citeratoroneringvertices.h"

#include "basepool/cbexception.h"

#include <string>

namespace Geometry
{
CIteratorOneRingVertices::CIteratorOneRingVertices(const CTriangulation& triangulation)
    : m_triangles(triangulation)
{
}

CIteratorOneRingVertices::CIteratorOneRingVertices(const CTriangulation& triangulation, CVertexRef centre)
    : m_triangles(triangulation)
{
    SetCentre(centre);
}

unsigned int CIteratorOneRingVertices::getCornerIndex(CTriangleRef triangle) const
{
    const unsigned int corner = CTriangulation::FindCorner(
        m_triangles.GetTriangulation().GetCorners(triangle), GetCentre().GetIndex());
    if (corner == 3)
        CB_THROW(CbException, "Geometry::CIteratorOneRingVertices::getCornerIndex",
                 "triangle " + std::to_string(triangle.GetIndex()) + " does not use vertex " +
                     std::to_string(GetCentre().GetIndex()));
    return corner;
}

void CIteratorOneRingVertices::SetCentre(CVertexRef centre)
{
    m_triangles.SetCentre(centre);
    m_steps.clear();
    m_position = 0;
    const CTriangulation& triangulation = m_triangles.GetTriangulation();
    for (; !m_triangles.IsEnd(); m_triangles.Next())
    {
        const CTriangulation::SCorners& corners = triangulation.GetCorners(m_triangles.Get());
        const unsigned int corner = m_triangles.GetCorner();
        m_steps.push_back(
            {corners[(corner + 1) % 3], m_triangles.GetIndex(), m_triangles.IsFanStart(), false});
        if (m_triangles.IsBorder())
            m_steps.push_back({corners[(corner + 2) % 3], m_triangles.GetIndex(), false, true});
    }
    m_triangles.Reset();
}
} // namespace Geometry
