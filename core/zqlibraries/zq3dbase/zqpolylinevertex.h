#pragma once

#include "basepool/cbvector3.h"
#include "zq3dbase/zqpolylinelinks.h"

// A vertex of a 3D polyline (ZqPolyline3D): a position and its links in the chain.
class ZqPolylineVertex : public ZqPolylineLinks<ZqPolylineVertex>
{
public:
    explicit ZqPolylineVertex(const CbVector3f& position) : m_position(position) {}

    const CbVector3f& GetPosition() const { return m_position; }
    void SetPosition(const CbVector3f& position) { m_position = position; }

private:
    CbVector3f m_position;
};

template <> struct ZqPolylineVertexOf<CbVector3f>
{
    using Type = ZqPolylineVertex;
};
