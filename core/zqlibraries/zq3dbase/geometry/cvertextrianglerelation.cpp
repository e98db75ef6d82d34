#include "zq3dbase/geometry/cvertextrianglerelation.h"

#include "basepool/cbexception.h"

#include <algorithm>
#include <climits>
#include <string>

namespace Geometry
{
namespace
{
// Calls visit(vertex) for each distinct vertex of corners.
template <class TVisit>
inline void forDistinctCorners(const std::array<unsigned int, 3>& corners, TVisit visit)
{
    visit(corners[0]);
    if (corners[1] != corners[0])
        visit(corners[1]);
    if (corners[2] != corners[0] && corners[2] != corners[1])
        visit(corners[2]);
}
} // namespace

void CVertexTriangleRelation::Build(unsigned int vertexCount,
                                    std::span<const std::array<unsigned int, 3>> triangles)
{
    if (vertexCount == UINT_MAX)
        CB_THROW(CbExceptionMemory, "Geometry::CVertexTriangleRelation::Build", "too many vertices");
    SMemoryBlock<unsigned int> offsets;
    offsets.SetCount(vertexCount + 1);
    std::fill(offsets.begin(), offsets.end(), 0u);

    // Count into offsets[v + 1], so that the prefix sum leaves offsets[v] at the first slot of v.
    std::uint64_t incidences = 0;
    for (std::size_t t = 0; t < triangles.size(); ++t)
    {
        const std::array<unsigned int, 3>& corners = triangles[t];
        if (corners[0] >= vertexCount || corners[1] >= vertexCount || corners[2] >= vertexCount)
            CB_THROW(CbExceptionPreconditionViolation, "Geometry::CVertexTriangleRelation::Build",
                     "triangle " + std::to_string(t) + " names a vertex past " + std::to_string(vertexCount));
        forDistinctCorners(corners,
                           [&](unsigned int v)
                           {
                               ++offsets[v + 1];
                               ++incidences;
                           });
    }
    if (incidences > UINT_MAX)
        CB_THROW(CbExceptionMemory, "Geometry::CVertexTriangleRelation::Build",
                 std::to_string(incidences) + " vertex-triangle incidences");
    for (unsigned int v = 0; v < vertexCount; ++v)
        offsets[v + 1] += offsets[v];

    // Place the triangles in ascending order; next[v] is the next free slot of vertex v.
    SMemoryBlock<unsigned int> next(offsets);
    SMemoryBlock<unsigned int> placed;
    placed.SetCount(static_cast<unsigned int>(incidences));
    for (std::size_t t = 0; t < triangles.size(); ++t)
        forDistinctCorners(triangles[t],
                           [&](unsigned int v) { placed[next[v]++] = static_cast<unsigned int>(t); });

    m_offsets.Swap(offsets);
    m_triangles.Swap(placed);
}

void CVertexTriangleRelation::Clear()
{
    m_offsets.RemoveAll();
    m_triangles.RemoveAll();
}
} // namespace Geometry
