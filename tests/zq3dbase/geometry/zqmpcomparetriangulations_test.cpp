// ZqMpCompareTriangulations must see every real difference and say what it is: counts, the first
// differing vertex and triangle, each attribute that is missing, of another kind, of other values
// or with another serialize switch; equal inputs and differences within the tolerance pass.

#include "geometryfixtures.h"
#include "zq3dbase/geometry/cattributehandle.h"
#include "zq3dbase/zqmpcomparetriangulations.h"

#include <gtest/gtest.h>

#include <functional>
#include <vector>

using namespace Geometry;

namespace
{
using EFlags = ZqMpCompareTriangulations::EFlags;

CTriangulation fixture()
{
    CTriangulation t = GeometryFixtures::Octahedron();
    t.AddAttribute<CVertexRef, float>(L"weight", true);
    t.AddAttribute<CTriangleRef, CbVector3f>(L"normal");
    t.AddAttribute<CTriangleRef, unsigned int>(L"material");
    return t;
}

// Compares the fixture with a copy changed by change; returns the messages, "equal" when there
// were none.
std::string differences(const std::function<void(CTriangulation&)>& change, unsigned int flags = 3,
                        float tolerance = 0.0f)
{
    const CTriangulation a = fixture();
    CTriangulation b = a;
    change(b);
    ZqMpCompareTriangulations compare;
    compare.SetFlags(CbFlags<EFlags>::FromBits(flags));
    const bool equal = compare.Compute(a, b, tolerance);
    EXPECT_TRUE(compare.IsCalculated()) << compare.GetLastError();
    std::string text;
    for (const auto& message : compare.GetMessageStream().Take())
    {
        EXPECT_EQ(message.type, ZqUnitTest::eError);
        text += CbWideToUtf8(message.text.Std());
    }
    EXPECT_EQ(equal, text.empty());
    return text.empty() ? "equal" : text;
}
} // namespace

TEST(ZqMpCompareTriangulations, CountsPositionsAndCornersThatDiffer)
{
    EXPECT_EQ(differences([](CTriangulation&) {}), "equal");
    EXPECT_EQ(differences([](CTriangulation& t) { t.AddVertex({}); }),
              "Anzahl der Eckpunkte verschieden: 6 und 7\n");
    EXPECT_EQ(differences([](CTriangulation& t) { t.SetTriangleCount(7); }),
              "Anzahl der Dreiecke verschieden: 8 und 7\n");
    EXPECT_EQ(
        differences(
            [](CTriangulation& t)
            {
                t.SetPosition(CVertexRef(3), {0, -1, 1e-3f});
                t.SetPosition(CVertexRef(5), {0, 0, -2});
            }),
        "Eckpunkt 3 verschieden: (0, -1, 0) und (0, -1, 0.00100000005); 2 von 6 Eckpunkten verschieden\n");
    // Within the tolerance only vertex 5 differs.
    EXPECT_EQ(differences(
                  [](CTriangulation& t)
                  {
                      t.SetPosition(CVertexRef(3), {0, -1, 1e-3f});
                      t.SetPosition(CVertexRef(5), {0, 0, -2});
                  },
                  3, 0.01f),
              "Eckpunkt 5 verschieden: (0, 0, -1) und (0, 0, -2); 1 von 6 Eckpunkten verschieden\n");
    // A rotated triangle differs unless rotation is allowed; a mirrored one always differs.
    auto rotate = [](CTriangulation& t) { t.SetCorners(CTriangleRef(2), {3, 4, 1}); };
    EXPECT_EQ(differences(rotate),
              "Dreieck 2 verschieden: (1, 3, 4) und (3, 4, 1); 1 von 8 Dreiecken verschieden\n");
    EXPECT_EQ(differences(rotate, 3 | ZqMpCompareTriangulations::eF_CornerRotation), "equal");
    EXPECT_EQ(differences(
                  [](CTriangulation& t) {
                      t.SetCorners(CTriangleRef(2), {1, 4, 3});
                  },
                  3 | ZqMpCompareTriangulations::eF_CornerRotation),
              "Dreieck 2 verschieden: (1, 3, 4) und (1, 4, 3); 1 von 8 Dreiecken verschieden\n");
}

TEST(ZqMpCompareTriangulations, AttributesThatDifferAndTheFlagsThatSelectThem)
{
    auto value = [](CTriangulation& t) {
        CAttributeHandle<CTriangleRef, CbVector3f>(t, L"normal")[CTriangleRef(6)] = {0, 1, 0};
    };
    EXPECT_EQ(differences(value),
              "Attribut \"normal\": Wert von Dreieck 6 verschieden: (0, 0, 0) und (0, 1, 0); "
              "1 von 8 Werten verschieden\n");
    EXPECT_EQ(differences(value, 0), "equal");
    EXPECT_EQ(differences([](CTriangulation& t) { t.RemoveAttribute(L"weight"); }),
              "Attribut \"weight\" fehlt in der zweiten Triangulation\n");
    EXPECT_EQ(differences([](CTriangulation& t) { t.AddAttribute<CVertexRef, double>(L"extra"); }),
              "Attribut \"extra\" fehlt in der ersten Triangulation\n");
    EXPECT_EQ(differences(
                  [](CTriangulation& t)
                  {
                      t.RemoveAttribute(L"weight");
                      t.AddAttribute<CTriangleRef, float>(L"weight", true);
                  }),
              "Attribut \"weight\": Eckpunkt-Attribut vom Typ float und Dreieck-Attribut vom Typ float\n");
    // Numbers compare exactly, whatever the tolerance for coordinates.
    EXPECT_EQ(
        differences([](CTriangulation& t)
                    { CAttributeHandle<CTriangleRef, unsigned int>(t, L"material")[CTriangleRef(1)] = 4; },
                    1, 10.0f),
        "Attribut \"material\": Wert von Dreieck 1 verschieden: (0) und (4); 1 von 8 Werten verschieden\n");
    auto switchOff = [](CTriangulation& t) { t.SetSerialize(L"weight", false); };
    EXPECT_EQ(differences(switchOff), "Attribut \"weight\": Serialisierung ein und aus\n");
    EXPECT_EQ(differences(switchOff, ZqMpCompareTriangulations::eF_Attributes), "equal");
}

TEST(ZqMpCompareTriangulations, ItsTestPartWritesUnderTheRunningTestAndRefusesMissingInput)
{
    class CHost : public ZqUnitTest
    {
        EResult runUnitTest(unsigned int) override { return ePassed; }
    } host;
    const CTriangulation a = fixture();
    const CTriangulation b = GeometryFixtures::Grid(2);
    ZqMpCompareTriangulations compare;
    compare.SetMessageStream(host);
    compare.SetInput(a, b);
    EXPECT_EQ(compare.RunUnitTest(0), ZqUnitTest::eFailed);
    const auto messages = host.GetMessageStream().Take();
    ASSERT_EQ(messages.size(), 2u);
    EXPECT_EQ(messages[0].text, CString(L"Anzahl der Eckpunkte verschieden: 6 und 4\n"));

    compare.SetInput(a, a);
    EXPECT_EQ(compare.RunUnitTest(0), ZqUnitTest::ePassed);
    compare.SetParameters(-1.0f);
    EXPECT_FALSE(compare.Compute());
    EXPECT_FALSE(compare.GetOutput());
    ZqMpCompareTriangulations unset;
    EXPECT_FALSE(unset.Compute());
}
