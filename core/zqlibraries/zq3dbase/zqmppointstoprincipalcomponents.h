#pragma once

#include "basepool/cbexception.h"
#include "basepool/cbvector3.h"
#include "zqbase/zqalgorithm.h"
#include "zqmath/zqeigensolver.h"
#include "zqmath/zqmatrix.h"

#include <cstddef>

// Centroid, principal axes and the variances along them of a range of 3D points (the population
// covariance, divided by the point count). TIterator walks CbVector3f points, for example the
// iterators of a CbArray<CbVector3f>.
//
// Inputs:
//   begin, end    the points.
// Outputs, when the range holds at least three points (else they keep their values and HasResult()
// stays false):
//   centroid      the mean of the points.
//   eigenvalues   the variances along the axes, ascending.
//   axes          unit axes, axes[i] belonging to eigenvalues[i]; each axis's sign is arbitrary.
// Failure: each object computes once. A second compute after a result throws CbException naming
// "ZqMpPointsToPrincipalComponents::compute" (so Compute returns false after setInputChanged);
// a covariance the eigen solver cannot decompose (non-finite points) also makes Compute return false.
//
//     CbArray<CbVector3f> points = ...;
//     ZqMpPointsToPrincipalComponents<const CbVector3f*> pca;
//     pca.begin = points.begin();
//     pca.end = points.end();
//     if (pca.Compute() && pca.HasResult())
//         CbVector3f normal = pca.axes[0]; // of a roughly planar cloud
template <class TIterator> class ZqMpPointsToPrincipalComponents : public ZqAlgorithm
{
public:
    TIterator begin{};
    TIterator end{};
    CbVector3f axes[3];
    float eigenvalues[3] = {0.0f, 0.0f, 0.0f};
    CbVector3f centroid;

    // True once a range of at least three points has been decomposed.
    bool HasResult() const { return m_computed; }

protected:
    void compute() override;

private:
    bool m_computed = false;
};

template <class TIterator> void ZqMpPointsToPrincipalComponents<TIterator>::compute()
{
    if (m_computed)
        CB_THROW(CbException, "ZqMpPointsToPrincipalComponents::compute",
                 "the components were already computed");

    double sum[3] = {0.0, 0.0, 0.0};
    std::size_t count = 0;
    for (TIterator it = begin; it != end; ++it, ++count)
    {
        const CbVector3f& p = *it;
        sum[0] += double(p.x);
        sum[1] += double(p.y);
        sum[2] += double(p.z);
    }
    if (count < 3)
        return;

    double mean[3];
    for (unsigned int k = 0; k < 3; ++k)
        mean[k] = sum[k] / double(count);

    ZqMatrix<double> covariance(3, 3);
    for (TIterator it = begin; it != end; ++it)
    {
        const CbVector3f& p = *it;
        const double d[3] = {double(p.x) - mean[0], double(p.y) - mean[1], double(p.z) - mean[2]};
        for (unsigned int r = 0; r < 3; ++r)
            for (unsigned int c = 0; c <= r; ++c)
                covariance(r, c) += d[r] * d[c];
    }
    for (unsigned int r = 0; r < 3; ++r)
        for (unsigned int c = 0; c <= r; ++c)
            covariance(c, r) = covariance(r, c) = covariance(r, c) / double(count);

    ZqEigenSolver<double> solver;
    solver.flags = ZqEigenSolver<double>::eF_Symmetric | ZqEigenSolver<double>::eF_SortAscending;
    solver.matrix = &covariance;
    solver.Compute();

    const ZqMatrix<double>& vectors = solver.GetEigenvectors();
    for (unsigned int i = 0; i < 3; ++i)
    {
        eigenvalues[i] = float((*solver.eigenvalues)[i]);
        axes[i] = CbVector3f(float(vectors(i, 0)), float(vectors(i, 1)), float(vectors(i, 2)));
    }
    centroid = CbVector3f(float(mean[0]), float(mean[1]), float(mean[2]));
    m_computed = true;
}
