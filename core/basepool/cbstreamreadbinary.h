#pragma once

#include "basepool/basepool_export.h"
#include "basepool/cstring.h"

#include <cstdint>
#include <cstdio>
#include <string>
#include <type_traits>
#include <vector>

// Whether stream.Read(value) is well-formed for a value of T: the types a stream reads itself. The
// stream is a parameter so that the stream class can constrain its own members with it while it is
// still incomplete.
template <class T, class Stream>
concept CbReadableBy = requires(Stream& stream, T& value)
{
    stream.Read(value);
};

// Binary input stream from memory or a file, the counterpart of CbStreamWriteBinary. Reading past
// the end throws CbExceptionWrongFileVersion: the data is truncated or of another format.
class BASEPOOL_API CbStreamReadBinary
{
public:
    // Reads size bytes at data, which must outlive the stream.
    CbStreamReadBinary(const void* data, std::size_t size, unsigned int version = 0);
    explicit CbStreamReadBinary(const std::vector<unsigned char>& buffer, unsigned int version = 0);
    // Reads the file path; throws CbExceptionFile when it cannot be opened.
    explicit CbStreamReadBinary(const std::string& path, unsigned int version = 0);
    ~CbStreamReadBinary();
    CbStreamReadBinary(const CbStreamReadBinary&) = delete;
    CbStreamReadBinary& operator=(const CbStreamReadBinary&) = delete;

    unsigned int GetVersion() const { return m_version; }

    void Read(void* data, std::size_t size);
    template <class T>
    requires std::is_trivially_copyable_v<T>
    void Read(T& value) { Read(&value, sizeof(T)); }
    // One byte that must be 0 or 1; any other throws CbExceptionWrongFileVersion (a bool holding
    // another byte is undefined to use). Structures with bool members read them one by one through this.
    void Read(bool& value);
    void Read(CString& text);
    void Read(CStringA& text);
    // The count reader; see CbStreamWriteBinary::WriteCount.
    std::uint32_t ReadCount(unsigned int version = 0);

    // True when every byte has been read.
    bool IsAtEnd();
    std::uint64_t GetPosition() const { return m_position; }
    // Bytes left to read; for a file that is not a regular file (a pipe) the largest uint64 value.
    // Readers check a count against it before they allocate for it.
    std::uint64_t GetRemaining() const;

    // Reads anything Read accepts; other types (arrays, ...) bring operator>> of their own.
    template <CbReadableBy<CbStreamReadBinary> T> CbStreamReadBinary& operator>>(T& value)
    {
        Read(value);
        return *this;
    }

private:
    const unsigned char* m_data = nullptr;
    std::size_t m_size = 0;
    std::FILE* m_file = nullptr;
    std::string m_path;
    std::uint64_t m_fileSize = 0;
    bool m_fileSizeKnown = false;
    unsigned int m_version;
    std::uint64_t m_position = 0;
};
