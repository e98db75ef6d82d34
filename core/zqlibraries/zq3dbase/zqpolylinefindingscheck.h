#pragma once

#include "basepool/cbexception.h"
#include "basepool/cblist.h"
#include "basepool/cstring.h"
#include "zq3dbase/zqpolyline3dbase.h"
#include "zqbase/zqunittest.h"

// What the tests of the polyline filters share: finding a vertex by its place in the chain, and
// running a detector and comparing its findings (SInconsistency, SNonconformity: a type and a
// vertex) with those a test expects.
class ZqPolylineFindingsCheck
{
public:
    // The vertex with that index in chain order; throws CbExceptionPreconditionViolation past the tail.
    static const ZqPolylineVertex* VertexAt(const ZqPolyline3DBase& polyline, unsigned int index)
    {
        const ZqPolylineVertex* vertex = polyline.GetHeadVertex();
        for (unsigned int i = 0; vertex && i < index; ++i)
            vertex = vertex->GetNext();
        if (!vertex)
            CB_THROW(CbExceptionPreconditionViolation, "ZqPolylineFindingsCheck::VertexAt",
                     "index past the tail");
        return vertex;
    }

    // True when found holds as many findings as expected and each expected one (type and vertex)
    // matches a found one that no earlier expected finding took; the order does not matter.
    template <class Finding> static bool Match(const CbList<Finding>& found, const CbList<Finding>& expected)
    {
        if (found.GetCount() != expected.GetCount())
            return false;
        CbList<Finding> left(found);
        for (const Finding& finding : expected)
        {
            const CbListPosition position = left.Find(finding);
            if (!position)
                return false;
            left.RemoveAt(position);
        }
        return true;
    }

    // Runs a Detector with flags on polyline and compares its findings with expected: ePassed;
    // eAborted when they differ, eException when the detector fails. Writes the reason into test's
    // stream, after "name: " when a name is given.
    template <class Detector, class Finding, class Flags>
    static ZqUnitTest::EResult DetectAndMatch(const ZqUnitTest& test, const CString& name,
                                              ZqPolyline3DBase& polyline, const CbList<Finding>& expected,
                                              Flags flags)
    {
        const CString prefix = name.IsEmpty() ? CString() : name + L": ";
        CbList<Finding> found;
        Detector detect;
        detect.SetFlags(flags);
        detect.SetInput(polyline, &found);
        detect.setInputChanged();
        if (!detect.Compute() || !detect.checkOutputData())
        {
            test.WriteMessageFormat(ZqUnitTest::eError, L"%sErkennung fehlgeschlagen: %S\n", prefix,
                                    detect.GetLastError().c_str());
            return ZqUnitTest::eException;
        }
        polyline.computeIndices();
        if (!Match(found, expected))
        {
            test.WriteMessage(ZqUnitTest::eError, prefix + L"gefunden " + Describe(found) + L", erwartet " +
                                                      Describe(expected) + L"\n");
            return ZqUnitTest::eAborted;
        }
        return ZqUnitTest::ePassed;
    }

    // Runs the sets of test (a test class with kTestSetCount, getTestName, createTestSet and runTest)
    // in order; the first outcome other than ePassed ends the run, is written with the set's name
    // and returned. Each set is held by a unique_ptr, so it is deleted on every path; an exception
    // while a set is built gives eException.
    template <class Test> static ZqUnitTest::EResult RunSets(Test& test)
    {
        for (unsigned int i = 0; i < Test::kTestSetCount; ++i)
        {
            ZqUnitTest::EResult result;
            try
            {
                const auto set = test.createTestSet(i);
                result = test.runTest(*set);
            }
            catch (...)
            {
                result = ZqUnitTest::eException;
            }
            if (result != ZqUnitTest::ePassed)
            {
                test.WriteMessageFormat(ZqUnitTest::eError, L"%s: Ergebnis %d\n", test.getTestName(i),
                                        static_cast<int>(result));
                return result;
            }
        }
        return ZqUnitTest::ePassed;
    }

    // "{type 2 at 1, type 1 at 4}", the vertices by their indices (computeIndices first).
    template <class Finding> static CString Describe(const CbList<Finding>& findings)
    {
        CString text = L"{";
        for (const Finding& finding : findings)
        {
            if (text.GetLength() > 1)
                text += L", ";
            text += CbFormat(L"Typ %d bei %u", static_cast<int>(finding.type), finding.vertex->GetIndex());
        }
        return text + L"}";
    }
};
