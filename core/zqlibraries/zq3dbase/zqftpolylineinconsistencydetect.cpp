#include "zq3dbase/zqftpolylineinconsistencydetect.h"

#include "basepool/cbexception.h"

#include <cmath>

namespace
{
double squaredDistance(const CbVector3f& a, const CbVector3f& b)
{
    const double dx = double(a.x) - b.x, dy = double(a.y) - b.y, dz = double(a.z) - b.z;
    return dx * dx + dy * dy + dz * dz;
}
} // namespace

ZqFtPolylineInconsistencyDetect::ZqFtPolylineInconsistencyDetect()
{
    SetFlags(CbFlags<EFlags>(eF_All));
}

ZqFtPolylineInconsistencyDetect::~ZqFtPolylineInconsistencyDetect() = default;

bool ZqFtPolylineInconsistencyDetect::Compute(const ZqPolyline3DBase& polyline)
{
    ZqFtPolylineInconsistencyDetect detect;
    detect.SetInput(polyline, nullptr);
    detect.checkPreConditionsInit();
    detect.compute();
    return detect.GetInconsistencyCount() != 0;
}

void ZqFtPolylineInconsistencyDetect::SetInput(const ZqPolyline3DBase& polyline,
                                               CbList<SInconsistency>* findings)
{
    m_polyline = &polyline;
    m_findings = findings;
    setInputChanged();
}

void ZqFtPolylineInconsistencyDetect::SetTolerance(float tolerance)
{
    m_tolerance = tolerance;
    setInputChanged();
}

void ZqFtPolylineInconsistencyDetect::checkPreConditionsInit() const
{
    if (!m_polyline)
        CB_THROW(CbExceptionPreconditionViolation, "ZqFtPolylineInconsistencyDetect::Compute", "no polyline");
}

// Checked after the outputs were emptied, so that a failed computation leaves no stale findings.
void ZqFtPolylineInconsistencyDetect::checkInput() const
{
    if (!(m_tolerance >= 0.0f))
        CB_THROW(CbExceptionPreconditionViolation, "ZqFtPolylineInconsistencyDetect::Compute",
                 "negative or NaN tolerance");
    if (!m_polyline->IsFinite())
        CB_THROW(CbExceptionPreconditionViolation, "ZqFtPolylineInconsistencyDetect::Compute",
                 "a coordinate is not finite");
}

void ZqFtPolylineInconsistencyDetect::report(EInconsistencyType type, const ZqPolylineVertex* vertex)
{
    ++m_count;
    if (m_findings)
        m_findings->AddTail(SInconsistency(type, vertex));
}

void ZqFtPolylineInconsistencyDetect::compute()
{
    m_count = 0;
    if (m_findings)
        m_findings->RemoveAll();
    checkInput();
    const ZqPolyline3DBase& polyline = *m_polyline;
    const ZqPolylineVertex* head = polyline.GetHeadVertex();
    if (!head)
        return;
    const double limit = double(m_tolerance) * m_tolerance;
    if (IsFlagSet(eF_Collapsed) && !polyline.IsClosed())
    {
        bool collapsed = true;
        for (const ZqPolylineVertex& vertex : polyline)
            collapsed = collapsed && squaredDistance(vertex.GetPosition(), head->GetPosition()) <= limit;
        if (collapsed)
            report(eIT_Collapsed, head);
    }
    if (IsFlagSet(eF_Twins))
        for (const ZqPolylineVertex& vertex : polyline)
        {
            const ZqPolylineVertex* predecessor = polyline.GetPredecessor(&vertex);
            if (predecessor && squaredDistance(vertex.GetPosition(), predecessor->GetPosition()) <= limit)
                report(eIT_Twin, &vertex);
        }
}
