#pragma once

#include "zqbase/zqalgorithm.h"

// Base of the fitters of point sets (ZqMpFitLine2D, ...): the flag that selects the robust method,
// the model a fit produces as a function object, and Tukey's biweight, which the robust methods
// share. A fitter is run through the ZqAlgorithm protocol:
//
//     fit.SetFlags(CbFlags<ZqMpFitBase::EFlags>(ZqMpFitBase::eF_Robust));
//     fit.setInputChanged();
//     if (fit.Compute()) ...
class ZqMpFitBase : public ZqAlgorithm
{
public:
    enum EFlags : unsigned int
    {
        eF_None = 0,
        // Iteratively reweighted least squares with Tukey's biweight instead of plain least squares.
        eF_Robust = 2,
    };

    // Tukey's tuning constant: 95 % of the efficiency of least squares on Gaussian noise.
    static constexpr double kTukeyConstant = 4.6851;
    // Reweighting rounds of a robust fit at most.
    static constexpr unsigned int kMaxRobustIterations = 16;

    // The fitted model y = f(x). Polymorphic so that code measuring residuals need not know which
    // model a fitter produced.
    template <class T> class IFunction
    {
    public:
        virtual ~IFunction() = default;
        virtual T Evaluate(T x) const = 0;
        T operator()(T x) const { return Evaluate(x); }
    };

    bool IsRobust() const { return IsFlagSet(eF_Robust); }

    // Tukey's biweight of a residual r, given r^2 and the scale s (a variance): (1 - u)^2 with
    // u = r^2 / (4.6851^2 s); 0 for u > 1, that is |r| > 4.6851 sqrt(s).
    template <class T> static T TukeyWeight(T squaredResidual, T scale)
    {
        const T u = squaredResidual / (scale * T(kTukeyConstant * kTukeyConstant));
        if (u > T(1))
            return T(0);
        return (T(1) - u) * (T(1) - u);
    }
};
