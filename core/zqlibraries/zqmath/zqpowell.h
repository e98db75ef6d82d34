#pragma once

#include "zqmath/zqlineminimization.h"

#include <cfloat>
#include <cmath>
#include <cstdint>
#include <memory>
#include <string>

// Powell's direction-set method: minimizes (or maximizes) an n-dimensional function without
// derivatives by line minimizations along a set of directions, replacing the direction of largest
// decrease by the average direction of a sweep where that promises progress.
//
// Inputs and in/out fields (set before Compute):
//   point             n x 1 (or 1 x n) start; on return the extremum found.
//   directions        n x n, column i is direction i; usually the identity. Updated in place.
//   bracketingMethod, locateMethod
//                     handed to every line minimization (see ZqLineMinimization).
//   initialStep       first trial step of parabolic bracketing (default 0.1).
//   maxIterations     sweeps after the first one (default 0: one sweep; m: at most m + 1 sweeps).
//   ftol              fractional tolerance of the function value, also the tolerance of the line
//                     minimizations (default 0).
//   client, function  the objective: (client->*function)(x) is f(x).
//   bounds, boundsMatrix
//                     optional box (see ZqLineMinimization): it shapes the brackets and keeps the
//                     extrapolated point of a sweep from leaving the box.
//   sign, maximize    no default: sign +1 with maximize 0 minimizes, sign -1 with maximize 1
//                     maximizes.
// Outputs:
//   fmin              f at the point found: the true value, also when maximizing. Allocated by
//                     Compute (holding 0 until the method converges).
//   sweeps            the number of sweeps made.
// Failure: Compute returns false. Inconsistent inputs throw CbExceptionPreconditionViolation;
// a failed line minimization and the iteration limit throw CbException naming compute. The point
// and directions then hold the state of the last sweep.
//
// The method has converged when a sweep lowers the value by no more than
// ftol (|f_before| + |f_after|) / 2 + 5e-26.
//
//     struct Bowl { float Evaluate(const ZqMatrix<float>& x) { return (x - centre).GetSquaredLength(); } ...
//     }; ZqMatrix<float> point = ZqMatrix<float>::Vector({10, -10}); ZqMatrix<float> directions =
//     ZqMatrix<float>::Identity(2); ZqPowell<float, Bowl> powell; powell.point = &point; powell.directions =
//     &directions; powell.bracketingMethod = ZqPowell<float, Bowl>::eBM_Parabolic; powell.locateMethod =
//     ZqPowell<float, Bowl>::eLM_Brent; powell.maxIterations = 10; powell.ftol = 0.001f; powell.client =
//     &bowl; powell.function = &Bowl::Evaluate; powell.sign = 1; if (powell.Compute())
//         use(point, *powell.fmin);
template <class T, class Client> class ZqPowell : public ZqAlgorithm
{
public:
    using LineMinimization = ZqLineMinimization<T, Client>;
    using EBracketingMethod = typename LineMinimization::EBracketingMethod;
    using ELocateMethod = typename LineMinimization::ELocateMethod;
    using Objective = typename LineMinimization::Objective;
    static constexpr EBracketingMethod eBM_Bounds = LineMinimization::eBM_Bounds;
    static constexpr EBracketingMethod eBM_Parabolic = LineMinimization::eBM_Parabolic;
    static constexpr ELocateMethod eLM_Brent = LineMinimization::eLM_Brent;

    ZqMatrix<T>* point = nullptr;
    ZqMatrix<T>* directions = nullptr;
    std::unique_ptr<T> fmin;
    EBracketingMethod bracketingMethod = eBM_Bounds;
    ELocateMethod locateMethod = ELocateMethod(0);
    T initialStep = T(0.1);
    std::uint32_t maxIterations = 0;
    T ftol = T(0);
    Client* client = nullptr;
    Objective function = nullptr;
    const ZqMatrix<T>* bounds = nullptr;
    const ZqMatrix<T>* boundsMatrix = nullptr;
    std::int32_t sign = 0;
    std::int32_t maximize = 0;

    std::uint32_t sweeps = 0;

protected:
    void checkPreConditionsInit() const override;
    void compute() override;

private:
    T evaluate(const ZqMatrix<T>& x) const { return T(sign) * (client->*function)(x); }
    static std::string functionText(const char* function);
};

template <class T, class Client> void ZqPowell<T, Client>::checkPreConditionsInit() const
{
    const auto require = [](bool condition, const char* reason)
    {
        if (!condition)
            CB_THROW(CbExceptionPreconditionViolation, functionText("checkPreConditionsInit").c_str(),
                     reason);
    };
    require(point && point->IsVector(), "point is not a vector");
    const std::size_t n = point->GetSize();
    require(directions && directions->GetRows() == n && directions->GetCols() == n,
            "directions are not n x n");
    require(client && function, "no objective");
    require((sign == 1 && !maximize) || (sign == -1 && maximize), "sign must be +1, or -1 when maximizing");
    require(!(bounds && boundsMatrix), "bounds interval and bounds matrix given together");
    require(!bounds || (bounds->GetSize() == 2 && (*bounds)[0] <= (*bounds)[1]),
            "bounds interval is not [lo, hi]");
    require(!boundsMatrix || (boundsMatrix->GetRows() == 2 && boundsMatrix->GetCols() == n),
            "bounds matrix is not 2 x n");
    require(bracketingMethod != eBM_Bounds || bounds || boundsMatrix, "bounds bracketing without bounds");
}

template <class T, class Client> void ZqPowell<T, Client>::compute()
{
    const std::size_t n = point->GetSize();
    fmin = std::make_unique<T>(T(0));
    sweeps = 0;

    LineMinimization line;
    line.point = point;
    line.tolerance = &ftol;
    line.bracketingMethod = bracketingMethod;
    line.locateMethod = locateMethod;
    line.initialStep = &initialStep;
    line.bounds = bounds;
    line.boundsMatrix = boundsMatrix;
    line.client = client;
    line.function = function;
    line.sign = maximize ? -1 : 1;
    line.maximize = maximize;

    T fret = evaluate(*point);
    ZqMatrix<T> pt = *point;
    for (std::uint32_t iteration = 0;; ++iteration)
    {
        const T fp = fret;
        std::size_t ibig = 0;
        T del = T(0);
        for (std::size_t i = 0; i < n; ++i)
        {
            ZqMatrix<T> xit = directions->GetColumn(i);
            const T fptt = fret;
            line.direction = &xit;
            line.setInputChanged();
            if (!line.Compute(eCF_Compute | eCF_Force) || !line.checkOutputData())
                CB_THROW(CbException, functionText("compute").c_str(), line.GetLastError());
            fret = T(sign) * *line.fmin;
            if (fptt - fret > del)
            {
                del = fptt - fret;
                ibig = i;
            }
        }
        ++sweeps;

        if (T(2) * (fp - fret) <= ftol * (std::fabs(fp) + std::fabs(fret)) + T(1e-25))
        {
            *fmin = T(sign) * fret;
            return;
        }
        if (iteration == maxIterations)
            CB_THROW(CbException, functionText("compute").c_str(), "iteration limit reached");

        // Extrapolate along the sweep's average direction, but not beyond the box.
        T factor = T(1);
        if (bounds || boundsMatrix)
        {
            T tLo, tHi;
            LineMinimization::ClipLine(pt, *point, LineMinimization::MakeBox(bounds, boundsMatrix, n), tLo,
                                       tHi);
            if (tHi < T(2))
                factor = tHi - T(1);
        }
        ZqMatrix<T> xit = factor * (*point - pt);
        const ZqMatrix<T> ptt = *point + xit;
        pt = *point;
        const T fptt = evaluate(ptt);
        if (fptt < fp)
        {
            const T decrease = fp - fret - del;
            const T extrapolated = fp - fptt;
            const T t =
                T(2) * (fp - T(2) * fret + fptt) * decrease * decrease - del * extrapolated * extrapolated;
            if (t < T(0))
            {
                line.direction = &xit;
                line.setInputChanged();
                if (!line.Compute(eCF_Compute | eCF_Force) || !line.checkOutputData())
                    CB_THROW(CbException, functionText("compute").c_str(), line.GetLastError());
                fret = T(sign) * *line.fmin;
                // A vanishing displacement would make the set degenerate.
                if (xit.GetSquaredLength() >= T(FLT_EPSILON))
                {
                    directions->SetColumn(ibig, directions->GetColumn(n - 1));
                    directions->SetColumn(n - 1, xit);
                }
            }
        }
    }
}

template <class T, class Client> std::string ZqPowell<T, Client>::functionText(const char* function)
{
    return CbTypeNameTemplate("ZqPowell", CbTypeName<T>::Get(), CbTypeName<Client>::Get()) + "::" + function;
}
