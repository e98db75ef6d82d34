#pragma once

#include "basepool/cbtypename.h"
#include "zqbase/zqalgorithm.h"
#include "zqmath/zqmatrix.h"

#include <string>

// Base of the one-dimensional extremum locators: they search a bracket for the minimum (or
// maximum) of f.
//
// Inputs (set by the caller before Compute):
//   client, function  the objective: (client->*function)(&x) is f(x).
//   sign              +1 locates a minimum, -1 a maximum (of f); every value used inside is
//                     sign * f, every value handed out is f again.
//   bracket           3 x 1: ax, bx, cx with bx between ax and cx and f(bx) not above the ends
//                     (sign applied); the ends may come in either order.
//   tolerance         points at the fractional tolerance of the abscissa.
// Outputs (after a successful Compute):
//   xmin, fmin        the abscissa found and f there.
template <class T, class Fn> class ZqLocateExtremum : public ZqAlgorithm
{
public:
    using Function = T (Fn::*)(const T*);

    Fn* client = nullptr;
    Function function = nullptr;
    int sign = 1;
    ZqMatrix<T> bracket;
    const T* tolerance = nullptr;

    T xmin = T(0);
    T fmin = T(0);

protected:
    void checkPreConditionsInit() const override
    {
        if (!client || !function || (sign != 1 && sign != -1) || !tolerance || bracket.GetSize() != 3)
        {
            const std::string text =
                CbTypeNameTemplate("ZqLocateExtremum", CbTypeName<T>::Get(), CbTypeName<Fn>::Get()) +
                "::checkPreConditionsInit";
            CB_THROW(CbExceptionPreconditionViolation, text.c_str());
        }
    }
    // sign * f(x).
    T evaluate(T x) { return T(sign) * (client->*function)(&x); }
};
