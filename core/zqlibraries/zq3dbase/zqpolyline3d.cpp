#include "zq3dbase/zqpolyline3d.h"

ZqPolyline3D::ZqPolyline3D() = default;

ZqPolyline3D::ZqPolyline3D(std::initializer_list<CbVector3f> positions, bool closed)
{
    for (const CbVector3f& position : positions)
        AppendVertexTail(position);
    SetClosed(closed);
}

ZqPolyline3D::ZqPolyline3D(const ZqPolyline3D& other) : CbRefCounted(other), ZqPolyline3DBase(other) {}

ZqPolyline3D::ZqPolyline3D(ZqPolyline3D&& other) noexcept
    : CbRefCounted(other), ZqPolyline3DBase(std::move(other))
{
}

ZqPolyline3D& ZqPolyline3D::operator=(const ZqPolyline3D& other) = default;

ZqPolyline3D& ZqPolyline3D::operator=(ZqPolyline3D&& other) noexcept = default;

ZqPolyline3D::~ZqPolyline3D() = default;
