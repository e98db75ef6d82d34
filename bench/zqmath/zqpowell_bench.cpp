// Cost of Powell's method in function evaluations and time: on the objective of the module's
// Powell test (|p + (1, -0.5)|^2 from (10, -10), unbounded and in the box x in [-20, 20],
// y in [-20, 0]) and on Rosenbrock's function from (-1.2, 1). The counters give the evaluations
// and sweeps of one minimization; there is no peer to divide by.

#include "zqmath/zqpowell.h"

#include "zqbenchmain.h"

namespace
{
struct SObjective
{
    std::int64_t evaluations = 0;
    float bowl(const ZqMatrix<float>& p)
    {
        ++evaluations;
        const float x = p[0] + 1.0f, y = p[1] - 0.5f;
        return x * x + y * y;
    }
    float rosenbrock(const ZqMatrix<float>& p)
    {
        ++evaluations;
        const float a = 1.0f - p[0], b = p[1] - p[0] * p[0];
        return a * a + 100.0f * b * b;
    }
};
using Powell = ZqPowell<float, SObjective>;

struct SSetup
{
    float (SObjective::*function)(const ZqMatrix<float>&);
    float x, y;
    Powell::EBracketingMethod bracketing;
    bool bounded;
    float ftol;
    std::uint32_t maxIterations;
};

void runPowell(benchmark::State& state, SSetup setup)
{
    const ZqMatrix<float> boundsMatrix(2, 2, {-20.0f, -20.0f, 20.0f, 0.0f});
    SObjective objective;
    std::uint32_t sweeps = 0;
    float value = 0.0f;
    std::int64_t runs = 0;
    for (auto _ : state)
    {
        ZqMatrix<float> point = ZqMatrix<float>::Vector({setup.x, setup.y});
        ZqMatrix<float> directions = ZqMatrix<float>::Identity(2);
        Powell powell;
        powell.point = &point;
        powell.directions = &directions;
        powell.bracketingMethod = setup.bracketing;
        powell.locateMethod = Powell::eLM_Brent;
        powell.maxIterations = setup.maxIterations;
        powell.ftol = setup.ftol;
        powell.client = &objective;
        powell.function = setup.function;
        powell.boundsMatrix = setup.bounded ? &boundsMatrix : nullptr;
        powell.sign = 1;
        if (!powell.Compute())
        {
            state.SkipWithError(powell.GetLastError().c_str());
            return;
        }
        sweeps = powell.sweeps;
        value = *powell.fmin;
        ++runs;
    }
    state.counters["evaluations"] = static_cast<double>(objective.evaluations) / static_cast<double>(runs);
    state.counters["sweeps"] = sweeps;
    state.counters["fmin"] = value;
}
} // namespace

BENCHMARK_CAPTURE(runPowell, TestObjective,
                  {&SObjective::bowl, 10, -10, Powell::eBM_Parabolic, false, 1e-3f, 10});
BENCHMARK_CAPTURE(runPowell, TestObjectiveBounded,
                  {&SObjective::bowl, 10, -10, Powell::eBM_Parabolic, true, 1e-3f, 10});
BENCHMARK_CAPTURE(runPowell, TestObjectiveBoundsBracketing,
                  {&SObjective::bowl, 10, -10, Powell::eBM_Bounds, true, 1e-3f, 10});
BENCHMARK_CAPTURE(runPowell, Rosenbrock,
                  {&SObjective::rosenbrock, -1.2f, 1, Powell::eBM_Parabolic, false, 1e-3f, 200});
BENCHMARK_CAPTURE(runPowell, RosenbrockTight,
                  {&SObjective::rosenbrock, -1.2f, 1, Powell::eBM_Parabolic, false, 1e-6f, 200});

int main(int argc, char** argv)
{
    return ZqBenchMain(argc, argv, {});
}
