// Backward segments beyond the module's sixteen sets: the angle tolerance at its boundary, segments
// without direction, the course after a backward run, reversed and closed polylines; and the module
// test's runTest, which must reject a wrong expected list for every set and report exceptions.

#include "zq3dbase/zqftpolylinenonconformitydetect.h"
#include "zq3dbase/zqftpolylinenonconformitydetect_unittest.h"
#include "zq3dbase/zqpolyline3d.h"
#include "zqmoduletest.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <numbers>
#include <vector>

namespace
{
using Detect = ZqFtPolylineNonconformityDetect;
using SNonconformity = Detect::SNonconformity;

// Indices of the reported vertices in the order reported.
std::vector<unsigned int> detect(ZqPolyline3D& line, float angleTolerance = Detect::kDefaultAngleTolerance,
                                 float tolerance = 0.0f)
{
    line.computeIndices();
    CbList<SNonconformity> findings;
    Detect detector;
    detector.SetAngleTolerance(angleTolerance);
    detector.SetTolerance(tolerance);
    detector.SetInput(line, &findings);
    EXPECT_TRUE(detector.Compute()) << detector.GetLastError();
    EXPECT_EQ(detector.GetNonconformityCount(), findings.GetCount());
    std::vector<unsigned int> indices;
    for (const SNonconformity& finding : findings)
    {
        EXPECT_EQ(finding.type, Detect::eNT_BackwardSegment);
        indices.push_back(finding.vertex->GetIndex());
    }
    return indices;
}

// An open polyline along +x that turns back at (1,0,0) by turn degrees (180: straight back).
ZqPolyline3D hairpin(double turn)
{
    const double away = (180.0 - turn) * std::numbers::pi / 180.0;
    return ZqPolyline3D({{0, 0, 0}, {1, 0, 0}, {float(1 - std::cos(away)), float(std::sin(away)), 0}});
}

using Indices = std::vector<unsigned int>;
} // namespace

TEST(ZqFtPolylineNonconformityDetect, AngleToleranceDecidesAtItsBoundary)
{
    ZqPolyline3D inside = hairpin(179.2), outside = hairpin(178.8);
    EXPECT_EQ(detect(inside), (Indices{1, 2}));
    EXPECT_EQ(detect(outside), Indices{});
    EXPECT_EQ(detect(outside, 1.5f), (Indices{1, 2}));
    EXPECT_EQ(detect(inside, 0.5f), Indices{});
    ZqPolyline3D right = hairpin(90.0);
    EXPECT_EQ(detect(right, 90.0f), Indices{}) << "a right angle is never backward";
}

TEST(ZqFtPolylineNonconformityDetect, SegmentsWithoutDirectionArePassedOver)
{
    // A twin at the tip and one inside the backward run.
    ZqPolyline3D line({{0, 0, 0}, {2, 0, 0}, {2, 0, 0}, {1, 0, 0}, {1, 0, 0}, {0.5f, 0, 0}, {0.5f, 1, 0}});
    EXPECT_EQ(detect(line), (Indices{2, 3, 4, 5}));
    // With a distance tolerance, a short wiggle neither sets the course nor runs back.
    ZqPolyline3D wiggle({{0, 0, 0}, {0.01f, 0, 0}, {0, 0, 0}, {0, 1, 0}});
    EXPECT_EQ(detect(wiggle), (Indices{1, 2}));
    EXPECT_EQ(detect(wiggle, 1.0f, 0.05f), Indices{});
}

TEST(ZqFtPolylineNonconformityDetect, BackwardRunKeepsTheCourseItTurnedFrom)
{
    // Back over two segments, then forward again along the course: only the run is reported.
    ZqPolyline3D line({{0, 0, 0}, {3, 0, 0}, {2, 0, 0}, {1, 0, 0}, {4, 0, 0}, {4, 1, 0}});
    EXPECT_EQ(detect(line), (Indices{1, 2, 3}));
    // A zigzag on one line: every second segment runs back.
    ZqPolyline3D zigzag({{0, 0, 0}, {2, 0, 0}, {1, 0, 0}, {3, 0, 0}, {2, 0, 0}, {4, 0, 0}});
    EXPECT_EQ(detect(zigzag), (Indices{1, 2, 3, 4}));
}

TEST(ZqFtPolylineNonconformityDetect, ReversedSpikeReportsTheSamePlaces)
{
    ZqPolyline3D line({{0, 0, 0}, {1, 0, 0}, {1, 1, 0}, {1, 0, 0}, {2, 0, 0}});
    line.Reverse();
    EXPECT_EQ(detect(line), (Indices{2, 3}));
    EXPECT_EQ(line.GetHeadVertex()->GetNext()->GetNext()->GetPosition(), CbVector3f(1, 1, 0));
}

TEST(ZqFtPolylineNonconformityDetect, ClosedPolylinesJudgeTheirClosingSegment)
{
    ZqPolyline3D pair({{0, 0, 0}, {1, 0, 0}}, true);
    EXPECT_EQ(detect(pair), (Indices{1, 0}));
    pair.SetClosed(false);
    EXPECT_EQ(detect(pair), Indices{});
    ZqPolyline3D point({{1, 1, 1}}, true);
    EXPECT_EQ(detect(point), Indices{});
    ZqPolyline3D empty;
    EXPECT_EQ(detect(empty), Indices{});
}

TEST(ZqFtPolylineNonconformityDetect, WithoutTheFlagNothingIsReportedAndTheListIsEmptied)
{
    ZqPolyline3D line({{0, 0, 0}, {1, 0, 0}, {0, 0, 0}});
    CbList<SNonconformity> findings;
    findings.AddTail(SNonconformity(Detect::eNT_BackwardSegment, nullptr));
    Detect detector;
    detector.SetFlags(CbFlags<Detect::EFlags>(Detect::eF_None));
    detector.SetInput(line, &findings);
    ASSERT_TRUE(detector.Compute());
    EXPECT_TRUE(findings.IsEmpty());
}

TEST(ZqFtPolylineNonconformityDetect, BadInputFailsTheComputation)
{
    ZqPolyline3D line({{0, 0, 0}, {1, 0, 0}});
    Detect detector;
    detector.SetInput(line, nullptr);
    detector.SetAngleTolerance(91.0f);
    EXPECT_FALSE(detector.Compute());
    detector.SetAngleTolerance(std::numeric_limits<float>::quiet_NaN());
    EXPECT_FALSE(detector.Compute());
    detector.SetAngleTolerance(1.0f);
    EXPECT_TRUE(detector.Compute());
    line.GetTailVertex()->SetPosition({std::numeric_limits<float>::infinity(), 0, 0});
    detector.setInputChanged();
    EXPECT_FALSE(detector.Compute());
    Detect unset;
    EXPECT_FALSE(unset.Compute());
}

namespace
{
// The module's test class, made through the factory as the runner makes it; its sets and runTest
// are reached through virtual calls.
class NonconformityUnitTestModule : public ZqModuleTest
{
protected:
    void SetUp() override
    {
        m_object = create(L"ZqFtPolylineNonconformityDetect_UnitTest");
        ASSERT_TRUE(m_object);
        m_test = static_cast<ZqFtPolylineNonconformityDetect_UnitTest*>(m_object.get());
    }

    std::unique_ptr<ZqUnitTest> m_object;
    ZqFtPolylineNonconformityDetect_UnitTest* m_test = nullptr;
};
} // namespace

TEST_F(NonconformityUnitTestModule, EverySetRejectsAMissingAndAnExtraFinding)
{
    using Test = ZqFtPolylineNonconformityDetect_UnitTest;
    for (unsigned int i = 0; i < Test::kTestSetCount; ++i)
    {
        auto set = m_test->createTestSet(i);
        ASSERT_TRUE(set);
        EXPECT_EQ(set->name, m_test->getTestName(i));
        EXPECT_EQ(set->flags.GetBits(), 1u);
        EXPECT_EQ(m_test->runTest(*set), ZqUnitTest::ePassed) << CbWideToUtf8(set->name.Std());

        // An extra finding at a vertex that is not expected (or a second one at an expected vertex).
        auto extra = m_test->createTestSet(i);
        const ZqPolylineVertex* vertex = extra->polyline.GetHeadVertex();
        while (vertex->GetNext() && extra->expected.Find(SNonconformity(Detect::eNT_BackwardSegment, vertex)))
            vertex = vertex->GetNext();
        extra->expected.AddTail(SNonconformity(Detect::eNT_BackwardSegment, vertex));
        EXPECT_EQ(m_test->runTest(*extra), ZqUnitTest::eAborted) << CbWideToUtf8(extra->name.Std());

        auto missing = m_test->createTestSet(i);
        if (missing->expected.IsEmpty())
            continue;
        // The count is restored with a finding of another type at the same vertex.
        const ZqPolylineVertex* last = missing->expected.RemoveTail().vertex;
        missing->expected.AddTail(SNonconformity(Detect::ENonconformityType(2), last));
        EXPECT_EQ(m_test->runTest(*missing), ZqUnitTest::eAborted) << CbWideToUtf8(missing->name.Std());
    }
    EXPECT_EQ(m_test->getTestName(Test::kTestSetCount), CString(L"Unknown_Test"));
    EXPECT_FALSE(m_test->createTestSet(Test::kTestSetCount));
    m_test->GetMessageStream().Take();
}

TEST_F(NonconformityUnitTestModule, FailingDetectionIsReportedAsThreeWithTheSetsName)
{
    auto set = m_test->createTestSet(15);
    ASSERT_EQ(set->name, CString(L"testClosedFlatLoop"));
    set->polyline.GetHeadVertex()->SetPosition({std::numeric_limits<float>::quiet_NaN(), 0, 0});
    EXPECT_EQ(m_test->runTest(*set), ZqUnitTest::eException);
    const auto messages = m_test->GetMessageStream().Take();
    ASSERT_EQ(messages.size(), 1u);
    EXPECT_NE(messages[0].text.Find(L"testClosedFlatLoop"), -1);
}
