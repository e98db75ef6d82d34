// Powell's method: sweep limits, maximization, the guard against degenerate directions, bounds,
// failures, and a harder valley. Evaluation counts are bounded, not asserted exactly.

#include "zqmath/zqpowell.h"

#include <gtest/gtest.h>

#include <cmath>
#include <string>

namespace
{
struct SSurface
{
    int evaluations = 0;
    // |p + (1, -0.5)|^2, minimum 0 at (-1, 0.5).
    float bowl(const ZqMatrix<float>& p)
    {
        ++evaluations;
        return (p + ZqMatrix<float>::Vector({1.0f, -0.5f})).GetSquaredLength();
    }
    // Axis-aligned: one sweep along the coordinate axes reaches the minimum 1 at (1, -2). (Not 0:
    // the relative convergence test cannot settle on a value that keeps halving towards 0.)
    float separable(const ZqMatrix<float>& p)
    {
        ++evaluations;
        return (p[0] - 1.0f) * (p[0] - 1.0f) + 4.0f * (p[1] + 2.0f) * (p[1] + 2.0f) + 1.0f;
    }
    // Maximum 5 at (1, -2).
    float hill(const ZqMatrix<float>& p) { return 6.0f - separable(p); }
    // A long diagonal valley, minimum 0 at (2, 1).
    float tilted(const ZqMatrix<float>& p)
    {
        ++evaluations;
        const float u = p[0] - 2.0f, v = p[1] - 1.0f;
        return u * u + v * v + 1.8f * u * v;
    }
    float rosenbrock(const ZqMatrix<float>& p)
    {
        ++evaluations;
        const float a = 1.0f - p[0], b = p[1] - p[0] * p[0];
        return a * a + 100.0f * b * b;
    }
};

using Powell = ZqPowell<float, SSurface>;

struct SPowellSetup
{
    SSurface surface;
    ZqMatrix<float> point = ZqMatrix<float>::Vector({10.0f, -10.0f});
    ZqMatrix<float> directions = ZqMatrix<float>::Identity(2);
    Powell powell;

    explicit SPowellSetup(float (SSurface::*function)(const ZqMatrix<float>&))
    {
        powell.point = &point;
        powell.directions = &directions;
        powell.bracketingMethod = Powell::eBM_Parabolic;
        powell.locateMethod = Powell::eLM_Brent;
        powell.maxIterations = 10;
        powell.ftol = 0.001f;
        powell.client = &surface;
        powell.function = function;
        powell.sign = 1;
    }
};
} // namespace

TEST(ZqPowell, MaximumOfZeroIterationsMakesExactlyOneSweep)
{
    // The first sweep reaches the minimum but has lowered the value: no convergence yet, no second sweep.
    SPowellSetup once(&SSurface::separable);
    once.powell.maxIterations = 0;
    EXPECT_FALSE(once.powell.Compute());
    EXPECT_NE(once.powell.GetLastError().find("iteration limit"), std::string::npos);
    EXPECT_EQ(once.powell.sweeps, 1u);
    EXPECT_NEAR(once.point[0], 1.0f, 0.01f);
    EXPECT_NEAR(once.point[1], -2.0f, 0.01f);

    SPowellSetup twice(&SSurface::separable);
    twice.powell.maxIterations = 1;
    ASSERT_TRUE(twice.powell.Compute()) << twice.powell.GetLastError();
    EXPECT_EQ(twice.powell.sweeps, 2u);
    EXPECT_NEAR(*twice.powell.fmin, 1.0f, 1e-4f);

    // Starting at the minimum, the single sweep converges.
    SPowellSetup atMinimum(&SSurface::separable);
    atMinimum.point = ZqMatrix<float>::Vector({1.0f, -2.0f});
    atMinimum.powell.maxIterations = 0;
    EXPECT_TRUE(atMinimum.powell.Compute()) << atMinimum.powell.GetLastError();
    EXPECT_EQ(atMinimum.powell.sweeps, 1u);
}

TEST(ZqPowell, MaximizationReturnsTheTrueMaximum)
{
    SPowellSetup setup(&SSurface::hill);
    setup.powell.sign = -1;
    setup.powell.maximize = 1;
    ASSERT_TRUE(setup.powell.Compute()) << setup.powell.GetLastError();
    EXPECT_NEAR(*setup.powell.fmin, 5.0f, 1e-3f);
    EXPECT_NEAR(setup.point[0], 1.0f, 0.02f);
    EXPECT_NEAR(setup.point[1], -2.0f, 0.02f);
}

TEST(ZqPowell, ExtrapolationCutToNothingAtTheBoxKeepsTheDirections)
{
    // The first sweep ends at (-1, 0) on the box's upper y bound; the extrapolation from (10, -10)
    // through it leaves the box at once, so the line minimization along it moves by 0 and must not
    // replace a direction.
    SPowellSetup setup(&SSurface::bowl);
    const ZqMatrix<float> boundsMatrix(2, 2, {-20.0f, -20.0f, 20.0f, 0.0f});
    setup.powell.boundsMatrix = &boundsMatrix;
    ASSERT_TRUE(setup.powell.Compute()) << setup.powell.GetLastError();
    EXPECT_EQ(setup.directions, ZqMatrix<float>::Identity(2));
    EXPECT_NEAR(*setup.powell.fmin, 0.25f, 1e-3f);
    EXPECT_NEAR(setup.point[0], -1.0f, 0.01f);
    EXPECT_LE(setup.point[1], 0.0f);
    EXPECT_LT(setup.surface.evaluations, 200);
}

TEST(ZqPowell, DiagonalValleyReplacesADirection)
{
    SPowellSetup setup(&SSurface::tilted);
    setup.powell.ftol = 1e-6f;
    setup.powell.maxIterations = 50;
    ASSERT_TRUE(setup.powell.Compute()) << setup.powell.GetLastError();
    EXPECT_NEAR(setup.point[0], 2.0f, 0.01f);
    EXPECT_NEAR(setup.point[1], 1.0f, 0.01f);
    EXPECT_FALSE(setup.directions == ZqMatrix<float>::Identity(2));
    EXPECT_LT(setup.surface.evaluations, 500);
}

TEST(ZqPowell, FindsTheRosenbrockMinimumFromTheClassicStart)
{
    SPowellSetup setup(&SSurface::rosenbrock);
    setup.point = ZqMatrix<float>::Vector({-1.2f, 1.0f});
    setup.powell.maxIterations = 200;
    ASSERT_TRUE(setup.powell.Compute()) << setup.powell.GetLastError();
    EXPECT_NEAR(setup.point[0], 1.0f, 0.01f);
    EXPECT_NEAR(setup.point[1], 1.0f, 0.02f);
    EXPECT_LT(*setup.powell.fmin, 1e-4f);
    EXPECT_LT(setup.surface.evaluations, 3000);
}

TEST(ZqPowell, RejectsInconsistentInputs)
{
    const auto rejected = [](auto configure, const char* reason)
    {
        SPowellSetup setup(&SSurface::bowl);
        configure(setup);
        EXPECT_FALSE(setup.powell.Compute());
        const std::string& error = setup.powell.GetLastError();
        EXPECT_NE(error.find("CbExceptionPreconditionViolation"), std::string::npos) << error;
        EXPECT_NE(error.find(reason), std::string::npos) << error;
        EXPECT_EQ(setup.surface.evaluations, 0);
    };
    rejected([](SPowellSetup& s) { s.powell.sign = 0; }, "sign");
    rejected([](SPowellSetup& s) { s.powell.bracketingMethod = Powell::eBM_Bounds; },
             "bounds bracketing without");
    rejected([](SPowellSetup& s) { s.directions = ZqMatrix<float>::Identity(3); }, "directions");
    const ZqMatrix<float> interval = ZqMatrix<float>::Vector({-1.0f, 1.0f});
    const ZqMatrix<float> matrix(2, 2, {-1.0f, -1.0f, 1.0f, 1.0f});
    rejected(
        [&](SPowellSetup& s)
        {
            s.powell.bounds = &interval;
            s.powell.boundsMatrix = &matrix;
        },
        "together");
}

TEST(ZqPowell, FailedLineMinimizationFailsTheSweepWithItsReason)
{
    SPowellSetup setup(&SSurface::bowl);
    setup.powell.locateMethod = Powell::ELocateMethod(0);
    EXPECT_FALSE(setup.powell.Compute());
    const std::string& error = setup.powell.GetLastError();
    EXPECT_EQ(error.find("CbException in ZqPowell<float,class "), 0u) << error;
    EXPECT_NE(error.find("::compute"), std::string::npos) << error;
    EXPECT_NE(error.find("unknown locate method"), std::string::npos) << error;
    ASSERT_TRUE(setup.powell.fmin);
    EXPECT_EQ(*setup.powell.fmin, 0.0f);
}
