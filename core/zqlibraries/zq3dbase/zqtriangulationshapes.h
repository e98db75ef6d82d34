#pragma once

#include "zq3dbase/zq3dbase_export.h"
#include "zq3dbase/zqtriangulationbase.h"

// Surfaces built from scratch, shared by the primitive generators and the tests. Every shape replaces
// the elements of its target and has unit vertex normals (eVA_Normal) and no duplicate vertices. The
// closed ones come out watertight (every edge used by exactly two triangles, once in each direction),
// oriented outward and centred on the origin.
class ZQ3DBASE_API ZqTriangulationShapes
{
public:
    // A flat sheet facing +z: (columns + 1) x (rows + 1) vertices v = y (columns + 1) + x at the integer
    // points (x, y, 0); square s = y columns + x is split from its lower left to its upper right
    // corner into triangles 2 s = (v, v + 1, v + columns + 2) and 2 s + 1 = (v, v + columns + 2, v + columns
    // + 1).
    static void Grid(ZqTriangulationBase& target, unsigned int columns, unsigned int rows);
    // Regular tetrahedron with its corners at distance radius from the origin.
    static void Tetrahedron(ZqTriangulationBase& target, float radius);
    // Box of the given edge lengths, each face split into segments x segments squares of two triangles.
    static void Box(ZqTriangulationBase& target, const CbVector3f& size, unsigned int segments);
    // Sphere from a regular octahedron (8 triangles) or icosahedron (20), every triangle split into four
    // subdivision times, new vertices pushed out to the radius: 8 * 4^s or 20 * 4^s triangles.
    static void OctahedronSphere(ZqTriangulationBase& target, float radius, unsigned int subdivision);
    static void IcosahedronSphere(ZqTriangulationBase& target, float radius, unsigned int subdivision);
    // Cylinder around the z axis from -height/2 to height/2: segments around, rings along the
    // side, each cap a fan around its centre vertex.
    static void Cylinder(ZqTriangulationBase& target, float radius, float height, unsigned int segments,
                         unsigned int rings);

    // Normalised sums of the area-weighted normals of the triangles around each vertex, into
    // the normal attribute (made present).
    static void ComputeVertexNormals(ZqTriangulationBase& target);
};
