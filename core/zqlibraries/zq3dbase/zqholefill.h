#pragma once

#include "basepool/cbvector3.h"
#include "zq3dbase/zq3dbase_export.h"
#include "zq3dbase/zqholeedges.h"
#include "zq3dbase/zqtriangulationbase.h"

#include <vector>

// What hole fillers make before they change the triangulation: the new triangles and the new
// vertices (numbered after the triangulation's), so that a failing computation leaves the
// triangulation as it was.
class ZQ3DBASE_API ZqHoleFill
{
public:
    explicit ZqHoleFill(const ZqTriangulationBase& triangulation);

    const std::vector<ZqTriangleCorners>& GetTriangles() const { return m_triangles; }
    // For improvers that rearrange the triangles they were given (ZqHoleFlips).
    std::vector<ZqTriangleCorners>& GetTriangles() { return m_triangles; }
    unsigned int GetAddedVertexCount() const { return static_cast<unsigned int>(m_vertices.size()); }
    // The position of a vertex of the triangulation or of one added here.
    const CbVector3f& GetPosition(unsigned int vertex) const;

    // A triangle counter-clockwise a, b, c; its edges join edges.
    void AddTriangle(unsigned int a, unsigned int b, unsigned int c, ZqHoleEdges& edges);
    // Closes polygon (vertex indices in fill orientation) with a fan round a new vertex at its
    // centroid: the way out when no diagonal may be drawn because each one exists already.
    void AddFan(const std::vector<unsigned int>& polygon, ZqHoleEdges& edges);

    // Appends the new vertices, then the triangles, each starting at its lowest vertex index so that
    // the result does not depend on where a rim began.
    void ApplyTo(ZqTriangulationBase& triangulation) const;

private:
    const ZqTriangulationBase& m_triangulation;
    std::vector<CbVector3f> m_vertices;
    std::vector<ZqTriangleCorners> m_triangles;
};
