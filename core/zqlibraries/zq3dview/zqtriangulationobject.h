#pragma once

#include "zq3dview/zqmeshobject.h"

class ZqTriangulationBase;

// A triangulation of the geometry library shown in the scene: its positions and triangles, its
// vertex normals (eVA_Normal) when it has them, else smooth ones computed from the triangles, and
// each triangle's material (eTA_Material) when it has one, else material 0. The object has at least
// as many materials as the largest material index needs.
//
//     auto object = CbMakeSmart<ZqTriangulationObject>(L"preparation");
//     object->Load(dataFolder + L"Data/Preparation.tri");
//     object->GetMaterial(0).SetShader(phong);
class ZQ3DVIEW_API ZqTriangulationObject : public ZqMeshObject
{
public:
    // Material indices from here on are refused (a corrupt file must not make millions of materials).
    static constexpr unsigned int kMaxMaterials = 256;

    explicit ZqTriangulationObject(const CString& name = CString());
    ~ZqTriangulationObject() override;

    // Copies what the scene needs from triangulation; later changes to it are not seen. A material
    // index of kMaxMaterials or more throws CbExceptionPreconditionViolation.
    void SetTriangulation(const ZqTriangulationBase& triangulation);
    // Reads a ".tri" file; throws what ZqTriangulationBase::ReadFile throws (CbExceptionFile,
    // CbExceptionWrongFileVersion) and leaves the object as it was then.
    void Load(const CString& path);
};
