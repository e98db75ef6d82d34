// The closed-form polynomial solvers: the branches the module's table does not reach, the
// cancellation-free quadratic pair, and random cubics with known roots.

#include "basepool/cbexception.h"
#include "zqmath/zqcubicequation.h"
#include "zqmath/zqquadraticequation.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cfloat>
#include <cmath>
#include <random>
#include <vector>

namespace
{
struct SRoots
{
    std::uint32_t count;
    float x[3];
};

SRoots solve(float a, float b, float c, float d)
{
    SRoots roots{0, {FLT_MAX, FLT_MAX, FLT_MAX}};
    roots.count = ZqSolveCubicEquation(a, b, c, d, &roots.x[0], &roots.x[1], &roots.x[2]);
    return roots;
}
} // namespace

TEST(ZqCubicEquation, ZeroDiscriminantWithDoubleRootAnswersTheDepressedCubicUnshifted)
{
    // (x - 1)^2 (x - 4): the depressed cubic t^3 - 3t - 2 has the roots 2 and -1; they come back
    // without the shift by 2 that would give the true roots 4 and 1.
    const SRoots roots = solve(1, -6, 9, -4);
    ASSERT_EQ(roots.count, 2u);
    EXPECT_EQ(roots.x[0], 2.0f);
    EXPECT_EQ(roots.x[1], -1.0f);
    EXPECT_EQ(roots.x[2], FLT_MAX);
}

TEST(ZqCubicEquation, ZeroDiscriminantTripleRootIsShifted)
{
    // (x + 1)^3
    const SRoots roots = solve(1, 3, 3, 1);
    ASSERT_EQ(roots.count, 1u);
    EXPECT_EQ(roots.x[0], -1.0f);
    EXPECT_EQ(roots.x[1], FLT_MAX);
}

TEST(ZqCubicEquation, DegenerateLeadingCoefficients)
{
    EXPECT_EQ(solve(0, 0, 0, 0).count, 0u);
    EXPECT_EQ(solve(0, 0, 0, 5).count, 0u);
    const SRoots linear = solve(0, 0, 4, 2);
    ASSERT_EQ(linear.count, 1u);
    EXPECT_EQ(linear.x[0], -0.5f);
    EXPECT_EQ(linear.x[1], FLT_MAX);
}

TEST(ZqCubicEquation, NullOutputIsAPreconditionViolation)
{
    float x1, x2;
    EXPECT_THROW(ZqSolveCubicEquation(1, 0, 0, 0, &x1, &x2, nullptr), CbExceptionPreconditionViolation);
    EXPECT_THROW(ZqSolveQuadraticEquation<double>(1.0, 0.0, 0.0, nullptr, nullptr),
                 CbExceptionPreconditionViolation);
}

TEST(ZqCubicEquation, RandomCubicsWithKnownRootsAreSolved)
{
    // Fixed seed: the roots are well separated, so every case takes the one- or three-root branch.
    std::mt19937 generator(20240611u);
    std::uniform_real_distribution<float> distribution(-10.0f, 10.0f);
    int three = 0;
    for (int i = 0; i < 2000; ++i)
    {
        std::vector<float> known = {distribution(generator), distribution(generator),
                                    distribution(generator)};
        std::sort(known.begin(), known.end());
        if (known[1] - known[0] < 0.5f || known[2] - known[1] < 0.5f)
            continue;
        const bool complexPair = i % 2 == 1;
        // (x - r0)(x - r1)(x - r2), or (x - r0)(x^2 + 1) with a complex pair.
        const float b = complexPair ? -known[0] : -(known[0] + known[1] + known[2]);
        const float c = complexPair ? 1.0f : known[0] * known[1] + known[0] * known[2] + known[1] * known[2];
        const float d = complexPair ? -known[0] : -known[0] * known[1] * known[2];
        const SRoots roots = solve(1.0f, b, c, d);
        ASSERT_EQ(roots.count, complexPair ? 1u : 3u) << "case " << i;
        std::vector<float> found(roots.x, roots.x + roots.count);
        std::sort(found.begin(), found.end());
        for (std::size_t k = 0; k < found.size(); ++k)
            EXPECT_NEAR(found[k], known[k], 2e-3f * (1.0f + std::fabs(known[k])))
                << "case " << i << " root " << k;
        three += roots.count == 3;
    }
    EXPECT_GT(three, 100);
}

TEST(ZqQuadraticEquation, DistinctRootsComeAsTheCancellationFreePair)
{
    // c > 0 takes w = c + sqrt(disc), c <= 0 takes w = c - sqrt(disc); x1 = -w / 2b, x2 = d / (-w / 2).
    float x1 = 0, x2 = 0;
    ASSERT_EQ(ZqSolveQuadraticEquation(1.0f, 0.0f, -4.0f, &x1, &x2), 2u);
    EXPECT_EQ(x1, 2.0f);
    EXPECT_EQ(x2, -2.0f);
    ASSERT_EQ(ZqSolveQuadraticEquation(1.0f, 3.0f, 2.0f, &x1, &x2), 2u);
    EXPECT_EQ(x1, -2.0f);
    EXPECT_EQ(x2, -1.0f);

    // The textbook formula loses the small root of x^2 - 10000 x + 1 entirely in float.
    ASSERT_EQ(ZqSolveQuadraticEquation(1.0f, -10000.0f, 1.0f, &x1, &x2), 2u);
    EXPECT_FLOAT_EQ(x1, 10000.0f);
    EXPECT_FLOAT_EQ(x2, 1e-4f);
}

TEST(ZqQuadraticEquation, DoubleRootCountsOnceAndNegativeDiscriminantHasNone)
{
    double x1 = 7, x2 = 7;
    ASSERT_EQ(ZqSolveQuadraticEquation(2.0, -4.0, 2.0, &x1, &x2), 1u);
    EXPECT_EQ(x1, 1.0);
    EXPECT_EQ(x2, 7.0);
    EXPECT_EQ(ZqSolveQuadraticEquation(1.0, 0.0, 1.0, &x1, &x2), 0u);
}
