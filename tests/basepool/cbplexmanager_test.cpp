// The plex manager: block sizes and growth, hand-out order, reuse of released nodes, splitting of
// blocks whose byte size does not fit SizeType, and its errors.

#include "basepool/cbmaptypes.h"
#include "basepool/cbnodelinked.h"
#include "basepool/cbplexmanager.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <set>
#include <string>
#include <vector>

namespace
{
struct SNode40
{
    char bytes[40];
};

// Node counts of the first blocks, seen from outside: nodes handed out until the block count rises.
template <class Manager> std::vector<unsigned int> firstBlockSizes(Manager& manager, int blocks)
{
    std::vector<unsigned int> sizes;
    unsigned int inBlock = 0;
    manager.AllocateNode();
    while (static_cast<int>(sizes.size()) < blocks)
    {
        ++inBlock;
        const auto count = manager.GetBlockCount();
        manager.AllocateNode();
        if (manager.GetBlockCount() != count)
        {
            sizes.push_back(inBlock);
            inBlock = 0;
        }
    }
    return sizes;
}
} // namespace

TEST(CbPlexManager, BlocksGrowByOnePointFiveTruncated)
{
    CbPlexManager<SNode40> manager(128);
    EXPECT_EQ(manager.GetNextBlockSize(), 128u);
    EXPECT_EQ(firstBlockSizes(manager, 5), (std::vector<unsigned int>{128, 192, 288, 432, 648}));

    // Truncation after every step: 10, 15, 22 (22.5), 33, 49 (49.5), 73 (73.5).
    CbPlexManager<SNode40> small(10);
    EXPECT_EQ(firstBlockSizes(small, 6), (std::vector<unsigned int>{10, 15, 22, 33, 49, 73}));
}

TEST(CbPlexManager, FixedBlockSizeReplacesGrowth)
{
    CbPlexManager<SNode40> manager(128);
    manager.SetFixedBlockSize(50);
    EXPECT_EQ(firstBlockSizes(manager, 4), (std::vector<unsigned int>{50, 50, 50, 50}));
    manager.SetFixedBlockSize(0);
    EXPECT_EQ(manager.GetNextBlockSize(), static_cast<unsigned int>(128 * 1.5 * 1.5 * 1.5 * 1.5 * 1.5));

    CbPlexManager<SNode40, 0, 7> fromTemplate(128);
    EXPECT_EQ(fromTemplate.GetFixedBlockSize(), 7u);
    EXPECT_EQ(firstBlockSizes(fromTemplate, 2), (std::vector<unsigned int>{7, 7}));
}

TEST(CbPlexManager, GrowthFactorIsAdjustable)
{
    CbPlexManager<SNode40> manager(100);
    manager.SetGrowthFactor(2.0f);
    EXPECT_EQ(firstBlockSizes(manager, 3), (std::vector<unsigned int>{100, 200, 400}));
    EXPECT_THROW(manager.SetGrowthFactor(0.5f), CbExceptionPreconditionViolation);
    EXPECT_THROW(manager.SetBlockSize(0), CbExceptionPreconditionViolation);
}

TEST(CbPlexManager, HandsOutANewBlockFromItsTopDownwards)
{
    CbPlexManager<SNode40> manager(4);
    std::vector<char*> nodes;
    for (int i = 0; i < 4; ++i)
        nodes.push_back(static_cast<char*>(manager.AllocateNode()));
    EXPECT_EQ(manager.GetBlockCount(), 1u);
    for (int i = 1; i < 4; ++i)
        EXPECT_EQ(nodes[i - 1] - nodes[i], static_cast<std::ptrdiff_t>(sizeof(SNode40)));
}

TEST(CbPlexManager, ReleasedNodesComeBackFirstAndLastInFirstOut)
{
    CbPlexManager<SNode40> manager(8);
    void* a = manager.AllocateNode();
    void* b = manager.AllocateNode();
    void* c = manager.AllocateNode();
    EXPECT_EQ(manager.CountAvailableNodes(), 5u);
    manager.ReleaseNode(a);
    manager.ReleaseNode(c);
    EXPECT_EQ(manager.CountAvailableNodes(), 7u);
    EXPECT_EQ(manager.AllocateNode(), c);
    EXPECT_EQ(manager.AllocateNode(), a);
    EXPECT_NE(manager.AllocateNode(), b);
    EXPECT_EQ(manager.GetBlockCount(), 1u);
}

TEST(CbPlexManager, ChurnNeedsNoNewBlocks)
{
    CbPlexManager<SNode40> manager(16);
    std::vector<void*> live;
    for (int i = 0; i < 16; ++i)
        live.push_back(manager.AllocateNode());
    for (int round = 0; round < 10000; ++round)
    {
        manager.ReleaseNode(live[round % 16]);
        live[round % 16] = manager.AllocateNode();
    }
    EXPECT_EQ(manager.GetBlockCount(), 1u);
    EXPECT_EQ(std::set<void*>(live.begin(), live.end()).size(), 16u);
}

TEST(CbPlexManager, ReleaseChainGivesBackLinkedNodesAtOnce)
{
    CbPlexManager<CbNodeLinked<int>> manager(10);
    std::vector<CbNodeLinked<int>*> nodes;
    for (int i = 0; i < 5; ++i)
        nodes.push_back(static_cast<CbNodeLinked<int>*>(manager.AllocateNode()));
    for (int i = 0; i + 1 < 5; ++i)
        nodes[i]->pNext = nodes[i + 1];
    manager.ReleaseChain(nodes.front(), nodes.back());
    EXPECT_EQ(manager.CountAvailableNodes(), 10u);
    for (int i = 0; i < 5; ++i)
        EXPECT_EQ(manager.AllocateNode(), nodes[i]);
}

TEST(CbPlexManager, FreeAllStartsOverWithTheFirstBlockSize)
{
    CbPlexManager<SNode40> manager(128);
    for (int i = 0; i < 1000; ++i)
        manager.AllocateNode();
    EXPECT_EQ(manager.GetBlockCount(), 4u);
    manager.FreeAll();
    EXPECT_FALSE(manager.HasBlocks());
    EXPECT_EQ(manager.GetBlockCount(), 0u);
    EXPECT_EQ(manager.CountAvailableNodes(), 0u);
    EXPECT_EQ(firstBlockSizes(manager, 2), (std::vector<unsigned int>{128, 192}));
}

TEST(CbPlexManager, MoveTakesTheBlocks)
{
    CbPlexManager<SNode40> source(4);
    void* node = source.AllocateNode();
    CbPlexManager<SNode40> target(std::move(source));
    EXPECT_FALSE(source.HasBlocks());
    EXPECT_EQ(target.CountAvailableNodes(), 3u);
    target.ReleaseNode(node);
    EXPECT_EQ(target.AllocateNode(), node);
}

TEST(CbPlexManager, NodesHonourTheRequestedAlignment)
{
    CbPlexManager<SNode40, 64> manager(10);
    for (int i = 0; i < 25; ++i)
        EXPECT_EQ(reinterpret_cast<std::uintptr_t>(manager.AllocateNode()) % 64, 0u);
    EXPECT_EQ((CbPlexManager<SNode40, 64>::kNodeSize), 64u);
}

// With a 16-bit size type a block holds at most (65535 - 8) / 40 = 1638 nodes of 40 bytes: a request
// of 4000 nodes becomes two full blocks and one of 724, handed out completely before a new block.
TEST(CbPlexManager, OversizedBlocksAreSplit)
{
    using CManager = CbPlexManager<SNode40, 0, 0, unsigned short>;
    EXPECT_EQ(CManager::kMaxNodesPerBlock, 1638);
    CManager manager(4000);
    std::set<void*> nodes;
    for (int i = 0; i < 4000; ++i)
        nodes.insert(manager.AllocateNode());
    EXPECT_EQ(nodes.size(), 4000u);
    EXPECT_EQ(manager.GetBlockCount(), 1u);
    EXPECT_EQ(manager.CountAvailableNodes(), 0u);
    manager.AllocateNode();
    EXPECT_EQ(manager.GetBlockCount(), 2u);

    // The 32-bit limit of the 40-byte map node: 107374182 nodes, 4294967288 bytes with the header.
    EXPECT_EQ((CbPlexManager<SNode40>::kMaxNodesPerBlock), 107374182u);
}

TEST(CbPlexManager, BlockSizeZeroNamesTheInstantiatedConstructor)
{
    using CAssociation = CbMapTypes::SAssociation<CString, std::uint64_t>;
    try
    {
        CbPlexManager<CAssociation> manager(0);
        FAIL() << "no exception";
    }
    catch (const CbExceptionContainer& e)
    {
        EXPECT_STREQ(
            e.GetFunction(),
            "CbPlexManager<struct CbMapTypes::SAssociation<class ATL::CStringT<wchar_t,class "
            "StrTraitMFC_DLL<wchar_t,class ATL::ChTraitsCRT<wchar_t> > >,unsigned __int64>,0,0,unsigned "
            "int>::CbPlexManager");
        EXPECT_EQ(std::string(e.GetFile()), "core/basepool/cbplexmanager.h");
    }
    EXPECT_EQ(CbTypeName<CbNodeLinked<int*>>::Get(), "struct CbNodeLinked<int *>");
}

#if !defined(__SANITIZE_ADDRESS__) // the sanitizer's allocator aborts on impossible sizes
TEST(CbPlexManager, FailedBlockLeavesTheManagerAsItWas)
{
    CbPlexManager<SNode40, 0, 0, std::uint64_t> manager(2);
    void* first = manager.AllocateNode();
    manager.AllocateNode();
    manager.ReleaseNode(first);
    manager.AllocateNode();
    manager.SetFixedBlockSize(std::uint64_t(1) << 60);
    EXPECT_THROW(manager.AllocateNode(), CbExceptionContainer);
    EXPECT_EQ(manager.GetBlockCount(), 1u);
    manager.SetFixedBlockSize(0);
    EXPECT_NO_THROW(manager.AllocateNode());
    EXPECT_EQ(manager.GetBlockCount(), 2u);
}
#endif

#if defined(__SANITIZE_ADDRESS__)
TEST(CbPlexManagerDeathTest, TouchingAReleasedOrUnusedNodeIsReported)
{
    CbPlexManager<SNode40> manager(4);
    auto* node = static_cast<SNode40*>(manager.AllocateNode());
    volatile char* bytes = node->bytes;
    bytes[8] = 1;
    manager.ReleaseNode(node);
    EXPECT_DEATH(bytes[8] = 2, "use-after-poison");
    EXPECT_DEATH(bytes[-40] = 2, "use-after-poison");
}
#endif
