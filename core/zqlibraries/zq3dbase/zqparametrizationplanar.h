#pragma once

#include "basepool/cbvector2.h"
#include "basepool/cbvector3.h"
#include "zq3dbase/zqattributeparameter.h"

// Surface parameters by projection onto a plane: a point p gets the parameters
// ((p - origin) . u, (p - origin) . v). The axes are taken as given (not normalised), so their
// lengths scale the parameters:
//
//     ZqParametrizationPlanar planar({0, 0, 0}, {1, 0, 0}, {0, 0.5f, 0});
//     planar.Evaluate({2, 4, 7});   // (2, 2)
class ZQ3DBASE_API ZqParametrizationPlanar : public ZqAttributeParameter
{
public:
    // The xy plane through the origin.
    ZqParametrizationPlanar() = default;
    ZqParametrizationPlanar(const CbVector3f& origin, const CbVector3f& u, const CbVector3f& v)
        : m_origin(origin), m_u(u), m_v(v)
    {
    }

    const CbVector3f& GetOrigin() const { return m_origin; }
    const CbVector3f& GetU() const { return m_u; }
    const CbVector3f& GetV() const { return m_v; }
    CbVector2f Evaluate(const CbVector3f& point) const
    {
        const CbVector3f d = point - m_origin;
        return {d.Dot(m_u), d.Dot(m_v)};
    }

    const char* GetKind() const override { return "planar"; }
    void Write(CbStreamWriteBinary& stream) const override;
    void Read(CbStreamReadBinary& stream) override;
    bool IsEqual(const ZqAttributeParameter& other, float tolerance) const override;
    CString Describe() const override;

private:
    CbVector3f m_origin{0, 0, 0};
    CbVector3f m_u{1, 0, 0};
    CbVector3f m_v{0, 1, 0};
};
