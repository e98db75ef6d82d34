#include "zq3dview/zqmeshobject.h"

#include "basepool/cbexception.h"
#include "zq3dview/graphics/idevice.h"
#include "zq3dview/zqdrawcontext.h"

#include <string>
#include <vector>

// The mesh on the device: interleaved positions and normals, indices grouped by material, and
// where each material's indices start and how many there are.
struct ZqMeshObject::SDeviceMesh
{
    Graphics::CBuffer vertices;
    Graphics::CBuffer indices;
    Graphics::CVertexArray vertexArray;
    std::vector<unsigned int> firstIndex; // per material, plus the end
};

ZqMeshObject::ZqMeshObject(const CString& name) : ZqSceneObject(name)
{
    m_materials.SetCount(1);
}

ZqMeshObject::~ZqMeshObject() = default;

void ZqMeshObject::SetGeometry(CbArray<CbVector3f> positions, CbArray<Triangle> triangles)
{
    for (unsigned int t = 0; t < triangles.GetCount(); ++t)
        for (std::uint32_t corner : triangles[t])
            if (corner >= positions.GetCount())
                CB_THROW(CbExceptionPreconditionViolation, "ZqMeshObject::SetGeometry",
                         "triangle " + std::to_string(t) + " names vertex " + std::to_string(corner) +
                             " of " + std::to_string(positions.GetCount()));
    m_positions = std::move(positions);
    m_triangles = std::move(triangles);
    m_triangleMaterials.SetCount(0);
    m_triangleMaterials.SetCount(m_triangles.GetCount());
    m_bounds = {};
    for (const CbVector3f& p : m_positions)
        m_bounds.Extend(p);
    computeNormals();
    m_deviceMesh.reset();
}

void ZqMeshObject::computeNormals()
{
    m_normals.SetCount(0);
    m_normals.SetCount(m_positions.GetCount());
    // The cross product's length is twice the triangle's area, so the sum weights by area.
    for (const Triangle& t : m_triangles)
    {
        const CbVector3f n =
            Cross(m_positions[t[1]] - m_positions[t[0]], m_positions[t[2]] - m_positions[t[0]]);
        for (std::uint32_t corner : t)
            m_normals[corner] += n;
    }
    normalizeNormals();
}

void ZqMeshObject::normalizeNormals()
{
    for (CbVector3f& n : m_normals)
        if (n.Normalize() == 0.0f)
            n = {0.0f, 0.0f, 1.0f};
}

void ZqMeshObject::SetNormals(CbArray<CbVector3f> normals)
{
    if (normals.GetCount() != m_positions.GetCount())
        CB_THROW(CbExceptionPreconditionViolation, "ZqMeshObject::SetNormals",
                 std::to_string(normals.GetCount()) + " normals for " +
                     std::to_string(m_positions.GetCount()) + " vertices");
    m_normals = std::move(normals);
    normalizeNormals();
    m_deviceMesh.reset();
}

CbVector3f ZqMeshObject::GetTriangleCentroid(unsigned int triangle) const
{
    const Triangle& t = m_triangles[triangle];
    return (m_positions[t[0]] + m_positions[t[1]] + m_positions[t[2]]) / 3.0f;
}

void ZqMeshObject::SetMaterialCount(unsigned int count)
{
    if (count == 0)
        CB_THROW(CbExceptionPreconditionViolation, "ZqMeshObject::SetMaterialCount",
                 "a mesh has one material at least");
    for (unsigned int& material : m_triangleMaterials)
        if (material >= count)
            material = 0;
    m_materials.SetCount(count);
    m_deviceMesh.reset();
}

ZqMaterial& ZqMeshObject::GetMaterial(unsigned int index)
{
    if (index >= m_materials.GetCount())
        CB_THROW(CbExceptionPreconditionViolation, "ZqMeshObject::GetMaterial",
                 "material " + std::to_string(index) + " of " + std::to_string(m_materials.GetCount()));
    return m_materials[index];
}

const ZqMaterial& ZqMeshObject::GetMaterial(unsigned int index) const
{
    return const_cast<ZqMeshObject*>(this)->GetMaterial(index);
}

void ZqMeshObject::SetTriangleMaterial(unsigned int triangle, unsigned int material)
{
    if (triangle >= m_triangles.GetCount() || material >= m_materials.GetCount())
        CB_THROW(CbExceptionPreconditionViolation, "ZqMeshObject::SetTriangleMaterial",
                 "triangle " + std::to_string(triangle) + ", material " + std::to_string(material));
    m_triangleMaterials[triangle] = material;
    m_deviceMesh.reset();
}

void ZqMeshObject::ExtendBounds(ZqBoundingBox3f& box) const
{
    box.Extend(m_bounds);
}

void ZqMeshObject::upload(Graphics::IDevice& device)
{
    const unsigned int materials = m_materials.GetCount();
    auto mesh = std::make_unique<SDeviceMesh>();
    // Counting sort of the triangles by material keeps each material's triangles in their order.
    mesh->firstIndex.assign(materials + 1, 0);
    for (unsigned int material : m_triangleMaterials)
        mesh->firstIndex[material + 1] += 3;
    for (unsigned int m = 0; m < materials; ++m)
        mesh->firstIndex[m + 1] += mesh->firstIndex[m];
    std::vector<std::uint32_t> indices(m_triangles.GetCount() * 3);
    std::vector<unsigned int> next(mesh->firstIndex.begin(), mesh->firstIndex.end() - 1);
    for (unsigned int t = 0; t < m_triangles.GetCount(); ++t)
        for (std::uint32_t corner : m_triangles[t])
            indices[next[m_triangleMaterials[t]]++] = corner;
    std::vector<float> vertices;
    vertices.reserve(std::size_t(m_positions.GetCount()) * 6);
    for (unsigned int v = 0; v < m_positions.GetCount(); ++v)
        vertices.insert(vertices.end(), {m_positions[v].x, m_positions[v].y, m_positions[v].z, m_normals[v].x,
                                         m_normals[v].y, m_normals[v].z});
    mesh->vertices = device.CreateBuffer(vertices.data(), vertices.size() * sizeof(float));
    mesh->indices = device.CreateBuffer(indices.data(), indices.size() * sizeof(std::uint32_t));
    mesh->vertexArray = device.CreateVertexArray();
    const std::size_t stride = 6 * sizeof(float);
    mesh->vertexArray.SetFloatAttribute(ZqEffect::kPositionLocation, mesh->vertices, 3, stride, 0);
    mesh->vertexArray.SetFloatAttribute(ZqEffect::kNormalLocation, mesh->vertices, 3, stride,
                                        3 * sizeof(float));
    mesh->vertexArray.SetIndexBuffer(mesh->indices);
    m_deviceMesh = std::move(mesh);
}

void ZqMeshObject::Draw(const ZqDrawContext& context)
{
    if (m_triangles.IsEmpty())
        return;
    if (!m_deviceMesh)
        upload(context.device);
    static const ZqEffectProperties s_defaultProperties;
    for (unsigned int m = 0; m < m_materials.GetCount(); ++m)
    {
        const ZqMaterial& material = m_materials[m];
        if (!material.GetShader())
            continue;
        const ZqMeshRange range{m_deviceMesh->vertexArray, m_deviceMesh->firstIndex[m],
                                m_deviceMesh->firstIndex[m + 1] - m_deviceMesh->firstIndex[m]};
        const ZqEffectProperties* properties = material.GetEffectProperties().Get();
        material.GetShader()->DrawShader(context, range, properties ? *properties : s_defaultProperties);
    }
}

void ZqMeshObject::ReleaseDeviceResources()
{
    m_deviceMesh.reset();
}
