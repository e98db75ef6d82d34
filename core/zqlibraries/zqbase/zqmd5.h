#pragma once

#include "basepool/cstring.h"
#include "zqbase/detail/zqdigestinput.h"
#include "zqbase/zqbase_export.h"

#include <array>
#include <cstddef>
#include <cstdint>

// MD5 digests (RFC 1321) of text and bytes, written as 32 lower-case hexadecimal digits.
//
// Text is hashed as UTF-8: a wide input is converted to UTF-8 first, so L"Größe" and u8"Größe" have
// the same digest. Two implementations compute the same digest; EFlags picks one:
//
//     CStringA hex;
//     ZqMD5::GetChecksum("abc", hex);          // "900150983cd24fb0d6963f7d28e17f72"
//     ZqMD5::GetChecksum(L"abc", hex, ZqMD5::eF_MSCryptography);   // the same, through libcrypto
//
// An object of the class hashes a stream of bytes piece by piece with the library's own algorithm:
//
//     ZqMD5 md5;
//     md5.Update(header, headerSize);
//     md5.Update(body, bodySize);
//     const ZqMD5::Digest digest = md5.Finish();
class ZQBASE_API ZqMD5
{
public:
    enum EFlags
    {
        eF_OriginalAlgorithm = 0, // the library's own implementation
        eF_MSCryptography = 1,    // the system's cryptography library (OpenSSL libcrypto)
    };

    static constexpr std::size_t kDigestSize = 16;
    using Digest = std::array<unsigned char, kDigestSize>;

    // The digest of the UTF-8 bytes of input (without its terminating zero) as lower-case hex.
    // Returns false, with output emptied, only when the cryptography library cannot compute MD5.
    // A null input throws CbExceptionPreconditionViolation ("ZqMD5::GetChecksum").
    static bool GetChecksum(const char* input, CStringA& output, EFlags flags = eF_OriginalAlgorithm);
    static bool GetChecksum(const char* input, CString& output, EFlags flags = eF_OriginalAlgorithm);
    static bool GetChecksum(const wchar_t* input, CStringA& output, EFlags flags = eF_OriginalAlgorithm);
    static bool GetChecksum(const wchar_t* input, CString& output, EFlags flags = eF_OriginalAlgorithm);

    // The digest of length bytes at data (data may be null when length is 0).
    static bool GetDigest(const void* data, std::size_t length, Digest& digest,
                          EFlags flags = eF_OriginalAlgorithm);
    // Lower-case hex of a digest.
    static CStringA ToHex(const Digest& digest);

    // Incremental hashing with the library's own implementation.
    ZqMD5();
    void Update(const void* data, std::size_t length);
    // The digest of everything given to Update since construction or the last Finish; starts over.
    Digest Finish();

private:
    void reset();

    std::uint32_t m_state[4];
    ZqDigestInput m_input;
};
