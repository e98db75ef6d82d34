#pragma once

#include "basepool/cbmaphashtable.h"

#include <utility>

// Hashed map from Key to Value: chained buckets over a power-of-two table, nodes from a plex manager,
// 64-bit FNV-1a of the key (see CbMapHashTable for the growth rules and CbMapTypes::SKeyTraits for
// key types whose bytes do not determine their value). Iterating yields the associations, with
// .key (constant) and .value; their order is unspecified.
//
//     CbMap<unsigned __int64, double> weights;     // 128 buckets, blocks of 128 nodes
//     weights[17] = 0.5;
//     if (const double* w = weights.PLookup(17)) ...
//     for (auto& a : weights) a.value *= 2.0;
template <class Key, class Value, class Traits = CbMapTypes::SKeyTraits<Key>>
class CbMap : public CbMapHashTable<Key, Value, Traits>
{
    using Base = CbMapHashTable<Key, Value, Traits>;

public:
    using typename Base::Association;
    using typename Base::ConstIterator;
    using typename Base::Iterator;

    using Base::Base;

    // Copies the value of key into value; false (value untouched) when key is missing.
    bool Lookup(const Key& key, Value& value) const
    {
        if (const Association* node = this->find(key))
        {
            value = node->value;
            return true;
        }
        return false;
    }
    // The value of key, or null.
    Value* PLookup(const Key& key)
    {
        Association* node = this->find(key);
        return node ? &node->value : nullptr;
    }
    const Value* PLookup(const Key& key) const
    {
        const Association* node = this->find(key);
        return node ? &node->value : nullptr;
    }
    bool Contains(const Key& key) const { return this->find(key) != nullptr; }

    // The value of key, value-initialised first when key is missing.
    Value& operator[](const Key& key) { return this->emplaceUnique(key).first->value; }
    // Sets the value of key, inserting key when it is missing.
    void SetAt(const Key& key, const Value& value) { this->emplaceUnique(key).first->value = value; }
    // Inserts key with a value built from args only when key is missing; returns whether it did, and
    // the association of key either way.
    template <class... Args> std::pair<Association*, bool> TryEmplace(const Key& key, Args&&... args)
    {
        return this->emplaceUnique(key, std::forward<Args>(args)...);
    }

    // Removes key; false when it was missing.
    bool RemoveKey(const Key& key) { return this->remove(key); }
    // Removes the association of it; returns the iterator to the next one.
    Iterator Erase(ConstIterator it) { return this->erase(it); }

    Iterator begin() { return this->beginNodes(); }
    Iterator end() { return Iterator(); }
    ConstIterator begin() const { return this->beginNodes(); }
    ConstIterator end() const { return ConstIterator(); }
};
