#pragma once

#include "basepool/cbtypename.h"

#include <compare>

// Reference to a triangle of a ZqTriangulationBase: the triangle's index. A default-made reference is
// invalid (index 0xFFFFFFFF). A reference does not know its triangulation; the checked accessors of
// ZqTriangulationBase (Get) refuse one whose index is not below the triangle count.
//
//     CbTriangleRef t(3);
//     t.GetIndex();            // 3
//     CbTriangleRef().IsValid(); // false
class CbTriangleRef
{
public:
    static constexpr unsigned int kInvalidIndex = 0xFFFFFFFFu;

    constexpr CbTriangleRef() = default;
    constexpr explicit CbTriangleRef(unsigned int index) : m_index(index) {}

    constexpr unsigned int GetIndex() const { return m_index; }
    constexpr bool IsValid() const { return m_index != kInvalidIndex; }

    constexpr bool operator==(const CbTriangleRef&) const = default;
    constexpr auto operator<=>(const CbTriangleRef&) const = default;

private:
    unsigned int m_index = kInvalidIndex;
};

CB_DECLARE_TYPENAME(CbTriangleRef, "class CbTriangleRef");
