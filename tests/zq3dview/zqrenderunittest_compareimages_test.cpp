// CompareImages: the edge cases of the PSNR gate, each option, and agreement of the vectorised
// sums with a plain double loop written from the definition, on random images of awkward widths.

#include "zq3dview/zqrenderunittest.h"
#include "zqbase/zqbitmap.h"

#include <gtest/gtest.h>

#include <cmath>
#include <random>

namespace
{
using R = ZqRenderUnitTest;

// The comparison as defined, pixel by pixel in double.
R::SImageDiff referenceCompare(const ZqBitmap& a, const ZqBitmap& b, unsigned int options)
{
    if (a.GetWidth() != b.GetWidth() || a.GetHeight() != b.GetHeight())
        return {R::sc_fInfinity, R::sc_fInfinity, 0.0f};
    const bool ignoreAlpha = options & R::eIgnoreAlpha;
    const bool premultiply = (options & R::ePremultiplyAlpha) && !ignoreAlpha;
    double sumAbs = 0, sumSq = 0, counted = 0;
    for (unsigned int y = 0; y < a.GetHeight(); ++y)
        for (unsigned int x = 0; x < a.GetWidth(); ++x)
        {
            const std::uint8_t* p = a.GetRow(y) + 4 * x;
            const std::uint8_t* q = b.GetRow(y) + 4 * x;
            if ((options & R::eIgnoreTransparent) && p[3] == 0 && q[3] == 0)
                continue;
            for (int c = 0; c < 3; ++c)
            {
                const double u = premultiply ? p[c] * (p[3] / 255.0) : p[c];
                const double v = premultiply ? q[c] * (q[3] / 255.0) : q[c];
                sumAbs += std::fabs(u - v);
                sumSq += (u - v) * (u - v);
            }
            if (!ignoreAlpha && !(options & R::ePremultiplyAlpha))
            {
                sumAbs += std::abs(p[3] - q[3]);
                sumSq += double(p[3] - q[3]) * (p[3] - q[3]);
            }
            ++counted;
        }
    if (counted == 0)
        return {};
    const double n = counted * (ignoreAlpha || (options & R::ePremultiplyAlpha) ? 3 : 4);
    const double rms = std::sqrt(sumSq / n);
    return {float(sumAbs / n), float(rms), rms > 0 ? float(20 * std::log10(255 / rms)) : R::sc_fInfinity};
}

ZqBitmap randomImage(unsigned int width, unsigned int height, std::mt19937& random, int transparentShare)
{
    ZqBitmap image(width, height);
    std::uniform_int_distribution<int> byte(0, 255), percent(0, 99);
    for (unsigned int y = 0; y < height; ++y)
        for (unsigned int x = 0; x < 4 * width; ++x)
            image.GetRow(y)[x] = std::uint8_t(byte(random));
    for (unsigned int y = 0; y < height; ++y)
        for (unsigned int x = 0; x < width; ++x)
            if (percent(random) < transparentShare)
                image.GetRow(y)[4 * x + 3] = 0;
    return image;
}

// b = a with small changes, so that the PSNR lies in the range the gate decides in.
ZqBitmap perturbed(const ZqBitmap& a, std::mt19937& random)
{
    ZqBitmap b = a;
    std::uniform_int_distribution<int> step(-3, 3), percent(0, 99);
    for (unsigned int y = 0; y < b.GetHeight(); ++y)
        for (unsigned int x = 0; x < 4 * b.GetWidth(); ++x)
            if (percent(random) < 30)
                b.GetRow(y)[x] = std::uint8_t(std::clamp(b.GetRow(y)[x] + step(random), 0, 255));
    return b;
}

R::SImageDiff compare(const ZqBitmap& a, const ZqBitmap& b, unsigned int options)
{
    return R::CompareImages(a, b, R::ECompareOptions(options));
}

void expectDiff(const R::SImageDiff& diff, float mean, float rms, float psnr)
{
    EXPECT_FLOAT_EQ(diff.fMeanAbsError, mean);
    EXPECT_FLOAT_EQ(diff.fRMSError, rms);
    if (std::isinf(psnr))
        EXPECT_EQ(diff.fPSNR, psnr);
    else
        EXPECT_NEAR(diff.fPSNR, psnr, 1e-4f);
}
} // namespace

TEST(ZqRenderUnitTestCompareImages, IdenticalImagesAreInfinitelyGoodUnderEveryOption)
{
    std::mt19937 random(7);
    const ZqBitmap a = randomImage(37, 5, random, 20);
    for (unsigned int options = 0; options < 8; ++options)
        expectDiff(compare(a, a, options), 0, 0, R::sc_fInfinity);
    const R::SImageDiff fresh;
    expectDiff(fresh, 0, 0, R::sc_fInfinity);
}

TEST(ZqRenderUnitTestCompareImages, PixelsTransparentInBothCountOnlyWithoutIgnoreTransparent)
{
    ZqBitmap a(16, 3), b(16, 3);
    a.Fill(0x00FF0000u); // blue colour, alpha 0
    b.Fill(0x0000FF00u); // green colour, alpha 0
    // Nothing counted: identical by definition.
    expectDiff(compare(a, b, R::eIgnoreTransparent), 0, 0, R::sc_fInfinity);
    expectDiff(compare(a, b, R::eIgnoreTransparent | R::ePremultiplyAlpha), 0, 0, R::sc_fInfinity);
    // Counted, premultiplied by alpha 0: no difference.
    expectDiff(compare(a, b, R::ePremultiplyAlpha), 0, 0, R::sc_fInfinity);
    // Counted as stored: two of four channels differ by 255 in every pixel.
    expectDiff(compare(a, b, 0), 127.5f, std::sqrt(65025.0f / 2), float(20 * std::log10(std::sqrt(2.0))));
    // One opaque pixel makes transparency matter only for the others.
    a.SetPixel(5, 1, 0xFF0000FFu);
    expectDiff(compare(a, b, R::eIgnoreTransparent | R::ePremultiplyAlpha), 85.0f, std::sqrt(65025.0f / 3),
               float(20 * std::log10(std::sqrt(3.0))));
}

TEST(ZqRenderUnitTestCompareImages, SizeMismatchGivesPSNRZero)
{
    const ZqBitmap a(1, 1), b(1, 2), c(2, 1);
    for (unsigned int options : {0u, 3u, 4u})
    {
        expectDiff(compare(a, b, options), R::sc_fInfinity, R::sc_fInfinity, 0.0f);
        expectDiff(compare(a, c, options), R::sc_fInfinity, R::sc_fInfinity, 0.0f);
    }
    EXPECT_LT(compare(a, b, 3).fPSNR, R::sc_fDefaultPSNRThreshold);
}

TEST(ZqRenderUnitTestCompareImages, OneChannelOff255InOnePixelIsSixDecibels)
{
    ZqBitmap a(1, 1), b(1, 1);
    a.SetPixel(0, 0, 0xFF000000u);
    b.SetPixel(0, 0, 0xFF0000FFu);
    expectDiff(compare(a, b, 0), 63.75f, 127.5f, 6.0206f);
    // Among three colour channels (alpha left out) the same error weighs more.
    expectDiff(compare(a, b, R::eIgnoreAlpha), 85.0f, std::sqrt(65025.0f / 3), 4.7712f);
}

TEST(ZqRenderUnitTestCompareImages, EachOptionChangesWhatIsCompared)
{
    ZqBitmap a(8, 1), b(8, 1);
    // Same colour, alphas 255 and 51: premultiplied the colour differs by 204 / 255 of it.
    a.Fill(0xFF6432C8u);
    b.Fill(0x336432C8u);
    const R::SImageDiff straight = compare(a, b, 0);
    EXPECT_FLOAT_EQ(straight.fMeanAbsError, 204.0f / 4);
    EXPECT_FLOAT_EQ(compare(a, b, R::eIgnoreAlpha).fMeanAbsError, 0.0f);
    // Premultiplied: (200 + 50 + 100) * 204 / 255 over three channels.
    EXPECT_FLOAT_EQ(compare(a, b, R::ePremultiplyAlpha).fMeanAbsError, 350.0f * 204 / 255 / 3);
    // eIgnoreAlpha wins over ePremultiplyAlpha.
    EXPECT_FLOAT_EQ(compare(a, b, R::ePremultiplyAlpha | R::eIgnoreAlpha).fMeanAbsError, 0.0f);
    // eIgnoreTransparent skips nothing when one of the two is visible.
    EXPECT_FLOAT_EQ(compare(a, b, R::eIgnoreTransparent).fMeanAbsError, straight.fMeanAbsError);
}

TEST(ZqRenderUnitTestCompareImages, VectorisedSumsAgreeWithThePlainLoopForEveryOption)
{
    std::mt19937 random(20240611);
    // Widths below, at and around the eight pixels of one vector step, and a rendered size.
    for (unsigned int width : {1u, 7u, 8u, 9u, 31u, 1600u})
        for (int transparentShare : {0, 40, 100})
        {
            const ZqBitmap a = randomImage(width, 3, random, transparentShare);
            const ZqBitmap close = perturbed(a, random);
            const ZqBitmap far = randomImage(width, 3, random, transparentShare);
            for (unsigned int options = 0; options < 8; ++options)
                for (const ZqBitmap* b : {&close, &far})
                {
                    const R::SImageDiff expected = referenceCompare(a, *b, options);
                    const R::SImageDiff actual = compare(a, *b, options);
                    SCOPED_TRACE(testing::Message() << "width " << width << ", transparent "
                                                    << transparentShare << "%, options " << options);
                    EXPECT_NEAR(actual.fMeanAbsError, expected.fMeanAbsError,
                                1e-4f * (1 + expected.fMeanAbsError));
                    EXPECT_NEAR(actual.fRMSError, expected.fRMSError, 1e-4f * (1 + expected.fRMSError));
                    if (std::isinf(expected.fPSNR))
                        EXPECT_EQ(actual.fPSNR, expected.fPSNR);
                    else
                        EXPECT_NEAR(actual.fPSNR, expected.fPSNR, 1e-3f);
                }
        }
}
