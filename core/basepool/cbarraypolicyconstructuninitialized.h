#pragma once

#include <memory>

// Element policy of CbArrayEx for arrays of plain values that are written right after they are
// made: new elements are default-initialised, so numbers keep whatever the block held and no
// clearing pass runs. Classes still run their default constructor.
struct CbArrayPolicyConstructUninitialized
{
    template <class T> static void Construct(T* first, unsigned int count)
    {
        std::uninitialized_default_construct_n(first, count);
    }
};
