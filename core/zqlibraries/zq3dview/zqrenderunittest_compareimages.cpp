// ZqRenderUnitTest::CompareImages: one pass over both images, exact integer sums.
//
// The per-channel differences are integers: d = a - b, or with premultiplied alpha
// 255 d = a * alphaA - b * alphaB. Summing |d| and d^2 as 64-bit integers and dividing by 255 and
// 255^2 at the end gives the exact sums that a per-pixel double accumulation approximates, so the
// order of the additions does not matter and the rows can be summed eight pixels at a time with
// AVX2 where the processor has it; the scalar loop takes the rest and other processors.

#include "zq3dview/zqrenderunittest.h"

#include "zqbase/zqbitmap.h"

#include <cmath>
#include <cstdint>
#include <cstdlib>

#if defined(__x86_64__)
#include <immintrin.h>
#endif

namespace
{
enum class EMode
{
    eStraight,     // colours and alpha compared as stored
    eStraightRGB,  // colours as stored, alpha ignored
    ePremultiplied // colours times alpha, alpha not compared
};

struct SSums
{
    std::uint64_t absolute = 0;
    std::uint64_t squares = 0;
    std::uint64_t counted = 0;

    void add(std::int64_t d)
    {
        absolute += std::uint64_t(d < 0 ? -d : d);
        squares += std::uint64_t(d * d);
    }
};

template <EMode kMode, bool kSkipTransparent>
void accumulateScalar(const std::uint8_t* a, const std::uint8_t* b, unsigned int count, SSums& sums)
{
    for (unsigned int x = 0; x < count; ++x, a += 4, b += 4)
    {
        if (kSkipTransparent && a[3] == 0 && b[3] == 0)
            continue;
        ++sums.counted;
        for (int c = 0; c < 3; ++c)
            sums.add(kMode == EMode::ePremultiplied ? int(a[c]) * a[3] - int(b[c]) * b[3]
                                                    : int(a[c]) - int(b[c]));
        if (kMode == EMode::eStraight)
            sums.add(int(a[3]) - int(b[3]));
    }
}

#if defined(__x86_64__)
// Everything up to pop_options, the helper lambdas included, is compiled for AVX2 and runs only
// where the processor has it.
#pragma GCC push_options
#pragma GCC target("avx2")
// Eight pixels per step. The bytes are widened to 16 bits, interleaved as (a, b) pairs and
// multiplied with (ma, -mb) pairs by vpmaddwd, which gives d = a ma - b mb as 32-bit lanes: ma and mb
// are the pixels' alphas (premultiplied), or 1, and 0 in lanes that do not count (alpha when it is
// not compared, pixels transparent in both when those are skipped).
template <EMode kMode, bool kSkipTransparent>
void accumulateAvx2(const std::uint8_t* a, const std::uint8_t* b, unsigned int count, SSums& sums)
{
    // Per 128-bit lane two pixels of four 16-bit channels: bytes 6 and 14 hold the alphas.
    const __m256i alphaToColours =
        _mm256_setr_epi8(6, 7, 6, 7, 6, 7, -128, -128, 14, 15, 14, 15, 14, 15, -128, -128, 6, 7, 6, 7, 6, 7,
                         -128, -128, 14, 15, 14, 15, 14, 15, -128, -128);
    const __m256i alphaToAll = _mm256_setr_epi8(6, 7, 6, 7, 6, 7, 6, 7, 14, 15, 14, 15, 14, 15, 14, 15, 6, 7,
                                                6, 7, 6, 7, 6, 7, 14, 15, 14, 15, 14, 15, 14, 15);
    const __m256i ones = kMode == EMode::eStraightRGB
                             ? _mm256_setr_epi16(1, 1, 1, 0, 1, 1, 1, 0, 1, 1, 1, 0, 1, 1, 1, 0)
                             : _mm256_set1_epi16(1);
    const __m256i zero = _mm256_setzero_si256();
    const __m256i alphaBits = _mm256_set1_epi32(int(0xFF000000u));
    __m256i absolute = zero; // 32-bit lanes, flushed before they can overflow
    __m256i squares = zero;  // 64-bit lanes
    unsigned int sinceFlush = 0;
    auto flush = [&]
    {
        alignas(32) std::uint32_t lanes[8];
        _mm256_store_si256(reinterpret_cast<__m256i*>(lanes), absolute);
        for (std::uint32_t lane : lanes)
            sums.absolute += lane;
        absolute = zero;
        sinceFlush = 0;
    };
    // Adds |d| and d^2 of eight 32-bit differences.
    auto addDifferences = [&](__m256i d)
    {
        absolute = _mm256_add_epi32(absolute, _mm256_abs_epi32(d));
        squares = _mm256_add_epi64(squares, _mm256_mul_epi32(d, d));
        const __m256i odd = _mm256_srli_epi64(d, 32);
        squares = _mm256_add_epi64(squares, _mm256_mul_epi32(odd, odd));
    };
    // Four pixels as 16-bit channels.
    auto addFour = [&](__m128i a8, __m128i b8)
    {
        const __m256i a16 = _mm256_cvtepu8_epi16(a8);
        const __m256i b16 = _mm256_cvtepu8_epi16(b8);
        __m256i ma = ones, mb = ones;
        if constexpr (kMode == EMode::ePremultiplied)
        {
            ma = _mm256_shuffle_epi8(a16, alphaToColours);
            mb = _mm256_shuffle_epi8(b16, alphaToColours);
        }
        else if constexpr (kSkipTransparent)
        {
            const __m256i bothClear =
                _mm256_cmpeq_epi16(_mm256_shuffle_epi8(_mm256_or_si256(a16, b16), alphaToAll), zero);
            ma = mb = _mm256_andnot_si256(bothClear, ones);
        }
        const __m256i negativeMb = _mm256_sub_epi16(zero, mb);
        addDifferences(
            _mm256_madd_epi16(_mm256_unpacklo_epi16(a16, b16), _mm256_unpacklo_epi16(ma, negativeMb)));
        addDifferences(
            _mm256_madd_epi16(_mm256_unpackhi_epi16(a16, b16), _mm256_unpackhi_epi16(ma, negativeMb)));
    };
    unsigned int x = 0;
    for (; x + 8 <= count; x += 8, a += 32, b += 32)
    {
        const __m256i a8 = _mm256_loadu_si256(reinterpret_cast<const __m256i*>(a));
        const __m256i b8 = _mm256_loadu_si256(reinterpret_cast<const __m256i*>(b));
        addFour(_mm256_castsi256_si128(a8), _mm256_castsi256_si128(b8));
        addFour(_mm256_extracti128_si256(a8, 1), _mm256_extracti128_si256(b8, 1));
        unsigned int counted = 8;
        if constexpr (kSkipTransparent)
        {
            const __m256i clear =
                _mm256_cmpeq_epi32(_mm256_and_si256(_mm256_or_si256(a8, b8), alphaBits), zero);
            counted -= unsigned(__builtin_popcount(unsigned(_mm256_movemask_ps(_mm256_castsi256_ps(clear)))));
        }
        sums.counted += counted;
        // Each step adds at most 4 x 65025 to a 32-bit lane.
        if (++sinceFlush == 4096)
            flush();
    }
    flush();
    alignas(32) std::uint64_t lanes[4];
    _mm256_store_si256(reinterpret_cast<__m256i*>(lanes), squares);
    sums.squares += lanes[0] + lanes[1] + lanes[2] + lanes[3];
    accumulateScalar<kMode, kSkipTransparent>(a, b, count - x, sums);
}
#pragma GCC pop_options
#endif

template <EMode kMode, bool kSkipTransparent> SSums accumulate(const ZqBitmap& a, const ZqBitmap& b)
{
#if defined(__x86_64__)
    static const bool s_avx2 = __builtin_cpu_supports("avx2");
#else
    constexpr bool s_avx2 = false;
#endif
    SSums sums;
    for (unsigned int y = 0; y < a.GetHeight(); ++y)
    {
#if defined(__x86_64__)
        if (s_avx2)
        {
            accumulateAvx2<kMode, kSkipTransparent>(a.GetRow(y), b.GetRow(y), a.GetWidth(), sums);
            continue;
        }
#endif
        accumulateScalar<kMode, kSkipTransparent>(a.GetRow(y), b.GetRow(y), a.GetWidth(), sums);
    }
    return sums;
}

template <EMode kMode> SSums accumulate(const ZqBitmap& a, const ZqBitmap& b, bool skipTransparent)
{
    return skipTransparent ? accumulate<kMode, true>(a, b) : accumulate<kMode, false>(a, b);
}
} // namespace

ZqRenderUnitTest::SImageDiff ZqRenderUnitTest::CompareImages(const ZqBitmap& a, const ZqBitmap& b,
                                                             ECompareOptions options)
{
    if (a.GetWidth() != b.GetWidth() || a.GetHeight() != b.GetHeight())
        return {sc_fInfinity, sc_fInfinity, 0.0f};
    const bool skipTransparent = (options & eIgnoreTransparent) != 0;
    const bool ignoreAlpha = (options & eIgnoreAlpha) != 0;
    const bool premultiply = (options & ePremultiplyAlpha) != 0 && !ignoreAlpha;
    const EMode mode = premultiply   ? EMode::ePremultiplied
                       : ignoreAlpha ? EMode::eStraightRGB
                                     : EMode::eStraight;
    const SSums sums = mode == EMode::ePremultiplied
                           ? accumulate<EMode::ePremultiplied>(a, b, skipTransparent)
                       : mode == EMode::eStraightRGB ? accumulate<EMode::eStraightRGB>(a, b, skipTransparent)
                                                     : accumulate<EMode::eStraight>(a, b, skipTransparent);
    if (sums.counted == 0)
        return {};
    const double n = double(sums.counted) * (mode == EMode::eStraight ? 4.0 : 3.0);
    // Premultiplied differences were summed 255 times too large.
    const double scale = mode == EMode::ePremultiplied ? 255.0 : 1.0;
    const double mean = double(sums.absolute) / scale / n;
    const double rms = std::sqrt(double(sums.squares) / (scale * scale) / n);
    const double psnr = rms > 0.0 ? 20.0 * std::log10(255.0 / rms) : double(sc_fInfinity);
    return {float(mean), float(rms), float(psnr)};
}
