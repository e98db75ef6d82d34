#include "zq3dbase/zqholeplane.h"

#include <algorithm>
#include <cmath>

namespace
{
CbVector3d toDouble(const CbVector3f& p)
{
    return CbVector3d(p);
}

// The triangle that uses the edge from a to b in its own orientation, or none.
const ZqTriangleCorners* triangleWithEdge(const ZqTriangulationBase& triangulation, unsigned int a,
                                          unsigned int b)
{
    const ZqVertexTriangleRelation& relation = triangulation.GetVertexTriangleRelationship();
    const auto triangles = triangulation.GetTriangles();
    for (unsigned int i = 0; i < relation.GetTriangleCount(a); ++i)
    {
        const ZqTriangleCorners& corners = triangles[relation.GetTriangle(a, i)];
        for (unsigned int k = 0; k < 3; ++k)
            if (corners[k] == a && corners[(k + 1) % 3] == b)
                return &corners;
    }
    return nullptr;
}
} // namespace

CbVector3d ZqHolePlane::TriangleNormal(const CbVector3f& a, const CbVector3f& b, const CbVector3f& c)
{
    return Cross(toDouble(b) - toDouble(a), toDouble(c) - toDouble(a)).Normalized();
}

ZqHolePlane::ZqHolePlane(const ZqTriangulationBase& triangulation, const std::vector<unsigned int>& loop)
{
    const auto positions = triangulation.GetPositions();
    const std::size_t n = loop.size();
    double perimeter = 0.0;
    CbVector3d newell, around;
    for (std::size_t i = 0; i < n; ++i)
    {
        const unsigned int a = loop[i], b = loop[(i + 1) % n];
        const CbVector3d p = toDouble(positions[a]), q = toDouble(positions[b]);
        newell += Cross(p, q);
        m_origin += p;
        perimeter += (q - p).Length();
        // The surface triangle runs this edge the other way round.
        const ZqTriangleCorners* outside = triangleWithEdge(triangulation, b, a);
        m_outside.push_back(outside ? TriangleNormal(positions[(*outside)[0]], positions[(*outside)[1]],
                                                     positions[(*outside)[2]])
                                    : CbVector3d());
        around += m_outside.back();
    }
    m_origin /= double(std::max<std::size_t>(n, 1));
    m_degenerate = !(newell.Length() > 1e-6 * perimeter * perimeter);
    m_normal = m_degenerate ? around : newell;
    if (m_normal.Normalize() == 0.0)
        m_normal = CbVector3d(0, 0, 1);
    // Any direction across the normal for u; v completes a right-handed frame.
    const CbVector3d axis = std::abs(m_normal.x) < 0.6 ? CbVector3d(1, 0, 0) : CbVector3d(0, 1, 0);
    m_u = Cross(axis, m_normal).Normalized();
    m_v = Cross(m_normal, m_u);
}

CbVector2d ZqHolePlane::Project(const CbVector3f& position) const
{
    const CbVector3d d = toDouble(position) - m_origin;
    return {d.Dot(m_u), d.Dot(m_v)};
}
