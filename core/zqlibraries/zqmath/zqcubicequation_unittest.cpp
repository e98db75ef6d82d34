// Test of the closed-form cubic solver: one subtest per equation of a table of quadratic, cubic,
// affine and constant cases.

#include "basepool/cbexception.h"
#include "zqbase/zqunittest.h"
#include "zqmath/zqcubicequation.h"
#include "zqmath/zqfloatcompare.h"

#include <algorithm>
#include <cfloat>
#include <cstdint>
#include <vector>

class ZqCubicEquation_UnitTest : public ZqUnitTest
{
    CB_DECLARE_RTTI(ZqCubicEquation_UnitTest)

public:
    ZqCubicEquation_UnitTest();

protected:
    unsigned int getSubtestCount() const override;
    CString getSubtestName(unsigned int index) override;
    EResult runUnitTest(unsigned int index) override;

private:
    struct STestData
    {
        const char* name;
        float a, b, c, d;
        std::uint32_t count;
        float roots[3];
    };

    EResult runEquation(const STestData& data) const;

    std::vector<STestData> m_table;
};

CB_IMPLEMENT_RTTI(ZqCubicEquation_UnitTest, ZqUnitTest::RTTI);

ZqCubicEquation_UnitTest::ZqCubicEquation_UnitTest()
{
    // Roots beyond the count hold FLT_MAX.
    m_table = {
        {"01.) Quadratisch 1 Lösung   ", 0.0f, 1.0f, 0.0f, 0.0f, 1, {0.0f, FLT_MAX, FLT_MAX}},
        {"02.) Quadratisch 2 Lösungen ", 0.0f, 1.0f, 1.4f, -19.76f, 2, {-5.2f, 3.8f, FLT_MAX}},
        {"03.) Quadratisch 2 Lösungen ", 0.0f, 1.22f, -113.486f, 58.83f, 2, {92.5f, 0.52133113f, FLT_MAX}},
        {"04.) Quadratisch 0 Lösungen ", 0.0f, 1.0f, -4.8f, 6.12f, 0, {FLT_MAX, FLT_MAX, FLT_MAX}},
        {"05.) Kubisch 1 Lösung ", 1.0f, -6.0f, 12.0f, -8.0f, 1, {2.0f, FLT_MAX, FLT_MAX}},
        {"06.) Kubisch 1 Lösung ", 1.0f, -2.0f, 2.0f, -4.0f, 1, {2.0f, FLT_MAX, FLT_MAX}},
        {"07.) Kubisch 2 Lösungen ", 1.0f, 0.0f, -3.0f, -2.0f, 2, {2.0f, -1.0f, FLT_MAX}},
        {"08.) Kubisch 3 Lösungen ", 1.0f, -1.0f, -2.0f, -0.0f, 3, {2.0f, -1.0f, -0.0f}},
        {"09.) Affin 1 Lösung ", 0.0f, 0.0f, 1.0f, -2.0f, 1, {2.0f, FLT_MAX, FLT_MAX}},
        {"10.) Konstanz 0 Lösungen ", 0.0f, 0.0f, 0.0f, -2.0f, 0, {FLT_MAX, FLT_MAX, FLT_MAX}},
    };
}

unsigned int ZqCubicEquation_UnitTest::getSubtestCount() const
{
    return static_cast<unsigned int>(m_table.size());
}

CString ZqCubicEquation_UnitTest::getSubtestName(unsigned int index)
{
    if (index >= m_table.size())
        CB_THROW(CbException, "ZqCubicEquation_UnitTest::getSubtestName");
    return CString(m_table[index].name);
}

ZqUnitTest::EResult ZqCubicEquation_UnitTest::runUnitTest(unsigned int index)
{
    if (index >= m_table.size())
        CB_THROW(CbException, "ZqCubicEquation_UnitTest::runUnitTest");
    return runEquation(m_table[index]);
}

ZqUnitTest::EResult ZqCubicEquation_UnitTest::runEquation(const STestData& data) const
{
    const float tolerance = 1000.0f * FLT_EPSILON;
    float found[3] = {FLT_MAX, FLT_MAX, FLT_MAX};
    const std::uint32_t count =
        ZqSolveCubicEquation(data.a, data.b, data.c, data.d, &found[0], &found[1], &found[2]);
    if (count != data.count)
    {
        WriteMessageFormat(eError, L"%u Lösungen statt %u\n", count, data.count);
        return eAborted;
    }
    std::vector<float> foundSorted(found, found + count);
    std::vector<float> expected(data.roots, data.roots + count);
    std::sort(foundSorted.begin(), foundSorted.end());
    std::sort(expected.begin(), expected.end());
    for (std::uint32_t i = 0; i < count; ++i)
        if (!ZqFloatCompare::IsAlmostEqualAbsOrRel(foundSorted[i], expected[i], tolerance, tolerance))
        {
            WriteMessageFormat(eError, L"Lösung %g statt %g\n", foundSorted[i], expected[i]);
            return eAborted;
        }
    return ePassed;
}
