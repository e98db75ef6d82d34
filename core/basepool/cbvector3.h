#pragma once

#include "basepool/cbtypename.h"

#include <cassert>
#include <cmath>

// A 3D point or direction with components x, y, z (standard layout, trivially copyable).
// CbVector3f holds floats, CbVector3d doubles.
//
//     CbVector3f ex(1, 0, 0), ey(0, 1, 0);
//     Cross(ex, ey);      // (0, 0, 1)
template <class T> struct CbVector3
{
    using ValueType = T;
    static constexpr unsigned int kDimension = 3;

    T x = T(0);
    T y = T(0);
    T z = T(0);

    constexpr CbVector3() = default;
    constexpr CbVector3(T xValue, T yValue, T zValue) : x(xValue), y(yValue), z(zValue) {}
    template <class U>
    constexpr explicit CbVector3(const CbVector3<U>& other) : x(T(other.x)), y(T(other.y)), z(T(other.z))
    {
    }

    // Component 0 (x), 1 (y) or 2 (z).
    constexpr T& operator[](unsigned int index)
    {
        assert(index < kDimension);
        return this->*s_components[index];
    }
    constexpr const T& operator[](unsigned int index) const
    {
        assert(index < kDimension);
        return this->*s_components[index];
    }

    constexpr CbVector3 operator-() const { return {-x, -y, -z}; }
    constexpr CbVector3& operator+=(const CbVector3& v)
    {
        x += v.x;
        y += v.y;
        z += v.z;
        return *this;
    }
    constexpr CbVector3& operator-=(const CbVector3& v)
    {
        x -= v.x;
        y -= v.y;
        z -= v.z;
        return *this;
    }
    constexpr CbVector3& operator*=(T s)
    {
        x *= s;
        y *= s;
        z *= s;
        return *this;
    }
    constexpr CbVector3& operator/=(T s)
    {
        x /= s;
        y /= s;
        z /= s;
        return *this;
    }
    friend constexpr CbVector3 operator+(CbVector3 a, const CbVector3& b) { return a += b; }
    friend constexpr CbVector3 operator-(CbVector3 a, const CbVector3& b) { return a -= b; }
    friend constexpr CbVector3 operator*(CbVector3 a, T s) { return a *= s; }
    friend constexpr CbVector3 operator*(T s, CbVector3 a) { return a *= s; }
    friend constexpr CbVector3 operator/(CbVector3 a, T s) { return a /= s; }
    // Exact comparison of all components (a NaN component never compares equal).
    friend constexpr bool operator==(const CbVector3& a, const CbVector3& b)
    {
        return a.x == b.x && a.y == b.y && a.z == b.z;
    }

    constexpr T Dot(const CbVector3& v) const { return x * v.x + y * v.y + z * v.z; }
    // Right-handed: Cross(x axis, y axis) is the z axis.
    constexpr CbVector3 Cross(const CbVector3& v) const
    {
        return {y * v.z - z * v.y, z * v.x - x * v.z, x * v.y - y * v.x};
    }
    constexpr T SquaredLength() const { return x * x + y * y + z * z; }
    T Length() const { return std::sqrt(SquaredLength()); }
    // Scales to length 1 and returns the previous length; a zero vector stays zero (and 0 is returned).
    T Normalize()
    {
        const T length = Length();
        if (length > T(0))
            *this /= length;
        return length;
    }
    CbVector3 Normalized() const
    {
        CbVector3 v = *this;
        v.Normalize();
        return v;
    }

private:
    static constexpr T CbVector3::*s_components[3] = {&CbVector3::x, &CbVector3::y, &CbVector3::z};
};

template <class T> constexpr T Dot(const CbVector3<T>& a, const CbVector3<T>& b)
{
    return a.Dot(b);
}
template <class T> constexpr CbVector3<T> Cross(const CbVector3<T>& a, const CbVector3<T>& b)
{
    return a.Cross(b);
}

using CbVector3f = CbVector3<float>;
using CbVector3d = CbVector3<double>;

CB_DECLARE_TYPENAME(CbVector3f, "class CbVector3f");
CB_DECLARE_TYPENAME(CbVector3d, "class CbVector3d");
