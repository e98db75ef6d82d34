// The container file: round trips through real files, atomic writes, entries of unknown kinds kept
// and written back, and refusal of damaged and hostile files, after which the container still holds
// what it held before.

#include "zqgenericfiletesting.h"

#include "basepool/cbexception.h"
#include "basepool/cbstreamreadbinary.h"
#include "basepool/cbstreamwritebinary.h"
#include "zqbase/zqdependencyserializer.h"
#include "zqbase/zqfileformatgeneric.h"

#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <iterator>

namespace
{
namespace fs = std::filesystem;

class ZqFileFormatGenericTest : public ::testing::Test
{
protected:
    void SetUp() override
    {
        m_directory = fs::temp_directory_path() /
                      ("zqgen-" + std::to_string(::testing::UnitTest::GetInstance()->random_seed()) + "-" +
                       ::testing::UnitTest::GetInstance()->current_test_info()->name());
        fs::remove_all(m_directory);
        fs::create_directories(m_directory);
    }
    void TearDown() override { fs::remove_all(m_directory); }

    CString path(const char* name) const { return CString(CStringA((m_directory / name).string().c_str())); }

    static std::vector<unsigned char> load(const CString& file)
    {
        std::ifstream in(CbWideToUtf8(file.Std()), std::ios::binary);
        return {std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>()};
    }

    fs::path m_directory;
};

ZqDependencySerializer serializerOf(std::int32_t value)
{
    auto node = std::make_shared<ZqTestNode>();
    node->value = value;
    auto blob = std::make_shared<ZqTestBlob>();
    blob->bytes = {1, 2, 3};
    node->links.push_back(blob);
    ZqDependencySerializer serializer;
    serializer.Add(L"knoten", node);
    return serializer;
}

std::int32_t valueOf(const ZqFileFormatGeneric& file, const wchar_t* entry)
{
    const ZqDependencySerializer* serializer = file.Get(entry);
    return serializer ? serializer->Get<ZqTestNode>(L"knoten")->value : -1;
}

// Reads bytes into a container holding the entry "alt"; expects a refusal whose message contains
// expected and the container unchanged.
void expectRefused(const std::vector<unsigned char>& bytes, const std::string& expected)
{
    ZqFileFormatGeneric file;
    file.Add(L"alt", serializerOf(11));
    ZqExpectReadRefused(file, bytes, expected);
    ASSERT_EQ(file.GetNames().size(), 1u);
    EXPECT_EQ(valueOf(file, L"alt"), 11);
}

std::vector<unsigned char> serializerBytes(std::int32_t value)
{
    return written(serializerOf(value));
}
} // namespace

TEST_F(ZqFileFormatGenericTest, RoundTripThroughAFileLeavesNoTemporaryFile)
{
    ZqFileFormatGeneric file;
    file.Add(L"eins", serializerOf(1));
    file.Add(L"zwei \u00fc", serializerOf(2));
    file.Write(path("a.gen"));
    EXPECT_EQ(std::distance(fs::directory_iterator(m_directory), fs::directory_iterator()), 1);

    ZqFileFormatGeneric read;
    read.Add(L"vorher", serializerOf(0));
    read.Read(path("a.gen"));
    ASSERT_EQ(read.GetNames(), (std::vector<CString>{L"eins", L"zwei \u00fc"}));
    std::unique_ptr<ZqDependencySerializer> second = read.Release(L"zwei \u00fc");
    ASSERT_TRUE(second);
    const auto node = second->Get<ZqTestNode>(L"knoten");
    EXPECT_EQ(node->value, 2);
    EXPECT_EQ(node->links.at(0).As<ZqTestBlob>()->bytes, (std::vector<unsigned char>{1, 2, 3}));
    EXPECT_FALSE(read.Release(L"zwei \u00fc"));
    EXPECT_EQ(read.GetNames(), (std::vector<CString>{L"eins"}));
}

TEST_F(ZqFileFormatGenericTest, AFailedWriteLeavesTheOldFile)
{
    ZqFileFormatGeneric file;
    file.Add(L"eins", serializerOf(1));
    file.Write(path("a.gen"));
    const std::vector<unsigned char> before = load(path("a.gen"));

    auto cyclic = std::make_shared<ZqTestNode>();
    cyclic->links.push_back(cyclic);
    ZqDependencySerializer bad;
    bad.Add(L"zyklus", cyclic);
    file.Add(L"schlecht", bad);
    EXPECT_THROW(file.Write(path("a.gen")), CbExceptionPreconditionViolation);
    cyclic->links.clear();
    EXPECT_EQ(load(path("a.gen")), before);
    EXPECT_EQ(std::distance(fs::directory_iterator(m_directory), fs::directory_iterator()), 1);
    EXPECT_THROW(file.Write(path("fehlt/a.gen")), CbExceptionFile);
}

TEST_F(ZqFileFormatGenericTest, ReadErrorsNameTheFile)
{
    ZqFileFormatGeneric file;
    EXPECT_THROW(file.Read(path("fehlt.gen")), CbExceptionFile);
    std::ofstream(CbWideToUtf8(path("text.gen").Std())) << "kein Container";
    try
    {
        file.Read(path("text.gen"));
        ADD_FAILURE();
    }
    catch (const CbExceptionWrongFileVersion& exception)
    {
        EXPECT_NE(std::string(exception.GetDetail()).find("text.gen: not a generic container file"),
                  std::string::npos)
            << exception.what();
    }
}

TEST_F(ZqFileFormatGenericTest, EntryOfUnknownKindIsSkippedKeptAndWrittenBackUnchanged)
{
    const std::vector<unsigned char> original = containerBytes(
        {{"vorschau", "ZqThumbnail", {9, 8, 7, 6}}, {"daten", "ZqDependencySerializer", serializerBytes(4)}});
    ZqFileFormatGeneric file;
    CbStreamReadBinary stream(original);
    file.Read(stream);
    EXPECT_EQ(file.GetNames(), (std::vector<CString>{L"vorschau", L"daten"}));
    EXPECT_FALSE(file.Get(L"vorschau"));
    EXPECT_FALSE(file.Release(L"vorschau"));
    EXPECT_EQ(valueOf(file, L"daten"), 4);
    EXPECT_EQ(written(file), original);
    EXPECT_THROW(file.Add(L"vorschau", serializerOf(1)), CbExceptionPreconditionViolation);
}

TEST_F(ZqFileFormatGenericTest, EveryDamagedByteAndEveryTruncationIsRefused)
{
    ZqFileFormatGeneric file;
    file.Add(L"eins", serializerOf(1));
    file.Add(L"zwei", serializerOf(2));
    const std::vector<unsigned char> bytes = written(file);
    for (std::size_t i = 0; i < bytes.size(); ++i)
    {
        SCOPED_TRACE(i);
        std::vector<unsigned char> damaged = bytes;
        damaged[i] ^= 0x5A;
        expectRefused(damaged, "");
        expectRefused(std::vector<unsigned char>(bytes.begin(), bytes.begin() + i), "");
    }
    std::vector<unsigned char> longer = bytes;
    longer.push_back(0);
    expectRefused(longer, "1 bytes follow the last entry");
}

TEST_F(ZqFileFormatGenericTest, RefusesHostileFilesWithAMessageNamingTheProblem)
{
    const std::vector<unsigned char> entry = serializerBytes(3);
    std::vector<unsigned char> magic = containerBytes({});
    magic[1] = 'X';
    expectRefused(magic, "wrong magic");
    expectRefused(containerBytes({}, 2), "format version 2 is not one of 1 to 1");
    expectRefused(containerBytes({{"a", "ZqDependencySerializer", entry}}, 0), "format version 0");
    expectRefused(containerBytes({{"a", "X", {}}, {"a", "Y", {}}}), "entry \"a\" appears twice");
    expectRefused(containerBytes({{"a", "ZqDependencySerializer", {}}}), "entry \"a\": unexpected end");

    std::vector<unsigned char> trailing = entry;
    trailing.push_back(0);
    expectRefused(containerBytes({{"a", "ZqDependencySerializer", trailing}}),
                  "entry \"a\": 1 bytes after its end");

    // Sizes and counts with correct checksums, beyond what the file holds.
    ZqBytes huge;
    const unsigned char magicBytes[8] = {0x89, 'Z', 'Q', 'G', '\r', '\n', 0x1A, '\n'};
    huge.raw(magicBytes, 8).u32(1).u32(1).u64(0);
    expectRefused(ZqBytes(huge).u32(ZqCrc32c::Compute(huge.data().data(), huge.data().size())).data(),
                  "1 entries cannot fit into an entry table of 0 bytes");
    ZqBytes bigTable;
    bigTable.raw(magicBytes, 8).u32(1).u32(0).u64(std::uint64_t(1) << 40);
    expectRefused(bigTable.data(), "the file ends inside the entry table: 1099511627776 bytes needed");
    std::vector<unsigned char> claims = containerBytes({{"a", "ZqDependencySerializer", entry}});
    ZqBytes table;
    table.text("a").text("ZqDependencySerializer").u64(std::uint64_t(1) << 40).u32(0);
    ZqBytes lying;
    lying.raw(magicBytes, 8).u32(1).u32(1).u64(table.data().size()).bytes(table.data());
    lying.u32(ZqCrc32c::Compute(lying.data().data(), lying.data().size())).bytes(entry);
    expectRefused(lying.data(), "entry \"a\" claims 1099511627776 bytes, more than the file holds");
}
