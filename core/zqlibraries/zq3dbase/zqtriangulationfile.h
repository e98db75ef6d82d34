#pragma once

#include "basepool/cbsmartpointer.h"
#include "basepool/cbstreamreadbinary.h"
#include "basepool/cbstreamwritebinary.h"
#include "basepool/cbvector3.h"
#include "zq3dbase/zq3dbase_export.h"
#include "zq3dbase/zqattributeparameter.h"
#include "zq3dbase/zqvertextrianglerelation.h"

#include <cstdint>
#include <functional>
#include <span>
#include <string>

// The triangulation file (".tri"): positions, triangle corners and named attributes, little-endian,
// laid out so that reading and writing are a few large block copies. The byte layout is described
// in docs/triangulation.md. This class knows only the layout; ZqTriangulationBase (and any other
// triangulation type) maps its own data onto it.
//
// The reader takes untrusted bytes. Every refusal throws CbExceptionWrongFileVersion whose detail
// names the reason in one line ("corner 2 of triangle 17 is vertex 9, but there are 8 vertices"),
// and happens before the caller's targets are handed over as complete: a reader gives its caller
// fresh storage to fill and swaps it in only after Read returned.
class ZQ3DBASE_API ZqTriangulationFile
{
public:
    static constexpr unsigned char kMagic[8] = {'Z', 'Q', 'T', 'R', 'I', '\r', '\n', 0x1A};
    static constexpr std::uint32_t kVersion = 1;
    // Limits that keep a corrupt header from asking for absurd work.
    static constexpr std::uint32_t kMaxAttributes = 64;
    static constexpr std::uint32_t kMaxNameLength = 64;
    static constexpr std::uint32_t kMaxComponents = 16;
    static constexpr std::uint32_t kMaxParameterBytes = 4096;

    enum EElement : std::uint8_t
    {
        eE_Vertex = 0,
        eE_Triangle = 1,
    };
    enum EScalar : std::uint8_t
    {
        eS_Float32 = 0,
        eS_UInt32 = 1,
    };

    // An attribute as the file sees it: count(element) values of components 32-bit scalars each.
    struct SAttribute
    {
        EElement element = eE_Vertex;
        EScalar scalar = eS_Float32;
        std::uint32_t components = 1;
        std::string name;
        CbSmartPointer<ZqAttributeParameter> parameter; // may be null
        const void* data = nullptr;                     // for writing
    };

    // Where the reader puts what it reads. Each function returns storage for exactly the announced
    // amount; attribute returns null to skip an attribute it does not want (its bytes are read and
    // dropped) and may throw CbExceptionWrongFileVersion to refuse one.
    struct STarget
    {
        std::function<CbVector3f*(std::uint32_t vertexCount)> positions;
        std::function<ZqTriangleCorners*(std::uint32_t triangleCount)> triangles;
        std::function<void*(const SAttribute& attribute, std::uint32_t count)> attribute;
    };

    static void Write(CbStreamWriteBinary& stream, std::span<const CbVector3f> positions,
                      std::span<const ZqTriangleCorners> triangles, std::span<const SAttribute> attributes);
    // Reads one triangulation from the stream's position on; the stream may hold more after it.
    static void Read(CbStreamReadBinary& stream, const STarget& target);

    // A name the file accepts: 1 to kMaxNameLength characters of [A-Za-z0-9_.-].
    static bool IsValidName(const std::string& name);
};
