// Triangulation streams of the Geometry generation from untrusted bytes. A refused stream must
// throw CbExceptionWrongFileVersion and leave the target as it was; an accepted one must hold only
// valid corners and finite positions, write back to the very bytes it was read from, and give
// one-rings that visit every triangle of a vertex once.

#include "basepool/cbexception.h"
#include "zq3dbase/geometry/citeratoroneringvertices.h"
#include "zq3dbase/geometry/ctriangulation_serializer.h"
#include "zq3dbase/zqmpcomparetriangulations.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <vector>

using namespace Geometry;

namespace
{
[[noreturn]] void fail(const char* what)
{
    std::fprintf(stderr, "%s\n", what);
    std::abort();
}

bool equal(const CTriangulation& a, const CTriangulation& b)
{
    ZqMpCompareTriangulations compare;
    compare.SetFlags(CbFlags<ZqMpCompareTriangulations::EFlags>::FromBits(
        ZqMpCompareTriangulations::eF_Attributes | ZqMpCompareTriangulations::eF_SerializeSwitches));
    return compare.Compute(a, b);
}

CTriangulation sentinel()
{
    CTriangulation t;
    t.AddVertex({1, 2, 3});
    t.AddVertex({4, 5, 6});
    t.AddVertex({7, 8, 9});
    t.AddTriangle(0, 1, 2);
    t.AddAttribute<CVertexRef, float>(L"sentinel", false);
    return t;
}

void checkRings(const CTriangulation& t)
{
    // Incidences counted from the corners, independently of the relation.
    std::vector<unsigned int> incidences(t.GetVertexCount(), 0);
    for (const CTriangulation::SCorners& c : t.GetTriangles())
    {
        ++incidences[c[0]];
        incidences[c[1]] += c[1] != c[0];
        incidences[c[2]] += c[2] != c[0] && c[2] != c[1];
    }
    CIteratorOneRingVertices vertices(t);
    CIteratorOneRingTriangles triangles(t);
    std::vector<unsigned int> seen;
    for (unsigned int v = 0; v < t.GetVertexCount(); ++v)
    {
        vertices.SetCentre(CVertexRef(v));
        triangles.SetCentre(CVertexRef(v));
        seen.clear();
        for (; !triangles.IsEnd(); triangles.Next())
        {
            if (t.GetCorners(triangles.Get())[triangles.GetCorner()] != v)
                fail("a ring triangle does not hold the centre at its corner");
            seen.push_back(triangles.GetIndex());
        }
        std::sort(seen.begin(), seen.end());
        if (seen.size() != incidences[v] || std::adjacent_find(seen.begin(), seen.end()) != seen.end())
            fail("the triangle ring misses or repeats a triangle");
        unsigned int steps = 0;
        for (; !vertices.IsEnd(); vertices.Next())
            ++steps;
        if (steps != triangles.GetCount() + triangles.GetOpenFanCount())
            fail("the vertex ring does not match its fans");
    }
}
} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    CTriangulation read = sentinel();
    std::uint64_t consumed = 0;
    try
    {
        CbStreamReadBinary stream(data, size);
        stream >> read;
        consumed = stream.GetPosition();
    }
    catch (const CbExceptionWrongFileVersion&)
    {
        if (!equal(read, sentinel()))
            fail("a refused stream changed the target");
        return 0;
    }

    for (const CTriangulation::SCorners& corners : read.GetTriangles())
        for (const unsigned int corner : corners)
            if (corner >= read.GetVertexCount())
                fail("accepted a corner past the vertices");
    for (const CbVector3f& p : read.GetPositions())
        if (!std::isfinite(p.x) || !std::isfinite(p.y) || !std::isfinite(p.z))
            fail("accepted a position that is not finite");

    std::vector<unsigned char> written;
    CbStreamWriteBinary out(written);
    out << read;
    if (written.size() != consumed || std::memcmp(written.data(), data, consumed) != 0)
        fail("the stream does not write back to the bytes it was read from");
    checkRings(read);
    return 0;
}
