#pragma once

#include "zq3dbase/geometry/ctriangulation.h"
#include "zq3dbase/zq3dbase_export.h"
#include "zqbase/zqalgorithm.h"
#include "zqbase/zqunittest.h"

// Compares two triangulations of the Geometry generation (Geometry::CTriangulation) and says what
// differs. A ZqAlgorithm with a test part: point it at the running test with SetMessageStream and
// its messages appear under that test (else they stay in its own stream).
//
// Inputs:  SetInput(first, second): both borrowed until the next Compute is done.
//          SetParameters(tolerance): the largest difference of a coordinate or of a component of an
//          attribute value that still counts as equal (default 0: bitwise equal or ==).
//          Flags (EFlags): what to compare beyond counts, positions and corners.
// Outputs: GetOutput(): true when the two are equal; GetDifferenceCount(): the number of messages
//          written (one per difference found: a count, the first differing vertex and triangle
//          with their indices and how many differ, and per attribute what differs).
// Failure: Compute() returns false when an input is missing or the tolerance is negative or NaN.
//
//     ZqMpCompareTriangulations compare;
//     compare.SetMessageStream(*this);
//     compare.SetInput(a, b);
//     compare.SetFlags(CbFlags<ZqMpCompareTriangulations::EFlags>(ZqMpCompareTriangulations::eF_Attributes));
//     compare.setInputChanged();
//     if (!compare.Compute() || !compare.GetOutput()) ...   // the messages say why
//
// Messages (type eError), e.g.:
//     Anzahl der Eckpunkte verschieden: 8 und 9
//     Eckpunkt 3 verschieden: (0, 0, 1) und (0, 0, 1.5); 1 von 8 Eckpunkten verschieden
//     Dreieck 5 verschieden: (0, 1, 2) und (0, 2, 1); 2 von 12 Dreiecken verschieden
//     Attribut "weight" fehlt in der zweiten Triangulation
//     Attribut "weight": Eckpunkt-Attribut vom Typ float und Dreieck-Attribut vom Typ float
//     Attribut "weight": Wert von Eckpunkt 4 verschieden: (0.5) und (0.75); 1 von 8 Werten verschieden
//     Attribut "weight": Serialisierung ein und aus
class ZQ3DBASE_API ZqMpCompareTriangulations : public ZqAlgorithm, public ZqUnitTest
{
public:
    enum EFlags : unsigned int
    {
        eF_None = 0,
        // Compare the named attributes: names, domains, types and values.
        eF_Attributes = 1,
        // With eF_Attributes, the serialize switches too.
        eF_SerializeSwitches = 2,
        // A triangle equals its corners rotated cyclically: (0, 1, 2) = (1, 2, 0), not (0, 2, 1).
        eF_CornerRotation = 4,
    };

    ZqMpCompareTriangulations() = default;

    void SetInput(const Geometry::CTriangulation& first, const Geometry::CTriangulation& second);
    void SetParameters(float tolerance);
    float GetTolerance() const { return m_tolerance; }

    bool GetOutput() const { return IsCalculated() && m_equal; }
    using ZqAlgorithm::Compute;
    // SetInput, SetParameters, Compute and GetOutput in one call, with the flags set before.
    bool Compute(const Geometry::CTriangulation& first, const Geometry::CTriangulation& second,
                 float tolerance = 0.0f);
    unsigned int GetDifferenceCount() const { return m_differences; }

    using ZqAlgorithm::RunUnitTest;
    using ZqUnitTest::RunUnitTest;

protected:
    void checkPreConditionsInit() const override;
    void compute() override;
    // The test part: ePassed when Compute succeeds and finds the inputs equal, else eFailed (the
    // messages say why).
    EResult runUnitTest(unsigned int index) override;
    EResult runUnitTest() override;

private:
    void compareVertices();
    void compareTriangles();
    void compareAttributes();
    void compareAttribute(unsigned int firstIndex, unsigned int secondIndex);
    bool sameValue(float a, float b) const;
    bool sameValue(double a, double b) const;
    bool sameElement(const void* a, const void* b, Geometry::EAttributeType type) const;
    void report(const CString& text);

    const Geometry::CTriangulation* m_first = nullptr;
    const Geometry::CTriangulation* m_second = nullptr;
    float m_tolerance = 0.0f;
    bool m_equal = false;
    unsigned int m_differences = 0;
};
