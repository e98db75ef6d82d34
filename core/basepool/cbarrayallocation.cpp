#include "basepool/cbarrayallocation.h"

#include "basepool/cbexception.h"

#include <new>
#include <string>

void* CbArrayAllocation::Allocate(std::size_t count, std::size_t elementSize, std::size_t alignment,
                                  const char* function)
{
    std::size_t bytes = 0;
    if (__builtin_mul_overflow(count, elementSize, &bytes))
        CB_THROW(CbExceptionMemory, function,
                 std::to_string(count) + " elements of " + std::to_string(elementSize) +
                     " bytes exceed the address space");
    if (bytes == 0)
        return nullptr;
    void* block = alignment > __STDCPP_DEFAULT_NEW_ALIGNMENT__
                      ? ::operator new(bytes, std::align_val_t(alignment), std::nothrow)
                      : ::operator new(bytes, std::nothrow);
    if (!block)
        CB_THROW(CbExceptionMemory, function, "cannot allocate " + std::to_string(bytes) + " bytes");
    return block;
}

void CbArrayAllocation::Free(void* block, std::size_t alignment) noexcept
{
    if (!block)
        return;
    if (alignment > __STDCPP_DEFAULT_NEW_ALIGNMENT__)
        ::operator delete(block, std::align_val_t(alignment));
    else
        ::operator delete(block);
}
