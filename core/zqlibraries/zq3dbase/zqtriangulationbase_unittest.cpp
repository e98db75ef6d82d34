// Test of the first-generation triangulations: copies between the dynamic and static kinds,
// a round trip through the triangulation file, and the attribute store with its serialize switches,
// parameters and throw sites, followed by the named attributes, handles, switches and throw sites of
// the same surface as a Geometry::CTriangulation. Fixture: the default cube of ZqMpTriangulationPrimitiveOld
// with vertex normals, surface parameters (vertex attribute 1) and a planar parametrization attached to them.

#include "basepool/cbexception.h"
#include "basepool/cbsmartpointer.h"
#include "zq3dbase/geometry/cattributehandle.h"
#include "zq3dbase/geometry/cflagtriangulation.h"
#include "zq3dbase/geometry/ctriangulation_serializer.h"
#include "zq3dbase/geometry/ctriangulationconversion.h"
#include "zq3dbase/zqmpcomparetriangulationsold.h"
#include "zq3dbase/zqmptriangulationprimitiveold.h"
#include "zq3dbase/zqparametrizationplanar.h"
#include "zq3dbase/zqtriangulationdynamic.h"
#include "zq3dbase/zqtriangulationstatic.h"
#include "zqbase/zqunittest.h"

#include <cstdio>
#include <cstring>
#include <functional>
#include <string_view>
#include <vector>

class ZqTriangulationBase_UnitTest : public ZqUnitTest
{
    CB_DECLARE_RTTI(ZqTriangulationBase_UnitTest)

public:
    ZqTriangulationBase_UnitTest() = default;
    ZqTriangulationBase_UnitTest(const ZqTriangulationBase_UnitTest&) = default;
    ZqTriangulationBase_UnitTest& operator=(const ZqTriangulationBase_UnitTest&) = default;
    ~ZqTriangulationBase_UnitTest() override = default;

protected:
    unsigned int getSubtestCount() const override { return 3; }
    CString getSubtestName(unsigned int index) override;
    EResult runUnitTest(unsigned int index) override;

private:
    EResult runCopy();
    EResult runSerialize();
    EResult runAttributes();
    EResult runGeometryAttributes(const ZqTriangulationBase& triangulation);

    bool createTriangulation(ZqTriangulationDynamic& triangulation);
    bool compareTriangulations(int number, const ZqTriangulationBase& a, const ZqTriangulationBase& b);
    // Runs action and checks that it throws a CbException from zqtriangulationbase.h naming function.
    bool expectThrow(const char* what, const char* function, const std::function<void()>& action);
    // The same for a throw site in header (a path below the repository root), and when kind is given
    // also the exception's kind.
    bool expectThrowFrom(const char* what, const char* function, std::string_view header, const char* kind,
                         const std::function<void()>& action);
    EResult fail(const wchar_t* text)
    {
        WriteMessage(eError, text);
        return eFailed;
    }
};

CB_IMPLEMENT_RTTI(ZqTriangulationBase_UnitTest, ZqUnitTest::RTTI);

namespace
{
const char* const kFileName = "ZqTriangulationBase_UnitTest.tri";

// Removes the test's file when the subtest leaves, whichever way it leaves.
struct SRemoveFile
{
    ~SRemoveFile() { std::remove(kFileName); }
};
} // namespace

CString ZqTriangulationBase_UnitTest::getSubtestName(unsigned int index)
{
    switch (index)
    {
    case 0:
        return L"Kopieren";
    case 1:
        return L"Serialisieren";
    case 2:
        return L"Attribute";
    default:
        return L"[unbekannter Teiltest]";
    }
}

ZqUnitTest::EResult ZqTriangulationBase_UnitTest::runUnitTest(unsigned int index)
{
    switch (index)
    {
    case 0:
        return runCopy();
    case 1:
        return runSerialize();
    case 2:
        return runAttributes();
    default:
        CB_THROW(CbException, "ZqTriangulationBase_UnitTest::runUnitTest");
    }
}

bool ZqTriangulationBase_UnitTest::createTriangulation(ZqTriangulationDynamic& triangulation)
{
    ZqMpTriangulationPrimitiveOld primitive;
    primitive.SetInput(ZqMpTriangulationPrimitiveOld::eP_Cube);
    if (!primitive.Compute())
    {
        WriteMessage(eError, L"Triangulation kann nicht erstellt werden");
        return false;
    }
    triangulation = primitive.GetOutput();
    triangulation.Assert(eVA_Parameter);
    const auto planar = CbMakeSmart<ZqParametrizationPlanar>(
        CbVector3f(0.5f, 0.5f, 0.5f), CbVector3f(1, 0, 0.25f), CbVector3f(0, 1, -0.5f));
    triangulation.SetAttributeParameter(eVA_Parameter, planar);
    const auto positions = triangulation.GetPositions();
    const auto parameters = triangulation.GetAttribute<eVA_Parameter>();
    for (unsigned int v = 0; v < positions.size(); ++v)
        parameters[v] = planar->Evaluate(positions[v]);
    return true;
}

bool ZqTriangulationBase_UnitTest::compareTriangulations(int number, const ZqTriangulationBase& a,
                                                         const ZqTriangulationBase& b)
{
    ZqMpCompareTriangulationsOld compare;
    compare.SetMessageStream(*this);
    compare.AddFlags(CbFlags<ZqMpCompareTriangulationsOld::EFlags>::FromBits(
        ZqMpCompareTriangulationsOld::eF_CompareAttributes |
        ZqMpCompareTriangulationsOld::eF_CompareParameters));
    compare.SetInput(a, b);
    compare.SetParameters(0.0f);
    if (compare.Compute() && compare.GetOutput())
        return true;
    WriteMessage(eError, CbFormat(L"compare(%d) ", number) + L"Unterschiedliche Geometrien / Attribute");
    return false;
}

ZqUnitTest::EResult ZqTriangulationBase_UnitTest::runCopy()
{
    ZqTriangulationDynamic triangulation(10000);
    if (!createTriangulation(triangulation))
        return eFailed;
    const ZqTriangulationDynamic copied(triangulation);
    ZqTriangulationDynamic assigned(10000);
    assigned = triangulation;
    const ZqTriangulationStatic copiedStatic(triangulation);
    ZqTriangulationStatic assignedStatic;
    assignedStatic = triangulation;
    if (!compareTriangulations(0, triangulation, copied) ||
        !compareTriangulations(1, triangulation, assigned) ||
        !compareTriangulations(2, triangulation, copiedStatic) ||
        !compareTriangulations(3, triangulation, assignedStatic))
    {
        WriteMessage(eError, L"Unterschiede nach dem Kopieren der Triangulationen");
        return eFailed;
    }
    return ePassed;
}

ZqUnitTest::EResult ZqTriangulationBase_UnitTest::runSerialize()
{
    const SRemoveFile removeFile;
    ZqTriangulationDynamic triangulation(10000);
    if (!createTriangulation(triangulation))
        return eFailed;
    triangulation.SetSerialize(EVertexAttribute(2), true);
    triangulation.SetSerialize(EVertexAttribute(1), true);
    try
    {
        triangulation.WriteFile(CString(kFileName));
        ZqTriangulationDynamic readDynamic;
        readDynamic.ReadFile(CString(kFileName));
        ZqTriangulationStatic readStatic;
        readStatic.ReadFile(CString(kFileName));
        if (!compareTriangulations(0, triangulation, readDynamic) ||
            !compareTriangulations(1, triangulation, readStatic))
        {
            WriteMessage(eError, L"Unterschiede nach dem Serialisieren der Triangulationen");
            return eFailed;
        }
    }
    catch (const CbException&)
    {
        WriteMessage(eError, L"Exception beim Serialisieren der Triangulationen");
        return eFailed;
    }
    return ePassed;
}

bool ZqTriangulationBase_UnitTest::expectThrow(const char* what, const char* function,
                                               const std::function<void()>& action)
{
    return expectThrowFrom(what, function, "core/zqlibraries/zq3dbase/zqtriangulationbase.h", nullptr,
                           action);
}

bool ZqTriangulationBase_UnitTest::expectThrowFrom(const char* what, const char* function,
                                                   std::string_view header, const char* kind,
                                                   const std::function<void()>& action)
{
    try
    {
        action();
    }
    catch (const CbException& e)
    {
        // The path is relative to the repository root; a build through a compiler cache may prefix it.
        if (std::strcmp(e.GetFunction(), function) != 0 || !std::string_view(e.GetFile()).ends_with(header))
        {
            WriteMessageFormat(eError, L"%S: Ausnahme aus %S in %S statt %S", what, e.GetFunction(),
                               e.GetFile(), function);
            return false;
        }
        if (kind && std::strcmp(e.GetKind(), kind) != 0)
        {
            WriteMessageFormat(eError, L"%S: %S statt %S", what, e.GetKind(), kind);
            return false;
        }
        return true;
    }
    WriteMessageFormat(eError, L"%S: keine Ausnahme", what);
    return false;
}

ZqUnitTest::EResult ZqTriangulationBase_UnitTest::runAttributes()
{
    ZqTriangulationDynamic triangulation(10000);
    if (!createTriangulation(triangulation))
        return eFailed;
    const unsigned int n = triangulation.GetVertexCount();

    // Throw sites: an attribute that is not there, a reference beyond the elements.
    if (!expectThrow("Farben ohne Attribut", "ZqTriangulationBase::GetAttribute",
                     [&] { triangulation.GetAttribute<eVA_Color>(); }) ||
        !expectThrow("Materialnummer ohne Attribut", "ZqTriangulationBase::GetAttribute",
                     [&] { triangulation.Get<eTA_Material>(CbTriangleRef(0)); }) ||
        !expectThrow("Ecke hinter dem Ende", "ZqTriangulationBase::Get",
                     [&] { triangulation.Get(CbVertexRef(n)); }) ||
        !expectThrow("Dreieck hinter dem Ende", "ZqTriangulationBase::Get",
                     [&] { triangulation.Get(CbTriangleRef(triangulation.GetTriangleCount())); }) ||
        !expectThrow("Normale hinter dem Ende", "ZqTriangulationBase::Get",
                     [&] { triangulation.Get<eVA_Normal>(CbVertexRef(n)); }))
        return eFailed;

    // A new attribute starts value-initialised and follows the vertex count.
    triangulation.Assert(eVA_Color);
    if (triangulation.GetAttribute<eVA_Color>().size() != n ||
        !(triangulation.Get<eVA_Color>(CbVertexRef(0)) == ZqColorRGBA()))
        return fail(L"Neues Farbattribut hat nicht die Standardwerte aller Ecken");
    triangulation.Get<eVA_Color>(CbVertexRef(n - 1)) = ZqColorRGBA::Chocolate;
    const ZqDynamicVertex added = triangulation.AddVertex({2, 2, 2});
    if (triangulation.GetAttribute<eVA_Color>().size() != n + 1 ||
        !(triangulation.Get<eVA_Color>(CbVertexRef(n - 1)) == ZqColorRGBA::Chocolate) ||
        !(triangulation.Get<eVA_Color>(added) == ZqColorRGBA()))
        return fail(L"Farbattribut folgt dem Hinzufügen einer Ecke nicht");

    // Only the attributes whose switch is on travel through the file; the switch survives removal.
    triangulation.SetSerialize(eVA_Normal, true);
    std::vector<unsigned char> bytes;
    CbStreamWriteBinary writer(bytes);
    triangulation.Serialize(writer);
    CbStreamReadBinary reader(bytes);
    ZqTriangulationStatic read;
    read.Serialize(reader);
    if (!read.IsPresent(eVA_Normal) || read.IsPresent(eVA_Color) || read.IsPresent(eVA_Parameter) ||
        !reader.IsAtEnd())
        return fail(L"Serialisierte Attribute entsprechen nicht den Schaltern");
    triangulation.Remove(eVA_Normal);
    if (triangulation.IsPresent(eVA_Normal) || !triangulation.GetSerialize(eVA_Normal) ||
        !expectThrow("Normalen nach dem Entfernen", "ZqTriangulationBase::GetAttribute",
                     [&] { triangulation.GetAttribute<eVA_Normal>(); }))
        return fail(L"Entfernen eines Attributs wirkt nicht wie erwartet");

    // Copies share the parameter object rather than cloning it.
    const ZqTriangulationStatic copy(triangulation);
    if (copy.GetAttributeParameter(eVA_Parameter).Get() !=
        triangulation.GetAttributeParameter(eVA_Parameter).Get())
        return fail(L"Kopie teilt das Parameterobjekt nicht");
    return runGeometryAttributes(triangulation);
}

// The fixture as a Geometry::CTriangulation: its attributes under their names, handles of the four
// value types, the serialize switch deciding what a stream carries, the element counts of the store
// kinds, and one check per throw site of the Geometry stores.
ZqUnitTest::EResult
ZqTriangulationBase_UnitTest::runGeometryAttributes(const ZqTriangulationBase& triangulation)
{
    using namespace Geometry;
    CTriangulation geometry;
    CTriangulationConversion::Convert(triangulation, geometry);
    const unsigned int last = geometry.GetVertexCount() - 1;
    if (!(CAttributeHandle<CVertexRef, CbVector2f>(geometry, L"parameters")[CVertexRef(last)] ==
          triangulation.Get<eVA_Parameter>(CbVertexRef(last))))
        return fail(L"Geometrie-Triangulation: Flächenparameter nicht unter ihrem Namen");

    geometry.AddAttribute<CVertexRef, float>(L"float");
    geometry.AddAttribute<CVertexRef, double>(L"double");
    geometry.AddAttribute<CVertexRef, CbVector3f>(L"CbVector3f");
    geometry.AddAttribute<CVertexRef, ZqColorRGBA>(L"ZqColorRGBA");
    CAttributeHandle<CVertexRef, float>(geometry, L"float")[CVertexRef(last)] = 0.5f;
    CAttributeHandle<CVertexRef, double>(geometry, L"double")[CVertexRef(last)] = 1e-300;
    CAttributeHandle<CVertexRef, CbVector3f>(geometry, L"CbVector3f")[CVertexRef(last)] = {1, 2, 3};
    CAttributeHandle<CVertexRef, ZqColorRGBA>(geometry, L"ZqColorRGBA")[CVertexRef(last)] =
        ZqColorRGBA::Aquamarine;
    geometry.AddVertex({4, 4, 4});
    if (CAttributeHandle<CVertexRef, float>(geometry, L"float")[CVertexRef(last)] != 0.5f ||
        CAttributeHandle<CVertexRef, double>(geometry, L"double")[CVertexRef(last)] != 1e-300 ||
        !(CAttributeHandle<CVertexRef, CbVector3f>(geometry, L"CbVector3f")[CVertexRef(last)] ==
          CbVector3f(1, 2, 3)) ||
        !(CAttributeHandle<CVertexRef, ZqColorRGBA>(geometry, L"ZqColorRGBA")[CVertexRef(last + 1)] ==
          ZqColorRGBA(0, 0, 0, 0)))
        return fail(L"Geometrie-Triangulation: Werte über Handles stimmen nicht");

    // Of all attributes only the one switched on travels through a stream.
    geometry.SetSerialize(L"double", true);
    std::vector<unsigned char> bytes;
    CbStreamWriteBinary writer(bytes);
    writer << geometry;
    CbStreamReadBinary reader(bytes);
    CTriangulation read;
    reader >> read;
    if (read.GetAttributeCount() != 1 || !read.HasAttribute(L"double") ||
        CAttributeHandle<CVertexRef, double>(read, L"double")[CVertexRef(last)] != 1e-300)
        return fail(L"Geometrie-Triangulation: serialisierte Attribute entsprechen nicht den Schaltern");

    // Kind 3 covers vertices, triangles and edges; the closed surface has V - E + T = 2, counting
    // the vertices that triangles use (the added ones are isolated).
    CFlagTriangulation<CVertexRef> flags(geometry, eEK_Cells);
    const unsigned int t = geometry.GetTriangleCount();
    unsigned int used = 0;
    for (unsigned int i = 0; i < geometry.GetVertexCount(); ++i)
        used += geometry.GetVertexTriangleRelation().GetTriangleCount(i) > 0;
    if (flags.GetCount() != geometry.GetVertexCount() + t + (used + t - 2))
        return fail(L"Geometrie-Triangulation: Anzahl der Zellen stimmt nicht");

    CAttributeTriangulationRaw<CVertexRef> raw(geometry, 4, eEK_Corners);
    const char* const precondition = "CbExceptionPreconditionViolation";
    const char* const handle = "core/zqlibraries/zq3dbase/geometry/cattributehandle.h";
    if (!expectThrowFrom("Serialisierung ohne Attribut", "Geometry::CTriangulation::SetSerialize",
                         "core/zqlibraries/zq3dbase/geometry/ctriangulation.h", precondition,
                         [&] { geometry.SetSerialize(L"fehlt", true); }) ||
        !expectThrowFrom("Handle ohne Attribut",
                         "Geometry::CAttributeHandle<class Geometry::CVertexRef,float>::CAttributeHandle",
                         handle, precondition,
                         [&] { CAttributeHandle<CVertexRef, float>(geometry, L"double"); }) ||
        !expectThrowFrom("Handle ohne Attribut",
                         "Geometry::CAttributeHandle<class Geometry::CVertexRef,double>::CAttributeHandle",
                         handle, precondition,
                         [&] { CAttributeHandle<CVertexRef, double>(geometry, L"float"); }) ||
        !expectThrowFrom(
            "Handle ohne Attribut",
            "Geometry::CAttributeHandle<class Geometry::CVertexRef,class CbVector3f>::CAttributeHandle",
            handle, precondition, [&] { CAttributeHandle<CVertexRef, CbVector3f>(geometry, L"fehlt"); }) ||
        !expectThrowFrom(
            "Handle ohne Attribut",
            "Geometry::CAttributeHandle<class Geometry::CVertexRef,class ZqColorRGBA>::CAttributeHandle",
            handle, precondition,
            [&] { CAttributeHandle<CVertexRef, ZqColorRGBA>(geometry, L"parameters"); }) ||
        !expectThrowFrom("Rohattribut der Art 5",
                         "Geometry::CAttributeTriangulationRaw<class Geometry::CVertexRef>::SetAccurate",
                         "core/zqlibraries/zq3dbase/geometry/cattributetriangulationraw.h", "CbException",
                         [&] { raw.SetAccurate(5); }) ||
        !expectThrowFrom("Flags der Art 5",
                         "Geometry::CFlagTriangulation<class Geometry::CVertexRef>::SetAccurate",
                         "core/zqlibraries/zq3dbase/geometry/cflagtriangulation.h", "CbException",
                         [&] { flags.SetAccurate(5); }))
        return eFailed;
    return ePassed;
}
