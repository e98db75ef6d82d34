#pragma once

#include "zq3dbase/zq3dbase_export.h"
#include "zq3dbase/zqpolyline3dbase.h"
#include "zqbase/zqalgorithm.h"
#include "zqbase/zqunittest.h"

// Compares two 3D polylines: the closed flag, the vertex count, and the positions vertex by vertex
// in chain order, head with head. Two positions are equal when their distance is at most the
// tolerance (SetParameters; 0 asks for equal coordinates).
//
// Its ZqUnitTest part carries the diagnostics. A test that compares points it at itself, so that
// the differences appear under that test:
//
//     ZqMpComparePolylines compare;
//     compare.SetMessageStream(*this);
//     compare.SetDebuggingOption(ZqMpComparePolylines::eDO_WriteDifferences);
//     compare.SetInput(read, written);
//     compare.SetParameters(0.0f);
//     const bool equal = compare.Compute() && compare.GetOutput();
//
// Debugging options (each off by default):
// - eDO_WriteDifferences (0): write what differs as error messages: the closed flag, the vertex
//   count, or the first vertex whose positions differ (both positions and their distance);
// - eDO_WritePolylines (1): when they differ, write both polylines vertex by vertex as information;
// - eDO_WriteAllDifferences (2): with option 0, write every differing vertex, not only the first.
//
// Inputs:  the two polylines (SetInput; both must outlive the computation), the tolerance, the
//          debugging options.
// Outputs: GetOutput: true when the last Compute succeeded and found the polylines equal;
//          GetDifferenceCount: the number of vertices whose positions differ, or 1 when the closed
//          flag or the vertex count differs.
// Failure: no polylines or a negative or NaN tolerance throw CbExceptionPreconditionViolation inside
//          Compute, which then returns false. A NaN coordinate equals nothing.
class ZQ3DBASE_API ZqMpComparePolylines : public ZqAlgorithm, public ZqUnitTest
{
public:
    enum EDebuggingOption : unsigned int
    {
        eDO_WriteDifferences = 0,
        eDO_WritePolylines = 1,
        eDO_WriteAllDifferences = 2,
    };

    ZqMpComparePolylines();
    ZqMpComparePolylines(const ZqMpComparePolylines&);
    ZqMpComparePolylines& operator=(const ZqMpComparePolylines&);
    ~ZqMpComparePolylines() override;

    using ZqAlgorithm::RunUnitTest;
    using ZqUnitTest::RunUnitTest;

    void SetInput(const ZqPolyline3DBase& first, const ZqPolyline3DBase& second);
    void SetParameters(float tolerance);
    float GetTolerance() const { return m_tolerance; }
    // Switches debugging option (EDebuggingOption, 0 to 31) on or off.
    void SetDebuggingOption(unsigned int option, bool on = true);
    bool IsDebuggingOption(unsigned int option) const;

    bool GetOutput() const { return IsCalculated() && m_equal; }
    unsigned int GetDifferenceCount() const { return m_differences; }

protected:
    void checkPreConditionsInit() const override;
    void compute() override;
    // The one subtest "Unit-Test": the comparison, ePassed when the polylines are equal.
    EResult runUnitTest(unsigned int index) override;

private:
    void compareVertices();
    void writePolyline(const wchar_t* name, const ZqPolyline3DBase& polyline) const;

    const ZqPolyline3DBase* m_first = nullptr;
    const ZqPolyline3DBase* m_second = nullptr;
    float m_tolerance = 0.0f;
    unsigned int m_debuggingOptions = 0;
    bool m_equal = false;
    unsigned int m_differences = 0;
};
