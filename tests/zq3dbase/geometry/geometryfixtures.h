// Small triangulations of the Geometry generation for the tests, with their one-rings worked out
// by hand where the tests expect them.

#pragma once

#include "basepool/cbexception.h"
#include "zq3dbase/geometry/ctriangulation.h"

#include <gtest/gtest.h>

#include <functional>
#include <string>

namespace GeometryFixtures
{
using Geometry::CTriangulation;

// n x n vertices (x, y, 0) for x, y in 0 .. n-1, vertex y n + x. Square (x, y) with lower left
// vertex i gives triangles (i, i+1, i+n+1) and (i, i+n+1, i+n), counter-clockwise seen from +z.
// For n = 3:   6 7 8     triangles 0 (0,1,4)  1 (0,4,3)  2 (1,2,5)  3 (1,5,4)
//              3 4 5               4 (3,4,7)  5 (3,7,6)  6 (4,5,8)  7 (4,8,7)
//              0 1 2     16 edges.
inline CTriangulation Grid(unsigned int n)
{
    CTriangulation t;
    for (unsigned int y = 0; y < n; ++y)
        for (unsigned int x = 0; x < n; ++x)
            t.AddVertex({float(x), float(y), 0.0f});
    for (unsigned int y = 0; y + 1 < n; ++y)
        for (unsigned int x = 0; x + 1 < n; ++x)
        {
            const unsigned int i = y * n + x;
            t.AddTriangle(i, i + 1, i + n + 1);
            t.AddTriangle(i, i + n + 1, i + n);
        }
    return t;
}

// The regular octahedron, 6 vertices on the axes, 8 triangles facing outward; 12 edges.
inline CTriangulation Octahedron()
{
    CTriangulation t;
    for (const CbVector3f& p : {CbVector3f(1, 0, 0), CbVector3f(-1, 0, 0), CbVector3f(0, 1, 0),
                                CbVector3f(0, -1, 0), CbVector3f(0, 0, 1), CbVector3f(0, 0, -1)})
        t.AddVertex(p);
    for (const CTriangulation::SCorners& c : {CTriangulation::SCorners{0, 2, 4},
                                              {2, 1, 4},
                                              {1, 3, 4},
                                              {3, 0, 4},
                                              {2, 0, 5},
                                              {1, 2, 5},
                                              {3, 1, 5},
                                              {0, 3, 5}})
        t.AddTriangle(c[0], c[1], c[2]);
    return t;
}

// The function text and kind of the CbException that call throws ("nothing thrown" otherwise).
inline std::string thrown(const std::function<void()>& call, std::string* kind = nullptr)
{
    try
    {
        call();
    }
    catch (const CbException& e)
    {
        if (kind)
            *kind = e.GetKind();
        return e.GetFunction();
    }
    return "nothing thrown";
}
} // namespace GeometryFixtures
