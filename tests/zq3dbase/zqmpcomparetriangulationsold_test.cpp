// The comparison rejects real differences, accepts what lies within its tolerance, and says in its
// messages which element or attribute differs.

#include "zq3dbase/zqmpcomparetriangulationsold.h"
#include "zq3dbase/zqmptriangulationprimitiveold.h"
#include "zq3dbase/zqparametrizationplanar.h"
#include "zq3dbase/zqtriangulationdynamic.h"
#include "zq3dbase/zqtriangulationstatic.h"

#include <gtest/gtest.h>

#include <cmath>
#include <string>
#include <vector>

namespace
{
using EFlags = ZqMpCompareTriangulationsOld::EFlags;

// A test object whose messages the comparison writes into.
class CCollector : public ZqUnitTest
{
public:
    std::vector<std::string> Errors()
    {
        std::vector<std::string> texts;
        for (const auto& message : GetMessageStream().Take())
            if (message.type == eError)
                texts.push_back(CbWideToUtf8(message.text.Std()));
        return texts;
    }

protected:
    EResult runUnitTest(unsigned int) override { return ePassed; }
};

struct SComparison
{
    CCollector collector;
    ZqMpCompareTriangulationsOld compare;
    std::vector<std::string> errors;

    bool Run(const ZqTriangulationBase& a, const ZqTriangulationBase& b, unsigned int flags,
             float tolerance = 0.0f)
    {
        compare.SetMessageStream(collector);
        compare.SetFlags(CbFlags<EFlags>::FromBits(flags));
        compare.SetInput(a, b);
        compare.SetParameters(tolerance);
        const bool computed = compare.Compute();
        EXPECT_TRUE(computed) << compare.GetLastError();
        errors = collector.Errors();
        EXPECT_EQ(errors.empty(), compare.GetOutput());
        return computed && compare.GetOutput();
    }
};

ZqTriangulationDynamic cube()
{
    ZqMpTriangulationPrimitiveOld primitive;
    primitive.SetInput(ZqMpTriangulationPrimitiveOld::eP_Cube);
    EXPECT_TRUE(primitive.Compute());
    return ZqTriangulationDynamic(primitive.GetOutput());
}
} // namespace

TEST(ZqMpCompareTriangulationsOldTest, PositionsWithinAndBeyondTheTolerance)
{
    const ZqTriangulationDynamic a = cube();
    ZqTriangulationStatic b(a);
    SComparison c;
    EXPECT_TRUE(c.Run(a, b, 0));
    b.GetPositions()[3].z += 0.001f;
    EXPECT_FALSE(c.Run(a, b, 0));
    ASSERT_EQ(c.errors.size(), 1u);
    EXPECT_NE(c.errors[0].find("Eckpunkt 3 verschieden"), std::string::npos) << c.errors[0];
    EXPECT_NE(c.errors[0].find("1 von 8 Eckpunkten verschieden"), std::string::npos) << c.errors[0];
    EXPECT_TRUE(c.Run(a, b, 0, 0.002f));
    // Relative: 0.001 of the diagonal (sqrt 3) covers 0.0015, not 0.002.
    b.GetPositions()[3].z += 0.001f;
    EXPECT_FALSE(c.Run(a, b, ZqMpCompareTriangulationsOld::eF_RelativeTolerance, 0.001f));
    EXPECT_TRUE(c.Run(a, b, ZqMpCompareTriangulationsOld::eF_RelativeTolerance, 0.0012f));
}

TEST(ZqMpCompareTriangulationsOldTest, CountsAndCorners)
{
    const ZqTriangulationDynamic a = cube();
    ZqTriangulationDynamic b(a);
    b.AddVertex({5, 5, 5});
    SComparison c;
    EXPECT_FALSE(c.Run(a, b, 0));
    EXPECT_EQ(c.errors, std::vector<std::string>{"Anzahl der Eckpunkte verschieden: 8 und 9"});

    ZqTriangulationStatic rotated(a), flipped(a);
    const ZqTriangleCorners t = a.Get(CbTriangleRef(5));
    rotated.SetConnectivity(5, t[1], t[2], t[0]);
    flipped.SetConnectivity(5, t[0], t[2], t[1]);
    EXPECT_FALSE(c.Run(a, rotated, 0));
    EXPECT_NE(c.errors[0].find("Dreieck 5 verschieden"), std::string::npos) << c.errors[0];
    EXPECT_TRUE(c.Run(a, rotated, ZqMpCompareTriangulationsOld::eF_CyclicCorners));
    EXPECT_FALSE(c.Run(a, flipped, ZqMpCompareTriangulationsOld::eF_CyclicCorners));
}

TEST(ZqMpCompareTriangulationsOldTest, AttributesOnlyWhenAsked)
{
    const ZqTriangulationDynamic a = cube();
    ZqTriangulationDynamic b(a);
    b.Get<eVA_Normal>(CbVertexRef(6)).x = 0.0f;
    SComparison c;
    EXPECT_TRUE(c.Run(a, b, 0));
    EXPECT_FALSE(c.Run(a, b, ZqMpCompareTriangulationsOld::eF_CompareAttributes));
    ASSERT_EQ(c.errors.size(), 1u);
    EXPECT_NE(c.errors[0].find("Eckpunkt-Attribut 'normal' verschieden bei Element 6"), std::string::npos)
        << c.errors[0];

    // Equal infinities and NaNs are the same value; an infinity against a finite value is not.
    ZqTriangulationDynamic c1(a), c2(a);
    c1.Get<eVA_Normal>(CbVertexRef(2)) = {-INFINITY, NAN, INFINITY};
    c2.Get<eVA_Normal>(CbVertexRef(2)) = {-INFINITY, NAN, INFINITY};
    EXPECT_TRUE(c.Run(c1, c2, ZqMpCompareTriangulationsOld::eF_CompareAttributes, 0.5f));
    c2.Get<eVA_Normal>(CbVertexRef(2)).z = 1e30f;
    EXPECT_FALSE(c.Run(c1, c2, ZqMpCompareTriangulationsOld::eF_CompareAttributes, 0.5f));

    ZqTriangulationDynamic d(a);
    d.Assert(eTA_Material);
    EXPECT_FALSE(c.Run(a, d, ZqMpCompareTriangulationsOld::eF_CompareAttributes));
    EXPECT_EQ(c.errors,
              std::vector<std::string>{"Dreieck-Attribut 'material' fehlt in der ersten Triangulation"});

    ZqTriangulationDynamic e(a);
    e.SetSerialize(eVA_Normal, true);
    EXPECT_TRUE(c.Run(a, e, ZqMpCompareTriangulationsOld::eF_CompareAttributes));
    EXPECT_FALSE(c.Run(a, e, ZqMpCompareTriangulationsOld::eF_CompareSerializeSwitches));
}

TEST(ZqMpCompareTriangulationsOldTest, ParametersByValue)
{
    ZqTriangulationDynamic a = cube();
    ZqTriangulationDynamic b(a);
    a.SetAttributeParameter(eVA_Parameter, CbMakeSmart<ZqParametrizationPlanar>());
    SComparison c;
    EXPECT_TRUE(c.Run(a, b, ZqMpCompareTriangulationsOld::eF_CompareAttributes));
    EXPECT_FALSE(c.Run(a, b, ZqMpCompareTriangulationsOld::eF_CompareParameters));
    EXPECT_NE(c.errors[0].find("Eckpunkt-Attribut 'parameters': Parameter verschieden: planar"),
              std::string::npos);
    // Another object with the same values is equal; other values are not.
    b.SetAttributeParameter(eVA_Parameter, CbMakeSmart<ZqParametrizationPlanar>());
    EXPECT_TRUE(c.Run(a, b, ZqMpCompareTriangulationsOld::eF_CompareParameters));
    b.SetAttributeParameter(eVA_Parameter,
                            CbMakeSmart<ZqParametrizationPlanar>(CbVector3f(0, 0, 1e-3f), CbVector3f(1, 0, 0),
                                                                 CbVector3f(0, 1, 0)));
    EXPECT_FALSE(c.Run(a, b, ZqMpCompareTriangulationsOld::eF_CompareParameters));
    EXPECT_TRUE(c.Run(a, b, ZqMpCompareTriangulationsOld::eF_CompareParameters, 2e-3f));
}

TEST(ZqMpCompareTriangulationsOldTest, WithoutInputComputeFails)
{
    ZqMpCompareTriangulationsOld compare;
    EXPECT_FALSE(compare.Compute());
    EXPECT_FALSE(compare.GetOutput());
    const ZqTriangulationDynamic a = cube();
    EXPECT_TRUE(compare.Compute(a, a, 0.0f, 0.0f));
}
