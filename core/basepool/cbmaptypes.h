#pragma once

#include "basepool/cbtypename.h"
#include "basepool/cstring.h"

#include <concepts>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string>
#include <type_traits>
#include <utility>

// Types shared by the hashed containers CbMap and CbSet: their node, their hash and the key traits
// through which a key type says how it is hashed and compared.
namespace CbMapTypes
{
// Value type of set nodes; takes no room in the node.
struct SEmpty
{
    friend bool operator==(SEmpty, SEmpty) { return true; }
};

// Node of a map or set: the link to the next node of the same bucket, the key and the value.
template <class Key, class Value> struct SAssociation
{
    SAssociation* pNext;
    const Key key;
    [[no_unique_address]] Value value;

    template <class K, class... Args>
    SAssociation(std::in_place_t, K&& k, Args&&... args)
        : pNext(nullptr), key(std::forward<K>(k)), value(std::forward<Args>(args)...)
    {
    }
};

// 64-bit FNV-1a.
inline constexpr std::uint64_t kFnvOffsetBasis = 0xcbf29ce484222325ull;
inline constexpr std::uint64_t kFnvPrime = 0x100000001b3ull;

// FNV-1a over size bytes in memory order, continuing from hash (so the hash of several pieces is
// HashBytes(b, nb, HashBytes(a, na))).
inline std::uint64_t HashBytes(const void* data, std::size_t size, std::uint64_t hash = kFnvOffsetBasis)
{
    const unsigned char* bytes = static_cast<const unsigned char*>(data);
    for (std::size_t i = 0; i < size; ++i)
    {
        hash ^= bytes[i];
        hash *= kFnvPrime;
    }
    return hash;
}

// FNV-1a rounds over Size bytes, unrolled, in a Word of 64 or 32 bits. A 32-bit Word gives the low
// half of the 64-bit hash: the containers use only the low bits of a hash (bucket = hash AND mask,
// tables of at most 2^31 buckets), and the low k bits of a sum or product depend only on the low k
// bits of the operands, so the rounds may run with the low halves of the basis and the prime; a
// 32-bit multiplication by a constant that fits an immediate needs no register for the prime.
// The multiplications form one chain of Size steps; what limits lookups is the number of
// instructions around it, so on x86-64 each byte is XORed from memory straight into the low byte of
// the hash (one instruction instead of a load and a XOR; the result is the same).
template <std::size_t Size, class Word> inline Word HashFixedBytesIn(const void* data, Word hash)
{
    static_assert(std::is_same_v<Word, std::uint64_t> || std::is_same_v<Word, std::uint32_t>);
    const unsigned char* bytes = static_cast<const unsigned char*>(data);
#pragma GCC unroll 16
    for (std::size_t i = 0; i < Size; ++i)
    {
#if defined(__x86_64__) && defined(__GNUC__)
        asm("xorb %1, %b0" : "+r"(hash) : "m"(bytes[i]));
#else
        hash ^= bytes[i];
#endif
        hash *= static_cast<Word>(kFnvPrime);
    }
    return hash;
}

// HashBytes for a size known at compile time.
template <std::size_t Size>
inline std::uint64_t HashFixedBytes(const void* data, std::uint64_t hash = kFnvOffsetBasis)
{
    return HashFixedBytesIn<Size>(data, hash);
}

// The low 32 bits of HashFixedBytes, computed in 32-bit rounds.
template <std::size_t Size> inline std::uint32_t HashFixedBytesLow(const void* data)
{
    return HashFixedBytesIn<Size>(data, static_cast<std::uint32_t>(kFnvOffsetBasis));
}

// FNV-1a with one round per character (code unit) instead of per byte: the same as HashBytes for
// narrow text, a quarter of the rounds for wide text.
template <class CharT> inline std::uint64_t HashCharacters(const CharT* text, std::size_t count)
{
    std::uint64_t hash = kFnvOffsetBasis;
    for (std::size_t i = 0; i < count; ++i)
    {
        hash ^= static_cast<std::make_unsigned_t<CharT>>(text[i]);
        hash *= kFnvPrime;
    }
    return hash;
}

// How a key type is hashed and compared. The default hashes the key's bytes, which is right only
// where equal values have equal bytes: integers, enumerations, pointers as identities, and structs
// of those without padding. Any other key type (padding, floating point, pointers to the key's
// data) is rejected at compile time and needs its own traits, either as a specialisation
//
//     template <> struct CbMapTypes::SKeyTraits<SEdge>
//     {
//         static std::uint64_t Hash(const SEdge& e)      // hash the members, never the padding
//         {
//             return CbMapTypes::HashBytes(&e.to, sizeof e.to, CbMapTypes::HashBytes(&e.from, sizeof
//             e.from));
//         }
//         static bool Equal(const SEdge& a, const SEdge& b) { return a.from == b.from && a.to == b.to; }
//     };
//
// or as the last template argument of the container (CbMap<SEdge, int, SEdgeTraits>). Hash and Equal
// must agree: keys that are Equal have the same Hash.
template <class Key, class Enable = void> struct SKeyTraits
{
    static_assert(
        std::has_unique_object_representations_v<Key>,
        "CbMap/CbSet: the bytes of this key type do not determine its value (padding, floating point "
        "or pointers to data); specialise CbMapTypes::SKeyTraits<Key> with Hash and Equal");

    static std::uint64_t Hash(const Key& key) { return HashFixedBytes<sizeof(Key)>(&key); }
    // The low 32 bits of Hash, all that bucket selection needs (see HashFixedBytesLow).
    static std::uint32_t BucketHash(const Key& key) { return HashFixedBytesLow<sizeof(Key)>(&key); }
    static bool Equal(const Key& a, const Key& b)
    {
        if constexpr (std::equality_comparable<Key>)
            return a == b;
        else
            return std::memcmp(&a, &b, sizeof(Key)) == 0;
    }
};

// Strings hash their characters, one FNV-1a round each (HashCharacters).
template <class CharT> struct SKeyTraits<CbStringT<CharT>>
{
    static std::uint64_t Hash(const CbStringT<CharT>& key)
    {
        return HashCharacters(key.GetString(), static_cast<std::size_t>(key.GetLength()));
    }
    static bool Equal(const CbStringT<CharT>& a, const CbStringT<CharT>& b) { return a == b; }
};
template <class CharT, class CharTraits, class Allocator>
struct SKeyTraits<std::basic_string<CharT, CharTraits, Allocator>>
{
    static std::uint64_t Hash(const std::basic_string<CharT, CharTraits, Allocator>& key)
    {
        return HashCharacters(key.data(), key.size());
    }
    static bool Equal(const std::basic_string<CharT, CharTraits, Allocator>& a,
                      const std::basic_string<CharT, CharTraits, Allocator>& b)
    {
        return a == b;
    }
};
// float and double keys: -0 and +0 are equal and hash alike. A NaN key is never found again.
template <class Float>
struct SKeyTraits<Float, std::enable_if_t<std::is_same_v<Float, float> || std::is_same_v<Float, double>>>
{
    static std::uint64_t Hash(Float key)
    {
        const Float canonical = key == Float(0) ? Float(0) : key;
        return HashFixedBytes<sizeof(Float)>(&canonical);
    }
    static bool Equal(Float a, Float b) { return a == b; }
};
} // namespace CbMapTypes

template <class Key, class Value> struct CbTypeName<CbMapTypes::SAssociation<Key, Value>>
{
    static std::string Get()
    {
        return CbTypeNameTemplate("struct CbMapTypes::SAssociation", CbTypeName<Key>::Get(),
                                  CbTypeName<Value>::Get());
    }
};
CB_DECLARE_TYPENAME(CbMapTypes::SEmpty, "struct CbMapTypes::SEmpty");
