#include "zq3dbase/zqftpolylineinconsistencyrepair.h"

#include "basepool/cbexception.h"

#include <unordered_set>

ZqFtPolylineInconsistencyRepair::ZqFtPolylineInconsistencyRepair() = default;

ZqFtPolylineInconsistencyRepair::~ZqFtPolylineInconsistencyRepair() = default;

void ZqFtPolylineInconsistencyRepair::SetInput(ZqPolyline3DBase& polyline,
                                               const CbList<SInconsistency>* findings)
{
    m_polyline = &polyline;
    m_findings = findings;
    setInputChanged();
}

void ZqFtPolylineInconsistencyRepair::SetTolerance(float tolerance)
{
    m_tolerance = tolerance;
    setInputChanged();
}

void ZqFtPolylineInconsistencyRepair::checkPreConditionsInit() const
{
    const char* function = "ZqFtPolylineInconsistencyRepair::Compute";
    if (!m_polyline)
        CB_THROW(CbExceptionPreconditionViolation, function, "no polyline");
    if (!(m_tolerance >= 0.0f))
        CB_THROW(CbExceptionPreconditionViolation, function, "negative or NaN tolerance");
    if (!m_polyline->IsFinite())
        CB_THROW(CbExceptionPreconditionViolation, function, "a coordinate is not finite");
    if (!m_findings)
        return;
    std::unordered_set<const ZqPolylineVertex*> vertices;
    for (const ZqPolylineVertex& vertex : *m_polyline)
        vertices.insert(&vertex);
    for (const SInconsistency& finding : *m_findings)
        if (!vertices.contains(finding.vertex))
            CB_THROW(CbExceptionPreconditionViolation, function,
                     "a finding names a vertex of another polyline");
}

CbList<ZqFtPolylineInconsistencyRepair::SInconsistency> ZqFtPolylineInconsistencyRepair::detect() const
{
    CbList<SInconsistency> findings;
    ZqFtPolylineInconsistencyDetect detector;
    detector.SetTolerance(m_tolerance);
    detector.SetInput(*m_polyline, &findings);
    if (!detector.Compute())
        CB_THROW(CbExceptionPreconditionViolation, "ZqFtPolylineInconsistencyRepair::Compute",
                 detector.GetLastError());
    return findings;
}

void ZqFtPolylineInconsistencyRepair::apply(const CbList<SInconsistency>& findings)
{
    std::unordered_set<const ZqPolylineVertex*> twins;
    for (const SInconsistency& finding : findings)
    {
        if (finding.type == ZqFtPolylineInconsistencyDetect::eIT_Collapsed)
        {
            m_removed += m_polyline->GetVertexCount();
            m_polyline->RemoveAll();
            return;
        }
        twins.insert(finding.vertex);
    }
    for (ZqPolylineVertex* vertex = m_polyline->GetHeadVertex(); vertex;)
    {
        ZqPolylineVertex* next = vertex->GetNext();
        if (twins.contains(vertex))
        {
            m_polyline->RemoveVertex(vertex);
            ++m_removed;
        }
        vertex = next;
    }
}

void ZqFtPolylineInconsistencyRepair::compute()
{
    m_removed = 0;
    if (m_findings)
        apply(*m_findings);
    // Each round removes at least one vertex, so this ends.
    for (CbList<SInconsistency> findings = detect(); !findings.IsEmpty(); findings = detect())
        apply(findings);
    m_polyline->computeIndices();
}

void ZqFtPolylineInconsistencyRepair::checkPostConditions() const
{
    if (!detect().IsEmpty())
        CB_THROW(CbException, "ZqFtPolylineInconsistencyRepair::checkPostConditions",
                 "an inconsistency is left");
}
