// Heap blocks of the node containers and the type names of their exception texts.

#include "basepool/cbheapblock.h"
#include "basepool/cbmaptypes.h"
#include "basepool/cbnodelinked.h"
#include "basepool/cbtypename.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>

namespace
{
struct SLocal
{
};
enum class ELocal
{
};
} // namespace

TEST(CbHeapBlock, BlocksAreAlignedAsRequested)
{
    for (std::size_t alignment : {std::size_t(16), std::size_t(64), std::size_t(256)})
    {
        void* block = CbAllocateHeapBlock(1000, alignment);
        ASSERT_NE(block, nullptr);
        EXPECT_EQ(reinterpret_cast<std::uintptr_t>(block) % alignment, 0u) << alignment;
        CbFreeHeapBlock(block);
    }
    // Large blocks start on a huge-page boundary.
    void* large = CbAllocateHeapBlock(std::size_t(5) << 20, 16);
    ASSERT_NE(large, nullptr);
    EXPECT_EQ(reinterpret_cast<std::uintptr_t>(large) % (std::size_t(2) << 20), 0u);
    static_cast<char*>(large)[(std::size_t(5) << 20) - 1] = 1;
    CbFreeHeapBlock(large);
}

TEST(CbHeapBlock, ZeroedBlocksAreZeroAtEverySize)
{
    for (std::size_t bytes : {std::size_t(8), std::size_t(4096), std::size_t(9) << 20})
    {
        auto* block = static_cast<unsigned char*>(CbAllocateZeroedHeapBlock(bytes));
        ASSERT_NE(block, nullptr);
        EXPECT_TRUE(std::all_of(block, block + bytes, [](unsigned char b) { return b == 0; })) << bytes;
        CbFreeHeapBlock(block);
    }
    CbFreeHeapBlock(nullptr);
}

TEST(CbTypeName, SpellsArgumentsLikeTheExceptionTexts)
{
    EXPECT_EQ(CbTypeName<unsigned int>::Get(), "unsigned int");
    EXPECT_EQ(CbTypeName<std::uint64_t>::Get(), "unsigned __int64");
    EXPECT_EQ(CbTypeName<std::int64_t>::Get(), "__int64");
    EXPECT_EQ(CbTypeName<const double*>::Get(), "const double *");
    EXPECT_EQ(
        CbTypeName<CString>::Get(),
        "class ATL::CStringT<wchar_t,class StrTraitMFC_DLL<wchar_t,class ATL::ChTraitsCRT<wchar_t> > >");
    EXPECT_EQ((CbTypeName<CbMapTypes::SAssociation<int, CbNodeLinked<int>>>::Get()),
              "struct CbMapTypes::SAssociation<int,struct CbNodeLinked<int> >");
    EXPECT_EQ(CbTypeName<CbMapTypes::SEmpty>::Get(), "struct CbMapTypes::SEmpty");
    EXPECT_EQ(CbTypeName<SLocal>::Get(), "class (anonymous namespace)::SLocal");
    EXPECT_EQ(CbTypeName<ELocal>::Get(), "enum (anonymous namespace)::ELocal");
    EXPECT_EQ(CbTypeNameTemplate("X", "a", "b<c>"), "X<a,b<c> >");
}
