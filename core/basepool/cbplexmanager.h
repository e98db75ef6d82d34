#pragma once

#include "basepool/cbexception.h"
#include "basepool/cbheapblock.h"
#include "basepool/cbtypename.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdlib>
#include <limits>
#include <memory>
#include <string>
#include <type_traits>
#include <utility>

#if defined(__SANITIZE_ADDRESS__)
#include <sanitizer/asan_interface.h>
// Free and never used nodes are poisoned, so that a container touching a node it gave back is
// reported by AddressSanitizer instead of reading whatever the next owner wrote there.
#define CB_PLEX_POISON(address, size) ASAN_POISON_MEMORY_REGION(address, size)
#define CB_PLEX_UNPOISON(address, size) ASAN_UNPOISON_MEMORY_REGION(address, size)
#else
#define CB_PLEX_POISON(address, size) ((void)(address), (void)(size))
#define CB_PLEX_UNPOISON(address, size) ((void)(address), (void)(size))
#endif

// The node allocator of the node-based containers. It hands out raw storage for one Node at a
// time from large blocks ("plexes") and keeps released nodes on a free list, so that inserting into
// a list, map or set costs no heap call in the common case.
//
// Blocks grow geometrically: the k-th block (k = 0, 1, ...) holds the block size multiplied k times
// by the growth factor, truncated after every multiplication: 128, 192, 288, 432, 648, ... for the
// default factor 1.5. A fixed block size, when set, replaces that rule. The number of heap calls is
// thus logarithmic in the number of nodes. A block's byte size (one pointer-sized header plus its
// nodes) has to fit in SizeType; a larger request is split into several blocks.
//
// Nodes of the newest block are handed out from its highest address downwards. They are not threaded
// onto the free list up front: a block's memory is first touched when its nodes are used, so a block
// that is only partly used costs address space, not resident memory. Released nodes go to the head of
// the free list and are handed out again before any node that was never used.
//
// Template arguments: Alignment of every node (0: the node's own); FixedBlockSize, the initial value of
// the fixed block size (0: geometric growth); SizeType, the type of the counts and of a block's byte size.
//
// Not synchronised: a manager and the containers that use it belong to one thread at a time. Several
// containers may share one manager through a std::shared_ptr (see CbMakeSharedPlexManager).
template <class Node, std::size_t Alignment = 0, unsigned int FixedBlockSize = 0,
          class SizeType = unsigned int>
class CbPlexManager
{
    static_assert(std::is_unsigned_v<SizeType>, "CbPlexManager: SizeType must be an unsigned integer type");

public:
    using NodeType = Node;
    using SizeT = SizeType;

    static constexpr std::size_t kNodeAlignment = std::max({Alignment, alignof(Node), alignof(void*)});
    // Distance of two neighbouring nodes in a block; a free node keeps its link in its first word.
    static constexpr std::size_t kNodeSize =
        (std::max(sizeof(Node), sizeof(void*)) + kNodeAlignment - 1) / kNodeAlignment * kNodeAlignment;
    // The block header holds the link to the block allocated before; nodes start aligned after it.
    static constexpr std::size_t kHeaderSize =
        (sizeof(void*) + kNodeAlignment - 1) / kNodeAlignment * kNodeAlignment;
    // The most nodes whose block still has a byte size that fits in SizeType.
    static constexpr SizeType kMaxNodesPerBlock =
        static_cast<SizeType>((std::numeric_limits<SizeType>::max() - kHeaderSize) / kNodeSize);
    static_assert(kMaxNodesPerBlock > 0, "CbPlexManager: SizeType cannot count the bytes of a single node");

    // blockSize: the number of nodes of the first block; 0 throws CbExceptionContainer.
    explicit CbPlexManager(SizeType blockSize) : m_blockSize(blockSize)
    {
        if (blockSize == 0)
            CB_THROW(CbExceptionContainer, functionName("CbPlexManager").c_str());
    }

    CbPlexManager(const CbPlexManager&) = delete;
    CbPlexManager& operator=(const CbPlexManager&) = delete;

    // The moved-from manager keeps its settings and holds no blocks.
    CbPlexManager(CbPlexManager&& other) noexcept
        : m_blockSize(other.m_blockSize), m_fixedBlockSize(other.m_fixedBlockSize),
          m_growthFactor(other.m_growthFactor)
    {
        takeBlocks(other);
    }
    CbPlexManager& operator=(CbPlexManager&& other) noexcept
    {
        if (this != &other)
        {
            FreeAll();
            m_blockSize = other.m_blockSize;
            m_fixedBlockSize = other.m_fixedBlockSize;
            m_growthFactor = other.m_growthFactor;
            takeBlocks(other);
        }
        return *this;
    }

    // Frees every block. Elements still constructed in nodes are not destroyed: that is the
    // containers' business.
    ~CbPlexManager() { FreeAll(); }

    // Raw, suitably aligned storage for one Node; the caller constructs the node in it. Throws
    // CbExceptionContainer when a new block is needed and cannot be allocated; the manager is then
    // unchanged.
    void* AllocateNode()
    {
        if (void* node = m_freeHead)
        {
            CB_PLEX_UNPOISON(node, kNodeSize);
            m_freeHead = *static_cast<void**>(node);
            return node;
        }
        if (m_unusedEnd == m_unusedBegin)
            refill();
        m_unusedEnd -= kNodeSize;
        CB_PLEX_UNPOISON(m_unusedEnd, kNodeSize);
        return m_unusedEnd;
    }

    // Gives a node back (its element already destroyed); the next AllocateNode returns it.
    void ReleaseNode(void* node)
    {
        *static_cast<void**>(node) = m_freeHead;
        m_freeHead = node;
        CB_PLEX_POISON(node, kNodeSize);
    }

    // Gives back a chain of nodes at once, in constant time: each node from first to last holds the
    // next one of the chain in its first pointer-sized word (the forward link of the list nodes).
    void ReleaseChain(void* first, void* last)
    {
#if defined(__SANITIZE_ADDRESS__)
        for (void* node = first; node != last;)
        {
            void* next = *static_cast<void**>(node);
            CB_PLEX_POISON(node, kNodeSize);
            node = next;
        }
#endif
        *static_cast<void**>(last) = m_freeHead;
        m_freeHead = first;
        CB_PLEX_POISON(last, kNodeSize);
    }

    // Frees every block and forgets the free list; the block count starts again at 0, so the next
    // block has the block size again. Only for a manager whose nodes are all given back or dead.
    void FreeAll()
    {
        while (m_plexHead)
        {
            void* block = m_plexHead;
            CB_PLEX_UNPOISON(block, sizeof(void*));
            m_plexHead = *static_cast<void**>(block);
            freeBlock(block);
        }
        m_freeHead = nullptr;
        m_unusedBegin = m_unusedEnd = nullptr;
        m_nextUnusedBlock = nullptr;
        m_unusedBlocks = 0;
        m_blockCount = 0;
    }

    SizeType GetBlockSize() const
    {
        return m_blockSize;
    }
    // Block size of the first block and the start of the growth; 0 throws CbExceptionPreconditionViolation.
    void SetBlockSize(SizeType blockSize)
    {
        if (blockSize == 0)
            CB_THROW(CbExceptionPreconditionViolation, functionName("SetBlockSize").c_str());
        m_blockSize = blockSize;
    }
    SizeType GetFixedBlockSize() const
    {
        return m_fixedBlockSize;
    }
    // Every later block has exactly this many nodes; 0 returns to geometric growth.
    void SetFixedBlockSize(SizeType fixedBlockSize)
    {
        m_fixedBlockSize = fixedBlockSize;
    }
    float GetGrowthFactor() const
    {
        return m_growthFactor;
    }
    // Factors below 1 (shrinking blocks) and non-finite ones throw CbExceptionPreconditionViolation.
    void SetGrowthFactor(float growthFactor)
    {
        if (!(growthFactor >= 1.0f) || !std::isfinite(growthFactor))
            CB_THROW(CbExceptionPreconditionViolation, functionName("SetGrowthFactor").c_str());
        m_growthFactor = growthFactor;
    }
    // Number of block allocations so far (a split allocation counts once).
    SizeType GetBlockCount() const
    {
        return m_blockCount;
    }
    // Holds at least one block.
    bool HasBlocks() const
    {
        return m_plexHead != nullptr;
    }

    // Node count of the block that the next block allocation will request.
    SizeType GetNextBlockSize() const
    {
        if (m_fixedBlockSize != 0)
            return m_fixedBlockSize;
        constexpr SizeType largest = std::numeric_limits<SizeType>::max();
        SizeType size = m_blockSize;
        for (SizeType i = 0; i < m_blockCount && size < largest; ++i)
        {
            const double product = static_cast<double>(size) * static_cast<double>(m_growthFactor);
            size = product >= static_cast<double>(largest) ? largest : static_cast<SizeType>(product);
        }
        return size;
    }

    // Nodes that AllocateNode can hand out without a new block (walks the free list).
    std::size_t CountAvailableNodes() const
    {
        std::size_t count = static_cast<std::size_t>(m_unusedEnd - m_unusedBegin) / kNodeSize +
                            static_cast<std::size_t>(m_unusedBlocks) * kMaxNodesPerBlock;
        for (void* node = m_freeHead; node; ++count)
        {
            CB_PLEX_UNPOISON(node, sizeof(void*));
            void* next = *static_cast<void**>(node);
            CB_PLEX_POISON(node, sizeof(void*));
            node = next;
        }
        return count;
    }

private:
    static std::string functionName(const char* function)
    {
        return CbTypeNameTemplate("CbPlexManager", CbTypeName<Node>::Get(), std::to_string(Alignment),
                                  std::to_string(FixedBlockSize), CbTypeName<SizeType>::Get()) +
               "::" + function;
    }

    static char* nodesOf(void* block)
    {
        return static_cast<char*>(block) + kHeaderSize;
    }

    static void* allocateBlock(SizeType nodeCount)
    {
        const std::size_t bytes = kHeaderSize + static_cast<std::size_t>(nodeCount) * kNodeSize;
        void* block = CbAllocateHeapBlock(bytes, kNodeAlignment);
        if (block)
            CB_PLEX_POISON(nodesOf(block), bytes - kHeaderSize);
        return block;
    }

    static void freeBlock(void* block)
    {
        CbFreeHeapBlock(block);
    }

    void linkBlock(void* block)
    {
        *static_cast<void**>(block) = m_plexHead;
        m_plexHead = block;
    }

    // Makes new nodes available: the next block of a split allocation, or a new block.
    [[gnu::noinline]] void refill()
    {
        if (m_unusedBlocks != 0)
        {
            void* block = m_nextUnusedBlock;
            m_nextUnusedBlock = *static_cast<void**>(block);
            --m_unusedBlocks;
            m_unusedBegin = nodesOf(block);
            m_unusedEnd = m_unusedBegin + static_cast<std::size_t>(kMaxNodesPerBlock) * kNodeSize;
            return;
        }

        SizeType remaining = GetNextBlockSize();
        void* const previousHead = m_plexHead;
        SizeType fullBlocks = 0;
        bool failed = false;
        while (remaining > kMaxNodesPerBlock && !failed)
        {
            void* block = allocateBlock(kMaxNodesPerBlock);
            if (block)
            {
                linkBlock(block);
                ++fullBlocks;
                remaining -= kMaxNodesPerBlock;
            }
            else
                failed = true;
        }
        void* last = failed ? nullptr : allocateBlock(remaining);
        if (!last)
        {
            while (m_plexHead != previousHead)
            {
                void* block = m_plexHead;
                m_plexHead = *static_cast<void**>(block);
                freeBlock(block);
            }
            CB_THROW(CbExceptionContainer, functionName("AllocateNode").c_str());
        }
        linkBlock(last);
        ++m_blockCount;
        m_unusedBegin = nodesOf(last);
        m_unusedEnd = m_unusedBegin + static_cast<std::size_t>(remaining) * kNodeSize;
        m_nextUnusedBlock = *static_cast<void**>(last);
        m_unusedBlocks = fullBlocks;
    }

    void takeBlocks(CbPlexManager& other)
    {
        m_plexHead = std::exchange(other.m_plexHead, nullptr);
        m_freeHead = std::exchange(other.m_freeHead, nullptr);
        m_blockCount = std::exchange(other.m_blockCount, 0);
        m_unusedBegin = std::exchange(other.m_unusedBegin, nullptr);
        m_unusedEnd = std::exchange(other.m_unusedEnd, nullptr);
        m_nextUnusedBlock = std::exchange(other.m_nextUnusedBlock, nullptr);
        m_unusedBlocks = std::exchange(other.m_unusedBlocks, 0);
    }

    void* m_plexHead = nullptr; // newest block; each block begins with the link to the one before
    void* m_freeHead = nullptr; // first released node; each links to the next in its first word
    SizeType m_blockSize;
    SizeType m_fixedBlockSize = FixedBlockSize;
    SizeType m_blockCount = 0;
    float m_growthFactor = 1.5f;
    // Never used nodes of the newest block, handed out from m_unusedEnd downwards.
    char* m_unusedBegin = nullptr;
    char* m_unusedEnd = nullptr;
    // Further untouched blocks of a split allocation: m_unusedBlocks of them, linked from m_nextUnusedBlock.
    void* m_nextUnusedBlock = nullptr;
    SizeType m_unusedBlocks = 0;
};

// A plex manager that several containers share by reference count (not for concurrent use).
template <class Node, std::size_t Alignment = 0, unsigned int FixedBlockSize = 0,
          class SizeType = unsigned int>
std::shared_ptr<CbPlexManager<Node, Alignment, FixedBlockSize, SizeType>>
CbMakeSharedPlexManager(std::type_identity_t<SizeType> blockSize)
{
    return std::make_shared<CbPlexManager<Node, Alignment, FixedBlockSize, SizeType>>(blockSize);
}
