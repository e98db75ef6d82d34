#pragma once

#include "basepool/cbtypename.h"
#include "zqbase/zqalgorithm.h"
#include "zqmath/zqmatrix.h"

#include <cfloat>
#include <cmath>
#include <cstdint>
#include <memory>
#include <string>

template <class T, class Client> class ZqLineMinimization;

template <class T, class Client> struct CbTypeName<ZqLineMinimization<T, Client>>
{
    static std::string Get()
    {
        return "class " +
               CbTypeNameTemplate("ZqLineMinimization", CbTypeName<T>::Get(), CbTypeName<Client>::Get());
    }
};

#include "zqmath/zqbrent.h"
#include "zqmath/zqparabolicbracketing.h"

// Minimizes (or maximizes) an n-dimensional function along a line: from a point in a direction,
// bracketing first, then Brent's method, and moves the point to the extremum found.
//
// Inputs and in/out fields (set before Compute; the constructor sets all to zero or null):
//   point             n x 1 (or 1 x n) start; on return the extremum along the line.
//   direction         the direction, same dimension; on return the displacement actually made
//                     (direction times xmin), so point_new = point_old + direction_new.
//   tolerance         fractional tolerance of the step, handed to Brent (see ZqBrent).
//   bracketingMethod  eBM_Bounds: the bracket is the part of the line inside the bounds box (which
//                     therefore must be given); eBM_Parabolic: ZqParabolicBracketing from the steps
//                     0 and *initialStep, kept inside the box when bounds are given.
//   locateMethod      eLM_Brent, the only one.
//   initialStep       the first trial step along direction (parabolic bracketing).
//   bounds            optional 2 x 1 interval [lo, hi] for every coordinate, or
//   boundsMatrix      optional 2 x n matrix: row 0 the lower, row 1 the upper bound of each
//                     coordinate. At most one of the two.
//   client, function  the objective: (client->*function)(x) is f(x) for an n-vector x.
//   sign, maximize    sign +1 with maximize 0 minimizes, sign -1 with maximize 1 maximizes.
// Outputs (allocated by Compute):
//   xmin              the step along the given direction.
//   fmin              f at the new point: the true value, also when maximizing.
//   dimension         n.
// Failure: Compute returns false. Inconsistent inputs throw CbExceptionPreconditionViolation
// (bounds bracketing without bounds among them); a failed bracketing or Brent search, an unknown
// bracketing or locate method throw CbException naming compute.
//
// Bounds act only through the bracket, the part of the line inside the box: the search stays there
// (up to rounding), but a start point outside the box is not moved into it.
template <class T, class Client> class ZqLineMinimization : public ZqAlgorithm
{
public:
    enum EBracketingMethod : std::uint32_t
    {
        eBM_Bounds = 0,
        eBM_Parabolic = 1,
    };
    enum ELocateMethod : std::uint32_t
    {
        eLM_Brent = 1,
    };
    using Objective = T (Client::*)(const ZqMatrix<T>&);

    // Per-coordinate bounds.
    struct SBox
    {
        ZqMatrix<T> lower;
        ZqMatrix<T> upper;
    };

    ZqMatrix<T>* point = nullptr;
    ZqMatrix<T>* direction = nullptr;
    std::unique_ptr<T> xmin;
    std::unique_ptr<T> fmin;
    const T* tolerance = nullptr;
    std::size_t dimension = 0;
    EBracketingMethod bracketingMethod = eBM_Bounds;
    ELocateMethod locateMethod = ELocateMethod(0);
    const T* initialStep = nullptr;
    const ZqMatrix<T>* bounds = nullptr;
    const ZqMatrix<T>* boundsMatrix = nullptr;
    Client* client = nullptr;
    Objective function = nullptr;
    std::int32_t sign = 0;
    std::int32_t maximize = 0;

    // The box of the bounds interval (every coordinate alike) or of the bounds matrix, n-dimensional;
    // one of the two must be given.
    static SBox MakeBox(const ZqMatrix<T>* bounds, const ZqMatrix<T>* boundsMatrix, std::size_t n);

    // Slab clipping of the line from + t (to - from) against box: t_lo and t_hi start at -FLT_MAX
    // and FLT_MAX; a coordinate's bound crossed on the way in raises t_lo, one crossed on the way
    // out lowers t_hi, each only when the crossing lies inside the current [t_lo, t_hi], so a line
    // that misses the box is not rejected. A zero direction (to == from) clips nothing, and so does
    // a coordinate in which the line does not move.
    static void ClipLine(const ZqMatrix<T>& from, const ZqMatrix<T>& to, const SBox& box, T& tLo, T& tHi);

protected:
    void checkPreConditionsInit() const override;
    void compute() override;

private:
    using Bracketing = ZqParabolicBracketing<T, ZqLineMinimization>;
    using Brent = ZqBrent<T, ZqLineMinimization>;

    // sign * f(point + t direction): the function of one variable that the sub-algorithms minimize.
    T evaluateAlongLine(const T* t);
    // (t_lo, t_hi) of the line point + t direction in the bounds box, direction pushed on in the
    // coordinates where adding it to point lost digits.
    void clipToBounds(T& tLo, T& tHi) const;
    // "ZqLineMinimization<float,class Client>::function", the function text of the exceptions.
    static std::string functionText(const char* function);

    ZqMatrix<T> m_work;
};

template <class T, class Client>
typename ZqLineMinimization<T, Client>::SBox
ZqLineMinimization<T, Client>::MakeBox(const ZqMatrix<T>* bounds, const ZqMatrix<T>* boundsMatrix,
                                       std::size_t n)
{
    if (bounds ? bounds->GetSize() != 2 : !boundsMatrix)
        CB_THROW(CbExceptionPreconditionViolation, functionText("MakeBox").c_str(), "no bounds");
    SBox box{ZqMatrix<T>(n, 1), ZqMatrix<T>(n, 1)};
    for (std::size_t i = 0; i < n; ++i)
    {
        box.lower[i] = bounds ? (*bounds)[0] : boundsMatrix->At(0, i);
        box.upper[i] = bounds ? (*bounds)[1] : boundsMatrix->At(1, i);
    }
    return box;
}

template <class T, class Client>
void ZqLineMinimization<T, Client>::ClipLine(const ZqMatrix<T>& from, const ZqMatrix<T>& to, const SBox& box,
                                             T& tLo, T& tHi)
{
    tLo = -T(FLT_MAX);
    tHi = T(FLT_MAX);
    const ZqMatrix<T> d = to - from;
    if (box.lower.GetSize() != d.GetSize() || box.upper.GetSize() != d.GetSize())
        CB_THROW(CbExceptionPreconditionViolation, functionText("ClipLine").c_str(),
                 "box of another dimension");
    if (d.GetSquaredLength() == T(0))
        return;
    const auto cross = [&](T t, T denominator)
    {
        if (denominator > T(0))
        {
            if (tLo < t && t <= tHi)
                tLo = t;
        }
        else if (tLo <= t && t < tHi)
            tHi = t;
    };
    for (std::size_t i = 0; i < d.GetSize(); ++i)
    {
        if (d[i] == T(0))
            continue;
        cross((box.lower[i] - from[i]) / d[i], d[i]);
        cross((from[i] - box.upper[i]) / -d[i], -d[i]);
    }
}

template <class T, class Client> void ZqLineMinimization<T, Client>::checkPreConditionsInit() const
{
    const auto require = [](bool condition, const char* reason)
    {
        if (!condition)
            CB_THROW(CbExceptionPreconditionViolation, functionText("checkPreConditionsInit").c_str(),
                     reason);
    };
    require(point && point->IsVector(), "point is not a vector");
    require(direction && direction->IsVector() && direction->GetSize() == point->GetSize(),
            "direction is not a vector of the point's dimension");
    require(tolerance != nullptr, "no tolerance");
    require(client && function, "no objective");
    require((sign == 1 && !maximize) || (sign == -1 && maximize), "sign must be +1, or -1 when maximizing");
    require(!(bounds && boundsMatrix), "bounds interval and bounds matrix given together");
    require(!bounds || (bounds->GetSize() == 2 && (*bounds)[0] <= (*bounds)[1]),
            "bounds interval is not [lo, hi]");
    if (boundsMatrix)
    {
        require(boundsMatrix->GetRows() == 2 && boundsMatrix->GetCols() == point->GetSize(),
                "bounds matrix is not 2 x n");
        for (std::size_t i = 0; i < point->GetSize(); ++i)
            require((*boundsMatrix)(0, i) <= (*boundsMatrix)(1, i),
                    "bounds matrix has a lower bound above the upper");
    }
    require(bracketingMethod != eBM_Bounds || bounds || boundsMatrix, "bounds bracketing without bounds");
    require(bracketingMethod != eBM_Parabolic || initialStep, "parabolic bracketing without initial step");
}

template <class T, class Client> void ZqLineMinimization<T, Client>::compute()
{
    dimension = point->GetDimension();
    xmin = std::make_unique<T>(T(0));
    fmin = std::make_unique<T>(T(0));
    m_work = *point;

    ZqMatrix<T> bracket;
    switch (bracketingMethod)
    {
    case eBM_Bounds:
    {
        T tLo, tHi;
        clipToBounds(tLo, tHi);
        bracket = ZqMatrix<T>::Vector({tLo, T(0), tHi});
        break;
    }
    case eBM_Parabolic:
    {
        Bracketing bracketing;
        bracketing.client = this;
        bracketing.function = &ZqLineMinimization::evaluateAlongLine;
        bracketing.initial = ZqMatrix<T>::Vector({T(0), *initialStep});
        ZqMatrix<T> clamp;
        if (bounds || boundsMatrix)
        {
            T tLo, tHi;
            clipToBounds(tLo, tHi);
            clamp = ZqMatrix<T>::Vector({tLo, tHi});
            bracketing.clamp = &clamp;
        }
        if (!bracketing.Compute(eCF_Compute | eCF_Force) || !bracketing.checkOutputData())
            CB_THROW(CbException, functionText("compute").c_str(), bracketing.GetLastError());
        bracket = bracketing.bracket;
        break;
    }
    default:
        CB_THROW(CbException, functionText("compute").c_str(), "unknown bracketing method");
    }

    switch (locateMethod)
    {
    case eLM_Brent:
    {
        Brent brent;
        brent.client = this;
        brent.function = &ZqLineMinimization::evaluateAlongLine;
        brent.bracket = bracket;
        brent.tolerance = tolerance;
        if (!brent.Compute(eCF_Compute | eCF_Force) || !brent.checkOutputData())
            CB_THROW(CbException, functionText("compute").c_str(), brent.GetLastError());
        *xmin = brent.xmin;
        *fmin = T(sign) * brent.fmin;
        break;
    }
    default:
        CB_THROW(CbException, functionText("compute").c_str(), "unknown locate method");
    }

    for (std::size_t j = 0; j < point->GetSize(); ++j)
    {
        (*direction)[j] *= *xmin;
        (*point)[j] += (*direction)[j];
    }
}

template <class T, class Client> T ZqLineMinimization<T, Client>::evaluateAlongLine(const T* t)
{
    for (std::size_t j = 0; j < m_work.GetSize(); ++j)
        m_work[j] = (*point)[j] + *t * (*direction)[j];
    return T(sign) * (client->*function)(m_work);
}

template <class T, class Client> void ZqLineMinimization<T, Client>::clipToBounds(T& tLo, T& tHi) const
{
    const SBox box = MakeBox(bounds, boundsMatrix, point->GetSize());
    ZqMatrix<T> q = *point;
    for (std::size_t i = 0; i < q.GetSize(); ++i)
    {
        q[i] = (*point)[i] + (*direction)[i];
        const T moved = q[i] - (*point)[i];
        if (std::fabs(moved) < std::fabs((*direction)[i]))
            q[i] += T(2) * ((*direction)[i] - moved);
    }
    ClipLine(*point, q, box, tLo, tHi);
}

template <class T, class Client> std::string ZqLineMinimization<T, Client>::functionText(const char* function)
{
    return CbTypeNameTemplate("ZqLineMinimization", CbTypeName<T>::Get(), CbTypeName<Client>::Get()) +
           "::" + function;
}
