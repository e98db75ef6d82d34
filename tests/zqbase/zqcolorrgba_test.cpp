#include "zqbase/zqcolorrgba.h"

#include <gtest/gtest.h>

TEST(ZqColorRGBA, HSLConversionHitsTheSixPrimaryAndSecondaryHues)
{
    const struct
    {
        float hue;
        ZqColorRGBA rgb;
    } cases[] = {{0, {1, 0, 0}},   {60, {1, 1, 0}},  {120, {0, 1, 0}}, {180, {0, 1, 1}},
                 {240, {0, 0, 1}}, {300, {1, 0, 1}}, {-60, {1, 0, 1}}, {420, {1, 1, 0}}};
    for (const auto& c : cases)
    {
        const ZqColorRGBA color = ZqColorRGBA::FromHSL(c.hue, 1.0f, 0.5f);
        EXPECT_NEAR(color.r, c.rgb.r, 1e-6f) << c.hue;
        EXPECT_NEAR(color.g, c.rgb.g, 1e-6f) << c.hue;
        EXPECT_NEAR(color.b, c.rgb.b, 1e-6f) << c.hue;
        EXPECT_EQ(color.a, 1.0f);
    }
    const ZqColorRGBA grey = ZqColorRGBA::FromHSL(200.0f, 0.0f, 0.25f, 0.5f);
    EXPECT_EQ(grey, ZqColorRGBA(0.25f, 0.25f, 0.25f, 0.5f));
}

TEST(ZqColorRGBA, HSLRoundTripsThroughRGB)
{
    for (float hue = 0.0f; hue < 360.0f; hue += 7.5f)
        for (float s : {0.3f, 1.0f})
            for (float l : {0.2f, 0.5f, 0.8f})
            {
                float h2, s2, l2;
                ZqColorRGBA::FromHSL(hue, s, l).ToHSL(h2, s2, l2);
                EXPECT_NEAR(h2, hue, 1e-3f);
                EXPECT_NEAR(s2, s, 1e-5f);
                EXPECT_NEAR(l2, l, 1e-5f);
            }
}

TEST(ZqColorRGBA, BytesAreRoundedClampedAndInRGBAOrder)
{
    const std::uint32_t packed = ZqColorRGBA(1.5f, 0.5f, -1.0f, 0.0f).ToRGBA8();
    const auto* bytes = reinterpret_cast<const std::uint8_t*>(&packed);
    EXPECT_EQ(bytes[0], 255);
    EXPECT_EQ(bytes[1], 128);
    EXPECT_EQ(bytes[2], 0);
    EXPECT_EQ(bytes[3], 0);
    EXPECT_EQ(ZqColorRGBA::FromRGBA8(ZqColorRGBA::Chocolate.ToRGBA8()), ZqColorRGBA::Chocolate);
    EXPECT_EQ(CbTypeName<ZqColorRGBA>::Get(), "class ZqColorRGBA");
}
