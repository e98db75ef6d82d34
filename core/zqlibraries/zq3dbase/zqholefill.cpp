#include "zq3dbase/zqholefill.h"

#include <algorithm>

ZqHoleFill::ZqHoleFill(const ZqTriangulationBase& triangulation) : m_triangulation(triangulation) {}

const CbVector3f& ZqHoleFill::GetPosition(unsigned int vertex) const
{
    const unsigned int existing = m_triangulation.GetVertexCount();
    return vertex < existing ? m_triangulation.GetPositions()[vertex] : m_vertices[vertex - existing];
}

void ZqHoleFill::AddTriangle(unsigned int a, unsigned int b, unsigned int c, ZqHoleEdges& edges)
{
    m_triangles.push_back({a, b, c});
    edges.Insert(a, b);
    edges.Insert(b, c);
    edges.Insert(c, a);
}

void ZqHoleFill::AddFan(const std::vector<unsigned int>& polygon, ZqHoleEdges& edges)
{
    CbVector3d centroid;
    for (unsigned int vertex : polygon)
        centroid += CbVector3d(GetPosition(vertex));
    centroid /= double(polygon.size());
    const unsigned int centre = m_triangulation.GetVertexCount() + GetAddedVertexCount();
    m_vertices.push_back(CbVector3f(centroid));
    for (std::size_t i = 0; i < polygon.size(); ++i)
        AddTriangle(polygon[i], polygon[(i + 1) % polygon.size()], centre, edges);
}

void ZqHoleFill::ApplyTo(ZqTriangulationBase& triangulation) const
{
    triangulation.Reserve(triangulation.GetVertexCount() + GetAddedVertexCount(),
                          triangulation.GetTriangleCount() + static_cast<unsigned int>(m_triangles.size()));
    for (const CbVector3f& position : m_vertices)
        triangulation.AppendVertex(position);
    for (ZqTriangleCorners corners : m_triangles)
    {
        std::rotate(corners.begin(), std::min_element(corners.begin(), corners.end()), corners.end());
        triangulation.AppendTriangle(CbVertexRef(corners[0]), CbVertexRef(corners[1]),
                                     CbVertexRef(corners[2]));
    }
}
