// Linked lists: link consistency at the ends, node policies and shared plex managers, move-only
// elements, and the errors of positions and empty lists.

#include "basepool/cblist.h"
#include "basepool/cblistsort.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <iterator>
#include <memory>
#include <numeric>
#include <string>
#include <vector>

namespace
{
using COptimized = CbListEx<int, CbListNodePolicyOptimized<int>>;

template <class List> std::vector<int> forward(const List& list)
{
    return std::vector<int>(list.begin(), list.end());
}

// Walks the links both ways and checks head, tail and count against each other.
template <class T>::testing::AssertionResult linksConsistent(const CbListBaseIntermediate<T>& list)
{
    unsigned int count = 0;
    const CbNodeLinked<T>* previous = nullptr;
    for (const CbNodeLinked<T>* node = list.GetHeadNode(); node; node = node->pNext, ++count)
    {
        if (node->pPrev != previous)
            return ::testing::AssertionFailure() << "backward link of element " << count;
        previous = node;
    }
    if (previous != list.GetTailNode() || count != list.GetCount())
        return ::testing::AssertionFailure() << "tail or count wrong";
    return ::testing::AssertionSuccess();
}
} // namespace

TEST(CbList, RemovingAtEitherEndKeepsTheLinks)
{
    CbList<int> list{1, 2, 3};
    list.RemoveAt(list.GetHeadPosition());
    EXPECT_TRUE(linksConsistent(list));
    list.RemoveAt(list.GetTailPosition());
    EXPECT_TRUE(linksConsistent(list));
    EXPECT_EQ(forward(list), std::vector<int>{2});
    list.RemoveAt(list.GetHeadPosition());
    EXPECT_TRUE(list.IsEmpty());
    EXPECT_EQ(list.GetHeadNode(), nullptr);
    EXPECT_EQ(list.GetTailNode(), nullptr);
    list.AddHead(7);
    EXPECT_EQ(list.GetHead(), 7);
    EXPECT_EQ(list.GetTail(), 7);
}

TEST(CbList, InsertingAtTheEndsUpdatesHeadAndTail)
{
    CbList<int> list{5};
    list.InsertBefore(list.GetHeadPosition(), 4);
    list.InsertAfter(list.GetTailPosition(), 6);
    EXPECT_EQ(list.GetHead(), 4);
    EXPECT_EQ(list.GetTail(), 6);
    EXPECT_TRUE(linksConsistent(list));
    list.MoveToHead(list.GetTailPosition());
    list.MoveToTail(list.FindIndex(1));
    EXPECT_EQ(forward(list), (std::vector<int>{6, 5, 4}));
    EXPECT_TRUE(linksConsistent(list));
}

TEST(CbList, DecrementingEndReachesTheTail)
{
    CbList<int> list{1, 2, 3};
    auto it = list.end();
    EXPECT_EQ(*--it, 3);
    EXPECT_EQ(*--it, 2);
    EXPECT_EQ(std::vector<int>(list.rbegin(), list.rend()), (std::vector<int>{3, 2, 1}));
    CbList<int> empty;
    EXPECT_EQ(empty.begin(), empty.end());
    EXPECT_EQ(empty.rbegin(), empty.rend());
}

TEST(CbList, PositionsSurviveOtherRemovals)
{
    CbList<std::string> list{"a", "b", "c", "d"};
    const CbListPosition c = list.Find("c");
    list.RemoveAt(list.Find("b"));
    list.RemoveHead();
    list.AddHead("z");
    EXPECT_EQ(list.GetAt(c), "c");
    CbListPosition pos = c;
    EXPECT_EQ(list.GetPrev(pos), "c");
    EXPECT_EQ(list.GetAt(pos), "z");
}

TEST(CbList, StandardListGivesItsBlocksBackWhenEmptied)
{
    CbList<int> list;
    for (int i = 0; i < 1000; ++i)
        list.AddTail(i);
    const auto& plex = list.GetPlexManager();
    EXPECT_TRUE(plex->HasBlocks());
    list.RemoveAll();
    EXPECT_FALSE(plex->HasBlocks());
}

TEST(CbList, OptimizedListKeepsItsBlocksForTheNextFill)
{
    COptimized list;
    for (int i = 0; i < 1000; ++i)
        list.AddTail(i);
    const auto plex = list.GetPlexManager();
    const unsigned int blocks = plex->GetBlockCount();
    list.RemoveAll();
    EXPECT_GE(plex->CountAvailableNodes(), 1000u);
    for (int i = 0; i < 1000; ++i)
        list.AddHead(i);
    EXPECT_EQ(plex->GetBlockCount(), blocks);
    EXPECT_EQ(list.GetHead(), 999);
    EXPECT_TRUE(linksConsistent(list));
}

TEST(CbList, StandardListsSharingAManagerReleaseNodeByNode)
{
    auto plex = CbMakeSharedPlexManager<CbNodeLinked<int>>(8u);
    CbList<int> a(plex), b(plex);
    for (int i = 0; i < 6; ++i)
    {
        a.AddTail(i);
        b.AddTail(10 + i);
    }
    a.RemoveAll();
    EXPECT_TRUE(plex->HasBlocks());
    EXPECT_EQ(forward(b), (std::vector<int>{10, 11, 12, 13, 14, 15}));
    a.AddTail(b);
    EXPECT_EQ(plex->GetBlockCount(), 2u);
}

TEST(CbList, MovingBetweenListsWithDifferentManagersMovesTheElements)
{
    CbList<std::unique_ptr<int>> source, target;
    source.EmplaceTail(std::make_unique<int>(1));
    source.EmplaceTail(std::make_unique<int>(2));
    target.EmplaceTail(std::make_unique<int>(0));
    target.AddTail(std::move(source));
    EXPECT_TRUE(source.IsEmpty());
    ASSERT_EQ(target.GetCount(), 3u);
    EXPECT_EQ(*target.GetTail(), 2);
    std::unique_ptr<int> head = target.RemoveHead();
    EXPECT_EQ(*head, 0);
    target.AddHead(std::move(target));
    EXPECT_EQ(target.GetCount(), 2u);
    EXPECT_TRUE(linksConsistent(target));
}

TEST(CbList, SplicingKeepsTheNodes)
{
    auto plex = CbMakeSharedPlexManager<CbNodeLinked<int>>(16u);
    COptimized a(plex), b(plex);
    a.AddTail(1);
    const CbListPosition two = b.AddTail(2);
    b.AddTail(3);
    a.AddHead(std::move(b));
    EXPECT_EQ(forward(a), (std::vector<int>{2, 3, 1}));
    EXPECT_EQ(a.GetHeadPosition(), two);
    EXPECT_TRUE(linksConsistent(a));
}

TEST(CbList, AssignmentToItselfKeepsTheElements)
{
    CbList<int> list{1, 2, 3};
    CbList<int>& alias = list;
    list = alias;
    EXPECT_EQ(forward(list), (std::vector<int>{1, 2, 3}));
    list = std::move(alias);
    EXPECT_EQ(forward(list), (std::vector<int>{1, 2, 3}));
}

TEST(CbList, MisuseThrows)
{
    CbList<int> list;
    EXPECT_THROW(list.GetHead(), CbExceptionContainer);
    EXPECT_THROW(list.GetTail(), CbExceptionContainer);
    EXPECT_THROW(list.RemoveHead(), CbExceptionContainer);
    EXPECT_THROW(list.RemoveTail(), CbExceptionContainer);
    CbListPosition none;
    EXPECT_THROW(list.GetNext(none), CbExceptionPreconditionViolation);
    EXPECT_THROW(list.RemoveAt(none), CbExceptionPreconditionViolation);
    EXPECT_THROW(CbList<int>(0u), CbExceptionPreconditionViolation);
    EXPECT_THROW(CbList<int>(std::shared_ptr<CbList<int>::PlexManager>()), CbExceptionPreconditionViolation);
}

TEST(CbListSort, IterationAfterSortFollowsTheNewOrderBothWays)
{
    CbList<int> list{5, 3, 9, 1, 7, 3};
    const CbListPosition nine = list.Find(9);
    CbListSort::Sort(list);
    EXPECT_EQ(forward(list), (std::vector<int>{1, 3, 3, 5, 7, 9}));
    EXPECT_EQ(std::vector<int>(list.rbegin(), list.rend()), (std::vector<int>{9, 7, 5, 3, 3, 1}));
    EXPECT_EQ(list.GetTailPosition(), nine);
    EXPECT_TRUE(linksConsistent(list));
    list.AddTail(0);
    list.InsertBefore(nine, 8);
    EXPECT_EQ(forward(list), (std::vector<int>{1, 3, 3, 5, 7, 8, 9, 0}));
}

TEST(CbListSort, DescendingComparatorKeepsEqualElementsInOrder)
{
    struct SItem
    {
        int key;
        char tag;
    };
    CbList<SItem> list{{1, 'a'}, {2, 'b'}, {1, 'c'}, {2, 'd'}, {0, 'e'}};
    CbListSort::Sort(list, [](const SItem& a, const SItem& b) { return a.key > b.key; });
    std::string tags;
    for (const SItem& item : list)
        tags += item.tag;
    EXPECT_EQ(tags, "bdace");
}

TEST(CbListSort, ComparisonsGrowAsNLogN)
{
    for (int n : {1000, 1 << 16})
    {
        CbList<int> list;
        for (int i = 0; i < n; ++i)
            list.AddTail((i * 7919) % n);
        long comparisons = 0;
        CbListSort::Sort(list,
                         [&](int a, int b)
                         {
                             ++comparisons;
                             return a < b;
                         });
        int log2 = 0;
        while ((1 << log2) < n)
            ++log2;
        EXPECT_LE(comparisons, static_cast<long>(n) * log2) << n;
        EXPECT_TRUE(CbListSort::IsSorted(list));
    }
}

TEST(CbList, OverAlignedElementsGetAlignedNodes)
{
    struct alignas(64) SWide
    {
        float values[4];
    };
    CbList<SWide> list;
    for (int i = 0; i < 100; ++i)
        list.AddTail(SWide{{float(i), 0, 0, 0}});
    for (const SWide& wide : list)
        EXPECT_EQ(reinterpret_cast<std::uintptr_t>(&wide) % 64, 0u);
    EXPECT_EQ(list.GetTail().values[0], 99.0f);
}

TEST(CbList, WorksWithStandardAlgorithms)
{
    CbList<int> list{4, 8, 15, 16, 23, 42};
    EXPECT_EQ(std::distance(list.begin(), list.end()), 6);
    EXPECT_EQ(*std::find_if(list.begin(), list.end(), [](int v) { return v > 10; }), 15);
    EXPECT_EQ(std::count_if(list.cbegin(), list.cend(), [](int v) { return v % 2 == 0; }), 4);
    std::vector<int> reversed;
    std::reverse_copy(list.begin(), list.end(), std::back_inserter(reversed));
    EXPECT_EQ(reversed, (std::vector<int>{42, 23, 16, 15, 8, 4}));
    CbList<int>::ConstIterator constIt = list.begin();
    EXPECT_EQ(constIt, list.cbegin());
    std::fill(list.begin(), list.end(), 1);
    EXPECT_EQ(std::accumulate(list.begin(), list.end(), 0), 6);
}
