#pragma once

#include <cmath>
#include <limits>
#include <type_traits>

// Tolerant comparison of float and double values.
//
// Every function first classifies its arguments: a NaN equals nothing (not even itself), an
// infinity equals only the infinity of the same sign. For finite values:
// - IsAlmostEqualAbs(a, b, eps):        |a - b| <= eps.
// - IsAlmostEqualRel(a, b, eps):        |a - b| <= eps times the SMALLER magnitude; values of
//                                       different signs (neither zero) are never equal.
// - IsAlmostEqualRelTo(a, b, eps):      |a - b| <= eps times |b|: relative to the second argument
//                                       only, hence not symmetric; the sign rule as above.
// - IsAlmostEqualAbsOrRel(a, b, absEps, relEps): the absolute test, else the relative test.
// - almostEqual(a, b): IsAlmostEqualAbsOrRel with DefaultAbsEps<T>() and DefaultRelEps<T>().
// Magnitudes below the smallest normal value (FLT_MIN, DBL_MIN) count as that value in the relative
// tests, so zeros of either sign and subnormals are relatively equal. All comparisons are inclusive;
// a negative (or NaN) tolerance makes every test false.
//
// Dividing by the smaller magnitude makes the relative test the stricter of its usual forms:
//
//     IsAlmostEqualRel(1.0f, 2.0f, 0.5f)     // false: |1 - 2| / 1 = 1 > 0.5
//     IsAlmostEqualRelTo(1.0f, 2.0f, 0.5f)   // true:  |1 - 2| / 2 = 0.5
//     IsAlmostEqualRelTo(2.0f, 1.0f, 0.5f)   // false: |2 - 1| / 1 = 1
namespace ZqFloatCompare
{
// An absolute tolerance of one machine epsilon: values closer to each other than that are equal,
// which settles comparisons of results that should be 0.
template <class T> constexpr T DefaultAbsEps()
{
    return std::numeric_limits<T>::epsilon();
}
// Four units in the last place of the smaller value.
template <class T> constexpr T DefaultRelEps()
{
    return T(4) * std::numeric_limits<T>::epsilon();
}

namespace Detail
{
template <class T> constexpr void RequireFloatingPoint()
{
    static_assert(std::is_same_v<T, float> || std::is_same_v<T, double>,
                  "ZqFloatCompare is for float and double");
}

// For a pair with a NaN or an infinity: the result of every comparison. Sets decided to false for
// two finite values.
template <class T> bool CompareNonFinite(T a, T b, bool& decided)
{
    decided = !std::isfinite(a) || !std::isfinite(b);
    if (!decided || std::isnan(a) || std::isnan(b))
        return false;
    return std::isinf(a) && std::isinf(b) && std::signbit(a) == std::signbit(b);
}

// Finite values of different signs, neither of them zero.
template <class T> bool HaveOppositeSigns(T a, T b)
{
    return a != T(0) && b != T(0) && (a < T(0)) != (b < T(0));
}

template <class T> T FlooredMagnitude(T value)
{
    const T magnitude = std::fabs(value);
    return magnitude < std::numeric_limits<T>::min() ? std::numeric_limits<T>::min() : magnitude;
}

template <class T> bool RelativeTest(T a, T b, T eps)
{
    if (HaveOppositeSigns(a, b))
        return false;
    const T magnitudeA = FlooredMagnitude(a);
    const T magnitudeB = FlooredMagnitude(b);
    return std::fabs(magnitudeA - magnitudeB) / std::fmin(magnitudeA, magnitudeB) <= eps;
}
} // namespace Detail

template <class T> bool IsAlmostEqualAbs(T a, T b, T eps)
{
    Detail::RequireFloatingPoint<T>();
    bool decided = false;
    const bool result = Detail::CompareNonFinite(a, b, decided);
    return decided ? result : std::fabs(a - b) <= eps;
}

template <class T> bool IsAlmostEqualRel(T a, T b, T eps)
{
    Detail::RequireFloatingPoint<T>();
    bool decided = false;
    const bool result = Detail::CompareNonFinite(a, b, decided);
    return decided ? result : Detail::RelativeTest(a, b, eps);
}

template <class T> bool IsAlmostEqualRelTo(T a, T b, T eps)
{
    Detail::RequireFloatingPoint<T>();
    bool decided = false;
    const bool result = Detail::CompareNonFinite(a, b, decided);
    if (decided)
        return result;
    if (Detail::HaveOppositeSigns(a, b))
        return false;
    return std::fabs(a - b) / Detail::FlooredMagnitude(b) <= eps;
}

template <class T> bool IsAlmostEqualAbsOrRel(T a, T b, T absEps, T relEps)
{
    Detail::RequireFloatingPoint<T>();
    bool decided = false;
    const bool result = Detail::CompareNonFinite(a, b, decided);
    if (decided)
        return result;
    if (std::fabs(a - b) <= absEps)
        return true;
    return Detail::RelativeTest(a, b, relEps);
}

template <class T> bool almostEqual(T a, T b)
{
    return IsAlmostEqualAbsOrRel(a, b, DefaultAbsEps<T>(), DefaultRelEps<T>());
}
} // namespace ZqFloatCompare
