#pragma once

#include "zq3dbase/geometry/eelementkind.h"
#include "zq3dbase/geometry/smemoryblock.h"
#include "zq3dbase/zq3dbase_export.h"

#include <cstddef>

namespace Geometry
{
class CTriangulation;

// The bytes behind a raw attribute store: one element of a fixed size per element of the store's
// kind, packed, the block aligned to 16 bytes. CAttributeTriangulationRaw adds the typed access
// and the checked SetAccurate; code that handles stores of any reference type (copies, streams,
// comparisons) works on this base.
//
// Resizing keeps the bytes of the elements below both the old and the new count; elements that
// appear are zero bytes (0.0f, 0.0, (0, 0, 0), transparent black for the attribute types).
class ZQ3DBASE_API CAttributeStorage
{
public:
    // Covers nothing (kind 0) until resized.
    CAttributeStorage(const CTriangulation& triangulation, unsigned int elementSize);

    const CTriangulation& GetTriangulation() const { return *m_triangulation; }
    // Points the store at another triangulation (its owner was copied or moved); counts stay.
    void SetTriangulation(const CTriangulation& triangulation) { m_triangulation = &triangulation; }

    unsigned int GetElementSize() const { return m_elementSize; }
    unsigned int GetKind() const { return m_kind; }
    // Elements covered, as counted at the last resize.
    unsigned int GetCount() const { return m_count; }
    std::size_t GetByteCount() const { return std::size_t(m_count) * m_elementSize; }

    unsigned char* GetData() { return reinterpret_cast<unsigned char*>(m_chunks.GetData()); }
    const unsigned char* GetData() const
    {
        return reinterpret_cast<const unsigned char*>(m_chunks.GetData());
    }
    // Element index (below GetCount(); not checked).
    void* GetElement(unsigned int index) { return GetData() + std::size_t(index) * m_elementSize; }
    const void* GetElement(unsigned int index) const
    {
        return GetData() + std::size_t(index) * m_elementSize;
    }

protected:
    // Takes kind (0 to 4, checked by the caller) and the triangulation's present count of it.
    void resize(unsigned int kind);

private:
    struct alignas(16) SChunk
    {
        unsigned char bytes[16];
    };

    const CTriangulation* m_triangulation;
    unsigned int m_elementSize;
    unsigned int m_kind = eEK_None;
    unsigned int m_count = 0;
    SMemoryBlock<SChunk> m_chunks;
};
} // namespace Geometry
