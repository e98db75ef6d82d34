#pragma once

#include "zq3dbase/zq3dbase_export.h"
#include "zq3dbase/zqholeedges.h"
#include "zq3dbase/zqholefill.h"
#include "zq3dbase/zqpolylinetriangulationlist.h"
#include "zq3dbase/zqtriangulationbase.h"
#include "zqbase/zqalgorithm.h"

#include <vector>

// Base of the first-generation hole fillers: closes the listed holes of a triangulation in place.
// A derived filler says how one loop is closed (fillLoop); the base finds the loops, keeps the
// edges no filler may create twice, and changes the triangulation only when every hole is filled.
//
// Inputs:  the triangulation; the holes, each a ZqPolylineTriangulation bound to that triangulation
//          whose steps name the triangles round the hole in order (either direction; see
//          ZqHoleRims::FromRim). A rim that passes a vertex twice is filled as separate loops.
// Outputs: the triangulation with the fill triangles appended after its own, hole by hole in list
//          order, each triangle counter-clockwise like its neighbours and starting at its lowest
//          vertex index; vertices a filler had to add come after the existing ones.
//          GetAddedTriangleCount, GetAddedVertexCount, GetLoopCount.
// Failure: no triangulation, a rim bound to another triangulation, a rim whose triangles do not
//          run round a hole, or a rim vertex with a coordinate that is not finite throw
//          CbExceptionPreconditionViolation inside Compute, which returns false and leaves the
//          triangulation unchanged (its vertex-triangle relation computed).
class ZQ3DBASE_API ZqFtTriangulationFillHolesBaseOld : public ZqAlgorithm
{
public:
    ZqFtTriangulationFillHolesBaseOld();
    ~ZqFtTriangulationFillHolesBaseOld() override;

    // Both must outlive the computation.
    void SetInput(ZqTriangulationBase& triangulation, const ZqPolylineTriangulationList& holes);

    unsigned int GetAddedTriangleCount() const { return m_addedTriangles; }
    unsigned int GetAddedVertexCount() const { return m_addedVertices; }
    unsigned int GetLoopCount() const { return m_loops; }

protected:
    void checkPreConditionsInit() const override;
    void compute() override;

    // Closes loop (vertex indices in fill orientation, at least three) with triangles added to
    // fill, never drawing an edge that edges holds, and adds each new edge to edges.
    virtual void fillLoop(const std::vector<unsigned int>& loop, ZqHoleEdges& edges, ZqHoleFill& fill) = 0;

    const ZqTriangulationBase& getTriangulation() const { return *m_triangulation; }

private:
    ZqTriangulationBase* m_triangulation = nullptr;
    const ZqPolylineTriangulationList* m_holes = nullptr;
    unsigned int m_addedTriangles = 0;
    unsigned int m_addedVertices = 0;
    unsigned int m_loops = 0;
};
