// Test of the tolerant float comparison, once for float and once for double: zeros, subnormals,
// infinities and NaNs, the inclusive tolerance boundaries, a table of tolerance tuples and negative
// tolerances. A failed condition is reported with its expression and ends the subtest with
// eException.

#include "basepool/cbexception.h"
#include "zqbase/zqunittest.h"
#include "zqmath/zqfloatcompare.h"
#include "zqmath/zqmathconstants.h"

#include <cmath>
#include <limits>
#include <tuple>

class ZqFloatCompare_UnitTest : public ZqUnitTest
{
    CB_DECLARE_RTTI(ZqFloatCompare_UnitTest)

protected:
    unsigned int getSubtestCount() const override;
    CString getSubtestName(unsigned int index) override;
    EResult runUnitTest(unsigned int index) override;

private:
    template <class T> void runConditions() const;
    template <class T> void runToleranceTable() const;
    // Reports "Condition <expression> failed!" and throws when condition is false.
    void check(bool condition, const wchar_t* expression) const;
};

CB_IMPLEMENT_RTTI(ZqFloatCompare_UnitTest, ZqUnitTest::RTTI);

#define ZQ_CONDITION(expression) check((expression), L"" #expression)

unsigned int ZqFloatCompare_UnitTest::getSubtestCount() const
{
    return 2;
}

CString ZqFloatCompare_UnitTest::getSubtestName(unsigned int index)
{
    switch (index)
    {
    case 0:
        return L"FloatCompare<float>";
    case 1:
        return L"FloatCompare<double>";
    default:
        CB_THROW(CbException, "ZqFloatCompare_UnitTest::getSubtestName");
    }
}

ZqUnitTest::EResult ZqFloatCompare_UnitTest::runUnitTest(unsigned int index)
{
    if (index > 1)
        CB_THROW(CbException, "ZqFloatCompare_UnitTest::runUnitTest");
    try
    {
        if (index == 0)
        {
            runConditions<float>();
            runToleranceTable<float>();
        }
        else
        {
            runConditions<double>();
            runToleranceTable<double>();
        }
    }
    catch (...)
    {
        return eException;
    }
    return ePassed;
}

void ZqFloatCompare_UnitTest::check(bool condition, const wchar_t* expression) const
{
    if (condition)
        return;
    WriteMessage(eError, CString(L"Condition ") + expression + L" failed!");
    CB_THROW(CbException, "ZqFloatCompare_UnitTest::check");
}

template <class T> void ZqFloatCompare_UnitTest::runConditions() const
{
    using namespace ZqFloatCompare;
    const T zero = T(0);
    const T infty = std::numeric_limits<T>::infinity();
    const T qnan = std::numeric_limits<T>::quiet_NaN();
    const T min = std::numeric_limits<T>::min();
    const T denorm_min = std::numeric_limits<T>::denorm_min();
    // Two units in the last place apart: equal by the relative test only.
    const T a = T(1000);
    const T b = std::nextafter(std::nextafter(a, infty), infty);

    ZQ_CONDITION(almostEqual(zero, zero));
    ZQ_CONDITION(almostEqual(zero, -zero));
    ZQ_CONDITION(almostEqual(-zero, -zero));
    ZQ_CONDITION(almostEqual(-zero, zero));
    ZQ_CONDITION(almostEqual(min, min));
    ZQ_CONDITION(almostEqual(denorm_min, min));
    ZQ_CONDITION(almostEqual(min, denorm_min));
    ZQ_CONDITION(almostEqual(T(c_fPi), T(c_fPi)));
    ZQ_CONDITION(almostEqual(-T(c_fPi), -T(c_fPi)));
    ZQ_CONDITION(almostEqual(infty, infty));
    ZQ_CONDITION(almostEqual(-infty, -infty));
    ZQ_CONDITION(almostEqual(a, b));

    ZQ_CONDITION(!almostEqual(-T(c_fPi), T(c_fPi)));
    ZQ_CONDITION(!almostEqual(T(c_fPi), -T(c_fPi)));
    ZQ_CONDITION(!almostEqual(infty, a));
    ZQ_CONDITION(!almostEqual(a, infty));
    ZQ_CONDITION(!almostEqual(infty, -a));
    ZQ_CONDITION(!almostEqual(-a, infty));
    ZQ_CONDITION(!almostEqual(infty, zero));
    ZQ_CONDITION(!almostEqual(zero, infty));
    ZQ_CONDITION(!almostEqual(infty, -zero));
    ZQ_CONDITION(!almostEqual(-zero, infty));
    ZQ_CONDITION(!almostEqual(-infty, a));
    ZQ_CONDITION(!almostEqual(a, -infty));
    ZQ_CONDITION(!almostEqual(-infty, -a));
    ZQ_CONDITION(!almostEqual(-a, -infty));
    ZQ_CONDITION(!almostEqual(-infty, zero));
    ZQ_CONDITION(!almostEqual(zero, -infty));
    ZQ_CONDITION(!almostEqual(-infty, -zero));
    ZQ_CONDITION(!almostEqual(-zero, -infty));
    ZQ_CONDITION(!almostEqual(infty, -infty));
    ZQ_CONDITION(!almostEqual(-infty, infty));
    ZQ_CONDITION(!almostEqual(qnan, qnan));
    ZQ_CONDITION(!almostEqual(qnan, -qnan));
    ZQ_CONDITION(!almostEqual(-qnan, qnan));
    ZQ_CONDITION(!almostEqual(-qnan, -qnan));

    // x and y are exactly eps apart, absolutely and relatively to the smaller one.
    const T x = T(1);
    const T y = T(1) + T(1) / T(1024);
    const T eps = y - x;
    const T prevEps = std::nextafter(eps, zero);
    ZQ_CONDITION(IsAlmostEqualAbs(y, x, eps));
    ZQ_CONDITION(IsAlmostEqualRel(y, x, eps));
    ZQ_CONDITION(IsAlmostEqualAbsOrRel(y, x, eps, zero));
    ZQ_CONDITION(!IsAlmostEqualAbs(y, x, prevEps));
    ZQ_CONDITION(!IsAlmostEqualRel(y, x, prevEps));
    ZQ_CONDITION(!IsAlmostEqualAbsOrRel(y, x, prevEps, zero));
    ZQ_CONDITION(IsAlmostEqualRelTo(x, y, prevEps));
    ZQ_CONDITION(!IsAlmostEqualRelTo(y, x, prevEps));

    ZQ_CONDITION(!IsAlmostEqualAbs(a, b, -infty));
    ZQ_CONDITION(!IsAlmostEqualRel(a, b, -infty));
    ZQ_CONDITION(!IsAlmostEqualRelTo(a, b, -infty));
    ZQ_CONDITION(!IsAlmostEqualAbsOrRel(a, b, -infty, -infty));
    ZQ_CONDITION(!IsAlmostEqualAbsOrRel(zero, zero, -infty, -infty));
}

template <class T> void ZqFloatCompare_UnitTest::runToleranceTable() const
{
    using namespace ZqFloatCompare;
    using Tuple = std::tuple<T, T, T, T>; // value, value, absolute tolerance, relative tolerance
    const T infty = std::numeric_limits<T>::infinity();
    const T qnan = std::numeric_limits<T>::quiet_NaN();
    const T denorm_min = std::numeric_limits<T>::denorm_min();
    const T step = T(1) / T(1024);

    const Tuple equal[] = {
        {T(1), T(1), T(0), T(0)},
        {T(0), -T(0), T(0), T(0)},
        {T(4), T(5), T(1), T(0.25)},
        {T(-8), T(-6), T(2), T(0.5)},
        {denorm_min, T(0), denorm_min, step},
        {infty, infty, T(0), T(0)},
    };
    for (const Tuple& t : equal)
    {
        ZQ_CONDITION(IsAlmostEqualAbs(std::get<0>(t), std::get<1>(t), std::get<2>(t)));
        ZQ_CONDITION(IsAlmostEqualRel(std::get<0>(t), std::get<1>(t), std::get<3>(t)));
        ZQ_CONDITION(IsAlmostEqualRelTo(std::get<0>(t), std::get<1>(t), std::get<3>(t)));
        ZQ_CONDITION(IsAlmostEqualAbsOrRel(std::get<0>(t), std::get<1>(t), std::get<2>(t), std::get<3>(t)));
    }

    const Tuple different[] = {
        {T(1), T(2), T(0.5), T(0.25)},
        // 1/2 would pass the relative tests if they divided by the larger magnitude.
        {T(2), T(1), T(0.5), T(0.75)},
        {T(-1), T(1), T(1), T(1)},
        {T(1), T(1) + step, step / T(2), step / T(2)},
        {qnan, qnan, infty, infty},
        {infty, -infty, infty, infty},
    };
    for (const Tuple& t : different)
    {
        ZQ_CONDITION(!IsAlmostEqualAbs(std::get<0>(t), std::get<1>(t), std::get<2>(t)));
        ZQ_CONDITION(!IsAlmostEqualRel(std::get<0>(t), std::get<1>(t), std::get<3>(t)));
        ZQ_CONDITION(!IsAlmostEqualRelTo(std::get<0>(t), std::get<1>(t), std::get<3>(t)));
        ZQ_CONDITION(!IsAlmostEqualAbsOrRel(std::get<0>(t), std::get<1>(t), std::get<2>(t), std::get<3>(t)));
    }
}
