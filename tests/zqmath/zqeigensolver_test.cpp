// The eigen solver: both methods on random symmetric matrices, with and without repeated
// eigenvalues, judged by residual and orthonormality; sorting with the vectors; where the
// eigenvectors land; the failures.

#include "basepool/cbexception.h"
#include "zqmath/zqeigensolver.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <cmath>
#include <limits>
#include <random>
#include <string>
#include <thread>
#include <vector>

namespace
{
using Solver = ZqEigenSolver<double>;
using Matrix = ZqMatrix<double>;

Matrix randomSymmetric(std::mt19937& generator, std::size_t n, double range = 10.0)
{
    std::uniform_real_distribution<double> value(-range, range);
    Matrix a(n, n);
    for (std::size_t i = 0; i < n; ++i)
        for (std::size_t j = 0; j <= i; ++j)
            a(i, j) = a(j, i) = value(generator);
    return a;
}

// A random rotation: Gram-Schmidt on random rows.
Matrix randomOrthogonal(std::mt19937& generator, std::size_t n)
{
    std::normal_distribution<double> value;
    Matrix q(n, n);
    for (std::size_t i = 0; i < n; ++i)
    {
        double* row = q.GetRow(i);
        for (;;)
        {
            for (std::size_t k = 0; k < n; ++k)
                row[k] = value(generator);
            for (std::size_t j = 0; j < i; ++j)
            {
                double dot = 0.0;
                for (std::size_t k = 0; k < n; ++k)
                    dot += row[k] * q(j, k);
                for (std::size_t k = 0; k < n; ++k)
                    row[k] -= dot * q(j, k);
            }
            double length = 0.0;
            for (std::size_t k = 0; k < n; ++k)
                length += row[k] * row[k];
            length = std::sqrt(length);
            if (length < 1e-3)
                continue;
            for (std::size_t k = 0; k < n; ++k)
                row[k] /= length;
            break;
        }
    }
    return q;
}

// Q^T diag(values) Q: the rows of Q are its eigenvectors.
Matrix withEigenvalues(const Matrix& q, const std::vector<double>& values)
{
    const std::size_t n = values.size();
    Matrix a(n, n);
    for (std::size_t i = 0; i < n; ++i)
        for (std::size_t j = 0; j < n; ++j)
            for (std::size_t k = 0; k < n; ++k)
                a(i, j) += q(k, i) * values[k] * q(k, j);
    return a;
}

double frobenius(const Matrix& a)
{
    return std::sqrt(a.GetSquaredLength());
}

// Largest |A v_i - lambda_i v_i| over the rows v_i of vectors.
double worstResidual(const Matrix& a, const Matrix& values, const Matrix& vectors)
{
    const std::size_t n = a.GetRows();
    double worst = 0.0;
    for (std::size_t i = 0; i < n; ++i)
    {
        double sum = 0.0;
        for (std::size_t r = 0; r < n; ++r)
        {
            double av = 0.0;
            for (std::size_t c = 0; c < n; ++c)
                av += a(r, c) * vectors(i, c);
            const double difference = av - values[i] * vectors(i, r);
            sum += difference * difference;
        }
        worst = std::max(worst, std::sqrt(sum));
    }
    return worst;
}

// Largest element of |V V^T - I|.
double orthonormalityError(const Matrix& vectors)
{
    const std::size_t n = vectors.GetRows();
    double worst = 0.0;
    for (std::size_t i = 0; i < n; ++i)
        for (std::size_t j = 0; j < n; ++j)
        {
            double dot = 0.0;
            for (std::size_t k = 0; k < n; ++k)
                dot += vectors(i, k) * vectors(j, k);
            worst = std::max(worst, std::fabs(dot - (i == j ? 1.0 : 0.0)));
        }
    return worst;
}

struct SSolution
{
    Matrix values;
    Matrix vectors;
};

SSolution solve(Matrix a, std::uint32_t flags)
{
    Solver solver;
    solver.flags = flags;
    solver.matrix = &a;
    solver.Compute();
    return {*solver.eigenvalues, solver.GetEigenvectors()};
}

// Residual and orthonormality relative to the matrix's size, and the sorted spectrum.
void expectEigenDecomposition(const Matrix& a, const SSolution& solution, const std::vector<double>& expected,
                              const std::string& what)
{
    const double scale = std::max(frobenius(a), 1.0);
    const double tolerance = 64.0 * std::numeric_limits<double>::epsilon() * double(a.GetRows());
    EXPECT_LE(worstResidual(a, solution.values, solution.vectors), tolerance * scale) << what;
    EXPECT_LE(orthonormalityError(solution.vectors), tolerance) << what;
    for (std::size_t i = 0; i + 1 < expected.size(); ++i)
        ASSERT_LE(solution.values[i], solution.values[i + 1]) << what << ": not ascending at " << i;
    for (std::size_t i = 0; i < expected.size(); ++i)
        EXPECT_NEAR(solution.values[i], expected[i], tolerance * scale) << what << ": eigenvalue " << i;
}

std::vector<double> values(const Matrix& m)
{
    return std::vector<double>(m.GetData(), m.GetData() + m.GetSize());
}

std::string thrownBy(Solver& solver)
{
    try
    {
        solver.Compute();
    }
    catch (const CbException& e)
    {
        return std::string(e.GetFunction()) + " / " + e.GetKind();
    }
    return "nothing thrown";
}
} // namespace

TEST(ZqEigenSolverTest, JacobiAndQLAgreeOnRandomSymmetricMatrices)
{
    std::mt19937 generator(20240611u);
    for (std::size_t n : {1u, 2u, 3u, 4u, 5u, 8u, 13u})
        for (int round = 0; round < 40; ++round)
        {
            const Matrix a = randomSymmetric(generator, n);
            const SSolution ql = solve(a, Solver::eF_Symmetric | Solver::eF_SortAscending);
            const SSolution jacobi = solve(a, Solver::eF_Jacobi | Solver::eF_SortAscending);
            const std::string what = "n = " + std::to_string(n) + ", round " + std::to_string(round);
            expectEigenDecomposition(a, ql, values(jacobi.values), what + " (QL)");
            expectEigenDecomposition(a, jacobi, values(ql.values), what + " (Jacobi)");
            if (HasFailure())
                return;
        }
}

TEST(ZqEigenSolverTest, RepeatedEigenvaluesStillGiveAnOrthonormalBasis)
{
    std::mt19937 generator(77u);
    const std::vector<std::vector<double>> spectra = {
        {2, 2, 5}, {-1, 4, 4},     {3, 3, 3},       {0, 0, 1},
        {0, 0, 0}, {1, 1, -7, -7}, {2, 2, 2, 2, 9}, {1e-9, 1e-9, 1},
    };
    for (const std::vector<double>& spectrum : spectra)
        for (int round = 0; round < 20; ++round)
        {
            const Matrix a = withEigenvalues(randomOrthogonal(generator, spectrum.size()), spectrum);
            std::vector<double> sorted = spectrum;
            std::sort(sorted.begin(), sorted.end());
            const std::string what = "spectrum of size " + std::to_string(spectrum.size()) + " starting " +
                                     std::to_string(spectrum[0]) + ", round " + std::to_string(round);
            expectEigenDecomposition(a, solve(a, Solver::eF_Symmetric | Solver::eF_SortAscending), sorted,
                                     what + " (QL)");
            expectEigenDecomposition(a, solve(a, Solver::eF_Jacobi | Solver::eF_SortAscending), sorted,
                                     what + " (Jacobi)");
            if (HasFailure())
                return;
        }
}

// Over the whole range of double, with and without repeated eigenvalues: small matrices must not lose
// their off-diagonal terms to subnormals, large ones must not overflow.
TEST(ZqEigenSolverTest, ExtremeMagnitudesNeitherOverflowNorUnderflow)
{
    std::mt19937 generator(5u);
    const std::vector<std::vector<double>> spectra = {
        {-0.9, -0.3, 0.1, 0.4, 0.7, 1.0}, {0.5, 0.5, 0.5, -1.0, -1.0, 0.25}, {1.0, 1.0, 1.0, 1.0, 1.0, -1.0}};
    for (double scale : {1e-307, 1e-300, 1e-290, 1e-200, 1e-150, 1e150, 1e200, 1e290, 1e307})
        for (const std::vector<double>& spectrum : spectra)
            for (std::uint32_t method : {unsigned(Solver::eF_Symmetric), unsigned(Solver::eF_Jacobi)})
            {
                const Matrix unit = withEigenvalues(randomOrthogonal(generator, spectrum.size()), spectrum);
                Matrix a = unit;
                a *= scale;
                const SSolution solution = solve(a, method | Solver::eF_SortAscending);
                // Judged on the matrix of unit size, so that the residual's squares stay in range.
                Matrix values = solution.values;
                for (std::size_t i = 0; i < values.GetSize(); ++i)
                {
                    ASSERT_TRUE(std::isfinite(values[i]));
                    values[i] /= scale;
                }
                std::vector<double> sorted = spectrum;
                std::sort(sorted.begin(), sorted.end());
                expectEigenDecomposition(unit, {values, solution.vectors}, sorted,
                                         "scale " + std::to_string(std::log10(scale)) + ", method " +
                                             std::to_string(method) + ", spectrum " +
                                             std::to_string(spectrum[0]));
                if (HasFailure())
                    return;
            }
}

TEST(ZqEigenSolverTest, ZeroMatrixHasZeroEigenvaluesAndTheUnitVectors)
{
    for (std::uint32_t method : {unsigned(Solver::eF_Symmetric), unsigned(Solver::eF_Jacobi)})
    {
        const SSolution solution = solve(Matrix(4, 4), method);
        EXPECT_EQ(values(solution.values), std::vector<double>(4, 0.0)) << method;
        EXPECT_EQ(solution.vectors, Matrix::Identity(4)) << method;
    }
}

TEST(ZqEigenSolverTest, SortMovesEachEigenvectorWithItsEigenvalue)
{
    // A diagonal matrix needs no rotation: before sorting, eigenvector i is unit vector i.
    const Matrix diagonal(3, 3, {3, 0, 0, 0, 1, 0, 0, 0, 2});
    const SSolution unsorted = solve(diagonal, Solver::eF_Jacobi);
    EXPECT_EQ(values(unsorted.values), (std::vector<double>{3, 1, 2}));
    EXPECT_EQ(unsorted.vectors, Matrix::Identity(3));

    const SSolution ascending = solve(diagonal, Solver::eF_Jacobi | Solver::eF_SortAscending);
    EXPECT_EQ(values(ascending.values), (std::vector<double>{1, 2, 3}));
    EXPECT_EQ(ascending.vectors, Matrix(3, 3, {0, 1, 0, 0, 0, 1, 1, 0, 0}));

    const SSolution descending = solve(diagonal, Solver::eF_Symmetric | Solver::eF_SortDescending);
    EXPECT_EQ(values(descending.values), (std::vector<double>{3, 2, 1}));
    EXPECT_EQ(descending.vectors, Matrix(3, 3, {1, 0, 0, 0, 0, 1, 0, 1, 0}));

    // Equal values keep their order: the first one found stays in front.
    const Matrix ties(4, 4, {2, 0, 0, 0, 0, 1, 0, 0, 0, 0, 2, 0, 0, 0, 0, 1});
    const SSolution tiesDescending = solve(ties, Solver::eF_Jacobi | Solver::eF_SortDescending);
    EXPECT_EQ(values(tiesDescending.values), (std::vector<double>{2, 2, 1, 1}));
    EXPECT_EQ(tiesDescending.vectors, Matrix(4, 4, {1, 0, 0, 0, 0, 0, 1, 0, 0, 1, 0, 0, 0, 0, 0, 1}));
    const SSolution tiesAscending = solve(ties, Solver::eF_Jacobi | Solver::eF_SortAscending);
    EXPECT_EQ(tiesAscending.vectors, Matrix(4, 4, {0, 1, 0, 0, 0, 0, 0, 1, 0, 0, 1, 0, 1, 0, 0, 0}));
}

TEST(ZqEigenSolverTest, SymmetricMethodWritesIntoTheInputUnlessVectorsAreGiven)
{
    const Matrix original(3, 3, {4, 1, 0, 1, 3, 1, 0, 1, 2});

    Matrix inPlace = original;
    Solver overwrite;
    overwrite.flags = Solver::eF_Symmetric;
    overwrite.matrix = &inPlace;
    overwrite.Compute();
    EXPECT_EQ(&overwrite.GetEigenvectors(), &inPlace);
    EXPECT_FALSE(overwrite.eigenvectors);
    ASSERT_TRUE(overwrite.work);
    EXPECT_EQ(overwrite.work->GetRows(), 3u);
    EXPECT_LE(worstResidual(original, *overwrite.eigenvalues, inPlace), 1e-13);

    Matrix kept = original;
    Solver separate;
    separate.flags = Solver::eF_Symmetric;
    separate.matrix = &kept;
    separate.eigenvectors = std::make_unique<Matrix>();
    separate.Compute();
    EXPECT_EQ(kept, original);
    EXPECT_EQ(&separate.GetEigenvectors(), separate.eigenvectors.get());
    EXPECT_LE(worstResidual(original, *separate.eigenvalues, *separate.eigenvectors), 1e-13);

    // Jacobi always fills the vectors and leaves the diagonal and the lower triangle alone.
    Matrix jacobiInput = original;
    Solver jacobi;
    jacobi.flags = Solver::eF_Jacobi;
    jacobi.matrix = &jacobiInput;
    jacobi.Compute();
    ASSERT_TRUE(jacobi.eigenvectors);
    for (std::size_t i = 0; i < 3; ++i)
        for (std::size_t j = 0; j <= i; ++j)
            EXPECT_EQ(jacobiInput(i, j), original(i, j));
}

TEST(ZqEigenSolverTest, OutputsOfAnotherSizeAreResized)
{
    std::mt19937 generator(3u);
    Matrix a = randomSymmetric(generator, 4);
    const Matrix original = a;
    Solver solver;
    solver.flags = Solver::eF_Jacobi;
    solver.matrix = &a;
    solver.eigenvalues = std::make_unique<Matrix>(7, 1);
    solver.eigenvectors = std::make_unique<Matrix>(2, 2);
    solver.Compute();
    EXPECT_EQ(solver.eigenvalues->GetRows(), 4u);
    EXPECT_EQ(solver.eigenvectors->GetRows(), 4u);
    EXPECT_LE(worstResidual(original, *solver.eigenvalues, *solver.eigenvectors),
              1e-12 * frobenius(original));
}

TEST(ZqEigenSolverTest, FloatInstantiationDecomposesToo)
{
    ZqMatrix<float> a(3, 3, {2, -1, 0, -1, 2, -1, 0, -1, 2});
    ZqEigenSolver<float> solver;
    solver.flags = ZqEigenSolver<float>::eF_Symmetric | ZqEigenSolver<float>::eF_SortAscending;
    solver.matrix = &a;
    solver.Compute();
    const float root2 = std::sqrt(2.0f);
    EXPECT_NEAR((*solver.eigenvalues)[0], 2.0f - root2, 1e-5f);
    EXPECT_NEAR((*solver.eigenvalues)[1], 2.0f, 1e-5f);
    EXPECT_NEAR((*solver.eigenvalues)[2], 2.0f + root2, 1e-5f);
    // The eigenvector of 2 is (1, 0, -1) / sqrt(2), up to its sign.
    EXPECT_NEAR(std::fabs(a(1, 0)), 1.0f / root2, 1e-5f);
    EXPECT_NEAR(a(1, 1), 0.0f, 1e-5f);
    EXPECT_NEAR(a(1, 2), -a(1, 0), 1e-5f);
}

TEST(ZqEigenSolverTest, BadRequestsThrowNamingCompute)
{
    const std::string precondition = "ZqEigenSolver<double>::Compute / CbExceptionPreconditionViolation";
    Matrix a(2, 2, {1, 0, 0, 1});
    Solver solver;
    solver.matrix = &a;
    for (std::uint32_t flags :
         {0u, 4u, unsigned(Solver::eF_Jacobi | Solver::eF_Symmetric),
          unsigned(Solver::eF_Jacobi | Solver::eF_SortAscending | Solver::eF_SortDescending)})
    {
        solver.flags = flags;
        EXPECT_EQ(thrownBy(solver), precondition) << "flags " << flags;
    }
    solver.flags = Solver::eF_Symmetric;
    solver.matrix = nullptr;
    EXPECT_EQ(thrownBy(solver), precondition);
    Matrix wide(2, 3);
    solver.matrix = &wide;
    EXPECT_EQ(thrownBy(solver), precondition);
    Matrix empty;
    solver.matrix = &empty;
    EXPECT_EQ(thrownBy(solver), precondition);
    EXPECT_FALSE(solver.IsBusy());
    // A failed call leaves the solver usable.
    solver.matrix = &a;
    EXPECT_EQ(thrownBy(solver), "nothing thrown");
}

TEST(ZqEigenSolverTest, NonFiniteInputEndsInAnExceptionNotALoop)
{
    for (std::uint32_t method : {unsigned(Solver::eF_Symmetric), unsigned(Solver::eF_Jacobi)})
    {
        Matrix a(3, 3, {1, 2, 0, 2, std::numeric_limits<double>::quiet_NaN(), 1, 0, 1, 3});
        Solver solver;
        solver.flags = method;
        solver.matrix = &a;
        EXPECT_EQ(thrownBy(solver), "ZqEigenSolver<double>::Compute / CbException") << "method " << method;
        EXPECT_FALSE(solver.IsBusy());
    }
}

TEST(ZqEigenSolverTest, SecondComputeWhileOneRunsIsRefused)
{
    std::mt19937 generator(11u);
    const Matrix original = randomSymmetric(generator, 200);
    // A large Jacobi run takes long enough to be caught busy; a worker that finishes before this
    // thread looks is simply started again.
    for (int attempt = 0; attempt < 10; ++attempt)
    {
        Matrix a = original;
        Solver solver;
        solver.flags = Solver::eF_Jacobi;
        solver.matrix = &a;
        std::atomic<bool> finished{false};
        std::thread worker(
            [&]
            {
                solver.Compute();
                finished = true;
            });
        while (!solver.IsBusy() && !finished)
            std::this_thread::yield();
        const bool caughtBusy = !finished;
        const std::string thrown = caughtBusy ? thrownBy(solver) : std::string();
        worker.join();
        if (!caughtBusy)
            continue;
        EXPECT_EQ(thrown, "ZqEigenSolver<double>::Compute / CbExceptionPreconditionViolation");
        EXPECT_FALSE(solver.IsBusy());
        // The refused call did not disturb the running one.
        EXPECT_LE(worstResidual(original, *solver.eigenvalues, *solver.eigenvectors),
                  1e-11 * frobenius(original));
        return;
    }
    GTEST_SKIP() << "the worker always finished before it could be observed";
}
