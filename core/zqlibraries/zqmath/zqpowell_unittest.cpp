// Test of Powell's method on |p + (1, -0.5)|^2 from (10, -10): unbounded, and inside a box that
// excludes the minimum, once with parabolic and once with bounds bracketing.

#include "basepool/cbexception.h"
#include "zqbase/zqunittest.h"
#include "zqmath/zqpowell.h"

#include <cmath>
#include <iterator>

class ZqPowell_UnitTest : public ZqUnitTest
{
    CB_DECLARE_RTTI(ZqPowell_UnitTest)
    ZQ_DECLARE_SUBTEST_TABLE(ZqPowell_UnitTest)

private:
    using Powell = ZqPowell<float, ZqPowell_UnitTest>;

    // limit: the largest magnitude of the value found that passes.
    EResult runPowell(Powell::EBracketingMethod bracketing, bool bounded, float limit);
    // |p + (1, -0.5)|^2, 0 at (-1, 0.5).
    float distanceToCentre(const ZqMatrix<float>& p);
};

CB_IMPLEMENT_RTTI(ZqPowell_UnitTest, ZqUnitTest::RTTI);

const ZqSubtestRowOf<ZqPowell_UnitTest> ZqPowell_UnitTest::s_subtests[] = {
    {"Standard-Test",
     [](ZqPowell_UnitTest& test) { return test.runPowell(Powell::eBM_Parabolic, false, 0.0f); }},
    // y <= 0 keeps the minimum out of reach: only a bounded descent is asked for.
    {"Bounds-Test",
     [](ZqPowell_UnitTest& test) { return test.runPowell(Powell::eBM_Parabolic, true, 25.0f); }},
    {"NoBracketing-Test",
     [](ZqPowell_UnitTest& test) { return test.runPowell(Powell::eBM_Bounds, true, 25.0f); }},
};

ZQ_IMPLEMENT_SUBTEST_TABLE(ZqPowell_UnitTest)

ZqUnitTest::EResult ZqPowell_UnitTest::runPowell(Powell::EBracketingMethod bracketing, bool bounded,
                                                 float limit)
{
    const float tolerance = 0.001f;
    ZqMatrix<float> point = ZqMatrix<float>::Vector({10.0f, -10.0f});
    ZqMatrix<float> directions = ZqMatrix<float>::Identity(2);
    const ZqMatrix<float> boundsMatrix(2, 2, {-20.0f, -20.0f, 20.0f, 0.0f});

    Powell powell;
    powell.point = &point;
    powell.directions = &directions;
    powell.bracketingMethod = bracketing;
    powell.locateMethod = Powell::eLM_Brent;
    powell.maxIterations = 10;
    powell.ftol = tolerance;
    powell.client = this;
    powell.function = &ZqPowell_UnitTest::distanceToCentre;
    if (bounded)
        powell.boundsMatrix = &boundsMatrix;
    powell.sign = 1;
    powell.maximize = 0;
    powell.setInputChanged();
    if (!powell.Compute(ZqAlgorithm::eCF_Compute) || !powell.checkOutputData())
    {
        WriteMessageFormat(eError, L"Compute fehlgeschlagen: %S\n", powell.GetLastError().c_str());
        return eFailed;
    }
    if (!(std::fabs(*powell.fmin) <= limit + tolerance))
    {
        WriteMessageFormat(eError, L"Minimum %g bei (%g, %g), erlaubt ist höchstens %g\n", *powell.fmin,
                           point[0], point[1], limit);
        return eFailed;
    }
    return ePassed;
}

float ZqPowell_UnitTest::distanceToCentre(const ZqMatrix<float>& p)
{
    return (p + ZqMatrix<float>::Vector({1.0f, -0.5f})).GetSquaredLength();
}
