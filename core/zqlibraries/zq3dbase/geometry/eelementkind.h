#pragma once

#include "zq3dbase/zq3dbase_export.h"

#include <cstdint>

namespace Geometry
{
class CTriangulation;

// What the elements of a flag or attribute store are (its kind, set by SetAccurate). A
// triangulation has four element counts; kind 3 covers the first three in one index range.
//
//     kind  elements                                   count       index of an element
//     0     none                                       0           -
//     1     vertices                                   V           vertex
//     2     triangles                                  T           triangle
//     3     cells: vertices, triangles, edges          V + T + E   vertex, V + triangle, V + T + edge
//     4     corners (a triangle's use of a vertex)     3 T         3 triangle + corner
//
// Edges are the distinct undirected vertex pairs of the triangles' sides, numbered as
// CTriangleEdges numbers them.
enum EElementKind : unsigned int
{
    eEK_None = 0,
    eEK_Vertices = 1,
    eEK_Triangles = 2,
    eEK_Cells = 3,
    eEK_Corners = 4,
};

inline constexpr unsigned int kElementKindCount = 5;

// The number of elements of kind (0 to 4) that triangulation has now. Counting the cells builds
// the triangulation's edge numbering when it is not there yet.
ZQ3DBASE_API std::uint64_t CountElements(const CTriangulation& triangulation, unsigned int kind);
} // namespace Geometry
