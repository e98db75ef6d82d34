#pragma once

#include "zq3dbase/geometry/citeratoroneringtriangles.h"
#include "zq3dbase/zq3dbase_export.h"

namespace Geometry
{
// Walks the vertices around a centre vertex in the order of CIteratorOneRingTriangles: for each
// triangle of a fan the corner after the centre, and at the end of an open fan also the last
// triangle's corner before the centre. A closed fan of n triangles gives n vertices, an open one
// n + 1:
//
//     fan (c,1,2) (c,2,3) (c,3,4), open:     1 2 3 4   (IsBorder() at 4)
//     the same closed by (c,4,1):            1 2 3 4
//
// A vertex that two fans of a non-manifold centre share is visited once per fan. IsBorder()
// reports the last vertex of an open fan.
//
// Throws: getCornerIndex of a triangle without the centre among its corners throws CbException
// naming "Geometry::CIteratorOneRingVertices::getCornerIndex".
class ZQ3DBASE_API CIteratorOneRingVertices
{
public:
    explicit CIteratorOneRingVertices(const CTriangulation& triangulation) : m_triangles(triangulation) {}
    CIteratorOneRingVertices(const CTriangulation& triangulation, CVertexRef centre)
        : m_triangles(triangulation)
    {
        SetCentre(centre);
    }

    void SetCentre(CVertexRef centre)
    {
        m_triangles.SetCentre(centre);
        m_closing = false;
        update();
    }
    CVertexRef GetCentre() const { return m_triangles.GetCentre(); }
    void Reset()
    {
        m_triangles.Reset();
        m_closing = false;
        update();
    }

    bool IsEnd() const { return m_triangles.IsEnd(); }
    void Next()
    {
        if (!m_closing && m_triangles.IsBorder())
            m_closing = true;
        else
        {
            m_closing = false;
            m_triangles.Next();
        }
        update();
    }
    CIteratorOneRingVertices& operator++()
    {
        Next();
        return *this;
    }

    // The vertex reached; not at the end.
    CVertexRef Get() const { return CVertexRef(m_vertex); }
    unsigned int GetIndex() const { return m_vertex; }
    // The triangle whose side from the centre leads to the vertex reached (for the closing vertex
    // of an open fan, the side from that vertex to the centre).
    CTriangleRef GetTriangle() const { return m_triangles.Get(); }
    bool IsBorder() const { return m_closing; }
    bool IsFanStart() const { return !m_closing && m_triangles.IsFanStart(); }

    unsigned int GetCount() const { return m_triangles.GetCount() + m_triangles.GetOpenFanCount(); }
    unsigned int GetFanCount() const { return m_triangles.GetFanCount(); }
    bool IsClosed() const { return m_triangles.IsClosed(); }

    // The corner (0, 1 or 2) of triangle whose vertex is the centre, testing corner 0, 1, then 2.
    unsigned int getCornerIndex(CTriangleRef triangle) const
    {
        const unsigned int corner = CTriangulation::FindCorner(
            m_triangles.GetTriangulation().GetCorners(triangle), GetCentre().GetIndex());
        if (corner == 3)
            throwNoCentre(triangle);
        return corner;
    }

private:
    [[noreturn]] void throwNoCentre(CTriangleRef triangle) const;
    // Reads the vertex of the step reached.
    void update()
    {
        if (IsEnd())
            return;
        const CTriangleRef triangle = m_triangles.Get();
        const CTriangulation::SCorners& corners = m_triangles.GetTriangulation().GetCorners(triangle);
        m_vertex = corners[(getCornerIndex(triangle) + (m_closing ? 2 : 1)) % 3];
    }

    CIteratorOneRingTriangles m_triangles;
    // At the closing vertex of an open fan (the last triangle's corner before the centre).
    bool m_closing = false;
    unsigned int m_vertex = 0;
};
} // namespace Geometry
