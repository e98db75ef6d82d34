#pragma once

#include "basepool/cbtypename.h"
#include "zqbase/zqalgorithm.h"
#include "zqmath/zqmatrix.h"

#include <string>

// Base of the bracketing algorithms: they find three abscissae a, b, c with f(b) not above f(a)
// and f(c), so that a one-dimensional minimum lies between a and c.
//
// Inputs (set by the caller before Compute):
//   client, function  the objective: (client->*function)(&x) is f(x).
//   sign              +1 finds a minimum, -1 a maximum (of f); every value used inside is
//                     sign * f, every value handed out is f again.
// Outputs (after a successful Compute):
//   bracket           3 x 1: a, b, c.
//   values            3 x 1: f(a), f(b), f(c).
template <class T, class Fn> class ZqBracketing : public ZqAlgorithm
{
public:
    using Function = T (Fn::*)(const T*);

    Fn* client = nullptr;
    Function function = nullptr;
    int sign = 1;

    ZqMatrix<T> bracket;
    ZqMatrix<T> values;

protected:
    void checkPreConditionsInit() const override
    {
        if (!client || !function || (sign != 1 && sign != -1))
        {
            const std::string text =
                CbTypeNameTemplate("ZqBracketing", CbTypeName<T>::Get(), CbTypeName<Fn>::Get()) +
                "::checkPreConditionsInit";
            CB_THROW(CbExceptionPreconditionViolation, text.c_str());
        }
    }
    // sign * f(x).
    T evaluate(T x) { return T(sign) * (client->*function)(&x); }
};
