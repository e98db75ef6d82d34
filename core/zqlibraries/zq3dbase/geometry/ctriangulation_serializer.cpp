#include "zq3dbase/geometry/ctriangulation_serializer.h"

#include "basepool/cbexception.h"

#include <cmath>
#include <cstring>
#include <string>

namespace Geometry
{
namespace
{
const char* const kReadFunction = "Geometry::operator>>(CbStreamReadBinary&, CTriangulation&)";

[[noreturn]] void refuse(const std::string& reason)
{
    CB_THROW(CbExceptionWrongFileVersion, kReadFunction, reason);
}

// Throws unless count elements of size bytes fit into what the stream has left.
void checkFits(const CbStreamReadBinary& stream, std::uint64_t count, std::uint64_t size, const char* what)
{
    if (count * size > stream.GetRemaining())
        refuse(std::to_string(count) + " " + what + " do not fit into the " +
               std::to_string(stream.GetRemaining()) + " bytes left");
}

void readGeometry(CbStreamReadBinary& stream, CTriangulation& triangulation)
{
    std::uint32_t vertexCount = 0;
    std::uint32_t triangleCount = 0;
    stream >> vertexCount >> triangleCount;
    checkFits(stream, vertexCount, sizeof(CbVector3f), "positions");
    triangulation.SetVertexCount(vertexCount);
    const std::span<CbVector3f> positions = triangulation.EditPositions();
    stream.Read(positions.data(), positions.size_bytes());
    for (std::size_t v = 0; v < positions.size(); ++v)
        if (!std::isfinite(positions[v].x) || !std::isfinite(positions[v].y) ||
            !std::isfinite(positions[v].z))
            refuse("position " + std::to_string(v) + " is not finite");

    checkFits(stream, triangleCount, sizeof(CTriangulation::SCorners), "triangles");
    if (triangleCount > 0 && vertexCount == 0)
        refuse(std::to_string(triangleCount) + " triangles without vertices");
    triangulation.SetTriangleCount(triangleCount);
    const std::span<CTriangulation::SCorners> triangles = triangulation.EditTriangles();
    stream.Read(triangles.data(), triangles.size_bytes());
    for (std::size_t t = 0; t < triangles.size(); ++t)
    {
        const CTriangulation::SCorners& c = triangles[t];
        for (const unsigned int corner : c)
            if (corner >= vertexCount)
                refuse("triangle " + std::to_string(t) + " names vertex " + std::to_string(corner) + " of " +
                       std::to_string(vertexCount));
        if (c[0] == c[1] || c[1] == c[2] || c[2] == c[0])
            refuse("triangle " + std::to_string(t) + " names a vertex twice");
    }
}

void readAttribute(CbStreamReadBinary& stream, CTriangulation& triangulation)
{
    CStringA bytes;
    std::uint32_t domain = 0;
    std::uint32_t type = 0;
    stream >> bytes >> domain >> type;
    const CString name(bytes);
    const std::string text = CbWideToUtf8(name.Std());
    if (name.IsEmpty())
        refuse("attribute without a name");
    // A name must write back to the bytes it was read from.
    if (text != bytes.Std() || text.find('\0') != std::string::npos)
        refuse("attribute name that is not UTF-8 text");
    if (triangulation.HasAttribute(name))
        refuse("attribute \"" + text + "\" twice");
    if (domain != eEK_Vertices && domain != eEK_Triangles)
        refuse("attribute \"" + text + "\" of domain " + std::to_string(domain));
    if (AttributeTypeSize(type) == 0)
        refuse("attribute \"" + text + "\" of type " + std::to_string(type));
    triangulation.AddAttribute(name, static_cast<EElementKind>(domain), static_cast<EAttributeType>(type),
                               true);
    CAttributeStorage& store = triangulation.GetAttributeStorage(triangulation.GetAttributeCount() - 1);
    checkFits(stream, store.GetCount(), store.GetElementSize(), "attribute values");
    stream.Read(store.GetData(), store.GetByteCount());
}
} // namespace

CbStreamWriteBinary& operator<<(CbStreamWriteBinary& stream, const CTriangulation& triangulation)
{
    stream.Write(kTriangulationStreamMagic, sizeof(kTriangulationStreamMagic));
    stream << kTriangulationStreamVersion << std::uint32_t(triangulation.GetVertexCount())
           << std::uint32_t(triangulation.GetTriangleCount());
    stream.Write(triangulation.GetPositions().GetData(), triangulation.GetVertexCount() * sizeof(CbVector3f));
    stream.Write(triangulation.GetTriangles().GetData(),
                 triangulation.GetTriangleCount() * sizeof(CTriangulation::SCorners));

    std::uint32_t serialized = 0;
    for (unsigned int i = 0; i < triangulation.GetAttributeCount(); ++i)
        serialized += triangulation.GetAttributeInfo(i).serialize;
    stream << serialized;
    for (unsigned int i = 0; i < triangulation.GetAttributeCount(); ++i)
    {
        const CTriangulation::SAttributeInfo info = triangulation.GetAttributeInfo(i);
        if (!info.serialize)
            continue;
        const CAttributeStorage& store = triangulation.GetAttributeStorage(i);
        stream << info.name << std::uint32_t(info.domain) << std::uint32_t(info.type);
        stream.Write(store.GetData(), store.GetByteCount());
    }
    return stream;
}

CbStreamReadBinary& operator>>(CbStreamReadBinary& stream, CTriangulation& triangulation)
{
    char magic[sizeof(kTriangulationStreamMagic)] = {};
    stream.Read(magic, sizeof(magic));
    if (std::memcmp(magic, kTriangulationStreamMagic, sizeof(magic)) != 0)
        refuse("not a triangulation stream (wrong magic)");
    std::uint32_t version = 0;
    stream >> version;
    if (version == 0 || version > kTriangulationStreamVersion)
        refuse("unknown version " + std::to_string(version));

    CTriangulation read;
    readGeometry(stream, read);
    std::uint32_t attributes = 0;
    stream >> attributes;
    // An attribute takes at least 12 bytes (empty name count, domain, type).
    checkFits(stream, attributes, 12, "attributes");
    for (std::uint32_t i = 0; i < attributes; ++i)
        readAttribute(stream, read);
    triangulation.Swap(read);
    return stream;
}
} // namespace Geometry
