#include "zqmath/zqcubicequation.h"

#include "basepool/cbexception.h"
#include "zqmath/zqquadraticequation.h"

#include <algorithm>
#include <cmath>

std::uint32_t ZqSolveCubicEquation(float a, float b, float c, float d, float* x1, float* x2, float* x3)
{
    if (!x1 || !x2 || !x3)
        CB_THROW(CbExceptionPreconditionViolation, "ZqSolveCubicEquation");
    if (a == 0.0f)
        return ZqSolveQuadraticEquation(b, c, d, x1, x2);

    // Depressed cubic t^3 + p t + q with x = t - r/3.
    const float r = b / a;
    const float s = c / a;
    const float t = d / a;
    const float p = s - r * r / 3.0f;
    const float q = 2.0f * r * r * r / 27.0f - s * r / 3.0f + t;
    const float discriminant = p * 4.0f * p * p + q * 27.0f * q;

    if (discriminant > 0.0f)
    {
        const float root = std::sqrt(discriminant / 108.0f);
        *x1 = std::cbrt(-q / 2.0f + root) + std::cbrt(-q / 2.0f - root) - r / 3.0f;
        return 1;
    }
    if (discriminant == 0.0f)
    {
        if (p == 0.0f)
        {
            *x1 = 0.0f - r / 3.0f;
            return 1;
        }
        *x1 = 3.0f * q / p;
        *x2 = (-3.0f * q * 0.5f) / p;
        return 2;
    }

    const float pi3 = 1.0471976f;
    const float m = std::sqrt(p * -1.3333334f);
    // Mathematically inside [-1, 1] here; rounding near a double root can step just outside.
    const float cosine = std::sqrt(-27.0f / (p * p * p)) * q * -0.5f;
    const float angle = std::acos(std::clamp(cosine, -1.0f, 1.0f)) / 3.0f;
    *x1 = -(std::cos(angle + pi3) * m) - r / 3.0f;
    *x2 = std::cos(angle) * m - r / 3.0f;
    *x3 = -(std::cos(angle - pi3) * m) - r / 3.0f;
    return 3;
}
