#include "zq3dbase/zqparametrizationplanar.h"

#include "basepool/cbexception.h"

#include <cmath>

void ZqParametrizationPlanar::Write(CbStreamWriteBinary& stream) const
{
    stream << m_origin << m_u << m_v;
}

void ZqParametrizationPlanar::Read(CbStreamReadBinary& stream)
{
    stream >> m_origin >> m_u >> m_v;
    for (const CbVector3f* vector : {&m_origin, &m_u, &m_v})
        if (!std::isfinite(vector->x) || !std::isfinite(vector->y) || !std::isfinite(vector->z))
            CB_THROW(CbExceptionWrongFileVersion, "ZqParametrizationPlanar::Read",
                     "planar parametrization with a coordinate that is not a finite number");
}

bool ZqParametrizationPlanar::IsEqual(const ZqAttributeParameter& other, float tolerance) const
{
    const auto* planar = dynamic_cast<const ZqParametrizationPlanar*>(&other);
    if (!planar)
        return false;
    const auto near = [tolerance](const CbVector3f& a, const CbVector3f& b)
    {
        return std::fabs(a.x - b.x) <= tolerance && std::fabs(a.y - b.y) <= tolerance &&
               std::fabs(a.z - b.z) <= tolerance;
    };
    return near(m_origin, planar->m_origin) && near(m_u, planar->m_u) && near(m_v, planar->m_v);
}

CString ZqParametrizationPlanar::Describe() const
{
    return CbFormat(L"planar (origin (%g, %g, %g), u (%g, %g, %g), v (%g, %g, %g))", m_origin.x, m_origin.y,
                    m_origin.z, m_u.x, m_u.y, m_u.z, m_v.x, m_v.y, m_v.z);
}
