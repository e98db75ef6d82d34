#include "zq3dbase/geometry/ctriangulation.h"

#include <algorithm>
#include <string>

namespace Geometry
{
std::uint64_t CountElements(const CTriangulation& triangulation, unsigned int kind)
{
    return triangulation.GetElementCount(kind);
}

CTriangulation::CTriangulation() = default;

CTriangulation::CTriangulation(const CTriangulation& other)
    : m_positions(other.m_positions), m_triangles(other.m_triangles)
{
    m_attributes.reserve(other.m_attributes.size());
    for (const SAttribute& attribute : other.m_attributes)
    {
        std::unique_ptr<CAttributeStorage> store = makeStore(attribute.domain, attribute.type);
        std::copy_n(attribute.store->GetData(), attribute.store->GetByteCount(), store->GetData());
        m_attributes.push_back(
            {attribute.name, attribute.domain, attribute.type, attribute.serialize, std::move(store)});
    }
}

CTriangulation::CTriangulation(CTriangulation&& other) noexcept
{
    Swap(other);
}

CTriangulation& CTriangulation::operator=(const CTriangulation& other)
{
    if (this != &other)
    {
        CTriangulation copy(other);
        Swap(copy);
    }
    return *this;
}

CTriangulation& CTriangulation::operator=(CTriangulation&& other) noexcept
{
    if (this != &other)
    {
        CTriangulation taken(std::move(other));
        Swap(taken);
    }
    return *this;
}

CTriangulation::~CTriangulation() = default;

void CTriangulation::Swap(CTriangulation& other) noexcept
{
    m_positions.Swap(other.m_positions);
    m_triangles.Swap(other.m_triangles);
    m_attributes.swap(other.m_attributes);
    std::swap(m_relation, other.m_relation);
    std::swap(m_relationBuilt, other.m_relationBuilt);
    std::swap(m_edges, other.m_edges);
    std::swap(m_edgesBuilt, other.m_edgesBuilt);
    bindStores();
    other.bindStores();
}

void CTriangulation::bindStores()
{
    for (SAttribute& attribute : m_attributes)
        attribute.store->SetTriangulation(*this);
}

void CTriangulation::checkCorners(const SCorners& corners, unsigned int vertexCount, const char* function)
{
    const auto text = [&]
    {
        return "corners (" + std::to_string(corners[0]) + ", " + std::to_string(corners[1]) + ", " +
               std::to_string(corners[2]) + ")";
    };
    if (corners[0] >= vertexCount || corners[1] >= vertexCount || corners[2] >= vertexCount)
        CB_THROW(CbExceptionPreconditionViolation, function,
                 text() + " past " + std::to_string(vertexCount) + " vertices");
    if (corners[0] == corners[1] || corners[1] == corners[2] || corners[2] == corners[0])
        CB_THROW(CbExceptionPreconditionViolation, function, text() + " name a vertex twice");
}

void CTriangulation::SetVertexCount(unsigned int count)
{
    const unsigned int old = GetVertexCount();
    if (count < old)
        for (const SCorners& corners : m_triangles)
            if (corners[0] >= count || corners[1] >= count || corners[2] >= count)
                CB_THROW(CbExceptionPreconditionViolation, "Geometry::CTriangulation::SetVertexCount",
                         "the triangles use vertices past " + std::to_string(count));
    m_positions.SetCount(count);
    if (count > old)
        std::fill(m_positions.begin() + old, m_positions.end(), CbVector3f());
    dropConnectivity();
    followCount(eEK_Vertices);
}

void CTriangulation::SetTriangleCount(unsigned int count)
{
    const unsigned int old = GetTriangleCount();
    m_triangles.SetCount(count);
    if (count > old)
        std::fill(m_triangles.begin() + old, m_triangles.end(), SCorners{0, 0, 0});
    dropConnectivity();
    followCount(eEK_Triangles);
}

void CTriangulation::Reserve(unsigned int vertices, unsigned int triangles)
{
    m_positions.Reserve(vertices);
    m_triangles.Reserve(triangles);
}

void CTriangulation::Clear()
{
    m_positions.RemoveAll();
    m_triangles.RemoveAll();
    dropConnectivity();
    followCount(eEK_Vertices);
    followCount(eEK_Triangles);
}

CVertexRef CTriangulation::AddVertex(const CbVector3f& position)
{
    m_positions.Add(position);
    dropConnectivity();
    followCount(eEK_Vertices);
    return CVertexRef(GetVertexCount() - 1);
}

CTriangleRef CTriangulation::AddTriangle(unsigned int corner0, unsigned int corner1, unsigned int corner2)
{
    const SCorners corners{corner0, corner1, corner2};
    checkCorners(corners, GetVertexCount(), "Geometry::CTriangulation::AddTriangle");
    m_triangles.Add(corners);
    dropConnectivity();
    followCount(eEK_Triangles);
    return CTriangleRef(GetTriangleCount() - 1);
}

void CTriangulation::SetCorners(CTriangleRef triangle, const SCorners& corners)
{
    checkCorners(corners, GetVertexCount(), "Geometry::CTriangulation::SetCorners");
    m_triangles[triangle.GetIndex()] = corners;
    dropConnectivity();
}

std::span<CTriangulation::SCorners> CTriangulation::EditTriangles()
{
    dropConnectivity();
    return {m_triangles.GetData(), m_triangles.GetCount()};
}

std::uint64_t CTriangulation::GetElementCount(unsigned int kind) const
{
    switch (kind)
    {
    case eEK_None:
        return 0;
    case eEK_Vertices:
        return GetVertexCount();
    case eEK_Triangles:
        return GetTriangleCount();
    case eEK_Cells:
        return std::uint64_t(GetVertexCount()) + GetTriangleCount() + GetEdgeCount();
    case eEK_Corners:
        return 3 * std::uint64_t(GetTriangleCount());
    default:
        CB_THROW(CbException, "Geometry::CTriangulation::GetElementCount",
                 "element kind " + std::to_string(kind) + " outside 0 to 4");
    }
}

const ZqVertexTriangleRelation& CTriangulation::GetVertexTriangleRelation() const
{
    if (!m_relationBuilt)
    {
        // The relation trusts its input; bulk edits may have left anything in the corners.
        for (const SCorners& corners : m_triangles)
            checkCorners(corners, GetVertexCount(), "Geometry::CTriangulation::GetVertexTriangleRelation");
        m_relation.Compute(GetVertexCount(), {m_triangles.GetData(), m_triangles.GetCount()});
        m_relationBuilt = true;
    }
    return m_relation;
}

const CTriangleEdges& CTriangulation::GetEdges() const
{
    if (!m_edgesBuilt)
    {
        m_edges.Build({m_triangles.GetData(), m_triangles.GetCount()}, GetVertexTriangleRelation());
        m_edgesBuilt = true;
    }
    return m_edges;
}

void CTriangulation::dropConnectivity()
{
    // Keep the blocks' memory: a triangulation that is edited and walked in turns rebuilds into it.
    m_relationBuilt = false;
    m_edgesBuilt = false;
}

void CTriangulation::followCount(EElementKind domain)
{
    for (SAttribute& attribute : m_attributes)
        if (attribute.domain == domain)
        {
            if (domain == eEK_Vertices)
                static_cast<CAttributeTriangulationRaw<CVertexRef>&>(*attribute.store).SetAccurate();
            else
                static_cast<CAttributeTriangulationRaw<CTriangleRef>&>(*attribute.store).SetAccurate();
        }
}

std::unique_ptr<CAttributeStorage> CTriangulation::makeStore(EElementKind domain, EAttributeType type) const
{
    const unsigned int size = AttributeTypeSize(type);
    if (domain == eEK_Vertices)
        return std::make_unique<CAttributeTriangulationRaw<CVertexRef>>(*this, size, eEK_Vertices);
    return std::make_unique<CAttributeTriangulationRaw<CTriangleRef>>(*this, size, eEK_Triangles);
}

void CTriangulation::AddAttribute(const CString& name, EElementKind domain, EAttributeType type,
                                  bool serialize)
{
    const char* function = "Geometry::CTriangulation::AddAttribute";
    if (name.IsEmpty())
        CB_THROW(CbExceptionPreconditionViolation, function, "empty attribute name");
    if (domain != eEK_Vertices && domain != eEK_Triangles)
        CB_THROW(CbExceptionPreconditionViolation, function, "domain " + std::to_string(domain));
    if (AttributeTypeSize(type) == 0)
        CB_THROW(CbExceptionPreconditionViolation, function, "attribute type " + std::to_string(type));
    if (const SAttribute* existing = find(name))
    {
        if (existing->domain != domain || existing->type != type)
            CB_THROW(CbExceptionPreconditionViolation, function,
                     "\"" + CbWideToUtf8(name.Std()) + "\" exists with another domain or type");
        return;
    }
    m_attributes.push_back({name, domain, type, serialize, makeStore(domain, type)});
}

bool CTriangulation::RemoveAttribute(const CString& name)
{
    const auto it = std::find_if(m_attributes.begin(), m_attributes.end(),
                                 [&](const SAttribute& attribute) { return attribute.name == name; });
    if (it == m_attributes.end())
        return false;
    m_attributes.erase(it);
    return true;
}

CTriangulation::SAttributeInfo CTriangulation::GetAttributeInfo(unsigned int index) const
{
    const SAttribute& attribute = m_attributes[index];
    return {attribute.name, attribute.domain, attribute.type, attribute.serialize};
}

CTriangulation::SAttribute* CTriangulation::find(const CString& name)
{
    for (SAttribute& attribute : m_attributes)
        if (attribute.name == name)
            return &attribute;
    return nullptr;
}

const CTriangulation::SAttribute* CTriangulation::find(const CString& name) const
{
    return const_cast<CTriangulation*>(this)->find(name);
}
} // namespace Geometry
