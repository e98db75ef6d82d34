#pragma once

#include "zqmath/zqlocateextremum.h"

#include <cmath>
#include <string>

// Brent's method: the minimum (or, with sign -1, the maximum) of f inside a bracket, by parabolic
// interpolation where it converges and golden sections where it does not. No derivatives.
//
// Inputs and outputs: those of ZqLocateExtremum. The tolerance t is both the fractional and the
// absolute part of the stopping width: the search stops when the bracket around xmin is within
// 2 (t |xmin| + t), so a t of 0.001 places a minimum near 0 to about 0.002.
// Failure: no convergence within 200 iterations (for instance with a negative tolerance) throws
// CbException.
//
//     ZqBrent<float, Curve> brent;
//     brent.client = &curve;
//     brent.function = &Curve::Evaluate;
//     brent.bracket = ZqMatrix<float>::Vector({-1.0f, 0.0f, 3.0f});
//     brent.tolerance = &tolerance;
//     if (brent.Compute())
//         use(brent.xmin, brent.fmin);
template <class T, class Fn> class ZqBrent : public ZqLocateExtremum<T, Fn>
{
public:
    static constexpr int c_maxIterations = 200;

protected:
    void compute() override;

private:
    // |a| with the sign of b, +|a| for b = 0.
    static T withSignOf(T a, T b) { return b >= T(0) ? std::fabs(a) : -std::fabs(a); }
};

template <class T, class Fn> void ZqBrent<T, Fn>::compute()
{
    const T cgold = T(0.38196602);
    const T tol = *this->tolerance;

    T a = std::fmin(this->bracket[0], this->bracket[2]);
    T b = std::fmax(this->bracket[0], this->bracket[2]);
    T x = this->bracket[1];
    T w = x;
    T v = x;
    T fx = this->evaluate(x);
    T fw = fx;
    T fv = fx;
    T d = T(0);
    T e = T(0);

    for (int iteration = 0; iteration < c_maxIterations; ++iteration)
    {
        const T xm = (a + b) / T(2);
        const T tol1 = tol * std::fabs(x) + tol;
        const T tol2 = T(2) * tol1;
        // The half-width in double: the span of a bracket over the whole float range overflows T.
        if (std::fabs(x - xm) <= double(tol2) - 0.5 * (double(b) - double(a)))
        {
            this->xmin = x;
            this->fmin = T(this->sign) * fx;
            return;
        }
        if (std::fabs(e) > tol1)
        {
            const T r = (x - w) * (fx - fv);
            T q = (x - v) * (fx - fw);
            T p = (x - v) * q - (x - w) * r;
            q = T(2) * (q - r);
            if (q > T(0))
                p = -p;
            q = std::fabs(q);
            const T etemp = e;
            e = d;
            if (std::fabs(p) >= std::fabs(0.5 * q * etemp) || p <= q * (a - x) || p >= q * (b - x))
            {
                e = x >= xm ? a - x : b - x;
                d = cgold * e;
            }
            else
            {
                d = p / q;
                const T u = x + d;
                if (u - a < tol2 || b - u < tol2)
                    d = withSignOf(tol1, xm - x);
            }
        }
        else
        {
            e = x < xm ? b - x : a - x;
            d = cgold * e;
        }
        const T u = std::fabs(d) >= tol1 ? x + d : x + withSignOf(tol1, d);
        const T fu = this->evaluate(u);
        if (fu <= fx)
        {
            if (u >= x)
                a = x;
            else
                b = x;
            v = w;
            w = x;
            x = u;
            fv = fw;
            fw = fx;
            fx = fu;
        }
        else
        {
            if (u < x)
                a = u;
            else
                b = u;
            if (fu <= fw || w == x)
            {
                v = w;
                w = u;
                fv = fw;
                fw = fu;
            }
            else if (fu <= fv || v == x || v == w)
            {
                v = u;
                fv = fu;
            }
        }
    }
    const std::string text =
        CbTypeNameTemplate("ZqBrent", CbTypeName<T>::Get(), CbTypeName<Fn>::Get()) + "::compute";
    CB_THROW(CbException, text.c_str(), "no convergence in 200 iterations");
}
