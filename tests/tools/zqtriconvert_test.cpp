// The converter between the triangulation file and PLY / OBJ, run as a program: round trips keep the
// mesh, bad input fails with a reason and leaves an existing output file alone.

#include "zq3dbase/triangulationtesting.h"
#include "zq3dbase/zqmpcomparetriangulationsold.h"
#include "zq3dbase/zqtriangulationdynamic.h"

#include <gtest/gtest.h>

#include <array>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <memory>
#include <string>

namespace
{
const std::filesystem::path kConverter = std::filesystem::path(ZQ_BINARY_DIR) / "zqtriconvert";

class ZqTriConvertTest : public ::testing::Test
{
protected:
    void SetUp() override
    {
        if (!std::filesystem::exists(kConverter))
            GTEST_SKIP() << "zqtriconvert was not built (no assimp)";
        m_directory =
            std::filesystem::temp_directory_path() /
            ("zqtriconvert-" + std::string(::testing::UnitTest::GetInstance()->current_test_info()->name()));
        std::filesystem::create_directories(m_directory);
        m_sphere = ZqTriangulationDynamic(MakePrimitive(L"icosahedron", 2));
        m_sphere.SetSerialize(eVA_Normal, true);
        m_sphere.WriteFile(CString(path("sphere.tri").c_str()));
    }
    void TearDown() override { std::filesystem::remove_all(m_directory); }

    std::string path(const char* name) const { return (m_directory / name).string(); }
    // Runs the converter; returns its exit status and puts what it printed into m_output.
    int run(const std::string& arguments)
    {
        const std::string command = kConverter.string() + " " + arguments + " 2>&1";
        std::unique_ptr<FILE, int (*)(FILE*)> pipe(popen(command.c_str(), "r"), pclose);
        m_output.clear();
        std::array<char, 256> buffer;
        while (std::fgets(buffer.data(), buffer.size(), pipe.get()))
            m_output += buffer.data();
        return WEXITSTATUS(pclose(pipe.release()));
    }
    ZqTriangulationDynamic read(const char* name) const
    {
        ZqTriangulationDynamic t;
        t.ReadFile(CString(path(name).c_str()));
        return t;
    }
    bool same(const ZqTriangulationBase& a, const ZqTriangulationBase& b, float tolerance)
    {
        ZqMpCompareTriangulationsOld compare;
        return compare.Compute(a, b, tolerance, tolerance);
    }

    std::filesystem::path m_directory;
    ZqTriangulationDynamic m_sphere;
    std::string m_output;
};
} // namespace

TEST_F(ZqTriConvertTest, PlyRoundTripsExactly)
{
    for (const char* option : {"", "--ascii"})
    {
        ASSERT_EQ(run(std::string(option) + " " + path("sphere.tri") + " " + path("sphere.ply")), 0)
            << m_output;
        EXPECT_EQ(m_output, path("sphere.ply") + ": 162 vertices, 320 triangles\n");
        ASSERT_EQ(run(path("sphere.ply") + " " + path("back.tri")), 0) << m_output;
        const ZqTriangulationDynamic back = read("back.tri");
        EXPECT_TRUE(same(m_sphere, back, 0.0f)) << option;
        EXPECT_TRUE(back.IsPresent(eVA_Normal));
    }
}

TEST_F(ZqTriConvertTest, ObjRoundTripKeepsTheSurface)
{
    ASSERT_EQ(run(path("sphere.tri") + " " + path("sphere.obj")), 0) << m_output;
    ASSERT_EQ(run(path("sphere.obj") + " " + path("back.tri")), 0) << m_output;
    const ZqTriangulationDynamic back = read("back.tri");
    EXPECT_EQ(back.GetVertexCount(), m_sphere.GetVertexCount());
    EXPECT_EQ(back.GetTriangleCount(), m_sphere.GetTriangleCount());
    EXPECT_EQ(WatertightProblem(back), "");
    EXPECT_NEAR(SignedVolume6(back), SignedVolume6(m_sphere), 1e-4);
}

TEST_F(ZqTriConvertTest, FailuresNameTheReasonAndKeepTheOutput)
{
    std::ofstream(path("old.tri")) << "keep me";
    EXPECT_EQ(run(path("missing.ply") + " " + path("old.tri")), 1);
    EXPECT_NE(m_output.find("cannot read"), std::string::npos) << m_output;

    std::ofstream(path("broken.tri"), std::ios::binary) << "ZQTRI\r\n\x1a" << std::string(4, '\x07');
    EXPECT_EQ(run(path("broken.tri") + " " + path("old.tri")), 1);
    EXPECT_NE(m_output.find("unknown version"), std::string::npos) << m_output;

    std::ofstream(path("lines.obj")) << "v 0 0 0\nv 1 0 0\nl 1 2\n";
    EXPECT_EQ(run(path("lines.obj") + " " + path("old.tri")), 1) << m_output;

    EXPECT_EQ(run(path("sphere.tri") + " " + path("sphere.stl")), 2);
    EXPECT_NE(m_output.find("unknown file ending"), std::string::npos) << m_output;
    EXPECT_EQ(run(path("sphere.tri")), 2);

    std::ifstream old(path("old.tri"));
    EXPECT_EQ(std::string(std::istreambuf_iterator<char>(old), {}), "keep me");
    EXPECT_EQ(std::distance(std::filesystem::directory_iterator(m_directory),
                            std::filesystem::directory_iterator()),
              4)
        << "a temporary file was left behind";
}
