#pragma once

#include "zq3dbase/zq3dbase_export.h"
#include "zq3dbase/zqpolylinetriangulationlist.h"
#include "zq3dbase/zqtriangulationbase.h"

#include <vector>

// The rims of holes in a triangulation as loops of vertex indices. A loop runs the way a triangle
// filling the hole must run to agree with the triangles around it: each rim edge a -> b of a
// surface triangle appears in the loop as b -> a, so the fill is counter-clockwise seen from the
// side the surface faces.
//
// A rim edge is a border edge: an edge used by one triangle only. Rims that pass a vertex twice (two
// holes touching at a vertex) are split there into simple loops, each filled on its own; loops of
// fewer than three vertices enclose nothing and are dropped.
//
// Both functions need the triangulation's vertex-triangle relation.
class ZQ3DBASE_API ZqHoleRims
{
public:
    using Loop = std::vector<unsigned int>;

    // The loops of the hole that rim describes: one vertex per rim edge, each naming the triangle
    // that borders the hole along that edge, in order round the hole in either direction (the
    // rim's vertex references are not used). Throws CbExceptionPreconditionViolation when a
    // triangle is not one of the triangulation's or the triangles do not run round a hole.
    static std::vector<Loop> FromRim(const ZqTriangulationBase& triangulation,
                                     const ZqPolylineTriangulation& rim);

    // The loops of the holes whose rims are listed, in list order; a hole listed twice gives its
    // loops once. Throws CbExceptionPreconditionViolation for a rim bound to another triangulation,
    // and where FromRim throws.
    static std::vector<Loop> FromRims(const ZqTriangulationBase& triangulation,
                                      const ZqPolylineTriangulationList& rims);

    // The loops of every hole: all border edges, chained into closed walks. Border edges that do
    // not close into a walk (a surface whose orientation flips along its border) are left out.
    static std::vector<Loop> FindAll(const ZqTriangulationBase& triangulation);

    // Throws CbExceptionPreconditionViolation naming function when a vertex of the loops has a
    // coordinate that is not finite.
    static void CheckFinite(const ZqTriangulationBase& triangulation, const std::vector<Loop>& loops,
                            const char* function);

    // Splits a closed walk at its repeated vertices into simple loops, the first to close first.
    static std::vector<Loop> SplitAtRepeatedVertices(const Loop& walk);
};
