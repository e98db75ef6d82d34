// Test of the stable merge sort of linked lists: every short list over a small alphabet (stability),
// long random and patterned lists against std::stable_sort, and a timing against a bubble sort.

#include "basepool/cblist.h"
#include "basepool/cblistsort.h"
#include "zqbase/cbtimer.h"
#include "zqbase/zqbenchmark.h"
#include "zqbase/zqrandomseed.h"
#include "zqbase/zqunittest.h"

#include <algorithm>
#include <cstdint>
#include <iterator>
#include <random>
#include <vector>

namespace
{
// An element whose key alone decides the order; the index tells equal keys apart.
struct SItem
{
    int key;
    int index;
    bool operator==(const SItem& other) const = default;
};

bool byKey(const SItem& a, const SItem& b)
{
    return a.key < b.key;
}

// The list's elements, and its links checked both ways: forward and backward walks must agree.
bool walkBothWays(const CbList<SItem>& list, std::vector<SItem>& items)
{
    items.assign(list.begin(), list.end());
    std::vector<SItem> backward(list.rbegin(), list.rend());
    std::reverse(backward.begin(), backward.end());
    return items.size() == list.GetCount() && backward == items &&
           (list.IsEmpty() || (list.GetHeadNode()->pPrev == nullptr && list.GetTailNode()->pNext == nullptr));
}
} // namespace

class CbListSort_UnitTest : public ZqUnitTest
{
    CB_DECLARE_RTTI(CbListSort_UnitTest)
    ZQ_DECLARE_SUBTEST_TABLE(CbListSort_UnitTest)

private:
    EResult runShortLists();
    EResult runLongLists();
    EResult runTimingAgainstBubbleSort();
    bool checkSorted(CbList<SItem>& list, const wchar_t* what);
};

CB_IMPLEMENT_RTTI(CbListSort_UnitTest, ZqUnitTest::RTTI);

const ZqSubtestRowOf<CbListSort_UnitTest> CbListSort_UnitTest::s_subtests[] = {
    {"Sortieren von verketteten Listen (kurze Listen, Stabilität)", &CbListSort_UnitTest::runShortLists},
    {"Sortieren von verketteten Listen (lange Listen)", &CbListSort_UnitTest::runLongLists},
    {"Zeitmessung, Vergleich zu Bubble-Sort", &CbListSort_UnitTest::runTimingAgainstBubbleSort},
};

ZQ_IMPLEMENT_SUBTEST_TABLE(CbListSort_UnitTest)

// Sorts list by key and compares it with std::stable_sort of its elements; the nodes must be the
// same nodes as before, relinked.
bool CbListSort_UnitTest::checkSorted(CbList<SItem>& list, const wchar_t* what)
{
    std::vector<SItem> expected(list.begin(), list.end());
    std::stable_sort(expected.begin(), expected.end(), byKey);
    std::vector<const SItem*> nodesBefore;
    for (const SItem& item : list)
        nodesBefore.push_back(&item);

    CbListSort::Sort(list, byKey);

    std::vector<SItem> actual;
    if (!walkBothWays(list, actual))
    {
        WriteMessageFormat(eError, L"%s: Verkettung nach dem Sortieren defekt (%u Elemente)\n", what,
                           list.GetCount());
        return false;
    }
    if (actual != expected)
    {
        WriteMessageFormat(eError, L"%s: falsche oder instabile Reihenfolge (%u Elemente)\n", what,
                           list.GetCount());
        return false;
    }
    std::vector<const SItem*> nodesAfter;
    for (const SItem& item : list)
        nodesAfter.push_back(&item);
    std::sort(nodesBefore.begin(), nodesBefore.end());
    std::sort(nodesAfter.begin(), nodesAfter.end());
    if (nodesBefore != nodesAfter)
    {
        WriteMessageFormat(eError, L"%s: Elemente wurden kopiert statt umverkettet\n", what);
        return false;
    }
    return true;
}

ZqUnitTest::EResult CbListSort_UnitTest::runShortLists()
{
    // Every list of up to 8 elements with keys 0, 1, 2: all orders, runs of equal keys and ties.
    for (int length = 0; length <= 8; ++length)
    {
        int combinations = 1;
        for (int i = 0; i < length; ++i)
            combinations *= 3;
        for (int code = 0; code < combinations; ++code)
        {
            CbList<SItem> list;
            for (int i = 0, rest = code; i < length; ++i, rest /= 3)
                list.AddTail(SItem{rest % 3, i});
            if (!checkSorted(list, L"Kurze Liste"))
                return eFailed;
        }
    }
    return ePassed;
}

ZqUnitTest::EResult CbListSort_UnitTest::runLongLists()
{
    std::mt19937 generator(ZqRandomSeed::Start(*this));
    struct SPattern
    {
        const wchar_t* name;
        int (*key)(int i, int n, std::mt19937& generator);
    };
    static const SPattern patterns[] = {
        {L"Zufällig", [](int, int, std::mt19937& g) { return static_cast<int>(g() % 1000000); }},
        {L"Wenige Schlüssel", [](int, int, std::mt19937& g) { return static_cast<int>(g() % 7); }},
        {L"Aufsteigend", [](int i, int, std::mt19937&) { return i; }},
        {L"Absteigend", [](int i, int n, std::mt19937&) { return n - i; }},
        {L"Gleich", [](int, int, std::mt19937&) { return 42; }},
        {L"Sägezahn", [](int i, int, std::mt19937&) { return i % 100; }},
    };
    for (const SPattern& pattern : patterns)
        for (int length : {1023, 1025, 40000})
        {
            CbList<SItem> list;
            for (int i = 0; i < length; ++i)
                list.AddTail(SItem{pattern.key(i, length, generator), i});
            if (!checkSorted(list, pattern.name))
                return eFailed;
        }
    return ePassed;
}

ZqUnitTest::EResult CbListSort_UnitTest::runTimingAgainstBubbleSort()
{
    constexpr int kLength = 2000;
    std::mt19937 generator(ZqRandomSeed::Start(*this));
    CbList<int> merged;
    for (int i = 0; i < kLength; ++i)
        merged.AddTail(static_cast<int>(generator() % 10000));
    CbList<int> bubbled(merged);

    CbTimer timer;
    CbListSort::Sort(merged);
    const double mergeSeconds = timer.GetElapsedSeconds();

    // Bubble sort over the positions, swapping neighbouring elements: stable and O(n^2).
    timer.Reset();
    for (bool swapped = true; swapped;)
    {
        swapped = false;
        for (auto it = bubbled.begin(), next = std::next(it); next != bubbled.end(); it = next++)
            if (*next < *it)
            {
                std::swap(*it, *next);
                swapped = true;
            }
    }
    const double bubbleSeconds = timer.GetElapsedSeconds();

    if (!(merged == bubbled) || !CbListSort::IsSorted(merged))
    {
        WriteMessage(eError, L"CbListSort und Bubble-Sort liefern verschiedene Ergebnisse\n");
        return eFailed;
    }
    WriteMessageFormat(eInfo, L"%d Elemente: CbListSort %s, Bubble-Sort %s, Faktor %.0f\n", kLength,
                       ZqBenchmark::FormatTime(mergeSeconds).GetString(),
                       ZqBenchmark::FormatTime(bubbleSeconds).GetString(),
                       mergeSeconds > 0.0 ? bubbleSeconds / mergeSeconds : 0.0);
    return ePassed;
}
