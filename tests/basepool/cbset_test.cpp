// The hashed set: algebraic identities of intersection, union, equality and subsets on random sets,
// the cases with empty sets, and equality across table sizes.

#include "basepool/cbset.h"

#include <gtest/gtest.h>

#include <random>
#include <string>

namespace
{
using CIntSet = CbSet<int>;

CIntSet randomSet(std::mt19937& generator, int size, int range)
{
    CIntSet set;
    for (int i = 0; i < size; ++i)
        set.Add(static_cast<int>(generator() % range));
    return set;
}
} // namespace

TEST(CbSet, AlgebraIdentitiesHold)
{
    std::mt19937 generator(17);
    for (int round = 0; round < 40; ++round)
    {
        const int range = 10 + round * 50;
        const CIntSet a = randomSet(generator, round * 20, range);
        const CIntSet b = randomSet(generator, round * 30, range);
        const CIntSet c = randomSet(generator, round * 10, range);

        EXPECT_EQ(a & b, b & a) << round;
        EXPECT_EQ(a | b, b | a) << round;
        EXPECT_EQ((a & b) & c, a & (b & c)) << round;
        EXPECT_EQ((a | b) | c, a | (b | c)) << round;
        EXPECT_EQ(a & (a | b), a) << round;
        EXPECT_EQ(a | (a & b), a) << round;
        EXPECT_EQ(a & (b | c), (a & b) | (a & c)) << round;
        EXPECT_EQ(a | (b & c), (a | b) & (a | c)) << round;
        EXPECT_EQ((a & b).GetCount() + (a | b).GetCount(), a.GetCount() + b.GetCount()) << round;
        EXPECT_TRUE((a & b).IsSubsetOf(a | b)) << round;
        EXPECT_EQ(a.IsSubsetOf(b), (a | b) == b) << round;
        EXPECT_EQ(a.IsSubsetOf(b), (a & b) == a) << round;
    }
}

TEST(CbSet, EmptySetIsNeutralAndAbsorbing)
{
    const CIntSet empty;
    const CIntSet a{1, 2, 3};
    EXPECT_EQ(a | empty, a);
    EXPECT_EQ(a & empty, empty);
    EXPECT_TRUE((a & empty).IsEmpty());
    EXPECT_TRUE(empty.IsSubsetOf(a));
    EXPECT_TRUE(empty.IsSubsetOf(empty));
    EXPECT_FALSE(a.IsSubsetOf(empty));
    EXPECT_TRUE(a.IsSupersetOf(empty));
    CIntSet b = a;
    b &= empty;
    EXPECT_TRUE(b.IsEmpty());
    b |= a;
    EXPECT_EQ(b, a);
}

TEST(CbSet, EqualityIgnoresTableSizeAndOrder)
{
    CIntSet small(2), large(4096);
    for (int i = 0; i < 100; ++i)
    {
        small.Add(i);
        large.Add(99 - i);
    }
    EXPECT_EQ(small, large);
    large.Remove(50);
    EXPECT_NE(small, large);
    large.Add(1000);
    EXPECT_NE(small, large);
    EXPECT_EQ(small.GetCount(), large.GetCount());
}

TEST(CbSet, InPlaceOperationsOnItselfChangeNothing)
{
    CbSet<std::string> words{"eins", "zwei", "drei"};
    words &= words;
    words |= words;
    EXPECT_EQ(words, (CbSet<std::string>{"drei", "zwei", "eins"}));
}

TEST(CbSet, EraseVisitsEveryRemainingKey)
{
    CIntSet set;
    for (int i = 0; i < 1000; ++i)
        set.Add(i);
    int visited = 0;
    for (auto it = set.begin(); it != set.end(); ++visited)
        it = (*it % 3 == 0) ? set.Erase(it) : std::next(it);
    EXPECT_EQ(visited, 1000);
    EXPECT_EQ(set.GetCount(), 666u);
    EXPECT_FALSE(set.Contains(999));
    EXPECT_TRUE(set.Contains(998));
}
