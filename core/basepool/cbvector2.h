#pragma once

#include "basepool/cbtypename.h"

#include <cassert>
#include <cmath>

// A 2D point or direction with components x then y (standard layout, trivially copyable, so arrays
// of them stream as raw pairs). CbVector2f holds floats, CbVector2d doubles.
//
//     CbVector2f a(1, 0), b(0, 2);
//     Cross(a, b);        // 2: b lies to the left of a
//     (a + b).Length();   // sqrt(5)
template <class T> struct CbVector2
{
    using ValueType = T;
    static constexpr unsigned int kDimension = 2;

    T x = T(0);
    T y = T(0);

    constexpr CbVector2() = default;
    constexpr CbVector2(T xValue, T yValue) : x(xValue), y(yValue) {}
    // Converts between precisions (double to float rounds).
    template <class U> constexpr explicit CbVector2(const CbVector2<U>& other) : x(T(other.x)), y(T(other.y))
    {
    }

    // Component 0 (x) or 1 (y).
    constexpr T& operator[](unsigned int index)
    {
        assert(index < kDimension);
        return index == 0 ? x : y;
    }
    constexpr const T& operator[](unsigned int index) const
    {
        assert(index < kDimension);
        return index == 0 ? x : y;
    }

    constexpr CbVector2 operator-() const { return {-x, -y}; }
    constexpr CbVector2& operator+=(const CbVector2& v)
    {
        x += v.x;
        y += v.y;
        return *this;
    }
    constexpr CbVector2& operator-=(const CbVector2& v)
    {
        x -= v.x;
        y -= v.y;
        return *this;
    }
    constexpr CbVector2& operator*=(T s)
    {
        x *= s;
        y *= s;
        return *this;
    }
    constexpr CbVector2& operator/=(T s)
    {
        x /= s;
        y /= s;
        return *this;
    }
    friend constexpr CbVector2 operator+(CbVector2 a, const CbVector2& b) { return a += b; }
    friend constexpr CbVector2 operator-(CbVector2 a, const CbVector2& b) { return a -= b; }
    friend constexpr CbVector2 operator*(CbVector2 a, T s) { return a *= s; }
    friend constexpr CbVector2 operator*(T s, CbVector2 a) { return a *= s; }
    friend constexpr CbVector2 operator/(CbVector2 a, T s) { return a /= s; }
    // Exact comparison of both components (a NaN component never compares equal).
    friend constexpr bool operator==(const CbVector2& a, const CbVector2& b)
    {
        return a.x == b.x && a.y == b.y;
    }

    constexpr T Dot(const CbVector2& v) const { return x * v.x + y * v.y; }
    // The z component of the 3D cross product: positive when v lies counter-clockwise of this.
    constexpr T Cross(const CbVector2& v) const { return x * v.y - y * v.x; }
    constexpr T SquaredLength() const { return x * x + y * y; }
    T Length() const { return std::sqrt(SquaredLength()); }
    // Scales to length 1 and returns the previous length; a zero vector stays zero (and 0 is returned).
    T Normalize()
    {
        const T length = Length();
        if (length > T(0))
            *this /= length;
        return length;
    }
    CbVector2 Normalized() const
    {
        CbVector2 v = *this;
        v.Normalize();
        return v;
    }
    // The vector turned by +90 degrees.
    constexpr CbVector2 Perpendicular() const { return {-y, x}; }
};

template <class T> constexpr T Dot(const CbVector2<T>& a, const CbVector2<T>& b)
{
    return a.Dot(b);
}
template <class T> constexpr T Cross(const CbVector2<T>& a, const CbVector2<T>& b)
{
    return a.Cross(b);
}

using CbVector2f = CbVector2<float>;
using CbVector2d = CbVector2<double>;

// Exception texts name the vectors by their short class names.
CB_DECLARE_TYPENAME(CbVector2f, "class CbVector2f");
CB_DECLARE_TYPENAME(CbVector2d, "class CbVector2d");
