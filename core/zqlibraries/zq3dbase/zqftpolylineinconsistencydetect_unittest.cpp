// Seven polylines with collapses and twin vertices, open and closed: the detector must report
// exactly the expected findings, and the repair must leave none.

#include "zq3dbase/zqftpolylineinconsistencydetect_unittest.h"

#include "basepool/cbexception.h"
#include "zq3dbase/zqftpolylineinconsistencyrepair.h"
#include "zq3dbase/zqpolylinefindingscheck.h"

#include <iterator>

CB_IMPLEMENT_RTTI(ZqFtPolylineInconsistencyDetect_UnitTest, ZqUnitTest::RTTI);

namespace
{
using Test = ZqFtPolylineInconsistencyDetect_UnitTest;
using Detect = ZqFtPolylineInconsistencyDetect;

#define ZQ_TEST_SET(name)                                                                                    \
    {                                                                                                        \
        L"" #name, &Test::name                                                                               \
    }
const struct
{
    const wchar_t* name;
    std::unique_ptr<Test::STestSet> (Test::*build)();
} s_sets[Test::kTestSetCount] = {
    ZQ_TEST_SET(testSinglePoint),      ZQ_TEST_SET(testOpenTwin),   ZQ_TEST_SET(testOpenManyTwins1),
    ZQ_TEST_SET(testOpenManyTwins2),   ZQ_TEST_SET(testClosedTwin), ZQ_TEST_SET(testClosedManyTwins1),
    ZQ_TEST_SET(testClosedManyTwins2),
};
#undef ZQ_TEST_SET

const CbVector3f s_manyTwins[] = {{0, 0, 0}, {0, 0, 0}, {1, 1, 0}, {1, 1, 0}, {1, 1, 0}, {2, 0, 0},
                                  {2, 1, 0}, {2, 1, 0}, {2, 2, 0}, {2, 2, 0}, {2, 2, 0}};
} // namespace

CString ZqFtPolylineInconsistencyDetect_UnitTest::getTestName(unsigned int index) const
{
    return index < kTestSetCount ? CString(s_sets[index].name) : CString(L"Unknown_Test");
}

std::unique_ptr<Test::STestSet> ZqFtPolylineInconsistencyDetect_UnitTest::createTestSet(unsigned int index)
{
    return index < kTestSetCount ? (this->*s_sets[index].build)() : nullptr;
}

CString ZqFtPolylineInconsistencyDetect_UnitTest::getSubtestName(unsigned int index)
{
    if (index > 0)
        CB_THROW(CbException, "ZqFtPolylineInconsistencyDetect_UnitTest::getSubtestName");
    return L"Unit-Test";
}

ZqUnitTest::EResult ZqFtPolylineInconsistencyDetect_UnitTest::runUnitTest(unsigned int index)
{
    if (index > 0)
        CB_THROW(CbException, "ZqFtPolylineInconsistencyDetect_UnitTest::runUnitTest");
    return ZqPolylineFindingsCheck::RunSets(*this);
}

ZqUnitTest::EResult ZqFtPolylineInconsistencyDetect_UnitTest::runTest(STestSet& set)
{
    try
    {
        const EResult detected = ZqPolylineFindingsCheck::DetectAndMatch<Detect>(
            *this, CString(), set.polyline, set.expected, set.flags);
        if (detected != ePassed)
            return detected;
        ZqFtPolylineInconsistencyRepair repair;
        repair.SetInput(set.polyline);
        repair.setInputChanged();
        if (!repair.Compute() || !repair.checkOutputData())
        {
            WriteMessageFormat(eError, L"Reparatur fehlgeschlagen: %S\n", repair.GetLastError().c_str());
            return eFailed;
        }
        if (Detect::Compute(set.polyline))
        {
            WriteMessage(eError, L"Inkonsistenz nach der Reparatur\n");
            return eFailed;
        }
        return ePassed;
    }
    catch (...)
    {
        return eException;
    }
}

std::unique_ptr<Test::STestSet>
ZqFtPolylineInconsistencyDetect_UnitTest::makeSet(const std::vector<CbVector3f>& positions, bool closed)
{
    auto set = std::make_unique<STestSet>();
    for (const CbVector3f& position : positions)
        set->polyline.AppendVertexTail(position);
    set->polyline.SetClosed(closed);
    set->polyline.computeIndices();
    set->flags = CbFlags<Detect::EFlags>::FromBits(3);
    return set;
}

void ZqFtPolylineInconsistencyDetect_UnitTest::expect(STestSet& set, Detect::EInconsistencyType type,
                                                      std::initializer_list<unsigned int> indices)
{
    for (unsigned int index : indices)
        set.expected.AddTail(SInconsistency(type, ZqPolylineFindingsCheck::VertexAt(set.polyline, index)));
}

std::unique_ptr<Test::STestSet> ZqFtPolylineInconsistencyDetect_UnitTest::testSinglePoint()
{
    auto set = makeSet({{0, 0, 0}}, false);
    expect(*set, Detect::eIT_Collapsed, {0});
    return set;
}

std::unique_ptr<Test::STestSet> ZqFtPolylineInconsistencyDetect_UnitTest::testOpenTwin()
{
    auto set = makeSet({{0, 0, 0}, {0, 0, 0}}, false);
    expect(*set, Detect::eIT_Collapsed, {0});
    expect(*set, Detect::eIT_Twin, {1});
    return set;
}

std::unique_ptr<Test::STestSet> ZqFtPolylineInconsistencyDetect_UnitTest::testOpenManyTwins1()
{
    auto set = makeSet({{0, 0, 0}, {0, 0, 0}, {0, 0, 0}, {0, 0, 0}, {0, 0, 0}}, false);
    expect(*set, Detect::eIT_Collapsed, {0});
    expect(*set, Detect::eIT_Twin, {1, 2, 3, 4});
    return set;
}

std::unique_ptr<Test::STestSet> ZqFtPolylineInconsistencyDetect_UnitTest::testOpenManyTwins2()
{
    // Runs of two and three: 0 0 | a a a | b | c c | d d d.
    auto set = makeSet(std::vector<CbVector3f>(std::begin(s_manyTwins), std::end(s_manyTwins)), false);
    expect(*set, Detect::eIT_Twin, {1, 3, 4, 7, 9, 10});
    return set;
}

std::unique_ptr<Test::STestSet> ZqFtPolylineInconsistencyDetect_UnitTest::testClosedTwin()
{
    auto set = makeSet({{0, 0, 0}, {0, 0, 0}}, true);
    expect(*set, Detect::eIT_Twin, {1, 0});
    return set;
}

std::unique_ptr<Test::STestSet> ZqFtPolylineInconsistencyDetect_UnitTest::testClosedManyTwins1()
{
    // The head repeats the tail across the closing segment.
    auto set = makeSet({{0, 0, 0}, {0, 0, 0}, {1, 1, 0}, {1, 1, 0}, {0, 0, 0}}, true);
    expect(*set, Detect::eIT_Twin, {0, 1, 3});
    return set;
}

std::unique_ptr<Test::STestSet> ZqFtPolylineInconsistencyDetect_UnitTest::testClosedManyTwins2()
{
    // The runs of testOpenManyTwins2, closed by a run of two at the origin that the head repeats.
    std::vector<CbVector3f> positions(std::begin(s_manyTwins), std::end(s_manyTwins));
    positions.insert(positions.end(), 2, CbVector3f(0, 0, 0));
    auto set = makeSet(positions, true);
    expect(*set, Detect::eIT_Twin, {0, 1, 3, 4, 7, 9, 10, 12});
    return set;
}
