#pragma once

#include "zq3dbase/zq3dbase_export.h"
#include "zq3dbase/zqpolylinetriangulationlist.h"
#include "zq3dbase/zqtriangulationbase.h"
#include "zqbase/zqalgorithm.h"

// Closes holes of a triangulation in place with well-shaped triangles, also holes of many thousand
// rim vertices and holes whose rim does not lie in a plane.
//
// Each hole loop is cut best ear first (ZqHoleEarCutter: the cost of an ear weighs its largest angle
// and its dihedral angles with the triangles round it) in O(n log n) for n rim vertices, and then,
// with eF_Flips, its diagonals are flipped while that raises the smallest angle without folding the
// fill against its neighbours (ZqHoleFlips). No edge is ever made twice: a diagonal that exists
// already is not drawn, and a loop whose every diagonal exists is closed by a fan round a new vertex.
//
// Inputs:  the triangulation, changed in place; either the holes to fill (ZqPolylineTriangulation
//          rims bound to it, see ZqHoleRims::FromRim) or none, which fills every hole: each closed
//          loop of border edges (on an open surface that includes its outer border; cap the loops
//          with SetMaxRimVertexCount). Flags: eF_Flips (default on).
// Outputs: the triangulation with the new vertices after its own and the fill triangles after its
//          own, loop by loop, counter-clockwise like the surface round them, each starting at its
//          lowest vertex index. GetFilledLoopCount, GetSkippedLoopCount (loops above the cap),
//          GetAddedTriangleCount, GetAddedVertexCount, GetFlipCount.
// Failure: no triangulation, a rim bound to another triangulation, a rim whose triangles do not run
//          round a hole, or a coordinate of a rim vertex that is not finite throw
//          CbExceptionPreconditionViolation inside Compute, which returns false and leaves the
//          triangulation as it was (its vertex-triangle relation computed).
class ZQ3DBASE_API ZqFtTriangulationFillHolesEarCut : public ZqAlgorithm
{
public:
    enum EFlags : unsigned int
    {
        eF_None = 0,
        eF_Flips = 1,
    };

    ZqFtTriangulationFillHolesEarCut();
    ~ZqFtTriangulationFillHolesEarCut() override;

    // Fills every hole; the triangulation must outlive the computation.
    void SetInput(ZqTriangulationBase& triangulation);
    // Fills the listed holes; both must outlive the computation.
    void SetInput(ZqTriangulationBase& triangulation, const ZqPolylineTriangulationList& holes);
    // Loops of more rim vertices are left open; 0 (the default) fills loops of any size.
    void SetMaxRimVertexCount(unsigned int count);

    unsigned int GetFilledLoopCount() const { return m_filled; }
    unsigned int GetSkippedLoopCount() const { return m_skipped; }
    unsigned int GetAddedTriangleCount() const { return m_addedTriangles; }
    unsigned int GetAddedVertexCount() const { return m_addedVertices; }
    unsigned int GetFlipCount() const { return m_flips; }

protected:
    void checkPreConditionsInit() const override;
    void compute() override;

private:
    ZqTriangulationBase* m_triangulation = nullptr;
    const ZqPolylineTriangulationList* m_holes = nullptr;
    unsigned int m_maxRimVertices = 0;
    unsigned int m_filled = 0;
    unsigned int m_skipped = 0;
    unsigned int m_addedTriangles = 0;
    unsigned int m_addedVertices = 0;
    unsigned int m_flips = 0;
};
