#pragma once

#include "zq3dbase/geometry/ctriangulation.h"
#include "zq3dbase/zq3dbase_export.h"

#include <vector>

namespace Geometry
{
// Walks the triangles around a centre vertex in rotational order: counter-clockwise seen from the
// side the triangles face (the next triangle continues across the side from the centre to the
// previous triangle's last corner).
//
// The triangles of a vertex form one or more fans. A fan is open when it ends at a border side
// (no triangle continues across it) and closed when it comes back to its first triangle. An inner
// vertex of a manifold surface has one closed fan, a border vertex one open fan. At a
// non-manifold vertex (two cones touching at their tips, three triangles on one side, neighbours
// of opposite orientation) there are several; the walk visits every triangle once:
// - fans in the order of their lowest triangle index;
// - an open fan from its first triangle (the one no triangle precedes) to its last;
// - a closed fan from its lowest triangle index;
// - where several triangles could continue a fan, the lowest index that no other triangle took
//   before continues it (triangles are linked in ascending order), the others start fans of
//   their own.
// IsBorder() reports the last triangle of an open fan; the walk ends after the last triangle and
// never wraps around.
//
//     CIteratorOneRingTriangles ring(triangulation, CVertexRef(5));
//     for (; !ring.IsEnd(); ring.Next())
//         use(ring.Get(), ring.GetCorner());
//
// Reuse one iterator for many centres (SetCentre): it then allocates nothing in steady state. The
// triangulation must outlive the iterator; changing its triangles invalidates the ring.
//
// Throws: getCornerIndex of a triangle without the centre among its corners throws CbException
// naming "Geometry::CIteratorOneRingTriangles::getCornerIndex".
class ZQ3DBASE_API CIteratorOneRingTriangles
{
public:
    explicit CIteratorOneRingTriangles(const CTriangulation& triangulation);
    CIteratorOneRingTriangles(const CTriangulation& triangulation, CVertexRef centre);

    // Gathers the ring of centre (building the triangulation's vertex-triangle relation when it is
    // not there) and goes to its first triangle.
    void SetCentre(CVertexRef centre);
    CVertexRef GetCentre() const { return m_centre; }
    // Back to the first triangle.
    void Reset() { m_position = 0; }

    bool IsEnd() const { return m_position >= m_steps.size(); }
    void Next() { ++m_position; }
    CIteratorOneRingTriangles& operator++()
    {
        Next();
        return *this;
    }

    // The triangle reached and the corner (0, 1, 2) at which it holds the centre; not at the end.
    CTriangleRef Get() const { return CTriangleRef(m_steps[m_position].triangle); }
    unsigned int GetIndex() const { return m_steps[m_position].triangle; }
    unsigned int GetCorner() const { return m_steps[m_position].corner; }
    // The triangle reached is the last of an open fan.
    bool IsBorder() const { return m_steps[m_position].border; }
    // The triangle reached is the first of its fan.
    bool IsFanStart() const { return m_steps[m_position].fanStart; }

    // Triangles and fans of the ring.
    unsigned int GetCount() const { return static_cast<unsigned int>(m_steps.size()); }
    unsigned int GetFanCount() const { return m_fanCount; }
    unsigned int GetOpenFanCount() const { return m_openFanCount; }
    // One closed fan: the centre is an inner vertex of a manifold neighbourhood.
    bool IsClosed() const { return m_fanCount == 1 && m_openFanCount == 0; }

    // The corner (0, 1 or 2) of triangle whose vertex is the centre, testing corner 0, 1, then 2.
    unsigned int getCornerIndex(CTriangleRef triangle) const;

    const CTriangulation& GetTriangulation() const { return *m_triangulation; }

private:
    struct SStep
    {
        unsigned int triangle;
        unsigned char corner;
        bool fanStart;
        bool border;
    };
    // A triangle of the ring before ordering: its corner vertices after and before the centre and
    // the triangles linked before and after it (kNone when there is none).
    struct SLink
    {
        unsigned int triangle;
        unsigned int after;
        unsigned int before;
        unsigned int next;
        unsigned int previous;
        unsigned char corner;
    };
    static constexpr unsigned int kNone = ~0u;
    // Marks a link whose triangle is in the walk already (in place of its corner).
    static constexpr unsigned char kVisited = 0xFF;

    void gatherLinks();
    void linkFans();
    void appendFan(unsigned int start, bool open);

    const CTriangulation* m_triangulation;
    CVertexRef m_centre;
    std::vector<SStep> m_steps;
    std::size_t m_position = 0;
    unsigned int m_fanCount = 0;
    unsigned int m_openFanCount = 0;
    // Scratch of SetCentre, kept for its capacity.
    std::vector<SLink> m_links;
    std::vector<unsigned int> m_byAfter;
};
} // namespace Geometry
