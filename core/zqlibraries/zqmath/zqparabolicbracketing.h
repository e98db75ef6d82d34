#pragma once

#include "zqmath/zqbracketing.h"

#include <cmath>
#include <string>
#include <utility>

// Brackets a minimum (or, with sign -1, a maximum) of f from two starting abscissae: golden-ratio
// growth downhill, accelerated by parabolic extrapolation, optionally kept inside an interval.
//
// Inputs, besides those of ZqBracketing:
//   initial           2 x 1: the two starting abscissae.
//   clamp             optional 2 x 1 interval [lo, hi]; null: unbounded. Every trial abscissa
//                     outside it is replaced by the nearer end, so the bracket stays inside; when
//                     f keeps falling towards an end the bracket ends there with b = c.
// Outputs: those of ZqBracketing.
// Failure: a NaN or infinite abscissa or value (f without a minimum in reach of the float range, or
// f not finite) throws CbException.
//
//     ZqParabolicBracketing<float, Curve> bracketing;
//     bracketing.client = &curve;
//     bracketing.function = &Curve::Evaluate;
//     bracketing.initial = ZqMatrix<float>::Vector({0.0f, 0.1f});
//     bracketing.Compute();   // bracketing.bracket holds a, b, c around a minimum of the curve
template <class T, class Fn> class ZqParabolicBracketing : public ZqBracketing<T, Fn>
{
    using Base = ZqBracketing<T, Fn>;

public:
    ZqMatrix<T> initial = ZqMatrix<T>(2, 1);
    const ZqMatrix<T>* clamp = nullptr;

protected:
    void checkPreConditionsInit() const override
    {
        Base::checkPreConditionsInit();
        if (initial.GetSize() != 2 || (clamp && (clamp->GetSize() != 2 || !((*clamp)[0] <= (*clamp)[1]))))
        {
            const std::string text = typeText() + "::checkPreConditionsInit";
            CB_THROW(CbExceptionPreconditionViolation, text.c_str());
        }
    }

    void compute() override
    {
        const T gold = T(1.618034);
        const T glimit = T(100);
        const T tiny = T(1e-20);

        T a = clamped(initial[0]);
        T b = clamped(initial[1]);
        T fa = this->evaluate(a);
        T fb = this->evaluate(b);
        if (fb > fa)
        {
            std::swap(a, b);
            std::swap(fa, fb);
        }
        T c = clamped(b + gold * (b - a));
        T fc = this->evaluate(c);
        while (fb > fc)
        {
            const T r = (b - a) * (fb - fc);
            const T q = (b - c) * (fb - fa);
            const T d = q - r;
            const T s = d >= T(0) ? std::fmax(std::fabs(d), tiny) : -std::fmax(std::fabs(d), tiny);
            T u = clamped(b - ((b - c) * q - (b - a) * r) / (T(2) * s));
            const T ulim = clamped(b + glimit * (c - b));
            T fu;
            if ((b - u) * (u - c) > T(0))
            {
                fu = this->evaluate(u);
                if (fu < fc)
                {
                    a = b;
                    b = u;
                    fa = fb;
                    fb = fu;
                    break;
                }
                if (fu > fb)
                {
                    c = u;
                    fc = fu;
                    break;
                }
                u = clamped(c + gold * (c - b));
                fu = this->evaluate(u);
            }
            else if ((c - u) * (u - ulim) > T(0))
            {
                fu = this->evaluate(u);
                if (fu < fc)
                {
                    const T previousC = c;
                    b = c;
                    c = u;
                    u = clamped(u + gold * (u - previousC));
                    fb = fc;
                    fc = fu;
                    fu = this->evaluate(u);
                }
            }
            else
            {
                u = (ulim - c) * (u - ulim) < T(0) ? clamped(c + gold * (c - b)) : ulim;
                fu = this->evaluate(u);
            }
            a = b;
            b = c;
            c = u;
            fa = fb;
            fb = fc;
            fc = fu;
            requireFinite(c, fc);
        }
        requireFinite(a, fa);
        requireFinite(b, fb);
        requireFinite(c, fc);

        this->bracket = ZqMatrix<T>::Vector({a, b, c});
        const T sign = T(this->sign);
        this->values = ZqMatrix<T>::Vector({sign * fa, sign * fb, sign * fc});
    }

private:
    T clamped(T x) const
    {
        if (clamp)
        {
            if (x < (*clamp)[0])
                return (*clamp)[0];
            if (x > (*clamp)[1])
                return (*clamp)[1];
        }
        return x;
    }
    void requireFinite(T x, T fx) const
    {
        if (!std::isfinite(x) || !std::isfinite(fx))
        {
            const std::string text = typeText() + "::compute";
            CB_THROW(CbException, text.c_str(), "no finite bracket");
        }
    }
    static std::string typeText()
    {
        return CbTypeNameTemplate("ZqParabolicBracketing", CbTypeName<T>::Get(), CbTypeName<Fn>::Get());
    }
};
