// The triangulation file: round trips of every attribute kind, and the reader refusing damaged or
// hostile bytes with a reason while the caller's triangulation stays as it was.

#include "basepool/cbexception.h"
#include "zq3dbase/zqmpcomparetriangulationsold.h"
#include "zq3dbase/zqmptriangulationprimitiveold.h"
#include "zq3dbase/zqparametrizationplanar.h"
#include "zq3dbase/zqtriangulationdynamic.h"
#include "zq3dbase/zqtriangulationfile.h"
#include "zq3dbase/zqtriangulationstatic.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <limits>
#include <string>
#include <vector>

namespace
{
// Two triangles sharing an edge, with normals, a parameter attribute with a planar parametrization
// and a triangle material, all switched on for the file.
ZqTriangulationDynamic makeSquare()
{
    ZqTriangulationDynamic t;
    t.AddVertex({0, 0, 0});
    t.AddVertex({1, 0, 0});
    t.AddVertex({1, 1, 0});
    t.AddVertex({0, 1, 0});
    t.AddTriangle(0u, 1u, 2u);
    t.AddTriangle(0u, 2u, 3u);
    for (EVertexAttribute a : {eVA_Normal, eVA_Parameter})
    {
        t.Assert(a);
        t.SetSerialize(a, true);
    }
    t.Assert(eTA_Material);
    t.SetSerialize(eTA_Material, true);
    t.SetAttributeParameter(
        eVA_Parameter,
        CbMakeSmart<ZqParametrizationPlanar>(CbVector3f(1, 2, 3), CbVector3f(0, 1, 0), CbVector3f(0, 0, 2)));
    for (unsigned int v = 0; v < 4; ++v)
    {
        t.Get<eVA_Normal>(CbVertexRef(v)) = {0, 0, 1};
        t.Get<eVA_Parameter>(CbVertexRef(v)) = {float(v), -float(v)};
    }
    t.Get<eTA_Material>(CbTriangleRef(1)) = 7;
    return t;
}

std::vector<unsigned char> bytesOf(const ZqTriangulationBase& t)
{
    std::vector<unsigned char> bytes;
    CbStreamWriteBinary stream(bytes);
    t.Serialize(stream);
    return bytes;
}

bool same(const ZqTriangulationBase& a, const ZqTriangulationBase& b)
{
    ZqMpCompareTriangulationsOld compare;
    compare.SetFlags(CbFlags<ZqMpCompareTriangulationsOld::EFlags>::FromBits(
        ZqMpCompareTriangulationsOld::eF_CompareAttributes |
        ZqMpCompareTriangulationsOld::eF_CompareParameters));
    compare.SetInput(a, b);
    compare.SetParameters(0.0f);
    return compare.Compute() && compare.GetOutput();
}

// Reads bytes into a triangulation that already holds the square; returns the refusal's reason
// ("" when the bytes were accepted) and checks that a refusal left the triangulation untouched.
std::string refusal(const std::vector<unsigned char>& bytes)
{
    const ZqTriangulationDynamic original = makeSquare();
    ZqTriangulationDynamic target = original;
    CbStreamReadBinary stream(bytes);
    try
    {
        target.Serialize(stream);
    }
    catch (const CbExceptionWrongFileVersion& e)
    {
        EXPECT_TRUE(same(original, target)) << "a refused read changed the triangulation: " << e.GetDetail();
        return e.GetDetail();
    }
    return "";
}

template <class T> void put(std::vector<unsigned char>& bytes, std::size_t offset, T value)
{
    std::memcpy(bytes.data() + offset, &value, sizeof(T));
}

// Offsets in the file of the square (4 vertices, 2 triangles).
constexpr std::size_t kVersionOffset = 8, kVertexCountOffset = 12, kTriangleCountOffset = 16,
                      kAttributeCountOffset = 20, kPositionsOffset = 24, kTrianglesOffset = 24 + 4 * 12,
                      kAttributesOffset = kTrianglesOffset + 2 * 12;
} // namespace

TEST(ZqTriangulationFileTest, RoundTripKeepsSwitchedOnAttributesAndParameters)
{
    const ZqTriangulationDynamic square = makeSquare();
    ZqTriangulationStatic read;
    const std::vector<unsigned char> bytes = bytesOf(square);
    CbStreamReadBinary stream(bytes);
    read.Serialize(stream);
    EXPECT_TRUE(stream.IsAtEnd());
    EXPECT_TRUE(same(square, read));
    EXPECT_EQ(read.Get<eTA_Material>(CbTriangleRef(1)), 7u);
    EXPECT_TRUE(read.GetSerialize(eVA_Normal) && read.GetSerialize(eTA_Material));
    EXPECT_FALSE(read.HasVertexTriangleRelationship());
}

TEST(ZqTriangulationFileTest, AttributesWithTheSwitchOffStayOut)
{
    ZqTriangulationDynamic square = makeSquare();
    square.SetSerialize(eVA_Parameter, false);
    square.Assert(eVA_Color);
    ZqTriangulationDynamic read;
    const std::vector<unsigned char> bytes = bytesOf(square);
    CbStreamReadBinary stream(bytes);
    read.Serialize(stream);
    EXPECT_TRUE(read.IsPresent(eVA_Normal));
    EXPECT_FALSE(read.IsPresent(eVA_Parameter));
    EXPECT_FALSE(read.IsPresent(eVA_Color));
}

TEST(ZqTriangulationFileTest, UnknownAttributesAreSkippedAndKnownOnesOfAnotherLayoutRefused)
{
    const ZqTriangulationDynamic square = makeSquare();
    const float occlusion[4] = {0.1f, 0.2f, 0.3f, 0.4f};
    ZqTriangulationFile::SAttribute extra;
    extra.name = "ambientOcclusion";
    extra.data = occlusion;
    std::vector<unsigned char> bytes;
    CbStreamWriteBinary writer(bytes);
    ZqTriangulationFile::Write(writer, square.GetPositions(), square.GetTriangles(), {&extra, 1});
    ZqTriangulationDynamic read;
    CbStreamReadBinary reader(bytes);
    read.Serialize(reader);
    EXPECT_EQ(read.GetVertexCount(), 4u);
    EXPECT_TRUE(reader.IsAtEnd());

    extra.name = "normal"; // one float where three are expected
    bytes.clear();
    CbStreamWriteBinary writer2(bytes);
    ZqTriangulationFile::Write(writer2, square.GetPositions(), square.GetTriangles(), {&extra, 1});
    EXPECT_NE(refusal(bytes).find("'normal' has 1 float32 components, expected 3"), std::string::npos);
}

TEST(ZqTriangulationFileTest, HeaderRefusals)
{
    const std::vector<unsigned char> good = bytesOf(makeSquare());
    ASSERT_EQ(refusal(good), "");

    std::vector<unsigned char> bytes = good;
    bytes[0] = 'X';
    EXPECT_NE(refusal(bytes).find("not a triangulation file"), std::string::npos);

    bytes = good;
    put<std::uint32_t>(bytes, kVersionOffset, 2);
    EXPECT_NE(refusal(bytes).find("unknown version 2"), std::string::npos);

    bytes = good;
    put<std::uint32_t>(bytes, kVertexCountOffset, 0x10000000u);
    EXPECT_NE(refusal(bytes).find("counts are larger than the file"), std::string::npos);

    bytes = good;
    put<std::uint32_t>(bytes, kTriangleCountOffset, 0xFFFFFFFFu);
    EXPECT_NE(refusal(bytes).find("exceed the limit"), std::string::npos);

    bytes = good;
    put<std::uint32_t>(bytes, kAttributeCountOffset, 1000);
    EXPECT_NE(refusal(bytes).find("attributes exceed the limit"), std::string::npos);
}

TEST(ZqTriangulationFileTest, GeometryRefusals)
{
    const std::vector<unsigned char> good = bytesOf(makeSquare());
    std::vector<unsigned char> bytes = good;
    put<float>(bytes, kPositionsOffset + 2 * 12 + 4, std::numeric_limits<float>::quiet_NaN());
    EXPECT_EQ(refusal(bytes), "vertex 2 has a coordinate that is not a finite number");

    bytes = good;
    put<float>(bytes, kPositionsOffset, -std::numeric_limits<float>::infinity());
    EXPECT_EQ(refusal(bytes), "vertex 0 has a coordinate that is not a finite number");

    bytes = good;
    put<std::uint32_t>(bytes, kTrianglesOffset + 12 + 8, 4);
    EXPECT_EQ(refusal(bytes), "corner 2 of triangle 1 is vertex 4, but there are 4 vertices");

    bytes = good;
    put<std::uint32_t>(bytes, kTrianglesOffset + 4, 0);
    EXPECT_EQ(refusal(bytes), "triangle 0 uses a vertex twice");
}

TEST(ZqTriangulationFileTest, AttributeRefusals)
{
    const std::vector<unsigned char> good = bytesOf(makeSquare());
    // The first attribute is the parameters (vertex attribute 1) with its planar parametrization.
    const std::size_t descriptor = kAttributesOffset;
    const std::size_t name = descriptor + 8;
    ASSERT_EQ(std::string(good.begin() + name, good.begin() + name + 10), "parameters");
    const std::size_t kind = name + 10 + 4;
    ASSERT_EQ(std::string(good.begin() + kind, good.begin() + kind + 6), "planar");

    const struct
    {
        std::size_t offset;
        unsigned char value;
        const char* reason;
    } cases[] = {
        {descriptor, 2, "unknown element kind 2"}, {descriptor + 1, 9, "unknown scalar type 9"},
        {descriptor + 2, 0, "of 0 components"},    {descriptor + 3, 1, "reserved bits"},
        {name + 3, ' ', "characters outside"},     {kind, 'q', "unknown kind 'qlanar'"},
    };
    for (const auto& c : cases)
    {
        std::vector<unsigned char> bytes = good;
        bytes[c.offset] = c.value;
        const std::string reason = refusal(bytes);
        EXPECT_NE(reason.find(c.reason), std::string::npos) << "offset " << c.offset << ": " << reason;
    }

    // The same attribute twice.
    ZqTriangulationDynamic square = makeSquare();
    ZqTriangulationFile::SAttribute normal;
    normal.name = "normal";
    normal.components = 3;
    normal.data = square.GetAttribute<eVA_Normal>().data();
    const ZqTriangulationFile::SAttribute twice[] = {normal, normal};
    std::vector<unsigned char> bytes;
    CbStreamWriteBinary writer(bytes);
    ZqTriangulationFile::Write(writer, square.GetPositions(), square.GetTriangles(), twice);
    EXPECT_EQ(refusal(bytes), "attribute 'normal' appears twice");
}

TEST(ZqTriangulationFileTest, TruncationAtEveryByteIsRefused)
{
    const std::vector<unsigned char> good = bytesOf(makeSquare());
    for (std::size_t size = 0; size < good.size(); ++size)
    {
        const std::vector<unsigned char> cut(good.begin(), good.begin() + size);
        const std::string reason = refusal(cut);
        EXPECT_NE(reason, "") << "accepted " << size << " of " << good.size() << " bytes";
        if (size >= kAttributesOffset)
        {
            EXPECT_TRUE(reason.find("the data ends inside") != std::string::npos ||
                        reason.find("remain") != std::string::npos)
                << size << ": " << reason;
        }
    }
}

class ZqTriangulationFileOnDiskTest : public ::testing::Test
{
protected:
    void SetUp() override
    {
        m_directory = std::filesystem::temp_directory_path() /
                      ("zqtri-" + std::to_string(::testing::UnitTest::GetInstance()->random_seed()) + "-" +
                       ::testing::UnitTest::GetInstance()->current_test_info()->name());
        std::filesystem::create_directories(m_directory);
    }
    void TearDown() override { std::filesystem::remove_all(m_directory); }
    CString path(const char* name) const { return CString((m_directory / name).string().c_str()); }
    std::size_t fileCount() const
    {
        return std::distance(std::filesystem::directory_iterator(m_directory),
                             std::filesystem::directory_iterator());
    }

    std::filesystem::path m_directory;
};

TEST_F(ZqTriangulationFileOnDiskTest, TrailingBytesAreRefusedByReadFile)
{
    const ZqTriangulationDynamic square = makeSquare();
    square.WriteFile(path("square.tri"));
    EXPECT_EQ(fileCount(), 1u) << "the temporary file was left behind";
    std::ofstream(m_directory / "square.tri", std::ios::app | std::ios::binary) << 'x';
    ZqTriangulationStatic read;
    try
    {
        read.ReadFile(path("square.tri"));
        FAIL() << "trailing byte accepted";
    }
    catch (const CbExceptionWrongFileVersion& e)
    {
        EXPECT_EQ(e.GetDetail(), "bytes after the triangulation, from byte " +
                                     std::to_string(bytesOf(square).size()) + " on");
    }
    EXPECT_EQ(read.GetVertexCount(), 0u);
}

TEST_F(ZqTriangulationFileOnDiskTest, AFailedWriteKeepsTheOldFile)
{
    ZqTriangulationDynamic square = makeSquare();
    square.WriteFile(path("square.tri"));
    const auto size = std::filesystem::file_size(m_directory / "square.tri");
    // A name longer than the file system allows makes the temporary file fail; nothing may change.
    EXPECT_THROW(square.WriteFile(path((std::string(300, 'a') + ".tri").c_str())), CbExceptionFile);
    EXPECT_THROW(square.WriteFile(path("missing/square.tri")), CbExceptionFile);
    EXPECT_EQ(fileCount(), 1u);
    EXPECT_EQ(std::filesystem::file_size(m_directory / "square.tri"), size);
    ZqTriangulationDynamic read;
    read.ReadFile(path("square.tri"));
    EXPECT_TRUE(same(square, read));
}
