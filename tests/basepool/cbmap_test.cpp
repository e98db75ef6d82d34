// The hashed map: table sizes, the key hash, the lookup shortcut of an empty map, growth that keeps
// every element and short chains, removal, custom key traits and element lifetimes.

#include "basepool/cbmap.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <cstdio>
#include <cstring>
#include <memory>
#include <random>
#include <set>
#include <string>
#include <vector>

namespace
{
using CMap64 = CbMap<std::uint64_t, std::uint64_t>;

// Key traits that count their calls, to see when the map hashes.
struct SCountingTraits
{
    static inline int s_hashes = 0;
    static std::uint64_t Hash(const int& key)
    {
        ++s_hashes;
        return CbMapTypes::SKeyTraits<int>::Hash(key);
    }
    static bool Equal(int a, int b) { return a == b; }
};

// Every key hashes alike: the worst case for any chained table.
struct SCollidingTraits
{
    static std::uint64_t Hash(const int&) { return 42; }
    static bool Equal(int a, int b) { return a == b; }
};

struct SPaddedKey
{
    char tag;
    int value;
};
struct SPaddedKeyTraits
{
    static std::uint64_t Hash(const SPaddedKey& key)
    {
        return CbMapTypes::HashBytes(&key.value, sizeof key.value, CbMapTypes::HashBytes(&key.tag, 1));
    }
    static bool Equal(const SPaddedKey& a, const SPaddedKey& b)
    {
        return a.tag == b.tag && a.value == b.value;
    }
};

class CCounted
{
public:
    explicit CCounted(int value = 0) : m_value(value) { ++s_alive; }
    CCounted(const CCounted& other) : m_value(other.m_value) { ++s_alive; }
    CCounted& operator=(const CCounted&) = default;
    ~CCounted() { --s_alive; }
    static inline int s_alive = 0;

private:
    int m_value;
};

std::uint64_t fnvOfZeroBytes(int count)
{
    std::uint64_t hash = 0xcbf29ce484222325ull;
    for (int i = 0; i < count; ++i)
        hash *= 0x100000001b3ull;
    return hash;
}
} // namespace

TEST(CbMap, TableSizeIsTheLargestPowerOfTwoNotAboveTheRequest)
{
    EXPECT_EQ(CMap64(100).GetHashTableSize(), 64u);
    EXPECT_EQ(CMap64(128).GetHashTableSize(), 128u);
    EXPECT_EQ(CMap64(129).GetHashTableSize(), 128u);
    EXPECT_EQ(CMap64(1).GetHashTableSize(), 1u);
    EXPECT_EQ(CMap64(0xFFFFFFFFu).GetHashTableSize(), 1u << 31);
    EXPECT_EQ(CMap64().GetHashTableSize(), 128u);
    EXPECT_THROW(CMap64(0), CbExceptionPreconditionViolation);
}

TEST(CbMap, HashIsFnv1aOfTheKeyBytes)
{
    EXPECT_EQ(CbMapTypes::SKeyTraits<std::uint64_t>::Hash(0), fnvOfZeroBytes(8));
    EXPECT_EQ(CbMapTypes::SKeyTraits<std::uint64_t>::Hash(0), 0xa8c7f832281a39c5ull);
    // Published FNV-1a 64 test vectors.
    EXPECT_EQ(CbMapTypes::HashBytes("", 0), 0xcbf29ce484222325ull);
    EXPECT_EQ(CbMapTypes::HashBytes("a", 1), 0xaf63dc4c8601ec8cull);
    EXPECT_EQ(CbMapTypes::HashBytes("foobar", 6), 0x85944171f73967e8ull);

    std::mt19937_64 generator(3);
    for (int round = 0; round < 100; ++round)
    {
        const std::uint64_t words[3] = {generator(), generator(), generator()};
        EXPECT_EQ(CbMapTypes::HashFixedBytes<8>(words), CbMapTypes::HashBytes(words, 8));
        EXPECT_EQ(CbMapTypes::HashFixedBytes<3>(words), CbMapTypes::HashBytes(words, 3));
        EXPECT_EQ(CbMapTypes::HashFixedBytes<24>(words), CbMapTypes::HashBytes(words, 24));
        // The 32-bit rounds that pick buckets give exactly the low half of the 64-bit hash.
        EXPECT_EQ(CbMapTypes::HashFixedBytesLow<8>(words),
                  static_cast<std::uint32_t>(CbMapTypes::HashBytes(words, 8)));
        EXPECT_EQ(CbMapTypes::HashFixedBytesLow<3>(words),
                  static_cast<std::uint32_t>(CbMapTypes::HashBytes(words, 3)));
        EXPECT_EQ(CbMapTypes::SKeyTraits<std::uint64_t>::BucketHash(words[1]),
                  static_cast<std::uint32_t>(CbMapTypes::SKeyTraits<std::uint64_t>::Hash(words[1])));
    }
    EXPECT_EQ(CbMapTypes::SKeyTraits<std::string>::Hash("foobar"), 0x85944171f73967e8ull);
    EXPECT_EQ(CbMapTypes::SKeyTraits<CString>::Hash(L"foobar"), 0x85944171f73967e8ull);
    EXPECT_EQ(CbMapTypes::SKeyTraits<double>::Hash(-0.0), CbMapTypes::SKeyTraits<double>::Hash(0.0));
}

TEST(CbMap, EmptyMapMissesWithoutHashing)
{
    CbMap<int, int, SCountingTraits> map;
    SCountingTraits::s_hashes = 0;
    EXPECT_FALSE(map.Contains(5));
    EXPECT_EQ(map.PLookup(5), nullptr);
    EXPECT_FALSE(map.RemoveKey(5));
    EXPECT_EQ(SCountingTraits::s_hashes, 0);
    map[5] = 1;
    map.RemoveKey(5);
    SCountingTraits::s_hashes = 0;
    EXPECT_FALSE(map.Contains(5));
    EXPECT_EQ(SCountingTraits::s_hashes, 0);
    map[6] = 1;
    EXPECT_FALSE(map.Contains(5));
    EXPECT_EQ(SCountingTraits::s_hashes, 2);
}

TEST(CbMap, GrowthKeepsEveryElement)
{
    CMap64 map;
    std::mt19937_64 generator(11);
    std::vector<std::uint64_t> keys;
    for (int i = 0; i < 100000; ++i)
    {
        keys.push_back(generator());
        map.SetAt(keys.back(), static_cast<std::uint64_t>(i));
        if (i == 127 || i == 128)
        {
            EXPECT_EQ(map.GetHashTableSize(), i < 128 ? 128u : 256u) << i;
        }
    }
    EXPECT_EQ(map.GetCount(), 100000u);
    EXPECT_EQ(map.GetHashTableSize(), 131072u);
    for (int i = 0; i < 100000; ++i)
    {
        const std::uint64_t* value = map.PLookup(keys[i]);
        ASSERT_NE(value, nullptr) << i;
        EXPECT_EQ(*value, static_cast<std::uint64_t>(i));
    }
    std::set<std::uint64_t> visited;
    for (const auto& association : map)
        visited.insert(association.value);
    EXPECT_EQ(visited.size(), 100000u);
}

// The load factor stays at most 1, and FNV-1a spreads both key patterns evenly at every table size.
TEST(CbMap, ChainsOfSequentialKeysAndMultiplesOf256StayShort)
{
    for (const std::uint64_t step : {std::uint64_t(1), std::uint64_t(256)})
    {
        CMap64 map;
        for (std::uint64_t count = 1; count <= (1u << 20); count *= 2)
        {
            while (map.GetCount() < count)
                map.SetAt(map.GetCount() * step, 0);
            const unsigned int longest = map.GetLongestChain();
            if (count >= 1024)
                std::printf("keys i * %llu, %7u keys, %7u buckets: longest chain %u\n",
                            static_cast<unsigned long long>(step), map.GetCount(), map.GetHashTableSize(),
                            longest);
            EXPECT_LE(map.GetCount(), map.GetHashTableSize());
            EXPECT_LE(longest, 3u) << count << " keys, step " << step;
        }
    }
}

// A table below 256 buckets sees only the low bits of each key byte: keys that differ only in the top
// bit of their bytes share one bucket there. Such a chain makes the table grow although the load is low.
TEST(CbMap, SmallTablesGrowWhenKeysDifferOnlyInHighBits)
{
    // Bit k of key i is the top bit of byte k.
    auto topBits = [](std::uint64_t i) { return (i & 1) << 7 | (i & 2) << 14 | (i & 4) << 21; };
    CMap64 map(16);
    for (std::uint64_t i = 0; i < 8; ++i)
        map.SetAt(topBits(i), i);
    EXPECT_GE(map.GetHashTableSize(), 256u);
    EXPECT_EQ(map.GetCount(), 8u);
    for (std::uint64_t i = 0; i < 8; ++i)
        EXPECT_EQ(*map.PLookup(topBits(i)), i);

    // Identical hashes cannot make a large table grow beyond what the count needs.
    CbMap<int, int, SCollidingTraits> colliding(256);
    for (int key = 0; key < 200; ++key)
        colliding[key] = key;
    EXPECT_EQ(colliding.GetHashTableSize(), 256u);
    EXPECT_EQ(colliding.GetLongestChain(), 200u);
    EXPECT_EQ(colliding[150], 150);
}

TEST(CbMap, InitHashTableRedistributes)
{
    CMap64 map;
    for (std::uint64_t key = 0; key < 100; ++key)
        map[key] = key * 2;
    map.InitHashTable(4096);
    EXPECT_EQ(map.GetHashTableSize(), 4096u);
    map.InitHashTable(100);
    EXPECT_EQ(map.GetHashTableSize(), 64u);
    for (std::uint64_t key = 0; key < 100; ++key)
        EXPECT_EQ(map[key], key * 2);
    map[100] = 200;
    EXPECT_EQ(map.GetHashTableSize(), 128u);
}

TEST(CbMap, RemovingTheFirstBucketsKeepsIterationComplete)
{
    CbMap<int, int> map(1024);
    for (int key = 0; key < 300; ++key)
        map[key] = key;
    std::vector<int> order;
    for (const auto& association : map)
        order.push_back(association.key);
    for (std::size_t i = 0; i < order.size(); ++i)
    {
        ASSERT_EQ(map.begin()->key, order[i]);
        map.RemoveKey(order[i]);
        int remaining = 0;
        for (auto it = map.begin(); it != map.end(); ++it)
            ++remaining;
        ASSERT_EQ(remaining, static_cast<int>(order.size() - i - 1));
    }
    EXPECT_EQ(map.begin(), map.end());
}

TEST(CbMap, KeysWithPaddingUseTheirOwnTraits)
{
    CbMap<SPaddedKey, int, SPaddedKeyTraits> map;
    SPaddedKey a, b;
    std::memset(&a, 0x11, sizeof a);
    std::memset(&b, 0x22, sizeof b);
    a.tag = b.tag = 'x';
    a.value = b.value = 3;
    map[a] = 1;
    EXPECT_TRUE(map.Contains(b));
    EXPECT_EQ(map.GetCount(), 1u);
}

TEST(CbMap, ValuesAreDestroyedExactlyOnce)
{
    {
        CbMap<int, CCounted> map;
        for (int key = 0; key < 500; ++key)
            map.TryEmplace(key, key);
        map.RemoveKey(3);
        CbMap<int, CCounted> copy(map);
        EXPECT_EQ(CCounted::s_alive, 998);
        copy = map;
        map.RemoveAll();
        EXPECT_EQ(CCounted::s_alive, 499);
    }
    EXPECT_EQ(CCounted::s_alive, 0);
}

TEST(CbMap, MoveOnlyValuesAndSwap)
{
    CbMap<std::string, std::unique_ptr<int>> a, b;
    a.TryEmplace("eins", std::make_unique<int>(1));
    b.TryEmplace("zwei", std::make_unique<int>(2));
    a.Swap(b);
    EXPECT_EQ(**a.PLookup("zwei"), 2);
    EXPECT_EQ(**b.PLookup("eins"), 1);
    CbMap<std::string, std::unique_ptr<int>> moved(std::move(a));
    EXPECT_TRUE(a.IsEmpty());
    EXPECT_FALSE(a.Contains("zwei"));
    EXPECT_EQ(**moved.PLookup("zwei"), 2);
}

TEST(CbMap, StringKeysHashEveryCharacter)
{
    EXPECT_NE(CbMapTypes::SKeyTraits<CString>::Hash(L"ab"), CbMapTypes::SKeyTraits<CString>::Hash(L"ba"));
    EXPECT_NE(CbMapTypes::SKeyTraits<CString>::Hash(L"\x10000"), CbMapTypes::SKeyTraits<CString>::Hash(L""));
    CbMap<CString, int> map;
    int count = 0;
    for (wchar_t a = L'a'; a <= L'z'; ++a)
        for (wchar_t b : {L'ä', L'ö', L'ü', L'x'})
            map[CString(a) + b] = count++;
    EXPECT_EQ(map.GetCount(), 104u);
    EXPECT_LE(map.GetLongestChain(), 4u);
    EXPECT_EQ(map[L"mü"], (L'm' - L'a') * 4 + 2);
}

TEST(CbMap, ConstIterationAndEraseAtTheEnd)
{
    CbMap<int, int> map;
    map[1] = 10;
    const CbMap<int, int>& constMap = map;
    CbMap<int, int>::ConstIterator it = map.begin();
    EXPECT_EQ(it, constMap.begin());
    EXPECT_EQ(it->value, 10);
    EXPECT_EQ(map.Erase(it), map.end());
    EXPECT_TRUE(map.IsEmpty());
    EXPECT_EQ(constMap.begin(), constMap.end());
}
