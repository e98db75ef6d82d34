#include "zqbase/zqcolorrgba.h"

#include <algorithm>
#include <cmath>

namespace
{
float clamp01(float value)
{
    // NaN becomes 0 rather than travelling into a bitmap.
    return value > 0.0f ? std::min(value, 1.0f) : 0.0f;
}

float hueToChannel(float p, float q, float t)
{
    if (t < 0.0f)
        t += 1.0f;
    if (t > 1.0f)
        t -= 1.0f;
    if (t < 1.0f / 6.0f)
        return p + (q - p) * 6.0f * t;
    if (t < 0.5f)
        return q;
    if (t < 2.0f / 3.0f)
        return p + (q - p) * (2.0f / 3.0f - t) * 6.0f;
    return p;
}

std::uint8_t toByte(float channel)
{
    return static_cast<std::uint8_t>(std::lround(clamp01(channel) * 255.0f));
}
} // namespace

ZqColorRGBA ZqColorRGBA::FromHSL(float hueDegrees, float saturation, float lightness, float alpha)
{
    const float s = clamp01(saturation);
    const float l = clamp01(lightness);
    if (s == 0.0f)
        return {l, l, l, alpha};
    float h = std::fmod(hueDegrees, 360.0f) / 360.0f;
    if (h < 0.0f)
        h += 1.0f;
    const float q = l < 0.5f ? l * (1.0f + s) : l + s - l * s;
    const float p = 2.0f * l - q;
    return {hueToChannel(p, q, h + 1.0f / 3.0f), hueToChannel(p, q, h), hueToChannel(p, q, h - 1.0f / 3.0f),
            alpha};
}

void ZqColorRGBA::ToHSL(float& hueDegrees, float& saturation, float& lightness) const
{
    const float red = clamp01(r), green = clamp01(g), blue = clamp01(b);
    const float high = std::max({red, green, blue});
    const float low = std::min({red, green, blue});
    lightness = (high + low) * 0.5f;
    const float range = high - low;
    if (range <= 0.0f)
    {
        hueDegrees = 0.0f;
        saturation = 0.0f;
        return;
    }
    saturation = lightness > 0.5f ? range / (2.0f - high - low) : range / (high + low);
    float h;
    if (high == red)
        h = (green - blue) / range + (green < blue ? 6.0f : 0.0f);
    else if (high == green)
        h = (blue - red) / range + 2.0f;
    else
        h = (red - green) / range + 4.0f;
    hueDegrees = h * 60.0f;
    // Rounding can leave a red hue a hair below 360 when green and blue are equal but for the last bit.
    if (hueDegrees >= 359.999f)
        hueDegrees = 0.0f;
}

std::uint32_t ZqColorRGBA::ToRGBA8() const
{
    const std::uint8_t bytes[4] = {toByte(r), toByte(g), toByte(b), toByte(a)};
    std::uint32_t packed;
    std::copy_n(bytes, 4, reinterpret_cast<std::uint8_t*>(&packed));
    return packed;
}

ZqColorRGBA ZqColorRGBA::FromRGBA8(std::uint32_t rgba)
{
    std::uint8_t bytes[4];
    std::copy_n(reinterpret_cast<const std::uint8_t*>(&rgba), 4, bytes);
    return {bytes[0] / 255.0f, bytes[1] / 255.0f, bytes[2] / 255.0f, bytes[3] / 255.0f};
}
