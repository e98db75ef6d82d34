#pragma once

#include "basepool/cbexception.h"
#include "basepool/cbvector3.h"
#include "basepool/cstring.h"
#include "zq3dbase/geometry/cattributetriangulationraw.h"
#include "zq3dbase/geometry/ctriangleedges.h"
#include "zq3dbase/geometry/ctriangleref.h"
#include "zq3dbase/geometry/cvertexref.h"
#include "zq3dbase/geometry/eattributetype.h"
#include "zq3dbase/geometry/eelementkind.h"
#include "zq3dbase/geometry/smemoryblock.h"
#include "zq3dbase/zq3dbase_export.h"
#include "zq3dbase/zqvertextrianglerelation.h"

#include <array>
#include <memory>
#include <span>
#include <vector>

namespace Geometry
{
// A triangulated surface: vertex positions and triangles of three corner vertex indices, each in
// one memory block, and named attributes, each one value per vertex or per triangle with its own
// serialize switch. The vertex-triangle relation (ZqVertexTriangleRelation, the one of the whole
// library, with each vertex's triangles sorted into fans) and the edge numbering are built on
// demand and dropped whenever the triangles or the vertex count change.
//
//     CTriangulation t;
//     t.AddVertex({0, 0, 0}); t.AddVertex({1, 0, 0}); t.AddVertex({0, 1, 0});
//     t.AddTriangle(0, 1, 2);                              // counter-clockwise seen from +z
//     t.AddAttribute<CVertexRef, float>(L"weight");        // 0.0f for every vertex
//     CAttributeHandle<CVertexRef, float> weight(t, L"weight");
//     weight[CVertexRef(1)] = 0.5f;
//     t.SetSerialize(L"weight", true);                     // streams now carry it
//
// Every triangle names three distinct vertices of the triangulation. Attribute names are unique
// over both domains. Attribute values follow the element counts: new
// vertices or triangles get zero values. Handles and raw stores of the named attributes stay valid
// while the attribute exists, also across a move of the triangulation.
//
// The relation and the edges are built lazily by const members; build them once (call
// GetVertexTriangleRelation()) before several threads read the same triangulation.
//
// Throws: CbExceptionPreconditionViolation for a corner index past the vertices or a vertex named
// twice by one triangle, a name that is
// used by an attribute of another domain or type, and for an attribute name that does not exist
// ("Geometry::CTriangulation::SetSerialize", "...::IsSerialized").
class ZQ3DBASE_API CTriangulation
{
public:
    using SCorners = std::array<unsigned int, 3>;

    // Description of a named attribute. domain is eEK_Vertices or eEK_Triangles.
    struct SAttributeInfo
    {
        CString name;
        EElementKind domain;
        EAttributeType type;
        bool serialize;
    };

    CTriangulation();
    CTriangulation(const CTriangulation& other);
    CTriangulation(CTriangulation&& other) noexcept;
    CTriangulation& operator=(const CTriangulation& other);
    CTriangulation& operator=(CTriangulation&& other) noexcept;
    ~CTriangulation();
    void Swap(CTriangulation& other) noexcept;

    // Vertices and triangles.
    unsigned int GetVertexCount() const { return m_positions.GetCount(); }
    unsigned int GetTriangleCount() const { return m_triangles.GetCount(); }
    // New positions are (0, 0, 0). Fewer vertices than the triangles use throws.
    void SetVertexCount(unsigned int count);
    // New triangles are (0, 0, 0), placeholders to be set before the relation is built.
    void SetTriangleCount(unsigned int count);
    void Reserve(unsigned int vertices, unsigned int triangles);
    // Removes vertices, triangles and attribute values; the attributes stay, with no values.
    void Clear();

    CVertexRef AddVertex(const CbVector3f& position);
    CTriangleRef AddTriangle(unsigned int corner0, unsigned int corner1, unsigned int corner2);

    const CbVector3f& GetPosition(CVertexRef vertex) const { return m_positions[vertex.GetIndex()]; }
    void SetPosition(CVertexRef vertex, const CbVector3f& position)
    {
        m_positions[vertex.GetIndex()] = position;
    }
    const SCorners& GetCorners(CTriangleRef triangle) const { return m_triangles[triangle.GetIndex()]; }
    CVertexRef GetCorner(CTriangleRef triangle, unsigned int corner) const
    {
        return CVertexRef(m_triangles[triangle.GetIndex()][corner]);
    }
    void SetCorners(CTriangleRef triangle, const SCorners& corners);
    // The first corner (0, 1, 2) of corners that is vertex, or 3 when none is.
    static unsigned int FindCorner(const SCorners& corners, unsigned int vertex)
    {
        return corners[0] == vertex ? 0 : corners[1] == vertex ? 1 : corners[2] == vertex ? 2 : 3;
    }

    const SMemoryBlock<CbVector3f>& GetPositions() const { return m_positions; }
    const SMemoryBlock<SCorners>& GetTriangles() const { return m_triangles; }
    // Write access to all positions at once.
    std::span<CbVector3f> EditPositions() { return {m_positions.GetData(), m_positions.GetCount()}; }
    // Write access to all corners at once; drops the relation and the edges. Corners must stay
    // valid (below the vertex count, distinct within a triangle); the next relation build checks.
    std::span<SCorners> EditTriangles();

    // Element counts (see EElementKind): 0, V, T, V + T + E, 3 T. Throws CbException for a kind
    // outside 0 to 4.
    std::uint64_t GetElementCount(unsigned int kind) const;
    unsigned int GetEdgeCount() const { return GetEdges().GetEdgeCount(); }
    // Builds the relation when it is not there; a triangle with a corner past the vertices or a
    // vertex twice (left so by bulk edits) throws CbExceptionPreconditionViolation naming
    // "Geometry::CTriangulation::GetVertexTriangleRelation".
    const ZqVertexTriangleRelation& GetVertexTriangleRelation() const;
    const CTriangleEdges& GetEdges() const;

    // Named attributes. AddAttribute adds one with zero values, or does nothing when one of that
    // name, domain and type exists. TRef is CVertexRef (one value per vertex) or CTriangleRef.
    template <class TRef, class T> void AddAttribute(const CString& name, bool serialize = false)
    {
        AddAttribute(name, domainOf<TRef>(), SAttributeTypeOf<T>::value, serialize);
    }
    void AddAttribute(const CString& name, EElementKind domain, EAttributeType type, bool serialize = false);
    // Removes the attribute; false when there is none of that name.
    bool RemoveAttribute(const CString& name);
    bool HasAttribute(const CString& name) const { return find(name) != nullptr; }
    unsigned int GetAttributeCount() const { return static_cast<unsigned int>(m_attributes.size()); }
    // Attribute index (below GetAttributeCount()), in the order they were added.
    SAttributeInfo GetAttributeInfo(unsigned int index) const;
    const CAttributeStorage& GetAttributeStorage(unsigned int index) const
    {
        return *m_attributes[index].store;
    }
    CAttributeStorage& GetAttributeStorage(unsigned int index) { return *m_attributes[index].store; }

    // Switches whether streams carry the attribute.
    void SetSerialize(const CString& name, bool serialize)
    {
        SAttribute* attribute = find(name);
        if (!attribute)
            CB_THROW(CbExceptionPreconditionViolation, "Geometry::CTriangulation::SetSerialize",
                     "no attribute \"" + CbWideToUtf8(name.Std()) + "\"");
        attribute->serialize = serialize;
    }
    bool IsSerialized(const CString& name) const
    {
        const SAttribute* attribute = find(name);
        if (!attribute)
            CB_THROW(CbExceptionPreconditionViolation, "Geometry::CTriangulation::IsSerialized",
                     "no attribute \"" + CbWideToUtf8(name.Std()) + "\"");
        return attribute->serialize;
    }

    // The store of the attribute of that name, domain of TRef and type; null when there is none.
    template <class TRef>
    CAttributeTriangulationRaw<TRef>* FindAttribute(const CString& name, EAttributeType type)
    {
        SAttribute* attribute = find(name);
        if (!attribute || attribute->domain != domainOf<TRef>() || attribute->type != type)
            return nullptr;
        return static_cast<CAttributeTriangulationRaw<TRef>*>(attribute->store.get());
    }

    template <class TRef> static constexpr EElementKind domainOf()
    {
        static_assert(std::is_same_v<TRef, CVertexRef> || std::is_same_v<TRef, CTriangleRef>,
                      "attributes belong to vertices or triangles");
        return std::is_same_v<TRef, CVertexRef> ? eEK_Vertices : eEK_Triangles;
    }

private:
    struct SAttribute
    {
        CString name;
        EElementKind domain;
        EAttributeType type;
        bool serialize;
        std::unique_ptr<CAttributeStorage> store;
    };

    SAttribute* find(const CString& name);
    const SAttribute* find(const CString& name) const;
    std::unique_ptr<CAttributeStorage> makeStore(EElementKind domain, EAttributeType type) const;
    // Resizes the stores of domain to the present counts.
    void followCount(EElementKind domain);
    void dropConnectivity();
    void bindStores();
    static void checkCorners(const SCorners& corners, unsigned int vertexCount, const char* function);

    SMemoryBlock<CbVector3f> m_positions;
    SMemoryBlock<SCorners> m_triangles;
    std::vector<SAttribute> m_attributes;

    // Built on demand from m_triangles.
    mutable ZqVertexTriangleRelation m_relation;
    mutable bool m_relationBuilt = false;
    mutable CTriangleEdges m_edges;
    mutable bool m_edgesBuilt = false;
};
} // namespace Geometry
