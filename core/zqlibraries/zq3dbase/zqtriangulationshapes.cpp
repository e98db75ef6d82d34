#include "zq3dbase/zqtriangulationshapes.h"

#include <cmath>
#include <cstdint>
#include <unordered_map>
#include <vector>

namespace
{
struct SMesh
{
    std::vector<CbVector3f> positions;
    std::vector<ZqTriangleCorners> triangles;

    // Adds the triangle with its corners ordered so that it faces away from the origin (every shape
    // here is convex around the origin).
    void AddOutward(unsigned int a, unsigned int b, unsigned int c)
    {
        const CbVector3f& pa = positions[a];
        const CbVector3f normal = (positions[b] - pa).Cross(positions[c] - pa);
        if (normal.Dot(pa + positions[b] + positions[c]) < 0.0f)
            std::swap(b, c);
        triangles.push_back({a, b, c});
    }

    void AssignTo(ZqTriangulationBase& target) const
    {
        target.Clear();
        target.Reserve(static_cast<unsigned int>(positions.size()),
                       static_cast<unsigned int>(triangles.size()));
        for (const CbVector3f& p : positions)
            target.AppendVertex(p);
        for (const ZqTriangleCorners& t : triangles)
            target.AppendTriangle(CbVertexRef(t[0]), CbVertexRef(t[1]), CbVertexRef(t[2]));
        ZqTriangulationShapes::ComputeVertexNormals(target);
    }
};

// Splits every triangle into four, levels times, putting the new vertices on the sphere. Edge
// midpoints are shared through a map keyed by the edge's two vertex indices.
void subdivideOnSphere(SMesh& mesh, float radius, unsigned int levels)
{
    for (unsigned int level = 0; level < levels; ++level)
    {
        std::unordered_map<std::uint64_t, unsigned int> midpoints;
        midpoints.reserve(mesh.triangles.size() * 3 / 2);
        const auto midpoint = [&](unsigned int a, unsigned int b)
        {
            const std::uint64_t key = a < b ? (std::uint64_t(a) << 32 | b) : (std::uint64_t(b) << 32 | a);
            const auto [it, inserted] =
                midpoints.try_emplace(key, static_cast<unsigned int>(mesh.positions.size()));
            if (inserted)
                mesh.positions.push_back((mesh.positions[a] + mesh.positions[b]).Normalized() * radius);
            return it->second;
        };
        std::vector<ZqTriangleCorners> finer;
        finer.reserve(mesh.triangles.size() * 4);
        for (const ZqTriangleCorners& t : mesh.triangles)
        {
            const unsigned int ab = midpoint(t[0], t[1]), bc = midpoint(t[1], t[2]),
                               ca = midpoint(t[2], t[0]);
            finer.push_back({t[0], ab, ca});
            finer.push_back({ab, t[1], bc});
            finer.push_back({ca, bc, t[2]});
            finer.push_back({ab, bc, ca});
        }
        mesh.triangles.swap(finer);
    }
}

SMesh polyhedron(std::initializer_list<CbVector3f> corners, std::initializer_list<ZqTriangleCorners> faces,
                 float radius)
{
    SMesh mesh;
    for (const CbVector3f& p : corners)
        mesh.positions.push_back(p.Normalized() * radius);
    for (const ZqTriangleCorners& f : faces)
        mesh.AddOutward(f[0], f[1], f[2]);
    return mesh;
}
} // namespace

void ZqTriangulationShapes::Grid(ZqTriangulationBase& target, unsigned int columns, unsigned int rows)
{
    SMesh mesh;
    for (unsigned int y = 0; y <= rows; ++y)
        for (unsigned int x = 0; x <= columns; ++x)
            mesh.positions.push_back({float(x), float(y), 0.0f});
    for (unsigned int y = 0; y < rows; ++y)
        for (unsigned int x = 0; x < columns; ++x)
        {
            const unsigned int v = y * (columns + 1) + x;
            mesh.triangles.push_back({v, v + 1, v + columns + 2});
            mesh.triangles.push_back({v, v + columns + 2, v + columns + 1});
        }
    mesh.AssignTo(target);
}

void ZqTriangulationShapes::Tetrahedron(ZqTriangulationBase& target, float radius)
{
    polyhedron({{1, 1, 1}, {1, -1, -1}, {-1, 1, -1}, {-1, -1, 1}},
               {{0, 1, 2}, {0, 1, 3}, {0, 2, 3}, {1, 2, 3}}, radius)
        .AssignTo(target);
}

void ZqTriangulationShapes::OctahedronSphere(ZqTriangulationBase& target, float radius,
                                             unsigned int subdivision)
{
    SMesh mesh = polyhedron(
        {{1, 0, 0}, {-1, 0, 0}, {0, 1, 0}, {0, -1, 0}, {0, 0, 1}, {0, 0, -1}},
        {{0, 2, 4}, {2, 1, 4}, {1, 3, 4}, {3, 0, 4}, {2, 0, 5}, {1, 2, 5}, {3, 1, 5}, {0, 3, 5}}, radius);
    subdivideOnSphere(mesh, radius, subdivision);
    mesh.AssignTo(target);
}

void ZqTriangulationShapes::IcosahedronSphere(ZqTriangulationBase& target, float radius,
                                              unsigned int subdivision)
{
    const float g = (1.0f + std::sqrt(5.0f)) / 2.0f;
    SMesh mesh =
        polyhedron({{-1, g, 0},
                    {1, g, 0},
                    {-1, -g, 0},
                    {1, -g, 0},
                    {0, -1, g},
                    {0, 1, g},
                    {0, -1, -g},
                    {0, 1, -g},
                    {g, 0, -1},
                    {g, 0, 1},
                    {-g, 0, -1},
                    {-g, 0, 1}},
                   {{0, 11, 5},  {0, 5, 1},  {0, 1, 7},  {0, 7, 10}, {0, 10, 11}, {1, 5, 9}, {5, 11, 4},
                    {11, 10, 2}, {10, 7, 6}, {7, 1, 8},  {3, 9, 4},  {3, 4, 2},   {3, 2, 6}, {3, 6, 8},
                    {3, 8, 9},   {4, 9, 5},  {2, 4, 11}, {6, 2, 10}, {8, 6, 7},   {9, 8, 1}},
                   radius);
    subdivideOnSphere(mesh, radius, subdivision);
    mesh.AssignTo(target);
}

void ZqTriangulationShapes::Box(ZqTriangulationBase& target, const CbVector3f& size, unsigned int segments)
{
    const unsigned int n = segments;
    SMesh mesh;
    // Grid points (i, j, k) in [0, n]^3 on the surface, each made once.
    std::unordered_map<std::uint64_t, unsigned int> index;
    const auto vertex = [&](unsigned int i, unsigned int j, unsigned int k)
    {
        const std::uint64_t key = (std::uint64_t(i) * (n + 1) + j) * (n + 1) + k;
        const auto [it, inserted] = index.try_emplace(key, static_cast<unsigned int>(mesh.positions.size()));
        if (inserted)
            mesh.positions.push_back({(float(i) / float(n) - 0.5f) * size.x,
                                      (float(j) / float(n) - 0.5f) * size.y,
                                      (float(k) / float(n) - 0.5f) * size.z});
        return it->second;
    };
    for (unsigned int axis = 0; axis < 3; ++axis)
        for (const unsigned int side : {0u, n})
            for (unsigned int u = 0; u < n; ++u)
                for (unsigned int v = 0; v < n; ++v)
                {
                    // Face point (u, v) of the face "axis = side".
                    const auto at = [&](unsigned int a, unsigned int b) {
                        return axis == 0   ? vertex(side, a, b)
                               : axis == 1 ? vertex(a, side, b)
                                           : vertex(a, b, side);
                    };
                    const unsigned int p00 = at(u, v), p10 = at(u + 1, v), p11 = at(u + 1, v + 1),
                                       p01 = at(u, v + 1);
                    mesh.AddOutward(p00, p10, p11);
                    mesh.AddOutward(p00, p11, p01);
                }
    mesh.AssignTo(target);
}

void ZqTriangulationShapes::Cylinder(ZqTriangulationBase& target, float radius, float height,
                                     unsigned int segments, unsigned int rings)
{
    SMesh mesh;
    const float pi = 3.14159265358979f;
    for (unsigned int r = 0; r <= rings; ++r)
        for (unsigned int s = 0; s < segments; ++s)
        {
            const float angle = 2.0f * pi * float(s) / float(segments);
            mesh.positions.push_back({radius * std::cos(angle), radius * std::sin(angle),
                                      height * (float(r) / float(rings) - 0.5f)});
        }
    const auto ring = [segments](unsigned int r, unsigned int s) { return r * segments + s % segments; };
    for (unsigned int r = 0; r < rings; ++r)
        for (unsigned int s = 0; s < segments; ++s)
        {
            mesh.AddOutward(ring(r, s), ring(r, s + 1), ring(r + 1, s + 1));
            mesh.AddOutward(ring(r, s), ring(r + 1, s + 1), ring(r + 1, s));
        }
    const auto bottom = static_cast<unsigned int>(mesh.positions.size());
    mesh.positions.push_back({0, 0, -height / 2});
    mesh.positions.push_back({0, 0, height / 2});
    for (unsigned int s = 0; s < segments; ++s)
    {
        mesh.AddOutward(bottom, ring(0, s), ring(0, s + 1));
        mesh.AddOutward(bottom + 1, ring(rings, s), ring(rings, s + 1));
    }
    mesh.AssignTo(target);
}

void ZqTriangulationShapes::ComputeVertexNormals(ZqTriangulationBase& target)
{
    target.Assert(eVA_Normal);
    const std::span<CbVector3f> normals = target.GetAttribute<eVA_Normal>();
    std::fill(normals.begin(), normals.end(), CbVector3f(0, 0, 0));
    const auto positions = target.GetPositions();
    for (const ZqTriangleCorners& t : target.GetTriangles())
    {
        const CbVector3f n = (positions[t[1]] - positions[t[0]]).Cross(positions[t[2]] - positions[t[0]]);
        for (const unsigned int v : t)
            normals[v] += n;
    }
    for (CbVector3f& n : normals)
        n.Normalize();
}
