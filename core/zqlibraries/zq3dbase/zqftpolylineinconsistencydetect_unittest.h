#pragma once

#include "basepool/cbflags.h"
#include "basepool/cblist.h"
#include "zq3dbase/zqftpolylineinconsistencydetect.h"
#include "zq3dbase/zqpolyline3d.h"
#include "zqbase/zqunittest.h"

#include <initializer_list>
#include <memory>
#include <vector>

// Test of ZqFtPolylineInconsistencyDetect and ZqFtPolylineInconsistencyRepair. Its one subtest
// builds seven small polylines together with the findings expected for them and runs each set
// through runTest, stopping at the first outcome other than ePassed.
class ZqFtPolylineInconsistencyDetect_UnitTest : public ZqUnitTest
{
    CB_DECLARE_RTTI(ZqFtPolylineInconsistencyDetect_UnitTest)

public:
    using SInconsistency = ZqFtPolylineInconsistencyDetect::SInconsistency;

    // A polyline, the findings expected for it (vertices of that polyline) and the detector's flags.
    struct STestSet
    {
        ZqPolyline3D polyline;
        CbList<SInconsistency> expected;
        CbFlags<ZqFtPolylineInconsistencyDetect::EFlags> flags;
    };

    // The next three are virtual so that code outside the module (our GoogleTests) reaches them
    // through the object the factory makes, without a second registration of the class.
    static constexpr unsigned int kTestSetCount = 7;
    // The name of set index (its builder's name), or "Unknown_Test" past the last one.
    virtual CString getTestName(unsigned int index) const;
    // The set of that index; null past the last one.
    virtual std::unique_ptr<STestSet> createTestSet(unsigned int index);
    // Detects, compares the findings with the expected ones, repairs and detects again. ePassed;
    // eAborted (4) when the findings differ from the expected ones; eFailed (2) when the repair fails
    // or leaves an inconsistency; eException (3) when an exception arrives or the detector fails.
    virtual EResult runTest(STestSet& set);

    // The sets, in the order the subtest runs them.
    std::unique_ptr<STestSet> testSinglePoint();
    std::unique_ptr<STestSet> testOpenTwin();
    std::unique_ptr<STestSet> testOpenManyTwins1();
    std::unique_ptr<STestSet> testOpenManyTwins2();
    std::unique_ptr<STestSet> testClosedTwin();
    std::unique_ptr<STestSet> testClosedManyTwins1();
    std::unique_ptr<STestSet> testClosedManyTwins2();

protected:
    CString getSubtestName(unsigned int index) override;
    EResult runUnitTest(unsigned int index) override;

private:
    // A set of those positions with the flags 3 and no expected finding yet.
    static std::unique_ptr<STestSet> makeSet(const std::vector<CbVector3f>& positions, bool closed);
    // Adds the expected finding type at the vertex of that index.
    static void expect(STestSet& set, ZqFtPolylineInconsistencyDetect::EInconsistencyType type,
                       std::initializer_list<unsigned int> indices);
};
