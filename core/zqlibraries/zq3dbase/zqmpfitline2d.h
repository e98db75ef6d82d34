#pragma once

#include "basepool/cbarray.h"
#include "basepool/cbexception.h"
#include "basepool/cbtypename.h"
#include "basepool/cbvector2.h"
#include "zq3dbase/zqmpfitbase.h"

#include <cfloat>
#include <cmath>
#include <string>
#include <type_traits>
#include <utility>

// Fits the line y = m x + t to 2D points (x first, y second), by plain least squares or, with the
// flag eF_Robust, by iteratively reweighted least squares with Tukey's biweight, which gives points
// beyond 4.6851 sigma no weight at all. TPoints is CbArray<CbVector2f> or CbArray<CbVector2d>;
// the scalar type of the results is the vectors' component type.
//
// Inputs:
//   points        the points; must be set.
//   weights       optional, robust method only: one non-negative weight per point.
//   flags         eF_Robust selects the robust method.
// Outputs (the two methods store the coefficients in opposite order):
//   coefficient1  robust: the slope m;     plain: the intercept t.
//   coefficient2  robust: the intercept t; plain: the slope m.
//   sigma         robust: the square root of the final weighted mean squared residual; plain: 0.
//   inlierWeight  robust: the sum of the final biweights over the point count; plain: 0.
//   line          y = m x + t of either method, as a function object: line(x).
// Failure: the robust method fails (Compute returns false, compute throws CbException naming
// "ZqMpFitLine2D<class CbArray<class CbVector2f> >::compute") with fewer than two points, a weights
// array of another length than the points, or when the points that keep a weight do not span two
// distinct x values. The plain method always succeeds; without two distinct x values its
// coefficients are not finite.
//
// The sums are formed in double about the first point, so coordinates far from the origin cost no
// precision. A robust fit whose weighted residuals vanish, or shrink to rounding noise (an RMS below
// 1e-13 of that of the y values about the first point), has found an exact line: it stops there
// with sigma 0 instead of reweighting with a scale that is zero or noise.
//
//     CbArray<CbVector2f> points = {{0, 1}, {1, 3}, {2, 5}, {3, 7}, {1.5f, 40}};
//     ZqMpFitLine2D<CbArray<CbVector2f>> fit;
//     fit.points = &points;
//     fit.SetFlags(CbFlags<ZqMpFitBase::EFlags>(ZqMpFitBase::eF_Robust));
//     fit.setInputChanged();
//     fit.Compute();   // coefficient1 2 (slope), coefficient2 1 (intercept), inlierWeight 0.8
template <class TPoints> class ZqMpFitLine2D : public ZqMpFitBase
{
public:
    using Point = std::remove_cvref_t<decltype(*std::declval<const TPoints&>().begin())>;
    using Scalar = typename Point::ValueType;

    // y = slope x + intercept.
    class CLineFunction : public IFunction<Scalar>
    {
    public:
        Scalar slope = Scalar(0);
        Scalar intercept = Scalar(0);
        Scalar Evaluate(Scalar x) const override { return slope * x + intercept; }
    };

    const TPoints* points = nullptr;
    const CbArray<Scalar>* weights = nullptr;
    CLineFunction line;

    Scalar coefficient1 = Scalar(0);
    Scalar coefficient2 = Scalar(0);
    Scalar sigma = Scalar(0);
    Scalar inlierWeight = Scalar(0);

protected:
    void checkPreConditionsInit() const override;
    void compute() override;

private:
    // Weighted sums of the coordinates relative to the first point.
    struct SSums
    {
        double w = 0.0, x = 0.0, y = 0.0, xy = 0.0, xx = 0.0, yy = 0.0;
        void Add(double weight, double dx, double dy)
        {
            w += weight;
            x += weight * dx;
            y += weight * dy;
            xy += weight * dx * dy;
            xx += weight * dx * dx;
            yy += weight * dy * dy;
        }
        // w xx - x^2, which vanishes when fewer than two distinct x values carry weight; a relative
        // test, since the rounding of the sums leaves a trace of the order of their magnitude.
        double Determinant() const { return w * xx - x * x; }
        bool IsDegenerate() const { return !(Determinant() > 1e-10 * w * xx); }
    };

    void fitPlain();
    // Null on success, else the reason of the failure.
    const char* fitRobust();
    // Stores the line y - y0 = slope (x - x0) + shiftedIntercept.
    void setLine(double slope, double shiftedIntercept, bool robust);
    static std::string functionText(const char* function);

    double m_x0 = 0.0;
    double m_y0 = 0.0;
};

template <class TPoints> void ZqMpFitLine2D<TPoints>::checkPreConditionsInit() const
{
    if (!points)
        CB_THROW(CbExceptionPreconditionViolation, functionText("checkPreConditionsInit").c_str(),
                 "no points");
}

template <class TPoints> void ZqMpFitLine2D<TPoints>::compute()
{
    coefficient1 = coefficient2 = sigma = inlierWeight = Scalar(0);
    line = CLineFunction();
    m_x0 = points->GetCount() ? double((*points)[0].x) : 0.0;
    m_y0 = points->GetCount() ? double((*points)[0].y) : 0.0;
    if (!IsRobust())
    {
        fitPlain();
        return;
    }
    if (const char* reason = fitRobust())
        CB_THROW(CbException, functionText("compute").c_str(), reason);
}

template <class TPoints> void ZqMpFitLine2D<TPoints>::fitPlain()
{
    SSums s;
    for (const Point& p : *points)
        s.Add(1.0, double(p.x) - m_x0, double(p.y) - m_y0);
    const double d = s.Determinant();
    const double slope = (s.w * s.xy - s.y * s.x) / d;
    const double intercept = (s.xx * s.y - s.xy * s.x) / d;
    setLine(slope, intercept, false);
}

template <class TPoints> const char* ZqMpFitLine2D<TPoints>::fitRobust()
{
    const unsigned int n = points->GetCount();
    if (n < 2)
        return "fewer than two points";
    if (weights && weights->GetCount() != n)
        return "the weights array does not hold one weight per point";
    const auto pointWeight = [this](unsigned int i) { return weights ? double((*weights)[i]) : 1.0; };
    const auto dx = [this](unsigned int i) { return double((*points)[i].x) - m_x0; };
    const auto dy = [this](unsigned int i) { return double((*points)[i].y) - m_y0; };

    // Weighted least squares with the point weights as the start.
    SSums s;
    for (unsigned int i = 0; i < n; ++i)
        s.Add(pointWeight(i), dx(i), dy(i));
    if (s.IsDegenerate())
        return "the points do not span two distinct x values";
    double slope = (s.w * s.xy - s.y * s.x) / s.Determinant();
    double intercept = (s.y - slope * s.x) / s.w;
    setLine(slope, intercept, true);
    // Squared residuals of rounding noise, relative to the mean square of the y values.
    const double negligibleScale = 1e-26 * s.yy / s.w;
    if (n == 2)
    {
        sigma = Scalar(0);
        inlierWeight = Scalar(1);
        return nullptr;
    }

    const auto squaredResidual = [&](unsigned int i)
    {
        const double r = slope * dx(i) + intercept - dy(i);
        return r * r;
    };
    double scale = 0.0;
    for (unsigned int i = 0; i < n; ++i)
        scale += pointWeight(i) * squaredResidual(i);
    scale /= s.w;
    if (scale <= negligibleScale)
    {
        sigma = Scalar(0);
        inlierWeight = Scalar(1);
        return nullptr;
    }

    double newScale = scale;
    SSums b;
    for (unsigned int iteration = 0; iteration < kMaxRobustIterations; ++iteration)
    {
        b = SSums();
        double weightedSquares = 0.0;
        for (unsigned int i = 0; i < n; ++i)
        {
            const double r2 = squaredResidual(i);
            double weight = TukeyWeight(r2, scale);
            if (weight == 0.0)
                continue;
            if (weights)
                weight *= pointWeight(i);
            b.Add(weight, dx(i), dy(i));
            weightedSquares += weight * r2;
        }
        if (b.IsDegenerate())
            return "the points that keep a weight do not span two distinct x values";
        newScale = weightedSquares / b.w;
        if (newScale <= negligibleScale)
            newScale = 0.0;
        slope = (b.w * b.xy - b.y * b.x) / b.Determinant();
        intercept = (b.y - slope * b.x) / b.w;
        setLine(slope, intercept, true);
        if (newScale == 0.0 || std::abs(1.0 - newScale / scale) <= double(FLT_EPSILON))
            break;
        scale = newScale;
    }
    sigma = Scalar(std::sqrt(newScale));
    inlierWeight = Scalar(b.w / double(n));
    return nullptr;
}

template <class TPoints>
void ZqMpFitLine2D<TPoints>::setLine(double slope, double shiftedIntercept, bool robust)
{
    line.slope = Scalar(slope);
    line.intercept = Scalar(shiftedIntercept + m_y0 - slope * m_x0);
    coefficient1 = robust ? line.slope : line.intercept;
    coefficient2 = robust ? line.intercept : line.slope;
}

template <class TPoints> std::string ZqMpFitLine2D<TPoints>::functionText(const char* function)
{
    return CbTypeNameTemplate("ZqMpFitLine2D", CbTypeName<TPoints>::Get()) + "::" + function;
}
