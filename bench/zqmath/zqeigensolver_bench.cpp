// The eigen solver's two methods on 100 000 random symmetric 3 x 3 matrices (double), the size
// principal components and oriented boxes feed it, against Eigen's SelfAdjointEigenSolver (the
// iterative one, and its closed form for 3 x 3). Each case first solves every matrix once untimed
// and reports the worst residual |A v - lambda v| and the worst deviation of V V^T from the identity;
// then it times the same work. The ratios of the times to Eigen's iterative solver and the accuracy
// figures are printed at the end of the run.

#include "zqmath/zqeigensolver.h"

#include "zqbenchmain.h"

#if ZQ_HAVE_EIGEN
#include <Eigen/Eigenvalues>
#endif

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdio>
#include <random>
#include <string>
#include <vector>

namespace
{
using Matrix3 = std::array<double, 9>;

const std::vector<Matrix3>& matrices()
{
    static const std::vector<Matrix3> s_matrices = []
    {
        std::mt19937 generator(12345u);
        std::uniform_real_distribution<double> value(-1.0, 1.0);
        std::vector<Matrix3> result(100000);
        for (Matrix3& m : result)
            for (int i = 0; i < 3; ++i)
                for (int j = 0; j <= i; ++j)
                    m[3 * i + j] = m[3 * j + i] = value(generator);
        return result;
    }();
    return s_matrices;
}

struct SAccuracy
{
    double residual = 0.0;
    double orthonormality = 0.0;

    // values[i] with the eigenvector (vectors[3 i], vectors[3 i + 1], vectors[3 i + 2]).
    void Add(const Matrix3& a, const double* values, const double* vectors)
    {
        for (int i = 0; i < 3; ++i)
        {
            const double* v = vectors + 3 * i;
            double sum = 0.0;
            for (int r = 0; r < 3; ++r)
            {
                const double d =
                    a[3 * r] * v[0] + a[3 * r + 1] * v[1] + a[3 * r + 2] * v[2] - values[i] * v[r];
                sum += d * d;
            }
            residual = std::max(residual, std::sqrt(sum));
            for (int j = 0; j < 3; ++j)
            {
                const double* w = vectors + 3 * j;
                const double dot = v[0] * w[0] + v[1] * w[1] + v[2] * w[2];
                orthonormality = std::max(orthonormality, std::fabs(dot - (i == j ? 1.0 : 0.0)));
            }
        }
    }
};

// Solves one matrix into values and row-wise vectors; the contenders keep their state between calls
// the way a caller solving many matrices would.
class CZqSolver
{
public:
    explicit CZqSolver(std::uint32_t method) : m_input(3, 3)
    {
        m_solver.flags = method | ZqEigenSolver<double>::eF_SortAscending;
        m_solver.matrix = &m_input;
    }
    void Solve(const Matrix3& a, double* values, double* vectors)
    {
        std::copy(a.begin(), a.end(), m_input.GetData());
        m_solver.Compute();
        const ZqMatrix<double>& v = m_solver.GetEigenvectors();
        std::copy(v.GetData(), v.GetData() + 9, vectors);
        std::copy(m_solver.eigenvalues->GetData(), m_solver.eigenvalues->GetData() + 3, values);
    }

private:
    ZqMatrix<double> m_input;
    ZqEigenSolver<double> m_solver;
};

struct CZqQL : CZqSolver
{
    CZqQL() : CZqSolver(ZqEigenSolver<double>::eF_Symmetric) {}
};
struct CZqJacobi : CZqSolver
{
    CZqJacobi() : CZqSolver(ZqEigenSolver<double>::eF_Jacobi) {}
};

#if ZQ_HAVE_EIGEN
template <bool Direct> class CEigenSolver
{
public:
    void Solve(const Matrix3& a, double* values, double* vectors)
    {
        const Eigen::Matrix3d m = Eigen::Map<const Eigen::Matrix<double, 3, 3, Eigen::RowMajor>>(a.data());
        if constexpr (Direct)
            m_solver.computeDirect(m);
        else
            m_solver.compute(m);
        // Eigen sorts ascending and returns the eigenvectors as columns.
        for (int i = 0; i < 3; ++i)
        {
            values[i] = m_solver.eigenvalues()[i];
            for (int k = 0; k < 3; ++k)
                vectors[3 * i + k] = m_solver.eigenvectors()(k, i);
        }
    }

private:
    Eigen::SelfAdjointEigenSolver<Eigen::Matrix3d> m_solver;
};
#endif

template <class Contender> void runSolver(benchmark::State& state)
{
    const std::vector<Matrix3>& all = matrices();
    Contender contender;
    SAccuracy accuracy;
    double values[3], vectors[9];
    for (const Matrix3& a : all)
    {
        contender.Solve(a, values, vectors);
        accuracy.Add(a, values, vectors);
    }

    for (auto _ : state)
        for (const Matrix3& a : all)
        {
            contender.Solve(a, values, vectors);
            benchmark::DoNotOptimize(values);
            benchmark::DoNotOptimize(vectors);
        }
    const double solved = double(state.iterations()) * double(all.size());
    state.counters["matrices/s"] = benchmark::Counter(solved, benchmark::Counter::kIsRate);
    state.counters["worstResidual"] = accuracy.residual;
    state.counters["worstOrthonormality"] = accuracy.orthonormality;
}
} // namespace

BENCHMARK(runSolver<CZqQL>)->Name("ZqQL")->Unit(benchmark::kMillisecond);
BENCHMARK(runSolver<CZqJacobi>)->Name("ZqJacobi")->Unit(benchmark::kMillisecond);
#if ZQ_HAVE_EIGEN
BENCHMARK(runSolver<CEigenSolver<false>>)->Name("EigenIterative")->Unit(benchmark::kMillisecond);
BENCHMARK(runSolver<CEigenSolver<true>>)->Name("EigenDirect")->Unit(benchmark::kMillisecond);
#endif

namespace
{
// Time per matrix and accuracy of every contender that ran.
void printAccuracy(const ZqBenchReporter& reporter)
{
    std::printf("\n%-16s %10s %15s %15s\n", "contender", "ns/matrix", "worst residual", "worst |VV^T-I|");
    for (const char* name : {"ZqQL", "ZqJacobi", "EigenIterative", "EigenDirect"})
        if (const double rate = reporter.GetCounter(name, "matrices/s"); rate > 0.0)
            std::printf("%-16s %10.1f %15.3g %15.3g\n", name, 1e9 / rate,
                        reporter.GetCounter(name, "worstResidual"),
                        reporter.GetCounter(name, "worstOrthonormality"));
#if !ZQ_HAVE_EIGEN
    std::printf("Eigen not available at build time, not measured\n");
#endif
}
} // namespace

int main(int argc, char** argv)
{
    return ZqBenchMain(
        argc, argv,
        {{"ZqQL", "EigenIterative"}, {"ZqJacobi", "EigenIterative"}, {"EigenDirect", "EigenIterative"}},
        printAccuracy);
}
