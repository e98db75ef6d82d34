// The geometry classes in a generic container file: every object kind round trips through a real
// file, debug geometries keep sharing their geometry in every arrangement, and a damaged geometry
// record is refused with a message that names the object.

#include "zqbase/zqgenericfiletesting.h"

#include "basepool/cbexception.h"
#include "basepool/cbstreamreadbinary.h"
#include "basepool/cbstreamwritebinary.h"
#include "zq3dbase/zqdebuggeometry.h"
#include "zq3dbase/zqmpcomparepolylines.h"
#include "zq3dbase/zqmpcomparetriangulationsold.h"
#include "zq3dbase/zqmptriangulationprimitiveold.h"
#include "zq3dbase/zqpolyline3d.h"
#include "zq3dbase/zqtriangulationdynamic.h"
#include "zq3dbase/zqtriangulationstatic.h"
#include "zqbase/zqdependencyserializer.h"
#include "zqbase/zqfileformatgeneric.h"

#include <filesystem>
#include <gtest/gtest.h>

namespace
{
std::shared_ptr<ZqTriangulationStatic> sphere(unsigned int subdivision)
{
    ZqMpTriangulationPrimitiveOld primitive;
    primitive.SetInput(ZqMpTriangulationPrimitiveOld::SConfigurationSphere(subdivision));
    EXPECT_TRUE(primitive.Compute());
    auto triangulation = std::make_shared<ZqTriangulationStatic>(primitive.GetOutput());
    triangulation->SetSerialize(eVA_Normal, true);
    return triangulation;
}

bool sameTriangulation(const ZqTriangulationBase& a, const ZqTriangulationBase& b)
{
    ZqMpCompareTriangulationsOld compare;
    compare.AddFlags(CbFlags<ZqMpCompareTriangulationsOld::EFlags>::FromBits(
        ZqMpCompareTriangulationsOld::eF_CompareAttributes |
        ZqMpCompareTriangulationsOld::eF_CompareSerializeSwitches));
    return compare.Compute(a, b, 0.0f, 0.0f);
}

bool samePolyline(const ZqPolyline3DBase& a, const ZqPolyline3DBase& b)
{
    ZqMpComparePolylines compare;
    compare.SetInput(a, b);
    return compare.Compute() && compare.GetOutput();
}

} // namespace

TEST(ZqGeometryKindsTest, EveryKindRoundTripsThroughAFile)
{
    const auto triStatic = sphere(2);
    const auto withoutNormals = sphere(1);
    withoutNormals->SetSerialize(eVA_Normal, false);
    const auto triDynamic = std::make_shared<ZqTriangulationDynamic>(*sphere(1));
    const auto polyline = std::make_shared<ZqPolyline3D>(
        std::initializer_list<CbVector3f>{{0, 0, 0}, {1, 0, 0}, {1, 1, 0}, {0, 1, 0.5f}}, true);
    ZqDependencySerializer serializer;
    serializer.Add(L"statisch", triStatic);
    serializer.Add(L"dynamisch", ZqDebugGeometry(triDynamic, ZqColorRGBA(0.1f, 0.2f, 0.3f, 0.4f), 17, 0));
    serializer.Add(L"linie", ZqDebugGeometry(polyline, ZqColorRGBA::Aquamarine, 16, 1));
    serializer.Add(L"leer", ZqDebugGeometry());
    serializer.Add(L"ohneNormalen", withoutNormals);

    const std::filesystem::path path = std::filesystem::temp_directory_path() / "zqgeometrykinds_test.gen";
    ZqFileFormatGeneric file;
    file.Add(L"szene", serializer);
    file.Write(CString(CStringA(path.string().c_str())));
    file.Read(CString(CStringA(path.string().c_str())));
    std::filesystem::remove(path);
    const std::unique_ptr<ZqDependencySerializer> read = file.Release(L"szene");
    ASSERT_TRUE(read);

    const auto readStatic = read->Get<ZqTriangulationStatic>(L"statisch");
    ASSERT_TRUE(readStatic);
    EXPECT_TRUE(sameTriangulation(*readStatic, *triStatic)) << "normals with their switch on come back";
    const auto dynamic = read->Get<ZqDebugGeometry>(L"dynamisch");
    ASSERT_TRUE(dynamic && dynamic->GetGeometry<ZqTriangulationDynamic>());
    EXPECT_TRUE(sameTriangulation(*dynamic->GetGeometry<ZqTriangulationDynamic>(), *triDynamic));
    EXPECT_EQ(dynamic->GetColor(), ZqColorRGBA(0.1f, 0.2f, 0.3f, 0.4f));
    EXPECT_EQ(dynamic->GetDrawMethod(), 17u);
    EXPECT_EQ(dynamic->GetShading(), 0u);
    const auto line = read->Get<ZqDebugGeometry>(L"linie");
    ASSERT_TRUE(line && line->GetGeometry<ZqPolyline3D>());
    EXPECT_TRUE(samePolyline(*line->GetGeometry<ZqPolyline3D>(), *polyline));
    EXPECT_TRUE(line->GetGeometry<ZqPolyline3D>()->IsClosed());
    EXPECT_EQ(line->GetColor(), ZqColorRGBA::Aquamarine);
    EXPECT_EQ(line->GetDrawMethod(), 16u);
    EXPECT_EQ(line->GetShading(), 1u);
    EXPECT_FALSE(read->Get<ZqDebugGeometry>(L"leer")->GetGeometry());
    EXPECT_FALSE(read->Get<ZqTriangulationStatic>(L"ohneNormalen")->IsPresent(eVA_Normal))
        << "an attribute whose serialize switch is off is not written";
}

TEST(ZqGeometryKindsTest, DebugGeometriesAddedBeforeTheirTriangulationShareIt)
{
    const auto mesh = sphere(3);
    ZqDependencySerializer serializer;
    serializer.Add(L"rot", ZqDebugGeometry(mesh, ZqColorRGBA::Red, 16, 0));
    serializer.Add(L"blau", ZqDebugGeometry(mesh, ZqColorRGBA::Blue, 17, 1));
    serializer.Add(L"mesh", mesh);

    std::vector<unsigned char> tri;
    CbStreamWriteBinary triStream(tri);
    mesh->Serialize(triStream);
    const std::vector<unsigned char> bytes = written(serializer);
    EXPECT_LT(bytes.size(), tri.size() + 300) << "the triangulation is written once";
    const ZqDependencySerializer read = readBack(bytes);
    const auto readMesh = read.Get<ZqTriangulationStatic>(L"mesh");
    ASSERT_TRUE(readMesh);
    EXPECT_EQ(read.Get<ZqDebugGeometry>(L"rot")->GetGeometry<ZqTriangulationStatic>(), readMesh);
    EXPECT_EQ(read.Get<ZqDebugGeometry>(L"blau")->GetGeometry<ZqTriangulationStatic>(), readMesh);
    EXPECT_TRUE(sameTriangulation(*readMesh, *mesh));
}

TEST(ZqGeometryKindsTest, DamagedGeometryRecordsAreRefusedNamingTheObject)
{
    const auto refusal = [](const std::string& kind, const ZqBytes& record)
    {
        ZqBytes bytes;
        bytes.u32(1).u32(1).text(kind).u32(1).u32(1).record(0, record).u32(1).text("k").u32(0);
        ZqDependencySerializer serializer;
        CbStreamReadBinary stream(bytes.data());
        try
        {
            serializer.Read(stream);
        }
        catch (const CbExceptionWrongFileVersion& exception)
        {
            return std::string(exception.GetDetail());
        }
        return std::string("accepted");
    };
    EXPECT_EQ(refusal("ZqPolyline3DKind", ZqBytes().raw("\2", 1).u32(0)),
              "object 0 (ZqPolyline3DKind): closed flag 2, expected 0 or 1");
    EXPECT_EQ(refusal("ZqPolyline3DKind", ZqBytes().raw("\0", 1).u32(1000000))
                  .find("object 0 (ZqPolyline3DKind): "),
              0u);

    std::vector<unsigned char> tri;
    CbStreamWriteBinary stream(tri);
    sphere(0)->Serialize(stream);
    tri.resize(tri.size() - 5);
    EXPECT_EQ(refusal("ZqTriangulationStaticKind", ZqBytes().bytes(tri))
                  .find("object 0 (ZqTriangulationStaticKind): "),
              0u);
    EXPECT_EQ(refusal("ZqDebugGeometryKind", ZqBytes().u32(0)),
              "object 0 (ZqDebugGeometryKind) refers to object 0, which is not written before it");
}
