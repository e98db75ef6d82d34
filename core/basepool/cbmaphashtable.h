#pragma once

#include "basepool/cbexception.h"
#include "basepool/cbheapblock.h"
#include "basepool/cbmappolicyplexmanager.h"
#include "basepool/cbmaptypes.h"

#include <algorithm>
#include <bit>
#include <cstdint>
#include <iterator>
#include <type_traits>
#include <utility>

// The chained hash table behind CbMap and CbSet.
//
// Buckets: a power-of-two table of chain heads, so that the bucket of a key is its 64-bit FNV-1a hash
// AND the mask (table size - 1). The table is allocated with the first insertion; a lookup in an
// empty container is a miss without hashing.
//
// Growth: the table doubles when an insertion would take the count above the table size, so the load
// factor stays at most 1 and is between 0.5 and 1 after growing. Chains then stay short (at most 3
// nodes for 2^7 .. 2^21 sequential 64-bit keys or multiples of 256 at full load) while the table costs
// one pointer per node, which with 24-byte nodes without allocator overhead keeps a map of integers
// below the memory of the standard unordered map at the same load factor.
//
// Small tables: FNV-1a carries every input bit only upwards, so the lowest m bits of the hash depend
// only on the lowest m bits of each key byte. A table below 256 buckets (mask below 8 bits) therefore
// cannot tell apart keys that differ only in the high bits of their bytes, whatever their number.
// An insertion that finds such a table's chain already kSmallTableChainLimit long doubles the table,
// until the mask covers whole bytes. Larger tables grow by the load factor alone, so keys with equal
// hashes cannot drive the table to grow without end.
//
// Iteration visits bucket after bucket, each chain from its head; the order is unspecified and changes
// when the table grows. m_firstBucket, the lowest bucket in use (kNoBucket when none), lets iteration
// start without scanning the empty buckets in front.
template <class Key, class Value, class Traits> class CbMapHashTable
{
public:
    using Association = CbMapTypes::SAssociation<Key, Value>;
    using NodePolicy = CbMapPolicyPlexManager<Association>;
    using PlexManager = typename NodePolicy::PlexManager;

    static constexpr unsigned int kDefaultTableSize = 128;
    static constexpr unsigned int kMaxTableSize = 1u << 31;
    static constexpr unsigned int kNoBucket = 0xFFFFFFFFu;
    static constexpr unsigned int kFullByteTableSize = 256;
    static constexpr unsigned int kSmallTableChainLimit = 4;
    static constexpr unsigned int kRehashPrefetchDistance = 8;

    template <bool Const> class TIterator
    {
    public:
        using iterator_category = std::forward_iterator_tag;
        using value_type = Association;
        using difference_type = std::ptrdiff_t;
        using pointer = std::conditional_t<Const, const Association*, Association*>;
        using reference = std::conditional_t<Const, const Association&, Association&>;

        TIterator() = default;
        TIterator(const CbMapHashTable* table, Association* node, unsigned int bucket)
            : m_table(table), m_node(node), m_bucket(bucket)
        {
        }
        template <bool OtherConst, class = std::enable_if_t<Const && !OtherConst>>
        TIterator(const TIterator<OtherConst>& other)
            : m_table(other.GetTable()), m_node(other.GetNode()), m_bucket(other.GetBucket())
        {
        }

        reference operator*() const { return *m_node; }
        pointer operator->() const { return m_node; }
        TIterator& operator++()
        {
            m_node = m_table->nextNode(m_node, m_bucket);
            return *this;
        }
        TIterator operator++(int)
        {
            TIterator old = *this;
            ++*this;
            return old;
        }
        friend bool operator==(const TIterator& a, const TIterator& b) { return a.m_node == b.m_node; }

        const CbMapHashTable* GetTable() const { return m_table; }
        Association* GetNode() const { return m_node; }
        unsigned int GetBucket() const { return m_bucket; }

    private:
        const CbMapHashTable* m_table = nullptr;
        Association* m_node = nullptr;
        unsigned int m_bucket = 0;
    };
    using Iterator = TIterator<false>;
    using ConstIterator = TIterator<true>;

    // tableSize: requested bucket count, rounded down to a power of two (100 gives 64); 0 throws
    // CbExceptionPreconditionViolation. blockSize: nodes of the plex manager's first block.
    explicit CbMapHashTable(unsigned int tableSize = kDefaultTableSize,
                            unsigned int blockSize = NodePolicy::kDefaultBlockSize)
        : m_nodes(blockSize), m_tableSize(roundTableSize(tableSize, "CbMapHashTable::CbMapHashTable")),
          m_mask(m_tableSize - 1)
    {
    }
    // Same table size and block size, same content.
    CbMapHashTable(const CbMapHashTable& other) : m_nodes(other.m_nodes.GetPlexManager().GetBlockSize())
    {
        m_tableSize = other.m_tableSize;
        m_mask = other.m_mask;
        for (ConstIterator it = other.beginNodes(); it != ConstIterator(); ++it)
            emplaceUnique(it->key, it->value);
    }
    CbMapHashTable(CbMapHashTable&& other) noexcept
        : m_nodes(std::move(other.m_nodes)), m_buckets(std::exchange(other.m_buckets, nullptr)),
          m_count(std::exchange(other.m_count, 0u)), m_tableSize(other.m_tableSize), m_mask(other.m_mask),
          m_firstBucket(std::exchange(other.m_firstBucket, kNoBucket))
    {
    }
    CbMapHashTable& operator=(const CbMapHashTable& other)
    {
        if (this != &other)
        {
            CbMapHashTable copy(other);
            Swap(copy);
        }
        return *this;
    }
    CbMapHashTable& operator=(CbMapHashTable&& other) noexcept
    {
        if (this != &other)
        {
            CbMapHashTable moved(std::move(other));
            Swap(moved);
        }
        return *this;
    }
    ~CbMapHashTable() { RemoveAll(); }

    void Swap(CbMapHashTable& other) noexcept
    {
        NodePolicy nodes(std::move(m_nodes));
        m_nodes = std::move(other.m_nodes);
        other.m_nodes = std::move(nodes);
        std::swap(m_buckets, other.m_buckets);
        std::swap(m_count, other.m_count);
        std::swap(m_tableSize, other.m_tableSize);
        std::swap(m_mask, other.m_mask);
        std::swap(m_firstBucket, other.m_firstBucket);
    }

    unsigned int GetCount() const { return m_count; }
    bool IsEmpty() const { return m_count == 0; }
    unsigned int GetHashTableSize() const { return m_tableSize; }

    // Sets the bucket count (rounded down to a power of two) and redistributes the elements; later
    // insertions grow the table again where the count requires it.
    void InitHashTable(unsigned int tableSize)
    {
        const unsigned int size = roundTableSize(tableSize, "CbMapHashTable::InitHashTable");
        if (!m_buckets)
        {
            m_tableSize = size;
            m_mask = size - 1;
        }
        else if (size != m_tableSize && !rehash(size))
            CB_THROW(CbExceptionMemory, "CbMapHashTable::InitHashTable");
    }

    // Number of nodes in the longest chain (0 for an empty container).
    unsigned int GetLongestChain() const
    {
        unsigned int longest = 0;
        for (unsigned int bucket = 0; m_buckets && bucket < m_tableSize; ++bucket)
        {
            unsigned int length = 0;
            for (const Association* node = m_buckets[bucket]; node; node = node->pNext)
                ++length;
            longest = std::max(longest, length);
        }
        return longest;
    }

    // Destroys every element and frees the nodes and the bucket table; the table size stays.
    void RemoveAll()
    {
        if (m_buckets)
        {
            if constexpr (!NodePolicy::kTrivialNodes)
                for (unsigned int bucket = 0; bucket < m_tableSize; ++bucket)
                    for (Association* node = m_buckets[bucket]; node;)
                    {
                        Association* next = node->pNext;
                        NodePolicy::DestroyNode(node);
                        node = next;
                    }
            m_nodes.FreeAll();
            CbFreeHeapBlock(m_buckets);
            m_buckets = nullptr;
        }
        m_count = 0;
        m_firstBucket = kNoBucket;
    }

    // The plex manager of the nodes, e.g. to set its growth factor before the first insertion.
    PlexManager& GetPlexManager() { return m_nodes.GetPlexManager(); }
    const PlexManager& GetPlexManager() const { return m_nodes.GetPlexManager(); }

protected:
    Iterator beginNodes()
    {
        return m_count ? Iterator(this, m_buckets[m_firstBucket], m_firstBucket) : Iterator();
    }
    ConstIterator beginNodes() const
    {
        return m_count ? ConstIterator(this, m_buckets[m_firstBucket], m_firstBucket) : ConstIterator();
    }

    Association* find(const Key& key) const
    {
        if (m_count == 0)
            return nullptr;
        Association* node = m_buckets[bucketHash(key) & m_mask];
        if constexpr (std::is_scalar_v<Key>)
        {
            // Whether the key is the chain's first or second node depends on the data and defeats
            // branch prediction; choosing between the two without a branch keeps lookups of
            // different keys overlapping. The loop below then confirms the choice.
            if (!node)
                return nullptr;
            const std::uintptr_t first = reinterpret_cast<std::uintptr_t>(node);
            const std::uintptr_t second = reinterpret_cast<std::uintptr_t>(node->pNext);
            const std::uintptr_t keepFirst =
                std::uintptr_t(0) - std::uintptr_t(Traits::Equal(node->key, key));
            node = reinterpret_cast<Association*>((first & keepFirst) | (second & ~keepFirst));
        }
        for (; node; node = node->pNext)
            if (Traits::Equal(node->key, key))
                return node;
        return nullptr;
    }

    // The node of key, built from key and valueArgs when it is missing; second tells which.
    template <class K, class... Args>
    std::pair<Association*, bool> emplaceUnique(K&& key, Args&&... valueArgs)
    {
        if (!m_buckets)
            allocateTable();
        const std::uint32_t hash = bucketHash(key);
        unsigned int bucket = hash & m_mask;
        unsigned int chain = 0;
        for (Association* node = m_buckets[bucket]; node; node = node->pNext, ++chain)
            if (Traits::Equal(node->key, key))
                return {node, false};
        if (needsGrowth(chain) && rehash(m_tableSize * 2))
            bucket = hash & m_mask;
        Association* node = m_nodes.NewNode(std::forward<K>(key), std::forward<Args>(valueArgs)...);
        node->pNext = m_buckets[bucket];
        m_buckets[bucket] = node;
        ++m_count;
        m_firstBucket = std::min(m_firstBucket, bucket);
        return {node, true};
    }

    bool remove(const Key& key)
    {
        if (m_count == 0)
            return false;
        const unsigned int bucket = bucketHash(key) & m_mask;
        for (Association** link = &m_buckets[bucket]; *link; link = &(*link)->pNext)
            if (Traits::Equal((*link)->key, key))
            {
                unlink(bucket, link);
                return true;
            }
        return false;
    }

    // Removes the element of it; returns the iterator to the element after it.
    Iterator erase(ConstIterator it)
    {
        Iterator next(this, it.GetNode(), it.GetBucket());
        ++next;
        Association** link = &m_buckets[it.GetBucket()];
        while (*link != it.GetNode())
            link = &(*link)->pNext;
        unlink(it.GetBucket(), link);
        return next;
    }

private:
    // The low 32 bits of the key's hash, which is all a table of at most 2^31 buckets uses; from the
    // traits' BucketHash where they have one (cheaper than the full hash), else the truncated Hash.
    static std::uint32_t bucketHash(const Key& key)
    {
        if constexpr (requires { Traits::BucketHash(key); })
            return static_cast<std::uint32_t>(Traits::BucketHash(key));
        else
            return static_cast<std::uint32_t>(Traits::Hash(key));
    }

    static unsigned int roundTableSize(unsigned int requested, const char* function)
    {
        if (requested == 0)
            CB_THROW(CbExceptionPreconditionViolation, function);
        return std::min(std::bit_floor(requested), kMaxTableSize);
    }

    void allocateTable()
    {
        m_buckets = static_cast<Association**>(
            CbAllocateZeroedHeapBlock(std::size_t(m_tableSize) * sizeof(Association*)));
        if (!m_buckets)
            CB_THROW(CbExceptionMemory, "CbMapHashTable::allocateTable");
    }

    bool needsGrowth(unsigned int chain) const
    {
        if (m_tableSize >= kMaxTableSize)
            return false;
        return m_count >= m_tableSize || (chain >= kSmallTableChainLimit && m_tableSize < kFullByteTableSize);
    }

    // Moves every node into a new table of tableSize buckets. Without memory for it the old table
    // stays (lookups stay right, chains get longer) and the result is false.
    bool rehash(unsigned int tableSize)
    {
        auto** table = static_cast<Association**>(
            CbAllocateZeroedHeapBlock(std::size_t(tableSize) * sizeof(Association*)));
        if (!table)
            return false;
        const unsigned int mask = tableSize - 1;
        unsigned int first = kNoBucket;
        for (unsigned int bucket = 0; bucket < m_tableSize; ++bucket)
        {
            // The chains' nodes lie anywhere in the plex blocks; fetch those a few buckets ahead.
            if (bucket + kRehashPrefetchDistance < m_tableSize)
                __builtin_prefetch(m_buckets[bucket + kRehashPrefetchDistance]);
            for (Association* node = m_buckets[bucket]; node;)
            {
                Association* next = node->pNext;
                const unsigned int target = bucketHash(node->key) & mask;
                node->pNext = table[target];
                table[target] = node;
                first = std::min(first, target);
                node = next;
            }
        }
        CbFreeHeapBlock(m_buckets);
        m_buckets = table;
        m_tableSize = tableSize;
        m_mask = mask;
        m_firstBucket = first;
        return true;
    }

    void unlink(unsigned int bucket, Association** link)
    {
        Association* node = *link;
        *link = node->pNext;
        m_nodes.DeleteNode(node);
        --m_count;
        if (bucket == m_firstBucket && !m_buckets[bucket])
        {
            m_firstBucket = kNoBucket;
            for (unsigned int next = bucket + 1; m_count != 0 && next < m_tableSize; ++next)
                if (m_buckets[next])
                {
                    m_firstBucket = next;
                    break;
                }
        }
    }

    Association* nextNode(Association* node, unsigned int& bucket) const
    {
        if (node->pNext)
            return node->pNext;
        while (++bucket < m_tableSize)
            if (m_buckets[bucket])
                return m_buckets[bucket];
        return nullptr;
    }

    NodePolicy m_nodes;                     // node allocator
    Association** m_buckets = nullptr;      // chain heads; null until the first insertion
    unsigned int m_count = 0;               // stored associations
    unsigned int m_tableSize = 0;           // bucket count, a power of two
    unsigned int m_mask = 0;                // m_tableSize - 1
    unsigned int m_firstBucket = kNoBucket; // lowest bucket in use, or none
};
