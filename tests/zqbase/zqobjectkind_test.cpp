// Object kinds: lookup by name and by class, and the test kinds the serializer and container tests
// use (registered here, once for the whole test program).

#include "zqgenericfiletesting.h"

#include "basepool/cbexception.h"
#include "zqbase/zqobjectkind.h"

#include <gtest/gtest.h>

namespace
{
class ZqTestNodeKind final : public ZqObjectKindOf<ZqTestNode>
{
    CB_DECLARE_RTTI(ZqTestNodeKind)

public:
    std::uint32_t GetVersion() const override { return 2; }

protected:
    void getReferences(const ZqTestNode& node, std::vector<ZqObjectReference>& references) const override
    {
        references.insert(references.end(), node.links.begin(), node.links.end());
    }
    void write(const ZqTestNode& node, ZqObjectWriter& writer) const override
    {
        writer.GetStream() << node.value;
        if (node.value == ZqTestNode::kFailsToWrite)
            CB_THROW(CbExceptionFile, "ZqTestNodeKind::write", "disk full");
        writer.GetStream().WriteCount(static_cast<std::uint32_t>(node.links.size()));
        for (const ZqObjectReference& link : node.links)
            writer.WriteReference(link);
    }
    std::shared_ptr<ZqTestNode> read(ZqObjectReader& reader) const override
    {
        auto node = std::make_shared<ZqTestNode>();
        reader.GetStream() >> node->value;
        if (reader.GetVersion() >= 2)
        {
            node->links.resize(reader.ReadCount(4));
            for (ZqObjectReference& link : node->links)
                link = reader.ReadReference();
        }
        return node;
    }
};
CB_IMPLEMENT_RTTI(ZqTestNodeKind, ZqObjectKind::RTTI);

class ZqTestBlobKind final : public ZqObjectKindOf<ZqTestBlob>
{
    CB_DECLARE_RTTI(ZqTestBlobKind)

public:
    std::uint32_t GetVersion() const override { return 1; }

protected:
    void write(const ZqTestBlob& blob, ZqObjectWriter& writer) const override
    {
        writer.GetStream().WriteCount(static_cast<std::uint32_t>(blob.bytes.size()));
        writer.GetStream().Write(blob.bytes.data(), blob.bytes.size());
    }
    std::shared_ptr<ZqTestBlob> read(ZqObjectReader& reader) const override
    {
        auto blob = std::make_shared<ZqTestBlob>();
        blob->bytes.resize(reader.ReadCount(1));
        reader.GetStream().Read(blob->bytes.data(), blob->bytes.size());
        return blob;
    }
};
CB_IMPLEMENT_RTTI(ZqTestBlobKind, ZqObjectKind::RTTI);

// A registered class that is no kind; counts how often it is created.
class ZqTestNotAKind : public IObject
{
    CB_DECLARE_RTTI(ZqTestNotAKind)

public:
    ZqTestNotAKind() { ++s_created; }
    static inline int s_created = 0;
};
CB_IMPLEMENT_RTTI(ZqTestNotAKind);
} // namespace

TEST(ZqObjectKindTest, FindsKindsByNameAndCreatesNothingElse)
{
    const std::unique_ptr<ZqObjectKind> node = ZqObjectKind::Find(L"ZqTestNodeKind");
    ASSERT_TRUE(node);
    EXPECT_EQ(node->GetType(), typeid(ZqTestNode));
    EXPECT_FALSE(ZqObjectKind::Find(L"NoSuchKind"));
    // A file names the kind of its objects: another registered class must not even be constructed.
    EXPECT_FALSE(ZqObjectKind::Find(L"ZqTestNotAKind"));
    EXPECT_EQ(ZqTestNotAKind::s_created, 0);
}

TEST(ZqObjectKindTest, FindsKindsByTheClassTheReferenceWasMadeFrom)
{
    const ZqObjectReference blob(std::make_shared<ZqTestBlob>());
    EXPECT_STREQ(ZqObjectKind::Find(*blob.GetType())->GetRTTI().GetName(), L"ZqTestBlobKind");
    EXPECT_FALSE(blob.As<ZqTestNode>());
    EXPECT_FALSE(ZqObjectKind::Find(typeid(ZqTestUnregistered)));
}
