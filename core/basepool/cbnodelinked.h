#pragma once

#include "basepool/cbtypename.h"

#include <utility>

// Node of the linked lists: the element with its links to both neighbours. The forward link comes
// first, so that a chain of nodes is also a valid free list of the plex manager (handed back whole).
template <class T> struct CbNodeLinked
{
    CbNodeLinked* pNext;
    CbNodeLinked* pPrev;
    T data;

    template <class... Args>
    explicit CbNodeLinked(std::in_place_t, Args&&... args)
        : pNext(nullptr), pPrev(nullptr), data(std::forward<Args>(args)...)
    {
    }
};

template <class T> struct CbTypeName<CbNodeLinked<T>>
{
    static std::string Get() { return CbTypeNameTemplate("struct CbNodeLinked", CbTypeName<T>::Get()); }
};
