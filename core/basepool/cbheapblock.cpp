#include "basepool/cbheapblock.h"

#include <cstdlib>
#include <cstring>

#if defined(__linux__)
#include <sys/mman.h>
#endif

namespace
{
constexpr std::size_t kHugePage = std::size_t(2) << 20;
// Smaller blocks stay on ordinary pages: a huge page that is only partly used wastes resident memory.
constexpr std::size_t kHugeBlock = 2 * kHugePage;

void* allocateHuge(std::size_t bytes)
{
    const std::size_t rounded = (bytes + kHugePage - 1) / kHugePage * kHugePage;
    void* block = std::aligned_alloc(kHugePage, rounded);
#if defined(__linux__) && defined(MADV_HUGEPAGE)
    if (block)
        madvise(block, rounded, MADV_HUGEPAGE);
#endif
    return block;
}
} // namespace

void* CbAllocateHeapBlock(std::size_t bytes, std::size_t alignment)
{
    if (bytes >= kHugeBlock)
        return allocateHuge(bytes);
    if (alignment > alignof(std::max_align_t))
        return std::aligned_alloc(alignment, (bytes + alignment - 1) / alignment * alignment);
    return std::malloc(bytes);
}

void* CbAllocateZeroedHeapBlock(std::size_t bytes)
{
    if (bytes < kHugeBlock)
        return std::calloc(1, bytes);
    void* block = allocateHuge(bytes);
    if (block)
        std::memset(block, 0, bytes);
    return block;
}

void CbFreeHeapBlock(void* block)
{
    std::free(block);
}
