#pragma once

#include "basepool/cblist.h"
#include "zq3dbase/zq3dbase_export.h"
#include "zq3dbase/zqftpolylineinconsistencydetect.h"
#include "zq3dbase/zqpolyline3dbase.h"
#include "zqbase/zqalgorithm.h"

// Removes the inconsistencies that ZqFtPolylineInconsistencyDetect defines, in place:
// - a twin vertex is removed, so a run of coinciding vertices keeps its first one;
// - a polyline that collapses to a point has no course at all and loses every vertex. A closed
//   polyline whose vertices all coincide is all twins and ends empty the same way.
//       open (0,0,0) (0,0,0) (1,0,0) (1,0,0)  ->  (0,0,0) (1,0,0)
//       closed (0,0,0) (1,0,0) (2,0,0) (0,0,0) -> closed (1,0,0) (2,0,0) (0,0,0)
// After removing the listed findings (if a list was given) it detects again with its own tolerance
// and removes what it finds until nothing is left. With a tolerance d > 0 a chain of vertices each
// within d of the one before shrinks to its first vertex, however far the chain reaches.
//
// Inputs:  the polyline; findings of a detection on it, or null to let the repair detect for
//          itself; the tolerance of its own detection (SetTolerance, default 0).
// Outputs: the polyline without inconsistencies; GetRemovedCount, the number of vertices removed.
// Failure: a finding whose vertex is not one of the polyline's, a negative or NaN tolerance, a
//          coordinate that is not finite or no polyline throw CbExceptionPreconditionViolation
//          inside Compute, which returns false with the polyline unchanged.
class ZQ3DBASE_API ZqFtPolylineInconsistencyRepair : public ZqAlgorithm
{
public:
    using SInconsistency = ZqFtPolylineInconsistencyDetect::SInconsistency;

    ZqFtPolylineInconsistencyRepair();
    ~ZqFtPolylineInconsistencyRepair() override;

    // polyline and findings must outlive the computation; the findings are not changed.
    void SetInput(ZqPolyline3DBase& polyline, const CbList<SInconsistency>* findings = nullptr);
    void SetTolerance(float tolerance);
    float GetTolerance() const { return m_tolerance; }

    unsigned int GetRemovedCount() const { return m_removed; }

protected:
    void checkPreConditionsInit() const override;
    void compute() override;
    void checkPostConditions() const override;

private:
    // Removes what findings name (their vertices belong to the polyline).
    void apply(const CbList<SInconsistency>& findings);
    // Findings of a detection with the repair's tolerance.
    CbList<SInconsistency> detect() const;

    ZqPolyline3DBase* m_polyline = nullptr;
    const CbList<SInconsistency>* m_findings = nullptr;
    float m_tolerance = 0.0f;
    unsigned int m_removed = 0;
};
