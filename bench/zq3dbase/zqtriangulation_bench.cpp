// The triangulation against OpenMesh on a sphere of 1 310 720 triangles (icosahedron, subdivision 8),
// measured in the same run:
//   - building our vertex-triangle relation against OpenMesh adding the same faces to a mesh that
//     already holds the vertices (its connectivity build);
//   - walking the one-ring of every vertex, triangles and vertices, against OpenMesh's vertex-face
//     and vertex-vertex circulators;
//   - writing and reading the .tri file against binary PLY through OpenMesh's writer and reader,
//     both flushed to the disk (fsync) on writing; MB/s of the respective file.
// Files go to $ZQ_BENCH_DIR (default /tmp). Times are wall-clock (the file cases wait for the disk), and
// MB/s counts the bytes of the respective file. Prints time ours / time peer per pair.

#include "basepool/benchratio.h"
#include "zq3dbase/zqmptriangulationprimitive.h"
#include "zq3dbase/zqtriangulationdynamic.h"
#include "zq3dbase/zqtriangulationiteratoronering.h"

#include <OpenMesh/Core/IO/MeshIO.hh>
#include <OpenMesh/Core/Mesh/TriMesh_ArrayKernelT.hh>

#include <cstdlib>
#include <fcntl.h>
#include <filesystem>
#include <string>
#include <unistd.h>
#include <vector>

namespace
{
using PeerMesh = OpenMesh::TriMesh_ArrayKernelT<>;

const ZqTriangulationDynamic& sphere()
{
    static const ZqTriangulationDynamic triangulation = []
    {
        ZqMpTriangulationPrimitive primitive;
        primitive.SetPrimitive(L"icosahedron");
        ZqTriangulationPrimitiveConfiguration configuration;
        configuration.SetSubdivision(8);
        primitive.SetConfiguration(configuration);
        primitive.Compute();
        ZqTriangulationDynamic t(primitive.GetOutput());
        t.Remove(eVA_Normal);
        t.ComputeVertexTriangleRelationship();
        return t;
    }();
    return triangulation;
}

PeerMesh peerVerticesOnly()
{
    PeerMesh mesh;
    for (const CbVector3f& p : sphere().GetPositions())
        mesh.add_vertex(PeerMesh::Point(p.x, p.y, p.z));
    return mesh;
}

void addPeerFaces(PeerMesh& mesh)
{
    mesh.reserve(sphere().GetVertexCount(), sphere().GetTriangleCount() * 3 / 2, sphere().GetTriangleCount());
    for (const ZqTriangleCorners& c : sphere().GetTriangles())
        mesh.add_face(PeerMesh::VertexHandle(int(c[0])), PeerMesh::VertexHandle(int(c[1])),
                      PeerMesh::VertexHandle(int(c[2])));
}

const PeerMesh& peerMesh()
{
    static const PeerMesh mesh = []
    {
        PeerMesh m = peerVerticesOnly();
        addPeerFaces(m);
        return m;
    }();
    return mesh;
}

std::string benchPath(const char* name)
{
    const char* directory = std::getenv("ZQ_BENCH_DIR");
    return (std::filesystem::path(directory ? directory : "/tmp") / name).string();
}

void fsyncFile(const std::string& path)
{
    const int fd = open(path.c_str(), O_RDONLY);
    fsync(fd);
    close(fd);
}

void BM_RelationOurs(benchmark::State& state)
{
    ZqTriangulationDynamic t(sphere());
    for (auto _ : state)
    {
        t.ComputeVertexTriangleRelationship();
        benchmark::DoNotOptimize(t.GetVertexTriangleRelationship().GetEntries(0).data());
    }
    state.counters["bytes/triangle"] =
        double(t.GetVertexTriangleRelationship().GetMemorySize()) / double(t.GetTriangleCount());
}

void BM_RelationPeer(benchmark::State& state)
{
    for (auto _ : state)
    {
        state.PauseTiming();
        PeerMesh mesh = peerVerticesOnly();
        state.ResumeTiming();
        addPeerFaces(mesh);
        benchmark::DoNotOptimize(mesh.n_faces());
        state.PauseTiming();
        mesh = PeerMesh();
        state.ResumeTiming();
    }
}

template <class TRef> void walkOurs(benchmark::State& state)
{
    const ZqTriangulationDynamic& t = sphere();
    for (auto _ : state)
    {
        unsigned long sum = 0;
        for (unsigned int v = 0; v < t.GetVertexCount(); ++v)
            for (ZqTriangulationIteratorOneRing<TRef, true, false> it(t, CbVertexRef(v)); !it.IsEnd();)
            {
                sum += (*it).GetIndex();
                if ((++it).IsAtStart())
                    break;
            }
        benchmark::DoNotOptimize(sum);
    }
}

void BM_OneRingTrianglesOurs(benchmark::State& state)
{
    walkOurs<CbTriangleRef>(state);
}

void BM_OneRingVerticesOurs(benchmark::State& state)
{
    walkOurs<CbVertexRef>(state);
}

void BM_OneRingTrianglesPeer(benchmark::State& state)
{
    const PeerMesh& mesh = peerMesh();
    for (auto _ : state)
    {
        unsigned long sum = 0;
        for (const auto vertex : mesh.vertices())
            for (auto it = mesh.cvf_iter(vertex); it.is_valid(); ++it)
                sum += static_cast<unsigned long>(it->idx());
        benchmark::DoNotOptimize(sum);
    }
}

void BM_OneRingVerticesPeer(benchmark::State& state)
{
    const PeerMesh& mesh = peerMesh();
    for (auto _ : state)
    {
        unsigned long sum = 0;
        for (const auto vertex : mesh.vertices())
            for (auto it = mesh.cvv_iter(vertex); it.is_valid(); ++it)
                sum += static_cast<unsigned long>(it->idx());
        benchmark::DoNotOptimize(sum);
    }
}

void BM_WriteOurs(benchmark::State& state)
{
    const std::string path = benchPath("zqtriangulation_bench.tri");
    for (auto _ : state)
        sphere().WriteFile(CString(path.c_str()));
    state.SetBytesProcessed(std::int64_t(state.iterations()) *
                            std::int64_t(std::filesystem::file_size(path)));
}

void BM_ReadOurs(benchmark::State& state)
{
    const std::string path = benchPath("zqtriangulation_bench.tri");
    sphere().WriteFile(CString(path.c_str()));
    ZqTriangulationDynamic t;
    for (auto _ : state)
        t.ReadFile(CString(path.c_str()));
    state.SetBytesProcessed(std::int64_t(state.iterations()) *
                            std::int64_t(std::filesystem::file_size(path)));
    std::filesystem::remove(path);
}

void BM_WritePeer(benchmark::State& state)
{
    const std::string path = benchPath("zqtriangulation_bench.ply");
    const PeerMesh& mesh = peerMesh();
    for (auto _ : state)
    {
        OpenMesh::IO::write_mesh(mesh, path, OpenMesh::IO::Options::Binary);
        fsyncFile(path);
    }
    state.SetBytesProcessed(std::int64_t(state.iterations()) *
                            std::int64_t(std::filesystem::file_size(path)));
}

void BM_ReadPeer(benchmark::State& state)
{
    const std::string path = benchPath("zqtriangulation_bench.ply");
    OpenMesh::IO::write_mesh(peerMesh(), path, OpenMesh::IO::Options::Binary);
    for (auto _ : state)
    {
        PeerMesh mesh;
        OpenMesh::IO::Options options = OpenMesh::IO::Options::Binary;
        OpenMesh::IO::read_mesh(mesh, path, options);
        benchmark::DoNotOptimize(mesh.n_faces());
    }
    state.SetBytesProcessed(std::int64_t(state.iterations()) *
                            std::int64_t(std::filesystem::file_size(path)));
    std::filesystem::remove(path);
}
} // namespace

BENCHMARK(BM_RelationOurs)->Unit(benchmark::kMillisecond)->UseRealTime();
BENCHMARK(BM_RelationPeer)->Unit(benchmark::kMillisecond)->UseRealTime();
BENCHMARK(BM_OneRingTrianglesOurs)->Unit(benchmark::kMillisecond)->UseRealTime();
BENCHMARK(BM_OneRingTrianglesPeer)->Unit(benchmark::kMillisecond)->UseRealTime();
BENCHMARK(BM_OneRingVerticesOurs)->Unit(benchmark::kMillisecond)->UseRealTime();
BENCHMARK(BM_OneRingVerticesPeer)->Unit(benchmark::kMillisecond)->UseRealTime();
BENCHMARK(BM_WriteOurs)->Unit(benchmark::kMillisecond)->UseRealTime();
BENCHMARK(BM_WritePeer)->Unit(benchmark::kMillisecond)->UseRealTime();
BENCHMARK(BM_ReadOurs)->Unit(benchmark::kMillisecond)->UseRealTime();
BENCHMARK(BM_ReadPeer)->Unit(benchmark::kMillisecond)->UseRealTime();

int main(int argc, char** argv)
{
    return RunBenchmarksWithRatios(
        argc, argv,
        {{"BM_RelationOurs/real_time", "BM_RelationPeer/real_time"},
         {"BM_OneRingTrianglesOurs/real_time", "BM_OneRingTrianglesPeer/real_time"},
         {"BM_OneRingVerticesOurs/real_time", "BM_OneRingVerticesPeer/real_time"},
         {"BM_WriteOurs/real_time", "BM_WritePeer/real_time"},
         {"BM_ReadOurs/real_time", "BM_ReadPeer/real_time"}});
}
