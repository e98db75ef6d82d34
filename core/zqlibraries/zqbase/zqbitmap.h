#pragma once

#include "basepool/cstring.h"
#include "zqbase/zqbase_export.h"

#include <cstddef>
#include <cstdint>
#include <vector>

// An image of 8-bit RGBA pixels, rows top-down, reached through a row table (GetRow). A pixel is
// four bytes R, G, B, A in memory; GetPixel/SetPixel pack them into one 32-bit value with R in the
// low byte, the packing of ZqColorRGBA::ToRGBA8. Alpha is straight, not premultiplied.
//
// PNG files are read and written through libpng:
//
//     ZqBitmap image(1600, 900);                           // transparent black
//     image.SetPixel(0, 0, ZqColorRGBA::Red.ToRGBA8());
//     image.Write(L"out.png", ZqBitmap::eWO_Alpha);        // RGBA file, written atomically
//     ZqBitmap back;
//     if (!back.Read(L"out.png"))
//         puts(CbWideToUtf8(back.GetLastError().Std()).c_str());
class ZQBASE_API ZqBitmap
{
public:
    // Options of Write, combinable bit flags.
    enum EWriteOptions : unsigned int
    {
        eWO_None = 0,  // colour type RGB: alpha is dropped and reads back as 255
        eWO_Alpha = 8, // colour type RGBA: all four channels are kept (reference images need this)
    };

    static constexpr unsigned int kBytesPerPixel = 4;
    // The largest image Create and Read accept (8192 x 8192 pixels, 256 MiB): a PNG header may
    // claim any size, and a reader of untrusted files must not allocate what a header asks for.
    static constexpr std::size_t kMaxPixels = std::size_t(1) << 26;

    ZqBitmap() = default;
    // width x height transparent black pixels; throws CbExceptionMemory above kMaxPixels.
    ZqBitmap(unsigned int width, unsigned int height);
    ZqBitmap(const ZqBitmap& other);
    ZqBitmap(ZqBitmap&& other) noexcept;
    ZqBitmap& operator=(const ZqBitmap& other);
    ZqBitmap& operator=(ZqBitmap&& other) noexcept;
    ~ZqBitmap();

    // Makes the image width x height transparent black pixels; false (and empty) above kMaxPixels.
    bool Create(unsigned int width, unsigned int height);
    void Destroy();

    unsigned int GetWidth() const { return m_width; }
    unsigned int GetHeight() const { return m_height; }
    bool IsEmpty() const { return m_width == 0 || m_height == 0; }
    // Bytes from one row to the next.
    std::size_t GetStride() const { return std::size_t(m_width) * kBytesPerPixel; }

    // Row y, 0 at the top; the row table holds GetHeight() row pointers.
    std::uint8_t* GetRow(unsigned int y) { return m_rows[y]; }
    const std::uint8_t* GetRow(unsigned int y) const { return m_rows[y]; }
    const std::uint8_t* const* GetRowTable() const { return m_rows.data(); }

    std::uint32_t GetPixel(unsigned int x, unsigned int y) const;
    void SetPixel(unsigned int x, unsigned int y, std::uint32_t rgba);
    void Fill(std::uint32_t rgba);

    // Equal size and equal bytes.
    bool operator==(const ZqBitmap& other) const;

    // Reads a PNG of any colour type and bit depth, converted to 8-bit RGBA (sRGB). On failure the
    // image is left empty, false is returned and GetLastError says why in one line.
    bool Read(const CString& fileName);
    bool ReadFromMemory(const void* data, std::size_t size);
    // Writes a PNG (options: EWriteOptions) through a temporary file renamed into place. On failure
    // the target is untouched, false is returned and GetLastError says why.
    bool Write(const CString& fileName, unsigned int options = eWO_None) const;
    bool WriteToMemory(std::vector<std::uint8_t>& png, unsigned int options = eWO_None) const;

    // Why the last Read or Write failed; empty after one that succeeded.
    const CString& GetLastError() const { return m_lastError; }

private:
    void buildRowTable();
    bool fail(const CString& text) const;

    unsigned int m_width = 0;
    unsigned int m_height = 0;
    std::vector<std::uint8_t> m_pixels;
    std::vector<std::uint8_t*> m_rows;
    mutable CString m_lastError;
};
