// The tolerant comparison: the rules that the module's condition lists take for granted.

#include "zqmath/zqfloatcompare.h"

#include <gtest/gtest.h>

#include <cfloat>
#include <limits>

using namespace ZqFloatCompare;

TEST(ZqFloatCompare, RelToIsRelativeToItsSecondArgumentOnly)
{
    EXPECT_TRUE(IsAlmostEqualRelTo(1.0f, 2.0f, 0.5f));
    EXPECT_FALSE(IsAlmostEqualRelTo(2.0f, 1.0f, 0.5f));
    // The symmetric form divides by the smaller magnitude, so neither order passes.
    EXPECT_FALSE(IsAlmostEqualRel(1.0f, 2.0f, 0.5f));
    EXPECT_FALSE(IsAlmostEqualRel(2.0f, 1.0f, 0.5f));
    EXPECT_TRUE(IsAlmostEqualRel(2.0, 1.0, 1.0));
}

TEST(ZqFloatCompare, AbsoluteToleranceRescuesValuesOfOppositeSign)
{
    EXPECT_TRUE(IsAlmostEqualAbsOrRel(-1e-9f, 1e-9f, 1e-8f, 0.0f));
    EXPECT_FALSE(IsAlmostEqualAbsOrRel(-1e-9f, 1e-9f, 1e-10f, 1e9f));
    EXPECT_FALSE(IsAlmostEqualRel(-1e-9f, 1e-9f, std::numeric_limits<float>::max()));
    // A zero has no sign in the relative tests.
    EXPECT_TRUE(IsAlmostEqualRel(-0.0, 0.0, 0.0));
}

TEST(ZqFloatCompare, RelativeFloorIsTheSmallestNormalOfTheType)
{
    // 1e-39 and 2e-39 are subnormal in float: both count as FLT_MIN.
    EXPECT_TRUE(IsAlmostEqualRel(1e-39f, 2e-39f, 0.0f));
    // In double they are normal and a factor 2 apart.
    EXPECT_FALSE(IsAlmostEqualRel(1e-39, 2e-39, 0.5));
    EXPECT_TRUE(IsAlmostEqualRel(1e-320, 2e-320, 0.0));
}

TEST(ZqFloatCompare, NonFiniteValuesIgnoreTolerances)
{
    const float inf = std::numeric_limits<float>::infinity();
    const float nan = std::numeric_limits<float>::quiet_NaN();
    EXPECT_FALSE(IsAlmostEqualAbs(nan, nan, inf));
    EXPECT_FALSE(IsAlmostEqualAbsOrRel(nan, 1.0f, inf, inf));
    EXPECT_FALSE(IsAlmostEqualRelTo(inf, FLT_MAX, inf));
    EXPECT_TRUE(IsAlmostEqualAbs(-inf, -inf, -inf));
    EXPECT_FALSE(almostEqual(inf, -inf));
    // Finite values whose difference overflows are simply far apart.
    EXPECT_FALSE(IsAlmostEqualAbsOrRel(FLT_MAX, -FLT_MAX, 1.0f, 1.0f));
}

TEST(ZqFloatCompare, ToleranceBoundariesAreInclusiveAndNaNToleranceFailsEverything)
{
    EXPECT_TRUE(IsAlmostEqualAbs(1.0, 1.5, 0.5));
    EXPECT_TRUE(IsAlmostEqualRelTo(3.0f, 4.0f, 0.25f));
    EXPECT_FALSE(IsAlmostEqualRelTo(3.0f, 4.0f, std::nextafter(0.25f, 0.0f)));
    const double nan = std::numeric_limits<double>::quiet_NaN();
    EXPECT_FALSE(IsAlmostEqualAbsOrRel(1.0, 1.0, nan, nan));
}

TEST(ZqFloatCompare, DefaultsAcceptAFewUnitsInTheLastPlace)
{
    EXPECT_TRUE(almostEqual(1000.0f, 1000.0f + 4 * 6.1035156e-05f));
    EXPECT_FALSE(almostEqual(1000.0f, 1000.1f));
    EXPECT_TRUE(almostEqual(0.0, 1e-17));
    EXPECT_FALSE(almostEqual(0.0, 1e-15));
}
