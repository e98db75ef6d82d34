// The line fit at its edges: two points, collinear points, a gross outlier, weights, coordinates far
// from the origin, the order of the coefficients, and the failures of the robust method.

#include "basepool/cbarray.h"
#include "basepool/cbexception.h"
#include "basepool/cbvector2.h"
#include "zq3dbase/zqmpfitline2d.h"

#include <gtest/gtest.h>

#include <cmath>
#include <random>
#include <string>

namespace
{
// compute() itself, to see the exception that Compute turns into false.
template <class TPoints> class CExposedFit : public ZqMpFitLine2D<TPoints>
{
public:
    using ZqMpFitLine2D<TPoints>::compute;
};

template <class TVector> struct SFit
{
    using S = typename TVector::ValueType;
    CbArray<TVector> points;
    CbArray<S> weights;
    CExposedFit<CbArray<TVector>> fit;

    explicit SFit(std::initializer_list<TVector> values) : points(values) { fit.points = &points; }
    bool Run(bool robust, bool weighted = false)
    {
        fit.weights = weighted ? &weights : nullptr;
        fit.SetFlags(CbFlags<ZqMpFitBase::EFlags>(robust ? ZqMpFitBase::eF_Robust : ZqMpFitBase::eF_None));
        fit.setInputChanged();
        return fit.Compute(ZqAlgorithm::eCF_Compute);
    }
    // The exception of a direct compute(), as "function: detail".
    std::string Thrown()
    {
        try
        {
            fit.compute();
        }
        catch (const CbException& e)
        {
            return std::string(e.GetFunction()) + ": " + e.GetDetail();
        }
        return "nothing thrown";
    }
};

template <class T> class ZqMpFitLine2DTest : public ::testing::Test
{
};
using ZqFitVectors = ::testing::Types<CbVector2f, CbVector2d>;
TYPED_TEST_SUITE(ZqMpFitLine2DTest, ZqFitVectors);

std::string typeText(const CbVector2f&)
{
    return "ZqMpFitLine2D<class CbArray<class CbVector2f> >::compute";
}
std::string typeText(const CbVector2d&)
{
    return "ZqMpFitLine2D<class CbArray<class CbVector2d> >::compute";
}
} // namespace

TYPED_TEST(ZqMpFitLine2DTest, TwoPointsGiveTheirLineExactly)
{
    SFit<TypeParam> f({{1, 1}, {3, 5}});
    ASSERT_TRUE(f.Run(true));
    EXPECT_EQ(f.fit.coefficient1, 2);
    EXPECT_EQ(f.fit.coefficient2, -1);
    EXPECT_EQ(f.fit.sigma, 0);
    EXPECT_EQ(f.fit.inlierWeight, 1);
}

TYPED_TEST(ZqMpFitLine2DTest, CollinearPointsAreNotReweighted)
{
    // Zero residuals after the first fit: reweighting would divide by a zero scale.
    SFit<TypeParam> f({{-2, 10}, {0, 4}, {1, 1}, {5, -11}, {7, -17}});
    ASSERT_TRUE(f.Run(true));
    EXPECT_EQ(f.fit.coefficient1, -3);
    EXPECT_EQ(f.fit.coefficient2, 4);
    EXPECT_EQ(f.fit.sigma, 0);
    EXPECT_EQ(f.fit.inlierWeight, 1);
}

TYPED_TEST(ZqMpFitLine2DTest, GrossOutlierGetsNoWeightAndTheLineIsExact)
{
    // Ten points on y = 2x + 1 and one 80 units above: the first fits still give it some weight,
    // then its residual passes 4.6851 sigma and the refit without it lands on the line.
    SFit<TypeParam> f({{0, 1}, {1, 3}, {2, 5}, {3, 7}, {4, 9}, {5, 11}, {6, 13}, {7, 15}, {8, 17}, {9, 19}});
    f.points.Add({4.5f, 90});
    ASSERT_TRUE(f.Run(true));
    EXPECT_NEAR(f.fit.coefficient1, 2, 1e-6);
    EXPECT_NEAR(f.fit.coefficient2, 1, 1e-5);
    EXPECT_EQ(f.fit.sigma, 0);
    // Ten biweights of 1 and the outlier's 0, over 11 points.
    EXPECT_NEAR(f.fit.inlierWeight, 10.0 / 11.0, 1e-6);

    // Least squares is pulled up by 80 / 11.
    ASSERT_TRUE(f.Run(false));
    EXPECT_NEAR(f.fit.coefficient1, 1 + 80.0 / 11.0, 1e-4);
}

TEST(ZqMpFitLine2DTest, RoundingNoiseCountsAsAnExactLine)
{
    // Double points on y = x / 10 + 1 / 3 are on the line up to rounding; so is the fit. Weights
    // computed from a scale of rounding noise would scatter at random instead of being 1.
    SFit<CbVector2d> f({});
    for (int i = 0; i < 12; ++i)
        f.points.Add(CbVector2d(0.3 * i, 0.1 * (0.3 * i) + 1.0 / 3.0));
    ASSERT_TRUE(f.Run(true));
    EXPECT_EQ(f.fit.sigma, 0.0);
    EXPECT_EQ(f.fit.inlierWeight, 1.0);

    f.points.Add(CbVector2d(1.55, 40.0));
    ASSERT_TRUE(f.Run(true));
    EXPECT_NEAR(f.fit.coefficient1, 0.1, 1e-12);
    EXPECT_NEAR(f.fit.coefficient2, 1.0 / 3.0, 1e-12);
    EXPECT_EQ(f.fit.sigma, 0.0);
    EXPECT_NEAR(f.fit.inlierWeight, 12.0 / 13.0, 1e-12);
}

TEST(ZqMpFitBaseTest, BiweightVanishesBeyondTheTuningConstant)
{
    const double s = 4.0; // sigma 2
    EXPECT_EQ(ZqMpFitBase::TukeyWeight(0.0, s), 1.0);
    EXPECT_NEAR(ZqMpFitBase::TukeyWeight(2.0 * 2.0, s), std::pow(1.0 - 1.0 / (4.6851 * 4.6851), 2), 1e-15);
    const double inside = 2.0 * 4.6850, outside = 2.0 * 4.6852;
    EXPECT_GT(ZqMpFitBase::TukeyWeight(inside * inside, s), 0.0);
    EXPECT_EQ(ZqMpFitBase::TukeyWeight(outside * outside, s), 0.0);
    EXPECT_EQ(ZqMpFitBase::TukeyWeight(1e30, s), 0.0);
}

TYPED_TEST(ZqMpFitLine2DTest, PlainAndRobustStoreTheCoefficientsInOppositeOrder)
{
    SFit<TypeParam> f({{0, 0.5f}, {2, 1.5f}, {4, 2.5f}, {6, 3.5f}});
    ASSERT_TRUE(f.Run(false));
    EXPECT_EQ(f.fit.coefficient1, 0.5f); // intercept
    EXPECT_EQ(f.fit.coefficient2, 0.5f); // slope
    EXPECT_EQ(f.fit.line(10), 5.5f);
    EXPECT_EQ(f.fit.sigma, 0);
    EXPECT_EQ(f.fit.inlierWeight, 0);

    SFit<TypeParam> g({{0, 3}, {1, 5}, {2, 7}});
    ASSERT_TRUE(g.Run(false));
    EXPECT_EQ(g.fit.coefficient1, 3);
    EXPECT_EQ(g.fit.coefficient2, 2);
    ASSERT_TRUE(g.Run(true));
    EXPECT_EQ(g.fit.coefficient1, 2);
    EXPECT_EQ(g.fit.coefficient2, 3);
    // The line function reads either order correctly.
    EXPECT_EQ(g.fit.line(-1), 1);
}

TYPED_TEST(ZqMpFitLine2DTest, IntegerWeightsActLikeRepeatedPoints)
{
    std::mt19937 generator(31u);
    std::normal_distribution<double> noise(0.0, 0.3);
    std::uniform_int_distribution<int> repeat(0, 3);
    SFit<TypeParam> weighted({});
    SFit<TypeParam> repeated({});
    for (int i = 0; i < 60; ++i)
    {
        const TypeParam p(i * 0.5f, typename TypeParam::ValueType(1.0 - 0.25 * i + noise(generator) +
                                                                  (i % 7 == 0 ? 25.0 : 0.0)));
        const int times = repeat(generator);
        weighted.points.Add(p);
        weighted.weights.Add(typename TypeParam::ValueType(times));
        for (int k = 0; k < times; ++k)
            repeated.points.Add(p);
    }
    ASSERT_TRUE(weighted.Run(true, true));
    ASSERT_TRUE(repeated.Run(true));
    EXPECT_NEAR(weighted.fit.coefficient1, repeated.fit.coefficient1, 1e-5);
    EXPECT_NEAR(weighted.fit.coefficient2, repeated.fit.coefficient2, 1e-4);
    EXPECT_NEAR(weighted.fit.sigma, repeated.fit.sigma, 1e-5);
    // The outliers every seventh point are gone either way.
    EXPECT_NEAR(repeated.fit.coefficient1, -0.5, 0.05);
}

TYPED_TEST(ZqMpFitLine2DTest, ZeroWeightRemovesAPoint)
{
    SFit<TypeParam> f({{0, 1}, {1, 2}, {2, 50}, {3, 4}});
    f.weights = {1, 1, 0, 1};
    ASSERT_TRUE(f.Run(true, true));
    EXPECT_EQ(f.fit.coefficient1, 1);
    EXPECT_EQ(f.fit.coefficient2, 1);
    EXPECT_EQ(f.fit.sigma, 0);
}

TYPED_TEST(ZqMpFitLine2DTest, CoordinatesFarFromTheOriginKeepTheirPrecision)
{
    // Exactly representable points on y = x / 2 + 3 around x = 1e6 (float spacing there is 1/16):
    // sums of squares about the origin would lose the intercept.
    SFit<TypeParam> f({});
    for (int i = 0; i < 200; ++i)
        f.points.Add(TypeParam(1000000.0f + 0.125f * i, 500003.0f + 0.0625f * i));
    for (bool robust : {false, true})
    {
        ASSERT_TRUE(f.Run(robust));
        EXPECT_NEAR(f.fit.line.slope, 0.5, 1e-7) << robust;
        EXPECT_NEAR(f.fit.line.intercept, 3.0, 1e-4) << robust;
    }
}

TYPED_TEST(ZqMpFitLine2DTest, RobustFailuresThrowFromCompute)
{
    const std::string function = typeText(TypeParam());

    SFit<TypeParam> wrongWeights({{0, 0}, {1, 1}, {2, 2}});
    wrongWeights.weights = {1, 1};
    EXPECT_FALSE(wrongWeights.Run(true, true));
    EXPECT_NE(wrongWeights.fit.GetLastError().find(function), std::string::npos)
        << wrongWeights.fit.GetLastError();
    EXPECT_EQ(wrongWeights.Thrown(), function + ": the weights array does not hold one weight per point");
    // The outputs are cleared, not left from an earlier fit.
    EXPECT_EQ(wrongWeights.fit.coefficient1, 0);

    SFit<TypeParam> onePoint({{3, 4}});
    EXPECT_FALSE(onePoint.Run(true));
    EXPECT_EQ(onePoint.Thrown(), function + ": fewer than two points");

    SFit<TypeParam> vertical({{2, 0}, {2, 1}, {2, 5}});
    EXPECT_FALSE(vertical.Run(true));
    EXPECT_EQ(vertical.Thrown(), function + ": the points do not span two distinct x values");

    // Only the robust method checks: least squares reports success with non-finite coefficients.
    EXPECT_TRUE(vertical.Run(false));
    EXPECT_FALSE(std::isfinite(vertical.fit.coefficient2));

    SFit<TypeParam> none({});
    none.fit.points = nullptr;
    EXPECT_FALSE(none.Run(false));
}

TEST(ZqMpFitLine2DTest, ThrowSiteNamesTheHeader)
{
    SFit<CbVector2f> f({{1, 1}});
    f.fit.SetFlags(CbFlags<ZqMpFitBase::EFlags>(ZqMpFitBase::eF_Robust));
    try
    {
        f.fit.compute();
        FAIL() << "nothing thrown";
    }
    catch (const CbException& e)
    {
        EXPECT_STREQ(e.GetFile(), "core/zqlibraries/zq3dbase/zqmpfitline2d.h");
        EXPECT_STREQ(e.GetKind(), "CbException");
    }
}
