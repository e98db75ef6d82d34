#include "zq3dview/zqtriangulationobject.h"

#include "basepool/cbexception.h"
#include "zq3dbase/zqtriangulationdynamic.h"

#include <algorithm>
#include <span>
#include <string>

ZqTriangulationObject::ZqTriangulationObject(const CString& name) : ZqMeshObject(name) {}

ZqTriangulationObject::~ZqTriangulationObject() = default;

void ZqTriangulationObject::SetTriangulation(const ZqTriangulationBase& triangulation)
{
    std::span<const unsigned int> materials;
    if (triangulation.IsPresent(eTA_Material))
        materials = triangulation.GetAttribute<eTA_Material>();
    const unsigned int largest =
        materials.empty() ? 0 : *std::max_element(materials.begin(), materials.end());
    if (largest >= kMaxMaterials)
        CB_THROW(CbExceptionPreconditionViolation, "ZqTriangulationObject::SetTriangulation",
                 "material " + std::to_string(largest) + " is above the limit of " +
                     std::to_string(kMaxMaterials - 1));

    const auto positions = triangulation.GetPositions();
    const auto triangles = triangulation.GetTriangles();
    CbArray<CbVector3f> positionCopy;
    positionCopy.Append(positions.data(), unsigned(positions.size()));
    CbArray<Triangle> triangleCopy;
    triangleCopy.Append(triangles.data(), unsigned(triangles.size()));
    SetGeometry(std::move(positionCopy), std::move(triangleCopy));
    if (triangulation.IsPresent(eVA_Normal))
    {
        const auto normals = triangulation.GetAttribute<eVA_Normal>();
        CbArray<CbVector3f> normalCopy;
        normalCopy.Append(normals.data(), unsigned(normals.size()));
        SetNormals(std::move(normalCopy));
    }
    if (!materials.empty())
    {
        SetMaterialCount(std::max(GetMaterialCount(), largest + 1));
        for (unsigned int t = 0; t < materials.size(); ++t)
            SetTriangleMaterial(t, materials[t]);
    }
}

void ZqTriangulationObject::Load(const CString& path)
{
    ZqTriangulationDynamic triangulation;
    triangulation.ReadFile(path);
    SetTriangulation(triangulation);
}
