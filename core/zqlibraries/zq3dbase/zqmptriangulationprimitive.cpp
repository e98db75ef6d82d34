#include "zq3dbase/zqmptriangulationprimitive.h"

#include "zq3dbase/zqtriangulationshapes.h"

#include <cmath>

namespace
{
enum class EShape
{
    eUnknown,
    eIcosahedron,
    eCube,
    eCylinder,
};

EShape shapeOf(const CString& name)
{
    if (name.CompareNoCase(L"icosahedron") == 0)
        return EShape::eIcosahedron;
    if (name.CompareNoCase(L"Cube") == 0)
        return EShape::eCube;
    if (name.CompareNoCase(L"Cylinder") == 0)
        return EShape::eCylinder;
    return EShape::eUnknown;
}
} // namespace

ZqMpTriangulationPrimitive::~ZqMpTriangulationPrimitive() = default;

void ZqMpTriangulationPrimitive::SetPrimitive(const CString& name)
{
    m_name = name;
    setInputChanged();
}

void ZqMpTriangulationPrimitive::SetConfiguration(const ZqTriangulationPrimitiveConfiguration& configuration)
{
    m_configuration = configuration;
    setInputChanged();
}

std::vector<CString> ZqMpTriangulationPrimitive::GetPrimitiveNames()
{
    return {L"icosahedron", L"Cube", L"Cylinder"};
}

unsigned int ZqMpTriangulationPrimitive::GetMaxSubdivision(const CString& name)
{
    // Each limit keeps the triangle count within what a 32-bit relation can index.
    switch (shapeOf(name))
    {
    case EShape::eIcosahedron:
        return 10;
    case EShape::eCube:
        return 12;
    case EShape::eCylinder:
        return 12;
    default:
        return 0;
    }
}

void ZqMpTriangulationPrimitive::checkPreConditionsInit() const
{
    const auto positive = [](float value) { return std::isfinite(value) && value > 0.0f; };
    const ZqTriangulationPrimitiveConfiguration& c = m_configuration;
    const char* problem = nullptr;
    if (shapeOf(m_name) == EShape::eUnknown)
        problem = "unknown primitive name";
    else if (c.GetSubdivision() > GetMaxSubdivision(m_name))
        problem = "subdivision above the limit of the primitive";
    else if (!positive(c.GetRadius()) || !positive(c.GetHeight()) || !positive(c.GetSize().x) ||
             !positive(c.GetSize().y) || !positive(c.GetSize().z))
        problem = "a radius, height or size that is not positive";
    if (problem)
        CB_THROW(CbExceptionPreconditionViolation, "ZqMpTriangulationPrimitive::Compute", problem);
}

void ZqMpTriangulationPrimitive::compute()
{
    const ZqTriangulationPrimitiveConfiguration& c = m_configuration;
    const unsigned int steps = 1u << c.GetSubdivision();
    switch (shapeOf(m_name))
    {
    case EShape::eIcosahedron:
        ZqTriangulationShapes::IcosahedronSphere(m_output, c.GetRadius(), c.GetSubdivision());
        break;
    case EShape::eCube:
        ZqTriangulationShapes::Box(m_output, c.GetSize(), steps);
        break;
    case EShape::eCylinder:
        ZqTriangulationShapes::Cylinder(m_output, c.GetRadius(), c.GetHeight(), 8 * steps, steps);
        break;
    case EShape::eUnknown:
        break;
    }
}
