#pragma once

#include "basepool/cbtypename.h"

#include <compare>

namespace Geometry
{
// Reference to a triangle of a CTriangulation: its index among the triangulation's triangles.
class CTriangleRef
{
public:
    constexpr CTriangleRef() = default;
    constexpr explicit CTriangleRef(unsigned int index) : m_index(index) {}

    constexpr unsigned int GetIndex() const { return m_index; }
    constexpr auto operator<=>(const CTriangleRef&) const = default;

private:
    unsigned int m_index = 0;
};
} // namespace Geometry

CB_DECLARE_TYPENAME(Geometry::CTriangleRef, "class Geometry::CTriangleRef");
