#pragma once

#include "basepool/basepool_export.h"

#include <cstddef>

// Large blocks from the C heap for the node containers' plexes and bucket tables. Blocks of a few
// megabytes and more are placed on huge-page boundaries and marked for transparent huge pages where
// the system offers them: filling such a block then costs a dozen page faults instead of thousands,
// and random accesses into it (hash buckets, nodes) miss the TLB far less often. Freed with
// CbFreeHeapBlock. All return null when the heap has no such block.

// bytes aligned to alignment (at least that of std::max_align_t).
BASEPOOL_API void* CbAllocateHeapBlock(std::size_t bytes, std::size_t alignment);
// bytes set to zero.
BASEPOOL_API void* CbAllocateZeroedHeapBlock(std::size_t bytes);
BASEPOOL_API void CbFreeHeapBlock(void* block);
