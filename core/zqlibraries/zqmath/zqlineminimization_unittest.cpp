// Test of the line minimization: a minimum and a maximum along the x axis from (-10, 0), found by
// parabolic bracketing and Brent's method; index 2 (not counted) finds the maximum with the bracket
// taken from a bounds box instead.

#include "basepool/cbexception.h"
#include "zqbase/zqunittest.h"
#include "zqmath/zqlineminimization.h"

#include <cmath>

class ZqLineMinimization_UnitTest : public ZqUnitTest
{
    CB_DECLARE_RTTI(ZqLineMinimization_UnitTest)

protected:
    unsigned int getSubtestCount() const override;
    CString getSubtestName(unsigned int index) override;
    EResult runUnitTest(unsigned int index) override;

private:
    using LineMinimization = ZqLineMinimization<float, ZqLineMinimization_UnitTest>;

    struct SCase
    {
        LineMinimization::Objective objective;
        int sign;
        LineMinimization::EBracketingMethod bracketing;
        float expected; // the extremal value; the test allows 0.001 on its magnitude
    };

    EResult runCase(const SCase& testCase);
    // |p + (1, -0.5)|^2: 0.25 at best along the x axis.
    float distanceToCentre(const ZqMatrix<float>& p);
    // -|p|^2: 0 at best along the x axis.
    float negativeSquaredLength(const ZqMatrix<float>& p);
};

CB_IMPLEMENT_RTTI(ZqLineMinimization_UnitTest, ZqUnitTest::RTTI);

unsigned int ZqLineMinimization_UnitTest::getSubtestCount() const
{
    return 2;
}

CString ZqLineMinimization_UnitTest::getSubtestName(unsigned int index)
{
    switch (index)
    {
    case 0:
        return L"Minimum-Test";
    case 1:
        return L"Maximum-Test";
    case 2:
        return L"";
    default:
        CB_THROW(CbException, "ZqLineMinimization_UnitTest::getSubtestName");
    }
}

ZqUnitTest::EResult ZqLineMinimization_UnitTest::runUnitTest(unsigned int index)
{
    switch (index)
    {
    case 0:
        return runCase(
            {&ZqLineMinimization_UnitTest::distanceToCentre, 1, LineMinimization::eBM_Parabolic, 0.25f});
    case 1:
        return runCase(
            {&ZqLineMinimization_UnitTest::negativeSquaredLength, -1, LineMinimization::eBM_Parabolic, 0.0f});
    case 2:
        return runCase(
            {&ZqLineMinimization_UnitTest::negativeSquaredLength, -1, LineMinimization::eBM_Bounds, 0.0f});
    default:
        CB_THROW(CbException, "ZqLineMinimization_UnitTest::runUnitTest");
    }
}

ZqUnitTest::EResult ZqLineMinimization_UnitTest::runCase(const SCase& testCase)
{
    ZqMatrix<float> point = ZqMatrix<float>::Vector({-10.0f, 0.0f});
    ZqMatrix<float> direction = ZqMatrix<float>::Vector({1.0f, 0.0f});
    const ZqMatrix<float> bounds = ZqMatrix<float>::Vector({-20.0f, 20.0f});
    const float initialStep = 15.0f;
    const float tolerance = 0.001f;

    LineMinimization line;
    line.point = &point;
    line.direction = &direction;
    line.tolerance = &tolerance;
    line.bracketingMethod = testCase.bracketing;
    line.locateMethod = LineMinimization::eLM_Brent;
    line.initialStep = &initialStep;
    if (testCase.bracketing == LineMinimization::eBM_Bounds)
        line.bounds = &bounds;
    line.client = this;
    line.function = testCase.objective;
    line.sign = testCase.sign;
    line.maximize = testCase.sign < 0 ? 1 : 0;
    line.setInputChanged();
    if (!line.Compute(ZqAlgorithm::eCF_Compute) || !line.checkOutputData())
    {
        WriteMessageFormat(eError, L"Compute fehlgeschlagen: %S\n", line.GetLastError().c_str());
        return eFailed;
    }
    if (!(std::fabs(*line.fmin) <= testCase.expected + tolerance))
    {
        WriteMessageFormat(eError, L"Extremwert %g statt %g bei x = %g\n", *line.fmin, testCase.expected,
                           point[0]);
        return eFailed;
    }
    return ePassed;
}

float ZqLineMinimization_UnitTest::distanceToCentre(const ZqMatrix<float>& p)
{
    return (p + ZqMatrix<float>::Vector({1.0f, -0.5f})).GetSquaredLength();
}

float ZqLineMinimization_UnitTest::negativeSquaredLength(const ZqMatrix<float>& p)
{
    return -p.GetSquaredLength();
}
