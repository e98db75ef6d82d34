#include "zq3dbase/zqmpcomparetriangulationsold.h"

#include <algorithm>
#include <array>
#include <cmath>

namespace
{
// The components of an attribute value, for comparing and printing.
std::array<double, 1> components(float v)
{
    return {v};
}
std::array<double, 1> components(unsigned int v)
{
    return {double(v)};
}
std::array<double, 2> components(const CbVector2f& v)
{
    return {v.x, v.y};
}
std::array<double, 3> components(const CbVector3f& v)
{
    return {v.x, v.y, v.z};
}
std::array<double, 4> components(const ZqColorRGBA& v)
{
    return {v.r, v.g, v.b, v.a};
}

template <class T> bool isNear(const T& a, const T& b, double tolerance)
{
    const auto ca = components(a);
    const auto cb = components(b);
    // Equal values (infinities included) and two NaNs agree; anything else must lie within the tolerance.
    for (std::size_t i = 0; i < ca.size(); ++i)
        if (ca[i] != cb[i] && !(std::isnan(ca[i]) && std::isnan(cb[i])) &&
            !(std::fabs(ca[i] - cb[i]) <= tolerance))
            return false;
    return true;
}

template <class T> CString describe(const T& value)
{
    const auto c = components(value);
    CString text = c.size() > 1 ? L"(" : L"";
    for (std::size_t i = 0; i < c.size(); ++i)
        text.AppendFormat(i ? L", %.9g" : L"%.9g", c[i]);
    if (c.size() > 1)
        text += L")";
    return text;
}

bool sameCorners(const ZqTriangleCorners& a, const ZqTriangleCorners& b, bool cyclic)
{
    if (a == b)
        return true;
    if (!cyclic)
        return false;
    return (a[0] == b[1] && a[1] == b[2] && a[2] == b[0]) || (a[0] == b[2] && a[1] == b[0] && a[2] == b[1]);
}

const wchar_t* onOff(bool value)
{
    return value ? L"ein" : L"aus";
}

// "Eckpunkt-Attribut 'normal'"
template <class TEnum> CString slotName(TEnum attribute)
{
    const bool vertex = std::is_same_v<TEnum, EVertexAttribute>;
    return CbFormat(L"%s-Attribut '%S'", vertex ? L"Eckpunkt" : L"Dreieck", ZqGetAttributeName(attribute));
}
} // namespace

ZqMpCompareTriangulationsOld::~ZqMpCompareTriangulationsOld() = default;

void ZqMpCompareTriangulationsOld::SetInput(const ZqTriangulationBase& first,
                                            const ZqTriangulationBase& second)
{
    m_first = &first;
    m_second = &second;
    setInputChanged();
}

void ZqMpCompareTriangulationsOld::SetParameters(float tolerance, float attributeTolerance)
{
    m_tolerance = tolerance;
    m_attributeTolerance = attributeTolerance;
    setInputChanged();
}

bool ZqMpCompareTriangulationsOld::Compute(const ZqTriangulationBase& first,
                                           const ZqTriangulationBase& second, float tolerance,
                                           float attributeTolerance)
{
    SetInput(first, second);
    SetParameters(tolerance, attributeTolerance);
    return Compute(eCF_Compute) && GetOutput();
}

void ZqMpCompareTriangulationsOld::checkPreConditionsInit() const
{
    if (!m_first || !m_second)
        CB_THROW(CbExceptionPreconditionViolation, "ZqMpCompareTriangulationsOld::Compute", "no input");
}

void ZqMpCompareTriangulationsOld::compute()
{
    m_equal = true;
    m_differences = 0;
    float scale = 1.0f;
    if (IsFlagSet(eF_RelativeTolerance) && m_first->GetVertexCount() > 0)
    {
        CbVector3f low = m_first->GetPositions()[0], high = low;
        for (const CbVector3f& p : m_first->GetPositions())
        {
            low = {std::min(low.x, p.x), std::min(low.y, p.y), std::min(low.z, p.z)};
            high = {std::max(high.x, p.x), std::max(high.y, p.y), std::max(high.z, p.z)};
        }
        scale = (high - low).Length();
    }
    const float attributeTolerance =
        (m_attributeTolerance < 0.0f ? m_tolerance : m_attributeTolerance) * scale;
    compareCounts();
    if (!m_equal)
        return;
    comparePositions(m_tolerance * scale);
    compareTriangles();
    if (IsFlagSet(eF_CompareAttributes))
        compareAttributes(attributeTolerance);
    if (IsFlagSet(eF_CompareSerializeSwitches) || IsFlagSet(eF_CompareParameters))
        compareSlots(attributeTolerance);
}

void ZqMpCompareTriangulationsOld::report(bool first, const CString& text)
{
    m_equal = false;
    ++m_differences;
    if (first || IsFlagSet(eF_ReportAll))
        WriteMessage(eError, text);
}

void ZqMpCompareTriangulationsOld::compareCounts()
{
    const unsigned int v1 = m_first->GetVertexCount(), v2 = m_second->GetVertexCount();
    const unsigned int t1 = m_first->GetTriangleCount(), t2 = m_second->GetTriangleCount();
    if (v1 != v2)
        report(true, CbFormat(L"Anzahl der Eckpunkte verschieden: %u und %u", v1, v2));
    if (t1 != t2)
        report(true, CbFormat(L"Anzahl der Dreiecke verschieden: %u und %u", t1, t2));
}

void ZqMpCompareTriangulationsOld::comparePositions(float tolerance)
{
    const auto a = m_first->GetPositions();
    const auto b = m_second->GetPositions();
    unsigned int firstDifference = 0, count = 0;
    for (unsigned int v = 0; v < a.size(); ++v)
        if (!isNear(a[v], b[v], tolerance))
        {
            if (count++ == 0)
                firstDifference = v;
            else if (IsFlagSet(eF_ReportAll))
                report(false,
                       CbFormat(L"Eckpunkt %u verschieden: %s und %s", v, describe(a[v]), describe(b[v])));
        }
    if (count > 0)
        report(true, CbFormat(L"Eckpunkt %u verschieden: %s und %s; %u von %u Eckpunkten verschieden",
                              firstDifference, describe(a[firstDifference]), describe(b[firstDifference]),
                              count, unsigned(a.size())));
}

void ZqMpCompareTriangulationsOld::compareTriangles()
{
    const auto a = m_first->GetTriangles();
    const auto b = m_second->GetTriangles();
    const bool cyclic = IsFlagSet(eF_CyclicCorners);
    const auto corners = [](const ZqTriangleCorners& c)
    { return CbFormat(L"(%u, %u, %u)", c[0], c[1], c[2]); };
    unsigned int firstDifference = 0, count = 0;
    for (unsigned int t = 0; t < a.size(); ++t)
        if (!sameCorners(a[t], b[t], cyclic))
        {
            if (count++ == 0)
                firstDifference = t;
            else if (IsFlagSet(eF_ReportAll))
                report(false,
                       CbFormat(L"Dreieck %u verschieden: %s und %s", t, corners(a[t]), corners(b[t])));
        }
    if (count > 0)
        report(true, CbFormat(L"Dreieck %u verschieden: %s und %s; %u von %u Dreiecken verschieden",
                              firstDifference, corners(a[firstDifference]), corners(b[firstDifference]),
                              count, unsigned(a.size())));
}

void ZqMpCompareTriangulationsOld::compareAttributes(float tolerance)
{
    const auto compareSet = [this, tolerance](const auto& first, const auto& second)
    {
        first.ForEachPair(
            second,
            [this, tolerance](auto attribute, const auto& a, const auto& b)
            {
                if (a.present != b.present)
                {
                    report(true, CbFormat(L"%s fehlt in der %s Triangulation", slotName(attribute),
                                          a.present ? L"zweiten" : L"ersten"));
                    return;
                }
                unsigned int firstDifference = 0, count = 0;
                for (unsigned int i = 0; a.present && i < a.values.GetCount(); ++i)
                    if (!isNear(a.values[i], b.values[i], tolerance) && count++ == 0)
                        firstDifference = i;
                if (count > 0)
                    report(true,
                           CbFormat(L"%s verschieden bei Element %u: %s und %s; %u Elemente verschieden",
                                    slotName(attribute), firstDifference, describe(a.values[firstDifference]),
                                    describe(b.values[firstDifference]), count));
            });
    };
    compareSet(m_first->GetVertexAttributes(), m_second->GetVertexAttributes());
    compareSet(m_first->GetTriangleAttributes(), m_second->GetTriangleAttributes());
}

void ZqMpCompareTriangulationsOld::compareSlots(float tolerance)
{
    const auto compareSet = [this, tolerance](const auto& first, const auto& second)
    {
        first.ForEachPair(second,
                          [this, tolerance](auto attribute, const auto& a, const auto& b)
                          {
                              if (IsFlagSet(eF_CompareSerializeSwitches) && a.serialize != b.serialize)
                                  report(true, CbFormat(L"%s: Serialisierung %s und %s", slotName(attribute),
                                                        onOff(a.serialize), onOff(b.serialize)));
                              if (!IsFlagSet(eF_CompareParameters) || (!a.parameter && !b.parameter))
                                  return;
                              if (a.parameter && b.parameter && a.parameter->IsEqual(*b.parameter, tolerance))
                                  return;
                              const auto text = [](const CbSmartPointer<ZqAttributeParameter>& p)
                              { return p ? p->Describe() : CString(L"keiner"); };
                              report(true,
                                     CbFormat(L"%s: Parameter verschieden: %s und %s", slotName(attribute),
                                              text(a.parameter), text(b.parameter)));
                          });
    };
    compareSet(m_first->GetVertexAttributes(), m_second->GetVertexAttributes());
    compareSet(m_first->GetTriangleAttributes(), m_second->GetTriangleAttributes());
}

ZqUnitTest::EResult ZqMpCompareTriangulationsOld::runUnitTest(unsigned int index)
{
    if (index != 0)
        CB_THROW(CbException, "ZqMpCompareTriangulationsOld::runUnitTest");
    return Compute(eCF_Force) && GetOutput() ? ePassed : eFailed;
}
