#pragma once

#include "basepool/cbmaphashtable.h"

#include <initializer_list>
#include <iterator>

// Hashed set of keys, the same table as CbMap without values (see CbMapHashTable), with the set
// algebra: intersection and union in place (&=, |=) and as new sets (&, |), equality (==, !=) and
// subset tests. Iterating yields the keys in unspecified order.
//
//     CbSet<int> a{1, 2, 3}, b{2, 3, 4};
//     (a & b) == CbSet<int>{2, 3};   a | b has 4 elements;   CbSet<int>{2}.IsSubsetOf(a)
template <class Key, class Traits = CbMapTypes::SKeyTraits<Key>>
class CbSet : private CbMapHashTable<Key, CbMapTypes::SEmpty, Traits>
{
    using Base = CbMapHashTable<Key, CbMapTypes::SEmpty, Traits>;

public:
    class ConstIterator
    {
    public:
        using iterator_category = std::forward_iterator_tag;
        using value_type = Key;
        using difference_type = std::ptrdiff_t;
        using pointer = const Key*;
        using reference = const Key&;

        ConstIterator() = default;
        explicit ConstIterator(typename Base::ConstIterator it) : m_it(it) {}
        reference operator*() const { return m_it->key; }
        pointer operator->() const { return &m_it->key; }
        ConstIterator& operator++()
        {
            ++m_it;
            return *this;
        }
        ConstIterator operator++(int)
        {
            ConstIterator old = *this;
            ++m_it;
            return old;
        }
        friend bool operator==(const ConstIterator& a, const ConstIterator& b) { return a.m_it == b.m_it; }
        typename Base::ConstIterator GetBase() const { return m_it; }

    private:
        typename Base::ConstIterator m_it;
    };
    using Iterator = ConstIterator;

    // tableSize: requested bucket count (rounded down to a power of two); blockSize: nodes of the
    // first block of the plex manager.
    explicit CbSet(unsigned int tableSize = Base::kDefaultTableSize,
                   unsigned int blockSize = Base::NodePolicy::kDefaultBlockSize)
        : Base(tableSize, blockSize)
    {
    }
    CbSet(std::initializer_list<Key> keys) : Base()
    {
        for (const Key& key : keys)
            Add(key);
    }

    using Base::GetCount;
    using Base::GetHashTableSize;
    using Base::GetLongestChain;
    using Base::GetPlexManager;
    using Base::InitHashTable;
    using Base::IsEmpty;
    using Base::RemoveAll;

    void Swap(CbSet& other) noexcept { Base::Swap(other); }

    // Adds key; false when it was there already.
    bool Add(const Key& key) { return this->emplaceUnique(key).second; }
    bool Contains(const Key& key) const { return this->find(key) != nullptr; }
    // Removes key; false when it was missing.
    bool Remove(const Key& key) { return this->remove(key); }
    // Removes the key of it; returns the iterator to the next one.
    ConstIterator Erase(ConstIterator it) { return ConstIterator(this->erase(it.GetBase())); }

    // Keeps only the keys that other holds too.
    CbSet& IntersectWith(const CbSet& other)
    {
        if (&other != this)
            for (auto it = this->beginNodes(); it != typename Base::Iterator();)
                it = other.Contains(it->key) ? std::next(it) : this->erase(it);
        return *this;
    }
    // Adds every key of other.
    CbSet& UnionWith(const CbSet& other)
    {
        if (&other != this)
            for (const Key& key : other)
                Add(key);
        return *this;
    }
    // The keys that a and b both hold (looked up from the smaller set in the larger one).
    static CbSet Intersect(const CbSet& a, const CbSet& b)
    {
        const CbSet& smaller = a.GetCount() <= b.GetCount() ? a : b;
        const CbSet& larger = &smaller == &a ? b : a;
        CbSet result;
        for (const Key& key : smaller)
            if (larger.Contains(key))
                result.Add(key);
        return result;
    }
    // The keys that a or b holds.
    static CbSet Union(const CbSet& a, const CbSet& b)
    {
        const bool aLarger = a.GetCount() >= b.GetCount();
        CbSet result(aLarger ? a : b);
        result.UnionWith(aLarger ? b : a);
        return result;
    }

    CbSet& operator&=(const CbSet& other) { return IntersectWith(other); }
    CbSet& operator|=(const CbSet& other) { return UnionWith(other); }
    friend CbSet operator&(const CbSet& a, const CbSet& b) { return Intersect(a, b); }
    friend CbSet operator|(const CbSet& a, const CbSet& b) { return Union(a, b); }

    // Every key of this set is in other (the empty set is a subset of every set).
    bool IsSubsetOf(const CbSet& other) const
    {
        if (GetCount() > other.GetCount())
            return false;
        for (const Key& key : *this)
            if (!other.Contains(key))
                return false;
        return true;
    }
    bool IsSupersetOf(const CbSet& other) const { return other.IsSubsetOf(*this); }
    // Same keys, whatever the table sizes and insertion orders.
    friend bool operator==(const CbSet& a, const CbSet& b)
    {
        return a.GetCount() == b.GetCount() && a.IsSubsetOf(b);
    }

    ConstIterator begin() const { return ConstIterator(this->beginNodes()); }
    ConstIterator end() const { return ConstIterator(); }
};
