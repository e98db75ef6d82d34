// Feeds arbitrary bytes to the PNG reader of ZqBitmap: it must either read an image whose size and
// row table agree, or refuse with a message, without a memory error or an allocation past its limit.

#include "zqbase/zqbitmap.h"

#include <cstddef>
#include <cstdint>
#include <cstdlib>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    ZqBitmap image;
    if (image.ReadFromMemory(data, size))
    {
        if (image.IsEmpty() || std::size_t(image.GetWidth()) * image.GetHeight() > ZqBitmap::kMaxPixels)
            std::abort();
        // Touch the first and last byte of the last row through the row table.
        const std::uint8_t* last = image.GetRowTable()[image.GetHeight() - 1];
        volatile std::uint8_t sink = last[0] ^ last[image.GetStride() - 1];
        (void)sink;
    }
    else if (image.GetLastError().IsEmpty() || !image.IsEmpty())
        std::abort();
    return 0;
}
