#pragma once

#include "zq3dbase/cbtriangleref.h"
#include "zq3dbase/cbvertexref.h"
#include "zq3dbase/zqpolylinelinks.h"

// A vertex of a polyline on a triangulation (ZqPolylineTriangulation): a vertex of the
// triangulation and a triangle that the polyline passes there, e.g. the triangle that borders a
// hole at this step of its rim. Either reference may be invalid where a user has none to give.
class ZqPolylineTriangulationVertex : public ZqPolylineLinks<ZqPolylineTriangulationVertex>
{
public:
    ZqPolylineTriangulationVertex(CbVertexRef vertex, CbTriangleRef triangle)
        : m_vertex(vertex), m_triangle(triangle)
    {
    }

    CbVertexRef GetVertex() const { return m_vertex; }
    CbTriangleRef GetTriangle() const { return m_triangle; }

private:
    CbVertexRef m_vertex;
    CbTriangleRef m_triangle;
};

template <> struct ZqPolylineVertexOf<CbVertexRef>
{
    using Type = ZqPolylineTriangulationVertex;
};
