// PNG reading and writing of ZqBitmap through libpng's simplified interface, which reports errors
// as return values (no setjmp/longjmp through our frames) and converts every colour type and bit
// depth to the 8-bit RGBA we keep.

#include "zqbase/zqbitmap.h"

#include "basepool/cbexception.h"
#include "basepool/cbstreamwritebinary.h"

#include <png.h>

#include <fstream>
#include <iterator>

namespace
{
// Frees libpng's state on every path out of a read.
struct SImage
{
    png_image image{};
    SImage() { image.version = PNG_IMAGE_VERSION; }
    ~SImage() { png_image_free(&image); }
    SImage(const SImage&) = delete;
    SImage& operator=(const SImage&) = delete;
    CString Message() const { return CString(image.message); }
};
} // namespace

bool ZqBitmap::Read(const CString& fileName)
{
    const std::string path = CbWideToUtf8(fileName.Std());
    std::ifstream in(path, std::ios::binary);
    if (!in)
    {
        Destroy();
        return fail(L"PNG " + fileName + L": cannot be opened");
    }
    const std::vector<char> bytes((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
    if (!ReadFromMemory(bytes.data(), bytes.size()))
        return fail(L"PNG " + fileName + L": " + m_lastError);
    return true;
}

bool ZqBitmap::ReadFromMemory(const void* data, std::size_t size)
{
    Destroy();
    SImage png;
    if (size == 0 || !png_image_begin_read_from_memory(&png.image, data, size))
        return fail(size == 0 ? CString(L"empty input") : png.Message());
    if (std::size_t(png.image.width) * png.image.height > kMaxPixels)
        return fail(CbFormat(L"%u x %u pixels is above the limit", png.image.width, png.image.height));
    png.image.format = PNG_FORMAT_RGBA;
    ZqBitmap image;
    image.Create(png.image.width, png.image.height);
    if (!png_image_finish_read(&png.image, nullptr, image.m_pixels.data(),
                               static_cast<png_int_32>(image.GetStride()), nullptr))
        return fail(png.Message());
    *this = std::move(image);
    m_lastError.Empty();
    return true;
}

bool ZqBitmap::WriteToMemory(std::vector<std::uint8_t>& out, unsigned int options) const
{
    out.clear();
    if (IsEmpty())
        return fail(L"an empty image cannot be written as PNG");
    const bool alpha = (options & eWO_Alpha) != 0;
    // Without alpha libpng reads three bytes a pixel, so the colours are packed first.
    std::vector<std::uint8_t> rgb;
    if (!alpha)
    {
        rgb.resize(std::size_t(m_width) * m_height * 3);
        for (std::size_t i = 0, j = 0; i < m_pixels.size(); i += kBytesPerPixel, j += 3)
        {
            rgb[j] = m_pixels[i];
            rgb[j + 1] = m_pixels[i + 1];
            rgb[j + 2] = m_pixels[i + 2];
        }
    }
    SImage png;
    png.image.width = m_width;
    png.image.height = m_height;
    png.image.format = alpha ? PNG_FORMAT_RGBA : PNG_FORMAT_RGB;
    const void* source = alpha ? static_cast<const void*>(m_pixels.data()) : rgb.data();
    png_alloc_size_t size = 0;
    if (!png_image_write_to_memory(&png.image, nullptr, &size, 0, source, 0, nullptr))
        return fail(png.Message());
    out.resize(size);
    if (!png_image_write_to_memory(&png.image, out.data(), &size, 0, source, 0, nullptr))
    {
        out.clear();
        return fail(png.Message());
    }
    out.resize(size);
    m_lastError.Empty();
    return true;
}

bool ZqBitmap::Write(const CString& fileName, unsigned int options) const
{
    std::vector<std::uint8_t> png;
    if (!WriteToMemory(png, options))
        return fail(L"PNG " + fileName + L": " + m_lastError);
    try
    {
        CbStreamWriteBinary file(CbWideToUtf8(fileName.Std()));
        file.Write(png.data(), png.size());
        file.Close();
    }
    catch (const CbException& e)
    {
        return fail(L"PNG " + fileName + L": " + CString(e.GetDetail()));
    }
    m_lastError.Empty();
    return true;
}
