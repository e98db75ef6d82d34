#include "zqbase/zqsha1.h"

#include "basepool/cbexception.h"
#include "basepool/cstring.h"
#include "zqbase/detail/zqsha1_blocks.h"

#include <algorithm>
#include <bit>
#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <memory>
#include <unistd.h>

namespace
{
inline std::uint32_t loadBigEndian(const unsigned char* p)
{
    std::uint32_t value;
    std::memcpy(&value, p, 4);
    if constexpr (std::endian::native == std::endian::little)
        value = __builtin_bswap32(value);
    return value;
}

// Files are read in pieces of this size: large enough that the read calls cost nothing next to the
// hashing, small enough to stay in the cache.
constexpr std::size_t kFileChunk = 256 * 1024;

class CFileDescriptor
{
public:
    explicit CFileDescriptor(int fd) : m_fd(fd) {}
    ~CFileDescriptor()
    {
        if (m_fd >= 0)
            ::close(m_fd);
    }
    CFileDescriptor(const CFileDescriptor&) = delete;
    CFileDescriptor& operator=(const CFileDescriptor&) = delete;
    int Get() const { return m_fd; }

private:
    int m_fd;
};

// Reads up to size bytes, retrying interrupted calls; -1 on an error, 0 at the end of the file.
ssize_t readSome(int fd, unsigned char* buffer, std::size_t size)
{
    for (;;)
    {
        const ssize_t got = ::read(fd, buffer, size);
        if (got >= 0 || errno != EINTR)
            return got;
    }
}
} // namespace

// The sixteen message words live in a ring: round t (t >= 16) replaces word t % 16 with the rotated
// xor of words t-3, t-8, t-14 and t-16.
#define ZQ_SHA1_W(t) w[(t)&15]
#define ZQ_SHA1_NEXT(t)                                                                                      \
    (ZQ_SHA1_W(t) =                                                                                          \
         std::rotl(ZQ_SHA1_W((t) + 13) ^ ZQ_SHA1_W((t) + 8) ^ ZQ_SHA1_W((t) + 2) ^ ZQ_SHA1_W(t), 1))
#define ZQ_SHA1_ROUND(a, b, c, d, e, f, k, word)                                                             \
    e += std::rotl(a, 5) + (f) + (k) + (word);                                                               \
    b = std::rotl(b, 30)

#define ZQ_SHA1_F0(b, c, d) ((d) ^ ((b) & ((c) ^ (d))))
#define ZQ_SHA1_F1(b, c, d) ((b) ^ (c) ^ (d))
#define ZQ_SHA1_F2(b, c, d) (((b) & (c)) | ((d) & ((b) | (c))))

// Five rounds rotate the roles of the five words back to where they started.
#define ZQ_SHA1_FIVE(f, k, t, word)                                                                          \
    ZQ_SHA1_ROUND(a, b, c, d, e, f(b, c, d), k, word(t));                                                    \
    ZQ_SHA1_ROUND(e, a, b, c, d, f(a, b, c), k, word((t) + 1));                                              \
    ZQ_SHA1_ROUND(d, e, a, b, c, f(e, a, b), k, word((t) + 2));                                              \
    ZQ_SHA1_ROUND(c, d, e, a, b, f(d, e, a), k, word((t) + 3));                                              \
    ZQ_SHA1_ROUND(b, c, d, e, a, f(c, d, e), k, word((t) + 4))

void ZqSha1BlocksPortable(std::uint32_t state[5], const unsigned char* data, std::size_t blocks)
{
    std::uint32_t a = state[0], b = state[1], c = state[2], d = state[3], e = state[4];
    for (; blocks; --blocks, data += 64)
    {
        std::uint32_t w[16];
        for (int i = 0; i < 16; ++i)
            w[i] = loadBigEndian(data + 4 * i);
        const std::uint32_t a0 = a, b0 = b, c0 = c, d0 = d, e0 = e;

        ZQ_SHA1_FIVE(ZQ_SHA1_F0, 0x5a827999u, 0, ZQ_SHA1_W);
        ZQ_SHA1_FIVE(ZQ_SHA1_F0, 0x5a827999u, 5, ZQ_SHA1_W);
        ZQ_SHA1_FIVE(ZQ_SHA1_F0, 0x5a827999u, 10, ZQ_SHA1_W);
        ZQ_SHA1_ROUND(a, b, c, d, e, ZQ_SHA1_F0(b, c, d), 0x5a827999u, ZQ_SHA1_W(15));
        ZQ_SHA1_ROUND(e, a, b, c, d, ZQ_SHA1_F0(a, b, c), 0x5a827999u, ZQ_SHA1_NEXT(16));
        ZQ_SHA1_ROUND(d, e, a, b, c, ZQ_SHA1_F0(e, a, b), 0x5a827999u, ZQ_SHA1_NEXT(17));
        ZQ_SHA1_ROUND(c, d, e, a, b, ZQ_SHA1_F0(d, e, a), 0x5a827999u, ZQ_SHA1_NEXT(18));
        ZQ_SHA1_ROUND(b, c, d, e, a, ZQ_SHA1_F0(c, d, e), 0x5a827999u, ZQ_SHA1_NEXT(19));

        ZQ_SHA1_FIVE(ZQ_SHA1_F1, 0x6ed9eba1u, 20, ZQ_SHA1_NEXT);
        ZQ_SHA1_FIVE(ZQ_SHA1_F1, 0x6ed9eba1u, 25, ZQ_SHA1_NEXT);
        ZQ_SHA1_FIVE(ZQ_SHA1_F1, 0x6ed9eba1u, 30, ZQ_SHA1_NEXT);
        ZQ_SHA1_FIVE(ZQ_SHA1_F1, 0x6ed9eba1u, 35, ZQ_SHA1_NEXT);

        ZQ_SHA1_FIVE(ZQ_SHA1_F2, 0x8f1bbcdcu, 40, ZQ_SHA1_NEXT);
        ZQ_SHA1_FIVE(ZQ_SHA1_F2, 0x8f1bbcdcu, 45, ZQ_SHA1_NEXT);
        ZQ_SHA1_FIVE(ZQ_SHA1_F2, 0x8f1bbcdcu, 50, ZQ_SHA1_NEXT);
        ZQ_SHA1_FIVE(ZQ_SHA1_F2, 0x8f1bbcdcu, 55, ZQ_SHA1_NEXT);

        ZQ_SHA1_FIVE(ZQ_SHA1_F1, 0xca62c1d6u, 60, ZQ_SHA1_NEXT);
        ZQ_SHA1_FIVE(ZQ_SHA1_F1, 0xca62c1d6u, 65, ZQ_SHA1_NEXT);
        ZQ_SHA1_FIVE(ZQ_SHA1_F1, 0xca62c1d6u, 70, ZQ_SHA1_NEXT);
        ZQ_SHA1_FIVE(ZQ_SHA1_F1, 0xca62c1d6u, 75, ZQ_SHA1_NEXT);

        a += a0;
        b += b0;
        c += c0;
        d += d0;
        e += e0;
    }
    state[0] = a;
    state[1] = b;
    state[2] = c;
    state[3] = d;
    state[4] = e;
}

#undef ZQ_SHA1_W
#undef ZQ_SHA1_NEXT
#undef ZQ_SHA1_ROUND
#undef ZQ_SHA1_F0
#undef ZQ_SHA1_F1
#undef ZQ_SHA1_F2
#undef ZQ_SHA1_FIVE

bool ZqSHA1::HasShaExtensions()
{
    return ZqSha1CpuHasShaExtensions();
}

ZqSHA1::ZqSHA1(EImplementation implementation)
{
    switch (implementation)
    {
    case eI_Automatic:
        m_implementation = HasShaExtensions() ? eI_ShaExtensions : eI_Portable;
        break;
    case eI_Portable:
        m_implementation = eI_Portable;
        break;
    case eI_ShaExtensions:
        if (!HasShaExtensions())
            CB_THROW(CbExceptionPreconditionViolation, "ZqSHA1::ZqSHA1",
                     "this processor has no SHA extensions");
        m_implementation = eI_ShaExtensions;
        break;
    default:
        CB_THROW(CbExceptionPreconditionViolation, "ZqSHA1::ZqSHA1",
                 "unknown implementation " + std::to_string(static_cast<int>(implementation)));
    }
    m_blocks = m_implementation == eI_ShaExtensions ? &ZqSha1BlocksShaExtensions : &ZqSha1BlocksPortable;
    reset();
}

void ZqSHA1::reset()
{
    m_state[0] = 0x67452301;
    m_state[1] = 0xefcdab89;
    m_state[2] = 0x98badcfe;
    m_state[3] = 0x10325476;
    m_state[4] = 0xc3d2e1f0;
    m_input.Reset();
}

void ZqSHA1::Update(const void* data, std::size_t length)
{
    m_input.Update(data, length,
                   [this](const unsigned char* blocks, std::size_t count)
                   { m_blocks(m_state, blocks, count); });
}

ZqSHA1::Digest ZqSHA1::Finish()
{
    m_input.Finish(ZqDigestInput::eLO_BigEndian, [this](const unsigned char* blocks, std::size_t count)
                   { m_blocks(m_state, blocks, count); });

    Digest digest;
    for (int i = 0; i < 5; ++i)
        for (int j = 0; j < 4; ++j)
            digest[4 * i + j] = static_cast<unsigned char>(m_state[i] >> (24 - 8 * j));
    reset();
    return digest;
}

std::string ZqSHA1::ToHex(const Digest& digest)
{
    static const char digits[] = "0123456789ABCDEF";
    std::string hex(2 * digest.size(), '0');
    for (std::size_t i = 0; i < digest.size(); ++i)
    {
        hex[2 * i] = digits[digest[i] >> 4];
        hex[2 * i + 1] = digits[digest[i] & 15];
    }
    return hex;
}

bool ZqSHA1::GetChecksum(const unsigned char* data, unsigned long long length, std::string& out)
{
    if (!data && length)
        CB_THROW(CbExceptionPreconditionViolation, "ZqSHA1::GetChecksum", "null data");
    ZqSHA1 sha1;
    sha1.Update(data, static_cast<std::size_t>(length));
    out = ToHex(sha1.Finish());
    return true;
}

bool ZqSHA1::GetChecksum(const wchar_t* filePath, std::string& out)
{
    if (!filePath)
        CB_THROW(CbExceptionPreconditionViolation, "ZqSHA1::GetChecksum", "null file path");
    out.clear();
    const CFileDescriptor file(::open(CbWideToUtf8(filePath).c_str(), O_RDONLY | O_CLOEXEC));
    if (file.Get() < 0)
        return false;
    ::posix_fadvise(file.Get(), 0, 0, POSIX_FADV_SEQUENTIAL);

    const std::unique_ptr<unsigned char[]> buffer(new unsigned char[kFileChunk]);
    ZqSHA1 sha1;
    for (;;)
    {
        const ssize_t got = readSome(file.Get(), buffer.get(), kFileChunk);
        if (got < 0)
            return false;
        if (got == 0)
            break;
        sha1.Update(buffer.get(), static_cast<std::size_t>(got));
    }
    out = ToHex(sha1.Finish());
    return true;
}
