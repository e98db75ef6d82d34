#pragma once

#include "basepool/cbarrayex.h"
#include "basepool/cbarraypolicyconstructuninitialized.h"
#include "zq3dbase/zq3dbase_export.h"

#include <array>
#include <span>

using ZqTriangleCorners = std::array<unsigned int, 3>;

// For every vertex, the triangles that use it: one flat array of entries and an offset per vertex
// (vertex v owns entries [offset[v], offset[v + 1])), 4 bytes per triangle corner plus 4 per vertex.
//
// The entries of a vertex are sorted into fans. A fan is a run of triangles in which each triangle
// shares an edge through the vertex with the next one, counter-clockwise seen from the side the
// triangles face (the side from which their corners run counter-clockwise). Within a vertex the open
// fans (those that end at a border edge) come first, each starting at its border triangle, then the
// closed fans. An inner vertex of a manifold surface has one closed fan, a border vertex one open
// fan; more fans mean a non-manifold vertex or inconsistently oriented triangles around it.
//
// Each entry is a triangle index with two flag bits: kFanEnd marks the last entry of a fan, and
// kFanClosed, set only together with kFanEnd, tells that the fan closes (its last triangle shares an
// edge with its first). This limits a triangulation with a relation to kMaxTriangles triangles.
class ZQ3DBASE_API ZqVertexTriangleRelation
{
public:
    static constexpr unsigned int kFanEnd = 0x80000000u;
    static constexpr unsigned int kFanClosed = 0x40000000u;
    static constexpr unsigned int kTriangleMask = 0x3FFFFFFFu;
    static constexpr unsigned int kMaxTriangles = kTriangleMask + 1;

    // Builds the relation of vertexCount vertices and the given triangles, whose corners must be
    // below vertexCount and pairwise distinct. Throws CbExceptionPreconditionViolation for more
    // than kMaxTriangles triangles (the relation is then empty).
    void Compute(unsigned int vertexCount, std::span<const ZqTriangleCorners> triangles);
    void Clear();
    bool IsValid() const { return m_valid; }

    unsigned int GetVertexCount() const { return m_offsets.IsEmpty() ? 0 : m_offsets.GetCount() - 1; }
    // The raw entries of vertex v (triangle index | flags); v must be below GetVertexCount().
    std::span<const unsigned int> GetEntries(unsigned int v) const
    {
        return {m_entries.GetData() + m_offsets[v], m_entries.GetData() + m_offsets[v + 1]};
    }
    unsigned int GetTriangleCount(unsigned int v) const { return m_offsets[v + 1] - m_offsets[v]; }
    // The i-th incident triangle of v, in fan order.
    unsigned int GetTriangle(unsigned int v, unsigned int i) const
    {
        return m_entries[m_offsets[v] + i] & kTriangleMask;
    }
    // A vertex with an open fan, i.e. on the border of the surface.
    bool IsBorder(unsigned int v) const;
    unsigned int GetFanCount(unsigned int v) const;

    // Bytes held by the two arrays.
    std::size_t GetMemorySize() const
    {
        return (std::size_t(m_offsets.GetCapacity()) + m_entries.GetCapacity()) * sizeof(unsigned int);
    }

private:
    using Array = CbArrayEx<unsigned int, CbArrayPolicyConstructUninitialized>;

    void fill(std::span<const ZqTriangleCorners> triangles);
    void sortIntoFans(std::span<const ZqTriangleCorners> triangles);

    Array m_offsets;
    Array m_entries;
    bool m_valid = false;
};
