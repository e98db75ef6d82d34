// ZqOrientation2D against exact big-integer arithmetic, on near-collinear triples where double
// precision alone decides wrongly, and on coordinates of extreme magnitude.

#include "zq3dbase/zqorientation2d.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <limits>
#include <random>
#include <vector>

namespace
{
// Exact reference: every finite float is an integer multiple of 2^-149, so with all coordinates
// scaled by 2^149 the determinant is an integer of at most about 560 bits. BigInteger holds such
// integers as sign and magnitude in 32-bit limbs, least significant first.
struct BigInteger
{
    bool negative = false;
    std::vector<std::uint32_t> limbs;

    static BigInteger FromScaledFloat(float value)
    {
        BigInteger result;
        if (value == 0.0f)
            return result;
        int exponent = 0;
        const double fraction = std::frexp(static_cast<double>(value), &exponent);
        auto mantissa = static_cast<std::uint64_t>(std::fabs(std::ldexp(fraction, 24)));
        int shift = exponent - 24 + 149;
        while (shift < 0)
        {
            mantissa >>= 1; // only zero bits go: the value is a multiple of 2^-149
            ++shift;
        }
        result.negative = value < 0;
        result.limbs.assign(shift / 32 + 3, 0);
        const unsigned __int128 shifted = static_cast<unsigned __int128>(mantissa) << (shift % 32);
        for (int i = 0; i < 3; ++i)
            result.limbs[shift / 32 + i] = static_cast<std::uint32_t>(shifted >> (32 * i));
        result.trim();
        return result;
    }

    void trim()
    {
        while (!limbs.empty() && limbs.back() == 0)
            limbs.pop_back();
        if (limbs.empty())
            negative = false;
    }

    static int compareMagnitude(const BigInteger& a, const BigInteger& b)
    {
        if (a.limbs.size() != b.limbs.size())
            return a.limbs.size() < b.limbs.size() ? -1 : 1;
        for (std::size_t i = a.limbs.size(); i-- > 0;)
            if (a.limbs[i] != b.limbs[i])
                return a.limbs[i] < b.limbs[i] ? -1 : 1;
        return 0;
    }

    friend BigInteger operator-(const BigInteger& a, BigInteger b)
    {
        b.negative = !b.negative && !b.limbs.empty();
        return a + b;
    }

    friend BigInteger operator+(const BigInteger& a, const BigInteger& b)
    {
        BigInteger result;
        if (a.negative == b.negative)
        {
            result.negative = a.negative;
            std::uint64_t carry = 0;
            for (std::size_t i = 0; i < std::max(a.limbs.size(), b.limbs.size()) || carry; ++i)
            {
                carry += (i < a.limbs.size() ? a.limbs[i] : 0u) +
                         std::uint64_t(i < b.limbs.size() ? b.limbs[i] : 0u);
                result.limbs.push_back(static_cast<std::uint32_t>(carry));
                carry >>= 32;
            }
        }
        else
        {
            const bool aLarger = compareMagnitude(a, b) >= 0;
            const BigInteger& large = aLarger ? a : b;
            const BigInteger& small = aLarger ? b : a;
            result.negative = large.negative;
            std::int64_t borrow = 0;
            for (std::size_t i = 0; i < large.limbs.size(); ++i)
            {
                std::int64_t digit =
                    std::int64_t(large.limbs[i]) - (i < small.limbs.size() ? small.limbs[i] : 0) - borrow;
                borrow = digit < 0;
                result.limbs.push_back(static_cast<std::uint32_t>(digit + (borrow << 32)));
            }
        }
        result.trim();
        return result;
    }

    friend BigInteger operator*(const BigInteger& a, const BigInteger& b)
    {
        BigInteger result;
        result.negative = a.negative != b.negative;
        result.limbs.assign(a.limbs.size() + b.limbs.size(), 0);
        for (std::size_t i = 0; i < a.limbs.size(); ++i)
        {
            std::uint64_t carry = 0;
            for (std::size_t j = 0; j < b.limbs.size() || carry; ++j)
            {
                carry +=
                    result.limbs[i + j] + std::uint64_t(a.limbs[i]) * (j < b.limbs.size() ? b.limbs[j] : 0u);
                result.limbs[i + j] = static_cast<std::uint32_t>(carry);
                carry >>= 32;
            }
        }
        result.trim();
        return result;
    }

    int Sign() const { return limbs.empty() ? 0 : (negative ? -1 : 1); }
};

int referenceSign(const CbVector2f& a, const CbVector2f& b, const CbVector2f& c)
{
    const auto big = [](float v) { return BigInteger::FromScaledFloat(v); };
    const BigInteger det =
        (big(a.x) - big(c.x)) * (big(b.y) - big(c.y)) - (big(a.y) - big(c.y)) * (big(b.x) - big(c.x));
    return det.Sign();
}

int naiveSign(const CbVector2f& a, const CbVector2f& b, const CbVector2f& c)
{
    const double det = (double(b.x) - a.x) * (double(c.y) - a.y) - (double(b.y) - a.y) * (double(c.x) - a.x);
    return (det > 0) - (det < 0);
}

// A float of random sign and mantissa whose magnitude spans 2^-140 .. 2^120.
float randomFloat(std::mt19937& random)
{
    std::uniform_int_distribution<int> exponent(-140, 120);
    std::uniform_real_distribution<float> mantissa(-2.0f, 2.0f);
    return std::ldexp(mantissa(random), exponent(random));
}
} // namespace

TEST(ZqOrientation2D, SimpleTurns)
{
    EXPECT_EQ(ZqOrientation2D::Sign({0, 0}, {1, 0}, {0, 1}), 1);
    EXPECT_EQ(ZqOrientation2D::Sign({0, 0}, {0, 1}, {1, 0}), -1);
    EXPECT_EQ(ZqOrientation2D::Sign({0, 0}, {3, 1}, {6, 2}), 0);
    EXPECT_EQ(ZqOrientation2D::Sign({2, 2}, {2, 2}, {5, -1}), 0);
    EXPECT_EQ(ZqOrientation2D::SignExact({0, 0}, {1, 0}, {0.5f, 1e-30f}), 1);
}

TEST(ZqOrientation2D, ReferenceArithmeticIsSound)
{
    EXPECT_EQ(referenceSign({0, 0}, {1, 0}, {0, 1}), 1);
    EXPECT_EQ(referenceSign({0, 0}, {1, 0}, {0, -1}), -1);
    EXPECT_EQ(referenceSign({1e30f, 1e30f}, {-3, -3}, {1e-30f, 1e-30f}), 0);
    const float tiny = std::numeric_limits<float>::denorm_min();
    EXPECT_EQ(referenceSign({0, 0}, {tiny, 0}, {0, tiny}), 1);
}

TEST(ZqOrientation2D, NearCollinearTriplesMatchExactArithmetic)
{
    // c is a point of the line through a and b, rounded and nudged by up to two units in the last
    // place. With points of similar magnitude the double evaluation is exact already (differences of
    // floats need 25 bits, their products 50). The hard cases put a and b far out on a line through
    // the origin and c near the origin: the differences in double lose c's offset from the line,
    // which alone decides the sign.
    std::mt19937 random(12345);
    std::uniform_real_distribution<double> along(-2.0, 3.0);
    std::uniform_int_distribution<int> nudge(-2, 2), small(-9, 9), farExponent(20, 100),
        nearExponent(-120, 0);
    std::uniform_real_distribution<float> similar(-1000.0f, 1000.0f);
    int naiveWrong = 0, undecided = 0;
    for (int i = 0; i < 100000; ++i)
    {
        CbVector2f a, b, c;
        if (i % 2 == 0)
        {
            a = {similar(random), similar(random)};
            b = {similar(random), similar(random)};
            const double t = along(random);
            c = {static_cast<float>(a.x + t * (double(b.x) - a.x)),
                 static_cast<float>(a.y + t * (double(b.y) - a.y))};
        }
        else
        {
            const CbVector2f direction(float(small(random)), float(small(random)));
            a = std::ldexp(1.0f, farExponent(random)) * direction;
            b = -std::ldexp(1.0f, farExponent(random)) * direction;
            c = std::ldexp(similar(random), nearExponent(random)) * direction;
        }
        for (int n = nudge(random); n != 0; n += n > 0 ? -1 : 1)
            c.y = std::nextafter(c.y, n > 0 ? 1e30f : -1e30f);
        const int expected = referenceSign(a, b, c);
        ASSERT_EQ(ZqOrientation2D::Sign(a, b, c), expected) << i;
        ASSERT_EQ(ZqOrientation2D::SignExact(a, b, c), expected) << i;
        const int filtered = ZqOrientation2D::FilteredSign(a, b, c);
        if (filtered == ZqOrientation2D::kUndecided)
            ++undecided;
        else
            ASSERT_EQ(filtered, expected) << i;
        naiveWrong += naiveSign(a, b, c) != expected;
    }
    // The set must contain the hard cases it is meant for.
    EXPECT_GT(naiveWrong, 100);
    EXPECT_GT(undecided, 100);
}

TEST(ZqOrientation2D, ExtremeMagnitudesAreExact)
{
    const float huge = std::numeric_limits<float>::max();
    const float tiny = std::numeric_limits<float>::denorm_min();
    // Points of the line y = x are exactly collinear at any magnitude.
    EXPECT_EQ(ZqOrientation2D::Sign({huge, huge}, {tiny, tiny}, {-3, -3}), 0);
    EXPECT_EQ(ZqOrientation2D::Sign({-1e30f, -1e30f}, {1e-30f, 1e-30f}, {1e20f, 1e20f}), 0);
    // One unit in the last place above the line, next to a point 10^60 times larger: the
    // differences in double lose the nudge, the exact evaluation does not. Walking from (1e30, 1e30)
    // towards (-3, -3), a point above y = x is on the right.
    const CbVector2f a(1e30f, 1e30f), b(-3, -3), c(1e-30f, std::nextafter(1e-30f, 1.0f));
    EXPECT_EQ(naiveSign(a, b, c), 0);
    EXPECT_EQ(ZqOrientation2D::Sign(a, b, c), -1);
    EXPECT_EQ(ZqOrientation2D::Sign(b, a, c), 1);
    // Subnormal triangle.
    EXPECT_EQ(ZqOrientation2D::Sign({0, 0}, {tiny, 0}, {0, tiny}), 1);
    EXPECT_EQ(ZqOrientation2D::Sign({-huge, -huge}, {huge, -huge}, {0, huge}), 1);
    EXPECT_EQ(ZqOrientation2D::Sign({-huge, -huge}, {huge, -huge}, {tiny, -huge}), 0);
}

TEST(ZqOrientation2D, SymmetriesHoldForMixedMagnitudes)
{
    // An exact sign is invariant under cyclic exchange and flips under a swap, whatever the
    // magnitudes; rounding breaks these on points of wildly different size.
    std::mt19937 random(99);
    const auto coordinate = [&] { return randomFloat(random); };
    for (int i = 0; i < 100000; ++i)
    {
        const CbVector2f a(coordinate(), coordinate());
        const CbVector2f b(coordinate(), coordinate());
        // Mostly on the line through a and b, rounded.
        CbVector2f c =
            i % 2 ? CbVector2f(coordinate(), coordinate())
                  : CbVector2f(static_cast<float>(2.0 * b.x - a.x), static_cast<float>(2.0 * b.y - a.y));
        if (!std::isfinite(c.x) || !std::isfinite(c.y))
            continue;
        const int sign = ZqOrientation2D::Sign(a, b, c);
        ASSERT_EQ(ZqOrientation2D::Sign(b, c, a), sign);
        ASSERT_EQ(ZqOrientation2D::Sign(c, a, b), sign);
        ASSERT_EQ(ZqOrientation2D::Sign(b, a, c), -sign);
        ASSERT_EQ(ZqOrientation2D::Sign(a, c, b), -sign);
    }
}
