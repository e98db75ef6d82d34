// Timing of the quadratic solver in float and double. Registered, but it reports no subtests: its
// routine is run by hand (index 0) when the timing is wanted.

#include "basepool/cbexception.h"
#include "zqbase/cbtimer.h"
#include "zqbase/zqrandomseed.h"
#include "zqbase/zqunittest.h"
#include "zqmath/zqquadraticequation.h"

#include <random>
#include <vector>

class ZqQuadraticEquation_UnitTest : public ZqUnitTest
{
    CB_DECLARE_RTTI(ZqQuadraticEquation_UnitTest)

protected:
    unsigned int getSubtestCount() const override;
    CString getSubtestName(unsigned int index) override;
    EResult runUnitTest(unsigned int index) override;

private:
    EResult runTimings() const;
    // Solves the equations of consecutive coefficient triples; returns the sum of the roots, so that
    // the work cannot be optimised away.
    template <class T> static double solveAll(const std::vector<T>& coefficients);
};

CB_IMPLEMENT_RTTI(ZqQuadraticEquation_UnitTest, ZqUnitTest::RTTI);

unsigned int ZqQuadraticEquation_UnitTest::getSubtestCount() const
{
    return 0;
}

CString ZqQuadraticEquation_UnitTest::getSubtestName(unsigned int index)
{
    if (index > 0)
        CB_THROW(CbException, "ZqQuadraticEquation_UnitTest::getSubtestName");
    return L"Zeitmessung für das Lösen quadratischer Gleichungen";
}

ZqUnitTest::EResult ZqQuadraticEquation_UnitTest::runUnitTest(unsigned int index)
{
    if (index > 0)
        CB_THROW(CbException, "ZqQuadraticEquation_UnitTest::runUnitTest");
    return runTimings();
}

template <class T> double ZqQuadraticEquation_UnitTest::solveAll(const std::vector<T>& coefficients)
{
    double sum = 0.0;
    for (std::size_t i = 0; i + 2 < coefficients.size(); i += 3)
    {
        T x1 = T(0), x2 = T(0);
        const std::uint32_t count =
            ZqSolveQuadraticEquation(coefficients[i], coefficients[i + 1], coefficients[i + 2], &x1, &x2);
        if (count > 0)
            sum += x1;
        if (count > 1)
            sum += x2;
    }
    return sum;
}

ZqUnitTest::EResult ZqQuadraticEquation_UnitTest::runTimings() const
{
    std::mt19937 generator(ZqRandomSeed::Start(*this));
    std::uniform_real_distribution<double> distribution(-100.0, 100.0);

    // 80,000,000 bytes of double and 40,000,000 bytes of float coefficients, the same values.
    const std::size_t values = 10000000;
    std::vector<double> coefficientsDouble(values);
    std::vector<float> coefficientsFloat(values);
    for (std::size_t i = 0; i < values; ++i)
    {
        coefficientsDouble[i] = distribution(generator);
        coefficientsFloat[i] = static_cast<float>(coefficientsDouble[i]);
    }

    CbTimer timer;
    const double sumFloat = solveAll(coefficientsFloat);
    const double secondsFloat = timer.GetElapsedSeconds();
    timer.Reset();
    const double sumDouble = solveAll(coefficientsDouble);
    const double secondsDouble = timer.GetElapsedSeconds();

    WriteMessageFormat(eInfo, L"Timings: float %fs, double %fs\n", secondsFloat, secondsDouble);
    WriteMessageFormat(eInfo, L"Summe der Lösungen: float %g, double %g\n", sumFloat, sumDouble);
    return ePassed;
}
