// Bracketing, Brent's method and the line minimization: the cases the module's two subtests do not
// reach. Evaluation counts are bounded, not asserted exactly: rounding changes the path.

#include "zqmath/zqbrent.h"
#include "zqmath/zqlineminimization.h"
#include "zqmath/zqparabolicbracketing.h"

#include <gtest/gtest.h>

#include <cfloat>
#include <cmath>
#include <string>

namespace
{
// Objectives of one variable and of points, counting their evaluations.
struct SCurve
{
    int evaluations = 0;
    float parabola(const float* x) // minimum 1 at 2
    {
        ++evaluations;
        return (*x - 2.0f) * (*x - 2.0f) + 1.0f;
    }
    float cap(const float* x) // maximum 3 at 1
    {
        ++evaluations;
        return 3.0f - (*x - 1.0f) * (*x - 1.0f);
    }
    float slope(const float* x)
    {
        ++evaluations;
        return -*x;
    }
    float distanceToTarget(const ZqMatrix<float>& p)
    {
        ++evaluations;
        return (p - target).GetSquaredLength();
    }
    ZqMatrix<float> target = ZqMatrix<float>::Vector({3.0f, 0.0f});
};

using Brent = ZqBrent<float, SCurve>;
using Bracketing = ZqParabolicBracketing<float, SCurve>;
using Line = ZqLineMinimization<float, SCurve>;

Brent makeBrent(SCurve& curve, float (SCurve::*function)(const float*), ZqMatrix<float> bracket,
                const float& tol)
{
    Brent brent;
    brent.client = &curve;
    brent.function = function;
    brent.bracket = bracket;
    brent.tolerance = &tol;
    return brent;
}

// A line minimization from point along direction towards curve.target, parabolic bracketing.
struct SLineSetup
{
    SCurve curve;
    ZqMatrix<float> point = ZqMatrix<float>::Vector({-10.0f, 0.0f});
    ZqMatrix<float> direction = ZqMatrix<float>::Vector({2.0f, 0.0f});
    float tolerance = 0.001f;
    float step = 1.0f;
    Line line;

    SLineSetup()
    {
        line.point = &point;
        line.direction = &direction;
        line.tolerance = &tolerance;
        line.bracketingMethod = Line::eBM_Parabolic;
        line.locateMethod = Line::eLM_Brent;
        line.initialStep = &step;
        line.client = &curve;
        line.function = &SCurve::distanceToTarget;
        line.sign = 1;
    }
};
} // namespace

TEST(ZqBrent, ReversedBracketGivesTheSameMinimum)
{
    SCurve curve;
    const float tol = 1e-4f;
    Brent forward = makeBrent(curve, &SCurve::parabola, ZqMatrix<float>::Vector({0.0f, 1.5f, 5.0f}), tol);
    Brent reversed = makeBrent(curve, &SCurve::parabola, ZqMatrix<float>::Vector({5.0f, 1.5f, 0.0f}), tol);
    ASSERT_TRUE(forward.Compute());
    ASSERT_TRUE(reversed.Compute());
    EXPECT_NEAR(reversed.xmin, 2.0f, 1e-3f);
    EXPECT_EQ(reversed.xmin, forward.xmin);
    EXPECT_FLOAT_EQ(reversed.fmin, 1.0f);
    EXPECT_LT(curve.evaluations, 60);
}

TEST(ZqBrent, MaximizationReturnsTheTrueMaximum)
{
    SCurve curve;
    const float tol = 1e-4f;
    Brent brent = makeBrent(curve, &SCurve::cap, ZqMatrix<float>::Vector({-2.0f, 0.5f, 4.0f}), tol);
    brent.sign = -1;
    ASSERT_TRUE(brent.Compute());
    EXPECT_NEAR(brent.xmin, 1.0f, 1e-3f);
    EXPECT_FLOAT_EQ(brent.fmin, 3.0f);
}

TEST(ZqBrent, GivesUpAfterTwoHundredIterations)
{
    // A negative tolerance can never be met.
    SCurve curve;
    const float tol = -1.0f;
    Brent brent = makeBrent(curve, &SCurve::parabola, ZqMatrix<float>::Vector({0.0f, 1.5f, 5.0f}), tol);
    EXPECT_FALSE(brent.Compute());
    EXPECT_NE(brent.GetLastError().find("ZqBrent<float,class "), std::string::npos) << brent.GetLastError();
    EXPECT_LE(curve.evaluations, Brent::c_maxIterations + 1);
    EXPECT_GT(curve.evaluations, Brent::c_maxIterations / 2);
}

TEST(ZqParabolicBracketing, BracketsAMinimumDownhill)
{
    SCurve curve;
    Bracketing bracketing;
    bracketing.client = &curve;
    bracketing.function = &SCurve::parabola;
    bracketing.initial = ZqMatrix<float>::Vector({-30.0f, -29.9f});
    ASSERT_TRUE(bracketing.Compute());
    const ZqMatrix<float>& x = bracketing.bracket;
    const ZqMatrix<float>& f = bracketing.values;
    EXPECT_LE(std::fmin(x[0], x[2]), 2.0f);
    EXPECT_GE(std::fmax(x[0], x[2]), 2.0f);
    EXPECT_LE(f[1], f[0]);
    EXPECT_LE(f[1], f[2]);
    for (std::size_t i = 0; i < 3; ++i)
        EXPECT_EQ(f[i], curve.parabola(&x[i]));
}

TEST(ZqParabolicBracketing, ClampedTrialPointsStopAtTheIntervalEnd)
{
    SCurve curve;
    const ZqMatrix<float> clamp = ZqMatrix<float>::Vector({-1.0f, 2.0f});
    Bracketing bracketing;
    bracketing.client = &curve;
    bracketing.function = &SCurve::slope;
    bracketing.initial = ZqMatrix<float>::Vector({0.0f, 0.5f});
    bracketing.clamp = &clamp;
    ASSERT_TRUE(bracketing.Compute());
    for (std::size_t i = 0; i < 3; ++i)
    {
        EXPECT_GE(bracketing.bracket[i], -1.0f);
        EXPECT_LE(bracketing.bracket[i], 2.0f);
    }
    EXPECT_EQ(bracketing.bracket[2], 2.0f);
    EXPECT_EQ(bracketing.values[2], -2.0f);
    EXPECT_LT(curve.evaluations, 20);

    // Without the interval the slope never turns: the bracketing fails instead of looping.
    bracketing.clamp = nullptr;
    EXPECT_FALSE(bracketing.Compute(ZqAlgorithm::eCF_Force));
}

TEST(ZqLineMinimization, MovesThePointAndReturnsTheDisplacement)
{
    SLineSetup setup;
    ASSERT_TRUE(setup.line.Compute());
    EXPECT_NEAR(*setup.line.xmin, 6.5f, 0.02f);
    EXPECT_NEAR(setup.point[0], 3.0f, 0.02f);
    EXPECT_EQ(setup.point[1], 0.0f);
    EXPECT_EQ(setup.direction[0], 2.0f * *setup.line.xmin);
    EXPECT_EQ(setup.point[0], -10.0f + setup.direction[0]);
    EXPECT_EQ(*setup.line.fmin, setup.curve.distanceToTarget(setup.point));
    EXPECT_EQ(setup.line.dimension, 2u);
    EXPECT_LT(setup.curve.evaluations, 40);
}

TEST(ZqLineMinimization, BoundsKeepTheSearchInsideTheBox)
{
    // The target lies beyond the box's upper x bound 20; both bracketings stop at the bound, within
    // Brent's stopping width 4 (0.001 |t| + 0.001): 0.064 in t near 15, 0.13 in x.
    for (const Line::EBracketingMethod method : {Line::eBM_Bounds, Line::eBM_Parabolic})
    {
        SLineSetup setup;
        const ZqMatrix<float> bounds = ZqMatrix<float>::Vector({-20.0f, 20.0f});
        setup.curve.target = ZqMatrix<float>::Vector({30.0f, 0.0f});
        setup.line.bracketingMethod = method;
        setup.line.bounds = &bounds;
        ASSERT_TRUE(setup.line.Compute()) << setup.line.GetLastError();
        EXPECT_NEAR(setup.point[0], 20.0f, 0.15f) << "method " << method;
        EXPECT_LE(setup.point[0], 20.0f) << "method " << method;
    }
}

TEST(ZqLineMinimization, RejectsInconsistentInputs)
{
    const auto rejected = [](auto configure, const char* reason)
    {
        SLineSetup setup;
        configure(setup);
        EXPECT_FALSE(setup.line.Compute());
        const std::string& error = setup.line.GetLastError();
        EXPECT_NE(error.find("CbExceptionPreconditionViolation"), std::string::npos) << error;
        EXPECT_NE(error.find(reason), std::string::npos) << error;
        EXPECT_EQ(setup.curve.evaluations, 0);
    };
    rejected([](SLineSetup& s) { s.line.bracketingMethod = Line::eBM_Bounds; },
             "bounds bracketing without bounds");
    rejected([](SLineSetup& s) { s.line.sign = 0; }, "sign");
    rejected([](SLineSetup& s) { s.line.maximize = 1; }, "sign");
    rejected([](SLineSetup& s) { s.direction = ZqMatrix<float>::Vector({1.0f, 0.0f, 0.0f}); }, "direction");
    const ZqMatrix<float> matrix(2, 3);
    rejected([&](SLineSetup& s) { s.line.boundsMatrix = &matrix; }, "bounds matrix");
}

TEST(ZqLineMinimization, UnknownMethodsFailInsideCompute)
{
    SLineSetup unknownBracketing;
    unknownBracketing.line.bracketingMethod = Line::EBracketingMethod(7);
    EXPECT_FALSE(unknownBracketing.line.Compute());
    EXPECT_NE(unknownBracketing.line.GetLastError().find("::compute"), std::string::npos);
    EXPECT_NE(unknownBracketing.line.GetLastError().find("unknown bracketing method"), std::string::npos);

    SLineSetup unknownLocate;
    unknownLocate.line.locateMethod = Line::ELocateMethod(0);
    EXPECT_FALSE(unknownLocate.line.Compute());
    EXPECT_NE(unknownLocate.line.GetLastError().find("unknown locate method"), std::string::npos);
}

TEST(ZqLineMinimization, BrentFailureNamesTheInstantiation)
{
    SLineSetup setup;
    setup.tolerance = -1.0f;
    EXPECT_FALSE(setup.line.Compute());
    const std::string& error = setup.line.GetLastError();
    EXPECT_NE(error.find("ZqBrent<float,class ZqLineMinimization<float,class "), std::string::npos) << error;
    EXPECT_NE(error.find("SCurve> >::compute"), std::string::npos) << error;
}

TEST(ZqLineMinimization, SlabClippingIgnoresCrossingsOutsideTheInterval)
{
    const ZqMatrix<float> unit = ZqMatrix<float>::Vector({0.0f, 1.0f});
    const Line::SBox box = Line::MakeBox(&unit, nullptr, 2);
    float tLo = 0, tHi = 0;

    // Only x moves: y imposes nothing.
    Line::ClipLine(ZqMatrix<float>::Vector({-1.0f, 0.5f}), ZqMatrix<float>::Vector({0.0f, 0.5f}), box, tLo,
                   tHi);
    EXPECT_EQ(tLo, 1.0f);
    EXPECT_EQ(tHi, 2.0f);

    // A line that passes above the box keeps its x interval: the y crossings fall outside it.
    Line::ClipLine(ZqMatrix<float>::Vector({-1.0f, 5.0f}), ZqMatrix<float>::Vector({0.0f, 6.0f}), box, tLo,
                   tHi);
    EXPECT_EQ(tLo, 1.0f);
    EXPECT_EQ(tHi, 2.0f);

    // Descending diagonal through the box: enters at x = 0 (t = 0.25), leaves at y = 0 (t = 0.75).
    const ZqMatrix<float> bounds(2, 2, {0.0f, 0.0f, 1.0f, 1.0f});
    Line::ClipLine(ZqMatrix<float>::Vector({-0.25f, 0.75f}), ZqMatrix<float>::Vector({0.75f, -0.25f}),
                   Line::MakeBox(nullptr, &bounds, 2), tLo, tHi);
    EXPECT_FLOAT_EQ(tLo, 0.25f);
    EXPECT_FLOAT_EQ(tHi, 0.75f);

    const ZqMatrix<float> point = ZqMatrix<float>::Vector({0.5f, 0.5f});
    Line::ClipLine(point, point, box, tLo, tHi);
    EXPECT_EQ(tLo, -FLT_MAX);
    EXPECT_EQ(tHi, FLT_MAX);

    EXPECT_THROW(Line::MakeBox(nullptr, nullptr, 2), CbExceptionPreconditionViolation);
    EXPECT_THROW(Line::ClipLine(ZqMatrix<float>::Vector({0.0f, 0.0f, 0.0f}),
                                ZqMatrix<float>::Vector({1.0f, 1.0f, 1.0f}), box, tLo, tHi),
                 CbExceptionPreconditionViolation);
}
