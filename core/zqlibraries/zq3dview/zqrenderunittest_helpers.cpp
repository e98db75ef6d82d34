// The static helpers of ZqRenderUnitTest that build scenes and format results.

#include "zq3dview/zqrenderunittest.h"

#include "zqbase/zqmurmurhash3.h"

#include <algorithm>
#include <cmath>
#include <numbers>

ZqRenderUnitTest::SView ZqRenderUnitTest::CreateView(const CString& name, const CbVector3f& direction,
                                                     const CbVector3f& up, float distance)
{
    return ZqSceneTestSupport::CreateView(name, direction, up, distance);
}

CbArray<ZqRenderUnitTest::SView> ZqRenderUnitTest::CreateAxisViews(float distance)
{
    CbArray<SView> views;
    views.Add(CreateView(L"X", {-1, 0, 0}, {0, 0, -1}, distance));
    views.Add(CreateView(L"Y", {0, -1, 0}, {1, 0, 0}, distance));
    views.Add(CreateView(L"Z", {0, 0, -1}, {1, 0, 0}, distance));
    return views;
}

namespace
{
// A uniform point on the unit sphere from the first two words of the digest of block.
CbVector3f directionFromBlock(const std::uint32_t (&block)[4])
{
    const ZqMurmurHash3::Digest128 digest = ZqMurmurHash3::GetChecksum128(block, sizeof(block), 2);
    constexpr float kScale = 1.0f / 4294967296.0f; // 2^-32
    const float phi = float(digest[0]) * kScale * 2.0f * std::numbers::pi_v<float>;
    const float z = float(digest[1]) * kScale * 2.0f - 1.0f;
    const float r = std::sqrt(std::max(0.0f, 1.0f - z * z));
    return {r * std::cos(phi), r * std::sin(phi), z};
}
} // namespace

CbVector3f ZqRenderUnitTest::CreateRandomDir(unsigned int i)
{
    const std::uint32_t block[4] = {i ^ 0x607825D3u, 0xC6A6A180u, 0x8492AE94u, 0xFAD8B60Fu};
    return directionFromBlock(block);
}

CbVector3f ZqRenderUnitTest::CreateRandomDir(unsigned int i, unsigned int j)
{
    // The second word differs from the one-index form even for j = 0, so (i) and (i, 0) differ.
    const std::uint32_t block[4] = {i ^ 0x607825D3u, j ^ 0xEAA7BA96u, 0x8492AE94u, 0xFAD8B60Fu};
    return directionFromBlock(block);
}

ZqColorRGBA ZqRenderUnitTest::CreateUniqueHue(unsigned int i, float lightness)
{
    double whole = 0.0;
    const double fraction = std::modf(double(i) * 0.6180339887498949, &whole);
    return ZqColorRGBA::FromHSL(float(fraction * 360.0), 1.0f, lightness);
}

CString ZqRenderUnitTest::FormatTime(double seconds)
{
    if (seconds == 0.0)
        return L"0 s";
    if (seconds < 1e-6)
        return CbFormat(L"%.2fns", seconds * 1e9);
    if (seconds < 0.001)
        return CbFormat(L"%.2fµs", seconds * 1e6);
    if (seconds < 1.0)
        return CbFormat(L"%.2fms", seconds * 1000.0);
    return CbFormat(L"%.2fs", seconds);
}

void ZqRenderUnitTest::SetupSceneDefault(ZqD3DScene& scene, const ZqColorRGBA& background)
{
    ZqSceneTestSupport::SetupSceneDefault(scene, background);
}
