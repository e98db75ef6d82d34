// The array serializer: its byte layout, round trips through memory and files, and the strong
// guarantee on bad count markers, truncated data and counts the stream cannot hold.

#include "basepool/cbarray.h"
#include "basepool/cbarray_serializer.h"
#include "basepool/cbvector2.h"
#include "basepool/cstring.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <filesystem>
#include <string>
#include <vector>

namespace
{
using CBytes = std::vector<unsigned char>;

template <class T> CBytes written(const T& value)
{
    CBytes bytes;
    CbStreamWriteBinary stream(bytes);
    stream << value;
    return bytes;
}

// A trivially copyable element with stream operators of its own: one byte each.
struct SLevel
{
    unsigned char level;
    bool operator==(const SLevel&) const = default;
};
CbStreamWriteBinary& operator<<(CbStreamWriteBinary& stream, const SLevel& value)
{
    stream.Write(&value.level, 1);
    return stream;
}
CbStreamReadBinary& operator>>(CbStreamReadBinary& stream, SLevel& value)
{
    stream.Read(&value.level, 1);
    return stream;
}

template <class T> void readInto(const CBytes& bytes, T& value)
{
    CbStreamReadBinary stream(bytes);
    stream >> value;
}

std::string scratchPath(const char* name)
{
    return (std::filesystem::temp_directory_path() / (std::string("cbarray_serializer_") + name)).string();
}
} // namespace

TEST(CbArraySerializer, WritesTheCountThenTheElements)
{
    EXPECT_EQ(written(CbArray<int>({1, -2})), (CBytes{2, 0, 0, 0, 1, 0, 0, 0, 0xFE, 0xFF, 0xFF, 0xFF}));
    EXPECT_EQ(written(CbArray<int>()), (CBytes{0, 0, 0, 0}));
    EXPECT_EQ(written(CbArray<CString>({L"ab"})), (CBytes{1, 0, 0, 0, 2, 0, 0, 0, 'a', 'b'}));
    EXPECT_EQ(written(CbArray<CbArray<short>>({{7}, {}})),
              (CBytes{2, 0, 0, 0, 1, 0, 0, 0, 7, 0, 0, 0, 0, 0}));
    // An element type with operators of its own is written through them, not as raw bytes.
    EXPECT_EQ(written(CbArray<SLevel>({{3}, {4}})), (CBytes{2, 0, 0, 0, 3, 4}));
}

TEST(CbArraySerializer, RoundTripsKeepEveryElement)
{
    const CbArray<CbVector2f> points = {{1.5f, -0.0f}, {3e38f, 1e-45f}};
    const CbArray<CbArray<CString>> nested = {{L"Grüße", L""}, {}, {L"x"}};
    const CbArray<SLevel> levels = {{1}, {255}};
    CBytes bytes = written(points);
    CbStreamWriteBinary more(bytes);
    more << nested << levels;

    CbArray<CbVector2f> pointsRead = {{9, 9}};
    CbArray<CbArray<CString>> nestedRead;
    CbArray<SLevel> levelsRead;
    CbStreamReadBinary stream(bytes);
    stream >> pointsRead >> nestedRead >> levelsRead;
    EXPECT_TRUE(stream.IsAtEnd());
    EXPECT_TRUE(pointsRead == points);
    EXPECT_TRUE(std::signbit(pointsRead[0].y));
    EXPECT_TRUE(nestedRead == nested);
    EXPECT_TRUE(levelsRead == levels);
}

TEST(CbArraySerializer, ReadingKeepsALargeEnoughBlockAndSizesANewOneExactly)
{
    const CBytes bytes = written(CbArray<double>({1, 2, 3}));
    CbArray<double> roomy;
    roomy.SetCapacity(10);
    const double* block = roomy.GetData();
    readInto(bytes, roomy);
    EXPECT_EQ(roomy.GetData(), block);
    EXPECT_EQ(roomy.GetCapacity(), 10u);
    CbArray<double> tight = {5};
    readInto(bytes, tight);
    EXPECT_EQ(tight.GetCapacity(), 3u);
    EXPECT_TRUE(tight == CbArray<double>({1, 2, 3}));
}

TEST(CbArraySerializer, CountMarkerOfAllOnesIsAWrongVersion)
{
    CBytes bytes = written(CbArray<int>({1, 2, 3}));
    bytes[0] = bytes[1] = bytes[2] = bytes[3] = 0xFF;
    CbArray<int> array = {4, 5};
    const int* block = array.GetData();
    try
    {
        readInto(bytes, array);
        FAIL() << "no exception";
    }
    catch (const CbExceptionWrongFileVersion& e)
    {
        EXPECT_STREQ(e.GetFile(), "core/basepool/cbarray_serializer.h");
        EXPECT_STREQ(e.GetFunction(), "CbArraySerializer::Read");
    }
    EXPECT_EQ(array.GetData(), block);
    EXPECT_TRUE(array == CbArray<int>({4, 5}));
}

TEST(CbArraySerializer, EveryTruncationThrowsAndLosesNothing)
{
    const CbArray<CbArray<CString>> nested = {{L"eins", L"zwei"}, {}, {L"drei"}};
    const CbArray<CbVector2d> points = {{1, 2}, {3, 4}, {5, 6}};
    const CBytes nestedBytes = written(nested);
    const CBytes pointBytes = written(points);
    for (std::size_t length = 0; length < nestedBytes.size(); ++length)
    {
        CbArray<CbArray<CString>> target = {{L"alt"}};
        CbStreamReadBinary stream(nestedBytes.data(), length);
        EXPECT_THROW(stream >> target, CbExceptionWrongFileVersion) << length;
        ASSERT_EQ(target.GetCount(), 1u) << length;
        EXPECT_EQ(target[0][0], CString(L"alt")) << length;
    }
    for (std::size_t length = 0; length < pointBytes.size(); ++length)
    {
        CbArray<CbVector2d> target = {{-1, -1}};
        CbStreamReadBinary stream(pointBytes.data(), length);
        EXPECT_THROW(stream >> target, CbExceptionWrongFileVersion) << length;
        EXPECT_TRUE(target == CbArray<CbVector2d>({{-1, -1}})) << length;
    }
}

TEST(CbArraySerializer, CountBeyondTheStreamIsRefusedBeforeAllocating)
{
    // 0xFFFFFFFE doubles would need 32 GiB; four bytes of data are left.
    const CBytes bytes = {0xFE, 0xFF, 0xFF, 0xFF, 1, 2, 3, 4};
    CbArray<double> array;
    EXPECT_THROW(readInto(bytes, array), CbExceptionWrongFileVersion);
    EXPECT_EQ(array.GetCapacity(), 0u);
    // Strings have no fixed size: their array grows only as elements arrive.
    CbArray<CString> texts;
    EXPECT_THROW(readInto(bytes, texts), CbExceptionWrongFileVersion);
    EXPECT_EQ(texts.GetCapacity(), 0u);
}

TEST(CbArraySerializer, FilesAreWrittenWholeOrNotAtAll)
{
    const std::string path = scratchPath("whole.bin");
    std::remove(path.c_str());
    const CbArray<int> numbers = {1, 2, 3, 4, 5};
    {
        CbStreamWriteBinary abandoned(path);
        abandoned << numbers;
    }
    EXPECT_FALSE(std::filesystem::exists(path));
    {
        CbStreamWriteBinary file(path);
        file << numbers;
        file.Close();
    }
    CbArray<int> read;
    {
        CbStreamReadBinary file(path);
        EXPECT_EQ(file.GetRemaining(), 4u + 5 * 4);
        file >> read;
        EXPECT_EQ(file.GetRemaining(), 0u);
    }
    EXPECT_TRUE(read == numbers);

    std::filesystem::resize_file(path, 4 + 4 * 4 + 1);
    CbArray<int> target = {9};
    {
        CbStreamReadBinary file(path);
        EXPECT_THROW(file >> target, CbExceptionWrongFileVersion);
    }
    EXPECT_TRUE(target == CbArray<int>({9}));
    std::remove(path.c_str());
}
