#pragma once

#include <cstddef>

// Opaque position of an element in a linked list (its node), or no position. A position stays valid
// until its element is removed. Iterating by position:
//
//     for (CbListPosition pos = list.GetHeadPosition(); pos;)
//         sum += list.GetNext(pos);
class CbListPosition
{
public:
    CbListPosition() = default;
    CbListPosition(std::nullptr_t) {}
    explicit CbListPosition(void* node) : m_node(node) {}

    explicit operator bool() const { return m_node != nullptr; }
    bool operator==(const CbListPosition& other) const = default;
    void* GetNode() const { return m_node; }

private:
    void* m_node = nullptr;
};
