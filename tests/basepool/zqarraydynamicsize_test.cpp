// ZqArrayDynamicSize: elements of run-time size with an odd stride, insertion and removal,
// the memory count with and without keeping elements, copies and a size overflow.

#include "basepool/cbexception.h"
#include "basepool/zqarraydynamicsize.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <cstring>

namespace
{
// Elements of 6 bytes: a 16-bit tag and a 32-bit value, unaligned for every element but the first.
constexpr std::size_t kElementSize = 6;

void addElement(ZqArrayDynamicSize& array, std::uint16_t tag, std::uint32_t value)
{
    unsigned char element[kElementSize];
    std::memcpy(element, &tag, 2);
    std::memcpy(element + 2, &value, 4);
    array.Add(element);
}

std::uint16_t tagOf(const ZqArrayDynamicSize& array, unsigned int index)
{
    return array.Get<std::uint16_t>(index, 0);
}
} // namespace

TEST(ZqArrayDynamicSize, ElementsLieAtTheStrideOfTheirSize)
{
    ZqArrayDynamicSize array(kElementSize);
    for (std::uint16_t i = 0; i < 100; ++i)
        addElement(array, i, 1000u * i);
    ASSERT_EQ(array.GetCount(), 100u);
    for (unsigned int i = 0; i < 100; ++i)
    {
        EXPECT_EQ(array.GetAt(i), array.GetData() + i * kElementSize);
        EXPECT_EQ(tagOf(array, i), i);
        EXPECT_EQ(array.Get<std::uint32_t>(i, 2), 1000u * i);
    }
    array.Set<std::uint32_t>(7, 2, 42);
    EXPECT_EQ(array.Get<std::uint32_t>(7, 2), 42u);
    EXPECT_EQ(tagOf(array, 7), 7u);
    EXPECT_THROW(array.Get<std::uint32_t>(0, 3), CbExceptionContainer);
    EXPECT_THROW(array.GetAt(100), CbExceptionContainer);
}

TEST(ZqArrayDynamicSize, GrowsLikeCbArrayAndReportsReallocation)
{
    ZqArrayDynamicSize array(kElementSize);
    unsigned char element[kElementSize] = {};
    std::vector<unsigned int> capacities;
    for (int i = 0; i < 20; ++i)
        if (array.Add(element))
            capacities.push_back(array.GetMemoryElementCount());
    EXPECT_EQ(capacities, (std::vector<unsigned int>{1, 2, 4, 8, 16, 32}));
    array.SetCount(0, 3);
    array.SetMemoryElementCount(0, false);
    for (int i = 0; i < 7; ++i)
        array.Add(element);
    EXPECT_EQ(array.GetMemoryElementCount(), 9u);
}

TEST(ZqArrayDynamicSize, InsertRemoveAndAliasing)
{
    ZqArrayDynamicSize array(kElementSize);
    for (std::uint16_t i = 0; i < 4; ++i)
        addElement(array, i, i);
    ASSERT_EQ(array.GetCount(), array.GetMemoryElementCount());
    // The element to add lies in the block that the growth replaces.
    array.Add(array.GetAt(1));
    array.InsertAt(0, array.GetAt(3), 2);
    array.RemoveAt(3, 2);
    const std::uint16_t expected[] = {3, 3, 0, 3, 1};
    ASSERT_EQ(array.GetCount(), 5u);
    for (unsigned int i = 0; i < 5; ++i)
        EXPECT_EQ(tagOf(array, i), expected[i]) << i;
    EXPECT_THROW(array.InsertAt(6, array.GetAt(0)), CbExceptionContainer);
    EXPECT_THROW(array.RemoveAt(4, 2), CbExceptionContainer);
    EXPECT_EQ(array.GetCount(), 5u);
}

TEST(ZqArrayDynamicSize, CountsAndMemory)
{
    ZqArrayDynamicSize array(kElementSize);
    addElement(array, 0xFFFF, 0xFFFFFFFF);
    array.SetCount(0);
    array.SetCount(3);
    // New elements are zero-filled, even where the block held old bytes.
    EXPECT_EQ(tagOf(array, 0), 0u);
    EXPECT_EQ(array.Get<std::uint32_t>(2, 2), 0u);
    array.SetMemoryElementCount(2, true);
    EXPECT_EQ(array.GetCount(), 3u);
    EXPECT_EQ(array.GetMemoryElementCount(), 3u);
    array.SetMemoryElementCount(10, true);
    EXPECT_EQ(array.GetMemoryElementCount(), 10u);
    array.SetMemoryElementCount(2, false);
    EXPECT_EQ(array.GetCount(), 2u);
    EXPECT_EQ(array.GetMemoryElementCount(), 2u);
    array.SetElementSize(8);
    EXPECT_EQ(array.GetCount(), 0u);
    EXPECT_EQ(array.GetMemoryElementCount(), 0u);
    EXPECT_EQ(array.GetData(), nullptr);

    // Elements of size 0 are counted but take no memory.
    ZqArrayDynamicSize empty;
    empty.SetCount(5);
    empty.Add(nullptr);
    EXPECT_EQ(empty.GetCount(), 6u);
    EXPECT_EQ(empty.GetData(), nullptr);
}

TEST(ZqArrayDynamicSize, CopiesAreDeepAndMovesTakeTheBlock)
{
    ZqArrayDynamicSize array(kElementSize);
    for (std::uint16_t i = 0; i < 10; ++i)
        addElement(array, i, i);
    ZqArrayDynamicSize copy(array);
    copy.Set<std::uint16_t>(0, 0, 77);
    EXPECT_EQ(tagOf(array, 0), 0u);
    EXPECT_EQ(copy.GetCount(), 10u);
    const unsigned char* block = copy.GetData();
    ZqArrayDynamicSize moved(std::move(copy));
    EXPECT_EQ(moved.GetData(), block);
    EXPECT_EQ(copy.GetCount(), 0u);
    array = moved;
    EXPECT_EQ(tagOf(array, 0), 77u);
    EXPECT_NE(array.GetData(), moved.GetData());
}

TEST(ZqArrayDynamicSize, SizeOverflowThrowsMemoryException)
{
    ZqArrayDynamicSize array(std::size_t(1) << 40);
    EXPECT_THROW(array.SetMemoryElementCount(1u << 25, false), CbExceptionMemory);
    EXPECT_EQ(array.GetMemoryElementCount(), 0u);
    EXPECT_EQ(array.GetData(), nullptr);
}
