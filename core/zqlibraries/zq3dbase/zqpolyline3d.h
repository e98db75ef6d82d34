#pragma once

#include "basepool/cbrefcounted.h"
#include "zq3dbase/zq3dbase_export.h"
#include "zq3dbase/zqpolyline3dbase.h"

#include <initializer_list>

// A 3D polyline, open or closed; reference-counted for sharing through CbSmartPointer.
//
//     ZqPolyline3D square({{0, 0, 0}, {1, 0, 0}, {1, 1, 0}, {0, 1, 0}}, true);
class ZQ3DBASE_API ZqPolyline3D : public ZqPolyline3DBase, public virtual CbRefCounted
{
public:
    ZqPolyline3D();
    // The positions in chain order, numbered from 0.
    ZqPolyline3D(std::initializer_list<CbVector3f> positions, bool closed = false);
    ZqPolyline3D(const ZqPolyline3D& other);
    ZqPolyline3D(ZqPolyline3D&& other) noexcept;
    ZqPolyline3D& operator=(const ZqPolyline3D& other);
    ZqPolyline3D& operator=(ZqPolyline3D&& other) noexcept;
    ~ZqPolyline3D() override;
};
