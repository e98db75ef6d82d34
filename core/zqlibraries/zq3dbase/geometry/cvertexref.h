#pragma once

#include "basepool/cbtypename.h"

#include <compare>

namespace Geometry
{
// Reference to a vertex of a CTriangulation: its index among the triangulation's vertices. A plain
// value; it does not know its triangulation and stays meaningful while no vertex before it is
// removed.
class CVertexRef
{
public:
    constexpr CVertexRef() = default;
    constexpr explicit CVertexRef(unsigned int index) : m_index(index) {}

    constexpr unsigned int GetIndex() const { return m_index; }
    constexpr auto operator<=>(const CVertexRef&) const = default;

private:
    unsigned int m_index = 0;
};
} // namespace Geometry

CB_DECLARE_TYPENAME(Geometry::CVertexRef, "class Geometry::CVertexRef");
