// Hole filling: ZqFtTriangulationFillHolesEarCut and the first-generation ZqFtTriangulationFillHolesEarcutOld
// against CGAL's triangulate_hole, measured in the same run, on a sphere of latitude rings whose cap
// is cut away, leaving a hole of 10^3 or 10^4 rim vertices:
// - planar: the rim lies in the plane z = 0.5, its vertices at irregular angles and radii;
// - wavy: the rim stays on the sphere and waves up and down six times round (not planar).
// Times exclude copying the mesh (ours: with its vertex-triangle relation, CGAL: its halfedge mesh).
// After the timings and their ratios it prints the shape of each fill: the smallest angle of a fill
// triangle and the largest dihedral angle between a fill triangle and a neighbour (fill or surface).
//
// CGAL gets the options that suit each hole: the 2D constrained Delaunay triangulation in the rim's
// plane for the planar hole, the 3D Delaunay search space (without the cubic fallback) for the wavy one.

#include "basepool/benchratio.h"
#include "zq3dbase/zqfttriangulationfillholesearcut.h"
#include "zq3dbase/zqfttriangulationfillholesearcutold.h"
#include "zq3dbase/zqtriangulationdynamic.h"

#if defined(ZQ_HAVE_CGAL)
#include <CGAL/Exact_predicates_inexact_constructions_kernel.h>
#include <CGAL/Polygon_mesh_processing/triangulate_hole.h>
#include <CGAL/Surface_mesh.h>
#endif

#include <array>
#include <cmath>
#include <cstdio>
#include <map>
#include <numbers>
#include <random>
#include <set>
#include <string>
#include <unordered_map>
#include <vector>

namespace
{
using STriangle = std::array<unsigned int, 3>;

struct SMesh
{
    std::vector<CbVector3f> positions;
    std::vector<STriangle> triangles;
};

// Latitude rings of n vertices from the rim (ring 0) down to a south pole; the cap above ring 0 is
// missing. Triangles face outwards; the first 2n, one pair per rim edge, border the hole in order.
SMesh sphereWithHole(unsigned int n, bool wavy)
{
    constexpr unsigned int kRings = 8;
    constexpr double kRimPolar = std::numbers::pi / 3.0;
    std::mt19937 random(n + (wavy ? 1 : 0));
    std::uniform_real_distribution<double> jitter(-0.3, 0.3);
    SMesh mesh;
    for (unsigned int ring = 0; ring < kRings; ++ring)
        for (unsigned int i = 0; i < n; ++i)
        {
            const double azimuth = 2.0 * std::numbers::pi * (i + (ring == 0 ? jitter(random) : 0.0)) / n;
            double polar = kRimPolar + ring * (std::numbers::pi - kRimPolar) / kRings;
            double radius = std::sin(polar), z = std::cos(polar);
            if (ring == 0 && wavy)
            {
                polar += 0.15 * std::sin(6.0 * azimuth);
                radius = std::sin(polar);
                z = std::cos(polar);
            }
            else if (ring == 0)
                radius *= 1.0 + 0.1 * jitter(random);
            mesh.positions.push_back(
                CbVector3f(CbVector3d(radius * std::cos(azimuth), radius * std::sin(azimuth), z)));
        }
    mesh.positions.push_back({0, 0, -1});
    const auto at = [n](unsigned int ring, unsigned int i) { return ring * n + i % n; };
    for (unsigned int ring = 0; ring + 1 < kRings; ++ring)
        for (unsigned int i = 0; i < n; ++i)
        {
            mesh.triangles.push_back({at(ring, i), at(ring + 1, i), at(ring, i + 1)});
            mesh.triangles.push_back({at(ring, i + 1), at(ring + 1, i), at(ring + 1, i + 1)});
        }
    const unsigned int pole = kRings * n;
    for (unsigned int i = 0; i < n; ++i)
        mesh.triangles.push_back({at(kRings - 1, i), pole, at(kRings - 1, i + 1)});
    return mesh;
}

const SMesh& cachedMesh(unsigned int n, bool wavy)
{
    static std::map<std::pair<unsigned int, bool>, SMesh> meshes;
    auto it = meshes.find({n, wavy});
    if (it == meshes.end())
        it = meshes.emplace(std::make_pair(n, wavy), sphereWithHole(n, wavy)).first;
    return it->second;
}

ZqTriangulationDynamic toTriangulation(const SMesh& mesh)
{
    ZqTriangulationDynamic triangulation(static_cast<unsigned int>(mesh.triangles.size()));
    for (const CbVector3f& p : mesh.positions)
        triangulation.AddVertex(p);
    for (const STriangle& t : mesh.triangles)
        triangulation.AddTriangle(t[0], t[1], t[2]);
    triangulation.ComputeVertexTriangleRelationship();
    return triangulation;
}

// The rim as the old filter takes it: the triangle along each rim edge, in order.
ZqPolylineTriangulationList rimOf(const ZqTriangulationBase& triangulation, unsigned int n)
{
    ZqPolylineTriangulation rim(triangulation);
    for (unsigned int i = 0; i < n; ++i)
        rim.AppendVertexTail(CbVertexRef(), CbTriangleRef(2 * i));
    ZqPolylineTriangulationList holes;
    holes.AddTail(rim);
    return holes;
}

struct SQuality
{
    unsigned int triangles = 0;
    double smallestAngle = 180.0;
    double largestDihedral = 0.0;
};

double degrees(const CbVector3d& u, const CbVector3d& v)
{
    return std::atan2(Cross(u, v).Length(), u.Dot(v)) * 180.0 / std::numbers::pi;
}

// The shape of the triangles from index first on, all triangles given by their corners.
SQuality quality(const std::vector<CbVector3f>& positions, const std::vector<STriangle>& triangles,
                 std::size_t first)
{
    const auto p = [&](unsigned int v) { return CbVector3d(positions[v]); };
    const auto normal = [&](const STriangle& t)
    { return Cross(p(t[1]) - p(t[0]), p(t[2]) - p(t[0])).Normalized(); };
    std::unordered_map<std::uint64_t, std::size_t> byEdge;
    for (std::size_t i = 0; i < triangles.size(); ++i)
        for (unsigned int k = 0; k < 3; ++k)
            byEdge[std::uint64_t(triangles[i][k]) << 32 | triangles[i][(k + 1) % 3]] = i;
    SQuality q;
    q.triangles = static_cast<unsigned int>(triangles.size() - first);
    for (std::size_t i = first; i < triangles.size(); ++i)
    {
        const STriangle& t = triangles[i];
        for (unsigned int k = 0; k < 3; ++k)
        {
            const unsigned int a = t[k], b = t[(k + 1) % 3], c = t[(k + 2) % 3];
            q.smallestAngle = std::min(q.smallestAngle, degrees(p(b) - p(a), p(c) - p(a)));
            const auto other = byEdge.find(std::uint64_t(b) << 32 | a);
            if (other != byEdge.end())
                q.largestDihedral =
                    std::max(q.largestDihedral, degrees(normal(t), normal(triangles[other->second])));
        }
    }
    return q;
}

std::vector<STriangle> trianglesOf(const ZqTriangulationBase& triangulation)
{
    return {triangulation.GetTriangles().begin(), triangulation.GetTriangles().end()};
}

std::map<std::string, SQuality> s_quality;

// The benchmark's name, as registered below.
std::string nameOf(const char* method, bool wavy, unsigned int n)
{
    std::string name = method;
    name += wavy ? "/wavy/" : "/planar/";
    name += std::to_string(n);
    return name;
}

template <bool Old> void fillOurs(benchmark::State& state, bool wavy)
{
    const unsigned int n = static_cast<unsigned int>(state.range(0));
    const SMesh& mesh = cachedMesh(n, wavy);
    const ZqTriangulationDynamic prepared = toTriangulation(mesh);
    ZqTriangulationDynamic triangulation;
    for (auto _ : state)
    {
        state.PauseTiming();
        triangulation = prepared;
        triangulation.ComputeVertexTriangleRelationship();
        const ZqPolylineTriangulationList holes = rimOf(triangulation, n);
        state.ResumeTiming();
        bool filled;
        if constexpr (Old)
        {
            ZqFtTriangulationFillHolesEarcutOld filter;
            filter.SetInput(triangulation, holes);
            filled = filter.Compute();
        }
        else
        {
            ZqFtTriangulationFillHolesEarCut filter;
            filter.SetInput(triangulation, holes);
            filled = filter.Compute();
        }
        if (!filled)
            state.SkipWithError("the filter failed");
    }
    s_quality[nameOf(Old ? "old" : "ours", wavy, n)] =
        quality(mesh.positions, trianglesOf(triangulation), mesh.triangles.size());
}

void ours(benchmark::State& state, bool wavy)
{
    fillOurs<false>(state, wavy);
}

void old(benchmark::State& state, bool wavy)
{
    fillOurs<true>(state, wavy);
}

#if defined(ZQ_HAVE_CGAL)
using Kernel = CGAL::Exact_predicates_inexact_constructions_kernel;
using Mesh = CGAL::Surface_mesh<Kernel::Point_3>;

void cgal(benchmark::State& state, bool wavy)
{
    const unsigned int n = static_cast<unsigned int>(state.range(0));
    const SMesh& source = cachedMesh(n, wavy);
    Mesh prepared;
    for (const CbVector3f& p : source.positions)
        prepared.add_vertex(Kernel::Point_3(p.x, p.y, p.z));
    for (const STriangle& t : source.triangles)
        prepared.add_face(Mesh::Vertex_index(t[0]), Mesh::Vertex_index(t[1]), Mesh::Vertex_index(t[2]));
    Mesh mesh;
    std::vector<Mesh::Face_index> patch;
    for (auto _ : state)
    {
        state.PauseTiming();
        mesh = prepared;
        patch.clear();
        Mesh::Halfedge_index border;
        for (Mesh::Halfedge_index h : mesh.halfedges())
            if (mesh.is_border(h))
            {
                border = h;
                break;
            }
        state.ResumeTiming();
        namespace parameters = CGAL::parameters;
        if (wavy)
            CGAL::Polygon_mesh_processing::triangulate_hole(mesh, border, std::back_inserter(patch),
                                                            parameters::do_not_use_cubic_algorithm(true));
        else
            CGAL::Polygon_mesh_processing::triangulate_hole(
                mesh, border, std::back_inserter(patch),
                parameters::use_2d_constrained_delaunay_triangulation(true));
        if (patch.empty())
            state.SkipWithError("triangulate_hole made no triangles");
    }
    // The mesh with the patch faces last.
    std::vector<CbVector3f> positions;
    for (Mesh::Vertex_index v : mesh.vertices())
    {
        const Kernel::Point_3& p = mesh.point(v);
        positions.push_back(CbVector3f(CbVector3d(p.x(), p.y(), p.z())));
    }
    std::vector<STriangle> triangles;
    const auto corners = [&](Mesh::Face_index f)
    {
        STriangle t{};
        unsigned int k = 0;
        for (Mesh::Vertex_index v : CGAL::vertices_around_face(mesh.halfedge(f), mesh))
            t[k++ % 3] = static_cast<unsigned int>(v);
        return t;
    };
    const std::set<Mesh::Face_index> fill(patch.begin(), patch.end());
    for (Mesh::Face_index f : mesh.faces())
        if (!fill.contains(f))
            triangles.push_back(corners(f));
    const std::size_t first = triangles.size();
    for (Mesh::Face_index f : patch)
        triangles.push_back(corners(f));
    s_quality[nameOf("cgal", wavy, n)] = quality(positions, triangles, first);
}
#endif

void registerAll(std::vector<SBenchRatio>& ratios)
{
    for (const bool wavy : {false, true})
        for (const unsigned int n : {1000u, 10000u})
        {
            // Registered as "method/hole" with the argument n: named "method/hole/n" like nameOf.
            const auto add = [&](const char* method, void (*function)(benchmark::State&, bool))
            {
                std::string name = nameOf(method, wavy, n);
                name.resize(name.rfind('/'));
                benchmark::RegisterBenchmark(name.c_str(), function, wavy)
                    ->Arg(n)
                    ->Unit(benchmark::kMillisecond);
            };
            add("ours", ours);
            add("old", old);
#if defined(ZQ_HAVE_CGAL)
            add("cgal", cgal);
            ratios.push_back({nameOf("ours", wavy, n), nameOf("cgal", wavy, n)});
            ratios.push_back({nameOf("old", wavy, n), nameOf("cgal", wavy, n)});
#endif
        }
}
} // namespace

int main(int argc, char** argv)
{
    std::vector<SBenchRatio> ratios;
    registerAll(ratios);
#if !defined(ZQ_HAVE_CGAL)
    std::printf("CGAL not found: only our filters are measured\n");
#endif
    const int result = RunBenchmarksWithRatios(argc, argv, ratios);
    std::printf("\n%-24s %10s %18s %22s\n", "fill", "triangles", "smallest angle", "largest dihedral");
    for (const auto& [name, q] : s_quality)
        std::printf("%-24s %10u %16.4f deg %20.2f deg\n", name.c_str(), q.triangles, q.smallestAngle,
                    q.largestDihedral);
    return result;
}
