#pragma once

#include "basepool/cbarray.h"
#include "basepool/cbvector2.h"
#include "zq3dbase/zq3dbase_export.h"

// Convex hull of a set of points in the plane, computed in place.
//
// Inputs:  points: n 2D points of float coordinates in any order; duplicates are allowed.
// Outputs: points: the corners of the convex hull, each once, counter-clockwise (x to the right,
//          y up), starting at the lowest of the leftmost points. Points on a hull edge are no
//          corners, so collinear points are dropped:
//              {(0,0), (1,0), (0,1), (10,0)}  ->  {(0,0), (10,0), (0,1)}
//          An empty set stays empty, equal points give one point, points on one line give the two
//          ends of their range. Every corner is an input point bit for bit (-0 stays -0); of equal
//          points that differ only in the sign of a zero, the first in the input is the corner.
// Failure: a NaN or infinite coordinate throws CbExceptionPreconditionViolation; points is then
//          unchanged, as it is when an allocation throws CbExceptionMemory.
//
// Every side-of-line decision is exact for float input (ZqOrientation2D), so the result is the
// exact hull of the given floats, whatever their collinearities. Andrew's monotone chain over the
// points sorted by x, then y: O(n log n). Points certainly inside the polygon of up to eight extreme
// points are discarded before sorting, which makes random point clouds much cheaper.
class ZQ3DBASE_API ZqFtConvexHull2D
{
public:
    static void Compute(CbArray<CbVector2f>& points);
};
