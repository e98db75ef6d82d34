#include "basepool/cbexception.h"
#include "basepool/cbstreamreadbinary.h"
#include "basepool/cbstreamwritebinary.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <sys/stat.h>
#include <unistd.h>

namespace
{
mode_t modeOf(const std::string& path)
{
    struct stat info;
    EXPECT_EQ(stat(path.c_str(), &info), 0) << path;
    return info.st_mode & 07777;
}

struct ScratchFile
{
    std::string path = (std::filesystem::temp_directory_path() /
                        ("cbstreamwritebinary_test_" + std::to_string(getpid()) + ".bin"))
                           .string();
    ~ScratchFile() { std::filesystem::remove(path); }
};
} // namespace

TEST(CbStreamWriteBinaryFile, NewFilesGetTheUmaskModeAndReplacedFilesKeepTheirs)
{
    ScratchFile file;
    const mode_t previous = umask(027);
    {
        CbStreamWriteBinary stream(file.path, 1);
        stream.Write(std::uint32_t(7));
        stream.Close();
    }
    EXPECT_EQ(modeOf(file.path), 0640u);

    ASSERT_EQ(chmod(file.path.c_str(), 0604), 0);
    {
        CbStreamWriteBinary stream(file.path, 1);
        stream.Write(std::uint32_t(8));
        stream.Close();
    }
    umask(previous);
    EXPECT_EQ(modeOf(file.path), 0604u);
    EXPECT_EQ(std::filesystem::file_size(file.path), 4u);
}

TEST(CbStreamWriteBinaryFile, AStreamDestroyedWithoutCloseLeavesTheOldFileAndNoTemporary)
{
    ScratchFile file;
    {
        CbStreamWriteBinary stream(file.path, 1);
        stream.Write(std::uint32_t(1));
        stream.Close();
    }
    {
        CbStreamWriteBinary stream(file.path, 1);
        stream.Write(std::uint64_t(2));
    }
    EXPECT_EQ(std::filesystem::file_size(file.path), 4u);
    for (const auto& entry :
         std::filesystem::directory_iterator(std::filesystem::path(file.path).parent_path()))
        EXPECT_EQ(entry.path().string().find(file.path + ".tmp"), std::string::npos) << entry.path();
}

TEST(CbStreamReadBinary, ABoolIsOneByteOfZeroOrOneAndAnyOtherByteIsRefusedWithItsPosition)
{
    std::vector<unsigned char> bytes;
    CbStreamWriteBinary out(bytes);
    out << true << false;
    bytes.push_back(2);
    CbStreamReadBinary in(bytes);
    bool first = false, second = true, third = false;
    in >> first >> second;
    EXPECT_TRUE(first);
    EXPECT_FALSE(second);
    try
    {
        in >> third;
        FAIL() << "a bool of value 2 was read";
    }
    catch (const CbExceptionWrongFileVersion& e)
    {
        EXPECT_STREQ(e.GetDetail(), "a bool of value 2 at byte 2");
    }
}
