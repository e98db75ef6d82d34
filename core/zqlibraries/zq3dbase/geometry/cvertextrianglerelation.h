#pragma once

#include "zq3dbase/geometry/smemoryblock.h"
#include "zq3dbase/zq3dbase_export.h"

#include <array>
#include <span>

namespace Geometry
{
// For every vertex the triangles that use it, in one flat array and sorted into fans: the entries
// of vertex v are offsets[v] .. offsets[v + 1] - 1. 4 (V + 1 + 3 T) bytes, nothing allocated per
// vertex, so the one-ring iterators only read.
//
// Fan order (counter-clockwise seen from the side the triangles face: triangle (v, a, b) is
// followed by the triangle (v, b, x)):
// - fans come in the order of their lowest triangle index;
// - an open fan (ending at a border side) starts at the triangle no other precedes, a closed fan
//   at its lowest triangle index;
// - where several triangles could continue a fan, the triangles are linked in ascending order and
//   each takes the lowest candidate still free; the others start fans of their own.
// Each entry is a triangle index with two flags in its top bits: kFanStart on the first triangle
// of each fan, kOpenFanEnd on the last triangle of an open fan. A triangle that names one vertex
// at two corners (degenerate) is listed once for it.
class ZQ3DBASE_API CVertexTriangleRelation
{
public:
    static constexpr unsigned int kFanStart = 0x80000000u;
    static constexpr unsigned int kOpenFanEnd = 0x40000000u;
    static constexpr unsigned int kTriangleMask = 0x3FFFFFFFu;
    // Triangles a relation can hold.
    static constexpr unsigned int kMaxTriangles = kTriangleMask + 1;

    // Builds the relation of vertexCount vertices and the given corner triples. A corner index of
    // vertexCount or more throws CbExceptionPreconditionViolation, more than kMaxTriangles
    // triangles CbExceptionMemory. The previous relation is kept when it throws.
    void Build(unsigned int vertexCount, std::span<const std::array<unsigned int, 3>> triangles);
    void Clear();

    unsigned int GetVertexCount() const { return m_offsets.IsEmpty() ? 0 : m_offsets.GetCount() - 1; }
    // The entries of vertex (below GetVertexCount()): triangle index | flags, in fan order.
    std::span<const unsigned int> GetEntries(unsigned int vertex) const
    {
        return {m_entries.GetData() + m_offsets[vertex], m_offsets[vertex + 1] - m_offsets[vertex]};
    }
    // Number of triangles using vertex.
    unsigned int GetTriangleCount(unsigned int vertex) const
    {
        return m_offsets[vertex + 1] - m_offsets[vertex];
    }
    // Triangle i (below GetTriangleCount(vertex)) of vertex in fan order.
    unsigned int GetTriangle(unsigned int vertex, unsigned int i) const
    {
        return m_entries[m_offsets[vertex] + i] & kTriangleMask;
    }

private:
    SMemoryBlock<unsigned int> m_offsets;
    SMemoryBlock<unsigned int> m_entries;
};
} // namespace Geometry
