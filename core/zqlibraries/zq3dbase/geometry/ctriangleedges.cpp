#include "zq3dbase/geometry/ctriangleedges.h"

#include <algorithm>
#include <vector>

namespace Geometry
{
void CTriangleEdges::Build(std::span<const std::array<unsigned int, 3>> triangles,
                           const ZqVertexTriangleRelation& relation)
{
    SMemoryBlock<unsigned int> sideEdges;
    sideEdges.SetCount(static_cast<unsigned int>(3 * triangles.size()));
    SMemoryBlock<std::array<unsigned int, 2>> vertices;
    vertices.Reserve(static_cast<unsigned int>(triangles.size() * 3 / 2 + 16));

    // Each side is numbered at its lower vertex v, where the triangle is listed exactly once: gather
    // the sides (higher vertex, side slot) of v, sort them by the higher vertex and give each
    // distinct higher vertex the next edge number.
    struct SSide
    {
        unsigned int higher;
        unsigned int slot;
    };
    std::vector<SSide> sides;
    for (unsigned int v = 0; v < relation.GetVertexCount(); ++v)
    {
        sides.clear();
        for (const unsigned int entry : relation.GetEntries(v))
        {
            const unsigned int t = entry & ZqVertexTriangleRelation::kTriangleMask;
            const std::array<unsigned int, 3>& corners = triangles[t];
            for (unsigned int k = 0; k < 3; ++k)
            {
                const unsigned int a = corners[k];
                const unsigned int b = corners[(k + 1) % 3];
                if (std::min(a, b) == v)
                    sides.push_back({std::max(a, b), 3 * t + k});
            }
        }
        std::sort(sides.begin(), sides.end(),
                  [](const SSide& x, const SSide& y)
                  { return x.higher < y.higher || (x.higher == y.higher && x.slot < y.slot); });
        for (std::size_t i = 0; i < sides.size(); ++i)
        {
            if (i == 0 || sides[i].higher != sides[i - 1].higher)
                vertices.Add({v, sides[i].higher});
            sideEdges[sides[i].slot] = vertices.GetCount() - 1;
        }
    }
    m_sideEdges.Swap(sideEdges);
    m_vertices.Swap(vertices);
}

void CTriangleEdges::Clear()
{
    m_sideEdges.RemoveAll();
    m_vertices.RemoveAll();
}
} // namespace Geometry
