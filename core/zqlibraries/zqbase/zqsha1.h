#pragma once

#include "zqbase/detail/zqdigestinput.h"
#include "zqbase/zqbase_export.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <string>

// SHA-1 digests (FIPS 180-4) of memory and of files, written as 40 upper-case hexadecimal digits.
//
//     std::string hex;
//     ZqSHA1::GetChecksum(reinterpret_cast<const unsigned char*>("abc"), 3, hex);
//     // hex == "A9993E364706816ABA3E25717850C26C9CD0D89D"
//     if (!ZqSHA1::GetChecksum(L"/data/mesh.ply", hex))   // missing or unreadable: false, hex empty
//         ...
//
// On processors with the SHA extensions the block function uses them; elsewhere a portable one runs.
// The choice is made once, at run time, from what the processor reports.
class ZQBASE_API ZqSHA1
{
public:
    enum EImplementation
    {
        eI_Automatic = 0,     // the SHA extensions when the processor has them, else eI_Portable
        eI_Portable = 1,      // plain C++, any processor
        eI_ShaExtensions = 2, // x86 SHA extensions (SHA-NI)
    };

    static constexpr std::size_t kDigestSize = 20;
    using Digest = std::array<unsigned char, kDigestSize>;

    // The digest of length bytes at data. Always true; data may be null only when length is 0, a null
    // data with a length throws CbExceptionPreconditionViolation ("ZqSHA1::GetChecksum").
    static bool GetChecksum(const unsigned char* data, unsigned long long length, std::string& out);
    // The digest of the bytes of the file at filePath, read in pieces of fixed size, so memory use does
    // not grow with the file. False, with out emptied, when the file cannot be opened or read (missing,
    // no permission, a directory). A null filePath throws CbExceptionPreconditionViolation.
    static bool GetChecksum(const wchar_t* filePath, std::string& out);

    // Whether this processor runs the SHA-extension block function.
    static bool HasShaExtensions();
    // Upper-case hex of a digest.
    static std::string ToHex(const Digest& digest);

    // Incremental hashing. eI_ShaExtensions on a processor without them throws
    // CbExceptionPreconditionViolation ("ZqSHA1::ZqSHA1").
    explicit ZqSHA1(EImplementation implementation = eI_Automatic);
    // The implementation in use (never eI_Automatic).
    EImplementation GetImplementation() const { return m_implementation; }
    void Update(const void* data, std::size_t length);
    // The digest of everything given to Update since construction or the last Finish; starts over.
    Digest Finish();

private:
    using BlockFunction = void (*)(std::uint32_t state[5], const unsigned char* data, std::size_t blocks);

    void reset();

    EImplementation m_implementation;
    BlockFunction m_blocks;
    std::uint32_t m_state[5];
    ZqDigestInput m_input;
};
