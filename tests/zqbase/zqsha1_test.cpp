// ZqSHA1 with each block function this processor runs: reference vectors, libcrypto on every length
// around the padding boundaries, piecewise updates, and files against memory.

#include "basepool/cbexception.h"
#include "zqbase/zqsha1.h"

#include <cstdio>
#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <openssl/evp.h>
#include <random>
#include <sys/resource.h>
#include <unistd.h>
#include <vector>

namespace
{
std::vector<unsigned char> randomBytes(std::size_t count, unsigned int seed)
{
    std::mt19937 generator(seed);
    std::vector<unsigned char> bytes(count);
    for (auto& byte : bytes)
        byte = static_cast<unsigned char>(generator());
    return bytes;
}

std::string libcryptoSHA1(const void* data, std::size_t length)
{
    ZqSHA1::Digest digest{};
    unsigned int size = 0;
    EXPECT_EQ(EVP_Digest(data, length, digest.data(), &size, EVP_sha1(), nullptr), 1);
    return ZqSHA1::ToHex(digest);
}

std::string digestWith(ZqSHA1::EImplementation implementation, const void* data, std::size_t length)
{
    ZqSHA1 sha1(implementation);
    sha1.Update(data, length);
    return ZqSHA1::ToHex(sha1.Finish());
}

class ZqSHA1Implementation : public ::testing::TestWithParam<ZqSHA1::EImplementation>
{
protected:
    void SetUp() override
    {
        if (GetParam() == ZqSHA1::eI_ShaExtensions && !ZqSHA1::HasShaExtensions())
            GTEST_SKIP() << "this processor has no SHA extensions";
    }
};

// A directory of its own per test, removed afterwards.
class ZqSHA1File : public ::testing::Test
{
protected:
    void SetUp() override
    {
        m_directory = std::filesystem::temp_directory_path() /
                      ("zqsha1_test_" + std::to_string(::getpid()) + "_" +
                       ::testing::UnitTest::GetInstance()->current_test_info()->name());
        std::filesystem::create_directories(m_directory);
    }
    void TearDown() override { std::filesystem::remove_all(m_directory); }

    std::filesystem::path write(const char* name, const std::vector<unsigned char>& bytes) const
    {
        const std::filesystem::path path = m_directory / name;
        std::ofstream(path, std::ios::binary)
            .write(reinterpret_cast<const char*>(bytes.data()), bytes.size());
        return path;
    }

    std::filesystem::path m_directory;
};
} // namespace

TEST_P(ZqSHA1Implementation, ReferenceVectors)
{
    const struct
    {
        std::string text;
        const char* digest;
    } vectors[] = {
        {"", "DA39A3EE5E6B4B0D3255BFEF95601890AFD80709"},
        {"abc", "A9993E364706816ABA3E25717850C26C9CD0D89D"},
        {"abcdbcdecdefdefgefghfghighijhijkijkljklmklmnlmnomnopnopq",
         "84983E441C3BD26EBAAE4AA1F95129E5E54670F1"},
        {"abcdefghbcdefghicdefghijdefghijkefghijklfghijklmghijklmnhijklmnoijklmnopjklmnopqklmnopqrlmnopqrsmno"
         "pq"
         "rstnopqrstu",
         "A49B2446A02C645BF419F995B67091253A04A259"},
        {std::string(1000000, 'a'), "34AA973CD4C4DAA4F61EEB2BDBAD27316534016F"},
    };
    for (const auto& vector : vectors)
        EXPECT_EQ(digestWith(GetParam(), vector.text.data(), vector.text.size()), vector.digest)
            << vector.text.substr(0, 60);
}

TEST_P(ZqSHA1Implementation, EveryLengthAroundThePaddingBoundariesMatchesLibcrypto)
{
    // Up to several blocks, so that the block functions also run over more than one block per call.
    const std::vector<unsigned char> bytes = randomBytes(600, 4);
    for (std::size_t length = 0; length <= bytes.size(); ++length)
        ASSERT_EQ(digestWith(GetParam(), bytes.data(), length), libcryptoSHA1(bytes.data(), length))
            << "length " << length;
}

TEST_P(ZqSHA1Implementation, PiecewiseUpdatesGiveTheDigestOfTheWhole)
{
    const std::vector<unsigned char> bytes = randomBytes(20000, 5);
    const std::string expected = libcryptoSHA1(bytes.data(), bytes.size());
    std::mt19937 generator(6);
    ZqSHA1 sha1(GetParam());
    for (int round = 0; round < 20; ++round)
    {
        std::size_t offset = 0;
        while (offset < bytes.size())
        {
            const std::size_t piece = std::min<std::size_t>(generator() % 300, bytes.size() - offset);
            sha1.Update(bytes.data() + offset, piece);
            offset += piece;
        }
        ASSERT_EQ(ZqSHA1::ToHex(sha1.Finish()), expected) << "round " << round;
    }
}

INSTANTIATE_TEST_SUITE_P(, ZqSHA1Implementation,
                         ::testing::Values(ZqSHA1::eI_Portable, ZqSHA1::eI_ShaExtensions,
                                           ZqSHA1::eI_Automatic),
                         [](const auto& info)
                         {
                             switch (info.param)
                             {
                             case ZqSHA1::eI_Portable:
                                 return "Portable";
                             case ZqSHA1::eI_ShaExtensions:
                                 return "ShaExtensions";
                             default:
                                 return "Automatic";
                             }
                         });

TEST(ZqSHA1, AutomaticChoiceFollowsTheProcessor)
{
    EXPECT_EQ(ZqSHA1().GetImplementation(),
              ZqSHA1::HasShaExtensions() ? ZqSHA1::eI_ShaExtensions : ZqSHA1::eI_Portable);
    if (!ZqSHA1::HasShaExtensions())
    {
        EXPECT_THROW(ZqSHA1(ZqSHA1::eI_ShaExtensions), CbExceptionPreconditionViolation);
    }
}

TEST(ZqSHA1, MemoryFormRejectsNullDataWithALength)
{
    std::string out;
    EXPECT_TRUE(ZqSHA1::GetChecksum(nullptr, 0, out));
    EXPECT_EQ(out, "DA39A3EE5E6B4B0D3255BFEF95601890AFD80709");
    EXPECT_THROW(ZqSHA1::GetChecksum(nullptr, 1, out), CbExceptionPreconditionViolation);
    EXPECT_THROW(ZqSHA1::GetChecksum(static_cast<const wchar_t*>(nullptr), out),
                 CbExceptionPreconditionViolation);
}

TEST_F(ZqSHA1File, FileAndMemoryDigestsAgree)
{
    // Around the size of the pieces the file form reads (256 KiB) and of a block.
    for (const std::size_t size : {0, 1, 55, 56, 64, 65, 262143, 262144, 262145, 1000003})
    {
        const std::vector<unsigned char> bytes = randomBytes(size, static_cast<unsigned int>(size));
        const std::filesystem::path path = write("data.bin", bytes);
        std::string fromFile;
        std::string fromMemory;
        ASSERT_TRUE(ZqSHA1::GetChecksum(path.wstring().c_str(), fromFile)) << size;
        ASSERT_TRUE(ZqSHA1::GetChecksum(bytes.data(), bytes.size(), fromMemory));
        EXPECT_EQ(fromFile, fromMemory) << "size " << size;
    }
}

TEST_F(ZqSHA1File, PathWithUmlautsIsFound)
{
    const std::filesystem::path path = write("Prüfsumme.dat", {'a', 'b', 'c'});
    std::string out;
    ASSERT_TRUE(ZqSHA1::GetChecksum((m_directory.wstring() + L"/Prüfsumme.dat").c_str(), out)) << path;
    EXPECT_EQ(out, "A9993E364706816ABA3E25717850C26C9CD0D89D");
}

TEST_F(ZqSHA1File, UnreadableFilesGiveFalseAndAnEmptyDigest)
{
    std::string out = "stale";
    EXPECT_FALSE(ZqSHA1::GetChecksum((m_directory / "missing.dat").wstring().c_str(), out));
    EXPECT_TRUE(out.empty());

    out = "stale";
    EXPECT_FALSE(ZqSHA1::GetChecksum(m_directory.wstring().c_str(), out)) << "a directory";
    EXPECT_TRUE(out.empty());
    EXPECT_FALSE(ZqSHA1::GetChecksum(L"", out));

    const std::filesystem::path locked = write("locked.dat", {1, 2, 3});
    std::filesystem::permissions(locked, std::filesystem::perms::none);
    if (::access(locked.c_str(), R_OK) == 0)
        GTEST_SKIP() << "running with rights that read any file";
    EXPECT_FALSE(ZqSHA1::GetChecksum(locked.wstring().c_str(), out));
}

TEST_F(ZqSHA1File, MemoryStaysFlatForALargeFile)
{
    // A sparse file of 256 MiB costs no disk; a reader that loads it whole would raise the peak
    // resident size by about that much.
    const std::filesystem::path path = m_directory / "sparse.dat";
    std::ofstream(path).close();
    std::filesystem::resize_file(path, 256ull << 20);

    rusage before{};
    ::getrusage(RUSAGE_SELF, &before);
    std::string out;
    ASSERT_TRUE(ZqSHA1::GetChecksum(path.wstring().c_str(), out));
    rusage after{};
    ::getrusage(RUSAGE_SELF, &after);
    EXPECT_LT(after.ru_maxrss - before.ru_maxrss, 64 * 1024) << "peak resident size grew (KiB)";
    EXPECT_EQ(out, "7B91DBDC56C5781EDF6C8847B4AA6965566C5C75");
}
