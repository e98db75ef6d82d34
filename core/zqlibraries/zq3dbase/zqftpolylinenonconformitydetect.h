#pragma once

#include "basepool/cbflags.h"
#include "basepool/cblist.h"
#include "zq3dbase/zq3dbase_export.h"
#include "zq3dbase/zqpolyline3dbase.h"
#include "zqbase/zqalgorithm.h"

// Finds the segments of a 3D polyline that run backwards against the polyline's course: where the
// polyline turns round and runs back over the way it came (a spike, a flat loop).
//
// Definition. Walk the segments in chain order (on a closed polyline the closing segment from the
// tail to the head comes last). A segment shorter than or as long as the distance tolerance d
// (SetTolerance, default 0) has no direction and is passed over. The first segment with a direction
// sets the course. Every later one either
// - runs backwards: the angle between its direction and the course exceeds 180 degrees minus the
//   angle tolerance a (SetAngleTolerance, default 1 degree). The course stays as it was, so a run
//   of backward segments is judged against the direction the polyline had before it turned; or
// - follows the course: it becomes the course.
// Both vertices of a backward segment are reported with eNT_BackwardSegment: the one where the
// polyline turns back (or goes on backwards) and the one where the backward segment ends. A vertex
// is reported once.
//
//     open (0,0,0) (1,0,0) (1,1,0) (1,0,0) (2,0,0): the third segment (-y) runs back against the
//         course +y of the second; vertices 2 and 3 are reported.
//     open (0,0,0) (2,0,0) (1,0,0) (3,0,0): vertices 1 and 2; the last segment follows the course +x.
//     closed (0,0,0) (1,0,0) (2,0,0) (1,0,0): course +x; the third and the closing segment run
//         back: vertices 2, 3 and 0.
// A turn of less than 180 - a degrees, however sharp, is no reversal, and a polyline that crosses
// itself is not reported for the crossing. The course is local: a polyline that runs back over a
// bent stretch of itself is reported where its segments oppose the last course it followed.
//
// Flags (CbFlags<EFlags>, SetFlags of ZqAlgorithm): eF_BackwardSegments (1, the default) reports
// backward segments; 0 reports nothing.
//
// Inputs:  the polyline, the flags, the two tolerances; the list for the findings (may be null,
//          then only GetNonconformityCount tells the result).
// Outputs: the list, emptied and then filled with the findings in the order of the walk;
//          GetNonconformityCount.
// Failure: no polyline, a negative or NaN tolerance, an angle tolerance outside [0, 90] degrees or
//          a coordinate that is not finite throw CbExceptionPreconditionViolation inside Compute,
//          which then returns false (the list is then empty).
class ZQ3DBASE_API ZqFtPolylineNonconformityDetect : public ZqAlgorithm
{
public:
    enum EFlags : unsigned int
    {
        eF_None = 0,
        eF_BackwardSegments = 1,
    };

    enum ENonconformityType : unsigned int
    {
        eNT_BackwardSegment = 1,
    };

    struct SNonconformity
    {
        SNonconformity(ENonconformityType nonconformityType, const ZqPolylineVertex* nonconformingVertex)
            : type(nonconformityType), vertex(nonconformingVertex)
        {
        }
        friend bool operator==(const SNonconformity&, const SNonconformity&) = default;

        ENonconformityType type;
        const ZqPolylineVertex* vertex;
    };

    static constexpr float kDefaultAngleTolerance = 1.0f;

    ZqFtPolylineNonconformityDetect();
    ~ZqFtPolylineNonconformityDetect() override;

    // polyline and findings must outlive the computation.
    void SetInput(const ZqPolyline3DBase& polyline, CbList<SNonconformity>* findings);
    // Segments up to this length have no direction (>= 0).
    void SetTolerance(float tolerance);
    float GetTolerance() const { return m_tolerance; }
    // a in degrees, 0 to 90: how far from exactly opposite a backward segment may point.
    void SetAngleTolerance(float degrees);
    float GetAngleTolerance() const { return m_angleTolerance; }

    unsigned int GetNonconformityCount() const { return m_count; }

protected:
    void checkPreConditionsInit() const override;
    void compute() override;

private:
    void checkInput() const;
    void report(const ZqPolylineVertex* vertex);

    const ZqPolyline3DBase* m_polyline = nullptr;
    CbList<SNonconformity>* m_findings = nullptr;
    float m_tolerance = 0.0f;
    float m_angleTolerance = kDefaultAngleTolerance;
    unsigned int m_count = 0;
    const ZqPolylineVertex* m_lastReported = nullptr;
};
