#include "zq3dbase/zqftpolylinenonconformitydetect.h"

#include "basepool/cbexception.h"

#include <cmath>
#include <numbers>

namespace
{
struct SDirection
{
    double x, y, z;

    double Dot(const SDirection& other) const { return x * other.x + y * other.y + z * other.z; }
    double Length() const { return std::sqrt(Dot(*this)); }
};

SDirection direction(const CbVector3f& from, const CbVector3f& to)
{
    return {double(to.x) - from.x, double(to.y) - from.y, double(to.z) - from.z};
}
} // namespace

ZqFtPolylineNonconformityDetect::ZqFtPolylineNonconformityDetect()
{
    SetFlags(CbFlags<EFlags>(eF_BackwardSegments));
}

ZqFtPolylineNonconformityDetect::~ZqFtPolylineNonconformityDetect() = default;

void ZqFtPolylineNonconformityDetect::SetInput(const ZqPolyline3DBase& polyline,
                                               CbList<SNonconformity>* findings)
{
    m_polyline = &polyline;
    m_findings = findings;
    setInputChanged();
}

void ZqFtPolylineNonconformityDetect::SetTolerance(float tolerance)
{
    m_tolerance = tolerance;
    setInputChanged();
}

void ZqFtPolylineNonconformityDetect::SetAngleTolerance(float degrees)
{
    m_angleTolerance = degrees;
    setInputChanged();
}

void ZqFtPolylineNonconformityDetect::checkPreConditionsInit() const
{
    const char* function = "ZqFtPolylineNonconformityDetect::Compute";
    if (!m_polyline)
        CB_THROW(CbExceptionPreconditionViolation, function, "no polyline");
}

// Checked after the outputs were emptied, so that a failed computation leaves no stale findings.
void ZqFtPolylineNonconformityDetect::checkInput() const
{
    const char* function = "ZqFtPolylineNonconformityDetect::Compute";
    if (!(m_tolerance >= 0.0f))
        CB_THROW(CbExceptionPreconditionViolation, function, "negative or NaN tolerance");
    if (!(m_angleTolerance >= 0.0f && m_angleTolerance <= 90.0f))
        CB_THROW(CbExceptionPreconditionViolation, function, "angle tolerance outside 0 to 90 degrees");
    if (!m_polyline->IsFinite())
        CB_THROW(CbExceptionPreconditionViolation, function, "a coordinate is not finite");
}

void ZqFtPolylineNonconformityDetect::report(const ZqPolylineVertex* vertex)
{
    if (vertex == m_lastReported)
        return;
    m_lastReported = vertex;
    ++m_count;
    if (m_findings)
        m_findings->AddTail(SNonconformity(eNT_BackwardSegment, vertex));
}

void ZqFtPolylineNonconformityDetect::compute()
{
    m_count = 0;
    m_lastReported = nullptr;
    if (m_findings)
        m_findings->RemoveAll();
    checkInput();
    if (!IsFlagSet(eF_BackwardSegments))
        return;
    const ZqPolyline3DBase& polyline = *m_polyline;
    const double cosine = std::cos(double(m_angleTolerance) * std::numbers::pi / 180.0);
    bool hasCourse = false;
    SDirection course{};
    double courseLength = 0.0;
    for (const ZqPolylineVertex& start : polyline)
    {
        const ZqPolylineVertex* end = polyline.GetSuccessor(&start);
        if (!end)
            break;
        const SDirection segment = direction(start.GetPosition(), end->GetPosition());
        const double length = segment.Length();
        if (length <= m_tolerance)
            continue;
        if (hasCourse && segment.Dot(course) < -cosine * length * courseLength)
        {
            report(&start);
            report(end);
            continue;
        }
        hasCourse = true;
        course = segment;
        courseLength = length;
    }
}
