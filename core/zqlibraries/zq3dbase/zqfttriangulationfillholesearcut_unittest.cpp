// Test of ZqFtTriangulationFillHolesEarCut on closed primitives with holes cut into them: a
// non-convex hole in a flat face, a cap of a sphere, two holes meeting in a vertex, a hole whose
// one diagonal is an edge of the surface already, and a large hole with a wavy rim. After filling
// every hole the surface must be closed, manifold and consistently oriented again, with no edge
// made twice (ZqClosedSurfaceCheck), and each fill must have the shape its case asks for.

#include "basepool/cbexception.h"
#include "zq3dbase/zqclosedsurfacecheck.h"
#include "zq3dbase/zqfttriangulationfillholesearcut.h"
#include "zq3dbase/zqmptriangulationprimitiveold.h"
#include "zq3dbase/zqtriangulationdynamic.h"
#include "zqbase/zqunittest.h"

#include <cmath>
#include <functional>
#include <numbers>

class ZqFtTriangulationFillHolesEarCut_UnitTest : public ZqUnitTest
{
    CB_DECLARE_RTTI(ZqFtTriangulationFillHolesEarCut_UnitTest)

public:
    ZqFtTriangulationFillHolesEarCut_UnitTest() = default;
    ZqFtTriangulationFillHolesEarCut_UnitTest(const ZqFtTriangulationFillHolesEarCut_UnitTest&) = default;
    ZqFtTriangulationFillHolesEarCut_UnitTest&
    operator=(const ZqFtTriangulationFillHolesEarCut_UnitTest&) = default;
    ~ZqFtTriangulationFillHolesEarCut_UnitTest() override = default;

protected:
    unsigned int getSubtestCount() const override { return 5; }
    CString getSubtestName(unsigned int index) override;
    EResult runUnitTest(unsigned int index) override;

private:
    // A triangle of the surface by its index and corner positions.
    using Remove = std::function<bool(const CbVector3f& a, const CbVector3f& b, const CbVector3f& c)>;

    EResult runPlanarHole();
    EResult runCurvedHole();
    EResult runTwoHolesSharingAVertex();
    EResult runExistingDiagonal();
    EResult runLargeWavyHole();

    // The primitive without the triangles that remove selects.
    static ZqTriangulationDynamic cut(const ZqMpTriangulationPrimitiveOld& primitive, const Remove& remove);
    // Fills every hole of surface; checks that it closes with loops loops, adding no vertex and the
    // triangles each loop needs (its rim vertices less two).
    bool fill(ZqTriangulationDynamic& surface, unsigned int loops);
    // Fails with text when condition does not hold.
    bool check(bool condition, const wchar_t* text) const;
    // The fill from triangle first on faces away from the centre of the sphere and bends nowhere by
    // more than 45 degrees.
    EResult checkCurvedFill(const ZqTriangulationBase& surface, unsigned int first) const;
};

CB_IMPLEMENT_RTTI(ZqFtTriangulationFillHolesEarCut_UnitTest, ZqUnitTest::RTTI);

namespace
{
CbVector3d normalOf(const ZqTriangulationBase& t, unsigned int triangle)
{
    const ZqTriangleCorners& c = t.GetTriangles()[triangle];
    const CbVector3d a(t.GetPositions()[c[0]]), b(t.GetPositions()[c[1]]), d(t.GetPositions()[c[2]]);
    return Cross(b - a, d - a);
}

CbVector3d centroidOf(const ZqTriangulationBase& t, unsigned int triangle)
{
    const ZqTriangleCorners& c = t.GetTriangles()[triangle];
    return (CbVector3d(t.GetPositions()[c[0]]) + CbVector3d(t.GetPositions()[c[1]]) +
            CbVector3d(t.GetPositions()[c[2]])) /
           3.0;
}

// The largest angle in degrees between the normals of two triangles from index first on that share
// an edge.
double largestFoldWithin(const ZqTriangulationBase& t, unsigned int first)
{
    double largest = 0.0;
    const auto triangles = t.GetTriangles();
    for (unsigned int i = first; i < t.GetTriangleCount(); ++i)
        for (unsigned int j = i + 1; j < t.GetTriangleCount(); ++j)
        {
            unsigned int shared = 0;
            for (unsigned int a : triangles[i])
                for (unsigned int b : triangles[j])
                    shared += a == b ? 1 : 0;
            if (shared == 2)
            {
                const CbVector3d n = normalOf(t, i).Normalized(), m = normalOf(t, j).Normalized();
                largest =
                    std::max(largest, std::atan2(Cross(n, m).Length(), n.Dot(m)) * 180.0 / std::numbers::pi);
            }
        }
    return largest;
}

ZqMpTriangulationPrimitiveOld primitive(ZqMpTriangulationPrimitiveOld::SConfigurationSphere sphere)
{
    ZqMpTriangulationPrimitiveOld generator;
    generator.SetInput(sphere);
    generator.Compute();
    return generator;
}
} // namespace

CString ZqFtTriangulationFillHolesEarCut_UnitTest::getSubtestName(unsigned int index)
{
    switch (index)
    {
    case 0:
        return L"Planar Hole";
    case 1:
        return L"Curved Hole";
    case 2:
        return L"Two Holes Sharing A Vertex";
    case 3:
        return L"Existing Diagonal";
    case 4:
        return L"Large Wavy Hole";
    default:
        CB_THROW(CbException, "ZqFtTriangulationFillHolesEarCut_UnitTest::getSubtestName");
    }
}

ZqUnitTest::EResult ZqFtTriangulationFillHolesEarCut_UnitTest::runUnitTest(unsigned int index)
{
    switch (index)
    {
    case 0:
        return runPlanarHole();
    case 1:
        return runCurvedHole();
    case 2:
        return runTwoHolesSharingAVertex();
    case 3:
        return runExistingDiagonal();
    case 4:
        return runLargeWavyHole();
    default:
        CB_THROW(CbException, "ZqFtTriangulationFillHolesEarCut_UnitTest::runUnitTest");
    }
}

bool ZqFtTriangulationFillHolesEarCut_UnitTest::check(bool condition, const wchar_t* text) const
{
    if (!condition)
        WriteMessageFormat(eError, L"%s\n", text);
    return condition;
}

ZqUnitTest::EResult
ZqFtTriangulationFillHolesEarCut_UnitTest::checkCurvedFill(const ZqTriangulationBase& surface,
                                                           unsigned int first) const
{
    for (unsigned int t = first; t < surface.GetTriangleCount(); ++t)
        if (!check(normalOf(surface, t).Dot(centroidOf(surface, t)) > 0.0, L"Füllung zeigt nach innen"))
            return eFailed;
    return check(largestFoldWithin(surface, first) < 45.0, L"Füllung geknickt") ? ePassed : eFailed;
}

ZqTriangulationDynamic
ZqFtTriangulationFillHolesEarCut_UnitTest::cut(const ZqMpTriangulationPrimitiveOld& primitive,
                                               const Remove& remove)
{
    const ZqTriangulationStatic& source = primitive.GetOutput();
    ZqTriangulationDynamic surface(source.GetTriangleCount());
    for (const CbVector3f& p : source.GetPositions())
        surface.AddVertex(p);
    const auto p = source.GetPositions();
    for (const ZqTriangleCorners& c : source.GetTriangles())
        if (!remove(p[c[0]], p[c[1]], p[c[2]]))
            surface.AddTriangle(c[0], c[1], c[2]);
    return surface;
}

bool ZqFtTriangulationFillHolesEarCut_UnitTest::fill(ZqTriangulationDynamic& surface, unsigned int loops)
{
    const unsigned int vertices = surface.GetVertexCount(), triangles = surface.GetTriangleCount();
    ZqFtTriangulationFillHolesEarCut filter;
    filter.SetInput(surface);
    filter.setInputChanged();
    if (!filter.Compute() || !filter.checkOutputData())
    {
        WriteMessageFormat(eError, L"Füllen fehlgeschlagen: %S\n", filter.GetLastError().c_str());
        return false;
    }
    if (!check(filter.GetFilledLoopCount() == loops, L"falsche Anzahl gefüllter Löcher") ||
        !check(surface.GetVertexCount() == vertices && filter.GetAddedVertexCount() == 0, L"neue Punkte") ||
        !check(surface.GetTriangleCount() == triangles + filter.GetAddedTriangleCount(),
               L"falsche Dreiecksanzahl"))
        return false;
    const CString problem = ZqClosedSurfaceCheck::Problem(surface);
    return check(problem.IsEmpty(), problem.IsEmpty() ? L"" : problem.GetString());
}

ZqUnitTest::EResult ZqFtTriangulationFillHolesEarCut_UnitTest::runPlanarHole()
{
    // An L of 4 x 4 minus 2 x 2 squares cut out of the top face (z = 1) of a cube of 6 x 6 squares
    // per face: a non-convex hole in a plane. Its fill must lie in the plane, face up and cover the
    // L exactly (area 4 * (4/3)^2 / 4 * 3 = 4/3).
    ZqMpTriangulationPrimitiveOld generator;
    generator.SetInput(ZqMpTriangulationPrimitiveOld::SConfigurationCube(2, 2, 2, 6));
    if (!check(generator.Compute(), L"Würfel kann nicht erstellt werden"))
        return eFailed;
    ZqTriangulationDynamic surface = cut(generator,
                                         [](const CbVector3f& a, const CbVector3f& b, const CbVector3f& c)
                                         {
                                             const CbVector3f m = (a + b + c) / 3.0f;
                                             return a.z == 1 && b.z == 1 && c.z == 1 &&
                                                    std::abs(m.x) < 2.0f / 3 && std::abs(m.y) < 2.0f / 3 &&
                                                    !(m.x > 0 && m.y > 0);
                                         });
    const unsigned int first = surface.GetTriangleCount();
    if (!fill(surface, 1))
        return eFailed;
    double area = 0.0;
    for (unsigned int t = first; t < surface.GetTriangleCount(); ++t)
    {
        const CbVector3d normal = normalOf(surface, t);
        if (!check(centroidOf(surface, t).z == 1.0 && normal.z > 0.0, L"Füllung nicht in der Ebene"))
            return eFailed;
        area += normal.Length() / 2.0;
    }
    return check(std::abs(area - 4.0 / 3.0) < 1e-5, L"Füllung deckt das Loch nicht genau") ? ePassed
                                                                                           : eFailed;
}

ZqUnitTest::EResult ZqFtTriangulationFillHolesEarCut_UnitTest::runCurvedHole()
{
    // The cap z > 0.6 of a sphere: a rim on the sphere, closed by a fill that faces outwards and
    // bends nowhere by more than 45 degrees (41.8 where the jagged rim forces a steep triangle
    // between two flat ones; CGAL's triangulate_hole makes the same).
    ZqTriangulationDynamic surface = cut(primitive(ZqMpTriangulationPrimitiveOld::SConfigurationSphere(4)),
                                         [](const CbVector3f& a, const CbVector3f& b, const CbVector3f& c)
                                         { return (a.z + b.z + c.z) / 3 > 0.6f; });
    const unsigned int first = surface.GetTriangleCount();
    if (!fill(surface, 1))
        return eFailed;
    return checkCurvedFill(surface, first);
}

ZqUnitTest::EResult ZqFtTriangulationFillHolesEarCut_UnitTest::runTwoHolesSharingAVertex()
{
    // Two opposite triangles of the four round the north pole of a sphere: the rim passes the pole
    // twice and each hole is closed by one triangle of its own.
    ZqTriangulationDynamic surface = cut(primitive(ZqMpTriangulationPrimitiveOld::SConfigurationSphere(2)),
                                         [](const CbVector3f& a, const CbVector3f& b, const CbVector3f& c)
                                         {
                                             const CbVector3f m = (a + b + c) / 3.0f;
                                             return (a.z == 1 || b.z == 1 || c.z == 1) && m.x * m.y > 0;
                                         });
    const unsigned int before = surface.GetTriangleCount();
    if (!fill(surface, 2))
        return eFailed;
    return check(surface.GetTriangleCount() == before + 2, L"nicht je ein Dreieck pro Loch") ? ePassed
                                                                                             : eFailed;
}

ZqUnitTest::EResult ZqFtTriangulationFillHolesEarCut_UnitTest::runExistingDiagonal()
{
    // A tetrahedron without two faces: the hole's rim runs round four vertices, and one of its two
    // diagonals is the edge the remaining two faces share. Only the other diagonal closes the surface.
    ZqMpTriangulationPrimitiveOld generator;
    generator.SetInput(ZqMpTriangulationPrimitiveOld::eP_Tetrahedron);
    if (!check(generator.Compute(), L"Tetraeder kann nicht erstellt werden"))
        return eFailed;
    const ZqTriangleCorners keep = generator.GetOutput().GetTriangles()[0];
    unsigned int removed = 0;
    ZqTriangulationDynamic surface = cut(generator,
                                         [&](const CbVector3f&, const CbVector3f&, const CbVector3f&)
                                         {
                                             // The first face and one neighbour stay.
                                             return removed++ >= 2;
                                         });
    return check(surface.GetTriangles()[0] == keep, L"Tetraeder unerwartet") && fill(surface, 1) ? ePassed
                                                                                                 : eFailed;
}

ZqUnitTest::EResult ZqFtTriangulationFillHolesEarCut_UnitTest::runLargeWavyHole()
{
    // Everything above a rim that waves five times round the sphere between polar angles 50 and 80
    // degrees: a hole of a few hundred rim vertices, not planar. The fill must face outwards and bend
    // nowhere by more than 45 degrees (CGAL's triangulate_hole fills it with 36.4 at most).
    ZqTriangulationDynamic surface = cut(
        primitive(ZqMpTriangulationPrimitiveOld::SConfigurationSphere(6)),
        [](const CbVector3f& a, const CbVector3f& b, const CbVector3f& c)
        {
            const CbVector3d m = CbVector3d(a + b + c) / 3.0;
            const double polar = std::atan2(std::hypot(m.x, m.y), m.z);
            return polar < (65.0 + 15.0 * std::sin(5.0 * std::atan2(m.y, m.x))) * std::numbers::pi / 180.0;
        });
    const unsigned int first = surface.GetTriangleCount();
    if (!fill(surface, 1))
        return eFailed;
    return checkCurvedFill(surface, first);
}
