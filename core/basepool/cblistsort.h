#pragma once

#include "basepool/cblistbaseintermediate.h"

#include <functional>

// Stable merge sort of the linked lists, O(n log n) comparisons and no allocation: nodes are
// relinked, elements never copied or moved, so positions and iterators stay valid and keep pointing
// at the same elements. Elements that compare equal keep their order.
//
//     CbListSort::Sort(list);                                     // ascending by operator<
//     CbListSort::Sort(list, [](const S& a, const S& b) { return a.key > b.key; });
class CbListSort
{
public:
    template <class T, class Less = std::less<>>
    static void Sort(CbListBaseIntermediate<T>& list, Less less = {})
    {
        using Node = typename CbListBaseIntermediate<T>::Node;
        if (list.m_count < 2)
            return;

        // Bottom-up merging with a binary counter of runs: runs[k] holds 2^k elements (or is empty), and
        // holds elements that came before those of runs[k - 1]. Only forward links are kept meanwhile.
        Node* runs[64] = {};
        int used = 0;
        for (Node* node = list.m_head; node;)
        {
            Node* carry = node;
            node = node->pNext;
            carry->pNext = nullptr;
            int k = 0;
            for (; k < used && runs[k]; ++k)
            {
                carry = merge(runs[k], carry, less);
                runs[k] = nullptr;
            }
            runs[k] = carry;
            if (k == used)
                ++used;
        }
        Node* sorted = nullptr;
        for (int k = 0; k < used; ++k)
            if (runs[k])
                sorted = sorted ? merge(runs[k], sorted, less) : runs[k];

        // Restore the backward links and the tail.
        Node* previous = nullptr;
        for (Node* node = sorted; node; node = node->pNext)
        {
            node->pPrev = previous;
            previous = node;
        }
        list.m_head = sorted;
        list.m_tail = previous;
    }

    // True when no element is less than the one before it.
    template <class T, class Less = std::less<>>
    static bool IsSorted(const CbListBaseIntermediate<T>& list, Less less = {})
    {
        using Node = typename CbListBaseIntermediate<T>::Node;
        for (Node* node = list.m_head; node && node->pNext; node = node->pNext)
            if (less(node->pNext->data, node->data))
                return false;
        return true;
    }

private:
    // Merges two forward-linked sorted runs; on ties the element of first (the earlier run) comes first.
    template <class Node, class Less> static Node* merge(Node* first, Node* second, Less& less)
    {
        Node* merged;
        Node** link = &merged;
        while (first && second)
        {
            if (less(second->data, first->data))
            {
                *link = second;
                second = second->pNext;
            }
            else
            {
                *link = first;
                first = first->pNext;
            }
            link = &(*link)->pNext;
        }
        *link = first ? first : second;
        return merged;
    }
};
