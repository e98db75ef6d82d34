// The dependency serializer: what a round trip keeps (keys, order, values, the sharing between
// objects in every arrangement of references), what it refuses to write, and that every kind of bad
// data is refused with the serializer left as it was.

#include "zqgenericfiletesting.h"

#include "basepool/cbexception.h"
#include "basepool/cbstreamreadbinary.h"
#include "basepool/cbstreamwritebinary.h"
#include "zqbase/zqdependencyserializer.h"

#include <gtest/gtest.h>

namespace
{
std::shared_ptr<ZqTestNode> node(std::int32_t value, std::vector<ZqObjectReference> links = {})
{
    auto result = std::make_shared<ZqTestNode>();
    result->value = value;
    result->links = std::move(links);
    return result;
}

std::shared_ptr<ZqTestBlob> blob(std::size_t size)
{
    auto result = std::make_shared<ZqTestBlob>();
    for (std::size_t i = 0; i < size; ++i)
        result->bytes.push_back(static_cast<unsigned char>(i * 7));
    return result;
}

// Expects bytes to be refused with a message containing expected, and the serializer to keep its
// single key "kept".
void expectRefused(const std::vector<unsigned char>& bytes, const std::string& expected)
{
    ZqDependencySerializer serializer;
    serializer.Add(L"kept", node(5));
    ZqExpectReadRefused(serializer, bytes, expected);
    ASSERT_EQ(serializer.GetCount(), 1u);
    EXPECT_EQ(serializer.Get<ZqTestNode>(L"kept")->value, 5);
}

// A serialized form with the two test kinds as kinds 0 (node, version 2) and 1 (blob).
ZqBytes withKinds(std::uint32_t nodeVersion = 2)
{
    ZqBytes bytes;
    bytes.u32(1).u32(2).text("ZqTestNodeKind").u32(nodeVersion).text("ZqTestBlobKind").u32(1);
    return bytes;
}
} // namespace

TEST(ZqDependencySerializerTest, RoundTripKeepsKeysInOrderValuesAndEmptyLinks)
{
    ZqDependencySerializer serializer;
    serializer.Add(L"zweiter", node(-2, {ZqObjectReference(), blob(3)}));
    serializer.Add(L"erster \u00e4", *node(1));
    serializer.Add(L"daten", blob(300));

    const ZqDependencySerializer read = readBack(written(serializer));
    ASSERT_EQ(read.GetCount(), 3u);
    EXPECT_EQ(read.GetKey(0), CString(L"zweiter"));
    EXPECT_EQ(read.GetKey(1), CString(L"erster \u00e4"));
    EXPECT_EQ(read.GetKey(2), CString(L"daten"));
    const auto second = read.Get<ZqTestNode>(L"zweiter");
    ASSERT_TRUE(second);
    EXPECT_EQ(second->value, -2);
    ASSERT_EQ(second->links.size(), 2u);
    EXPECT_FALSE(second->links[0]);
    EXPECT_EQ(second->links[1].As<ZqTestBlob>()->bytes, blob(3)->bytes);
    EXPECT_EQ(read.Get<ZqTestBlob>(L"daten")->bytes, blob(300)->bytes);
    EXPECT_FALSE(read.Get<ZqTestBlob>(L"zweiter"));
    EXPECT_FALSE(read.Get(L"fehlt"));
}

TEST(ZqDependencySerializerTest, AReferenceFindsItsKeyedTargetWhicheverWasAddedFirst)
{
    for (const bool targetFirst : {true, false})
    {
        SCOPED_TRACE(targetFirst ? "target first" : "referrer first");
        const auto target = blob(10000);
        ZqDependencySerializer serializer;
        if (targetFirst)
            serializer.Add(L"target", target);
        serializer.Add(L"referrer", node(1, {target}));
        if (!targetFirst)
            serializer.Add(L"target", target);

        const std::vector<unsigned char> bytes = written(serializer);
        EXPECT_LT(bytes.size(), 2 * target->bytes.size()) << "the target is written once";
        const ZqDependencySerializer read = readBack(bytes);
        const auto readTarget = read.Get<ZqTestBlob>(L"target");
        ASSERT_TRUE(readTarget);
        EXPECT_EQ(read.Get<ZqTestNode>(L"referrer")->links.at(0).As<ZqTestBlob>(), readTarget);
        EXPECT_EQ(readTarget->bytes, target->bytes);
    }
}

TEST(ZqDependencySerializerTest, SharedUnkeyedTargetComesBackOnceForAllReferrers)
{
    const auto target = blob(10000);
    ZqDependencySerializer serializer;
    serializer.Add(L"a", node(1, {target}));
    serializer.Add(L"b", node(2, {target, target}));
    serializer.Add(L"c", serializer.Get<ZqTestNode>(L"a"));

    const std::vector<unsigned char> bytes = written(serializer);
    EXPECT_LT(bytes.size(), 2 * target->bytes.size());
    const ZqDependencySerializer read = readBack(bytes);
    const auto a = read.Get<ZqTestNode>(L"a");
    const auto b = read.Get<ZqTestNode>(L"b");
    const auto shared = a->links.at(0).As<ZqTestBlob>();
    ASSERT_TRUE(shared);
    EXPECT_EQ(shared->bytes, target->bytes);
    EXPECT_EQ(b->links.at(0).As<ZqTestBlob>(), shared);
    EXPECT_EQ(b->links.at(1).As<ZqTestBlob>(), shared);
    EXPECT_EQ(read.Get<ZqTestNode>(L"c"), a) << "one object under two keys stays one object";
}

TEST(ZqDependencySerializerTest, AddRefusesTakenKeysEmptyObjectsAndClassesWithoutKind)
{
    ZqDependencySerializer serializer;
    serializer.Add(L"x", node(1));
    EXPECT_THROW(serializer.Add(L"x", node(2)), CbExceptionPreconditionViolation);
    EXPECT_THROW(serializer.Add(L"leer", std::shared_ptr<ZqTestNode>()), CbExceptionPreconditionViolation);
    EXPECT_THROW(serializer.Add(L"fremd", ZqTestUnregistered{}), CbExceptionPreconditionViolation);
    EXPECT_THROW(serializer.Add(CString(std::wstring(L"a\0b", 3)), node(3)),
                 CbExceptionPreconditionViolation);
    EXPECT_EQ(serializer.GetCount(), 1u);
    EXPECT_EQ(serializer.Get<ZqTestNode>(L"x")->value, 1);
}

TEST(ZqDependencySerializerTest, WriteRefusesCyclesForeignReferencesAndTooDeepNestingAndWritesNothing)
{
    auto first = node(1);
    auto second = node(2, {first});
    first->links.push_back(second);
    ZqDependencySerializer cyclic;
    cyclic.Add(L"zyklus", first);
    std::vector<unsigned char> bytes;
    CbStreamWriteBinary stream(bytes);
    EXPECT_THROW(cyclic.Write(stream), CbExceptionPreconditionViolation);
    first->links.clear(); // breaks the cycle so that the nodes are released

    ZqDependencySerializer foreign;
    foreign.Add(L"fremd", node(1, {std::make_shared<ZqTestUnregistered>()}));
    EXPECT_THROW(foreign.Write(stream), CbExceptionPreconditionViolation);
    EXPECT_TRUE(bytes.empty());

    // A chain of exactly kMaxDepth levels is written and read; one more level is refused.
    auto chain = node(0);
    for (std::uint32_t level = 1; level < ZqDependencySerializer::kMaxDepth; ++level)
        chain = node(static_cast<std::int32_t>(level), {chain});
    ZqDependencySerializer deepest;
    deepest.Add(L"kette", chain);
    EXPECT_EQ(readBack(written(deepest)).Get<ZqTestNode>(L"kette")->value,
              static_cast<std::int32_t>(ZqDependencySerializer::kMaxDepth - 1));
    ZqDependencySerializer tooDeep;
    tooDeep.Add(L"kette", node(-1, {chain}));
    EXPECT_THROW(tooDeep.Write(stream), CbExceptionPreconditionViolation);
    // The same depth reached through an object that was first met on a short path.
    ZqDependencySerializer sharedTooDeep;
    sharedTooDeep.Add(L"kurz", node(-2, {chain}));
    sharedTooDeep.Add(L"lang", node(-3, {node(-4, {chain})}));
    EXPECT_THROW(sharedTooDeep.Write(stream), CbExceptionPreconditionViolation);
    EXPECT_TRUE(bytes.empty());
}

TEST(ZqDependencySerializerTest, AKindFailingInTheMiddleLeavesTheBufferAsItWas)
{
    ZqDependencySerializer serializer;
    serializer.Add(L"gut", blob(100));
    serializer.Add(L"schlecht", node(ZqTestNode::kFailsToWrite));
    std::vector<unsigned char> buffer{1, 2, 3};
    EXPECT_THROW(serializer.Write(buffer), CbExceptionFile);
    EXPECT_EQ(buffer, (std::vector<unsigned char>{1, 2, 3}));
}

TEST(ZqDependencySerializerTest, ReadsRecordsOfAnOlderKindVersion)
{
    ZqBytes bytes = withKinds(1);
    bytes.u32(1).record(0, ZqBytes().u32(42)).u32(1).text("alt").u32(0);
    const ZqDependencySerializer read = readBack(bytes.data());
    EXPECT_EQ(read.Get<ZqTestNode>(L"alt")->value, 42);
}

TEST(ZqDependencySerializerTest, RefusesBadDataWithAMessageNamingTheProblem)
{
    const ZqBytes leaf = ZqBytes().u32(7).u32(0);
    const auto objects = [&](std::vector<ZqBytes> records)
    {
        ZqBytes bytes = withKinds();
        bytes.u32(static_cast<std::uint32_t>(records.size()));
        for (const ZqBytes& record : records)
            bytes.record(0, record);
        return bytes;
    };
    const auto linking = [](std::uint32_t target) { return ZqBytes().u32(1).u32(1).u32(target); };

    expectRefused(ZqBytes().u32(2).data(), "layout version 2");
    expectRefused(ZqBytes().u32(1).u32(1).text("ZqUnbekannt").u32(1).data(),
                  "unknown object type \"ZqUnbekannt\"");
    expectRefused(ZqBytes().u32(1).u32(1).text("ZqTestNotAKind").u32(1).data(), "unknown object type");
    expectRefused(withKinds(3).data(), "record version 3");
    expectRefused(ZqBytes().u32(1).u32(2).text("ZqTestBlobKind").u32(1).text("ZqTestBlobKind").u32(1).data(),
                  "listed twice");
    expectRefused(ZqBytes().u32(1).u32(1000).data(), "1000 object kinds cannot fit");
    expectRefused(withKinds().u32(0x10000000).data(), "268435456 objects cannot fit");
    expectRefused(withKinds().u32(1).record(2, leaf).u32(0).data(), "kind number 2 of 2");
    expectRefused(withKinds().u32(1).u32(0).u64(1u << 30).bytes(leaf.data()).data(),
                  "claims 1073741824 bytes");
    expectRefused(objects({linking(0)}).u32(0).data(), "refers to object 0, which is not written before it");
    expectRefused(objects({leaf, linking(5)}).u32(0).data(),
                  "refers to object 5, but the entry holds only 2");
    expectRefused(objects({ZqBytes().u32(1).u32(1000)}).u32(0).data(), "a count of 1000 elements");
    expectRefused(objects({ZqBytes(leaf).u32(99)}).u32(0).data(), "4 bytes of its record were not read");
    expectRefused(objects({leaf}).u32(1).text("weg").u32(1).data(), "key \"weg\" refers to object 1");
    expectRefused(objects({leaf}).u32(2).text("k").u32(0).text("k").u32(0).data(), "key \"k\" appears twice");
    expectRefused(objects({leaf}).u32(1).text(std::string("a\0b", 3)).u32(0).data(), "key is not UTF-8 text");
    expectRefused(objects({leaf}).u32(1).text("\xC0\xAF").u32(0).data(), "key is not UTF-8 text");

    std::vector<ZqBytes> chain{leaf};
    for (std::uint32_t level = 1; level <= ZqDependencySerializer::kMaxDepth; ++level)
        chain.push_back(linking(level - 1));
    expectRefused(objects(chain).u32(0).data(), "nested deeper than 1000 levels");
}

TEST(ZqDependencySerializerTest, EveryTruncationIsRefused)
{
    ZqDependencySerializer serializer;
    const auto shared = blob(5);
    serializer.Add(L"a", node(1, {shared, ZqObjectReference()}));
    serializer.Add(L"b", shared);
    const std::vector<unsigned char> bytes = written(serializer);
    for (std::size_t size = 0; size < bytes.size(); ++size)
    {
        SCOPED_TRACE(size);
        expectRefused(std::vector<unsigned char>(bytes.begin(), bytes.begin() + size), "");
    }
}
