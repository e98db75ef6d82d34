#pragma once

#include "basepool/cbstreamreadbinary.h"
#include "basepool/cbstreamwritebinary.h"
#include "basepool/cbvector3.h"
#include "zq3dbase/zq3dbase_export.h"
#include "zq3dbase/zqpolyline.h"

// A polyline of 3D positions: the chain of ZqPolylineVertex that the polyline filters and the
// comparison take. It is a base only; ZqPolyline3D is the polyline to create.
//
// Stream form: the closed flag as one byte (0 or 1), the vertex count through the stream's count
// writer, then x, y, z of every vertex as floats, head first. Read gives the strong guarantee: data
// that is truncated, has another closed byte or more vertices than the stream holds throws
// CbExceptionWrongFileVersion and leaves the polyline as it was.
class ZQ3DBASE_API ZqPolyline3DBase : public ZqPolyline<CbVector3f>
{
public:
    ~ZqPolyline3DBase() override;

    // True when every coordinate of every vertex is finite (no NaN, no infinity).
    bool IsFinite() const;

    void Write(CbStreamWriteBinary& stream) const;
    void Read(CbStreamReadBinary& stream);

protected:
    ZqPolyline3DBase() = default;
    ZqPolyline3DBase(const ZqPolyline3DBase&) = default;
    ZqPolyline3DBase(ZqPolyline3DBase&&) noexcept = default;
    ZqPolyline3DBase& operator=(const ZqPolyline3DBase&) = default;
    ZqPolyline3DBase& operator=(ZqPolyline3DBase&&) noexcept = default;
};

inline CbStreamWriteBinary& operator<<(CbStreamWriteBinary& stream, const ZqPolyline3DBase& polyline)
{
    polyline.Write(stream);
    return stream;
}

inline CbStreamReadBinary& operator>>(CbStreamReadBinary& stream, ZqPolyline3DBase& polyline)
{
    polyline.Read(stream);
    return stream;
}
