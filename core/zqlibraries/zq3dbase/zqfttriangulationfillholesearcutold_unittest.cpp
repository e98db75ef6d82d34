// Test of the first-generation ear cutter: a triangular hole whose rim is given either way round, two
// triangular holes meeting in a vertex (one rim round both), the same with the meeting vertex stored
// twice (two rims), and a square hole whose shorter diagonal already is an edge of the surface. Each
// subtest fills the holes and compares the surface with the expected one: the same vertices and
// triangles, then the fill triangles, each starting at its lowest vertex index.

#include "basepool/cbexception.h"
#include "zq3dbase/zqfttriangulationfillholesearcutold.h"
#include "zq3dbase/zqmpcomparetriangulationsold.h"
#include "zq3dbase/zqpolylinetriangulationlist.h"
#include "zq3dbase/zqtriangulationdynamic.h"
#include "zqbase/zqunittest.h"

#include <array>
#include <initializer_list>
#include <vector>

class ZqFtTriangulationFillHolesEarcutOld_UnitTest : public ZqUnitTest
{
    CB_DECLARE_RTTI(ZqFtTriangulationFillHolesEarcutOld_UnitTest)

public:
    ZqFtTriangulationFillHolesEarcutOld_UnitTest() = default;
    ZqFtTriangulationFillHolesEarcutOld_UnitTest(const ZqFtTriangulationFillHolesEarcutOld_UnitTest&) =
        default;
    ZqFtTriangulationFillHolesEarcutOld_UnitTest&
    operator=(const ZqFtTriangulationFillHolesEarcutOld_UnitTest&) = default;
    ~ZqFtTriangulationFillHolesEarcutOld_UnitTest() override = default;

protected:
    unsigned int getSubtestCount() const override { return 5; }
    CString getSubtestName(unsigned int index) override;
    EResult runUnitTest(unsigned int index) override;

private:
    // A surface with holes, their rims and the triangles expected to fill them.
    struct SCase
    {
        ZqTriangulationDynamic surface{10000};
        ZqPolylineTriangulationList holes;
        std::vector<std::array<unsigned int, 3>> fills;

        // A rim through the given triangles, each step with one and the same vertex reference.
        void addRim(CbVertexRef vertex, std::initializer_list<ZqDynamicTriangle> triangles);
        // The 3 x 3 grid, vertex 3x + y at (x, y), and six triangles round two triangular holes
        // 1-3-4 and 4-7-5; its squares are split so that neither hole touches the grid's border.
        // With duplicateCentre vertex 4 is stored again as vertex 9, which the triangles round the
        // second hole use.
        std::array<ZqDynamicTriangle, 6> addGrid(bool duplicateCentre);
    };

    EResult runSingleTriangle(bool reverse);
    EResult runTwoTrianglesSharedVertex();
    EResult runTwoTrianglesDuplicatedVertex();
    EResult runEdgeAlreadyInTriangulation();
    // Fills the holes and compares the surface with the expected one.
    EResult fillAndCompare(SCase& holeCase);
};

CB_IMPLEMENT_RTTI(ZqFtTriangulationFillHolesEarcutOld_UnitTest, ZqUnitTest::RTTI);

CString ZqFtTriangulationFillHolesEarcutOld_UnitTest::getSubtestName(unsigned int index)
{
    switch (index)
    {
    case 0:
        return L"Single Triangle";
    case 1:
        return L"Single Triangle Reverse Line";
    case 2:
        return L"Two Triangles Shared Vertex";
    case 3:
        return L"Two Triangles Duplicated Vertex";
    case 4:
        return L"Edge already in triangulation";
    default:
        return L"Invalid Test";
    }
}

ZqUnitTest::EResult ZqFtTriangulationFillHolesEarcutOld_UnitTest::runUnitTest(unsigned int index)
{
    switch (index)
    {
    case 0:
        return runSingleTriangle(false);
    case 1:
        return runSingleTriangle(true);
    case 2:
        return runTwoTrianglesSharedVertex();
    case 3:
        return runTwoTrianglesDuplicatedVertex();
    case 4:
        return runEdgeAlreadyInTriangulation();
    default:
        return eFailed;
    }
}

void ZqFtTriangulationFillHolesEarcutOld_UnitTest::SCase::addRim(
    CbVertexRef vertex, std::initializer_list<ZqDynamicTriangle> triangles)
{
    ZqPolylineTriangulation rim(surface);
    for (const ZqDynamicTriangle& triangle : triangles)
        rim.AppendVertexTail(vertex, triangle);
    rim.SetClosed(false);
    holes.AddTail(rim);
}

ZqUnitTest::EResult ZqFtTriangulationFillHolesEarcutOld_UnitTest::fillAndCompare(SCase& holeCase)
{
    ZqTriangulationDynamic expected(holeCase.surface);
    for (const auto& fill : holeCase.fills)
        expected.AddTriangle(fill[0], fill[1], fill[2]);

    ZqFtTriangulationFillHolesEarcutOld filter;
    filter.SetInput(holeCase.surface, holeCase.holes);
    filter.setInputChanged();
    if (!filter.Compute() || !filter.checkOutputData())
    {
        WriteMessageFormat(eError, L"Füllen fehlgeschlagen: %S\n", filter.GetLastError().c_str());
        return eFailed;
    }
    ZqMpCompareTriangulationsOld compare;
    compare.SetMessageStream(*this);
    compare.SetInput(holeCase.surface, expected);
    compare.SetParameters(0.0f);
    if (!compare.Compute() || !compare.GetOutput())
        return eFailed;
    return ePassed;
}

ZqUnitTest::EResult ZqFtTriangulationFillHolesEarcutOld_UnitTest::runSingleTriangle(bool reverse)
{
    SCase holeCase;
    ZqTriangulationDynamic& s = holeCase.surface;
    const ZqDynamicVertex p0 = s.AddVertex({0, 0, 0}), p1 = s.AddVertex({0, 1, 0}),
                          p2 = s.AddVertex({0, 2, 0});
    const ZqDynamicVertex p3 = s.AddVertex({1, 0, 0}), p4 = s.AddVertex({1, 1, 0}),
                          p5 = s.AddVertex({2, 0, 0});
    const ZqDynamicTriangle t0 = s.AddTriangle(p0, p3, p1);
    const ZqDynamicTriangle t1 = s.AddTriangle(p3, p5, p4);
    const ZqDynamicTriangle t2 = s.AddTriangle(p4, p2, p1);
    // The hole P1, P3, P4: T0 borders it along P1-P3, T1 along P3-P4, T2 along P4-P1.
    if (reverse)
        holeCase.addRim(p0, {t1, t0, t2});
    else
        holeCase.addRim(p0, {t0, t1, t2});
    holeCase.fills = {{p1.GetIndex(), p3.GetIndex(), p4.GetIndex()}};
    return fillAndCompare(holeCase);
}

std::array<ZqDynamicTriangle, 6>
ZqFtTriangulationFillHolesEarcutOld_UnitTest::SCase::addGrid(bool duplicateCentre)
{
    for (float x = 0; x < 3; ++x)
        for (float y = 0; y < 3; ++y)
            surface.AddVertex({x, y, 0});
    const unsigned int centre = duplicateCentre ? surface.AddVertex({1, 1, 0}).GetIndex() : 4;
    return {surface.AddTriangle(0, 3, 1),      surface.AddTriangle(3, 6, 4),
            surface.AddTriangle(6, 7, centre), surface.AddTriangle(1, 4, 2),
            surface.AddTriangle(centre, 5, 2), surface.AddTriangle(7, 8, 5)};
}

ZqUnitTest::EResult ZqFtTriangulationFillHolesEarcutOld_UnitTest::runTwoTrianglesSharedVertex()
{
    // One rim round both holes, along the edges 1-3, 3-4, 4-7, 7-5, 5-4, 4-1. It passes vertex 4 twice
    // and is filled as two loops, the one that closes first along the rim (4-7-5) first.
    SCase holeCase;
    const auto t = holeCase.addGrid(false);
    holeCase.addRim(CbVertexRef(0), {t[0], t[1], t[2], t[5], t[4], t[3]});
    holeCase.fills = {{4, 7, 5}, {1, 3, 4}};
    return fillAndCompare(holeCase);
}

ZqUnitTest::EResult ZqFtTriangulationFillHolesEarcutOld_UnitTest::runTwoTrianglesDuplicatedVertex()
{
    // The holes touch at (1,1,0), stored as vertex 4 for the first and vertex 9 for the second: two
    // holes, two rims.
    SCase holeCase;
    const auto t = holeCase.addGrid(true);
    holeCase.addRim(CbVertexRef(0), {t[0], t[1], t[3]});
    holeCase.addRim(CbVertexRef(0), {t[2], t[5], t[4]});
    holeCase.fills = {{1, 3, 4}, {5, 9, 7}};
    return fillAndCompare(holeCase);
}

ZqUnitTest::EResult ZqFtTriangulationFillHolesEarcutOld_UnitTest::runEdgeAlreadyInTriangulation()
{
    // The square hole 0 (0,0,0), 3 (1,0,0), 4 (2,2,0), 1 (0,1,0). The ear at vertex 0 would close it
    // with the diagonal 1-3, but a flap rising to vertex 8 (1,1,2) already joins 1 and 3: the filter
    // must take the diagonal 0-4.
    SCase holeCase;
    ZqTriangulationDynamic& s = holeCase.surface;
    for (const CbVector3f& p : {CbVector3f(0, 0, 0), CbVector3f(0, 1, 0), CbVector3f(0, 2, 0),
                                CbVector3f(1, 0, 0), CbVector3f(2, 2, 0), CbVector3f(2, 0, 0),
                                CbVector3f(1, -1, 0), CbVector3f(-1, 1, 0), CbVector3f(1, 1, 2)})
        s.AddVertex(p);
    const ZqDynamicTriangle r0 = s.AddTriangle(0, 6, 3), r1 = s.AddTriangle(3, 5, 4);
    const ZqDynamicTriangle r2 = s.AddTriangle(4, 2, 1), r3 = s.AddTriangle(1, 7, 0);
    s.AddTriangle(3, 6, 5);
    s.AddTriangle(7, 1, 2);
    s.AddTriangle(1, 3, 8);
    s.AddTriangle(8, 4, 5);
    holeCase.addRim(CbVertexRef(0), {r0, r1, r2, r3});
    holeCase.fills = {{0, 3, 4}, {0, 4, 1}};
    return fillAndCompare(holeCase);
}
