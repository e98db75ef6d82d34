#pragma once

#include "basepool/cbvector3.h"

#include <cmath>

// A 4 x 4 float matrix in OpenGL's column order (element (row, col) at m[col * 4 + row]), for the
// camera's view and projection. Points are columns: p' = M p.
struct ZqMatrix4f
{
    float m[16] = {1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1};

    float& operator()(int row, int col) { return m[col * 4 + row]; }
    float operator()(int row, int col) const { return m[col * 4 + row]; }
    const float* GetData() const { return m; }

    friend ZqMatrix4f operator*(const ZqMatrix4f& a, const ZqMatrix4f& b)
    {
        ZqMatrix4f r;
        for (int row = 0; row < 4; ++row)
            for (int col = 0; col < 4; ++col)
            {
                float sum = 0.0f;
                for (int k = 0; k < 4; ++k)
                    sum += a(row, k) * b(k, col);
                r(row, col) = sum;
            }
        return r;
    }

    // The upper-left 3 x 3 block applied to a direction.
    CbVector3f TransformDirection(const CbVector3f& v) const
    {
        const ZqMatrix4f& a = *this;
        return {a(0, 0) * v.x + a(0, 1) * v.y + a(0, 2) * v.z, a(1, 0) * v.x + a(1, 1) * v.y + a(1, 2) * v.z,
                a(2, 0) * v.x + a(2, 1) * v.y + a(2, 2) * v.z};
    }

    // The view matrix of an eye looking along forward with the given up; forward and up must be
    // orthonormal. In view space the eye is at the origin looking along -z, up is +y (OpenGL).
    static ZqMatrix4f LookAlong(const CbVector3f& eye, const CbVector3f& forward, const CbVector3f& up)
    {
        const CbVector3f right = Cross(forward, up);
        ZqMatrix4f v;
        const CbVector3f rows[3] = {right, up, -forward};
        for (int row = 0; row < 3; ++row)
        {
            v(row, 0) = rows[row].x;
            v(row, 1) = rows[row].y;
            v(row, 2) = rows[row].z;
            v(row, 3) = -Dot(rows[row], eye);
        }
        return v;
    }

    // Perspective projection with vertical field of view fovY (radians), width / height aspect and
    // the near and far planes (both positive); depth maps to [-1, 1].
    static ZqMatrix4f Perspective(float fovY, float aspect, float nearPlane, float farPlane)
    {
        const float f = 1.0f / std::tan(fovY * 0.5f);
        ZqMatrix4f p;
        p(0, 0) = f / aspect;
        p(1, 1) = f;
        p(2, 2) = (farPlane + nearPlane) / (nearPlane - farPlane);
        p(2, 3) = 2.0f * farPlane * nearPlane / (nearPlane - farPlane);
        p(3, 2) = -1.0f;
        p(3, 3) = 0.0f;
        return p;
    }
};
