#pragma once

#include "zq3dbase/zq3dbase_export.h"
#include "zq3dbase/zqpolyline.h"
#include "zq3dbase/zqpolylinetriangulationvertex.h"
#include "zq3dbase/zqtriangulationbase.h"

// A polyline on a triangulation: a chain of (vertex, triangle) references into the triangulation it
// is bound to. The hole fillers take the rim of a hole in this form, one vertex per rim edge,
// each naming the triangle that borders the hole along that edge:
//
//     ZqPolylineTriangulation rim(surface);
//     rim.AppendVertexTail(CbVertexRef(), t0);      // the triangles around the hole, in order
//     rim.AppendVertexTail(CbVertexRef(), t1);
//     rim.AppendVertexTail(CbVertexRef(), t2);
//     rim.SetClosed(false);
//
// The triangulation must outlive the polyline; copies are bound to the same triangulation.
class ZQ3DBASE_API ZqPolylineTriangulation : public ZqPolyline<CbVertexRef>
{
public:
    explicit ZqPolylineTriangulation(const ZqTriangulationBase& triangulation);
    ZqPolylineTriangulation(const ZqPolylineTriangulation&);
    ZqPolylineTriangulation(ZqPolylineTriangulation&&) noexcept;
    ZqPolylineTriangulation& operator=(const ZqPolylineTriangulation&);
    ZqPolylineTriangulation& operator=(ZqPolylineTriangulation&&) noexcept;
    ~ZqPolylineTriangulation() override;

    const ZqTriangulationBase& GetTriangulation() const { return *m_triangulation; }

private:
    const ZqTriangulationBase* m_triangulation;
};
