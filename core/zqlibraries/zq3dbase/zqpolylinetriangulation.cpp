#include "zq3dbase/zqpolylinetriangulation.h"

ZqPolylineTriangulation::ZqPolylineTriangulation(const ZqTriangulationBase& triangulation)
    : m_triangulation(&triangulation)
{
}

ZqPolylineTriangulation::ZqPolylineTriangulation(const ZqPolylineTriangulation&) = default;
ZqPolylineTriangulation::ZqPolylineTriangulation(ZqPolylineTriangulation&&) noexcept = default;
ZqPolylineTriangulation& ZqPolylineTriangulation::operator=(const ZqPolylineTriangulation&) = default;
ZqPolylineTriangulation& ZqPolylineTriangulation::operator=(ZqPolylineTriangulation&&) noexcept = default;
ZqPolylineTriangulation::~ZqPolylineTriangulation() = default;
