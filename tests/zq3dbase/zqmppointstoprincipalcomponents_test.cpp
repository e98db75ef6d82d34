// Principal components on data with known answers: the corners of a box (population variances,
// axis order), other iterator types, a non-finite point, and the computed-once rule.

#include "basepool/cbarray.h"
#include "basepool/cbexception.h"
#include "basepool/cbvector3.h"
#include "zq3dbase/zqmppointstoprincipalcomponents.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <list>
#include <string>

namespace
{
template <class TIterator> class CExposedComponents : public ZqMpPointsToPrincipalComponents<TIterator>
{
public:
    using ZqMpPointsToPrincipalComponents<TIterator>::compute;
};

// The eight corners of the box [-a, a] x [-b, b] x [-c, c] moved to centre.
CbArray<CbVector3f> boxCorners(float a, float b, float c, const CbVector3f& centre)
{
    CbArray<CbVector3f> corners;
    for (int i = 0; i < 8; ++i)
        corners.Add(centre + CbVector3f(i & 1 ? a : -a, i & 2 ? b : -b, i & 4 ? c : -c));
    return corners;
}

template <class TIterator>
void expectBox(const ZqMpPointsToPrincipalComponents<TIterator>& components, const CbVector3f& centre)
{
    ASSERT_TRUE(components.HasResult());
    // Divided by the count (8), not by 7: the variances are exactly a^2, b^2, c^2, ascending.
    EXPECT_NEAR(components.eigenvalues[0], 0.25f, 1e-6f);
    EXPECT_NEAR(components.eigenvalues[1], 4.0f, 1e-5f);
    EXPECT_NEAR(components.eigenvalues[2], 9.0f, 1e-5f);
    EXPECT_NEAR(std::fabs(components.axes[0].y), 1.0f, 1e-6f);
    EXPECT_NEAR(std::fabs(components.axes[1].z), 1.0f, 1e-6f);
    EXPECT_NEAR(std::fabs(components.axes[2].x), 1.0f, 1e-6f);
    EXPECT_NEAR(components.centroid.x, centre.x, 1e-4f);
    EXPECT_NEAR(components.centroid.y, centre.y, 1e-4f);
    EXPECT_NEAR(components.centroid.z, centre.z, 1e-4f);
}
} // namespace

TEST(ZqMpPointsToPrincipalComponentsTest, BoxCornersGivePopulationVariancesInAscendingOrder)
{
    const CbVector3f centre(100.0f, -20.0f, 3.5f);
    const CbArray<CbVector3f> corners = boxCorners(3.0f, 0.5f, 2.0f, centre);
    ZqMpPointsToPrincipalComponents<const CbVector3f*> components;
    components.begin = corners.begin();
    components.end = corners.end();
    ASSERT_TRUE(components.Compute());
    expectBox(components, centre);
}

TEST(ZqMpPointsToPrincipalComponentsTest, AnyForwardRangeWillDo)
{
    const CbVector3f centre(-7.0f, 0.0f, 12.0f);
    const CbArray<CbVector3f> corners = boxCorners(3.0f, 0.5f, 2.0f, centre);
    const std::list<CbVector3f> list(corners.begin(), corners.end());
    ZqMpPointsToPrincipalComponents<std::list<CbVector3f>::const_iterator> components;
    components.begin = list.begin();
    components.end = list.end();
    ASSERT_TRUE(components.Compute());
    expectBox(components, centre);
}

TEST(ZqMpPointsToPrincipalComponentsTest, NonFinitePointMakesComputeFail)
{
    CbArray<CbVector3f> points = boxCorners(1.0f, 2.0f, 3.0f, CbVector3f());
    points[5].y = std::numeric_limits<float>::quiet_NaN();
    ZqMpPointsToPrincipalComponents<const CbVector3f*> components;
    components.begin = points.begin();
    components.end = points.end();
    EXPECT_FALSE(components.Compute());
    EXPECT_FALSE(components.HasResult());
    EXPECT_NE(components.GetLastError().find("ZqEigenSolver<double>::Compute"), std::string::npos)
        << components.GetLastError();
}

TEST(ZqMpPointsToPrincipalComponentsTest, SecondComputeThrowsButFewPointsDoNotCount)
{
    const CbArray<CbVector3f> corners = boxCorners(3.0f, 0.5f, 2.0f, CbVector3f());
    CExposedComponents<const CbVector3f*> components;
    // Two points leave no result, so the object may still compute.
    components.begin = corners.begin();
    components.end = corners.begin() + 2;
    components.compute();
    EXPECT_FALSE(components.HasResult());
    components.end = corners.end();
    components.compute();
    ASSERT_TRUE(components.HasResult());
    try
    {
        components.compute();
        FAIL() << "nothing thrown";
    }
    catch (const CbException& e)
    {
        EXPECT_STREQ(e.GetFunction(), "ZqMpPointsToPrincipalComponents::compute");
        EXPECT_STREQ(e.GetFile(), "core/zqlibraries/zq3dbase/zqmppointstoprincipalcomponents.h");
    }
}
