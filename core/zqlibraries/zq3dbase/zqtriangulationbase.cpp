#include "zq3dbase/zqtriangulationbase.h"

#include "zq3dbase/zqtriangulationfile.h"

#include <algorithm>
#include <vector>

ZqTriangulationBase::~ZqTriangulationBase() = default;

CbVertexRef ZqTriangulationBase::AppendVertex(const CbVector3f& position)
{
    const unsigned int index = GetVertexCount();
    m_positions.Add(position);
    if (m_vertexAttributes.IsAnyPresent())
        m_vertexAttributes.SetElementCount(index + 1);
    m_relation.Clear();
    return CbVertexRef(index);
}

CbTriangleRef ZqTriangulationBase::AppendTriangle(CbVertexRef a, CbVertexRef b, CbVertexRef c)
{
    checkCorners(a, b, c, "ZqTriangulationBase::AppendTriangle");
    const unsigned int index = GetTriangleCount();
    m_triangles.Add({a.GetIndex(), b.GetIndex(), c.GetIndex()});
    if (m_triangleAttributes.IsAnyPresent())
        m_triangleAttributes.SetElementCount(index + 1);
    m_relation.Clear();
    return CbTriangleRef(index);
}

void ZqTriangulationBase::Reserve(unsigned int vertexCount, unsigned int triangleCount)
{
    m_positions.Reserve(vertexCount);
    m_triangles.Reserve(triangleCount);
    m_vertexAttributes.Reserve(vertexCount);
    m_triangleAttributes.Reserve(triangleCount);
}

void ZqTriangulationBase::Clear()
{
    m_positions.RemoveAll();
    m_triangles.RemoveAll();
    m_vertexAttributes.SetElementCount(0);
    m_triangleAttributes.SetElementCount(0);
    m_relation.Clear();
}

void ZqTriangulationBase::ComputeVertexTriangleRelationship()
{
    const unsigned int vertexCount = GetVertexCount();
    for (unsigned int t = 0; t < GetTriangleCount(); ++t)
        if (m_triangles[t][0] >= vertexCount || m_triangles[t][1] >= vertexCount ||
            m_triangles[t][2] >= vertexCount)
            CB_THROW(CbExceptionPreconditionViolation,
                     "ZqTriangulationBase::ComputeVertexTriangleRelationship",
                     "triangle " + std::to_string(t) + " has a corner that is unset or not a vertex");
    m_relation.Compute(vertexCount, GetTriangles());
}

void ZqTriangulationBase::SetSerialize(EVertexAttribute attribute, bool serialize)
{
    m_vertexAttributes.Visit(attribute, [serialize](auto& column) { column.serialize = serialize; });
}

void ZqTriangulationBase::SetSerialize(ETriangleAttribute attribute, bool serialize)
{
    m_triangleAttributes.Visit(attribute, [serialize](auto& column) { column.serialize = serialize; });
}

bool ZqTriangulationBase::GetSerialize(EVertexAttribute attribute) const
{
    return m_vertexAttributes.Visit(attribute, [](const auto& column) { return column.serialize; });
}

bool ZqTriangulationBase::GetSerialize(ETriangleAttribute attribute) const
{
    return m_triangleAttributes.Visit(attribute, [](const auto& column) { return column.serialize; });
}

void ZqTriangulationBase::SetAttributeParameter(EVertexAttribute attribute,
                                                CbSmartPointer<ZqAttributeParameter> parameter)
{
    m_vertexAttributes.Visit(attribute, [&parameter](auto& column) { column.parameter = parameter; });
}

void ZqTriangulationBase::SetAttributeParameter(ETriangleAttribute attribute,
                                                CbSmartPointer<ZqAttributeParameter> parameter)
{
    m_triangleAttributes.Visit(attribute, [&parameter](auto& column) { column.parameter = parameter; });
}

CbSmartPointer<ZqAttributeParameter>
ZqTriangulationBase::GetAttributeParameter(EVertexAttribute attribute) const
{
    return m_vertexAttributes.Visit(attribute, [](const auto& column) { return column.parameter; });
}

CbSmartPointer<ZqAttributeParameter>
ZqTriangulationBase::GetAttributeParameter(ETriangleAttribute attribute) const
{
    return m_triangleAttributes.Visit(attribute, [](const auto& column) { return column.parameter; });
}

void ZqTriangulationBase::setVertexCount(unsigned int count)
{
    if (count > m_positions.GetCapacity())
        m_positions.SetCapacity(count);
    m_positions.SetCount(count);
    m_vertexAttributes.SetElementCount(count);
    m_relation.Clear();
}

void ZqTriangulationBase::setTriangleCount(unsigned int count)
{
    const unsigned int old = GetTriangleCount();
    if (count > m_triangles.GetCapacity())
        m_triangles.SetCapacity(count);
    m_triangles.SetCount(count);
    std::fill(m_triangles.begin() + std::min(old, count), m_triangles.end(),
              ZqTriangleCorners{kUnset, kUnset, kUnset});
    m_triangleAttributes.SetElementCount(count);
    m_relation.Clear();
}

void ZqTriangulationBase::setTriangle(unsigned int triangle, CbVertexRef a, CbVertexRef b, CbVertexRef c,
                                      const char* function)
{
    if (triangle >= GetTriangleCount())
        CB_THROW(CbExceptionPreconditionViolation, function,
                 "triangle " + std::to_string(triangle) + " of " + std::to_string(GetTriangleCount()));
    checkCorners(a, b, c, function);
    m_triangles[triangle] = {a.GetIndex(), b.GetIndex(), c.GetIndex()};
    m_relation.Clear();
}

void ZqTriangulationBase::checkCorners(CbVertexRef a, CbVertexRef b, CbVertexRef c,
                                       const char* function) const
{
    const unsigned int n = GetVertexCount();
    if (a.GetIndex() >= n || b.GetIndex() >= n || c.GetIndex() >= n)
        CB_THROW(CbExceptionPreconditionViolation, function,
                 "corners (" + std::to_string(a.GetIndex()) + ", " + std::to_string(b.GetIndex()) + ", " +
                     std::to_string(c.GetIndex()) + ") with " + std::to_string(n) + " vertices");
    if (a == b || b == c || a == c)
        CB_THROW(CbExceptionPreconditionViolation, function, "a triangle uses a vertex twice");
}

namespace
{
template <class TEnum, class TSet>
void describeAttributes(const TSet& set, ZqTriangulationFile::EElement element,
                        std::vector<ZqTriangulationFile::SAttribute>& out)
{
    set.ForEach(
        [&](TEnum attribute, const auto& column)
        {
            if (!column.present || !column.serialize)
                return;
            using Layout = ZqAttributeValueLayout<typename std::decay_t<decltype(column)>::ValueType>;
            ZqTriangulationFile::SAttribute& a = out.emplace_back();
            a.element = element;
            a.scalar = Layout::kFloat ? ZqTriangulationFile::eS_Float32 : ZqTriangulationFile::eS_UInt32;
            a.components = Layout::kComponents;
            a.name = ZqGetAttributeName(attribute);
            a.parameter = column.parameter;
            a.data = column.values.GetData();
        });
}

// Storage for one attribute of the file when it is one this class knows with the expected layout;
// null for names it does not know. The attribute becomes present with its switch on.
template <class TEnum, class TSet>
void* receiveAttribute(TSet& set, const ZqTriangulationFile::SAttribute& attribute, std::uint32_t count)
{
    void* data = nullptr;
    set.ForEach(
        [&](TEnum which, auto& column)
        {
            if (attribute.name != ZqGetAttributeName(which))
                return;
            using Layout = ZqAttributeValueLayout<typename std::decay_t<decltype(column)>::ValueType>;
            const bool isFloat = attribute.scalar == ZqTriangulationFile::eS_Float32;
            if (isFloat != Layout::kFloat || attribute.components != Layout::kComponents)
                CB_THROW(CbExceptionWrongFileVersion, "ZqTriangulationBase::Serialize",
                         "attribute '" + attribute.name + "' has " + std::to_string(attribute.components) +
                             (isFloat ? " float32" : " uint32") + " components, expected " +
                             std::to_string(Layout::kComponents) + (Layout::kFloat ? " float32" : " uint32"));
            column.values.SetCount(count);
            column.present = true;
            column.serialize = true;
            column.parameter = attribute.parameter;
            data = column.values.GetData();
        });
    return data;
}
} // namespace

void ZqTriangulationBase::Serialize(CbStreamWriteBinary& stream) const
{
    std::vector<ZqTriangulationFile::SAttribute> attributes;
    describeAttributes<EVertexAttribute>(m_vertexAttributes, ZqTriangulationFile::eE_Vertex, attributes);
    describeAttributes<ETriangleAttribute>(m_triangleAttributes, ZqTriangulationFile::eE_Triangle,
                                           attributes);
    ZqTriangulationFile::Write(stream, GetPositions(), GetTriangles(), attributes);
}

void ZqTriangulationBase::Serialize(CbStreamReadBinary& stream)
{
    // Read into a fresh triangulation and take it over only when the whole of it was accepted, so a
    // refused file leaves this triangulation as it was.
    ZqTriangulationBase fresh;
    fresh.readFrom(stream);
    *this = std::move(fresh);
}

void ZqTriangulationBase::WriteFile(const CString& path) const
{
    CbStreamWriteBinary stream(std::string(CStringA(path).GetString()));
    Serialize(stream);
    stream.Close();
}

void ZqTriangulationBase::ReadFile(const CString& path)
{
    CbStreamReadBinary stream(std::string(CStringA(path).GetString()));
    ZqTriangulationBase fresh;
    fresh.readFrom(stream);
    if (!stream.IsAtEnd())
        CB_THROW(CbExceptionWrongFileVersion, "ZqTriangulationBase::ReadFile",
                 "bytes after the triangulation, from byte " + std::to_string(stream.GetPosition()) + " on");
    *this = std::move(fresh);
}

void ZqTriangulationBase::readFrom(CbStreamReadBinary& stream)
{
    ZqTriangulationFile::STarget target;
    target.positions = [this](std::uint32_t count)
    {
        setVertexCount(count);
        return m_positions.GetData();
    };
    target.triangles = [this](std::uint32_t count)
    {
        m_triangles.SetCapacity(count);
        m_triangles.SetCount(count);
        return m_triangles.GetData();
    };
    target.attribute = [this](const ZqTriangulationFile::SAttribute& attribute, std::uint32_t count)
    {
        return attribute.element == ZqTriangulationFile::eE_Vertex
                   ? receiveAttribute<EVertexAttribute>(m_vertexAttributes, attribute, count)
                   : receiveAttribute<ETriangleAttribute>(m_triangleAttributes, attribute, count);
    };
    ZqTriangulationFile::Read(stream, target);
}
