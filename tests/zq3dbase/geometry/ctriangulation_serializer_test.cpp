// Streams of Geometry::CTriangulation: what a round trip keeps (only the attributes switched on),
// and the refusal of damaged bytes, which must leave the target as it was.

#include "geometryfixtures.h"
#include "zq3dbase/geometry/cattributehandle.h"
#include "zq3dbase/geometry/ctriangulation_serializer.h"
#include "zq3dbase/zqmpcomparetriangulations.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <limits>
#include <vector>

using namespace Geometry;
using GeometryFixtures::thrown;

namespace
{
CTriangulation withAttributes()
{
    CTriangulation t = GeometryFixtures::Octahedron();
    t.AddAttribute<CVertexRef, double>(L"curvature", true);
    t.AddAttribute<CTriangleRef, ZqColorRGBA>(L"Farbe ä", true);
    t.AddAttribute<CVertexRef, float>(L"scratch", false);
    CAttributeHandle<CVertexRef, double> curvature(t, L"curvature");
    CAttributeHandle<CTriangleRef, ZqColorRGBA> colour(t, L"Farbe ä");
    CAttributeHandle<CVertexRef, float> scratch(t, L"scratch");
    for (unsigned int v = 0; v < t.GetVertexCount(); ++v)
    {
        curvature[CVertexRef(v)] = 1.0 / (v + 3);
        scratch[CVertexRef(v)] = float(v);
    }
    colour[CTriangleRef(7)] = ZqColorRGBA::Chocolate;
    return t;
}

std::vector<unsigned char> bytesOf(const CTriangulation& t)
{
    std::vector<unsigned char> bytes;
    CbStreamWriteBinary stream(bytes);
    stream << t;
    return bytes;
}

// Reads bytes into target; returns the detail of the CbExceptionWrongFileVersion thrown, or "".
std::string refusal(const std::vector<unsigned char>& bytes, CTriangulation& target)
{
    try
    {
        CbStreamReadBinary stream(bytes);
        stream >> target;
    }
    catch (const CbExceptionWrongFileVersion& e)
    {
        return e.GetDetail()[0] ? e.GetDetail() : "truncated";
    }
    return "";
}

bool equal(const CTriangulation& a, const CTriangulation& b)
{
    ZqMpCompareTriangulations compare;
    compare.SetFlags(CbFlags<ZqMpCompareTriangulations::EFlags>::FromBits(
        ZqMpCompareTriangulations::eF_Attributes | ZqMpCompareTriangulations::eF_SerializeSwitches));
    return compare.Compute(a, b);
}

template <class T> void patch(std::vector<unsigned char>& bytes, std::size_t offset, T value)
{
    std::memcpy(bytes.data() + offset, &value, sizeof(T));
}
} // namespace

TEST(TriangulationStream, ARoundTripKeepsTheAttributesSwitchedOn)
{
    const CTriangulation original = withAttributes();
    CTriangulation read = GeometryFixtures::Grid(2);
    ASSERT_EQ(refusal(bytesOf(original), read), "");

    CTriangulation expected = original;
    expected.RemoveAttribute(L"scratch");
    EXPECT_TRUE(equal(read, expected));
    EXPECT_FALSE(read.HasAttribute(L"scratch"));
    EXPECT_TRUE(read.IsSerialized(L"Farbe ä"));
}

TEST(TriangulationStream, DamagedBytesAreRefusedWithAReasonAndTheTargetKept)
{
    const std::vector<unsigned char> good = bytesOf(withAttributes());
    // Offsets: magic 0, version 4, V 8, T 12, positions 16, corners 16 + 6 * 12 = 88, A 184, the first
    // attribute's name count 188, "curvature" 192, domain 201, type 205, values 209, the second's 257.
    struct SCase
    {
        const char* reason;
        std::function<void(std::vector<unsigned char>&)> damage;
    };
    const SCase cases[] = {
        {"wrong magic", [](auto& b) { b[0] = 'X'; }},
        {"unknown version 2", [](auto& b) { patch<std::uint32_t>(b, 4, 2); }},
        {"unknown version 0", [](auto& b) { patch<std::uint32_t>(b, 4, 0); }},
        {"1000000 positions do not fit", [](auto& b) { patch<std::uint32_t>(b, 8, 1000000); }},
        {"4294967295 triangles do not fit", [](auto& b) { patch<std::uint32_t>(b, 12, 0xFFFFFFFFu); }},
        {"triangle 2 names vertex 6 of 6", [](auto& b) { patch<std::uint32_t>(b, 88 + 2 * 12 + 4, 6); }},
        {"triangle 7 names a vertex twice", [](auto& b) { patch<std::uint32_t>(b, 88 + 7 * 12 + 8, 0); }},
        {"position 1 is not finite",
         [](auto& b) { patch(b, 16 + 12 + 8, std::numeric_limits<float>::quiet_NaN()); }},
        {"position 5 is not finite", [](auto& b) { patch(b, 16 + 60, -INFINITY); }},
        {"attributes do not fit", [](auto& b) { patch<std::uint32_t>(b, 184, 1000); }},
        {"of domain 3", [](auto& b) { patch<std::uint32_t>(b, 184 + 4 + 4 + 9, 3); }},
        {"of type 7", [](auto& b) { patch<std::uint32_t>(b, 184 + 4 + 4 + 9 + 4, 7); }},
        {"not UTF-8 text", [](auto& b) { b[193] = 0xFF; }},
        // The second name ("Farbe ä", 8 bytes at 261) becomes "curvature", running into its domain.
        {"attribute \"curvature\" twice",
         [](auto& b)
         {
             patch<std::uint32_t>(b, 257, 9);
             std::memcpy(b.data() + 261, "curvature", 9);
         }},
    };
    for (const SCase& test : cases)
    {
        std::vector<unsigned char> bytes = good;
        test.damage(bytes);
        CTriangulation target = GeometryFixtures::Grid(3);
        EXPECT_NE(refusal(bytes, target).find(test.reason), std::string::npos)
            << test.reason << ": " << refusal(bytes, target);
        EXPECT_TRUE(equal(target, GeometryFixtures::Grid(3))) << test.reason;
    }

    // Truncated at every byte.
    for (std::size_t size = 0; size < good.size(); ++size)
    {
        CTriangulation target = GeometryFixtures::Grid(2);
        ASSERT_NE(refusal({good.begin(), good.begin() + size}, target), "") << size;
        ASSERT_EQ(target.GetVertexCount(), 4u);
    }
}
