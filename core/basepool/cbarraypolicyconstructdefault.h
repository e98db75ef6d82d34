#pragma once

#include <memory>

// Element policy of CbArrayEx: elements that an array creates without a value (SetCount, growing a
// ZqArrayDynamicSize) are value-initialised, so numbers and pointers start as zero and classes run
// their default constructor.
struct CbArrayPolicyConstructDefault
{
    // Constructs count elements at first; if one constructor throws, the ones already made are
    // destroyed again before the exception leaves.
    template <class T> static void Construct(T* first, unsigned int count)
    {
        std::uninitialized_value_construct_n(first, count);
    }
};
