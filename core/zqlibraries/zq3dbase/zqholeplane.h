#pragma once

#include "basepool/cbvector2.h"
#include "basepool/cbvector3.h"
#include "zq3dbase/zq3dbase_export.h"
#include "zq3dbase/zqtriangulationbase.h"

#include <vector>

// The plane a hole filler projects a rim into, and what it knows of the surface around the rim.
//
// The normal is Newell's normal of the loop (for a planar loop, the normal of the side from which
// it runs counter-clockwise; for a non-planar one, that of the plane of least squares area). A
// loop that encloses almost no area (a flat or folded rim: its Newell normal is shorter than
// 1e-6 times its squared perimeter) takes the summed normals of the triangles around it instead,
// and, were that zero too, the z axis.
class ZQ3DBASE_API ZqHolePlane
{
public:
    // loop: vertex indices of triangulation in fill orientation (ZqHoleRims); needs the
    // vertex-triangle relation.
    ZqHolePlane(const ZqTriangulationBase& triangulation, const std::vector<unsigned int>& loop);

    const CbVector3d& GetNormal() const { return m_normal; }
    // True when the loop's own normal was too short to use.
    bool IsDegenerate() const { return m_degenerate; }
    // Coordinates in the plane; counter-clockwise loops project counter-clockwise.
    CbVector2d Project(const CbVector3f& position) const;
    // The unit normals of the surface triangles across the loop's edges: entry i belongs to the edge
    // from loop[i] to loop[i + 1] (the last closes the loop); (0,0,0) where no triangle borders it.
    const std::vector<CbVector3d>& GetOutsideNormals() const { return m_outside; }

    // The unit normal of triangle a, b, c (counter-clockwise), (0,0,0) for a degenerate one.
    static CbVector3d TriangleNormal(const CbVector3f& a, const CbVector3f& b, const CbVector3f& c);

private:
    CbVector3d m_normal;
    CbVector3d m_u;
    CbVector3d m_v;
    CbVector3d m_origin;
    bool m_degenerate = false;
    std::vector<CbVector3d> m_outside;
};
