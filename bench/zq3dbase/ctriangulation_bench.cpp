// Geometry::CTriangulation against OpenMesh (TriMesh_ArrayKernelT) on a subdivided icosahedron of
// 1 310 720 triangles, both built from the same positions and corner list in the same run: building
// the connectivity (ours: the triangulation and its vertex-triangle relation with fans; OpenMesh:
// add_vertex and add_face) and walking every vertex's one-ring of triangles and of vertices. Prints
// the ratio ours / OpenMesh per task.

#include "basepool/benchratio.h"

#include "zq3dbase/geometry/citeratoroneringvertices.h"
#include "zq3dbase/geometry/ctriangulationconversion.h"
#include "zq3dbase/zqmptriangulationprimitive.h"

#include <OpenMesh/Core/Mesh/TriMesh_ArrayKernelT.hh>

#include <cstdio>
#include <cstdlib>
#include <vector>

namespace
{
using Geometry::CTriangulation;
using COpenMesh = OpenMesh::TriMesh_ArrayKernelT<>;

const CTriangulation& sphere()
{
    static const CTriangulation triangulation = []
    {
        ZqMpTriangulationPrimitive primitive;
        primitive.SetPrimitive(L"icosahedron");
        ZqTriangulationPrimitiveConfiguration configuration;
        configuration.SetSubdivision(8);
        primitive.SetConfiguration(configuration);
        if (!primitive.Compute())
        {
            std::fprintf(stderr, "icosahedron: %s\n", primitive.GetLastError().c_str());
            std::exit(1);
        }
        CTriangulation t;
        Geometry::CTriangulationConversion::Convert(primitive.GetOutput(), t);
        return t;
    }();
    return triangulation;
}

void buildOpenMesh(COpenMesh& mesh, const CTriangulation& source)
{
    std::vector<COpenMesh::VertexHandle> handles;
    handles.reserve(source.GetVertexCount());
    for (const CbVector3f& p : source.GetPositions())
        handles.push_back(mesh.add_vertex(COpenMesh::Point(p.x, p.y, p.z)));
    for (const CTriangulation::SCorners& c : source.GetTriangles())
        mesh.add_face(handles[c[0]], handles[c[1]], handles[c[2]]);
}

const COpenMesh& openMeshSphere()
{
    static const COpenMesh mesh = []
    {
        COpenMesh m;
        buildOpenMesh(m, sphere());
        return m;
    }();
    return mesh;
}

void oursBuild(benchmark::State& state)
{
    const CTriangulation& source = sphere();
    for (auto _ : state)
    {
        CTriangulation t;
        t.SetVertexCount(source.GetVertexCount());
        std::copy(source.GetPositions().begin(), source.GetPositions().end(), t.EditPositions().begin());
        t.SetTriangleCount(source.GetTriangleCount());
        std::copy(source.GetTriangles().begin(), source.GetTriangles().end(), t.EditTriangles().begin());
        benchmark::DoNotOptimize(t.GetVertexTriangleRelation().GetTriangleCount(0));
    }
}

void openMeshBuild(benchmark::State& state)
{
    const CTriangulation& source = sphere();
    for (auto _ : state)
    {
        COpenMesh mesh;
        buildOpenMesh(mesh, source);
        benchmark::DoNotOptimize(mesh.n_faces());
    }
}

// Walks every vertex's one-ring with the iterator TRing and sums the indices it reaches.
template <class TRing> void oursRing(benchmark::State& state)
{
    const CTriangulation& t = sphere();
    t.GetVertexTriangleRelation();
    TRing ring(t);
    for (auto _ : state)
    {
        unsigned long sum = 0;
        for (unsigned int v = 0; v < t.GetVertexCount(); ++v)
            for (ring.SetCentre(Geometry::CVertexRef(v)); !ring.IsEnd(); ring.Next())
                sum += ring.GetIndex();
        benchmark::DoNotOptimize(sum);
    }
}

void oursRingTriangles(benchmark::State& state)
{
    oursRing<Geometry::CIteratorOneRingTriangles>(state);
}

// Walks every vertex's one-ring with the circulator range that range(mesh, vertex) gives.
template <class TRange> void openMeshRing(benchmark::State& state, TRange range)
{
    const COpenMesh& mesh = openMeshSphere();
    for (auto _ : state)
    {
        unsigned long sum = 0;
        for (const auto v : mesh.vertices())
            for (const auto element : range(mesh, v))
                sum += element.idx();
        benchmark::DoNotOptimize(sum);
    }
}

void openMeshRingTriangles(benchmark::State& state)
{
    openMeshRing(state, [](const COpenMesh& mesh, auto v) { return mesh.vf_range(v); });
}

void oursRingVertices(benchmark::State& state)
{
    oursRing<Geometry::CIteratorOneRingVertices>(state);
}

void openMeshRingVertices(benchmark::State& state)
{
    openMeshRing(state, [](const COpenMesh& mesh, auto v) { return mesh.vv_range(v); });
}
} // namespace

BENCHMARK(oursBuild)->Unit(benchmark::kMillisecond)->Repetitions(3);
BENCHMARK(openMeshBuild)->Unit(benchmark::kMillisecond)->Repetitions(3);
BENCHMARK(oursRingTriangles)->Unit(benchmark::kMillisecond)->Repetitions(3);
BENCHMARK(openMeshRingTriangles)->Unit(benchmark::kMillisecond)->Repetitions(3);
BENCHMARK(oursRingVertices)->Unit(benchmark::kMillisecond)->Repetitions(3);
BENCHMARK(openMeshRingVertices)->Unit(benchmark::kMillisecond)->Repetitions(3);

int main(int argc, char** argv)
{
    return RunBenchmarksWithRatios(argc, argv,
                                   {{"oursBuild/repeats:3", "openMeshBuild/repeats:3"},
                                    {"oursRingTriangles/repeats:3", "openMeshRingTriangles/repeats:3"},
                                    {"oursRingVertices/repeats:3", "openMeshRingVertices/repeats:3"}});
}
