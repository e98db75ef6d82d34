#pragma once

#include "basepool/basepool_export.h"

#include <cstddef>

// Raw element blocks of the Cb arrays. A block of count elements of size bytes each is requested
// from the nothrow allocator; a request whose byte size does not fit std::size_t, or that the
// allocator cannot satisfy, throws CbExceptionMemory and allocates nothing.
class BASEPOOL_API CbArrayAllocation
{
public:
    // Uninitialised storage for count elements of elementSize bytes with the given alignment; null
    // for a request of 0 bytes. function names the operation that asked, for the exception.
    static void* Allocate(std::size_t count, std::size_t elementSize, std::size_t alignment,
                          const char* function);
    // Frees a block from Allocate with the same alignment; null is ignored.
    static void Free(void* block, std::size_t alignment) noexcept;
    // True when count * elementSize overflows std::size_t.
    static bool Overflows(std::size_t count, std::size_t elementSize)
    {
        std::size_t bytes = 0;
        return __builtin_mul_overflow(count, elementSize, &bytes);
    }
};
