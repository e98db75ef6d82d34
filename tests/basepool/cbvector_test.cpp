// CbVector2 / CbVector3: arithmetic, products, lengths and normalisation, exact comparison.

#include "basepool/cbvector2.h"
#include "basepool/cbvector3.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <type_traits>

static_assert(std::is_trivially_copyable_v<CbVector2f> && std::is_standard_layout_v<CbVector2f>);
static_assert(std::is_trivially_copyable_v<CbVector3d> && std::is_standard_layout_v<CbVector3d>);
static_assert(sizeof(CbVector2f) == 2 * sizeof(float) && sizeof(CbVector3d) == 3 * sizeof(double));
static_assert((CbVector2d(1, 2) + CbVector2d(3, 4)) * 2.0 == CbVector2d(8, 12));
static_assert(CbVector3f(1, 0, 0).Cross(CbVector3f(0, 1, 0)) == CbVector3f(0, 0, 1));

TEST(CbVector2, ArithmeticAndProducts)
{
    CbVector2f v(3, -4);
    EXPECT_EQ(v + CbVector2f(1, 1), CbVector2f(4, -3));
    EXPECT_EQ(v - CbVector2f(1, 1), CbVector2f(2, -5));
    EXPECT_EQ(-v, CbVector2f(-3, 4));
    EXPECT_EQ(0.5f * v, CbVector2f(1.5f, -2));
    EXPECT_EQ(v / 2.0f, CbVector2f(1.5f, -2));
    EXPECT_EQ(v.Dot({2, 1}), 2.0f);
    // Positive cross product: the second vector turns counter-clockwise from the first.
    EXPECT_GT(Cross(CbVector2f(1, 0), CbVector2f(0, 1)), 0.0f);
    EXPECT_LT(Cross(CbVector2f(0, 1), CbVector2f(1, 0)), 0.0f);
    EXPECT_EQ(v.Perpendicular().Dot(v), 0.0f);
    EXPECT_EQ(Cross(v, v.Perpendicular()), v.SquaredLength());
    v[1] = 7;
    EXPECT_EQ(v.y, 7.0f);
    EXPECT_EQ(v[0], 3.0f);
}

TEST(CbVector2, LengthAndNormalize)
{
    CbVector2d v(3, 4);
    EXPECT_EQ(v.SquaredLength(), 25.0);
    EXPECT_EQ(v.Length(), 5.0);
    EXPECT_EQ(v.Normalize(), 5.0);
    EXPECT_NEAR(v.Length(), 1.0, 1e-15);
    CbVector2d zero;
    EXPECT_EQ(zero.Normalize(), 0.0);
    EXPECT_EQ(zero, CbVector2d(0, 0));
    EXPECT_EQ(CbVector2f(0, -2).Normalized(), CbVector2f(0, -1));
    // Conversion between precisions rounds.
    EXPECT_EQ(CbVector2f(CbVector2d(0.1, 1)), CbVector2f(0.1f, 1));
}

TEST(CbVector2, ComparisonIsExact)
{
    const float nan = std::numeric_limits<float>::quiet_NaN();
    EXPECT_FALSE(CbVector2f(nan, 0) == CbVector2f(nan, 0));
    EXPECT_TRUE(CbVector2f(0.0f, 1) == CbVector2f(-0.0f, 1));
    EXPECT_FALSE(CbVector2f(1, 1) == CbVector2f(1, std::nextafter(1.0f, 2.0f)));
}

TEST(CbVector3, ArithmeticAndProducts)
{
    const CbVector3d a(1, 2, 3), b(-2, 0.5, 4);
    EXPECT_EQ(a + b, CbVector3d(-1, 2.5, 7));
    EXPECT_EQ(a - b, CbVector3d(3, 1.5, -1));
    EXPECT_EQ(a * 2.0, CbVector3d(2, 4, 6));
    EXPECT_EQ(a / 2.0, CbVector3d(0.5, 1, 1.5));
    EXPECT_EQ(Dot(a, b), 11.0);
    const CbVector3d c = Cross(a, b);
    EXPECT_EQ(Dot(c, a), 0.0);
    EXPECT_EQ(Dot(c, b), 0.0);
    EXPECT_EQ(Cross(b, a), -c);
    EXPECT_EQ(a[2], 3.0);
    CbVector3f v(0, 3, 4);
    EXPECT_EQ(v.Normalize(), 5.0f);
    EXPECT_EQ(v, CbVector3f(0, 0.6f, 0.8f));
    CbVector3f zero;
    EXPECT_EQ(zero.Normalize(), 0.0f);
    v[0] = 9;
    EXPECT_EQ(v.x, 9.0f);
}
