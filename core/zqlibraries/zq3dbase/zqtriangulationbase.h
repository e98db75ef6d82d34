#pragma once

#include "basepool/cbarrayex.h"
#include "basepool/cbarraypolicyconstructuninitialized.h"
#include "basepool/cbexception.h"
#include "basepool/cbsmartpointer.h"
#include "basepool/cbstreamreadbinary.h"
#include "basepool/cbstreamwritebinary.h"
#include "basepool/cbvector3.h"
#include "basepool/cstring.h"
#include "zq3dbase/cbtriangleref.h"
#include "zq3dbase/cbvertexref.h"
#include "zq3dbase/zq3dbase_export.h"
#include "zq3dbase/zqattributeparameter.h"
#include "zq3dbase/zqattributeset.h"
#include "zq3dbase/zqtriangulationattributes.h"
#include "zq3dbase/zqvertextrianglerelation.h"

#include <span>
#include <string>

// A triangulated surface: vertex positions, triangles as three corner vertex indices each
// (counter-clockwise seen from the side the triangle faces), optional vertex and triangle
// attributes, and the vertex-triangle relation built on demand.
//
// Storage is contiguous: one array of positions, one of corners, one per present attribute and the
// flat relation (ZqVertexTriangleRelation), so a mesh of n triangles costs about 48 n bytes with its
// relation and nothing is allocated per element. The two concrete kinds differ in how they grow:
// ZqTriangulationDynamic adds elements one by one, ZqTriangulationStatic sets its counts first and
// then fills them in place. Both copy from any ZqTriangulationBase.
//
// Every triangle's corners are below the vertex count and pairwise distinct; the operations that
// set corners refuse anything else with CbExceptionPreconditionViolation. Changing the
// connectivity or the vertex count drops the relation; moving vertices keeps it.
//
// Failures: Get throws CbException ("ZqTriangulationBase::Get") for a reference or corner that is
// not valid for this triangulation; GetAttribute (and the attribute form of Get) throws CbException
// ("ZqTriangulationBase::GetAttribute") for an attribute that is not present.
class ZQ3DBASE_API ZqTriangulationBase
{
public:
    using VertexAttributes =
        ZqAttributeSet<EVertexAttribute, ZqColorRGBA, CbVector2f, CbVector3f, float, unsigned int>;
    using TriangleAttributes = ZqAttributeSet<ETriangleAttribute, CbVector3f, unsigned int, unsigned int>;

    virtual ~ZqTriangulationBase();

    unsigned int GetVertexCount() const { return m_positions.GetCount(); }
    unsigned int GetTriangleCount() const { return m_triangles.GetCount(); }
    std::span<const CbVector3f> GetPositions() const
    {
        return {m_positions.GetData(), m_positions.GetCount()};
    }
    std::span<CbVector3f> GetPositions() { return {m_positions.GetData(), m_positions.GetCount()}; }
    std::span<const ZqTriangleCorners> GetTriangles() const
    {
        return {m_triangles.GetData(), m_triangles.GetCount()};
    }

    // Checked element access.
    const CbVector3f& Get(CbVertexRef vertex) const { return m_positions[checkedIndex(vertex)]; }
    CbVector3f& Get(CbVertexRef vertex) { return m_positions[checkedIndex(vertex)]; }
    const ZqTriangleCorners& Get(CbTriangleRef triangle) const { return m_triangles[checkedIndex(triangle)]; }
    CbVertexRef GetVertex(CbTriangleRef triangle, unsigned int corner) const
    {
        const ZqTriangleCorners& corners = Get(triangle);
        if (corner > 2)
            CB_THROW(CbException, "ZqTriangulationBase::Get",
                     "corner " + std::to_string(corner) + " of a triangle");
        return CbVertexRef(corners[corner]);
    }
    template <EVertexAttribute A> ZqVertexAttributeType<A>& Get(CbVertexRef vertex)
    {
        return GetAttribute<A>()[checkedIndex(vertex)];
    }
    template <EVertexAttribute A> const ZqVertexAttributeType<A>& Get(CbVertexRef vertex) const
    {
        return GetAttribute<A>()[checkedIndex(vertex)];
    }
    template <ETriangleAttribute A> ZqTriangleAttributeType<A>& Get(CbTriangleRef triangle)
    {
        return GetAttribute<A>()[checkedIndex(triangle)];
    }
    template <ETriangleAttribute A> const ZqTriangleAttributeType<A>& Get(CbTriangleRef triangle) const
    {
        return GetAttribute<A>()[checkedIndex(triangle)];
    }

    // Growth open to every triangulation, for algorithms that add to any kind (hole filling). Present
    // attributes get a value-initialised value for the new element.
    CbVertexRef AppendVertex(const CbVector3f& position);
    CbTriangleRef AppendTriangle(CbVertexRef a, CbVertexRef b, CbVertexRef c);
    void Reserve(unsigned int vertexCount, unsigned int triangleCount);
    // No vertices, no triangles, no relation; the attributes stay present (with no values), and their
    // switches and parameters stay.
    void Clear();

    // The vertex-triangle relation. Throws CbExceptionPreconditionViolation when a triangle's
    // corners have not been set (ZqTriangulationStatic) or there are more triangles than the
    // relation can index.
    void ComputeVertexTriangleRelationship();
    bool HasVertexTriangleRelationship() const { return m_relation.IsValid(); }
    // The relation; it is empty unless HasVertexTriangleRelationship().
    const ZqVertexTriangleRelation& GetVertexTriangleRelationship() const { return m_relation; }

    // Attributes. Assert makes an attribute present (value-initialised values) and does nothing when
    // it already is; the serialize switch (off by default) and the parameter belong to the attribute
    // slot, whether or not the attribute is present.
    void Assert(EVertexAttribute attribute) { m_vertexAttributes.Assert(attribute, GetVertexCount()); }
    void Assert(ETriangleAttribute attribute) { m_triangleAttributes.Assert(attribute, GetTriangleCount()); }
    void Remove(EVertexAttribute attribute) { m_vertexAttributes.Remove(attribute); }
    void Remove(ETriangleAttribute attribute) { m_triangleAttributes.Remove(attribute); }
    bool IsPresent(EVertexAttribute attribute) const { return m_vertexAttributes.IsPresent(attribute); }
    bool IsPresent(ETriangleAttribute attribute) const { return m_triangleAttributes.IsPresent(attribute); }
    void SetSerialize(EVertexAttribute attribute, bool serialize);
    void SetSerialize(ETriangleAttribute attribute, bool serialize);
    bool GetSerialize(EVertexAttribute attribute) const;
    bool GetSerialize(ETriangleAttribute attribute) const;
    void SetAttributeParameter(EVertexAttribute attribute, CbSmartPointer<ZqAttributeParameter> parameter);
    void SetAttributeParameter(ETriangleAttribute attribute, CbSmartPointer<ZqAttributeParameter> parameter);
    CbSmartPointer<ZqAttributeParameter> GetAttributeParameter(EVertexAttribute attribute) const;
    CbSmartPointer<ZqAttributeParameter> GetAttributeParameter(ETriangleAttribute attribute) const;

    // The values of a present attribute, one per element.
    template <EVertexAttribute A> std::span<ZqVertexAttributeType<A>> GetAttribute()
    {
        return values(m_vertexAttributes.Column<A>());
    }
    template <EVertexAttribute A> std::span<const ZqVertexAttributeType<A>> GetAttribute() const
    {
        return values(m_vertexAttributes.Column<A>());
    }
    template <ETriangleAttribute A> std::span<ZqTriangleAttributeType<A>> GetAttribute()
    {
        return values(m_triangleAttributes.Column<A>());
    }
    template <ETriangleAttribute A> std::span<const ZqTriangleAttributeType<A>> GetAttribute() const
    {
        return values(m_triangleAttributes.Column<A>());
    }
    const VertexAttributes& GetVertexAttributes() const { return m_vertexAttributes; }
    const TriangleAttributes& GetTriangleAttributes() const { return m_triangleAttributes; }

    // The triangulation file (docs/triangulation.md): positions, triangles and every present
    // attribute whose serialize switch is on, with its parameter. Reading replaces the whole
    // triangulation; attributes of the file that this class does not know are skipped, those read
    // come back present with their switch on. A refused file throws CbExceptionWrongFileVersion
    // and leaves the triangulation as it was.
    void Serialize(CbStreamWriteBinary& stream) const;
    void Serialize(CbStreamReadBinary& stream);
    // Writes to a temporary name beside path and renames it into place (CbExceptionFile on failure).
    void WriteFile(const CString& path) const;
    // Reads the whole file; bytes after the triangulation are refused.
    void ReadFile(const CString& path);

protected:
    ZqTriangulationBase() = default;
    ZqTriangulationBase(const ZqTriangulationBase& other) = default;
    ZqTriangulationBase(ZqTriangulationBase&& other) noexcept = default;
    ZqTriangulationBase& operator=(const ZqTriangulationBase& other) = default;
    ZqTriangulationBase& operator=(ZqTriangulationBase&& other) noexcept = default;

    // Exact-size resizing for ZqTriangulationStatic: new positions are (0, 0, 0), new triangles are
    // unset (corners kUnset) until setTriangle.
    void setVertexCount(unsigned int count);
    void setTriangleCount(unsigned int count);
    void setTriangle(unsigned int triangle, CbVertexRef a, CbVertexRef b, CbVertexRef c,
                     const char* function);

    static constexpr unsigned int kUnset = 0xFFFFFFFFu;

private:
    template <class T> using Array = CbArrayEx<T, CbArrayPolicyConstructUninitialized>;

    unsigned int checkedIndex(CbVertexRef vertex) const
    {
        if (vertex.GetIndex() >= GetVertexCount())
            CB_THROW(CbException, "ZqTriangulationBase::Get",
                     "vertex " + std::to_string(vertex.GetIndex()) + " of " +
                         std::to_string(GetVertexCount()));
        return vertex.GetIndex();
    }
    unsigned int checkedIndex(CbTriangleRef triangle) const
    {
        if (triangle.GetIndex() >= GetTriangleCount())
            CB_THROW(CbException, "ZqTriangulationBase::Get",
                     "triangle " + std::to_string(triangle.GetIndex()) + " of " +
                         std::to_string(GetTriangleCount()));
        return triangle.GetIndex();
    }
    template <class TColumn> static auto values(TColumn& column)
    {
        if (!column.present)
            CB_THROW(CbException, "ZqTriangulationBase::GetAttribute", "the attribute is not present");
        using Value = std::remove_reference_t<decltype(*column.values.GetData())>;
        return std::span<Value>(column.values.GetData(), column.values.GetCount());
    }
    // Fills this fresh (empty) triangulation from the stream.
    void readFrom(CbStreamReadBinary& stream);
    void checkCorners(CbVertexRef a, CbVertexRef b, CbVertexRef c, const char* function) const;

    Array<CbVector3f> m_positions;
    Array<ZqTriangleCorners> m_triangles;
    VertexAttributes m_vertexAttributes;
    TriangleAttributes m_triangleAttributes;
    ZqVertexTriangleRelation m_relation;
};
