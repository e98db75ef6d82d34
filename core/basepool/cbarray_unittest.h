#pragma once

#include "basepool/cbarray.h"
#include "zqbase/iunittestrecreate.h"
#include "zqbase/zqbenchmark.h"
#include "zqbase/zqunittest.h"

#include <tbb/concurrent_vector.h>

#include <memory>
#include <vector>

// Test of CbArray: iteration, moves and copies, insertion and removal, serialization, the run-time
// element-size array, standard algorithms, initializer lists, a huge allocation and the growth rule
// (cbarray_unittest.cpp). Subtest 0 times the array against a C array, std::vector and
// tbb::concurrent_vector (cbarraybenchmark_unittest.cpp).
class CbArray_UnitTest : public ZqUnitTest, public IUnitTestRecreate, public ZqBenchmark
{
    CB_DECLARE_RTTI(CbArray_UnitTest)

public:
    CbArray_UnitTest() = default;
    // Copies the test, not the benchmark's data, which lives only while the benchmark runs.
    CbArray_UnitTest(const CbArray_UnitTest& other)
        : ZqUnitTest(other), IUnitTestRecreate(other), ZqBenchmark(other)
    {
    }
    CbArray_UnitTest& operator=(const CbArray_UnitTest& other)
    {
        ZqUnitTest::operator=(other);
        ZqBenchmark::operator=(other);
        return *this;
    }
    ~CbArray_UnitTest() override = default;

    // The array test keeps no references, so there is nothing to recreate.
    bool CanRecreate(unsigned int) const override { return false; }
    bool Recreate(unsigned int) override { return false; }

protected:
    unsigned int getSubtestCount() const override { return 14; }
    CString getSubtestName(unsigned int index) override;
    EResult runUnitTest(unsigned int index) override;

    unsigned int getBenchmarkCount() const override;
    CString getBenchmarkName(unsigned int index) override;
    unsigned int getGroup(unsigned int index) const override;
    unsigned int getIterationCount() const override { return 20; }
    bool runBenchmark(unsigned int index, SBenchmarkData& data) override;
    void dump(const CString& text) override { WriteMessage(eInfo, L"\t" + text); }
    void onBeforeRun() override;
    void onAfterRun(bool success) override;

private:
    EResult fail(const wchar_t* reason) const
    {
        WriteMessage(eError, CString(reason) + L"\n");
        return eFailed;
    }

    EResult runBenchmarkSubtest() { return RunBenchmark() ? ePassed : eFailed; }
    EResult runIterator();
    EResult runRangeBased();
    EResult runRange();
    EResult runMove();
    EResult runDynamicManipulation();
    EResult runSerialization();
    EResult runDynamicSize();
    EResult runCopies();
    EResult runAlgorithms();
    EResult runInitializerList();
    EResult runRemove();
    EResult runHugeAllocation();
    EResult runGrow();

    template <class T> EResult serializationRoundTrip(const CbArray<T>& written, const wchar_t* what);

protected:
    // Data of the benchmark, made in onBeforeRun and released in onAfterRun.
    std::unique_ptr<int[]> m_cArray;
    CbArray<int> m_cbArray;
    std::vector<int> m_vector;
    tbb::concurrent_vector<int> m_concurrentVector;
};
