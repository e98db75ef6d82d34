// Throughput of the closed-form cubic solver (float) against two ways of solving the same cubics:
// the eigenvalues of the companion matrix, and Newton's method for one root followed by deflation
// to a quadratic. Each case first solves every cubic once untimed and reports its accuracy
// (largest root error, cubics with the wrong number of real roots); the ratios of the times are
// printed at the end of the run.

#include "zqmath/zqcubicequation.h"

#include "zqbenchmain.h"

#if ZQ_HAVE_EIGEN
#include <Eigen/Eigenvalues>
#endif

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <random>
#include <string>
#include <vector>

namespace
{
struct SCubic
{
    float a, b, c, d;
    int count;      // real roots
    float roots[3]; // ascending
};

// Half with three well separated real roots, half with one real root and a complex pair; scaled by
// a random leading coefficient.
const std::vector<SCubic>& cubics()
{
    static const std::vector<SCubic> s_cubics = []
    {
        std::mt19937 generator(7u);
        std::uniform_real_distribution<float> root(-10.0f, 10.0f);
        std::uniform_real_distribution<float> scale(0.5f, 4.0f);
        std::vector<SCubic> result;
        while (result.size() < 4096)
        {
            float r[3] = {root(generator), root(generator), root(generator)};
            std::sort(r, r + 3);
            if (r[1] - r[0] < 0.5f || r[2] - r[1] < 0.5f)
                continue;
            const float a = scale(generator);
            if (result.size() % 2 == 0)
                result.push_back({a,
                                  -a * (r[0] + r[1] + r[2]),
                                  a * (r[0] * r[1] + r[0] * r[2] + r[1] * r[2]),
                                  -a * r[0] * r[1] * r[2],
                                  3,
                                  {r[0], r[1], r[2]}});
            else // (x - r0) ((x - r1)^2 + 1)
            {
                const float q1 = -2.0f * r[1], q0 = r[1] * r[1] + 1.0f;
                result.push_back({a, a * (q1 - r[0]), a * (q0 - r[0] * q1), -a * r[0] * q0, 1, {r[0], 0, 0}});
            }
        }
        return result;
    }();
    return s_cubics;
}

int solveClosedForm(const SCubic& cubic, float* roots)
{
    return static_cast<int>(
        ZqSolveCubicEquation(cubic.a, cubic.b, cubic.c, cubic.d, &roots[0], &roots[1], &roots[2]));
}

// Newton's method for one real root, kept inside a sign-change bracket by bisection steps (from the
// Cauchy bound, |x| < 1 + max |p_i| for every root), then the deflated quadratic.
int solveNewton(const SCubic& cubic, float* roots)
{
    const float p2 = cubic.b / cubic.a, p1 = cubic.c / cubic.a, p0 = cubic.d / cubic.a;
    float high = 1.0f + std::max({std::fabs(p2), std::fabs(p1), std::fabs(p0)});
    float low = -high;
    float x = high;
    for (int iteration = 0; iteration < 100; ++iteration)
    {
        const float f = ((x + p2) * x + p1) * x + p0;
        if (f == 0.0f)
            break;
        (f < 0.0f ? low : high) = x;
        const float df = (3.0f * x + 2.0f * p2) * x + p1;
        float next = df != 0.0f ? x - f / df : low;
        if (!(next > low && next < high))
            next = 0.5f * (low + high);
        const bool converged = std::fabs(next - x) <= 1e-6f * (1.0f + std::fabs(x));
        x = next;
        if (converged)
            break;
    }
    roots[0] = x;
    const float q1 = p2 + x, q0 = p1 + q1 * x;
    const float discriminant = q1 * q1 - 4.0f * q0;
    if (discriminant < 0.0f)
        return 1;
    const float w = q1 > 0.0f ? q1 + std::sqrt(discriminant) : q1 - std::sqrt(discriminant);
    roots[1] = -w / 2.0f;
    roots[2] = w != 0.0f ? q0 / (-w / 2.0f) : 0.0f;
    return 3;
}

#if ZQ_HAVE_EIGEN
int solveCompanion(const SCubic& cubic, float* roots)
{
    Eigen::Matrix3f companion = Eigen::Matrix3f::Zero();
    companion(1, 0) = 1.0f;
    companion(2, 1) = 1.0f;
    companion(0, 2) = -cubic.d / cubic.a;
    companion(1, 2) = -cubic.c / cubic.a;
    companion(2, 2) = -cubic.b / cubic.a;
    Eigen::EigenSolver<Eigen::Matrix3f> solver(companion, false);
    int count = 0;
    for (int i = 0; i < 3; ++i)
        if (solver.eigenvalues()[i].imag() == 0.0f)
            roots[count++] = solver.eigenvalues()[i].real();
    return count;
}
#endif

void sortAscending(float* roots, int count)
{
    for (int i = 1; i < count; ++i)
        for (int j = i; j > 0 && roots[j] < roots[j - 1]; --j)
            std::swap(roots[j], roots[j - 1]);
}

template <int (*Solve)(const SCubic&, float*)> void runSolver(benchmark::State& state)
{
    const std::vector<SCubic>& all = cubics();
    float maxError = 0.0f;
    int wrongCount = 0;
    for (const SCubic& cubic : all)
    {
        float roots[3];
        const int count = Solve(cubic, roots);
        if (count != cubic.count)
        {
            ++wrongCount;
            continue;
        }
        sortAscending(roots, count);
        for (int i = 0; i < count; ++i)
            maxError = std::max(maxError, std::fabs(roots[i] - cubic.roots[i]));
    }

    std::int64_t found = 0;
    for (auto _ : state)
        for (const SCubic& cubic : all)
        {
            float roots[3];
            found += Solve(cubic, roots);
            benchmark::DoNotOptimize(roots);
        }
    state.SetItemsProcessed(found);
    state.counters["roots/s"] = benchmark::Counter(static_cast<double>(found), benchmark::Counter::kIsRate);
    state.counters["maxError"] = maxError;
    state.counters["wrongCount"] = wrongCount;
}

} // namespace

BENCHMARK(runSolver<solveClosedForm>)->Name("ClosedForm");
BENCHMARK(runSolver<solveNewton>)->Name("NewtonDeflation");
#if ZQ_HAVE_EIGEN
BENCHMARK(runSolver<solveCompanion>)->Name("CompanionEigen");
#endif

int main(int argc, char** argv)
{
    return ZqBenchMain(argc, argv, {{"ClosedForm", "NewtonDeflation"}, {"ClosedForm", "CompanionEigen"}},
                       [](const ZqBenchReporter& reporter)
                       {
                           std::printf("\nroots per second, closed form: %.3g\n",
                                       reporter.GetCounter("ClosedForm", "roots/s"));
#if !ZQ_HAVE_EIGEN
                           std::printf("companion matrix: Eigen not available at build time, not measured\n");
#endif
                       });
}
