#pragma once

#include "basepool/cbvector3.h"

// The settings of ZqMpTriangulationPrimitive. The subdivision setting refines every primitive:
//
//     primitive       triangles                          shape settings
//     "icosahedron"   20 * 4^s                           radius
//     "Cube"          12 * 4^s (2^s squares per edge)    size (edge lengths)
//     "Cylinder"      8 * 2^s around, 2^s rings:         radius, height (along z)
//                     2 * 8 * 2^s * (2^s + 1)
//
//     ZqTriangulationPrimitiveConfiguration configuration;
//     configuration.SetSubdivision(6);    // "icosahedron": 81 920 triangles
class ZqTriangulationPrimitiveConfiguration
{
public:
    void SetSubdivision(unsigned int subdivision) { m_subdivision = subdivision; }
    unsigned int GetSubdivision() const { return m_subdivision; }
    void SetRadius(float radius) { m_radius = radius; }
    float GetRadius() const { return m_radius; }
    void SetHeight(float height) { m_height = height; }
    float GetHeight() const { return m_height; }
    void SetSize(const CbVector3f& size) { m_size = size; }
    const CbVector3f& GetSize() const { return m_size; }

private:
    unsigned int m_subdivision = 0;
    float m_radius = 1.0f;
    float m_height = 2.0f;
    CbVector3f m_size{2, 2, 2};
};
