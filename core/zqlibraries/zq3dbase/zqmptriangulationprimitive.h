#pragma once

#include "basepool/cstring.h"
#include "zq3dbase/zq3dbase_export.h"
#include "zq3dbase/zqtriangulationprimitiveconfiguration.h"
#include "zq3dbase/zqtriangulationstatic.h"
#include "zqbase/zqalgorithm.h"

#include <vector>

// Generator of closed triangulations chosen by name ("icosahedron", "Cube", "Cylinder"; the names
// are matched without regard to case).
//
// Inputs:  the primitive's name (SetPrimitive) and its configuration (SetConfiguration; see
//          ZqTriangulationPrimitiveConfiguration for what the subdivision setting does to each).
// Outputs: GetOutput(): the triangulation, watertight, oriented outward, centred on the origin,
//          without duplicate vertices, with unit vertex normals (eVA_Normal).
//
//     ZqMpTriangulationPrimitive primitive;
//     primitive.SetPrimitive(L"icosahedron");
//     ZqTriangulationPrimitiveConfiguration configuration;
//     configuration.SetSubdivision(6);
//     primitive.SetConfiguration(configuration);
//     if (primitive.Compute())
//         triangulation = primitive.GetOutput();   // 81 920 triangles, 40 962 vertices
//
// Failure: Compute returns false for an unknown name, a subdivision above GetMaxSubdivision(name)
// or a size, radius or height that is not positive and finite.
class ZQ3DBASE_API ZqMpTriangulationPrimitive : public ZqAlgorithm
{
public:
    ZqMpTriangulationPrimitive() = default;
    ~ZqMpTriangulationPrimitive() override;

    void SetPrimitive(const CString& name);
    const CString& GetPrimitive() const { return m_name; }
    void SetConfiguration(const ZqTriangulationPrimitiveConfiguration& configuration);
    const ZqTriangulationPrimitiveConfiguration& GetConfiguration() const { return m_configuration; }

    const ZqTriangulationStatic& GetOutput() const { return m_output; }

    static std::vector<CString> GetPrimitiveNames();
    // The largest subdivision accepted for the primitive (0 for an unknown name).
    static unsigned int GetMaxSubdivision(const CString& name);

protected:
    void checkPreConditionsInit() const override;
    void compute() override;

private:
    CString m_name;
    ZqTriangulationPrimitiveConfiguration m_configuration;
    ZqTriangulationStatic m_output;
};
