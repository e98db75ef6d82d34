// CbArray: its field layout, the growth rule and Add's report of it, element aliasing in Add and
// InsertAt, the limits of the 32-bit count, exception safety and the element policies.

#include "basepool/cbarray.h"
#include "basepool/cbarraypolicyconstructuninitialized.h"
#include "basepool/cstring.h"

#include <gtest/gtest.h>

#include <climits>
#include <cstdint>
#include <cstring>
#include <ranges>
#include <stdexcept>

static_assert(std::ranges::contiguous_range<CbArray<int>>);
static_assert(std::ranges::contiguous_range<const CbArray<CString>>);
static_assert(std::is_nothrow_move_constructible_v<CbArray<CString>>);

namespace
{
// The fields of CbArray in their order.
struct SLayout
{
    const int* data;
    const int* end;
    std::uint32_t reserved;
    unsigned int count;
    unsigned int capacity;
    unsigned int growBy;
};

SLayout layoutOf(const CbArray<int>& array)
{
    static_assert(sizeof(CbArray<int>) == sizeof(SLayout));
    SLayout layout;
    std::memcpy(&layout, static_cast<const void*>(&array), sizeof(layout));
    return layout;
}

// Counts live instances; copies throw while s_failCopies is set.
struct SFragile
{
    static inline int s_live = 0;
    static inline bool s_failCopies = false;
    int value;
    SFragile(int v) : value(v) { ++s_live; }
    SFragile(const SFragile& other) : value(other.value)
    {
        if (s_failCopies)
            throw std::runtime_error("copy");
        ++s_live;
    }
    SFragile& operator=(const SFragile&) = default;
    ~SFragile() { --s_live; }
};
} // namespace

TEST(CbArray, FieldsLieInTheirOrder)
{
    CbArray<int> array(7);
    SLayout layout = layoutOf(array);
    EXPECT_EQ(layout.data, nullptr);
    EXPECT_EQ(layout.end, nullptr);
    EXPECT_EQ(layout.count, 0u);
    EXPECT_EQ(layout.capacity, 0u);
    EXPECT_EQ(layout.growBy, 7u);
    array = {4, 5, 6};
    array.SetCapacity(9);
    layout = layoutOf(array);
    EXPECT_EQ(layout.data, array.GetData());
    EXPECT_EQ(layout.end, array.GetData() + 3);
    EXPECT_EQ(layout.reserved, 0u);
    EXPECT_EQ(layout.count, 3u);
    EXPECT_EQ(layout.capacity, 9u);
    array.SetCount(0);
    EXPECT_EQ(layoutOf(array).end, nullptr);
    EXPECT_EQ(layoutOf(array).data, array.GetData());
}

TEST(CbArray, GrowthDoublesFromOneAndAddReportsEachReallocation)
{
    CbArray<int> array;
    std::vector<unsigned int> capacities;
    for (int i = 0; i < 70; ++i)
    {
        const unsigned int before = array.GetCapacity();
        const int* block = array.GetData();
        const bool reallocated = array.Add(i);
        EXPECT_EQ(reallocated, array.GetCapacity() != before) << i;
        EXPECT_EQ(reallocated, array.GetData() != block) << i;
        if (reallocated)
            capacities.push_back(array.GetCapacity());
    }
    EXPECT_EQ(capacities, (std::vector<unsigned int>{1, 2, 4, 8, 16, 32, 64, 128}));
    for (int i = 0; i < 70; ++i)
        EXPECT_EQ(array[i], i);
}

TEST(CbArray, GrowByAddsFixedSteps)
{
    CbArray<int> array(5);
    std::vector<unsigned int> capacities;
    for (int i = 0; i < 16; ++i)
        if (array.Add(i))
            capacities.push_back(array.GetCapacity());
    EXPECT_EQ(capacities, (std::vector<unsigned int>{5, 10, 15, 20}));
    // Construction takes the grow-by over, assignment and Swap keep the target's own.
    CbArray<int> copy(array);
    CbArray<int> assigned(3);
    assigned = array;
    CbArray<int> swapped(2);
    swapped.Swap(copy);
    EXPECT_EQ(assigned.GetGrowBy(), 3u);
    EXPECT_EQ(swapped.GetGrowBy(), 2u);
    EXPECT_EQ(copy.GetGrowBy(), 5u);
    EXPECT_EQ(swapped.GetCount(), 16u);
    EXPECT_TRUE(copy.IsEmpty());
}

TEST(CbArray, ElementsOfTheArrayItselfCanBeAddedAndInserted)
{
    // The argument lies in the block that a reallocation frees; the sanitizer build sees any read
    // after the free.
    CbArray<CString> texts = {L"null", L"eins"};
    ASSERT_EQ(texts.GetCount(), texts.GetCapacity());
    EXPECT_TRUE(texts.Add(texts[0]));
    EXPECT_EQ(texts[2], CString(L"null"));
    texts.FreeExtra();
    texts.InsertAt(1, texts[2], 3);
    texts.InsertAt(0, texts.GetLast());
    texts.Append(texts.GetData(), 2);
    const CbArray<CString> expected = {L"null", L"null", L"null", L"null", L"null",
                                       L"eins", L"null", L"null", L"null"};
    EXPECT_TRUE(texts == expected);
    texts.SetCapacity(50);
    texts.InsertAt(4, texts[5], 2);
    EXPECT_EQ(texts[4], CString(L"eins"));
    EXPECT_EQ(texts[5], CString(L"eins"));
    EXPECT_EQ(texts[6], CString(L"null"));
}

TEST(CbArray, BadPositionsAndCountsAreRejectedWithoutChange)
{
    CbArray<int> array = {1, 2, 3};
    EXPECT_THROW(array.InsertAt(4, 0), CbExceptionContainer);
    EXPECT_THROW(array.RemoveAt(2, 2), CbExceptionContainer);
    EXPECT_THROW(array.RemoveAt(4, 0), CbExceptionContainer);
    EXPECT_THROW(array.GetRange(1, 3), CbExceptionContainer);
    // A 32-bit count cannot grow past 2^32 - 1: refused before anything is allocated.
    EXPECT_THROW(array.InsertAt(1, 9, UINT_MAX - 2), CbExceptionMemory);
    EXPECT_THROW(array.Append(array.GetData(), UINT_MAX), CbExceptionMemory);
    EXPECT_TRUE(array == CbArray<int>({1, 2, 3}));
    try
    {
        array.GetAt(3);
        FAIL();
    }
    catch (const CbExceptionContainer& e)
    {
        EXPECT_STREQ(e.GetFile(), "core/basepool/cbarrayex.h");
        EXPECT_STREQ(e.GetFunction(), "CbArray::GetAt");
    }
    const CbArray<int> empty;
    EXPECT_THROW(empty.GetFirst(), CbExceptionContainer);
    EXPECT_THROW(empty.GetLast(), CbExceptionContainer);
}

TEST(CbArray, FailingElementCopiesLeaveTheArrayIntact)
{
    {
        CbArray<SFragile> array;
        for (int i = 0; i < 4; ++i)
            array.Emplace(i);
        const SFragile* block = array.GetData();
        const SFragile extra(99);
        SFragile::s_failCopies = true;
        // Full: the copy for Add would go into a new block; in place: into a free slot.
        EXPECT_THROW(array.Add(extra), std::runtime_error);
        EXPECT_THROW(array.InsertAt(0, extra, 3), std::runtime_error);
        SFragile::s_failCopies = false;
        array.Reserve(10);
        block = array.GetData();
        SFragile::s_failCopies = true;
        EXPECT_THROW(array.Add(extra), std::runtime_error);
        EXPECT_THROW(CbArray<SFragile>{array}, std::runtime_error);
        SFragile::s_failCopies = false;
        EXPECT_EQ(array.GetData(), block);
        ASSERT_EQ(array.GetCount(), 4u);
        for (int i = 0; i < 4; ++i)
            EXPECT_EQ(array[i].value, i);
        EXPECT_EQ(SFragile::s_live, 5);
    }
    EXPECT_EQ(SFragile::s_live, 0);
}

TEST(CbArray, SetCountAndCapacity)
{
    CbArray<int> array = {7, 7, 7, 7};
    array.SetCount(1);
    array.SetCount(4);
    // New elements are value-initialised even where the block held old values.
    EXPECT_TRUE(array == CbArray<int>({7, 0, 0, 0}));
    array.SetCapacity(2);
    EXPECT_TRUE(array == CbArray<int>({7, 0}));
    EXPECT_EQ(array.GetCapacity(), 2u);
    array.SetCapacity(0);
    EXPECT_EQ(array.GetData(), nullptr);
    EXPECT_EQ(array.GetDataEnd(), nullptr);

    // The policy that skips the clearing still constructs class elements.
    CbArrayEx<CString, CbArrayPolicyConstructUninitialized> texts;
    texts.SetCount(3);
    EXPECT_TRUE(texts[2].IsEmpty());
    CbArrayEx<int, CbArrayPolicyConstructUninitialized> numbers;
    numbers.SetCount(1000);
    EXPECT_EQ(numbers.GetCount(), 1000u);
}

TEST(CbArray, ReverseIterationAndRanges)
{
    const CbArray<int> array = {1, 2, 3, 4};
    std::vector<int> backwards;
    for (int value : array.Reversed())
        backwards.push_back(value);
    EXPECT_EQ(backwards, (std::vector<int>{4, 3, 2, 1}));
    EXPECT_EQ(std::vector<int>(array.crbegin(), array.crend()), backwards);
    auto evens = array | std::views::filter([](int v) { return v % 2 == 0; });
    EXPECT_EQ(std::vector<int>(evens.begin(), evens.end()), (std::vector<int>{2, 4}));
    EXPECT_EQ(array.GetRange(1, 2).front(), 2);
}
