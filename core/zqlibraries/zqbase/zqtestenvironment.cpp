#include "zqbase/zqtestenvironment.h"

#include "basepool/cbexception.h"

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <mutex>
#include <unistd.h>

#ifndef ZQ_DEFAULT_DATA_ROOT
#define ZQ_DEFAULT_DATA_ROOT "testing/zqunittests/data"
#endif

namespace
{
struct SState
{
    std::mutex mutex;
    std::optional<std::string> dataRoot;
    std::optional<std::string> scratch;
    // The directory made here on first use, removed at exit whatever is set later; only by the process
    // that made it, so a forked child that exits normally leaves its parent's directory alone.
    std::optional<std::string> madeScratch;
    pid_t madeBy = 0;
    std::optional<std::optional<std::uint32_t>> replaySeed;
    bool debugOutput = false;

    ~SState()
    {
        if (madeScratch && madeBy == getpid())
        {
            std::error_code ignored;
            std::filesystem::remove_all(*madeScratch, ignored);
        }
    }
};

SState& state()
{
    static SState instance;
    return instance;
}
} // namespace

std::string ZqTestEnvironment::GetDataRoot()
{
    SState& s = state();
    std::lock_guard<std::mutex> lock(s.mutex);
    if (s.dataRoot)
        return *s.dataRoot;
    if (const char* env = std::getenv("ZQ_TEST_DATA"); env && *env)
        return env;
    return ZQ_DEFAULT_DATA_ROOT;
}

void ZqTestEnvironment::SetDataRoot(const std::string& root)
{
    SState& s = state();
    std::lock_guard<std::mutex> lock(s.mutex);
    s.dataRoot = root;
}

std::string ZqTestEnvironment::GetDataDirectory(const wchar_t* className)
{
    return GetDataRoot() + "/" + CbWideToUtf8(className ? className : L"");
}

std::string ZqTestEnvironment::GetScratchDirectory()
{
    SState& s = state();
    std::lock_guard<std::mutex> lock(s.mutex);
    if (!s.scratch)
    {
        std::string pattern = (std::filesystem::temp_directory_path() / "zqtest-XXXXXX").string();
        if (!mkdtemp(pattern.data()))
            CB_THROW(CbExceptionFile, "ZqTestEnvironment::GetScratchDirectory",
                     "cannot create " + pattern + ": " + std::strerror(errno));
        s.scratch = pattern;
        s.madeScratch = pattern;
        s.madeBy = getpid();
    }
    return *s.scratch;
}

void ZqTestEnvironment::SetScratchDirectory(const std::string& directory)
{
    SState& s = state();
    std::lock_guard<std::mutex> lock(s.mutex);
    s.scratch = directory;
}

std::optional<std::uint32_t> ZqTestEnvironment::GetReplaySeed()
{
    SState& s = state();
    std::lock_guard<std::mutex> lock(s.mutex);
    if (s.replaySeed)
        return *s.replaySeed;
    if (const char* env = std::getenv("ZQ_RANDOM_SEED"); env && *env)
    {
        // Seed messages print the 32-bit seed with %d, so a negative value is its two's complement.
        char* end = nullptr;
        errno = 0;
        const long long value = std::strtoll(env, &end, 0);
        if (errno == 0 && end != env && *end == 0 && value >= -0x80000000ll && value <= 0xFFFFFFFFll)
            return static_cast<std::uint32_t>(value);
    }
    return std::nullopt;
}

void ZqTestEnvironment::SetReplaySeed(std::optional<std::uint32_t> seed)
{
    SState& s = state();
    std::lock_guard<std::mutex> lock(s.mutex);
    s.replaySeed = seed;
}

bool ZqTestEnvironment::IsDebugOutputEnabled()
{
    SState& s = state();
    std::lock_guard<std::mutex> lock(s.mutex);
    return s.debugOutput;
}

void ZqTestEnvironment::SetDebugOutputEnabled(bool enabled)
{
    SState& s = state();
    std::lock_guard<std::mutex> lock(s.mutex);
    s.debugOutput = enabled;
}
