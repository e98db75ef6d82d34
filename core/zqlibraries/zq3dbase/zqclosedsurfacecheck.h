#pragma once

#include "basepool/cstring.h"
#include "zq3dbase/zqtriangulationbase.h"

#include <cstdint>
#include <unordered_set>

// What the hole-filling tests ask of a surface after its holes were filled: it is closed (every
// edge between exactly two triangles), consistently oriented (they run the edge in opposite
// directions, so no directed edge appears twice), and manifold (the triangles round every vertex
// form one closed fan). Vertices that no triangle uses are passed over.
class ZqClosedSurfaceCheck
{
public:
    // Empty when the surface passes; else the first problem found, e.g.
    // "edge 3-7 borders one triangle". Computes the vertex-triangle relation.
    static CString Problem(ZqTriangulationBase& triangulation)
    {
        std::unordered_set<std::uint64_t> directed;
        for (const ZqTriangleCorners& corners : triangulation.GetTriangles())
            for (unsigned int k = 0; k < 3; ++k)
                if (!directed.insert(key(corners[k], corners[(k + 1) % 3])).second)
                    return CbFormat(L"edge %u-%u runs the same way in two triangles", corners[k],
                                    corners[(k + 1) % 3]);
        for (std::uint64_t edge : directed)
            if (!directed.contains(edge >> 32 | edge << 32))
                return CbFormat(L"edge %u-%u borders one triangle", unsigned(edge >> 32), unsigned(edge));
        triangulation.ComputeVertexTriangleRelationship();
        const ZqVertexTriangleRelation& relation = triangulation.GetVertexTriangleRelationship();
        for (unsigned int v = 0; v < triangulation.GetVertexCount(); ++v)
            if (relation.GetTriangleCount(v) != 0 && (relation.GetFanCount(v) != 1 || relation.IsBorder(v)))
                return CbFormat(L"vertex %u has %u fans of triangles", v, relation.GetFanCount(v));
        return CString();
    }

private:
    static std::uint64_t key(unsigned int from, unsigned int to) { return std::uint64_t(from) << 32 | to; }
};
