#include "basepool/cbstreamreadbinary.h"

#include "basepool/cbexception.h"

#include <cerrno>
#include <cstring>
#include <limits>
#include <sys/stat.h>

CbStreamReadBinary::CbStreamReadBinary(const void* data, std::size_t size, unsigned int version)
    : m_data(static_cast<const unsigned char*>(data)), m_size(size), m_version(version)
{
}

CbStreamReadBinary::CbStreamReadBinary(const std::vector<unsigned char>& buffer, unsigned int version)
    : CbStreamReadBinary(buffer.data(), buffer.size(), version)
{
}

CbStreamReadBinary::CbStreamReadBinary(const std::string& path, unsigned int version)
    : m_path(path), m_version(version)
{
    m_file = std::fopen(path.c_str(), "rb");
    if (!m_file)
        CB_THROW(CbExceptionFile, "CbStreamReadBinary::CbStreamReadBinary",
                 "cannot open " + path + ": " + std::strerror(errno));
    struct stat status = {};
    if (fstat(fileno(m_file), &status) == 0 && S_ISREG(status.st_mode))
    {
        m_fileSize = static_cast<std::uint64_t>(status.st_size);
        m_fileSizeKnown = true;
    }
}

CbStreamReadBinary::~CbStreamReadBinary()
{
    if (m_file)
        std::fclose(m_file);
}

void CbStreamReadBinary::Read(void* data, std::size_t size)
{
    if (size == 0)
        return;
    if (m_file)
    {
        if (std::fread(data, 1, size, m_file) != size)
            CB_THROW(CbExceptionWrongFileVersion, "CbStreamReadBinary::Read",
                     "unexpected end of " + m_path + " at byte " + std::to_string(m_position));
    }
    else
    {
        if (size > m_size - m_position)
            CB_THROW(CbExceptionWrongFileVersion, "CbStreamReadBinary::Read",
                     "unexpected end of data at byte " + std::to_string(m_position));
        std::memcpy(data, m_data + m_position, size);
    }
    m_position += size;
}

void CbStreamReadBinary::Read(bool& value)
{
    unsigned char byte = 0;
    Read(&byte, 1);
    if (byte > 1)
        CB_THROW(CbExceptionWrongFileVersion, "CbStreamReadBinary::Read",
                 "a bool of value " + std::to_string(byte) + " at byte " + std::to_string(m_position - 1));
    value = byte == 1;
}

void CbStreamReadBinary::Read(CStringA& text)
{
    const std::uint32_t length = ReadCount();
    // Read in bounded pieces so that a corrupt length cannot make us allocate gigabytes up front.
    std::string bytes;
    for (std::uint32_t done = 0; done < length;)
    {
        const std::uint32_t piece = std::min<std::uint32_t>(length - done, 1u << 16);
        const std::size_t old = bytes.size();
        bytes.resize(old + piece);
        Read(bytes.data() + old, piece);
        done += piece;
    }
    text = CStringA(std::move(bytes));
}

void CbStreamReadBinary::Read(CString& text)
{
    CStringA narrow;
    Read(narrow);
    text = CString(narrow);
}

std::uint32_t CbStreamReadBinary::ReadCount(unsigned int)
{
    std::uint32_t count = 0;
    Read(count);
    return count;
}

std::uint64_t CbStreamReadBinary::GetRemaining() const
{
    if (!m_file)
        return m_size - m_position;
    if (!m_fileSizeKnown)
        return std::numeric_limits<std::uint64_t>::max();
    return m_fileSize > m_position ? m_fileSize - m_position : 0;
}

bool CbStreamReadBinary::IsAtEnd()
{
    if (!m_file)
        return m_position == m_size;
    const int c = std::fgetc(m_file);
    if (c == EOF)
        return true;
    std::ungetc(c, m_file);
    return false;
}
