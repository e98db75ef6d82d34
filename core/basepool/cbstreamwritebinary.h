#pragma once

#include "basepool/basepool_export.h"
#include "basepool/cstring.h"

#include <cstdint>
#include <cstdio>
#include <string>
#include <type_traits>
#include <vector>

// Binary output stream into memory or a file. Values are written in the machine's byte order
// (little-endian x86-64), counts as 32-bit values, text as a count of UTF-8 bytes followed by them.
//
// A file stream writes to a temporary name beside the target and renames it into place in Close(),
// so a crash or an exception never leaves half a file under the target's name. A stream destroyed
// without Close() discards what it wrote.
class BASEPOOL_API CbStreamWriteBinary
{
public:
    // Appends to buffer, which must outlive the stream.
    explicit CbStreamWriteBinary(std::vector<unsigned char>& buffer, unsigned int version = 0);
    // Writes the file path; throws CbExceptionFile when the temporary file cannot be created.
    explicit CbStreamWriteBinary(const std::string& path, unsigned int version = 0);
    ~CbStreamWriteBinary();
    CbStreamWriteBinary(const CbStreamWriteBinary&) = delete;
    CbStreamWriteBinary& operator=(const CbStreamWriteBinary&) = delete;

    // The format version given at construction; serializers may write differently per version.
    unsigned int GetVersion() const { return m_version; }

    void Write(const void* data, std::size_t size);
    template <class T>
    requires std::is_trivially_copyable_v<T>
    void Write(const T& value) { Write(&value, sizeof(T)); }
    void Write(const CString& text);
    void Write(const CStringA& text);
    // The count writer: a 32-bit element count. version selects the layout of later formats and is
    // accepted for the serializers' sake; all versions so far share this one.
    void WriteCount(std::uint32_t count, unsigned int version = 0);

    // Bytes written so far.
    std::uint64_t GetPosition() const { return m_position; }

    // Flushes a file stream and renames it into place; throws CbExceptionFile on failure (the target
    // is then left as it was). Does nothing for a memory stream.
    void Close();

    // Writes anything Write accepts; other types (arrays, ...) bring operator<< of their own. The
    // stream's type is a template parameter so that the check waits until the class is complete
    // (clang 14 rejects it inside the class otherwise).
    template <class T, class Stream = CbStreamWriteBinary>
    requires requires(Stream& stream, const T& value) { stream.Write(value); }
    CbStreamWriteBinary& operator<<(const T& value)
    {
        Write(value);
        return *this;
    }

private:
    std::vector<unsigned char>* m_buffer = nullptr;
    std::FILE* m_file = nullptr;
    std::string m_path;
    std::string m_temporaryPath;
    unsigned int m_version;
    std::uint64_t m_position = 0;
};
