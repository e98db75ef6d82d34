#include "zq3dview/zqimagedifference.h"

#include "basepool/cbexception.h"
#include "zqbase/zqbitmap.h"

#include <algorithm>
#include <cstdlib>

ZqImageDifference ZqImageDifference::Measure(const ZqBitmap& rendered, const ZqBitmap& reference)
{
    ZqImageDifference d;
    d.width = rendered.GetWidth();
    d.height = rendered.GetHeight();
    d.referenceWidth = reference.GetWidth();
    d.referenceHeight = reference.GetHeight();
    d.sameSize = d.width == d.referenceWidth && d.height == d.referenceHeight;
    if (!d.sameSize)
        return d;
    for (unsigned int y = 0; y < d.height; ++y)
    {
        const std::uint8_t* a = rendered.GetRow(y);
        const std::uint8_t* b = reference.GetRow(y);
        for (unsigned int x = 0; x < d.width; ++x, a += 4, b += 4)
        {
            if (a[3] == 0 && b[3] == 0)
                continue;
            ++d.pixelsCompared;
            unsigned int largest = 0;
            for (unsigned int c = 0; c < 4; ++c)
            {
                const unsigned int error = unsigned(std::abs(int(a[c]) - int(b[c])));
                largest = std::max(largest, error);
                if (error > d.maxError)
                {
                    d.maxError = error;
                    d.maxX = x;
                    d.maxY = y;
                    d.maxChannel = c;
                }
            }
            if (largest > kFewSteps)
                ++d.pixelsOff;
        }
    }
    return d;
}

CString ZqImageDifference::Describe(const CString& viewName, float mean, float rms, float psnr) const
{
    if (!sameSize)
        return CbFormat(L"View '%s': Bild %u x %u, Referenz %u x %u.", viewName, width, height,
                        referenceWidth, referenceHeight);
    const double share = pixelsCompared ? 100.0 * double(pixelsOff) / double(pixelsCompared) : 0.0;
    return CbFormat(L"View '%s': Mittel %.3f, RMS %.3f, PSNR %.2f dB, größter Fehler %u (Kanal %c) bei Pixel "
                    L"(%u, %u), %.3f %% der Pixel mehr als %u Stufen daneben.",
                    viewName, double(mean), double(rms), double(psnr), maxError, L"RGBA"[maxChannel], maxX,
                    maxY, share, kFewSteps);
}

ZqBitmap ZqImageDifference::MakeDifferenceImage(const ZqBitmap& rendered, const ZqBitmap& reference)
{
    if (rendered.GetWidth() != reference.GetWidth() || rendered.GetHeight() != reference.GetHeight())
        CB_THROW(CbExceptionPreconditionViolation, "ZqImageDifference::MakeDifferenceImage", "sizes differ");
    ZqBitmap difference(rendered.GetWidth(), rendered.GetHeight());
    for (unsigned int y = 0; y < rendered.GetHeight(); ++y)
    {
        const std::uint8_t* a = rendered.GetRow(y);
        const std::uint8_t* b = reference.GetRow(y);
        std::uint8_t* out = difference.GetRow(y);
        for (unsigned int i = 0; i < rendered.GetWidth() * 4; ++i)
            out[i] = (i & 3) == 3 ? 255 : std::uint8_t(std::min(8 * std::abs(int(a[i]) - int(b[i])), 255));
    }
    return difference;
}
