// Sixteen polylines that run back over themselves in different ways, or conform. The expected
// findings follow from the definition in zqftpolylinenonconformitydetect.h: the first segment sets
// the course, a segment pointing within 1 degree of opposite to the course is backward and leaves
// the course as it was, any other segment becomes the course; both vertices of a backward segment
// are reported. Each builder states the walk: C a segment that becomes the course, B a backward one.

#include "zq3dbase/zqftpolylinenonconformitydetect_unittest.h"

#include "basepool/cbexception.h"
#include "zq3dbase/zqpolylinefindingscheck.h"

CB_IMPLEMENT_RTTI(ZqFtPolylineNonconformityDetect_UnitTest, ZqUnitTest::RTTI);

namespace
{
using Test = ZqFtPolylineNonconformityDetect_UnitTest;
using Detect = ZqFtPolylineNonconformityDetect;

#define ZQ_TEST_SET(name)                                                                                    \
    {                                                                                                        \
        L"" #name, &Test::name                                                                               \
    }
const struct
{
    const wchar_t* name;
    std::unique_ptr<Test::STestSet> (Test::*build)();
} s_sets[Test::kTestSetCount] = {
    ZQ_TEST_SET(testOpenBackwardSegment),
    ZQ_TEST_SET(testOpenBackwardSegment2),
    ZQ_TEST_SET(testOpenBackwardSegment3),
    ZQ_TEST_SET(testOpenBackwardSegmentCross),
    ZQ_TEST_SET(testOpenManyBackwardSegments),
    ZQ_TEST_SET(testOpenBackwardSegmentMultiVertex),
    ZQ_TEST_SET(testOpenManyBackwardSegmentsMultiVertex),
    ZQ_TEST_SET(testOpenConform),
    ZQ_TEST_SET(testClosedBackwardSegment),
    ZQ_TEST_SET(testClosedBackwardSegmentCross),
    ZQ_TEST_SET(testClosedManyBackwardSegments),
    ZQ_TEST_SET(testClosedBackwardSegmentMultiVertex1),
    ZQ_TEST_SET(testClosedBackwardSegmentMultiVertex2),
    ZQ_TEST_SET(testClosedManyBackwardSegmentsMultiVertex),
    ZQ_TEST_SET(testClosedConform),
    ZQ_TEST_SET(testClosedFlatLoop),
};
#undef ZQ_TEST_SET
} // namespace

CString ZqFtPolylineNonconformityDetect_UnitTest::getTestName(unsigned int index) const
{
    return index < kTestSetCount ? CString(s_sets[index].name) : CString(L"Unknown_Test");
}

std::unique_ptr<Test::STestSet> ZqFtPolylineNonconformityDetect_UnitTest::createTestSet(unsigned int index)
{
    return index < kTestSetCount ? (this->*s_sets[index].build)() : nullptr;
}

CString ZqFtPolylineNonconformityDetect_UnitTest::getSubtestName(unsigned int index)
{
    if (index > 0)
        CB_THROW(CbException, "ZqFtPolylineNonconformityDetect_UnitTest::getSubtestName");
    return L"Unit-Test";
}

ZqUnitTest::EResult ZqFtPolylineNonconformityDetect_UnitTest::runUnitTest(unsigned int index)
{
    if (index > 0)
        CB_THROW(CbException, "ZqFtPolylineNonconformityDetect_UnitTest::runUnitTest");
    return ZqPolylineFindingsCheck::RunSets(*this);
}

ZqUnitTest::EResult ZqFtPolylineNonconformityDetect_UnitTest::runTest(STestSet& set)
{
    try
    {
        return ZqPolylineFindingsCheck::DetectAndMatch<Detect>(*this, set.name, set.polyline, set.expected,
                                                               set.flags);
    }
    catch (...)
    {
        WriteMessage(eError, set.name + L": Ausnahme\n");
        return eException;
    }
}

std::unique_ptr<Test::STestSet>
ZqFtPolylineNonconformityDetect_UnitTest::makeSet(const char* name,
                                                  std::initializer_list<CbVector3f> positions, bool closed,
                                                  std::initializer_list<unsigned int> expected)
{
    auto set = std::make_unique<STestSet>();
    set->name = CString(name);
    set->polyline = ZqPolyline3D(positions, closed);
    set->polyline.computeIndices();
    set->flags = CbFlags<Detect::EFlags>::FromBits(1);
    for (unsigned int index : expected)
        set->expected.AddTail(SNonconformity(Detect::eNT_BackwardSegment,
                                             ZqPolylineFindingsCheck::VertexAt(set->polyline, index)));
    return set;
}

std::unique_ptr<Test::STestSet> ZqFtPolylineNonconformityDetect_UnitTest::testOpenBackwardSegment()
{
    // s0 +x C, s1 +y C, s2 -y B, s3 +x C: the third segment runs straight back over the second.
    return makeSet(__func__, {{0, 0, 0}, {1, 0, 0}, {1, 1, 0}, {1, 0, 0}, {2, 0, 0}}, false, {2, 3});
}

std::unique_ptr<Test::STestSet> ZqFtPolylineNonconformityDetect_UnitTest::testOpenBackwardSegment2()
{
    // s0 +x C, s1 -x B (back over half of s0), s2 +y C, s3 +x C.
    return makeSet(__func__, {{0, 0, 0}, {2, 0, 0}, {1, 0, 0}, {1, 1, 0}, {2, 1, 0}}, false, {1, 2});
}

std::unique_ptr<Test::STestSet> ZqFtPolylineNonconformityDetect_UnitTest::testOpenBackwardSegment3()
{
    // Oblique in space. s0 (100,200,200) C; s1 (-98,-199,-202) points 0.57 degrees off the opposite
    // of s0: B; s2 (0,0,-10) turns by 132 degrees: C; s3 (1,0,10) turns by 174.3 degrees, a hairpin
    // 5.7 degrees off the opposite: C.
    return makeSet(__func__, {{0, 0, 0}, {100, 200, 200}, {2, 1, -2}, {2, 1, -12}, {3, 1, -2}}, false,
                   {1, 2});
}

std::unique_ptr<Test::STestSet> ZqFtPolylineNonconformityDetect_UnitTest::testOpenBackwardSegmentCross()
{
    // s0 +x C; s1 (-1,0.5) C; s2 +y C; s3 (0,-2) B: it runs back over s2 and on across s0 at (1,1,0);
    // s4 +x C.
    return makeSet(__func__, {{0, 1, 0}, {2, 1, 0}, {1, 1.5f, 0}, {1, 2, 0}, {1, 0, 0}, {2, 0, 0}}, false,
                   {3, 4});
}

std::unique_ptr<Test::STestSet> ZqFtPolylineNonconformityDetect_UnitTest::testOpenManyBackwardSegments()
{
    // Along +x with three spikes: s1 +y C, s2 -y B; s4 +z C, s5 -z B; s7 +x C, s8 -x B (back along
    // the course itself), s9 +x C.
    return makeSet(__func__,
                   {{0, 0, 0},
                    {1, 0, 0},
                    {1, 1, 0},
                    {1, 0, 0},
                    {2, 0, 0},
                    {2, 0, 1},
                    {2, 0, 0},
                    {3, 0, 0},
                    {4, 0, 0},
                    {3.5f, 0, 0},
                    {5, 0, 0}},
                   false, {2, 3, 5, 6, 8, 9});
}

std::unique_ptr<Test::STestSet> ZqFtPolylineNonconformityDetect_UnitTest::testOpenBackwardSegmentMultiVertex()
{
    // Up +y in three segments (C), back down in three others that end elsewhere than the way up
    // (B, B, B), then +x C.
    return makeSet(__func__,
                   {{0, 0, 0},
                    {1, 0, 0},
                    {1, 1, 0},
                    {1, 2, 0},
                    {1, 3, 0},
                    {1, 2.5f, 0},
                    {1, 0.5f, 0},
                    {1, 0, 0},
                    {2, 0, 0}},
                   false, {4, 5, 6, 7});
}

std::unique_ptr<Test::STestSet>
ZqFtPolylineNonconformityDetect_UnitTest::testOpenManyBackwardSegmentsMultiVertex()
{
    // s0 +x C, s1 -x B, s2 -x B; s3 +y C, s4 +y C, s5 -y B, s6 -y B, s7 -y B (past the start of s4);
    // s8 +x C.
    return makeSet(__func__,
                   {{0, 0, 0},
                    {2, 0, 0},
                    {1, 0, 0},
                    {0.5f, 0, 0},
                    {0.5f, 1, 0},
                    {0.5f, 3, 0},
                    {0.5f, 2, 0},
                    {0.5f, 1, 0},
                    {0.5f, 0.5f, 0},
                    {3, 0.5f, 0}},
                   false, {1, 2, 3, 5, 6, 7, 8});
}

std::unique_ptr<Test::STestSet> ZqFtPolylineNonconformityDetect_UnitTest::testOpenConform()
{
    // A hairpin of 174.3 degrees (s1), then turns of 84 and 90 degrees and on into space: all C.
    return makeSet(__func__, {{0, 0, 0}, {2, 0, 0}, {0, 0.2f, 0}, {0, 1, 0}, {1, 1, 1}, {2, 2, 2}}, false,
                   {});
}

std::unique_ptr<Test::STestSet> ZqFtPolylineNonconformityDetect_UnitTest::testClosedBackwardSegment()
{
    // A 2 x 2 square with a spike out of its lower edge: s1 -y C, s2 +y B; the rest C.
    return makeSet(__func__, {{0, 0, 0}, {1, 0, 0}, {1, -1, 0}, {1, 0, 0}, {2, 0, 0}, {2, 2, 0}, {0, 2, 0}},
                   true, {2, 3});
}

std::unique_ptr<Test::STestSet> ZqFtPolylineNonconformityDetect_UnitTest::testClosedBackwardSegmentCross()
{
    // s0 +x C, s1 +y C, s2 (-2,-1) C, s3 (0,2) C, s4 (0,-4) B: back over s3 and across s0 at (2,0,0);
    // s5 -x C, the closing segment +y C.
    return makeSet(__func__, {{0, 0, 0}, {4, 0, 0}, {4, 2, 0}, {2, 1, 0}, {2, 3, 0}, {2, -1, 0}, {0, -1, 0}},
                   true, {4, 5});
}

std::unique_ptr<Test::STestSet> ZqFtPolylineNonconformityDetect_UnitTest::testClosedManyBackwardSegments()
{
    // A square with three spikes: s1 -y C, s2 +y B; s5 +x C, s6 -x B; s9 +z C, s10 -z B.
    return makeSet(__func__,
                   {{0, 0, 0},
                    {1, 0, 0},
                    {1, -1, 0},
                    {1, 0, 0},
                    {3, 0, 0},
                    {3, 1, 0},
                    {4, 1, 0},
                    {3, 1, 0},
                    {3, 3, 0},
                    {1, 3, 0},
                    {1, 3, 1},
                    {1, 3, 0},
                    {0, 3, 0}},
                   true, {2, 3, 6, 7, 10, 11});
}

std::unique_ptr<Test::STestSet>
ZqFtPolylineNonconformityDetect_UnitTest::testClosedBackwardSegmentMultiVertex1()
{
    // s0 +x C; up +y in s1 to s3 (C); down in s4 to s6 (B, B, B) to (4,1,0); s7 (-4,3) C; the
    // closing segment -y C.
    return makeSet(__func__,
                   {{0, 0, 0},
                    {4, 0, 0},
                    {4, 1, 0},
                    {4, 2, 0},
                    {4, 3, 0},
                    {4, 2.5f, 0},
                    {4, 1.5f, 0},
                    {4, 1, 0},
                    {0, 4, 0}},
                   true, {4, 5, 6, 7});
}

std::unique_ptr<Test::STestSet>
ZqFtPolylineNonconformityDetect_UnitTest::testClosedBackwardSegmentMultiVertex2()
{
    // The backward run goes over the closing segment into the head: s0 +y C, s1 -x C, s2 -y C,
    // s3 +x C (through the head's position), s4 -x B, the closing segment -x B.
    return makeSet(__func__, {{1, 0, 0}, {1, 2, 0}, {-1, 2, 0}, {-1, 0, 0}, {2, 0, 0}, {1.5f, 0, 0}}, true,
                   {4, 5, 0});
}

std::unique_ptr<Test::STestSet>
ZqFtPolylineNonconformityDetect_UnitTest::testClosedManyBackwardSegmentsMultiVertex()
{
    // A 4 x 4 square with an upright spike on its lower edge, s1 and s2 +z C, s3 to s5 -z B; and a
    // run back along its upper edge, s8 and s9 -x C, s10 and s11 +x B, s12 -x C.
    return makeSet(__func__,
                   {{0, 0, 0},
                    {2, 0, 0},
                    {2, 0, 1},
                    {2, 0, 2},
                    {2, 0, 1.5f},
                    {2, 0, 0.5f},
                    {2, 0, 0},
                    {4, 0, 0},
                    {4, 4, 0},
                    {3, 4, 0},
                    {1, 4, 0},
                    {2, 4, 0},
                    {3, 4, 0},
                    {0, 4, 0}},
                   true, {3, 4, 5, 6, 10, 11, 12});
}

std::unique_ptr<Test::STestSet> ZqFtPolylineNonconformityDetect_UnitTest::testClosedConform()
{
    // A loop in space with a hairpin of 174.3 degrees (s1) and turns of 132, 144 and 90 degrees: all C.
    return makeSet(__func__, {{0, 0, 0}, {4, 0, 0}, {0, 0.4f, 0}, {2, 2, 1}, {0, 2, 0}}, true, {});
}

std::unique_ptr<Test::STestSet> ZqFtPolylineNonconformityDetect_UnitTest::testClosedFlatLoop()
{
    // Out along the diagonal and back on the same line: s0 to s2 (1,1,1) C; s3, s4 and the closing
    // segment point the other way: B, B, B.
    return makeSet(__func__,
                   {{0, 0, 0}, {1, 1, 1}, {2, 2, 2}, {3, 3, 3}, {2.5f, 2.5f, 2.5f}, {0.5f, 0.5f, 0.5f}}, true,
                   {3, 4, 5, 0});
}
