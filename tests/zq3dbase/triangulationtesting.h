#pragma once

// Fixtures and checks on whole triangulations shared by the triangulation tests.

#include "zq3dbase/zqmptriangulationprimitive.h"
#include "zq3dbase/zqtriangulationbase.h"

#include <gtest/gtest.h>

#include <map>
#include <set>
#include <string>
#include <utility>

// A primitive of ZqMpTriangulationPrimitive ("icosahedron", "Cube", "Cylinder") of the given subdivision.
inline ZqTriangulationStatic MakePrimitive(const wchar_t* name, unsigned int subdivision)
{
    ZqMpTriangulationPrimitive primitive;
    primitive.SetPrimitive(name);
    ZqTriangulationPrimitiveConfiguration configuration;
    configuration.SetSubdivision(subdivision);
    primitive.SetConfiguration(configuration);
    EXPECT_TRUE(primitive.Compute()) << primitive.GetLastError();
    return primitive.GetOutput();
}

// Empty when every directed edge is used once and its reverse once (closed and consistently
// oriented), else the first offending edge.
inline std::string WatertightProblem(const ZqTriangulationBase& t)
{
    std::map<std::pair<unsigned int, unsigned int>, int> uses;
    for (const ZqTriangleCorners& c : t.GetTriangles())
        for (int k = 0; k < 3; ++k)
            ++uses[{c[k], c[(k + 1) % 3]}];
    for (const auto& [edge, count] : uses)
    {
        const auto reverse = uses.find({edge.second, edge.first});
        if (count != 1 || reverse == uses.end() || reverse->second != 1)
            return "edge " + std::to_string(edge.first) + "-" + std::to_string(edge.second) + " used " +
                   std::to_string(count) + " times, reverse " +
                   std::to_string(reverse == uses.end() ? 0 : reverse->second) + " times";
    }
    return {};
}

// Six times the enclosed volume: positive when the triangles face outward.
inline double SignedVolume6(const ZqTriangulationBase& t)
{
    const auto p = t.GetPositions();
    double volume = 0.0;
    for (const ZqTriangleCorners& c : t.GetTriangles())
        volume += CbVector3d(p[c[0]]).Dot(CbVector3d(p[c[1]]).Cross(CbVector3d(p[c[2]])));
    return volume;
}

// Number of vertices whose position equals an earlier vertex's.
inline unsigned int DuplicateVertexCount(const ZqTriangulationBase& t)
{
    std::set<std::tuple<float, float, float>> seen;
    unsigned int duplicates = 0;
    for (const CbVector3f& p : t.GetPositions())
        duplicates += seen.emplace(p.x, p.y, p.z).second ? 0 : 1;
    return duplicates;
}
