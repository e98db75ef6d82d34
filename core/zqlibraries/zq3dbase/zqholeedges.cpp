#include "zq3dbase/zqholeedges.h"

#include "basepool/cbexception.h"

void ZqHoleEdges::Gather(const ZqTriangulationBase& triangulation,
                         std::span<const std::vector<unsigned int>> loops)
{
    if (!triangulation.HasVertexTriangleRelationship())
        CB_THROW(CbExceptionPreconditionViolation, "ZqHoleEdges::Gather", "no vertex-triangle relation");
    std::unordered_set<unsigned int> onRim;
    for (const std::vector<unsigned int>& loop : loops)
        onRim.insert(loop.begin(), loop.end());
    const ZqVertexTriangleRelation& relation = triangulation.GetVertexTriangleRelationship();
    const auto triangles = triangulation.GetTriangles();
    for (unsigned int vertex : onRim)
        for (unsigned int i = 0; i < relation.GetTriangleCount(vertex); ++i)
            for (unsigned int other : triangles[relation.GetTriangle(vertex, i)])
                if (other != vertex && onRim.contains(other))
                    Insert(vertex, other);
}
