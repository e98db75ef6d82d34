#pragma once

#include "basepool/cbflags.h"
#include "basepool/cblist.h"
#include "basepool/cstring.h"
#include "zq3dbase/zqftpolylinenonconformitydetect.h"
#include "zq3dbase/zqpolyline3d.h"
#include "zqbase/zqunittest.h"

#include <initializer_list>
#include <memory>

// Test of ZqFtPolylineNonconformityDetect. Its one subtest builds sixteen polylines, open and
// closed, that run forward and then double back over one segment, over several, across
// themselves or along a flat loop, or that conform; each comes with the findings expected under the
// detector's definition of a backward segment, worked out by hand. The sets run through runTest in
// order; the first outcome other than ePassed ends the subtest.
class ZqFtPolylineNonconformityDetect_UnitTest : public ZqUnitTest
{
    CB_DECLARE_RTTI(ZqFtPolylineNonconformityDetect_UnitTest)

public:
    using SNonconformity = ZqFtPolylineNonconformityDetect::SNonconformity;

    // A named polyline, the findings expected for it (vertices of that polyline), the detector's flags.
    struct STestSet
    {
        CString name;
        ZqPolyline3D polyline;
        CbList<SNonconformity> expected;
        CbFlags<ZqFtPolylineNonconformityDetect::EFlags> flags;
    };

    // The next three are virtual so that code outside the module (our GoogleTests) reaches them
    // through the object the factory makes, without a second registration of the class.
    static constexpr unsigned int kTestSetCount = 16;
    // The name of set index (its builder's name), or "Unknown_Test" past the last one.
    virtual CString getTestName(unsigned int index) const;
    // The set of that index; null past the last one.
    virtual std::unique_ptr<STestSet> createTestSet(unsigned int index);
    // Detects and compares the findings with the expected ones: ePassed; eAborted (4) when they
    // differ; eException (3) when an exception arrives or the detector fails.
    virtual EResult runTest(STestSet& set);

    std::unique_ptr<STestSet> testOpenBackwardSegment();
    std::unique_ptr<STestSet> testOpenBackwardSegment2();
    std::unique_ptr<STestSet> testOpenBackwardSegment3();
    std::unique_ptr<STestSet> testOpenBackwardSegmentCross();
    std::unique_ptr<STestSet> testOpenManyBackwardSegments();
    std::unique_ptr<STestSet> testOpenBackwardSegmentMultiVertex();
    std::unique_ptr<STestSet> testOpenManyBackwardSegmentsMultiVertex();
    std::unique_ptr<STestSet> testOpenConform();
    std::unique_ptr<STestSet> testClosedBackwardSegment();
    std::unique_ptr<STestSet> testClosedBackwardSegmentCross();
    std::unique_ptr<STestSet> testClosedManyBackwardSegments();
    std::unique_ptr<STestSet> testClosedBackwardSegmentMultiVertex1();
    std::unique_ptr<STestSet> testClosedBackwardSegmentMultiVertex2();
    std::unique_ptr<STestSet> testClosedManyBackwardSegmentsMultiVertex();
    std::unique_ptr<STestSet> testClosedConform();
    std::unique_ptr<STestSet> testClosedFlatLoop();

protected:
    CString getSubtestName(unsigned int index) override;
    EResult runUnitTest(unsigned int index) override;

private:
    // A set of that name and those positions with the flags 1, expecting backward-segment findings
    // at the vertices of the given indices.
    static std::unique_ptr<STestSet> makeSet(const char* name, std::initializer_list<CbVector3f> positions,
                                             bool closed, std::initializer_list<unsigned int> expected);
};
