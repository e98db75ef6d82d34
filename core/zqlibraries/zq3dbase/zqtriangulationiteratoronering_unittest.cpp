// Test of the one-ring iterator: hand-written triangle and vertex sequences around chosen vertices
// of a regular 4 x 4 grid and of an evil triangulation (two single-triangle fans meeting in one
// vertex, a vertex of valence 24, three triangles on one edge, an isolated vertex), each walked
// twice from a reset iterator, for several instances of the template; and the throw site of
// getCornerIndex in all eight instances.

#include "basepool/cbexception.h"
#include "zq3dbase/zqtriangulationiteratoronering.h"
#include "zq3dbase/zqtriangulationshapes.h"
#include "zq3dbase/zqtriangulationstatic.h"
#include "zqbase/zqunittest.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <string_view>
#include <utility>
#include <vector>

class ZqTriangulationIteratorOneRing_UnitTest : public ZqUnitTest
{
    CB_DECLARE_RTTI(ZqTriangulationIteratorOneRing_UnitTest)

public:
    ZqTriangulationIteratorOneRing_UnitTest() = default;
    ZqTriangulationIteratorOneRing_UnitTest(const ZqTriangulationIteratorOneRing_UnitTest&) = default;
    ZqTriangulationIteratorOneRing_UnitTest&
    operator=(const ZqTriangulationIteratorOneRing_UnitTest&) = default;
    ~ZqTriangulationIteratorOneRing_UnitTest() override = default;

protected:
    unsigned int getSubtestCount() const override { return 3; }
    CString getSubtestName(unsigned int index) override;
    EResult runUnitTest(unsigned int index) override;

private:
    // One expected walk: the centre, the element indices in order and whether the ring is closed.
    // borderAt lists the steps that stand on a border; empty means the last step of an open ring.
    struct SRing
    {
        SRing(unsigned int c, std::vector<unsigned int> e, bool isClosed,
              std::vector<unsigned int> border = {})
            : centre(c), expected(std::move(e)), closed(isClosed), borderAt(std::move(border))
        {
        }
        unsigned int centre;
        std::vector<unsigned int> expected;
        bool closed;
        std::vector<unsigned int> borderAt;
    };

    EResult runNiceTriangulation();
    EResult runEvilTriangulation();
    EResult runCornerIndex();

    static void createNiceTriangulation(ZqTriangulationStatic& triangulation);
    static void createEvilTriangulation(ZqTriangulationStatic& triangulation);
    template <class TIterator>
    EResult checkRings(const ZqTriangulationBase& t, const std::vector<SRing>& rings);
    template <class TIterator> EResult checkRing(const ZqTriangulationBase& t, const SRing& ring);
    template <class TIterator> bool cornerIndexThrows(const ZqTriangulationBase& t, const char* function);
};

CB_IMPLEMENT_RTTI(ZqTriangulationIteratorOneRing_UnitTest, ZqUnitTest::RTTI);

template <class TRef, bool A, bool B> using OneRing = ZqTriangulationIteratorOneRing<TRef, A, B>;

CString ZqTriangulationIteratorOneRing_UnitTest::getSubtestName(unsigned int index)
{
    switch (index)
    {
    case 0:
        return L"Nette Triangulation";
    case 1:
        return L"Böse Triangulation";
    case 2:
        return L"getCornerIndex";
    default:
        CB_THROW(CbException, "ZqTriangulationIteratorOneRing_UnitTest::getSubtestName");
    }
}

ZqUnitTest::EResult ZqTriangulationIteratorOneRing_UnitTest::runUnitTest(unsigned int index)
{
    switch (index)
    {
    case 0:
        return runNiceTriangulation();
    case 1:
        return runEvilTriangulation();
    case 2:
        return runCornerIndex();
    default:
        CB_THROW(CbException, "ZqTriangulationIteratorOneRing_UnitTest::runUnitTest");
    }
}

// 16 vertices v = 4 y + x with coordinates 0 to 3; square (x, y) (s = 3 y + x) is split from its lower
// left to its upper right corner into triangles 2 s = (v, v + 1, v + 5) and 2 s + 1 = (v, v + 5, v + 4).
void ZqTriangulationIteratorOneRing_UnitTest::createNiceTriangulation(ZqTriangulationStatic& triangulation)
{
    ZqTriangulationShapes::Grid(triangulation, 3, 3);
    triangulation.ComputeVertexTriangleRelationship();
}

// Vertex 0: two single-triangle fans, T0 (0, 1, 2) and T1 (0, 3, 4), meeting only there (a vertex on
// two borders). Vertex 5: centre of a closed fan of 24 triangles T2..T25 = (5, 6 + i, 6 + (i + 1) % 24)
// over the rim 6..29. Vertex 30: no triangle. Vertices 31 and 32: an edge with three triangles,
// T26 (31, 32, 33), T27 (32, 31, 34) and T28 (31, 32, 35), the third against the orientation of the first.
void ZqTriangulationIteratorOneRing_UnitTest::createEvilTriangulation(ZqTriangulationStatic& triangulation)
{
    triangulation.SetVertexCount(36);
    const CbVector3f bowTie[5] = {{0, 0, 0}, {1, 0, 0}, {1, 1, 0}, {-1, 0, 0}, {-1, -1, 0}};
    for (unsigned int v = 0; v < 5; ++v)
        triangulation.SetVertex(v, bowTie[v]);
    triangulation.SetVertex(5, {5, 0, 0});
    for (unsigned int i = 0; i < 24; ++i)
    {
        const float angle = float(i) * 6.2831853f / 24.0f;
        triangulation.SetVertex(6 + i, {5.0f + std::cos(angle), std::sin(angle), 0.0f});
    }
    triangulation.SetVertex(30, {-5, -5, 0});
    const CbVector3f book[5] = {{10, 0, 0}, {11, 0, 0}, {10.5f, 1, 0}, {10.5f, -1, 0}, {10.5f, 0, 1}};
    for (unsigned int v = 0; v < 5; ++v)
        triangulation.SetVertex(31 + v, book[v]);

    triangulation.SetTriangleCount(29);
    triangulation.SetConnectivity(0, 0, 1, 2);
    triangulation.SetConnectivity(1, 0, 3, 4);
    for (unsigned int i = 0; i < 24; ++i)
        triangulation.SetConnectivity(2 + i, 5, 6 + i, 6 + (i + 1) % 24);
    triangulation.SetConnectivity(26, 31, 32, 33);
    triangulation.SetConnectivity(27, 32, 31, 34);
    triangulation.SetConnectivity(28, 31, 32, 35);
    triangulation.ComputeVertexTriangleRelationship();
}

template <class TIterator>
ZqUnitTest::EResult ZqTriangulationIteratorOneRing_UnitTest::checkRing(const ZqTriangulationBase& t,
                                                                       const SRing& ring)
{
    const auto fail = [&](const wchar_t* what, unsigned int step)
    {
        WriteMessageFormat(eError, L"Ring um Ecke %u, Schritt %u: %s", ring.centre, step, what);
        return eAborted;
    };
    const unsigned int count = static_cast<unsigned int>(ring.expected.size());
    std::vector<unsigned int> borderAt = ring.borderAt;
    if (borderAt.empty() && !ring.closed && count > 0)
        borderAt.push_back(count - 1);
    TIterator it(t, CbVertexRef(ring.centre));
    for (int round = 0; round < 2; ++round)
    {
        it.Reset();
        unsigned int steps = 0;
        while (!it.IsEnd())
        {
            if (steps >= count || (*it).GetIndex() != ring.expected[steps])
                return fail(L"falsches Element", steps);
            const bool border = std::find(borderAt.begin(), borderAt.end(), steps) != borderAt.end();
            if (it.IsBorder() != border)
                return fail(L"falscher Randzustand", steps);
            ++steps;
            if ((++it).IsAtStart())
                break;
        }
        if (steps != count)
            return fail(L"falsche Anzahl Schritte", steps);
        if (it.IsBorder() == ring.closed && count > 0)
            return fail(L"Randzustand am Ende passt nicht zum Ring", steps);
    }
    return ePassed;
}

template <class TIterator>
ZqUnitTest::EResult ZqTriangulationIteratorOneRing_UnitTest::checkRings(const ZqTriangulationBase& t,
                                                                        const std::vector<SRing>& rings)
{
    for (const SRing& ring : rings)
        if (checkRing<TIterator>(t, ring) != ePassed)
            return eAborted;
    return ePassed;
}

ZqUnitTest::EResult ZqTriangulationIteratorOneRing_UnitTest::runNiceTriangulation()
{
    ZqTriangulationStatic t;
    createNiceTriangulation(t);
    // Inner vertices 5 and 6, border vertex 1, corners 0, 3 (one triangle) and 15.
    const bool closed = true, open = false;
    if (checkRings<OneRing<CbTriangleRef, true, false>>(t, {{5, {0, 3, 8, 9, 6, 1}, closed},
                                                            {6, {2, 5, 10, 11, 8, 3}, closed},
                                                            {1, {2, 3, 0}, open},
                                                            {0, {0, 1}, open},
                                                            {3, {4}, open},
                                                            {15, {17, 16}, open}}) != ePassed ||
        checkRings<OneRing<CbTriangleRef, false, false>>(t, {{5, {0, 1, 6, 9, 8, 3}, closed},
                                                             {6, {2, 3, 8, 11, 10, 5}, closed},
                                                             {1, {0, 3, 2}, open},
                                                             {0, {1, 0}, open},
                                                             {3, {4}, open},
                                                             {15, {16, 17}, open}}) != ePassed ||
        checkRings<OneRing<CbVertexRef, true, false>>(t, {{5, {0, 1, 6, 10, 9, 4}, closed},
                                                          {6, {1, 2, 7, 11, 10, 5}, closed},
                                                          {1, {2, 6, 5, 0}, open},
                                                          {0, {1, 5, 4}, open},
                                                          {3, {7, 2}, open},
                                                          {15, {14, 10, 11}, open}}) != ePassed ||
        checkRings<OneRing<CbVertexRef, false, true>>(t, {{5, {1, 0, 4, 9, 10, 6}, closed},
                                                          {6, {2, 1, 5, 10, 11, 7}, closed},
                                                          {1, {0, 5, 6, 2}, open},
                                                          {0, {4, 5, 1}, open},
                                                          {3, {2, 7}, open},
                                                          {15, {11, 10, 14}, open}}) != ePassed)
        return eAborted;
    return ePassed;
}

ZqUnitTest::EResult ZqTriangulationIteratorOneRing_UnitTest::runEvilTriangulation()
{
    ZqTriangulationStatic t;
    createEvilTriangulation(t);
    std::vector<unsigned int> hub, hubVertices, hubVerticesClockwise;
    for (unsigned int i = 0; i < 24; ++i)
    {
        hub.push_back(2 + i);
        hubVertices.push_back(6 + i);
        hubVerticesClockwise.push_back(6 + (25 - i) % 24);
    }
    const bool closed = true, open = false;
    // One fan at a time: the walk stays in the first fan of a non-manifold vertex.
    if (checkRings<OneRing<CbTriangleRef, true, false>>(
            t, {{0, {0}, open}, {5, hub, closed}, {30, {}, open}, {31, {27, 26}, open}}) != ePassed ||
        checkRings<OneRing<CbVertexRef, false, false>>(t, {{0, {2, 1}, open},
                                                           {5, hubVerticesClockwise, closed},
                                                           {30, {}, open},
                                                           {32, {34, 31, 33}, open}}) != ePassed)
        return eAborted;
    // All fans: each open fan reports its border on its own last element.
    if (checkRings<OneRing<CbTriangleRef, true, true>>(
            t, {{0, {0, 1}, open, {0, 1}}, {5, hub, closed}, {31, {27, 26, 28}, open, {1, 2}}}) != ePassed ||
        checkRings<OneRing<CbVertexRef, true, true>>(t, {{0, {1, 2, 3, 4}, open, {1, 3}},
                                                         {5, hubVertices, closed},
                                                         {31, {34, 32, 33, 32, 35}, open, {2, 4}}}) !=
            ePassed)
        return eAborted;
    return ePassed;
}

template <class TIterator>
bool ZqTriangulationIteratorOneRing_UnitTest::cornerIndexThrows(const ZqTriangulationBase& t,
                                                                const char* function)
{
    const TIterator it(t, CbVertexRef(5));
    try
    {
        if (it.getCornerIndex(CbTriangleRef(9)) != 0 || it.getCornerIndex(CbTriangleRef(0)) != 2)
        {
            WriteMessageFormat(eError, L"%S: falsche Ecke", function);
            return false;
        }
        it.getCornerIndex(CbTriangleRef(7));
    }
    catch (const CbException& e)
    {
        // The path is relative to the repository root; a build through a compiler cache may prefix it.
        const std::string_view header = "core/zqlibraries/zq3dbase/zqtriangulationiteratoronering.h";
        if (std::strcmp(e.GetFunction(), function) == 0 && std::string_view(e.GetFile()).ends_with(header))
            return true;
        WriteMessageFormat(eError, L"Ausnahme aus %S in %S statt %S", e.GetFunction(), e.GetFile(), function);
        return false;
    }
    WriteMessageFormat(eError, L"%S: keine Ausnahme für ein Dreieck ohne die Zentrumsecke", function);
    return false;
}

ZqUnitTest::EResult ZqTriangulationIteratorOneRing_UnitTest::runCornerIndex()
{
    ZqTriangulationStatic t;
    createNiceTriangulation(t);
    // Triangle 7 = (4, 9, 8) does not touch vertex 5.
    const bool all = cornerIndexThrows<OneRing<CbVertexRef, true, true>>(
                         t, "ZqTriangulationIteratorOneRing<class CbVertexRef,1,1>::getCornerIndex") &&
                     cornerIndexThrows<OneRing<CbVertexRef, true, false>>(
                         t, "ZqTriangulationIteratorOneRing<class CbVertexRef,1,0>::getCornerIndex") &&
                     cornerIndexThrows<OneRing<CbVertexRef, false, true>>(
                         t, "ZqTriangulationIteratorOneRing<class CbVertexRef,0,1>::getCornerIndex") &&
                     cornerIndexThrows<OneRing<CbVertexRef, false, false>>(
                         t, "ZqTriangulationIteratorOneRing<class CbVertexRef,0,0>::getCornerIndex") &&
                     cornerIndexThrows<OneRing<CbTriangleRef, true, true>>(
                         t, "ZqTriangulationIteratorOneRing<class CbTriangleRef,1,1>::getCornerIndex") &&
                     cornerIndexThrows<OneRing<CbTriangleRef, true, false>>(
                         t, "ZqTriangulationIteratorOneRing<class CbTriangleRef,1,0>::getCornerIndex") &&
                     cornerIndexThrows<OneRing<CbTriangleRef, false, true>>(
                         t, "ZqTriangulationIteratorOneRing<class CbTriangleRef,0,1>::getCornerIndex") &&
                     cornerIndexThrows<OneRing<CbTriangleRef, false, false>>(
                         t, "ZqTriangulationIteratorOneRing<class CbTriangleRef,0,0>::getCornerIndex");
    return all ? ePassed : eFailed;
}
