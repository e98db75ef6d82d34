// ZqMD5 against the reference vectors and against libcrypto called directly, around the padding
// boundaries and with the input split into arbitrary pieces.

#include "basepool/cbexception.h"
#include "zqbase/zqmd5.h"

#include <gtest/gtest.h>
#include <openssl/evp.h>
#include <random>
#include <string>
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

ZqMD5::Digest libcryptoMD5(const void* data, std::size_t length)
{
    ZqMD5::Digest digest{};
    unsigned int size = 0;
    EXPECT_EQ(EVP_Digest(data, length, digest.data(), &size, EVP_md5(), nullptr), 1);
    return digest;
}

CStringA checksum(const char* text, ZqMD5::EFlags flags)
{
    CStringA hex;
    EXPECT_TRUE(ZqMD5::GetChecksum(text, hex, flags));
    return hex;
}

const ZqMD5::EFlags s_bothAlgorithms[] = {ZqMD5::eF_OriginalAlgorithm, ZqMD5::eF_MSCryptography};
} // namespace

TEST(ZqMD5, ReferenceVectors)
{
    const struct
    {
        const char* text;
        const char* digest;
    } vectors[] = {
        {"", "d41d8cd98f00b204e9800998ecf8427e"},
        {"a", "0cc175b9c0f1b6a831c399e269772661"},
        {"abc", "900150983cd24fb0d6963f7d28e17f72"},
        {"message digest", "f96b697d7cb7938d525a2f31aaf161d0"},
        {"abcdefghijklmnopqrstuvwxyz", "c3fcd3d76192e4007dfb496cca67e13b"},
        {"ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789",
         "d174ab98d277d9f5a5611c2c9f419d9f"},
        {"12345678901234567890123456789012345678901234567890123456789012345678901234567890",
         "57edf4a22be3c955ac49da2e2107b67a"},
    };
    for (const ZqMD5::EFlags flags : s_bothAlgorithms)
        for (const auto& vector : vectors)
            EXPECT_EQ(checksum(vector.text, flags), vector.digest)
                << '"' << vector.text << "\" flags " << flags;

    const std::string million(1000000, 'a');
    for (const ZqMD5::EFlags flags : s_bothAlgorithms)
        EXPECT_EQ(checksum(million.c_str(), flags), "7707d6ae4e027c70eea2a935c2296f21");
}

TEST(ZqMD5, EveryLengthAroundThePaddingBoundariesMatchesLibcrypto)
{
    // 55/56 bytes: the length still fits into the last block or needs another; 64: a whole block.
    const std::vector<unsigned char> bytes = randomBytes(300, 1);
    for (std::size_t length = 0; length <= bytes.size(); ++length)
    {
        const ZqMD5::Digest expected = libcryptoMD5(bytes.data(), length);
        for (const ZqMD5::EFlags flags : s_bothAlgorithms)
        {
            ZqMD5::Digest digest{};
            ASSERT_TRUE(ZqMD5::GetDigest(bytes.data(), length, digest, flags));
            ASSERT_EQ(digest, expected) << "length " << length << " flags " << flags;
        }
    }
}

TEST(ZqMD5, PiecewiseUpdatesGiveTheDigestOfTheWhole)
{
    const std::vector<unsigned char> bytes = randomBytes(5000, 2);
    const ZqMD5::Digest expected = libcryptoMD5(bytes.data(), bytes.size());

    std::mt19937 generator(3);
    ZqMD5 md5;
    for (int round = 0; round < 20; ++round)
    {
        std::size_t offset = 0;
        while (offset < bytes.size())
        {
            const std::size_t piece = std::min<std::size_t>(generator() % 150, bytes.size() - offset);
            md5.Update(bytes.data() + offset, piece);
            offset += piece;
        }
        // Finish starts over, so the same object serves every round.
        ASSERT_EQ(md5.Finish(), expected) << "round " << round;
    }
}

TEST(ZqMD5, WideTextIsHashedAsUtf8)
{
    const wchar_t* wide = L"Größe: 3 µm, Notenschlüssel 𝄞";
    const char* utf8 = "Größe: 3 µm, Notenschlüssel 𝄞";
    for (const ZqMD5::EFlags flags : s_bothAlgorithms)
    {
        CStringA fromWide;
        CString wideHex;
        ASSERT_TRUE(ZqMD5::GetChecksum(wide, fromWide, flags));
        ASSERT_TRUE(ZqMD5::GetChecksum(wide, wideHex, flags));
        EXPECT_EQ(fromWide, checksum(utf8, flags));
        EXPECT_EQ(CStringA(wideHex), fromWide);
    }
}

TEST(ZqMD5, HexIsLowerCaseAndNullInputIsRejected)
{
    CString hex;
    ASSERT_TRUE(ZqMD5::GetChecksum(L"abc", hex));
    EXPECT_STREQ(hex.GetString(), L"900150983cd24fb0d6963f7d28e17f72");

    CStringA narrow;
    try
    {
        ZqMD5::GetChecksum(static_cast<const char*>(nullptr), narrow);
        FAIL() << "no exception for a null input";
    }
    catch (const CbExceptionPreconditionViolation& exception)
    {
        EXPECT_STREQ(exception.GetFunction(), "ZqMD5::GetChecksum");
    }
    EXPECT_THROW(ZqMD5::GetChecksum(static_cast<const wchar_t*>(nullptr), hex, ZqMD5::eF_MSCryptography),
                 CbExceptionPreconditionViolation);
    EXPECT_THROW(ZqMD5::GetChecksum("abc", narrow, static_cast<ZqMD5::EFlags>(2)),
                 CbExceptionPreconditionViolation);
}
