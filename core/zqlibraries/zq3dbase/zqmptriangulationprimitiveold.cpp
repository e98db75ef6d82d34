#include "zq3dbase/zqmptriangulationprimitiveold.h"

#include "zq3dbase/zqtriangulationshapes.h"

#include <cmath>

ZqMpTriangulationPrimitiveOld::~ZqMpTriangulationPrimitiveOld() = default;

void ZqMpTriangulationPrimitiveOld::SetInput(EPrimitive kind)
{
    m_kind = kind;
    m_cube = SConfigurationCube();
    m_sphere = SConfigurationSphere();
    setInputChanged();
}

void ZqMpTriangulationPrimitiveOld::SetInput(const SConfigurationCube& cube)
{
    m_kind = eP_Cube;
    m_cube = cube;
    setInputChanged();
}

void ZqMpTriangulationPrimitiveOld::SetInput(const SConfigurationSphere& sphere)
{
    m_kind = eP_Sphere;
    m_sphere = sphere;
    setInputChanged();
}

void ZqMpTriangulationPrimitiveOld::checkPreConditionsInit() const
{
    const auto positive = [](float value) { return std::isfinite(value) && value > 0.0f; };
    const char* problem = nullptr;
    if (m_kind > eP_Cube)
        problem = "unknown primitive kind";
    else if (m_kind == eP_Sphere && (m_sphere.subdivision > kMaxSubdivision || !positive(m_sphere.radius)))
        problem = "sphere subdivision above the limit or radius not positive";
    else if (m_kind == eP_Cube &&
             (m_cube.segments == 0 || m_cube.segments > kMaxSegments || !positive(m_cube.size.x) ||
              !positive(m_cube.size.y) || !positive(m_cube.size.z)))
        problem = "cube segments outside 1 to the limit or size not positive";
    if (problem)
        CB_THROW(CbExceptionPreconditionViolation, "ZqMpTriangulationPrimitiveOld::Compute", problem);
}

void ZqMpTriangulationPrimitiveOld::compute()
{
    switch (m_kind)
    {
    case eP_Tetrahedron:
        ZqTriangulationShapes::Tetrahedron(m_output, 1.0f);
        break;
    case eP_Sphere:
        ZqTriangulationShapes::OctahedronSphere(m_output, m_sphere.radius, m_sphere.subdivision);
        break;
    case eP_Cube:
        ZqTriangulationShapes::Box(m_output, m_cube.size, m_cube.segments);
        break;
    }
}
