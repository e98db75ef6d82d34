#pragma once

#include "basepool/cbtypename.h"

#include <compare>

// Reference to a vertex of a ZqTriangulationBase: the vertex's index. A default-made reference is
// invalid (index 0xFFFFFFFF). A reference does not know its triangulation; the checked accessors of
// ZqTriangulationBase (Get) refuse one whose index is not below the vertex count.
//
//     CbVertexRef v(3);
//     v.GetIndex();          // 3
//     CbVertexRef().IsValid(); // false
class CbVertexRef
{
public:
    static constexpr unsigned int kInvalidIndex = 0xFFFFFFFFu;

    constexpr CbVertexRef() = default;
    constexpr explicit CbVertexRef(unsigned int index) : m_index(index) {}

    constexpr unsigned int GetIndex() const { return m_index; }
    constexpr bool IsValid() const { return m_index != kInvalidIndex; }

    constexpr bool operator==(const CbVertexRef&) const = default;
    constexpr auto operator<=>(const CbVertexRef&) const = default;

private:
    unsigned int m_index = kInvalidIndex;
};

CB_DECLARE_TYPENAME(CbVertexRef, "class CbVertexRef");
