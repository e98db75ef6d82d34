#pragma once

#include "basepool/cbstreamreadbinary.h"
#include "basepool/cbstreamwritebinary.h"
#include "zq3dbase/geometry/ctriangulation.h"
#include "zq3dbase/zq3dbase_export.h"

namespace Geometry
{
// A CTriangulation in a binary stream, little-endian:
//
//     "ZQGT"                     4 bytes, the magic
//     version                    u32, 1
//     V, T                       u32 each
//     positions                  V x 3 float (x, y, z)
//     corners                    T x 3 u32
//     A                          u32, the attributes whose serialize switch is on
//     A times:  name             u32 byte count, then UTF-8 bytes
//               domain, type     u32 each (EElementKind 1 or 2, EAttributeType 1 to 6)
//               values           (V or T) x the type's size
//
// Writing a file through CbStreamWriteBinary(path) goes to a temporary name that Close() renames,
// so a failed write leaves no half file.
//
// Reading takes untrusted bytes: a wrong magic, an unknown version, counts that do not fit into
// the bytes left, a corner index past V or a vertex twice in one
// triangle, a position that is not finite, an attribute with an empty or
// repeated name or one that is not UTF-8 text, an unknown domain or type, and truncation anywhere throw
// CbExceptionWrongFileVersion with the reason as detail; the target triangulation is then left as
// it was. Attributes read have their serialize switch on.
ZQ3DBASE_API CbStreamWriteBinary& operator<<(CbStreamWriteBinary& stream,
                                             const CTriangulation& triangulation);
ZQ3DBASE_API CbStreamReadBinary& operator>>(CbStreamReadBinary& stream, CTriangulation& triangulation);

inline constexpr char kTriangulationStreamMagic[4] = {'Z', 'Q', 'G', 'T'};
inline constexpr std::uint32_t kTriangulationStreamVersion = 1;
} // namespace Geometry
