#include "zq3dbase/zqmpcomparepolylines.h"

#include "basepool/cbexception.h"

#include <cmath>

ZqMpComparePolylines::ZqMpComparePolylines() = default;
ZqMpComparePolylines::ZqMpComparePolylines(const ZqMpComparePolylines&) = default;
ZqMpComparePolylines& ZqMpComparePolylines::operator=(const ZqMpComparePolylines&) = default;
ZqMpComparePolylines::~ZqMpComparePolylines() = default;

void ZqMpComparePolylines::SetInput(const ZqPolyline3DBase& first, const ZqPolyline3DBase& second)
{
    m_first = &first;
    m_second = &second;
    setInputChanged();
}

void ZqMpComparePolylines::SetParameters(float tolerance)
{
    m_tolerance = tolerance;
    setInputChanged();
}

void ZqMpComparePolylines::SetDebuggingOption(unsigned int option, bool on)
{
    if (option > 31)
        CB_THROW(CbExceptionPreconditionViolation, "ZqMpComparePolylines::SetDebuggingOption",
                 "debugging option above 31");
    const unsigned int bit = 1u << option;
    m_debuggingOptions = on ? (m_debuggingOptions | bit) : (m_debuggingOptions & ~bit);
}

bool ZqMpComparePolylines::IsDebuggingOption(unsigned int option) const
{
    return option <= 31 && (m_debuggingOptions >> option & 1u) != 0;
}

void ZqMpComparePolylines::checkPreConditionsInit() const
{
    if (!m_first || !m_second)
        CB_THROW(CbExceptionPreconditionViolation, "ZqMpComparePolylines::Compute", "no polylines");
    if (!(m_tolerance >= 0.0f))
        CB_THROW(CbExceptionPreconditionViolation, "ZqMpComparePolylines::Compute",
                 "negative or NaN tolerance");
}

void ZqMpComparePolylines::compute()
{
    m_differences = 0;
    const bool write = IsDebuggingOption(eDO_WriteDifferences);
    if (m_first->IsClosed() != m_second->IsClosed())
    {
        m_differences = 1;
        if (write)
            WriteMessage(eError, CbFormat(L"Polylinien unterscheiden sich: %s / %s\n",
                                          m_first->IsClosed() ? L"geschlossen" : L"offen",
                                          m_second->IsClosed() ? L"geschlossen" : L"offen"));
    }
    else if (m_first->GetVertexCount() != m_second->GetVertexCount())
    {
        m_differences = 1;
        if (write)
            WriteMessage(eError, CbFormat(L"Polylinien unterscheiden sich: %u / %u Punkte\n",
                                          m_first->GetVertexCount(), m_second->GetVertexCount()));
    }
    else
        compareVertices();
    m_equal = m_differences == 0;
    if (!m_equal && IsDebuggingOption(eDO_WritePolylines))
    {
        writePolyline(L"Erste", *m_first);
        writePolyline(L"Zweite", *m_second);
    }
}

void ZqMpComparePolylines::compareVertices()
{
    const double limit = double(m_tolerance) * m_tolerance;
    const bool writeAll = IsDebuggingOption(eDO_WriteAllDifferences);
    unsigned int index = 0;
    const ZqPolylineVertex* b = m_second->GetHeadVertex();
    for (const ZqPolylineVertex& a : *m_first)
    {
        const CbVector3f& p = a.GetPosition();
        const CbVector3f& q = b->GetPosition();
        const double dx = double(p.x) - q.x, dy = double(p.y) - q.y, dz = double(p.z) - q.z;
        const double squared = dx * dx + dy * dy + dz * dz;
        if (!(squared <= limit))
        {
            if (IsDebuggingOption(eDO_WriteDifferences) && (m_differences == 0 || writeAll))
                WriteMessage(eError, CbFormat(L"Polylinien unterscheiden sich in Punkt %u: (%g, %g, %g) / "
                                              L"(%g, %g, %g), Abstand %g\n",
                                              index, p.x, p.y, p.z, q.x, q.y, q.z, std::sqrt(squared)));
            ++m_differences;
        }
        b = b->GetNext();
        ++index;
    }
}

void ZqMpComparePolylines::writePolyline(const wchar_t* name, const ZqPolyline3DBase& polyline) const
{
    WriteMessage(eInfo, CbFormat(L"%s Polylinie, %s, %u Punkte:\n", name,
                                 polyline.IsClosed() ? L"geschlossen" : L"offen", polyline.GetVertexCount()));
    unsigned int index = 0;
    for (const ZqPolylineVertex& vertex : polyline)
    {
        const CbVector3f& p = vertex.GetPosition();
        WriteMessage(eInfo, CbFormat(L"  %u: (%g, %g, %g)\n", index++, p.x, p.y, p.z));
    }
}

ZqUnitTest::EResult ZqMpComparePolylines::runUnitTest(unsigned int index)
{
    if (index > 0)
        CB_THROW(CbException, "ZqMpComparePolylines::runUnitTest");
    return Compute(eCF_Compute | eCF_Force) && GetOutput() ? ePassed : eFailed;
}
