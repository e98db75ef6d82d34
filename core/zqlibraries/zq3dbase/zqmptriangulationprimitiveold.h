#pragma once

#include "zq3dbase/zq3dbase_export.h"
#include "zq3dbase/zqtriangulationstatic.h"
#include "zqbase/zqalgorithm.h"

// Generator of simple closed triangulations, the older interface (ZqMpTriangulationPrimitive is the
// newer one, with primitives chosen by name).
//
// Inputs:  the primitive kind and its configuration (SetInput).
// Outputs: GetOutput(): the triangulation, watertight, oriented outward, centred on the origin,
//          without duplicate vertices, with unit vertex normals (eVA_Normal).
//
//     kind            configuration            triangles
//     eP_Tetrahedron  -                        4, corners at distance 1 from the origin
//     eP_Sphere       SConfigurationSphere     8 * 4^subdivision, an octahedron split subdivision times
//     eP_Cube         SConfigurationCube       12 * segments^2, a box of the given edge lengths
//
//     ZqMpTriangulationPrimitiveOld primitive;
//     primitive.SetInput(ZqMpTriangulationPrimitiveOld::SConfigurationSphere(4));
//     if (primitive.Compute())
//         triangulation = primitive.GetOutput();   // 2048 triangles, 1026 vertices
//
// Failure: Compute returns false for a subdivision above kMaxSubdivision, zero segments or more
// than kMaxSegments, or a size or radius that is not positive and finite.
class ZQ3DBASE_API ZqMpTriangulationPrimitiveOld : public ZqAlgorithm
{
public:
    enum EPrimitive : unsigned int
    {
        eP_Tetrahedron = 0,
        eP_Sphere = 1,
        eP_Cube = 2,
    };
    static constexpr unsigned int kMaxSubdivision = 10;
    static constexpr unsigned int kMaxSegments = 4096;

    struct SConfigurationCube
    {
        SConfigurationCube() = default;
        SConfigurationCube(float x, float y, float z, unsigned int segmentCount = 1)
            : size(x, y, z), segments(segmentCount)
        {
        }
        CbVector3f size{1, 1, 1};
        unsigned int segments = 1; // squares along each edge of a face
    };
    struct SConfigurationSphere
    {
        SConfigurationSphere() = default;
        explicit SConfigurationSphere(unsigned int subdivisionLevel, float sphereRadius = 1.0f)
            : subdivision(subdivisionLevel), radius(sphereRadius)
        {
        }
        unsigned int subdivision = 2;
        float radius = 1.0f;
    };

    ZqMpTriangulationPrimitiveOld() = default;
    ~ZqMpTriangulationPrimitiveOld() override;

    // The kind with its default configuration.
    void SetInput(EPrimitive kind);
    void SetInput(const SConfigurationCube& cube);
    void SetInput(const SConfigurationSphere& sphere);
    EPrimitive GetPrimitive() const { return m_kind; }

    const ZqTriangulationStatic& GetOutput() const { return m_output; }

protected:
    void checkPreConditionsInit() const override;
    void compute() override;

private:
    EPrimitive m_kind = eP_Cube;
    SConfigurationCube m_cube;
    SConfigurationSphere m_sphere;
    ZqTriangulationStatic m_output;
};
