#include "basepool/cbstreamwritebinary.h"

#include "basepool/cbexception.h"

#include <cerrno>
#include <cstring>
#include <fstream>
#include <sys/stat.h>
#include <unistd.h>

namespace
{
// The mode a file made by open(path, O_CREAT, 0666) would get: an existing file keeps its mode, a new
// one gets 0666 less the process's umask. mkstemp makes its file 0600, which would leave every
// atomically written file readable by its owner alone.
mode_t creationMode(const std::string& path)
{
    struct stat existing;
    if (stat(path.c_str(), &existing) == 0)
        return existing.st_mode & 07777;
    // The umask can be read without changing it from /proc; umask() itself would set it for every
    // thread for a moment.
    std::ifstream status("/proc/self/status");
    for (std::string line; std::getline(status, line);)
        if (line.rfind("Umask:", 0) == 0)
            return 0666 & ~static_cast<mode_t>(std::stoul(line.substr(6), nullptr, 8));
    const mode_t mask = umask(022);
    umask(mask);
    return 0666 & ~mask;
}
} // namespace

CbStreamWriteBinary::CbStreamWriteBinary(std::vector<unsigned char>& buffer, unsigned int version)
    : m_buffer(&buffer), m_version(version)
{
}

CbStreamWriteBinary::CbStreamWriteBinary(const std::string& path, unsigned int version)
    : m_path(path), m_version(version)
{
    std::string pattern = path + ".tmp-XXXXXX";
    int fd = mkstemp(pattern.data());
    if (fd < 0)
        CB_THROW(CbExceptionFile, "CbStreamWriteBinary::CbStreamWriteBinary",
                 "cannot create " + pattern + ": " + std::strerror(errno));
    m_temporaryPath = pattern;
    fchmod(fd, creationMode(path));
    m_file = fdopen(fd, "wb");
    if (!m_file)
    {
        ::close(fd);
        std::remove(m_temporaryPath.c_str());
        CB_THROW(CbExceptionFile, "CbStreamWriteBinary::CbStreamWriteBinary",
                 "cannot open " + m_temporaryPath);
    }
}

CbStreamWriteBinary::~CbStreamWriteBinary()
{
    if (m_file)
    {
        std::fclose(m_file);
        std::remove(m_temporaryPath.c_str());
    }
}

void CbStreamWriteBinary::Write(const void* data, std::size_t size)
{
    if (size == 0)
        return;
    if (m_buffer)
    {
        const auto* bytes = static_cast<const unsigned char*>(data);
        m_buffer->insert(m_buffer->end(), bytes, bytes + size);
    }
    else if (!m_file)
        CB_THROW(CbExceptionFile, "CbStreamWriteBinary::Write", "stream already closed: " + m_path);
    else if (std::fwrite(data, 1, size, m_file) != size)
        CB_THROW(CbExceptionFile, "CbStreamWriteBinary::Write",
                 "cannot write " + m_temporaryPath + ": " + std::strerror(errno));
    m_position += size;
}

void CbStreamWriteBinary::Write(const CString& text)
{
    Write(CStringA(text));
}

void CbStreamWriteBinary::Write(const CStringA& text)
{
    WriteCount(static_cast<std::uint32_t>(text.GetLength()));
    Write(text.GetString(), static_cast<std::size_t>(text.GetLength()));
}

void CbStreamWriteBinary::WriteCount(std::uint32_t count, unsigned int)
{
    Write(count);
}

void CbStreamWriteBinary::Close()
{
    if (!m_file)
        return;
    const bool flushed = std::fflush(m_file) == 0 && fsync(fileno(m_file)) == 0;
    const bool closed = std::fclose(m_file) == 0;
    m_file = nullptr;
    if (!flushed || !closed || std::rename(m_temporaryPath.c_str(), m_path.c_str()) != 0)
    {
        const std::string reason = std::strerror(errno);
        std::remove(m_temporaryPath.c_str());
        CB_THROW(CbExceptionFile, "CbStreamWriteBinary::Close", "cannot write " + m_path + ": " + reason);
    }
}
