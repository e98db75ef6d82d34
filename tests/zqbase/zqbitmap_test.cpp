// ZqBitmap: pixels and row table, PNG round trips with and without alpha, the refusal of broken
// or oversized PNG data with a message, and writes that leave no half file.

#include "basepool/cbexception.h"
#include "zqbase/zqbitmap.h"
#include "zqbase/zqtestenvironment.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <random>

namespace
{
ZqBitmap noise(unsigned int width, unsigned int height, unsigned int seed)
{
    ZqBitmap image(width, height);
    std::mt19937 random(seed);
    for (unsigned int y = 0; y < height; ++y)
        for (unsigned int x = 0; x < 4 * width; ++x)
            image.GetRow(y)[x] = static_cast<std::uint8_t>(random());
    return image;
}

std::string text(const CString& s)
{
    return CbWideToUtf8(s.Std());
}

std::filesystem::path scratch(const char* name)
{
    return std::filesystem::path(ZqTestEnvironment::GetScratchDirectory()) / name;
}
} // namespace

TEST(ZqBitmap, RowsAreTopDownThroughTheRowTableAndPixelsPackRGBA)
{
    ZqBitmap image(3, 2);
    EXPECT_EQ(image.GetPixel(2, 1), 0u);
    image.SetPixel(1, 1, 0x44332211u);
    const std::uint8_t* row = image.GetRowTable()[1];
    EXPECT_EQ(row, image.GetRow(1));
    EXPECT_EQ(row - image.GetRow(0), 12);
    EXPECT_EQ(row[4], 0x11);
    EXPECT_EQ(row[7], 0x44);
    // A copy has rows of its own.
    ZqBitmap copy = image;
    copy.SetPixel(1, 1, 0);
    EXPECT_EQ(image.GetPixel(1, 1), 0x44332211u);
    EXPECT_NE(copy.GetRow(0), image.GetRow(0));
    EXPECT_THROW(image.GetPixel(3, 0), CbExceptionPreconditionViolation);
    EXPECT_FALSE(image.Create(1u << 14, 1u << 13));
    EXPECT_TRUE(image.IsEmpty());
}

TEST(ZqBitmap, PngRoundTripKeepsEveryByteWithAlphaAndDropsAlphaWithout)
{
    const ZqBitmap image = noise(37, 11, 1);
    std::vector<std::uint8_t> png;
    ASSERT_TRUE(image.WriteToMemory(png, ZqBitmap::eWO_Alpha)) << text(image.GetLastError());
    ZqBitmap back;
    ASSERT_TRUE(back.ReadFromMemory(png.data(), png.size())) << text(back.GetLastError());
    EXPECT_TRUE(back == image);

    ASSERT_TRUE(image.WriteToMemory(png, ZqBitmap::eWO_None));
    ASSERT_TRUE(back.ReadFromMemory(png.data(), png.size()));
    ASSERT_EQ(back.GetWidth(), 37u);
    for (unsigned int y = 0; y < 11; ++y)
        for (unsigned int x = 0; x < 37; ++x)
            EXPECT_EQ(back.GetPixel(x, y), image.GetPixel(x, y) | 0xFF000000u) << x << "," << y;
}

TEST(ZqBitmap, FileRoundTripRenamesIntoPlaceAndLeavesNoTemporaryFile)
{
    const std::filesystem::path folder = scratch("bitmap-files");
    std::filesystem::create_directories(folder);
    const std::filesystem::path path = folder / "Bild ä.png";
    const ZqBitmap image = noise(5, 4, 2);
    ASSERT_TRUE(image.Write(CString(CbUtf8ToWide(path.string())), ZqBitmap::eWO_Alpha));
    ZqBitmap back;
    ASSERT_TRUE(back.Read(CString(CbUtf8ToWide(path.string()))));
    EXPECT_TRUE(back == image);
    EXPECT_EQ(
        std::distance(std::filesystem::directory_iterator(folder), std::filesystem::directory_iterator()), 1);
    // A folder that does not exist: false and a message, nothing thrown.
    EXPECT_FALSE(image.Write(CString(CbUtf8ToWide((folder / "fehlt" / "x.png").string()))));
    EXPECT_NE(text(image.GetLastError()).find("fehlt"), std::string::npos) << text(image.GetLastError());
    EXPECT_FALSE(back.Read(L"/nicht/da.png"));
    EXPECT_EQ(text(back.GetLastError()), "PNG /nicht/da.png: cannot be opened");
    std::filesystem::remove_all(folder);
}

TEST(ZqBitmap, BrokenPngIsRefusedWithAMessageAndLeavesTheImageEmpty)
{
    std::vector<std::uint8_t> png;
    ASSERT_TRUE(noise(16, 16, 3).WriteToMemory(png, ZqBitmap::eWO_Alpha));
    ZqBitmap image = noise(2, 2, 4);
    // Truncated inside the image data.
    EXPECT_FALSE(image.ReadFromMemory(png.data(), png.size() / 2));
    EXPECT_TRUE(image.IsEmpty());
    EXPECT_FALSE(image.GetLastError().IsEmpty());
    // Not a PNG at all, and nothing.
    const char text[] = "GIF89a not a png";
    EXPECT_FALSE(image.ReadFromMemory(text, sizeof(text)));
    EXPECT_FALSE(image.ReadFromMemory(text, 0));
    EXPECT_EQ(::text(image.GetLastError()), "empty input");
    // A flipped bit in the header's CRC-protected data.
    std::vector<std::uint8_t> corrupt = png;
    corrupt[18] ^= 0x40;
    EXPECT_FALSE(image.ReadFromMemory(corrupt.data(), corrupt.size()));
}

TEST(ZqBitmap, AHeaderClaimingAHugeImageIsRefusedBeforeAllocating)
{
    std::vector<std::uint8_t> png;
    ASSERT_TRUE(noise(1, 1, 5).WriteToMemory(png, ZqBitmap::eWO_Alpha));
    // Width and height are the big-endian words at 16 and 20; the chunk's CRC at 29 must match.
    const std::uint8_t huge[8] = {0x00, 0x01, 0x00, 0x00, 0x00, 0x01, 0x00, 0x00}; // 65536 x 65536
    std::copy(huge, huge + 8, png.begin() + 16);
    std::uint32_t crc = 0xFFFFFFFFu;
    for (std::size_t i = 12; i < 29; ++i)
    {
        crc ^= png[i];
        for (int k = 0; k < 8; ++k)
            crc = (crc >> 1) ^ (0xEDB88320u & (0u - (crc & 1u)));
    }
    crc ^= 0xFFFFFFFFu;
    for (int k = 0; k < 4; ++k)
        png[29 + k] = static_cast<std::uint8_t>(crc >> (24 - 8 * k));
    ZqBitmap image;
    EXPECT_FALSE(image.ReadFromMemory(png.data(), png.size()));
    EXPECT_EQ(text(image.GetLastError()), "65536 x 65536 pixels is above the limit");
}
