#pragma once

#include "zq3dbase/geometry/ctriangulation.h"
#include "zq3dbase/zq3dbase_export.h"

#include <span>

namespace Geometry
{
// Walks the triangles around a centre vertex in rotational order: counter-clockwise seen from the
// side the triangles face (triangle (c, a, b) is followed by the triangle (c, b, x)).
//
// The triangles of a vertex form one or more fans. A fan is open when it ends at a border side
// (no triangle continues across it) and closed when it comes back to its first triangle. An inner
// vertex of a manifold surface has one closed fan, a border vertex one open fan; more fans mean a
// non-manifold vertex (two cones touching at their tips, three triangles on one edge) or
// neighbours of opposite orientation. The walk visits every triangle once, in the fan order of
// ZqVertexTriangleRelation: first the open fans, each from its border triangle, then the closed
// ones. IsBorder() reports the last triangle of an open fan; the walk ends after the last triangle
// and never wraps around.
//
//     CIteratorOneRingTriangles ring(triangulation, CVertexRef(5));
//     for (; !ring.IsEnd(); ring.Next())
//         use(ring.Get(), ring.GetCorner());
//
// The fans are sorted once when the triangulation builds its relation, so setting a centre and
// stepping only read it. The triangulation must outlive the iterator; changing its triangles
// invalidates the ring.
//
// Throws: getCornerIndex of a triangle without the centre among its corners throws CbException
// naming "Geometry::CIteratorOneRingTriangles::getCornerIndex".
class ZQ3DBASE_API CIteratorOneRingTriangles
{
public:
    explicit CIteratorOneRingTriangles(const CTriangulation& triangulation) : m_triangulation(&triangulation)
    {
    }
    CIteratorOneRingTriangles(const CTriangulation& triangulation, CVertexRef centre)
        : m_triangulation(&triangulation)
    {
        SetCentre(centre);
    }

    // Takes the ring of centre (building the triangulation's vertex-triangle relation when it is
    // not there) and goes to its first triangle.
    void SetCentre(CVertexRef centre)
    {
        m_centre = centre;
        m_entries = m_triangulation->GetVertexTriangleRelation().GetEntries(centre.GetIndex());
        m_position = 0;
    }
    CVertexRef GetCentre() const { return m_centre; }
    // Back to the first triangle.
    void Reset() { m_position = 0; }

    bool IsEnd() const { return m_position >= m_entries.size(); }
    void Next() { ++m_position; }
    CIteratorOneRingTriangles& operator++()
    {
        Next();
        return *this;
    }

    // The triangle reached; not at the end.
    CTriangleRef Get() const { return CTriangleRef(GetIndex()); }
    unsigned int GetIndex() const { return m_entries[m_position] & ZqVertexTriangleRelation::kTriangleMask; }
    // The corner (0, 1, 2) at which the triangle reached holds the centre.
    unsigned int GetCorner() const { return getCornerIndex(Get()); }
    // The triangle reached is the last of an open fan.
    bool IsBorder() const { return isOpenFanEnd(m_entries[m_position]); }
    // The triangle reached is the first of its fan.
    bool IsFanStart() const
    {
        return m_position == 0 || (m_entries[m_position - 1] & ZqVertexTriangleRelation::kFanEnd) != 0;
    }

    // Triangles and fans of the ring.
    unsigned int GetCount() const { return static_cast<unsigned int>(m_entries.size()); }
    unsigned int GetFanCount() const;
    unsigned int GetOpenFanCount() const;
    // One closed fan: the centre is an inner vertex of a manifold neighbourhood.
    bool IsClosed() const { return GetFanCount() == 1 && GetOpenFanCount() == 0; }

    // The corner (0, 1 or 2) of triangle whose vertex is the centre, testing corner 0, 1, then 2.
    unsigned int getCornerIndex(CTriangleRef triangle) const
    {
        const unsigned int corner =
            CTriangulation::FindCorner(m_triangulation->GetCorners(triangle), m_centre.GetIndex());
        if (corner == 3)
            throwNoCentre(triangle);
        return corner;
    }

    const CTriangulation& GetTriangulation() const { return *m_triangulation; }

private:
    [[noreturn]] void throwNoCentre(CTriangleRef triangle) const;
    static bool isOpenFanEnd(unsigned int entry)
    {
        return (entry & (ZqVertexTriangleRelation::kFanEnd | ZqVertexTriangleRelation::kFanClosed)) ==
               ZqVertexTriangleRelation::kFanEnd;
    }

    const CTriangulation* m_triangulation;
    CVertexRef m_centre;
    std::span<const unsigned int> m_entries;
    std::size_t m_position = 0;
};
} // namespace Geometry
