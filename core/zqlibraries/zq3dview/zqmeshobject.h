#pragma once

#include "basepool/cbarray.h"
#include "zq3dbase/zqvertextrianglerelation.h"
#include "zq3dview/zqmaterial.h"
#include "zq3dview/zqsceneobject.h"

#include <array>
#include <cstdint>
#include <memory>

namespace Graphics
{
class IDevice;
}

// A triangle mesh in the scene graph: positions, triangles, one smooth normal per vertex (the
// area-weighted mean of the normals of its triangles) and materials. Each triangle belongs to one
// material; each material with a shader draws its triangles with that effect. The device copy
// (vertex and index buffers, sorted by material) is made on the first draw after a change and
// given back by ReleaseDeviceResources.
class ZQ3DVIEW_API ZqMeshObject : public ZqSceneObject
{
public:
    using Triangle = ZqTriangleCorners;

    explicit ZqMeshObject(const CString& name = CString());
    ~ZqMeshObject() override;

    // Replaces the geometry; every triangle belongs to material 0 afterwards and the normals are
    // computed. A corner index not below the number of positions throws
    // CbExceptionPreconditionViolation.
    void SetGeometry(CbArray<CbVector3f> positions, CbArray<Triangle> triangles);
    // Replaces the computed normals by given ones, one per vertex (another count throws
    // CbExceptionPreconditionViolation); they are normalised, a zero one becomes (0, 0, 1).
    void SetNormals(CbArray<CbVector3f> normals);
    unsigned int GetVertexCount() const { return m_positions.GetCount(); }
    unsigned int GetTriangleCount() const { return m_triangles.GetCount(); }
    const CbVector3f& GetPosition(unsigned int vertex) const { return m_positions[vertex]; }
    const CbVector3f& GetNormal(unsigned int vertex) const { return m_normals[vertex]; }
    const Triangle& GetTriangle(unsigned int triangle) const { return m_triangles[triangle]; }
    CbVector3f GetTriangleCentroid(unsigned int triangle) const;

    // One material at least; new ones have neither shader nor properties.
    void SetMaterialCount(unsigned int count);
    unsigned int GetMaterialCount() const { return m_materials.GetCount(); }
    // Material index (below the count, else CbExceptionPreconditionViolation).
    ZqMaterial& GetMaterial(unsigned int index);
    const ZqMaterial& GetMaterial(unsigned int index) const;
    void SetTriangleMaterial(unsigned int triangle, unsigned int material);
    unsigned int GetTriangleMaterial(unsigned int triangle) const { return m_triangleMaterials[triangle]; }

    void ExtendBounds(ZqBoundingBox3f& box) const override;
    void Draw(const ZqDrawContext& context) override;
    void ReleaseDeviceResources() override;

private:
    struct SDeviceMesh;

    void computeNormals();
    void normalizeNormals();
    void upload(Graphics::IDevice& device);

    CbArray<CbVector3f> m_positions;
    CbArray<CbVector3f> m_normals;
    CbArray<Triangle> m_triangles;
    CbArray<unsigned int> m_triangleMaterials;
    CbArray<ZqMaterial> m_materials;
    ZqBoundingBox3f m_bounds;
    std::unique_ptr<SDeviceMesh> m_deviceMesh;
};
