// Generic container files from untrusted bytes. Read either accepts the bytes or refuses them with
// CbExceptionWrongFileVersion and keeps what the container held before; what it accepts writes back
// as a file that reads again and then writes exactly the same bytes.
//
// Most mutations are followed by a repair of the checksums (a custom mutator), or nearly every
// mutated file would stop at a checksum mismatch and the parsers behind it would never be reached.
//
// With ZQ_FUZZ_WRITE_SEEDS=DIR set, the target writes its seed files into DIR and exits (see
// docs/generic-file-format.md).

#include "basepool/cbexception.h"
#include "basepool/cbstreamreadbinary.h"
#include "basepool/cbstreamwritebinary.h"
#include "zq3dbase/zqdebuggeometry.h"
#include "zq3dbase/zqmptriangulationprimitiveold.h"
#include "zq3dbase/zqpolyline3d.h"
#include "zq3dbase/zqtriangulationdynamic.h"
#include "zq3dbase/zqtriangulationstatic.h"
#include "zqbase/zqcrc32c.h"
#include "zqbase/zqdependencyserializer.h"
#include "zqbase/zqfileformatgeneric.h"
#include "zqbase/zqobjectkind.h"

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>
#include <vector>

namespace
{
[[noreturn]] void fail(const char* what)
{
    std::fprintf(stderr, "%s\n", what);
    std::abort();
}

std::vector<unsigned char> written(const ZqFileFormatGeneric& file)
{
    std::vector<unsigned char> bytes;
    CbStreamWriteBinary stream(bytes);
    file.Write(stream);
    return bytes;
}

// A serializer with one object of every kind of zq3dbase, each small.
ZqDependencySerializer everyKind()
{
    ZqMpTriangulationPrimitiveOld tetrahedron;
    tetrahedron.SetInput(ZqMpTriangulationPrimitiveOld::eP_Tetrahedron);
    if (!tetrahedron.Compute())
        fail("no tetrahedron");
    auto triStatic = std::make_shared<ZqTriangulationStatic>(tetrahedron.GetOutput());
    triStatic->SetSerialize(eVA_Normal, true);
    auto triDynamic = std::make_shared<ZqTriangulationDynamic>(tetrahedron.GetOutput());
    auto polyline = std::make_shared<ZqPolyline3D>(
        std::initializer_list<CbVector3f>{{0, 0, 0}, {1, 0, 0}, {1, 1, 0}, {0, 1, 1}}, true);
    ZqDependencySerializer serializer;
    serializer.Add(L"triStatic", triStatic);
    serializer.Add(L"geoTriDyn", ZqDebugGeometry(triDynamic, ZqColorRGBA::Chocolate, 17, 0));
    serializer.Add(L"polyLine", polyline);
    serializer.Add(L"geoPolyline", ZqDebugGeometry(polyline, ZqColorRGBA::Aquamarine, 16, 1));
    serializer.Add(L"geoTriStatic", ZqDebugGeometry(triStatic, ZqColorRGBA::Gray, 16, 1));
    return serializer;
}

template <class T> bool load(const std::uint8_t* data, std::size_t size, std::size_t offset, T& value)
{
    if (offset > size || size - offset < sizeof(T))
        return false;
    std::memcpy(&value, data + offset, sizeof(T));
    return true;
}

void store(std::uint8_t* data, std::size_t offset, std::uint32_t value)
{
    std::memcpy(data + offset, &value, sizeof(value));
}

bool skipText(const std::uint8_t* data, std::size_t end, std::size_t& position)
{
    std::uint32_t length = 0;
    if (!load(data, end, position, length) || end - position - 4 < length)
        return false;
    position += 4 + std::size_t(length);
    return true;
}

// Rewrites the checksums of as much of the table and entries as the sizes in the data allow
// (layout in docs/generic-file-format.md).
void repairChecksums(std::uint8_t* data, std::size_t size)
{
    std::uint32_t count = 0;
    std::uint64_t tableSize = 0;
    if (!load(data, size, 12, count) || !load(data, size, 16, tableSize) || tableSize > size - 24 ||
        size - 24 - tableSize < 4)
        return;
    const std::size_t tableEnd = 24 + static_cast<std::size_t>(tableSize);
    std::size_t position = 24;
    std::size_t entry = tableEnd + 4;
    for (std::uint32_t i = 0; i < count; ++i)
    {
        std::uint64_t entrySize = 0;
        if (!skipText(data, tableEnd, position) || !skipText(data, tableEnd, position) ||
            tableEnd - position < 12 || !load(data, tableEnd, position, entrySize) ||
            entrySize > size - entry)
            break;
        store(data, position + 8, ZqCrc32c::Compute(data + entry, static_cast<std::size_t>(entrySize)));
        position += 12;
        entry += static_cast<std::size_t>(entrySize);
    }
    store(data, tableEnd, ZqCrc32c::Compute(data, tableEnd));
}

void writeSeeds(const std::string& directory)
{
    ZqFileFormatGeneric empty;
    empty.Write(CString(CStringA((directory + "/empty.gen").c_str())));
    ZqFileFormatGeneric objects;
    objects.Add(L"ZqFileFormatGeneric_UnitTest", everyKind());
    objects.Add(L"zweiter", ZqDependencySerializer());
    objects.Write(CString(CStringA((directory + "/objects.gen").c_str())));
}
} // namespace

extern "C" int LLVMFuzzerInitialize(int*, char***)
{
    // Without the kinds of zq3dbase every object record would be refused as unknown.
    if (!ZqObjectKind::Find(typeid(ZqDebugGeometry)) || !ZqObjectKind::Find(typeid(ZqPolyline3D)) ||
        !ZqObjectKind::Find(typeid(ZqTriangulationStatic)) ||
        !ZqObjectKind::Find(typeid(ZqTriangulationDynamic)))
        fail("the object kinds of zq3dbase are not registered");
    if (const char* directory = std::getenv("ZQ_FUZZ_WRITE_SEEDS"))
    {
        writeSeeds(directory);
        std::exit(0);
    }
    return 0;
}

extern "C" std::size_t LLVMFuzzerMutate(std::uint8_t* data, std::size_t size, std::size_t maxSize);

extern "C" std::size_t LLVMFuzzerCustomMutator(std::uint8_t* data, std::size_t size, std::size_t maxSize,
                                               unsigned int seed)
{
    size = LLVMFuzzerMutate(data, size, maxSize);
    // One mutation in eight keeps its broken checksums, so that their refusal stays covered.
    if (seed % 8 != 0)
        repairChecksums(data, size);
    return size;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    ZqFileFormatGeneric file;
    file.Add(L"vorher", everyKind());
    const std::vector<unsigned char> before = written(file);

    CbStreamReadBinary input(data, size);
    try
    {
        file.Read(input);
    }
    catch (const CbExceptionWrongFileVersion&)
    {
        if (written(file) != before)
            fail("a refused file changed the container");
        return 0;
    }

    const std::vector<unsigned char> first = written(file);
    ZqFileFormatGeneric again;
    CbStreamReadBinary rewritten(first);
    again.Read(rewritten);
    if (written(again) != first)
        fail("a file written after reading does not read back to the same bytes");
    return 0;
}
