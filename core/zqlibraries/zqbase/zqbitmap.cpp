#include "zqbase/zqbitmap.h"

#include "basepool/cbexception.h"

#include <algorithm>
#include <cstring>
#include <string>
#include <utility>

ZqBitmap::ZqBitmap(unsigned int width, unsigned int height)
{
    if (!Create(width, height))
        CB_THROW(CbExceptionMemory, "ZqBitmap::ZqBitmap",
                 std::to_string(width) + " x " + std::to_string(height) + " pixels is above the limit");
}

ZqBitmap::ZqBitmap(const ZqBitmap& other)
    : m_width(other.m_width), m_height(other.m_height), m_pixels(other.m_pixels),
      m_lastError(other.m_lastError)
{
    buildRowTable();
}

ZqBitmap::ZqBitmap(ZqBitmap&& other) noexcept
    : m_width(std::exchange(other.m_width, 0)), m_height(std::exchange(other.m_height, 0)),
      m_pixels(std::move(other.m_pixels)), m_rows(std::move(other.m_rows)),
      m_lastError(std::move(other.m_lastError))
{
    other.m_pixels.clear();
    other.m_rows.clear();
}

ZqBitmap& ZqBitmap::operator=(const ZqBitmap& other)
{
    if (this != &other)
    {
        ZqBitmap copy(other);
        *this = std::move(copy);
    }
    return *this;
}

ZqBitmap& ZqBitmap::operator=(ZqBitmap&& other) noexcept
{
    m_width = std::exchange(other.m_width, 0);
    m_height = std::exchange(other.m_height, 0);
    m_pixels = std::move(other.m_pixels);
    m_rows = std::move(other.m_rows);
    m_lastError = std::move(other.m_lastError);
    other.m_pixels.clear();
    other.m_rows.clear();
    return *this;
}

ZqBitmap::~ZqBitmap() = default;

bool ZqBitmap::Create(unsigned int width, unsigned int height)
{
    Destroy();
    if (std::size_t(width) * height > kMaxPixels)
        return false;
    m_width = width;
    m_height = height;
    m_pixels.assign(std::size_t(width) * height * kBytesPerPixel, 0);
    buildRowTable();
    return true;
}

void ZqBitmap::Destroy()
{
    m_width = m_height = 0;
    m_pixels.clear();
    m_pixels.shrink_to_fit();
    m_rows.clear();
}

void ZqBitmap::buildRowTable()
{
    m_rows.resize(m_height);
    for (unsigned int y = 0; y < m_height; ++y)
        m_rows[y] = m_pixels.data() + y * GetStride();
}

std::uint32_t ZqBitmap::GetPixel(unsigned int x, unsigned int y) const
{
    if (x >= m_width || y >= m_height)
        CB_THROW(CbExceptionPreconditionViolation, "ZqBitmap::GetPixel");
    std::uint32_t rgba;
    std::memcpy(&rgba, m_rows[y] + std::size_t(x) * kBytesPerPixel, sizeof(rgba));
    return rgba;
}

void ZqBitmap::SetPixel(unsigned int x, unsigned int y, std::uint32_t rgba)
{
    if (x >= m_width || y >= m_height)
        CB_THROW(CbExceptionPreconditionViolation, "ZqBitmap::SetPixel");
    std::memcpy(m_rows[y] + std::size_t(x) * kBytesPerPixel, &rgba, sizeof(rgba));
}

void ZqBitmap::Fill(std::uint32_t rgba)
{
    for (std::size_t i = 0; i < m_pixels.size(); i += kBytesPerPixel)
        std::memcpy(m_pixels.data() + i, &rgba, sizeof(rgba));
}

bool ZqBitmap::operator==(const ZqBitmap& other) const
{
    return m_width == other.m_width && m_height == other.m_height && m_pixels == other.m_pixels;
}

bool ZqBitmap::fail(const CString& text) const
{
    m_lastError = text;
    return false;
}
