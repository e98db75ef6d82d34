#pragma once

#include "basepool/cbexception.h"
#include "basepool/cbtypename.h"
#include "zqmath/zqmatrix.h"

#include <algorithm>
#include <atomic>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <memory>
#include <string>
#include <utility>
#include <vector>

// Eigenvalues and eigenvectors of a real symmetric n x n matrix, by one of two methods:
//   eF_Jacobi     cyclic Jacobi rotations (at most 50 sweeps); reads the upper triangle.
//   eF_Symmetric  Householder reduction to tridiagonal form, then the implicit QL method with
//                 Wilkinson shifts (at most 30 iterations per eigenvalue); reads the lower triangle.
// and optionally sorted: eF_SortAscending (smallest first) or eF_SortDescending (largest first).
//
// Inputs:
//   flags         exactly one of eF_Jacobi and eF_Symmetric, at most one sort flag.
//   matrix        the n x n matrix. Jacobi overwrites its upper triangle; the symmetric method
//                 overwrites all of it with the eigenvectors unless eigenvectors is given.
// Outputs (allocated, or resized to fit, by Compute):
//   eigenvalues   n x 1.
//   eigenvectors  n x n, eigenvector i in row i. Always filled by Jacobi. The symmetric method
//                 fills it only when the caller allocated it beforehand (and then leaves the input
//                 matrix alone); otherwise the eigenvectors are the rows of *matrix.
//   work          n x 1 scratch of the symmetric method (the off-diagonal of the tridiagonal form).
// GetEigenvectors() returns whichever matrix holds the eigenvectors.
// Both methods work on a matrix whose largest magnitude lies far out in the range of T (beyond 2^+-256
// for double) scaled by a power of two that brings it to [0.5, 1), and scale the eigenvalues back: over
// the whole range of double, small matrices keep their off-diagonal terms out of the subnormals and
// large ones do not overflow. Matrices of ordinary magnitude are not scaled; for them it would change
// no bit.
// Failure: Compute throws CbExceptionPreconditionViolation for bad flags, a missing or non-square
// matrix and a call while another Compute of the same solver runs; CbException when a method does
// not converge (the outputs then hold the last state and are not meaningful).
//
//     ZqMatrix<double> c(3, 3, {2, 1, 0, 1, 2, 0, 0, 0, 5});
//     ZqEigenSolver<double> solver;
//     solver.flags = ZqEigenSolver<double>::eF_Symmetric | ZqEigenSolver<double>::eF_SortAscending;
//     solver.matrix = &c;
//     solver.Compute();
//     // eigenvalues 1, 3, 5; row 0 of c is (0.707, -0.707, 0) up to its sign
template <class T> class ZqEigenSolver
{
public:
    enum EFlags : std::uint32_t
    {
        eF_Jacobi = 1,
        eF_Symmetric = 2,
        eF_SortAscending = 4,
        eF_SortDescending = 8,
    };
    static constexpr int kMaxJacobiSweeps = 50;
    static constexpr int kMaxQLIterations = 30;

    std::uint32_t flags = 0;
    ZqMatrix<T>* matrix = nullptr;
    std::unique_ptr<ZqMatrix<T>> eigenvalues;
    std::unique_ptr<ZqMatrix<T>> eigenvectors;
    std::unique_ptr<ZqMatrix<T>> work;

    ZqEigenSolver() = default;
    ZqEigenSolver(const ZqEigenSolver&) = delete;
    ZqEigenSolver& operator=(const ZqEigenSolver&) = delete;

    void Compute();
    bool IsBusy() const { return m_busy.load(); }
    // The matrix whose rows are the eigenvectors of the last Compute.
    const ZqMatrix<T>& GetEigenvectors() const { return eigenvectors ? *eigenvectors : *matrix; }

private:
    void computeSymmetric();
    void computeJacobi();
    bool jacobiSweep(int sweep);
    static void jacobiRotate(ZqMatrix<T>& a, ZqMatrix<T>& v, T* d, T* z, std::size_t p, std::size_t q, T t);
    void sort(T multiplier);
    void tridiagonalize(ZqMatrix<T>& a, T* d, T* e);
    static T householderVector(ZqMatrix<T>& a, std::size_t k, T* v);
    static void reflectTrailingBlock(ZqMatrix<T>& a, std::size_t k, const T* v, T h, T* p);
    static void reflectRows(ZqMatrix<T>& q, std::size_t k, const T* v, T h);
    static void solveTridiagonalQL(T* d, T* e, ZqMatrix<T>& vectors);
    static int scaleExponent(const ZqMatrix<T>& a, bool upper);
    static void scaleTriangle(ZqMatrix<T>& a, bool upper, bool diagonal, int exponent);
    static void rotatePair(T& x, T& y, T s, T tau);
    static T pythagoras(T a, T b);
    [[noreturn]] static void throwPrecondition(const char* reason);
    [[noreturn]] static void throwNotConverged(const char* reason);

    std::atomic<bool> m_busy{false};
    // Scratch kept between calls, so that solving many small matrices does not allocate.
    ZqMatrix<T> m_reflections;
    std::vector<T> m_scratch;
};

template <class T> void ZqEigenSolver<T>::Compute()
{
    if (m_busy.exchange(true))
        throwPrecondition("busy");
    struct SBusyGuard
    {
        std::atomic<bool>& busy;
        ~SBusyGuard() { busy.store(false); }
    } guard{m_busy};

    const std::uint32_t method = flags & (eF_Jacobi | eF_Symmetric);
    if (method != eF_Jacobi && method != eF_Symmetric)
        throwPrecondition("exactly one of the flags eF_Jacobi and eF_Symmetric must be set");
    if ((flags & eF_SortAscending) && (flags & eF_SortDescending))
        throwPrecondition("ascending and descending sort requested together");
    if (!matrix)
        throwPrecondition("no input matrix");
    if (matrix->IsEmpty() || matrix->GetRows() != matrix->GetCols())
        throwPrecondition("input matrix is not square");

    if (method == eF_Symmetric)
        computeSymmetric();
    else
        computeJacobi();

    if (flags & eF_SortAscending)
        sort(T(-1));
    else if (flags & eF_SortDescending)
        sort(T(1));
}

template <class T> void ZqEigenSolver<T>::computeSymmetric()
{
    const std::size_t n = matrix->GetRows();
    if (!eigenvalues)
        eigenvalues = std::make_unique<ZqMatrix<T>>();
    if (!work)
        work = std::make_unique<ZqMatrix<T>>();
    eigenvalues->Resize(n, 1);
    work->Resize(n, 1);
    ZqMatrix<T>* vectors = matrix;
    if (eigenvectors)
    {
        *eigenvectors = *matrix;
        vectors = eigenvectors.get();
    }
    const int exponent = scaleExponent(*vectors, false);
    scaleTriangle(*vectors, false, true, -exponent);
    T* d = eigenvalues->GetData();
    tridiagonalize(*vectors, d, work->GetData());
    solveTridiagonalQL(d, work->GetData(), *vectors);
    for (std::size_t i = 0; i < n; ++i)
        d[i] = std::ldexp(d[i], exponent);
}

// The exponent e with 2^(e - 1) <= largest magnitude < 2^e over the upper or the lower triangle
// (diagonal included), when that magnitude lies outside [2^-(m/4), 2^(m/4)) (m the largest exponent of T:
// 1024 for double) and so close enough to either end of T's range for squares of elements or of their
// small differences to overflow or fall into the subnormals; 0 otherwise, and for a zero matrix or one
// with an infinite element. Within that band the scaling would change no bit, so it is left out.
template <class T> int ZqEigenSolver<T>::scaleExponent(const ZqMatrix<T>& a, bool upper)
{
    const std::size_t n = a.GetRows();
    T largest = T(0);
    for (std::size_t i = 0; i < n; ++i)
        for (std::size_t j = upper ? i : 0; j < (upper ? n : i + 1); ++j)
            largest = std::max(largest, std::abs(a(i, j)));
    constexpr T high = []
    {
        T power = T(1);
        for (int i = 0; i < std::numeric_limits<T>::max_exponent / 4; ++i)
            power *= T(2);
        return power;
    }();
    constexpr T low = T(1) / high;
    int exponent = 0;
    if (largest > T(0) && (largest < low || largest >= high) && std::isfinite(largest))
        std::frexp(largest, &exponent);
    return exponent;
}

// Multiplies the upper or the lower triangle, with or without the diagonal, by 2^exponent (exact).
template <class T>
void ZqEigenSolver<T>::scaleTriangle(ZqMatrix<T>& a, bool upper, bool diagonal, int exponent)
{
    if (exponent == 0)
        return;
    const std::size_t n = a.GetRows();
    for (std::size_t i = 0; i < n; ++i)
    {
        const std::size_t first = upper ? (diagonal ? i : i + 1) : 0;
        const std::size_t end = upper ? n : (diagonal ? i + 1 : i);
        for (std::size_t j = first; j < end; ++j)
            a(i, j) = std::ldexp(a(i, j), exponent);
    }
}

// Householder reduction of the symmetric matrix a (lower triangle) to the tridiagonal Q^T A Q:
// on return d holds its diagonal, e[i] the element coupling i and i + 1 (e[n - 1] = 0), and a the
// rows of Q^T, so that rotations of the tridiagonal problem combine rows of a.
template <class T> void ZqEigenSolver<T>::tridiagonalize(ZqMatrix<T>& a, T* d, T* e)
{
    const std::size_t n = a.GetRows();
    ZqMatrix<T>& q = m_reflections;
    q.Resize(n, n);
    for (std::size_t i = 0; i < n; ++i)
        q(i, i) = T(1);
    m_scratch.resize(2 * n);
    T* v = m_scratch.data();
    T* p = v + n;
    for (std::size_t k = 0; k + 2 < n; ++k)
    {
        const T h = householderVector(a, k, v);
        if (h == T(0))
            continue;
        reflectTrailingBlock(a, k, v, h, p);
        reflectRows(q, k, v, h);
    }
    for (std::size_t i = 0; i < n; ++i)
    {
        d[i] = a(i, i);
        e[i] = i + 1 < n ? a(i + 1, i) : T(0);
    }
    std::copy(q.GetData(), q.GetData() + n * n, a.GetData());
}

// The reflection H = I - v v^T / h that maps a(k + 1 .. n - 1, k) onto a multiple alpha of the first
// unit vector: fills v[k + 1 .. n - 1], writes alpha and the zeros below it into column k and returns
// h = |v|^2 / 2; returns 0 (and leaves a alone) when the column is zero already.
template <class T> T ZqEigenSolver<T>::householderVector(ZqMatrix<T>& a, std::size_t k, T* v)
{
    const std::size_t n = a.GetRows();
    // The column is scaled by its largest magnitude so that squaring it can neither overflow nor
    // underflow.
    T scale = T(0);
    for (std::size_t i = k + 1; i < n; ++i)
        scale = std::max(scale, std::abs(a(i, k)));
    if (scale == T(0))
        return T(0);
    T norm2 = T(0);
    for (std::size_t i = k + 1; i < n; ++i)
    {
        v[i] = a(i, k) / scale;
        norm2 += v[i] * v[i];
    }
    const T alpha = v[k + 1] > T(0) ? -std::sqrt(norm2) : std::sqrt(norm2);
    // v = x - alpha e1 and h = |v|^2 / 2 = norm2 - alpha x1.
    const T h = norm2 - alpha * v[k + 1];
    v[k + 1] -= alpha;
    if (h == T(0))
        return T(0);
    a(k + 1, k) = alpha * scale;
    for (std::size_t i = k + 2; i < n; ++i)
        a(i, k) = T(0);
    return h;
}

// A <- H A H on the trailing block k + 1 .. n - 1 of the lower triangle, with p as scratch:
// p = A v / h, w = p - (v^T p / 2h) v, H A H = A - v w^T - w v^T.
template <class T>
void ZqEigenSolver<T>::reflectTrailingBlock(ZqMatrix<T>& a, std::size_t k, const T* v, T h, T* p)
{
    const std::size_t n = a.GetRows();
    T vp = T(0);
    for (std::size_t i = k + 1; i < n; ++i)
    {
        T sum = T(0);
        for (std::size_t j = k + 1; j < n; ++j)
            sum += (i >= j ? a(i, j) : a(j, i)) * v[j];
        p[i] = sum / h;
        vp += v[i] * p[i];
    }
    const T half = vp / (h + h);
    for (std::size_t i = k + 1; i < n; ++i)
        p[i] -= half * v[i];
    for (std::size_t i = k + 1; i < n; ++i)
        for (std::size_t j = k + 1; j <= i; ++j)
            a(i, j) -= v[i] * p[j] + p[i] * v[j];
}

// Q^T <- H Q^T on rows k + 1 .. n - 1.
template <class T> void ZqEigenSolver<T>::reflectRows(ZqMatrix<T>& q, std::size_t k, const T* v, T h)
{
    const std::size_t n = q.GetRows();
    for (std::size_t c = 0; c < n; ++c)
    {
        T dot = T(0);
        for (std::size_t i = k + 1; i < n; ++i)
            dot += v[i] * q(i, c);
        dot /= h;
        if (dot != T(0))
            for (std::size_t i = k + 1; i < n; ++i)
                q(i, c) -= dot * v[i];
    }
}

// Implicit QL with Wilkinson shifts on the tridiagonal (d, e); the rotations are applied to rows of
// vectors, whose row i becomes the eigenvector of d[i].
template <class T> void ZqEigenSolver<T>::solveTridiagonalQL(T* d, T* e, ZqMatrix<T>& vectors)
{
    const std::size_t n = vectors.GetRows();
    const T epsilon = std::numeric_limits<T>::epsilon();
    for (std::size_t l = 0; l < n; ++l)
    {
        for (int iteration = 0;; ++iteration)
        {
            // The first negligible off-diagonal element at or after l splits the problem.
            std::size_t m = l;
            for (; m + 1 < n; ++m)
            {
                const T dd = std::abs(d[m]) + std::abs(d[m + 1]);
                if (std::abs(e[m]) <= epsilon * dd)
                    break;
            }
            if (m == l)
                break;
            if (iteration == kMaxQLIterations)
                throwNotConverged("QL iteration did not converge");

            T g = (d[l + 1] - d[l]) / (T(2) * e[l]);
            T r = pythagoras(g, T(1));
            g = d[m] - d[l] + e[l] / (g + (g >= T(0) ? r : -r));
            T s = T(1), c = T(1), p = T(0);
            bool underflow = false;
            for (std::size_t i = m; i-- > l;)
            {
                const T f = s * e[i];
                const T b = c * e[i];
                r = pythagoras(f, g);
                e[i + 1] = r;
                if (r == T(0))
                {
                    // The rotation vanished: deflate and start over with this l.
                    d[i + 1] -= p;
                    e[m] = T(0);
                    underflow = true;
                    break;
                }
                s = f / r;
                c = g / r;
                g = d[i + 1] - p;
                r = (d[i] - g) * s + T(2) * c * b;
                p = s * r;
                d[i + 1] = g + p;
                g = c * r - b;
                T* upper = vectors.GetRow(i);
                T* lower = vectors.GetRow(i + 1);
                for (std::size_t k = 0; k < n; ++k)
                {
                    const T x = lower[k];
                    lower[k] = s * upper[k] + c * x;
                    upper[k] = c * upper[k] - s * x;
                }
            }
            if (underflow)
                continue;
            d[l] -= p;
            e[l] = g;
            e[m] = T(0);
        }
    }
}

// sqrt(a^2 + b^2) without overflow or underflow of the squares.
template <class T> T ZqEigenSolver<T>::pythagoras(T a, T b)
{
    a = std::abs(a);
    b = std::abs(b);
    if (a < b)
        std::swap(a, b);
    if (a == T(0))
        return T(0);
    const T ratio = b / a;
    return a * std::sqrt(T(1) + ratio * ratio);
}

template <class T> void ZqEigenSolver<T>::computeJacobi()
{
    ZqMatrix<T>& a = *matrix;
    const std::size_t n = a.GetRows();
    if (!eigenvalues)
        eigenvalues = std::make_unique<ZqMatrix<T>>();
    if (!eigenvectors)
        eigenvectors = std::make_unique<ZqMatrix<T>>();
    eigenvalues->Resize(n, 1);
    eigenvectors->Resize(n, n);
    for (std::size_t i = 0; i < n; ++i)
        (*eigenvectors)(i, i) = T(1);
    T* d = eigenvalues->GetData();

    // The rotations overwrite the upper triangle, so it is scaled in place; the diagonal is read once.
    const int exponent = scaleExponent(a, true);
    scaleTriangle(a, true, false, -exponent);
    // b: the diagonal at the start of the sweep, z: what the sweep's rotations added to it. Summing
    // the updates separately keeps rounding from accumulating in d.
    m_scratch.assign(2 * n, T(0));
    T* b = m_scratch.data();
    for (std::size_t i = 0; i < n; ++i)
        b[i] = d[i] = std::ldexp(a(i, i), -exponent);

    for (int sweep = 1; sweep <= kMaxJacobiSweeps; ++sweep)
        if (jacobiSweep(sweep))
        {
            for (std::size_t i = 0; i < n; ++i)
                d[i] = std::ldexp(d[i], exponent);
            return;
        }
    throwNotConverged("Jacobi rotations did not converge");
}

// One cyclic sweep over the upper triangle; true when there was nothing left to rotate.
template <class T> bool ZqEigenSolver<T>::jacobiSweep(int sweep)
{
    ZqMatrix<T>& a = *matrix;
    const std::size_t n = a.GetRows();
    T* d = eigenvalues->GetData();
    T* b = m_scratch.data();
    T* z = b + n;
    T offDiagonal = T(0);
    for (std::size_t p = 0; p + 1 < n; ++p)
        for (std::size_t q = p + 1; q < n; ++q)
            offDiagonal += std::abs(a(p, q));
    if (offDiagonal == T(0))
        return true;
    // Early sweeps leave small elements for later, when the large ones are gone.
    const T threshold = sweep < 4 ? T(0.2) * offDiagonal / T(n * n) : T(0);
    for (std::size_t p = 0; p + 1 < n; ++p)
        for (std::size_t q = p + 1; q < n; ++q)
        {
            const T apq = a(p, q);
            const T g = T(100) * std::abs(apq);
            // After the fourth sweep an element too small to change either diagonal is dropped.
            if (sweep > 4 && std::abs(d[p]) + g == std::abs(d[p]) && std::abs(d[q]) + g == std::abs(d[q]))
            {
                a(p, q) = T(0);
                continue;
            }
            if (std::abs(apq) <= threshold)
                continue;
            const T h = d[q] - d[p];
            T t;
            if (std::abs(h) + g == std::abs(h))
                t = apq / h;
            else
            {
                const T theta = T(0.5) * h / apq;
                t = T(1) / (std::abs(theta) + std::sqrt(T(1) + theta * theta));
                if (theta < T(0))
                    t = -t;
            }
            jacobiRotate(a, *eigenvectors, d, z, p, q, t);
        }
    for (std::size_t i = 0; i < n; ++i)
    {
        b[i] += z[i];
        d[i] = b[i];
        z[i] = T(0);
    }
    return false;
}

// The rotation with tangent t that zeroes a(p, q), applied to the upper triangle, the diagonal and the
// eigenvector rows p and q.
template <class T>
void ZqEigenSolver<T>::jacobiRotate(ZqMatrix<T>& a, ZqMatrix<T>& v, T* d, T* z, std::size_t p, std::size_t q,
                                    T t)
{
    const std::size_t n = a.GetRows();
    const T c = T(1) / std::sqrt(T(1) + t * t);
    const T s = t * c;
    const T tau = s / (T(1) + c);
    const T h = t * a(p, q);
    z[p] -= h;
    z[q] += h;
    d[p] -= h;
    d[q] += h;
    a(p, q) = T(0);
    for (std::size_t j = 0; j < p; ++j)
        rotatePair(a(j, p), a(j, q), s, tau);
    for (std::size_t j = p + 1; j < q; ++j)
        rotatePair(a(p, j), a(j, q), s, tau);
    for (std::size_t j = q + 1; j < n; ++j)
        rotatePair(a(p, j), a(q, j), s, tau);
    T* vp = v.GetRow(p);
    T* vq = v.GetRow(q);
    for (std::size_t j = 0; j < n; ++j)
        rotatePair(vp[j], vq[j], s, tau);
}

template <class T> void ZqEigenSolver<T>::rotatePair(T& x, T& y, T s, T tau)
{
    const T g = x, h = y;
    x = g - s * (h + g * tau);
    y = h + s * (g - h * tau);
}

// Selection sort by multiplier * value, largest first; ties keep the earlier index. The eigenvector
// rows travel with their eigenvalues.
template <class T> void ZqEigenSolver<T>::sort(T multiplier)
{
    ZqMatrix<T>& values = *eigenvalues;
    ZqMatrix<T>& vectors = eigenvectors ? *eigenvectors : *matrix;
    const std::size_t n = values.GetSize();
    for (std::size_t i = 0; i + 1 < n; ++i)
    {
        std::size_t best = i;
        for (std::size_t j = i + 1; j < n; ++j)
            if (multiplier * values[j] > multiplier * values[best])
                best = j;
        if (best == i)
            continue;
        std::swap(values[i], values[best]);
        std::swap_ranges(vectors.GetRow(i), vectors.GetRow(i) + n, vectors.GetRow(best));
    }
}

template <class T> void ZqEigenSolver<T>::throwPrecondition(const char* reason)
{
    const std::string function = CbTypeNameTemplate("ZqEigenSolver", CbTypeName<T>::Get()) + "::Compute";
    CB_THROW(CbExceptionPreconditionViolation, function.c_str(), reason);
}

template <class T> void ZqEigenSolver<T>::throwNotConverged(const char* reason)
{
    const std::string function = CbTypeNameTemplate("ZqEigenSolver", CbTypeName<T>::Get()) + "::Compute";
    CB_THROW(CbException, function.c_str(), reason);
}
