#include "zq3dbase/zqmpcomparetriangulations.h"

#include "basepool/cbexception.h"

#include <cmath>
#include <cstring>

using namespace Geometry;

namespace
{
const wchar_t* typeName(EAttributeType type)
{
    switch (type)
    {
    case eAT_Float:
        return L"float";
    case eAT_Double:
        return L"double";
    case eAT_Vector3f:
        return L"CbVector3f";
    case eAT_Vector2f:
        return L"CbVector2f";
    case eAT_UnsignedInt:
        return L"unsigned int";
    default:
        return L"ZqColorRGBA";
    }
}

const wchar_t* domainName(EElementKind domain)
{
    return domain == eEK_Vertices ? L"Eckpunkt" : L"Dreieck";
}

// "(x)", "(x, y)", "(x, y, z)" or "(r, g, b, a)".
CString formatValue(const void* value, EAttributeType type)
{
    if (type == eAT_Double)
    {
        double d = 0;
        std::memcpy(&d, value, sizeof(d));
        return CbFormat(L"(%.17g)", d);
    }
    if (type == eAT_UnsignedInt)
    {
        unsigned int u = 0;
        std::memcpy(&u, value, sizeof(u));
        return CbFormat(L"(%u)", u);
    }
    const unsigned int components = AttributeTypeSize(type) / sizeof(float);
    CString text = L"(";
    for (unsigned int i = 0; i < components; ++i)
    {
        float f = 0;
        std::memcpy(&f, static_cast<const unsigned char*>(value) + i * sizeof(float), sizeof(f));
        text += CbFormat(i ? L", %.9g" : L"%.9g", f);
    }
    return text + L")";
}

CString formatPosition(const CbVector3f& p)
{
    return CbFormat(L"(%.9g, %.9g, %.9g)", p.x, p.y, p.z);
}

bool rotatedEqual(const CTriangulation::SCorners& a, const CTriangulation::SCorners& b)
{
    return a == b || (a[0] == b[1] && a[1] == b[2] && a[2] == b[0]) ||
           (a[0] == b[2] && a[1] == b[0] && a[2] == b[1]);
}
} // namespace

void ZqMpCompareTriangulations::SetInput(const CTriangulation& first, const CTriangulation& second)
{
    m_first = &first;
    m_second = &second;
    setInputChanged();
}

void ZqMpCompareTriangulations::SetParameters(float tolerance)
{
    m_tolerance = tolerance;
    setInputChanged();
}

bool ZqMpCompareTriangulations::Compute(const CTriangulation& first, const CTriangulation& second,
                                        float tolerance)
{
    SetInput(first, second);
    SetParameters(tolerance);
    return Compute() && GetOutput();
}

void ZqMpCompareTriangulations::checkPreConditionsInit() const
{
    if (!m_first || !m_second)
        CB_THROW(CbExceptionPreconditionViolation, "ZqMpCompareTriangulations::checkPreConditionsInit",
                 "no input triangulations");
    if (!(m_tolerance >= 0.0f))
        CB_THROW(CbExceptionPreconditionViolation, "ZqMpCompareTriangulations::checkPreConditionsInit",
                 "negative or NaN tolerance");
}

void ZqMpCompareTriangulations::compute()
{
    m_equal = false;
    m_differences = 0;
    if (m_first->GetVertexCount() != m_second->GetVertexCount())
        report(CbFormat(L"Anzahl der Eckpunkte verschieden: %u und %u\n", m_first->GetVertexCount(),
                        m_second->GetVertexCount()));
    else
        compareVertices();
    if (m_first->GetTriangleCount() != m_second->GetTriangleCount())
        report(CbFormat(L"Anzahl der Dreiecke verschieden: %u und %u\n", m_first->GetTriangleCount(),
                        m_second->GetTriangleCount()));
    else
        compareTriangles();
    if (IsFlagSet(eF_Attributes))
        compareAttributes();
    m_equal = m_differences == 0;
}

bool ZqMpCompareTriangulations::sameValue(float a, float b) const
{
    return std::memcmp(&a, &b, sizeof(a)) == 0 || std::fabs(a - b) <= m_tolerance;
}

bool ZqMpCompareTriangulations::sameValue(double a, double b) const
{
    return std::memcmp(&a, &b, sizeof(a)) == 0 || std::fabs(a - b) <= m_tolerance;
}

bool ZqMpCompareTriangulations::sameElement(const void* a, const void* b, EAttributeType type) const
{
    // Numbers and flags compare exactly; the tolerance is for coordinates.
    if (type == eAT_UnsignedInt)
        return std::memcmp(a, b, sizeof(unsigned int)) == 0;
    if (type == eAT_Double)
    {
        double x = 0;
        double y = 0;
        std::memcpy(&x, a, sizeof(x));
        std::memcpy(&y, b, sizeof(y));
        return sameValue(x, y);
    }
    for (unsigned int offset = 0; offset < AttributeTypeSize(type); offset += sizeof(float))
    {
        float x = 0;
        float y = 0;
        std::memcpy(&x, static_cast<const unsigned char*>(a) + offset, sizeof(x));
        std::memcpy(&y, static_cast<const unsigned char*>(b) + offset, sizeof(y));
        if (!sameValue(x, y))
            return false;
    }
    return true;
}

void ZqMpCompareTriangulations::compareVertices()
{
    const unsigned int n = m_first->GetVertexCount();
    unsigned int differing = 0;
    unsigned int firstDiffering = 0;
    for (unsigned int v = 0; v < n; ++v)
    {
        const CbVector3f& a = m_first->GetPositions()[v];
        const CbVector3f& b = m_second->GetPositions()[v];
        if (!sameValue(a.x, b.x) || !sameValue(a.y, b.y) || !sameValue(a.z, b.z))
            firstDiffering = differing++ ? firstDiffering : v;
    }
    if (differing)
        report(CbFormat(L"Eckpunkt %u verschieden: %s und %s; %u von %u Eckpunkten verschieden\n",
                        firstDiffering, formatPosition(m_first->GetPositions()[firstDiffering]),
                        formatPosition(m_second->GetPositions()[firstDiffering]), differing, n));
}

void ZqMpCompareTriangulations::compareTriangles()
{
    const unsigned int n = m_first->GetTriangleCount();
    const bool rotation = IsFlagSet(eF_CornerRotation);
    unsigned int differing = 0;
    unsigned int firstDiffering = 0;
    for (unsigned int t = 0; t < n; ++t)
    {
        const CTriangulation::SCorners& a = m_first->GetTriangles()[t];
        const CTriangulation::SCorners& b = m_second->GetTriangles()[t];
        if (rotation ? !rotatedEqual(a, b) : a != b)
            firstDiffering = differing++ ? firstDiffering : t;
    }
    if (differing)
    {
        const CTriangulation::SCorners& a = m_first->GetTriangles()[firstDiffering];
        const CTriangulation::SCorners& b = m_second->GetTriangles()[firstDiffering];
        report(CbFormat(
            L"Dreieck %u verschieden: (%u, %u, %u) und (%u, %u, %u); %u von %u Dreiecken verschieden\n",
            firstDiffering, a[0], a[1], a[2], b[0], b[1], b[2], differing, n));
    }
}

void ZqMpCompareTriangulations::compareAttributes()
{
    for (unsigned int i = 0; i < m_first->GetAttributeCount(); ++i)
    {
        const CString name = m_first->GetAttributeInfo(i).name;
        unsigned int j = 0;
        while (j < m_second->GetAttributeCount() && m_second->GetAttributeInfo(j).name != name)
            ++j;
        if (j == m_second->GetAttributeCount())
            report(CbFormat(L"Attribut \"%s\" fehlt in der zweiten Triangulation\n", name));
        else
            compareAttribute(i, j);
    }
    for (unsigned int j = 0; j < m_second->GetAttributeCount(); ++j)
    {
        const CString name = m_second->GetAttributeInfo(j).name;
        if (!m_first->HasAttribute(name))
            report(CbFormat(L"Attribut \"%s\" fehlt in der ersten Triangulation\n", name));
    }
}

void ZqMpCompareTriangulations::compareAttribute(unsigned int firstIndex, unsigned int secondIndex)
{
    const CTriangulation::SAttributeInfo a = m_first->GetAttributeInfo(firstIndex);
    const CTriangulation::SAttributeInfo b = m_second->GetAttributeInfo(secondIndex);
    if (a.domain != b.domain || a.type != b.type)
    {
        report(CbFormat(L"Attribut \"%s\": %s-Attribut vom Typ %s und %s-Attribut vom Typ %s\n", a.name,
                        domainName(a.domain), typeName(a.type), domainName(b.domain), typeName(b.type)));
        return;
    }
    if (IsFlagSet(eF_SerializeSwitches) && a.serialize != b.serialize)
        report(CbFormat(L"Attribut \"%s\": Serialisierung %s und %s\n", a.name, a.serialize ? L"ein" : L"aus",
                        b.serialize ? L"ein" : L"aus"));
    const CAttributeStorage& first = m_first->GetAttributeStorage(firstIndex);
    const CAttributeStorage& second = m_second->GetAttributeStorage(secondIndex);
    // Different element counts were reported with the vertex or triangle counts.
    if (first.GetCount() != second.GetCount())
        return;
    unsigned int differing = 0;
    unsigned int firstDiffering = 0;
    for (unsigned int e = 0; e < first.GetCount(); ++e)
        if (!sameElement(first.GetElement(e), second.GetElement(e), a.type))
            firstDiffering = differing++ ? firstDiffering : e;
    if (differing)
        report(CbFormat(
            L"Attribut \"%s\": Wert von %s %u verschieden: %s und %s; %u von %u Werten verschieden\n", a.name,
            domainName(a.domain), firstDiffering, formatValue(first.GetElement(firstDiffering), a.type),
            formatValue(second.GetElement(firstDiffering), a.type), differing, first.GetCount()));
}

void ZqMpCompareTriangulations::report(const CString& text)
{
    ++m_differences;
    WriteMessage(eError, text);
}

ZqUnitTest::EResult ZqMpCompareTriangulations::runUnitTest(unsigned int)
{
    return runUnitTest();
}

ZqUnitTest::EResult ZqMpCompareTriangulations::runUnitTest()
{
    if (!Compute(eCF_Compute | eCF_Force))
    {
        WriteMessageFormat(eError, L"Vergleich nicht möglich: %S\n", GetLastError().c_str());
        return eFailed;
    }
    return m_equal ? ePassed : eFailed;
}
