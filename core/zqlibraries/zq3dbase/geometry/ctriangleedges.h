#pragma once

#include "zq3dbase/geometry/smemoryblock.h"
#include "zq3dbase/zq3dbase_export.h"
#include "zq3dbase/zqvertextrianglerelation.h"

#include <array>
#include <span>

namespace Geometry
{
// The edges of a triangulation: the distinct undirected vertex pairs of the triangles' sides,
// numbered in ascending order of (lower vertex, higher vertex). Side k of triangle t runs from
// corner k to corner (k + 1) % 3; GetEdge(t, k) tells its edge. An edge that three triangles share
// (non-manifold) is one edge; so is an edge that two triangles run in the same direction.
// The corners of each triangle must be pairwise distinct, as the relation requires.
//
//     two triangles (0, 1, 2), (2, 1, 3):   edges {0,1} {0,2} {1,2} {1,3} {2,3}, numbered 0 to 4;
//                                           GetEdge(0, 1) == GetEdge(1, 0) == 2 (the side 1-2)
class ZQ3DBASE_API CTriangleEdges
{
public:
    // Builds the edges of the triangles; relation must be the vertex-triangle relation of exactly
    // these triangles.
    void Build(std::span<const std::array<unsigned int, 3>> triangles,
               const ZqVertexTriangleRelation& relation);
    void Clear();

    unsigned int GetEdgeCount() const { return m_vertices.GetCount(); }
    // Edge of side corner (0, 1 or 2) of triangle.
    unsigned int GetEdge(unsigned int triangle, unsigned int corner) const
    {
        return m_sideEdges[3 * triangle + corner];
    }
    // The two vertices of edge, lower first (equal for the side of a degenerate triangle).
    const std::array<unsigned int, 2>& GetVertices(unsigned int edge) const { return m_vertices[edge]; }

private:
    SMemoryBlock<unsigned int> m_sideEdges;
    SMemoryBlock<std::array<unsigned int, 2>> m_vertices;
};
} // namespace Geometry
