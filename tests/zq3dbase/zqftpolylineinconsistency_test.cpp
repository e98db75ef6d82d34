// Twin and collapse detection beyond the module's seven sets: tolerances, flag subsets, empty and
// single-vertex polylines, non-finite input; what the repair leaves behind; and the module test's
// runTest, which must reject a wrong expected list and report exceptions.

#include "zq3dbase/zqftpolylineinconsistencydetect.h"
#include "zq3dbase/zqftpolylineinconsistencydetect_unittest.h"
#include "zq3dbase/zqftpolylineinconsistencyrepair.h"
#include "zq3dbase/zqpolyline3d.h"
#include "zqmoduletest.h"

#include <gtest/gtest.h>

#include <limits>
#include <string>
#include <utility>
#include <vector>

namespace
{
using Detect = ZqFtPolylineInconsistencyDetect;
using SInconsistency = Detect::SInconsistency;

// The findings as (type, index) pairs, indices by chain order.
std::vector<std::pair<int, unsigned int>> detect(ZqPolyline3D& line, unsigned int flags = Detect::eF_All,
                                                 float tolerance = 0.0f)
{
    line.computeIndices();
    CbList<SInconsistency> findings;
    Detect detector;
    detector.SetFlags(CbFlags<Detect::EFlags>::FromBits(flags));
    detector.SetTolerance(tolerance);
    detector.SetInput(line, &findings);
    EXPECT_TRUE(detector.Compute()) << detector.GetLastError();
    EXPECT_EQ(detector.GetInconsistencyCount(), findings.GetCount());
    std::vector<std::pair<int, unsigned int>> result;
    for (const SInconsistency& finding : findings)
        result.emplace_back(finding.type, finding.vertex->GetIndex());
    return result;
}

std::vector<CbVector3f> positions(const ZqPolyline3D& line)
{
    std::vector<CbVector3f> result;
    for (const ZqPolylineVertex& vertex : line)
        result.push_back(vertex.GetPosition());
    return result;
}

bool repair(ZqPolyline3D& line, const CbList<SInconsistency>* findings = nullptr, float tolerance = 0.0f)
{
    ZqFtPolylineInconsistencyRepair repairer;
    repairer.SetTolerance(tolerance);
    repairer.SetInput(line, findings);
    return repairer.Compute();
}

using Findings = std::vector<std::pair<int, unsigned int>>;
} // namespace

TEST(ZqFtPolylineInconsistencyDetect, EmptyPolylineIsConsistentSingleVertexDependsOnClosing)
{
    ZqPolyline3D empty;
    EXPECT_EQ(detect(empty), Findings{});
    EXPECT_FALSE(Detect::Compute(empty));
    ZqPolyline3D open({{1, 2, 3}});
    EXPECT_EQ(detect(open), (Findings{{1, 0}}));
    ZqPolyline3D closed({{1, 2, 3}}, true);
    EXPECT_EQ(detect(closed), (Findings{{2, 0}})) << "a single closed vertex is its own predecessor";
}

TEST(ZqFtPolylineInconsistencyDetect, FlagsSelectWhatIsReported)
{
    ZqPolyline3D line({{0, 0, 0}, {0, 0, 0}, {0, 0, 0}});
    EXPECT_EQ(detect(line, Detect::eF_Collapsed), (Findings{{1, 0}}));
    EXPECT_EQ(detect(line, Detect::eF_Twins), (Findings{{2, 1}, {2, 2}}));
    EXPECT_EQ(detect(line, Detect::eF_None), Findings{});
    Detect defaults;
    EXPECT_TRUE(defaults.IsFlagSet(Detect::eF_Collapsed) && defaults.IsFlagSet(Detect::eF_Twins));
}

TEST(ZqFtPolylineInconsistencyDetect, ToleranceIsADistanceBetweenNeighboursOnly)
{
    // 0.6 apart from neighbour to neighbour, 1.2 from the head to the tail.
    ZqPolyline3D line({{0, 0, 0}, {0, 0.6f, 0}, {0, 1.2f, 0}});
    EXPECT_EQ(detect(line, Detect::eF_All, 0.5f), Findings{});
    EXPECT_EQ(detect(line, Detect::eF_All, 0.6f), (Findings{{2, 1}, {2, 2}}));
    EXPECT_EQ(detect(line, Detect::eF_All, 1.2f), (Findings{{1, 0}, {2, 1}, {2, 2}}));
    // Positions that differ in the last bit are no twins at tolerance 0.
    ZqPolyline3D close({{1, 1, 1}, {1, 1, std::nextafter(1.0f, 2.0f)}});
    EXPECT_EQ(detect(close), Findings{});
}

TEST(ZqFtPolylineInconsistencyDetect, ClosingSegmentCountsOnlyWhenClosed)
{
    ZqPolyline3D line({{0, 0, 0}, {1, 0, 0}, {0, 0, 0}});
    EXPECT_EQ(detect(line), Findings{});
    line.SetClosed(true);
    EXPECT_EQ(detect(line), (Findings{{2, 0}}));
}

TEST(ZqFtPolylineInconsistencyDetect, NonFiniteInputFailsTheComputationAndEmptiesTheList)
{
    ZqPolyline3D line({{0, 0, 0}, {std::numeric_limits<float>::quiet_NaN(), 0, 0}});
    CbList<SInconsistency> findings;
    findings.AddTail(SInconsistency(Detect::eIT_Twin, nullptr));
    Detect detector;
    detector.SetInput(line, &findings);
    EXPECT_FALSE(detector.Compute());
    EXPECT_TRUE(findings.IsEmpty());
    EXPECT_THROW(Detect::Compute(line), CbExceptionPreconditionViolation);
    ZqPolyline3D infinite({{std::numeric_limits<float>::infinity(), 0, 0}});
    EXPECT_THROW(Detect::Compute(infinite), CbExceptionPreconditionViolation);

    Detect negative;
    negative.SetTolerance(-1.0f);
    const ZqPolyline3D empty;
    negative.SetInput(empty, nullptr);
    EXPECT_FALSE(negative.Compute());
}

TEST(ZqFtPolylineInconsistencyRepair, RunsKeepTheirFirstVertexAndTheShapeStays)
{
    ZqPolyline3D line({{0, 0, 0}, {0, 0, 0}, {1, 0, 0}, {1, 0, 0}, {1, 0, 0}, {1, 1, 0}});
    ASSERT_TRUE(repair(line));
    EXPECT_EQ(positions(line), (std::vector<CbVector3f>{{0, 0, 0}, {1, 0, 0}, {1, 1, 0}}));
    EXPECT_EQ(line.GetTailVertex()->GetIndex(), 2u) << "indices are renumbered";
}

TEST(ZqFtPolylineInconsistencyRepair, ClosedHeadThatRepeatsTheTailGoes)
{
    ZqPolyline3D line({{0, 0, 0}, {1, 0, 0}, {2, 0, 0}, {0, 0, 0}}, true);
    ASSERT_TRUE(repair(line));
    EXPECT_EQ(positions(line), (std::vector<CbVector3f>{{1, 0, 0}, {2, 0, 0}, {0, 0, 0}}));
    EXPECT_TRUE(line.IsClosed());
}

TEST(ZqFtPolylineInconsistencyRepair, PolylinesWithoutExtentEndEmpty)
{
    ZqPolyline3D open({{3, 3, 3}, {3, 3, 3}});
    ZqPolyline3D closed({{3, 3, 3}, {3, 3, 3}, {3, 3, 3}}, true);
    ZqPolyline3D single({{3, 3, 3}});
    for (ZqPolyline3D* line : {&open, &closed, &single})
    {
        ASSERT_TRUE(repair(*line));
        EXPECT_TRUE(line->IsEmpty());
    }
}

TEST(ZqFtPolylineInconsistencyRepair, PartialListIsCompletedByItsOwnDetection)
{
    ZqPolyline3D line({{0, 0, 0}, {0, 0, 0}, {1, 0, 0}, {1, 0, 0}});
    CbList<SInconsistency> partial;
    partial.AddTail(SInconsistency(Detect::eIT_Twin, line.GetTailVertex()));
    ZqFtPolylineInconsistencyRepair repairer;
    repairer.SetInput(line, &partial);
    ASSERT_TRUE(repairer.Compute());
    EXPECT_EQ(repairer.GetRemovedCount(), 2u);
    EXPECT_EQ(positions(line), (std::vector<CbVector3f>{{0, 0, 0}, {1, 0, 0}}));
}

TEST(ZqFtPolylineInconsistencyRepair, ListedVerticesAreRemovedEvenWithoutAnInconsistency)
{
    ZqPolyline3D line({{0, 0, 0}, {1, 0, 0}, {2, 0, 0}});
    CbList<SInconsistency> listed;
    listed.AddTail(SInconsistency(Detect::eIT_Twin, line.GetHeadVertex()->GetNext()));
    ASSERT_TRUE(repair(line, &listed));
    EXPECT_EQ(positions(line), (std::vector<CbVector3f>{{0, 0, 0}, {2, 0, 0}}));
}

TEST(ZqFtPolylineInconsistencyRepair, FindingOfAnotherPolylineFailsAndChangesNothing)
{
    ZqPolyline3D line({{0, 0, 0}, {0, 0, 0}});
    ZqPolyline3D other({{5, 5, 5}});
    CbList<SInconsistency> foreign;
    foreign.AddTail(SInconsistency(Detect::eIT_Twin, other.GetHeadVertex()));
    EXPECT_FALSE(repair(line, &foreign));
    EXPECT_EQ(line.GetVertexCount(), 2u);
}

TEST(ZqFtPolylineInconsistencyRepair, ToleranceChainShrinksToItsFirstVertex)
{
    ZqPolyline3D line({{0, 0, 0}, {0.6f, 0, 0}, {1.2f, 0, 0}, {5, 0, 0}});
    ASSERT_TRUE(repair(line, nullptr, 0.7f));
    EXPECT_EQ(positions(line), (std::vector<CbVector3f>{{0, 0, 0}, {5, 0, 0}}));
}

namespace
{
// The module's test class, made through the factory as the runner makes it; its sets and runTest
// are reached through virtual calls.
class InconsistencyUnitTestModule : public ZqModuleTest
{
protected:
    void SetUp() override
    {
        m_object = create(L"ZqFtPolylineInconsistencyDetect_UnitTest");
        ASSERT_TRUE(m_object);
        m_test = static_cast<ZqFtPolylineInconsistencyDetect_UnitTest*>(m_object.get());
    }

    std::unique_ptr<ZqUnitTest> m_object;
    ZqFtPolylineInconsistencyDetect_UnitTest* m_test = nullptr;
};

enum ESet : unsigned int
{
    eSinglePoint = 0,
    eOpenTwin = 1,
    eOpenManyTwins1 = 2,
    eOpenManyTwins2 = 3,
    eClosedManyTwins1 = 5,
    eClosedManyTwins2 = 6,
};
} // namespace

TEST_F(InconsistencyUnitTestModule, WrongExpectationsAreReportedAsFour)
{
    auto missing = m_test->createTestSet(eOpenManyTwins2);
    missing->expected.RemoveTail();
    EXPECT_EQ(m_test->runTest(*missing), ZqUnitTest::eAborted);

    // Same count, one finding at the wrong vertex.
    auto moved = m_test->createTestSet(eClosedManyTwins1);
    moved->expected.RemoveTail();
    moved->expected.AddTail(SInconsistency(Detect::eIT_Twin, moved->polyline.GetTailVertex()));
    EXPECT_EQ(m_test->runTest(*moved), ZqUnitTest::eAborted);

    // Same vertex, other type.
    auto retyped = m_test->createTestSet(eOpenTwin);
    retyped->expected.RemoveHead();
    retyped->expected.AddTail(SInconsistency(Detect::eIT_Twin, retyped->polyline.GetHeadVertex()));
    EXPECT_EQ(m_test->runTest(*retyped), ZqUnitTest::eAborted);

    // Without the collapse flag the expected type 1 is not found.
    auto flags = m_test->createTestSet(eSinglePoint);
    flags->flags = CbFlags<Detect::EFlags>(Detect::eF_Twins);
    EXPECT_EQ(m_test->runTest(*flags), ZqUnitTest::eAborted);
    EXPECT_EQ(m_test->GetMessageStream().Take().size(), 4u) << "one reason for each";
}

TEST_F(InconsistencyUnitTestModule, FailingDetectionIsReportedAsThree)
{
    auto set = m_test->createTestSet(eOpenTwin);
    set->polyline.GetTailVertex()->SetPosition({0, std::numeric_limits<float>::quiet_NaN(), 0});
    EXPECT_EQ(m_test->runTest(*set), ZqUnitTest::eException);
    m_test->GetMessageStream().Take();
}

TEST_F(InconsistencyUnitTestModule, SetsAreRepairedAndAnExtraExpectationIsRejected)
{
    for (unsigned int i = 0; i < ZqFtPolylineInconsistencyDetect_UnitTest::kTestSetCount; ++i)
    {
        auto set = m_test->createTestSet(i);
        auto extra = m_test->createTestSet(i);
        extra->expected.AddTail(extra->expected.GetHead());
        EXPECT_EQ(m_test->runTest(*set), ZqUnitTest::ePassed) << i;
        EXPECT_EQ(m_test->runTest(*extra), ZqUnitTest::eAborted) << i;
        EXPECT_FALSE(Detect::Compute(set->polyline)) << i;
    }
    EXPECT_EQ(m_test->getTestName(eClosedManyTwins2), CString(L"testClosedManyTwins2"));
    EXPECT_EQ(m_test->getTestName(ZqFtPolylineInconsistencyDetect_UnitTest::kTestSetCount),
              CString(L"Unknown_Test"));
    EXPECT_FALSE(m_test->createTestSet(ZqFtPolylineInconsistencyDetect_UnitTest::kTestSetCount));
    m_test->GetMessageStream().Take();
}
