// ZqRenderUnitTest::CompareImages on two 1600 x 900 images (a render and a reference that differs
// from it by a step here and there, a quarter of both transparent) against a plain scalar loop
// that does what the definition says, pixel by pixel in double. Prints the ratio ours / plain per
// option set; the reference comparison uses options 3.
//
//     build/release/bin/zqcompareimages_bench [--benchmark_repetitions=5]

#include "zq3dview/zqrenderunittest.h"
#include "zqbase/zqbitmap.h"
#include "zqbenchmain.h"

#include <cmath>
#include <random>

namespace
{
using R = ZqRenderUnitTest;

struct SImages
{
    ZqBitmap render{1600, 900};
    ZqBitmap reference{1600, 900};
};

const SImages& images()
{
    static const SImages pair = []
    {
        SImages p;
        std::mt19937 random(5);
        std::uniform_int_distribution<int> step(-2, 2), percent(0, 99);
        for (unsigned int y = 0; y < 900; ++y)
            for (unsigned int x = 0; x < 1600; ++x)
            {
                const bool background = x < 400;
                const std::uint8_t pixel[4] = {std::uint8_t(x / 7), std::uint8_t(y / 4),
                                               std::uint8_t((x + y) / 10),
                                               std::uint8_t(background ? 0 : 255)};
                std::uint8_t* a = p.render.GetRow(y) + 4 * x;
                std::uint8_t* b = p.reference.GetRow(y) + 4 * x;
                for (int c = 0; c < 4; ++c)
                {
                    a[c] = pixel[c];
                    b[c] = c < 3 && percent(random) < 10
                               ? std::uint8_t(std::clamp(pixel[c] + step(random), 0, 255))
                               : pixel[c];
                }
            }
        return p;
    }();
    return pair;
}

// The comparison as defined: every pixel once, each channel in double.
R::SImageDiff plainCompare(const ZqBitmap& a, const ZqBitmap& b, unsigned int options)
{
    if (a.GetWidth() != b.GetWidth() || a.GetHeight() != b.GetHeight())
        return {R::sc_fInfinity, R::sc_fInfinity, 0.0f};
    const bool ignoreAlpha = options & R::eIgnoreAlpha;
    const bool premultiply = (options & R::ePremultiplyAlpha) && !ignoreAlpha;
    const bool compareAlpha = !ignoreAlpha && !(options & R::ePremultiplyAlpha);
    double sumAbs = 0.0, sumSq = 0.0;
    unsigned long long counted = 0;
    for (unsigned int y = 0; y < a.GetHeight(); ++y)
    {
        const std::uint8_t* p = a.GetRow(y);
        const std::uint8_t* q = b.GetRow(y);
        for (unsigned int x = 0; x < a.GetWidth(); ++x, p += 4, q += 4)
        {
            if ((options & R::eIgnoreTransparent) && p[3] == 0 && q[3] == 0)
                continue;
            const double fa = premultiply ? p[3] / 255.0 : 1.0, fb = premultiply ? q[3] / 255.0 : 1.0;
            for (int c = 0; c < 3; ++c)
            {
                const double d = p[c] * fa - q[c] * fb;
                sumAbs += std::fabs(d);
                sumSq += d * d;
            }
            if (compareAlpha)
            {
                const double d = double(p[3]) - double(q[3]);
                sumAbs += std::fabs(d);
                sumSq += d * d;
            }
            ++counted;
        }
    }
    if (counted == 0)
        return {};
    const double n = double(counted) * (compareAlpha ? 4.0 : 3.0);
    const double rms = std::sqrt(sumSq / n);
    return {float(sumAbs / n), float(rms),
            rms > 0.0 ? float(20.0 * std::log10(255.0 / rms)) : R::sc_fInfinity};
}

void ours(benchmark::State& state)
{
    const SImages& p = images();
    for (auto _ : state)
        benchmark::DoNotOptimize(R::CompareImages(p.render, p.reference, R::ECompareOptions(state.range(0))));
}

void plain(benchmark::State& state)
{
    const SImages& p = images();
    for (auto _ : state)
        benchmark::DoNotOptimize(plainCompare(p.render, p.reference, unsigned(state.range(0))));
}
} // namespace

BENCHMARK(ours)->Arg(3)->Arg(0)->Arg(4)->Unit(benchmark::kMillisecond);
BENCHMARK(plain)->Arg(3)->Arg(0)->Arg(4)->Unit(benchmark::kMillisecond);

int main(int argc, char** argv)
{
    // Both must agree before their times mean anything.
    for (unsigned int options : {3u, 0u, 4u})
    {
        const R::SImageDiff a =
            R::CompareImages(images().render, images().reference, R::ECompareOptions(options));
        const R::SImageDiff b = plainCompare(images().render, images().reference, options);
        std::printf("options %u: PSNR ours %.4f dB, plain %.4f dB\n", options, a.fPSNR, b.fPSNR);
        if (std::fabs(a.fPSNR - b.fPSNR) > 1e-3f)
            return 1;
    }
    return ZqBenchMain(argc, argv, {{"ours/3", "plain/3"}, {"ours/0", "plain/0"}, {"ours/4", "plain/4"}});
}
