// Test of ZqFileFormatGeneric: a serializer with a static and a dynamic triangulation, two polylines
// and two debug geometries (one of them of the dynamic triangulation, which has no key of its own)
// written to a file, read back by the same container, handed over and compared object by object.

#include "zqbase/zqfileformatgeneric.h"

#include "basepool/cbexception.h"
#include "zq3dbase/zqdebuggeometry.h"
#include "zq3dbase/zqmpcomparepolylines.h"
#include "zq3dbase/zqmpcomparetriangulationsold.h"
#include "zq3dbase/zqmptriangulationprimitiveold.h"
#include "zq3dbase/zqpolyline3d.h"
#include "zq3dbase/zqtriangulationdynamic.h"
#include "zq3dbase/zqtriangulationstatic.h"
#include "zqbase/zqdependencyserializer.h"
#include "zqbase/zqfilesystem.h"
#include "zqbase/zqunittest.h"

#include <memory>

class ZqFileFormatGeneric_UnitTest : public ZqUnitTest
{
    CB_DECLARE_RTTI(ZqFileFormatGeneric_UnitTest)

protected:
    EResult runUnitTest(unsigned int index) override;

private:
    EResult createAndCompareUnitTestResult();
    bool createPrimitive(ZqMpTriangulationPrimitiveOld& primitive) const;
    bool compareTriangulations(const ZqTriangulationBase* read, const ZqTriangulationBase& written) const;
    bool comparePolylines(const ZqPolyline3DBase* read, const ZqPolyline3DBase& written) const;
};

CB_IMPLEMENT_RTTI(ZqFileFormatGeneric_UnitTest, ZqUnitTest::RTTI);

ZqUnitTest::EResult ZqFileFormatGeneric_UnitTest::runUnitTest(unsigned int index)
{
    if (index != 0)
        CB_THROW(CbException, "ZqFileFormatGeneric_UnitTest::runUnitTest");
    return createAndCompareUnitTestResult();
}

ZqUnitTest::EResult ZqFileFormatGeneric_UnitTest::createAndCompareUnitTestResult()
{
    ZqMpTriangulationPrimitiveOld sphere;
    sphere.SetInput(ZqMpTriangulationPrimitiveOld::SConfigurationSphere(4));
    ZqMpTriangulationPrimitiveOld cube;
    cube.SetInput(ZqMpTriangulationPrimitiveOld::SConfigurationCube(32, 32, 32));
    if (!createPrimitive(sphere) || !createPrimitive(cube))
        return eFailed;
    const auto triStatic = std::make_shared<ZqTriangulationStatic>(sphere.GetOutput());
    const auto triDynamic = std::make_shared<ZqTriangulationDynamic>(10000);
    *triDynamic = cube.GetOutput();

    const auto polyline = std::make_shared<ZqPolyline3D>();
    const auto polylineOfGeometry = std::make_shared<ZqPolyline3D>();
    for (float i = 0; i < 4; ++i)
    {
        polyline->AppendVertexTail(CbVector3f(i, i * i, 1.0f));
        polylineOfGeometry->AppendVertexTail(CbVector3f(-i, 2.0f, 0.5f * i));
    }

    ZqDependencySerializer serializer;
    serializer.Add(L"triStatic", triStatic);
    serializer.Add(L"geoTriDyn", ZqDebugGeometry(triDynamic, ZqColorRGBA::Chocolate, 17, 0));
    serializer.Add(L"polyLine", polyline);
    serializer.Add(L"geoPolyline", ZqDebugGeometry(polylineOfGeometry, ZqColorRGBA::Aquamarine, 16, 1));

    CString path;
    path.Format(L"%s/%s.gen", ZqFileSystem::GetDirectory(0), L"GenericFileFormatTest");
    ZqFileFormatGeneric file;
    file.Add(L"ZqFileFormatGeneric_UnitTest", serializer);
    file.Write(path);
    file.Read(path);
    const std::unique_ptr<ZqDependencySerializer> read = file.Release(L"ZqFileFormatGeneric_UnitTest");
    if (!read)
    {
        WriteMessage(eError, L"Eintrag \"ZqFileFormatGeneric_UnitTest\" fehlt nach dem Lesen\n");
        return eFailed;
    }

    const auto geoTriDyn = read->Get<ZqDebugGeometry>(L"geoTriDyn");
    const auto geoPolyline = read->Get<ZqDebugGeometry>(L"geoPolyline");
    const bool equal =
        compareTriangulations(read->Get<ZqTriangulationStatic>(L"triStatic").get(), *triStatic) &&
        compareTriangulations(geoTriDyn ? geoTriDyn->GetGeometry<ZqTriangulationDynamic>().get() : nullptr,
                              *triDynamic) &&
        comparePolylines(read->Get<ZqPolyline3D>(L"polyLine").get(), *polyline) &&
        comparePolylines(geoPolyline ? geoPolyline->GetGeometry<ZqPolyline3D>().get() : nullptr,
                         *polylineOfGeometry);
    return equal ? ePassed : eFailed;
}

bool ZqFileFormatGeneric_UnitTest::createPrimitive(ZqMpTriangulationPrimitiveOld& primitive) const
{
    if (primitive.Compute())
        return true;
    WriteMessage(eError, L"Triangulation kann nicht erstellt werden\n");
    return false;
}

bool ZqFileFormatGeneric_UnitTest::compareTriangulations(const ZqTriangulationBase* read,
                                                         const ZqTriangulationBase& written) const
{
    if (!read)
    {
        WriteMessage(eError, L"Triangulation fehlt nach dem Lesen\n");
        return false;
    }
    ZqMpCompareTriangulationsOld compare;
    compare.SetMessageStream(*this);
    return compare.Compute(*read, written, 0.0f, 0.0f);
}

bool ZqFileFormatGeneric_UnitTest::comparePolylines(const ZqPolyline3DBase* read,
                                                    const ZqPolyline3DBase& written) const
{
    if (!read)
    {
        WriteMessage(eError, L"Polylinie fehlt nach dem Lesen\n");
        return false;
    }
    ZqMpComparePolylines compare;
    compare.SetMessageStream(*this);
    compare.SetDebuggingOption(ZqMpComparePolylines::eDO_WriteDifferences);
    compare.SetDebuggingOption(ZqMpComparePolylines::eDO_WriteAllDifferences);
    compare.SetInput(*read, written);
    compare.SetParameters(0.0f);
    return compare.Compute() && compare.GetOutput();
}
