#pragma once

#include "zq3dbase/zq3dbase_export.h"
#include "zq3dbase/zqfttriangulationfillholesbaseold.h"

// The first-generation ear cutter. Each loop is projected into its plane (ZqHolePlane); the cutter
// walks round it from its lowest vertex index and cuts the first ear it meets: a corner that is
// convex in the plane, whose triangle holds no other rim vertex, and whose diagonal is no edge yet.
// After a cut it goes on two corners further, so the triangles form strips rather than one fan.
//
// When a whole round finds no ear (the projection of a non-planar rim folds over itself, or every
// free diagonal crosses the rim), the corner with the smallest angle in space whose diagonal is free
// is cut. When no diagonal at all is free, the rest of the loop is closed by a fan round a new
// vertex at its centroid.
//
//     square hole 0 (0,0,0), 1 (1,0,0), 2 (1,1,0), 3 (0,1,0), no edge 1-3 or 0-2 yet:
//         ear at 0 (diagonal 3-1): (3, 0, 1) -> stored (0, 1, 3); then (1, 2, 3)
//
// Cost: O(n^2) for a loop of n vertices (each ear test scans the loop for reflex corners inside).
// Inputs, outputs and failures: ZqFtTriangulationFillHolesBaseOld.
class ZQ3DBASE_API ZqFtTriangulationFillHolesEarcutOld : public ZqFtTriangulationFillHolesBaseOld
{
public:
    ZqFtTriangulationFillHolesEarcutOld();
    ~ZqFtTriangulationFillHolesEarcutOld() override;

protected:
    void fillLoop(const std::vector<unsigned int>& loop, ZqHoleEdges& edges, ZqHoleFill& fill) override;
};
