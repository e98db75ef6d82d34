// Test of the first-generation triangulations: copies between the dynamic and static kinds,
// a round trip through the triangulation file, and the attribute store with its serialize switches,
// parameters and throw sites. Fixture: the default cube of ZqMpTriangulationPrimitiveOld with vertex
// normals, surface parameters (vertex attribute 1) and a planar parametrization attached to them.

#include "basepool/cbexception.h"
#include "basepool/cbsmartpointer.h"
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

    bool createTriangulation(ZqTriangulationDynamic& triangulation);
    bool compareTriangulations(int number, const ZqTriangulationBase& a, const ZqTriangulationBase& b);
    // Runs action and checks that it throws a CbException from zqtriangulationbase.h naming function.
    bool expectThrow(const char* what, const char* function, const std::function<void()>& action);
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
    try
    {
        action();
    }
    catch (const CbException& e)
    {
        // The path is relative to the repository root; a build through a compiler cache may prefix it.
        const std::string_view header = "core/zqlibraries/zq3dbase/zqtriangulationbase.h";
        if (std::strcmp(e.GetFunction(), function) == 0 && std::string_view(e.GetFile()).ends_with(header))
            return true;
        WriteMessageFormat(eError, L"%S: Ausnahme aus %S in %S statt %S", what, e.GetFunction(), e.GetFile(),
                           function);
        return false;
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
    return ePassed;
}
