#pragma once

#include "basepool/cbvector2.h"
#include "zq3dbase/zq3dbase_export.h"

#include <cmath>

// Exact orientation of three points of float coordinates: on which side of the line from a to b
// the point c lies, decided without tolerance.
//
//     ZqOrientation2D::Sign({0, 0}, {1, 0}, {0.5f, 1e-30f});    // +1: left, however close
//     ZqOrientation2D::Sign({0, 0}, {3, 1}, {6, 2});            // 0: on the line
//
// Sign first evaluates the determinant (a - c) x (b - c) in double precision and accepts its sign
// when it exceeds the evaluation's worst-case rounding error (the forward error bound of the
// orientation determinant in double arithmetic, (3 + 16 eps) eps times |left| + |right|, eps = 2^-53).
// Otherwise SignExact decides: a product of two floats has at most 48 significant bits and an
// exponent far inside the range of a double, so the six products of the expanded determinant
//     ax by - ay bx + bx cy - by cx + cx ay - cy ax
// are exact doubles, and their sum is formed exactly as a floating-point expansion (error-free
// two-sums), whose largest component carries the sign. Exact for every finite input; a NaN or
// infinite coordinate gives no meaningful sign.
class ZQ3DBASE_API ZqOrientation2D
{
public:
    // Returned by FilteredSign when double precision cannot decide.
    static constexpr int kUndecided = 2;

    // +1 when a, b, c turn counter-clockwise (c left of a -> b), -1 clockwise, 0 collinear.
    static int Sign(const CbVector2f& a, const CbVector2f& b, const CbVector2f& c)
    {
        const int sign = FilteredSign(a, b, c);
        return sign != kUndecided ? sign : SignExact(a, b, c);
    }

    // The sign from the double-precision evaluation where that is certain, else kUndecided.
    static int FilteredSign(const CbVector2f& a, const CbVector2f& b, const CbVector2f& c)
    {
        const double acx = double(a.x) - double(c.x);
        const double bcx = double(b.x) - double(c.x);
        const double acy = double(a.y) - double(c.y);
        const double bcy = double(b.y) - double(c.y);
        const double left = acx * bcy;
        const double right = acy * bcx;
        const double det = left - right;
        // A rounded difference or product of these values keeps its sign and is zero only when exact,
        // so when left and right differ in sign (or one is 0) the sign of det is already exact.
        if ((left > 0.0 && right <= 0.0) || (left < 0.0 && right >= 0.0) || left == 0.0)
            return (det > 0.0) - (det < 0.0);
        const double bound = kErrorBound * std::fabs(left + right);
        if (det > bound)
            return 1;
        if (-det > bound)
            return -1;
        return kUndecided;
    }

    // Sign evaluated exactly in every case.
    static int SignExact(const CbVector2f& a, const CbVector2f& b, const CbVector2f& c);

private:
    static constexpr double kEpsilon = 1.0 / 9007199254740992.0; // 2^-53
    static constexpr double kErrorBound = (3.0 + 16.0 * kEpsilon) * kEpsilon;
};
