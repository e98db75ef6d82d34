#include "zq3dbase/zqtriangulationfile.h"

#include "basepool/cbexception.h"

#include <bit>
#include <cstring>
#include <set>
#include <utility>
#include <vector>

static_assert(std::endian::native == std::endian::little,
              "the triangulation file is read and written in place");
static_assert(sizeof(CbVector3f) == 12 && sizeof(ZqTriangleCorners) == 12);

namespace
{
[[noreturn]] void refuse(const std::string& reason)
{
    CB_THROW(CbExceptionWrongFileVersion, "ZqTriangulationFile::Read", reason);
}

// Reads size bytes, refusing with a reason that names what was being read when the data ends first.
void readBlock(CbStreamReadBinary& stream, void* data, std::uint64_t size, const char* what)
{
    if (size > stream.GetRemaining())
        refuse(std::string("the data ends inside ") + what + " (at byte " +
               std::to_string(stream.GetPosition()) + ", " + std::to_string(size) + " bytes needed)");
    stream.Read(data, static_cast<std::size_t>(size));
}

std::uint32_t readWord(CbStreamReadBinary& stream, const char* what)
{
    std::uint32_t value = 0;
    readBlock(stream, &value, sizeof(value), what);
    return value;
}

std::string readText(CbStreamReadBinary& stream, std::uint32_t length, const char* what)
{
    std::string text(length, '\0');
    readBlock(stream, text.data(), length, what);
    return text;
}

// True when the float's exponent bits are all set (infinity or NaN).
bool isNotFinite(float value)
{
    return (std::bit_cast<std::uint32_t>(value) & 0x7F800000u) == 0x7F800000u;
}

void checkPositions(const CbVector3f* positions, std::uint32_t count)
{
    const auto* scalars = reinterpret_cast<const float*>(positions);
    // A branch-free scan first; the slow search for the culprit runs only when there is one.
    bool bad = false;
    for (std::uint64_t i = 0; i < std::uint64_t(count) * 3; ++i)
        bad |= isNotFinite(scalars[i]);
    if (!bad)
        return;
    for (std::uint32_t v = 0;; ++v)
        if (isNotFinite(positions[v].x) || isNotFinite(positions[v].y) || isNotFinite(positions[v].z))
            refuse("vertex " + std::to_string(v) + " has a coordinate that is not a finite number");
}

void checkTriangles(const ZqTriangleCorners* triangles, std::uint32_t count, std::uint32_t vertexCount)
{
    for (std::uint32_t t = 0; t < count; ++t)
    {
        const ZqTriangleCorners& c = triangles[t];
        for (unsigned int k = 0; k < 3; ++k)
            if (c[k] >= vertexCount)
                refuse("corner " + std::to_string(k) + " of triangle " + std::to_string(t) + " is vertex " +
                       std::to_string(c[k]) + ", but there are " + std::to_string(vertexCount) + " vertices");
        if (c[0] == c[1] || c[1] == c[2] || c[0] == c[2])
            refuse("triangle " + std::to_string(t) + " uses a vertex twice");
    }
}

CbSmartPointer<ZqAttributeParameter> readParameter(CbStreamReadBinary& stream, const std::string& name)
{
    const std::uint32_t kindLength = readWord(stream, "an attribute header");
    if (kindLength == 0)
        return nullptr;
    if (kindLength > ZqTriangulationFile::kMaxNameLength)
        refuse("attribute '" + name + "' has a parameter kind of " + std::to_string(kindLength) +
               " characters");
    const std::string kind = readText(stream, kindLength, "an attribute header");
    const std::uint32_t size = readWord(stream, "an attribute header");
    if (size > ZqTriangulationFile::kMaxParameterBytes)
        refuse("attribute '" + name + "' has a parameter of " + std::to_string(size) + " bytes");
    std::vector<unsigned char> bytes(size);
    readBlock(stream, bytes.data(), size, "an attribute parameter");
    CbSmartPointer<ZqAttributeParameter> parameter = ZqAttributeParameter::Create(kind);
    if (!parameter)
        refuse("attribute '" + name + "' has a parameter of unknown kind '" + kind + "'");
    CbStreamReadBinary parameterStream(bytes);
    try
    {
        parameter->Read(parameterStream);
    }
    catch (const CbExceptionWrongFileVersion& e)
    {
        refuse("attribute '" + name + "' has an unreadable " + kind + " parameter: " + e.GetDetail());
    }
    if (!parameterStream.IsAtEnd())
        refuse("attribute '" + name + "' has a " + kind + " parameter with bytes left over");
    return parameter;
}

ZqTriangulationFile::SAttribute readAttributeHeader(CbStreamReadBinary& stream)
{
    unsigned char descriptor[4];
    readBlock(stream, descriptor, sizeof(descriptor), "an attribute header");
    ZqTriangulationFile::SAttribute attribute;
    if (descriptor[0] > ZqTriangulationFile::eE_Triangle)
        refuse("an attribute of unknown element kind " + std::to_string(descriptor[0]));
    if (descriptor[1] > ZqTriangulationFile::eS_UInt32)
        refuse("an attribute of unknown scalar type " + std::to_string(descriptor[1]));
    if (descriptor[2] == 0 || descriptor[2] > ZqTriangulationFile::kMaxComponents)
        refuse("an attribute of " + std::to_string(descriptor[2]) + " components");
    if (descriptor[3] != 0)
        refuse("an attribute header with reserved bits set");
    attribute.element = static_cast<ZqTriangulationFile::EElement>(descriptor[0]);
    attribute.scalar = static_cast<ZqTriangulationFile::EScalar>(descriptor[1]);
    attribute.components = descriptor[2];
    const std::uint32_t nameLength = readWord(stream, "an attribute header");
    if (nameLength == 0 || nameLength > ZqTriangulationFile::kMaxNameLength)
        refuse("an attribute name of " + std::to_string(nameLength) + " characters");
    attribute.name = readText(stream, nameLength, "an attribute name");
    if (!ZqTriangulationFile::IsValidName(attribute.name))
        refuse("an attribute name with characters outside [A-Za-z0-9_.-]");
    attribute.parameter = readParameter(stream, attribute.name);
    return attribute;
}

void skipBlock(CbStreamReadBinary& stream, std::uint64_t size)
{
    unsigned char scratch[1 << 14];
    while (size > 0)
    {
        const auto piece = static_cast<std::size_t>(std::min<std::uint64_t>(size, sizeof(scratch)));
        stream.Read(scratch, piece);
        size -= piece;
    }
}

void readAttributes(CbStreamReadBinary& stream, std::uint32_t attributeCount, std::uint32_t vertexCount,
                    std::uint32_t triangleCount, const ZqTriangulationFile::STarget& target)
{
    std::set<std::pair<int, std::string>> seen;
    for (std::uint32_t a = 0; a < attributeCount; ++a)
    {
        const ZqTriangulationFile::SAttribute attribute = readAttributeHeader(stream);
        if (!seen.emplace(attribute.element, attribute.name).second)
            refuse("attribute '" + attribute.name + "' appears twice");
        const std::uint32_t count =
            attribute.element == ZqTriangulationFile::eE_Vertex ? vertexCount : triangleCount;
        const std::uint64_t size = std::uint64_t(count) * attribute.components * 4;
        if (size > stream.GetRemaining())
            refuse("attribute '" + attribute.name + "' needs " + std::to_string(size) + " bytes, " +
                   std::to_string(stream.GetRemaining()) + " remain");
        void* data = target.attribute(attribute, count);
        if (data)
            readBlock(stream, data, size, "attribute values");
        else
            skipBlock(stream, size);
    }
}
} // namespace

bool ZqTriangulationFile::IsValidName(const std::string& name)
{
    if (name.empty() || name.size() > kMaxNameLength)
        return false;
    for (const char c : name)
        if (!((c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') || c == '_' ||
              c == '.' || c == '-'))
            return false;
    return true;
}

void ZqTriangulationFile::Read(CbStreamReadBinary& stream, const STarget& target)
{
    unsigned char magic[sizeof(kMagic)];
    readBlock(stream, magic, sizeof(magic), "the header");
    if (std::memcmp(magic, kMagic, sizeof(kMagic)) != 0)
        refuse("not a triangulation file (the first 8 bytes are not the .tri magic)");
    const std::uint32_t version = readWord(stream, "the header");
    if (version != kVersion)
        refuse("unknown version " + std::to_string(version) + " (this reader knows version " +
               std::to_string(kVersion) + ")");
    const std::uint32_t vertexCount = readWord(stream, "the header");
    const std::uint32_t triangleCount = readWord(stream, "the header");
    const std::uint32_t attributeCount = readWord(stream, "the header");
    if (triangleCount > ZqVertexTriangleRelation::kMaxTriangles)
        refuse(std::to_string(triangleCount) + " triangles exceed the limit of " +
               std::to_string(ZqVertexTriangleRelation::kMaxTriangles));
    if (attributeCount > kMaxAttributes)
        refuse(std::to_string(attributeCount) + " attributes exceed the limit of " +
               std::to_string(kMaxAttributes));
    const std::uint64_t needed = (std::uint64_t(vertexCount) + triangleCount) * 12;
    if (needed > stream.GetRemaining())
        refuse("the counts are larger than the file: " + std::to_string(vertexCount) + " vertices and " +
               std::to_string(triangleCount) + " triangles need " + std::to_string(needed) + " bytes, " +
               std::to_string(stream.GetRemaining()) + " remain");

    CbVector3f* positions = target.positions(vertexCount);
    readBlock(stream, positions, std::uint64_t(vertexCount) * 12, "the positions");
    checkPositions(positions, vertexCount);
    ZqTriangleCorners* triangles = target.triangles(triangleCount);
    readBlock(stream, triangles, std::uint64_t(triangleCount) * 12, "the triangles");
    checkTriangles(triangles, triangleCount, vertexCount);
    readAttributes(stream, attributeCount, vertexCount, triangleCount, target);
}

void ZqTriangulationFile::Write(CbStreamWriteBinary& stream, std::span<const CbVector3f> positions,
                                std::span<const ZqTriangleCorners> triangles,
                                std::span<const SAttribute> attributes)
{
    for (const SAttribute& attribute : attributes)
        if (!IsValidName(attribute.name) || attribute.components == 0 ||
            attribute.components > kMaxComponents)
            CB_THROW(CbExceptionPreconditionViolation, "ZqTriangulationFile::Write",
                     "attribute '" + attribute.name + "' cannot be stored");
    // A file the reader would refuse is not written (a static triangulation may hold unset triangles).
    const auto vertexCount = static_cast<std::uint32_t>(positions.size());
    for (std::size_t t = 0; t < triangles.size(); ++t)
        if (triangles[t][0] >= vertexCount || triangles[t][1] >= vertexCount ||
            triangles[t][2] >= vertexCount)
            CB_THROW(CbExceptionPreconditionViolation, "ZqTriangulationFile::Write",
                     "triangle " + std::to_string(t) + " has a corner that is unset or not a vertex");
    stream.Write(kMagic, sizeof(kMagic));
    stream << kVersion << static_cast<std::uint32_t>(positions.size())
           << static_cast<std::uint32_t>(triangles.size()) << static_cast<std::uint32_t>(attributes.size());
    stream.Write(positions.data(), positions.size_bytes());
    stream.Write(triangles.data(), triangles.size_bytes());
    for (const SAttribute& attribute : attributes)
    {
        const unsigned char descriptor[4] = {attribute.element, attribute.scalar,
                                             static_cast<unsigned char>(attribute.components), 0};
        stream.Write(descriptor, sizeof(descriptor));
        stream << static_cast<std::uint32_t>(attribute.name.size());
        stream.Write(attribute.name.data(), attribute.name.size());
        if (attribute.parameter)
        {
            std::vector<unsigned char> bytes;
            CbStreamWriteBinary parameterStream(bytes);
            attribute.parameter->Write(parameterStream);
            const std::string kind = attribute.parameter->GetKind();
            stream << static_cast<std::uint32_t>(kind.size());
            stream.Write(kind.data(), kind.size());
            stream << static_cast<std::uint32_t>(bytes.size());
            stream.Write(bytes.data(), bytes.size());
        }
        else
            stream << std::uint32_t(0);
        const std::size_t count = attribute.element == eE_Vertex ? positions.size() : triangles.size();
        stream.Write(attribute.data, count * attribute.components * 4);
    }
}
