#pragma once

#include "zq3dbase/geometry/smemoryblock.h"
#include "zq3dbase/zq3dbase_export.h"

#include <array>
#include <span>

namespace Geometry
{
// For every vertex the triangles that use it, in one flat array: the triangles of vertex v are
// entries offsets[v] .. offsets[v + 1] - 1, in ascending order. Two passes over the corners (count,
// then place), 4 (V + 1 + 3 T) bytes, no allocation per vertex.
//
// A triangle that names one vertex at two corners (degenerate) is listed once for it.
class ZQ3DBASE_API CVertexTriangleRelation
{
public:
    // Builds the relation of vertexCount vertices and the given corner triples. A corner index of
    // vertexCount or more throws CbExceptionPreconditionViolation; more than 2^32 - 1 incidences
    // throw CbExceptionMemory. The previous relation is kept when it throws.
    void Build(unsigned int vertexCount, std::span<const std::array<unsigned int, 3>> triangles);
    void Clear();

    unsigned int GetVertexCount() const { return m_offsets.IsEmpty() ? 0 : m_offsets.GetCount() - 1; }
    // Triangles using vertex (below GetVertexCount()), ascending.
    std::span<const unsigned int> GetTriangles(unsigned int vertex) const
    {
        return {m_triangles.GetData() + m_offsets[vertex], m_offsets[vertex + 1] - m_offsets[vertex]};
    }
    // Number of triangles using vertex.
    unsigned int GetTriangleCount(unsigned int vertex) const
    {
        return m_offsets[vertex + 1] - m_offsets[vertex];
    }

private:
    SMemoryBlock<unsigned int> m_offsets;
    SMemoryBlock<unsigned int> m_triangles;
};
} // namespace Geometry
