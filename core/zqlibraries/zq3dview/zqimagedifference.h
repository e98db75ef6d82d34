#pragma once

#include "basepool/cstring.h"
#include "zq3dview/zq3dview_export.h"

class ZqBitmap;

// What a person needs to judge a failed image comparison, beyond its PSNR: the largest difference
// of one channel and where it is, and how many pixels are off by more than a few steps. Channels
// are compared as stored (straight alpha); pixels transparent in both images are left out, as in
// the reference comparison.
struct ZQ3DVIEW_API ZqImageDifference
{
    // Differences up to this many steps count as noise of the renderer (llvmpipe and a GPU differ
    // by one step at most where both are right).
    static constexpr unsigned int kFewSteps = 3;

    bool sameSize = true;
    unsigned int width = 0, height = 0;                   // of the rendered image
    unsigned int referenceWidth = 0, referenceHeight = 0; // of the reference
    unsigned int maxError = 0;                            // largest channel difference, 0..255
    unsigned int maxX = 0, maxY = 0;                      // its pixel, (0, 0) at the top left
    unsigned int maxChannel = 0;                          // 0..3: R, G, B, A
    unsigned long long pixelsCompared = 0;
    unsigned long long pixelsOff = 0; // pixels with a channel off by more than kFewSteps

    static ZqImageDifference Measure(const ZqBitmap& rendered, const ZqBitmap& reference);

    // One line for the report of view viewName with the comparison's mean, RMS and PSNR.
    CString Describe(const CString& viewName, float mean, float rms, float psnr) const;

    // The absolute channel differences times 8 (clamped), opaque; black where the images agree.
    // Both images must have the same size.
    static ZqBitmap MakeDifferenceImage(const ZqBitmap& rendered, const ZqBitmap& reference);
};
