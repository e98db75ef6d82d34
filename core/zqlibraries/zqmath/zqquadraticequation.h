#pragma once

#include "basepool/cbexception.h"

#include <cmath>
#include <cstdint>
#include <type_traits>

// Real roots of a x^2 + b x + c in the arithmetic of T (float or double).
//
// Inputs: the coefficients a, b, c; x1 and x2 must not be null.
// Outputs: the number of real roots (0, 1 or 2) and the roots in *x1 (and *x2); a pointer beyond
// the count is not written. A double root counts once. With a = 0 the equation is linear: one root
// when b is not 0, else none (the zero polynomial included).
// Failure: a null pointer throws CbExceptionPreconditionViolation.
//
// The pair of distinct roots is formed without cancellation: w = b + sign(b) sqrt(b^2 - 4ac) (the
// negative sign also for b = 0), x1 = -w / (2a), x2 = c / (-w / 2). x1 is therefore not
// necessarily the smaller root:
//
//     float x1, x2;
//     ZqSolveQuadraticEquation(1.0f, -10000.0f, 1.0f, &x1, &x2);   // 2: x1 = 10000, x2 = 0.0001
//
// where the textbook formula returns 0 for the small root in float.
template <class T> std::uint32_t ZqSolveQuadraticEquation(T a, T b, T c, T* x1, T* x2)
{
    static_assert(std::is_floating_point_v<T>);
    if (!x1 || !x2)
        CB_THROW(CbExceptionPreconditionViolation, "ZqSolveQuadraticEquation");
    if (a == T(0))
    {
        if (b == T(0))
            return 0;
        *x1 = -c / b;
        return 1;
    }
    const T discriminant = b * b - T(4) * a * c;
    if (discriminant > T(0))
    {
        const T root = std::sqrt(discriminant);
        const T w = b > T(0) ? b + root : b - root;
        *x1 = (-w / T(2)) / a;
        *x2 = c / (-w / T(2));
        return 2;
    }
    if (discriminant == T(0))
    {
        *x1 = b / (T(-2) * a);
        return 1;
    }
    return 0;
}
