#pragma once

#include "zq3dbase/zq3dbase_export.h"
#include "zq3dbase/zqtriangulationbase.h"
#include "zqbase/zqalgorithm.h"
#include "zqbase/zqunittest.h"

// Compares two triangulations element by element and says what differs.
//
// Inputs:  two triangulations (borrowed; they must outlive Compute); a tolerance for positions and
//          one for float attribute values and parameters (absolute, per component; with
//          eF_RelativeTolerance both are multiplied by the length of the first triangulation's
//          bounding box diagonal); the flags below.
// Outputs: GetOutput(): true when the triangulations agree in everything the flags ask for;
//          GetDifferenceCount(): the number of differing items found.
// Always compared: the vertex and triangle counts, every position, every triangle's corners.
// Failure: Compute returns false without inputs.
//
// Each kind of difference is reported once, as an error message of the test part (see
// ZqUnitTest::SetMessageStream), naming the first differing element and how many differ:
//     "vertex 3 differs: (0, 0, 1) and (0, 0, 1.5); 1 of 8 vertices differ"
// With eF_ReportAll every differing element gets a message of its own.
class ZQ3DBASE_API ZqMpCompareTriangulationsOld : public ZqAlgorithm, public ZqUnitTest
{
public:
    enum EFlags : unsigned int
    {
        eF_None = 0,
        // A triangle matches when its corners are a rotation of the other's (same orientation).
        eF_CyclicCorners = 1,
        eF_ReportAll = 2,
        eF_RelativeTolerance = 4,
        // Presence and values of the vertex and triangle attributes.
        eF_CompareAttributes = 8,
        // The serialize switches of every attribute slot.
        eF_CompareSerializeSwitches = 16,
        // The parameter objects of every attribute slot (kind and values, within the attribute tolerance).
        eF_CompareParameters = 32,
    };

    ZqMpCompareTriangulationsOld() = default;
    ZqMpCompareTriangulationsOld(const ZqMpCompareTriangulationsOld&) = default;
    ZqMpCompareTriangulationsOld& operator=(const ZqMpCompareTriangulationsOld&) = default;
    ~ZqMpCompareTriangulationsOld() override;

    void SetInput(const ZqTriangulationBase& first, const ZqTriangulationBase& second);
    // attributeTolerance < 0 takes tolerance for the attributes too.
    void SetParameters(float tolerance, float attributeTolerance = -1.0f);
    bool GetOutput() const { return IsCalculated() && m_equal; }
    unsigned int GetDifferenceCount() const { return m_differences; }

    using ZqAlgorithm::Compute;
    // SetInput, SetParameters, Compute and GetOutput in one call.
    bool Compute(const ZqTriangulationBase& first, const ZqTriangulationBase& second, float tolerance,
                 float attributeTolerance);

protected:
    void checkPreConditionsInit() const override;
    void compute() override;
    // The test part: subtest 0 runs the comparison and passes when the triangulations agree.
    EResult runUnitTest(unsigned int index) override;
    using ZqAlgorithm::runUnitTest;

private:
    void compareCounts();
    void comparePositions(float tolerance);
    void compareTriangles();
    void compareAttributes(float tolerance);
    void compareSlots(float tolerance);
    // Records a difference; writes the message when it is the first of its kind or all are reported.
    void report(bool first, const CString& text);

    const ZqTriangulationBase* m_first = nullptr;
    const ZqTriangulationBase* m_second = nullptr;
    float m_tolerance = 0.0f;
    float m_attributeTolerance = -1.0f;
    bool m_equal = false;
    unsigned int m_differences = 0;
};
