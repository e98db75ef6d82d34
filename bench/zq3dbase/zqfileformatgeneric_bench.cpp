// A generic container file holding one triangulation of 1 002 252 triangles (a cube of 289 segments
// per edge) against the same mesh as a .tri file: writing and reading through files (temporary name,
// fsync, rename) and through memory, in one run. Prints the ratio .gen / .tri per case and the
// sizes of both files.
//
//     build/release/bin/zqfileformatgeneric_bench [--benchmark_repetitions=5]

#include "zqbenchmain.h"

#include "basepool/cbstreamreadbinary.h"
#include "basepool/cbstreamwritebinary.h"
#include "zq3dbase/zqmptriangulationprimitiveold.h"
#include "zq3dbase/zqtriangulationstatic.h"
#include "zqbase/zqdependencyserializer.h"
#include "zqbase/zqfileformatgeneric.h"

#include <cstdio>
#include <filesystem>
#include <memory>
#include <stdexcept>

namespace
{
const std::shared_ptr<ZqTriangulationStatic>& mesh()
{
    static const std::shared_ptr<ZqTriangulationStatic> triangulation = []
    {
        ZqMpTriangulationPrimitiveOld cube;
        cube.SetInput(ZqMpTriangulationPrimitiveOld::SConfigurationCube(1, 1, 1, 289));
        if (!cube.Compute())
            throw std::runtime_error("the cube cannot be built");
        return std::make_shared<ZqTriangulationStatic>(cube.GetOutput());
    }();
    return triangulation;
}

ZqFileFormatGeneric container()
{
    ZqDependencySerializer serializer;
    serializer.Add(L"mesh", mesh());
    ZqFileFormatGeneric file;
    file.Add(L"scene", serializer);
    return file;
}

std::string path(const char* extension)
{
    return (std::filesystem::temp_directory_path() / (std::string("zqfileformatgeneric_bench") + extension))
        .string();
}

void setCounters(benchmark::State& state, std::uint64_t bytes)
{
    state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations() * bytes));
    state.counters["triangles/s"] = benchmark::Counter(
        double(state.iterations()) * mesh()->GetTriangleCount(), benchmark::Counter::kIsRate);
}

void genWriteFile(benchmark::State& state)
{
    const ZqFileFormatGeneric file = container();
    const CString target(CStringA(path(".gen").c_str()));
    for (auto _ : state)
        file.Write(target);
    setCounters(state, std::filesystem::file_size(path(".gen")));
}

void triWriteFile(benchmark::State& state)
{
    const CString target(CStringA(path(".tri").c_str()));
    for (auto _ : state)
        mesh()->WriteFile(target);
    setCounters(state, std::filesystem::file_size(path(".tri")));
}

void genReadFile(benchmark::State& state)
{
    const CString source(CStringA(path(".gen").c_str()));
    container().Write(source);
    for (auto _ : state)
    {
        ZqFileFormatGeneric file;
        file.Read(source);
        benchmark::DoNotOptimize(file.Release(L"scene")->Get<ZqTriangulationStatic>(L"mesh"));
    }
    setCounters(state, std::filesystem::file_size(path(".gen")));
}

void triReadFile(benchmark::State& state)
{
    const CString source(CStringA(path(".tri").c_str()));
    mesh()->WriteFile(source);
    for (auto _ : state)
    {
        ZqTriangulationStatic triangulation;
        triangulation.ReadFile(source);
        benchmark::DoNotOptimize(triangulation.GetTriangleCount());
    }
    setCounters(state, std::filesystem::file_size(path(".tri")));
}

template <class TWrite> std::vector<unsigned char> toMemory(TWrite write)
{
    std::vector<unsigned char> bytes;
    CbStreamWriteBinary stream(bytes);
    write(stream);
    return bytes;
}

void genWriteMemory(benchmark::State& state)
{
    const ZqFileFormatGeneric file = container();
    std::size_t size = 0;
    for (auto _ : state)
        size = toMemory([&](CbStreamWriteBinary& stream) { file.Write(stream); }).size();
    setCounters(state, size);
}

void triWriteMemory(benchmark::State& state)
{
    std::size_t size = 0;
    for (auto _ : state)
        size = toMemory([&](CbStreamWriteBinary& stream) { mesh()->Serialize(stream); }).size();
    setCounters(state, size);
}

void genReadMemory(benchmark::State& state)
{
    const ZqFileFormatGeneric written = container();
    const std::vector<unsigned char> bytes =
        toMemory([&](CbStreamWriteBinary& stream) { written.Write(stream); });
    for (auto _ : state)
    {
        ZqFileFormatGeneric file;
        CbStreamReadBinary stream(bytes);
        file.Read(stream);
        benchmark::DoNotOptimize(file.Release(L"scene")->Get<ZqTriangulationStatic>(L"mesh"));
    }
    setCounters(state, bytes.size());
}

void triReadMemory(benchmark::State& state)
{
    const std::vector<unsigned char> bytes =
        toMemory([&](CbStreamWriteBinary& stream) { mesh()->Serialize(stream); });
    for (auto _ : state)
    {
        ZqTriangulationStatic triangulation;
        CbStreamReadBinary stream(bytes);
        triangulation.Serialize(stream);
        benchmark::DoNotOptimize(triangulation.GetTriangleCount());
    }
    setCounters(state, bytes.size());
}
} // namespace

BENCHMARK(genWriteFile)->Unit(benchmark::kMillisecond);
BENCHMARK(triWriteFile)->Unit(benchmark::kMillisecond);
BENCHMARK(genReadFile)->Unit(benchmark::kMillisecond);
BENCHMARK(triReadFile)->Unit(benchmark::kMillisecond);
BENCHMARK(genWriteMemory)->Unit(benchmark::kMillisecond);
BENCHMARK(triWriteMemory)->Unit(benchmark::kMillisecond);
BENCHMARK(genReadMemory)->Unit(benchmark::kMillisecond);
BENCHMARK(triReadMemory)->Unit(benchmark::kMillisecond);

int main(int argc, char** argv)
{
    return ZqBenchMain(argc, argv,
                       {{"genWriteFile", "triWriteFile"},
                        {"genReadFile", "triReadFile"},
                        {"genWriteMemory", "triWriteMemory"},
                        {"genReadMemory", "triReadMemory"}},
                       [](const ZqBenchReporter&)
                       {
                           container().Write(CString(CStringA(path(".gen").c_str())));
                           mesh()->WriteFile(CString(CStringA(path(".tri").c_str())));
                           const auto gen = std::filesystem::file_size(path(".gen"));
                           const auto tri = std::filesystem::file_size(path(".tri"));
                           std::printf("\n%u triangles, %u vertices: .gen %ju bytes, .tri %ju bytes, "
                                       ".gen - .tri = %jd bytes (%.6f)\n",
                                       mesh()->GetTriangleCount(), mesh()->GetVertexCount(),
                                       std::uintmax_t(gen), std::uintmax_t(tri),
                                       std::intmax_t(gen) - std::intmax_t(tri), double(gen) / double(tri));
                           std::filesystem::remove(path(".gen"));
                           std::filesystem::remove(path(".tri"));
                       });
}
