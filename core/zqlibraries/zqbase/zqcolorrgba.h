#pragma once

#include "basepool/cbtypename.h"
#include "zqbase/zqbase_export.h"

#include <cstdint>

// A colour of four float channels in [0, 1], alpha last, not premultiplied. Used for scene and
// material colours, per-vertex colour attributes and debug geometry; bitmaps store 8-bit channels
// (ToRGBA8 / FromRGBA8).
//
// HSL: hue in degrees [0, 360), saturation and lightness in [0, 1]:
//
//     ZqColorRGBA::FromHSL(120.0f, 1.0f, 0.5f)   // (0, 1, 0, 1), pure green
//     ZqColorRGBA::FromHSL(0.0f, 0.0f, 0.25f)    // (0.25, 0.25, 0.25, 1), saturation 0 is grey
class ZQBASE_API ZqColorRGBA
{
public:
    float r = 0.0f;
    float g = 0.0f;
    float b = 0.0f;
    float a = 1.0f;

    constexpr ZqColorRGBA() = default;
    constexpr ZqColorRGBA(float red, float green, float blue, float alpha = 1.0f)
        : r(red), g(green), b(blue), a(alpha)
    {
    }

    // Hue wraps around (-30 is 330, 390 is 30); saturation and lightness are clamped to [0, 1].
    static ZqColorRGBA FromHSL(float hueDegrees, float saturation, float lightness, float alpha = 1.0f);
    // Hue 0 for greys. Channels outside [0, 1] are clamped first.
    void ToHSL(float& hueDegrees, float& saturation, float& lightness) const;

    // Rounds each clamped channel to the nearest of 0..255; packed as bytes R, G, B, A in memory.
    std::uint32_t ToRGBA8() const;
    static ZqColorRGBA FromRGBA8(std::uint32_t rgba);

    constexpr bool operator==(const ZqColorRGBA&) const = default;

    // Named colours (the CSS / X11 values).
    static const ZqColorRGBA Black;
    static const ZqColorRGBA White;
    static const ZqColorRGBA Red;
    static const ZqColorRGBA Green;
    static const ZqColorRGBA Blue;
    static const ZqColorRGBA Yellow;
    static const ZqColorRGBA Gray;
    static const ZqColorRGBA Chocolate;
    static const ZqColorRGBA Aquamarine;
    static const ZqColorRGBA Transparent;
};

inline constexpr ZqColorRGBA ZqColorRGBA::Black{0.0f, 0.0f, 0.0f};
inline constexpr ZqColorRGBA ZqColorRGBA::White{1.0f, 1.0f, 1.0f};
inline constexpr ZqColorRGBA ZqColorRGBA::Red{1.0f, 0.0f, 0.0f};
inline constexpr ZqColorRGBA ZqColorRGBA::Green{0.0f, 128.0f / 255.0f, 0.0f};
inline constexpr ZqColorRGBA ZqColorRGBA::Blue{0.0f, 0.0f, 1.0f};
inline constexpr ZqColorRGBA ZqColorRGBA::Yellow{1.0f, 1.0f, 0.0f};
inline constexpr ZqColorRGBA ZqColorRGBA::Gray{128.0f / 255.0f, 128.0f / 255.0f, 128.0f / 255.0f};
inline constexpr ZqColorRGBA ZqColorRGBA::Chocolate{210.0f / 255.0f, 105.0f / 255.0f, 30.0f / 255.0f};
inline constexpr ZqColorRGBA ZqColorRGBA::Aquamarine{127.0f / 255.0f, 1.0f, 212.0f / 255.0f};
inline constexpr ZqColorRGBA ZqColorRGBA::Transparent{0.0f, 0.0f, 0.0f, 0.0f};

CB_DECLARE_TYPENAME(ZqColorRGBA, "class ZqColorRGBA");
