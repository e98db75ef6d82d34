#include "zqbase/zqmd5.h"

#include "basepool/cbexception.h"

#include <algorithm>
#include <bit>
#include <cstring>
#include <openssl/evp.h>
#include <string>

namespace
{
inline std::uint32_t loadLittleEndian(const unsigned char* p)
{
    std::uint32_t value;
    std::memcpy(&value, p, 4);
    if constexpr (std::endian::native == std::endian::big)
        value = __builtin_bswap32(value);
    return value;
}

// The four round functions in the forms that need the fewest dependent operations: F and G select
// bits with one AND between two XORs; G's two disjoint halves are added separately (see step G).
inline std::uint32_t roundF(std::uint32_t b, std::uint32_t c, std::uint32_t d)
{
    return d ^ (b & (c ^ d));
}
inline std::uint32_t roundH(std::uint32_t b, std::uint32_t c, std::uint32_t d)
{
    return b ^ c ^ d;
}
inline std::uint32_t roundI(std::uint32_t b, std::uint32_t c, std::uint32_t d)
{
    return c ^ (b | ~d);
}

#define ZQ_MD5_STEP(function, a, b, c, d, word, constant, shift)                                             \
    a += function(b, c, d) + (word) + (constant);                                                            \
    a = std::rotl(a, shift) + b

// (b & d) | (c & ~d) with its halves added one after the other: ~d & c does not wait for b.
#define ZQ_MD5_STEP_G(a, b, c, d, word, constant, shift)                                                     \
    a += (~(d) & (c)) + (word) + (constant);                                                                 \
    a += (d) & (b);                                                                                          \
    a = std::rotl(a, shift) + b

void md5Blocks(std::uint32_t state[4], const unsigned char* data, std::size_t blocks)
{
    std::uint32_t a = state[0], b = state[1], c = state[2], d = state[3];
    for (; blocks; --blocks, data += 64)
    {
        std::uint32_t x[16];
        for (int i = 0; i < 16; ++i)
            x[i] = loadLittleEndian(data + 4 * i);
        const std::uint32_t a0 = a, b0 = b, c0 = c, d0 = d;

        ZQ_MD5_STEP(roundF, a, b, c, d, x[0], 0xd76aa478, 7);
        ZQ_MD5_STEP(roundF, d, a, b, c, x[1], 0xe8c7b756, 12);
        ZQ_MD5_STEP(roundF, c, d, a, b, x[2], 0x242070db, 17);
        ZQ_MD5_STEP(roundF, b, c, d, a, x[3], 0xc1bdceee, 22);
        ZQ_MD5_STEP(roundF, a, b, c, d, x[4], 0xf57c0faf, 7);
        ZQ_MD5_STEP(roundF, d, a, b, c, x[5], 0x4787c62a, 12);
        ZQ_MD5_STEP(roundF, c, d, a, b, x[6], 0xa8304613, 17);
        ZQ_MD5_STEP(roundF, b, c, d, a, x[7], 0xfd469501, 22);
        ZQ_MD5_STEP(roundF, a, b, c, d, x[8], 0x698098d8, 7);
        ZQ_MD5_STEP(roundF, d, a, b, c, x[9], 0x8b44f7af, 12);
        ZQ_MD5_STEP(roundF, c, d, a, b, x[10], 0xffff5bb1, 17);
        ZQ_MD5_STEP(roundF, b, c, d, a, x[11], 0x895cd7be, 22);
        ZQ_MD5_STEP(roundF, a, b, c, d, x[12], 0x6b901122, 7);
        ZQ_MD5_STEP(roundF, d, a, b, c, x[13], 0xfd987193, 12);
        ZQ_MD5_STEP(roundF, c, d, a, b, x[14], 0xa679438e, 17);
        ZQ_MD5_STEP(roundF, b, c, d, a, x[15], 0x49b40821, 22);

        ZQ_MD5_STEP_G(a, b, c, d, x[1], 0xf61e2562, 5);
        ZQ_MD5_STEP_G(d, a, b, c, x[6], 0xc040b340, 9);
        ZQ_MD5_STEP_G(c, d, a, b, x[11], 0x265e5a51, 14);
        ZQ_MD5_STEP_G(b, c, d, a, x[0], 0xe9b6c7aa, 20);
        ZQ_MD5_STEP_G(a, b, c, d, x[5], 0xd62f105d, 5);
        ZQ_MD5_STEP_G(d, a, b, c, x[10], 0x02441453, 9);
        ZQ_MD5_STEP_G(c, d, a, b, x[15], 0xd8a1e681, 14);
        ZQ_MD5_STEP_G(b, c, d, a, x[4], 0xe7d3fbc8, 20);
        ZQ_MD5_STEP_G(a, b, c, d, x[9], 0x21e1cde6, 5);
        ZQ_MD5_STEP_G(d, a, b, c, x[14], 0xc33707d6, 9);
        ZQ_MD5_STEP_G(c, d, a, b, x[3], 0xf4d50d87, 14);
        ZQ_MD5_STEP_G(b, c, d, a, x[8], 0x455a14ed, 20);
        ZQ_MD5_STEP_G(a, b, c, d, x[13], 0xa9e3e905, 5);
        ZQ_MD5_STEP_G(d, a, b, c, x[2], 0xfcefa3f8, 9);
        ZQ_MD5_STEP_G(c, d, a, b, x[7], 0x676f02d9, 14);
        ZQ_MD5_STEP_G(b, c, d, a, x[12], 0x8d2a4c8a, 20);

        ZQ_MD5_STEP(roundH, a, b, c, d, x[5], 0xfffa3942, 4);
        ZQ_MD5_STEP(roundH, d, a, b, c, x[8], 0x8771f681, 11);
        ZQ_MD5_STEP(roundH, c, d, a, b, x[11], 0x6d9d6122, 16);
        ZQ_MD5_STEP(roundH, b, c, d, a, x[14], 0xfde5380c, 23);
        ZQ_MD5_STEP(roundH, a, b, c, d, x[1], 0xa4beea44, 4);
        ZQ_MD5_STEP(roundH, d, a, b, c, x[4], 0x4bdecfa9, 11);
        ZQ_MD5_STEP(roundH, c, d, a, b, x[7], 0xf6bb4b60, 16);
        ZQ_MD5_STEP(roundH, b, c, d, a, x[10], 0xbebfbc70, 23);
        ZQ_MD5_STEP(roundH, a, b, c, d, x[13], 0x289b7ec6, 4);
        ZQ_MD5_STEP(roundH, d, a, b, c, x[0], 0xeaa127fa, 11);
        ZQ_MD5_STEP(roundH, c, d, a, b, x[3], 0xd4ef3085, 16);
        ZQ_MD5_STEP(roundH, b, c, d, a, x[6], 0x04881d05, 23);
        ZQ_MD5_STEP(roundH, a, b, c, d, x[9], 0xd9d4d039, 4);
        ZQ_MD5_STEP(roundH, d, a, b, c, x[12], 0xe6db99e5, 11);
        ZQ_MD5_STEP(roundH, c, d, a, b, x[15], 0x1fa27cf8, 16);
        ZQ_MD5_STEP(roundH, b, c, d, a, x[2], 0xc4ac5665, 23);

        ZQ_MD5_STEP(roundI, a, b, c, d, x[0], 0xf4292244, 6);
        ZQ_MD5_STEP(roundI, d, a, b, c, x[7], 0x432aff97, 10);
        ZQ_MD5_STEP(roundI, c, d, a, b, x[14], 0xab9423a7, 15);
        ZQ_MD5_STEP(roundI, b, c, d, a, x[5], 0xfc93a039, 21);
        ZQ_MD5_STEP(roundI, a, b, c, d, x[12], 0x655b59c3, 6);
        ZQ_MD5_STEP(roundI, d, a, b, c, x[3], 0x8f0ccc92, 10);
        ZQ_MD5_STEP(roundI, c, d, a, b, x[10], 0xffeff47d, 15);
        ZQ_MD5_STEP(roundI, b, c, d, a, x[1], 0x85845dd1, 21);
        ZQ_MD5_STEP(roundI, a, b, c, d, x[8], 0x6fa87e4f, 6);
        ZQ_MD5_STEP(roundI, d, a, b, c, x[15], 0xfe2ce6e0, 10);
        ZQ_MD5_STEP(roundI, c, d, a, b, x[6], 0xa3014314, 15);
        ZQ_MD5_STEP(roundI, b, c, d, a, x[13], 0x4e0811a1, 21);
        ZQ_MD5_STEP(roundI, a, b, c, d, x[4], 0xf7537e82, 6);
        ZQ_MD5_STEP(roundI, d, a, b, c, x[11], 0xbd3af235, 10);
        ZQ_MD5_STEP(roundI, c, d, a, b, x[2], 0x2ad7d2bb, 15);
        ZQ_MD5_STEP(roundI, b, c, d, a, x[9], 0xeb86d391, 21);

        a += a0;
        b += b0;
        c += c0;
        d += d0;
    }
    state[0] = a;
    state[1] = b;
    state[2] = c;
    state[3] = d;
}

#undef ZQ_MD5_STEP
#undef ZQ_MD5_STEP_G

// The MD5 implementation of libcrypto, fetched once: an implicit fetch on every call costs more
// than hashing a short text.
const EVP_MD* cryptoMD5()
{
    static const EVP_MD* md = []
    {
        const EVP_MD* fetched = EVP_MD_fetch(nullptr, "MD5", nullptr);
        return fetched ? fetched : EVP_md5();
    }();
    return md;
}

bool cryptoDigest(const void* data, std::size_t length, ZqMD5::Digest& digest)
{
    const EVP_MD* md = cryptoMD5();
    unsigned int size = 0;
    return md && EVP_Digest(data, length, digest.data(), &size, md, nullptr) == 1 && size == digest.size();
}

const char* checkedInput(const char* input)
{
    if (!input)
        CB_THROW(CbExceptionPreconditionViolation, "ZqMD5::GetChecksum", "null input");
    return input;
}

std::string checkedUtf8(const wchar_t* input)
{
    if (!input)
        CB_THROW(CbExceptionPreconditionViolation, "ZqMD5::GetChecksum", "null input");
    return CbWideToUtf8(input);
}

bool hexOfText(const char* text, std::size_t length, CStringA& output, ZqMD5::EFlags flags)
{
    ZqMD5::Digest digest;
    if (!ZqMD5::GetDigest(text, length, digest, flags))
    {
        output.Empty();
        return false;
    }
    output = ZqMD5::ToHex(digest);
    return true;
}

bool hexOfText(const char* text, std::size_t length, CString& output, ZqMD5::EFlags flags)
{
    CStringA narrow;
    const bool computed = hexOfText(text, length, narrow, flags);
    output = CString(narrow);
    return computed;
}
} // namespace

ZqMD5::ZqMD5()
{
    reset();
}

void ZqMD5::reset()
{
    m_state[0] = 0x67452301;
    m_state[1] = 0xefcdab89;
    m_state[2] = 0x98badcfe;
    m_state[3] = 0x10325476;
    m_input.Reset();
}

void ZqMD5::Update(const void* data, std::size_t length)
{
    m_input.Update(data, length,
                   [this](const unsigned char* blocks, std::size_t count)
                   { md5Blocks(m_state, blocks, count); });
}

ZqMD5::Digest ZqMD5::Finish()
{
    m_input.Finish(ZqDigestInput::eLO_LittleEndian, [this](const unsigned char* blocks, std::size_t count)
                   { md5Blocks(m_state, blocks, count); });

    Digest digest;
    for (int i = 0; i < 4; ++i)
        for (int j = 0; j < 4; ++j)
            digest[4 * i + j] = static_cast<unsigned char>(m_state[i] >> (8 * j));
    reset();
    return digest;
}

bool ZqMD5::GetDigest(const void* data, std::size_t length, Digest& digest, EFlags flags)
{
    if (!data && length)
        CB_THROW(CbExceptionPreconditionViolation, "ZqMD5::GetDigest", "null data");
    if (flags != eF_OriginalAlgorithm && flags != eF_MSCryptography)
        CB_THROW(CbExceptionPreconditionViolation, "ZqMD5::GetDigest",
                 "unknown flags " + std::to_string(static_cast<int>(flags)));
    if (flags == eF_MSCryptography)
        return cryptoDigest(data ? data : "", length, digest);
    ZqMD5 md5;
    md5.Update(data, length);
    digest = md5.Finish();
    return true;
}

CStringA ZqMD5::ToHex(const Digest& digest)
{
    static const char digits[] = "0123456789abcdef";
    std::string hex(2 * digest.size(), '0');
    for (std::size_t i = 0; i < digest.size(); ++i)
    {
        hex[2 * i] = digits[digest[i] >> 4];
        hex[2 * i + 1] = digits[digest[i] & 15];
    }
    return CStringA(std::move(hex));
}

bool ZqMD5::GetChecksum(const char* input, CStringA& output, EFlags flags)
{
    const char* text = checkedInput(input);
    return hexOfText(text, std::strlen(text), output, flags);
}

bool ZqMD5::GetChecksum(const char* input, CString& output, EFlags flags)
{
    const char* text = checkedInput(input);
    return hexOfText(text, std::strlen(text), output, flags);
}

bool ZqMD5::GetChecksum(const wchar_t* input, CStringA& output, EFlags flags)
{
    const std::string text = checkedUtf8(input);
    return hexOfText(text.data(), text.size(), output, flags);
}

bool ZqMD5::GetChecksum(const wchar_t* input, CString& output, EFlags flags)
{
    const std::string text = checkedUtf8(input);
    return hexOfText(text.data(), text.size(), output, flags);
}
