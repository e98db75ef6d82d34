#include "zq3dbase/geometry/cattributestorage.h"

#include "basepool/cbexception.h"

#include <algorithm>
#include <climits>
#include <cstring>
#include <string>

namespace Geometry
{
CAttributeStorage::CAttributeStorage(const CTriangulation& triangulation, unsigned int elementSize)
    : m_triangulation(&triangulation), m_elementSize(elementSize)
{
    if (elementSize == 0)
        CB_THROW(CbExceptionPreconditionViolation, "Geometry::CAttributeStorage::CAttributeStorage",
                 "element size 0");
}

void CAttributeStorage::resize(unsigned int kind)
{
    const std::uint64_t count = CountElements(*m_triangulation, kind);
    const std::uint64_t bytes = count * m_elementSize;
    const std::uint64_t chunks = (bytes + sizeof(SChunk) - 1) / sizeof(SChunk);
    if (count > UINT_MAX || chunks > UINT_MAX)
        CB_THROW(CbExceptionMemory, "Geometry::CAttributeStorage::resize",
                 std::to_string(count) + " elements of " + std::to_string(m_elementSize) + " bytes");
    const std::size_t keptBytes = std::min<std::size_t>(GetByteCount(), bytes);
    m_chunks.SetCount(static_cast<unsigned int>(chunks));
    if (bytes > keptBytes)
        std::memset(GetData() + keptBytes, 0, bytes - keptBytes);
    m_kind = kind;
    m_count = static_cast<unsigned int>(count);
}
} // namespace Geometry
