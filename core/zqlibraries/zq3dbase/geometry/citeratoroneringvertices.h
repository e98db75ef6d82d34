#pragma once

#include "zq3dbase/geometry/citeratoroneringtriangles.h"
#include "zq3dbase/zq3dbase_export.h"

#include <vector>

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
    explicit CIteratorOneRingVertices(const CTriangulation& triangulation);
    CIteratorOneRingVertices(const CTriangulation& triangulation, CVertexRef centre);

    void SetCentre(CVertexRef centre);
    CVertexRef GetCentre() const { return m_triangles.GetCentre(); }
    void Reset() { m_position = 0; }

    bool IsEnd() const { return m_position >= m_steps.size(); }
    void Next() { ++m_position; }
    CIteratorOneRingVertices& operator++()
    {
        Next();
        return *this;
    }

    // The vertex reached; not at the end.
    CVertexRef Get() const { return CVertexRef(m_steps[m_position].vertex); }
    unsigned int GetIndex() const { return m_steps[m_position].vertex; }
    // The triangle whose side from the centre leads to the vertex reached (for the closing vertex
    // of an open fan, the side from that vertex to the centre).
    CTriangleRef GetTriangle() const { return CTriangleRef(m_steps[m_position].triangle); }
    bool IsBorder() const { return m_steps[m_position].border; }
    bool IsFanStart() const { return m_steps[m_position].fanStart; }

    unsigned int GetCount() const { return static_cast<unsigned int>(m_steps.size()); }
    unsigned int GetFanCount() const { return m_triangles.GetFanCount(); }
    bool IsClosed() const { return m_triangles.IsClosed(); }

    // The corner (0, 1 or 2) of triangle whose vertex is the centre, testing corner 0, 1, then 2.
    unsigned int getCornerIndex(CTriangleRef triangle) const;

private:
    struct SStep
    {
        unsigned int vertex;
        unsigned int triangle;
        bool fanStart;
        bool border;
    };

    CIteratorOneRingTriangles m_triangles;
    std::vector<SStep> m_steps;
    std::size_t m_position = 0;
};
} // namespace Geometry
