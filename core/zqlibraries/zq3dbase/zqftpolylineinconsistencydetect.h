#pragma once

#include "basepool/cbflags.h"
#include "basepool/cblist.h"
#include "zq3dbase/zq3dbase_export.h"
#include "zq3dbase/zqpolyline3dbase.h"
#include "zqbase/zqalgorithm.h"

// Finds the vertices of a 3D polyline that carry no shape: a polyline that collapses to one point,
// and twin vertices that repeat the position of their predecessor. ZqFtPolylineInconsistencyRepair
// removes them.
//
// Definitions, with the distance tolerance d (SetTolerance; default 0, that is, equal positions):
// - collapsed (eIT_Collapsed): an open polyline of at least one vertex whose every vertex lies
//   within d of the head. Reported once, at the head. A closed polyline is never reported as
//   collapsed: its coinciding vertices are twins.
// - twin (eIT_Twin): a vertex within d of its predecessor, reported at the later vertex of the pair.
//   On a closed polyline the head's predecessor is the tail, so a single closed vertex is its own
//   twin and a closed polyline whose vertices all coincide reports every vertex.
//       open (0,0,0) (0,0,0) (1,0,0)  ->  twin at vertex 1
//       open (0,0,0) (0,0,0)          ->  collapsed at vertex 0, twin at vertex 1
//       closed (0,0,0) (1,0,0) (0,0,0) -> twin at vertex 0 (it repeats the tail)
//
// Flags (CbFlags<EFlags>, SetFlags of ZqAlgorithm): eF_Collapsed reports collapsed polylines,
// eF_Twins twin vertices; 3 (eF_All, the default) reports both, 0 nothing.
//
// Inputs:  the polyline and the flags, the tolerance; the list for the findings (may be null,
//          then only GetInconsistencyCount tells the result).
// Outputs: the list, emptied and then filled with the findings, the collapse first, the twins in
//          chain order; GetInconsistencyCount.
// Failure: no polyline set, a negative or NaN tolerance or a coordinate that is not finite throws
//          CbExceptionPreconditionViolation inside Compute, which then returns false (the list is
//          then empty).
class ZQ3DBASE_API ZqFtPolylineInconsistencyDetect : public ZqAlgorithm
{
public:
    enum EFlags : unsigned int
    {
        eF_None = 0,
        eF_Collapsed = 1,
        eF_Twins = 2,
        eF_All = eF_Collapsed | eF_Twins,
    };

    enum EInconsistencyType : unsigned int
    {
        eIT_Collapsed = 1,
        eIT_Twin = 2,
    };

    struct SInconsistency
    {
        SInconsistency(EInconsistencyType inconsistencyType, const ZqPolylineVertex* inconsistentVertex)
            : type(inconsistencyType), vertex(inconsistentVertex)
        {
        }
        friend bool operator==(const SInconsistency&, const SInconsistency&) = default;

        EInconsistencyType type;
        const ZqPolylineVertex* vertex;
    };

    ZqFtPolylineInconsistencyDetect();
    ~ZqFtPolylineInconsistencyDetect() override;

    using ZqAlgorithm::Compute;
    // True when polyline has a collapse or a twin vertex (all flags, equal positions). A coordinate
    // that is not finite throws CbExceptionPreconditionViolation.
    static bool Compute(const ZqPolyline3DBase& polyline);

    // polyline and findings must outlive the computation.
    void SetInput(const ZqPolyline3DBase& polyline, CbList<SInconsistency>* findings);
    // Largest distance at which two positions count as one (>= 0).
    void SetTolerance(float tolerance);
    float GetTolerance() const { return m_tolerance; }

    unsigned int GetInconsistencyCount() const { return m_count; }

protected:
    void checkPreConditionsInit() const override;
    void compute() override;

private:
    void checkInput() const;
    void report(EInconsistencyType type, const ZqPolylineVertex* vertex);

    const ZqPolyline3DBase* m_polyline = nullptr;
    CbList<SInconsistency>* m_findings = nullptr;
    float m_tolerance = 0.0f;
    unsigned int m_count = 0;
};
