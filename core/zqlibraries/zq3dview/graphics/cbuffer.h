#pragma once

#include "zq3dview/graphics/cglobject.h"

#include <cstddef>

namespace Graphics
{
// A buffer object with immutable storage, filled once when it is made (vertex and index data of a
// mesh). Made by IDevice::CreateBuffer.
class ZQ3DVIEW_API CBuffer : public CGLObject<SBufferTraits>
{
public:
    CBuffer() = default;
    // size bytes copied from data; throws CExceptionGraphics when GL refuses.
    CBuffer(const void* data, std::size_t size);

    std::size_t GetSize() const { return m_size; }

private:
    std::size_t m_size = 0;
};
} // namespace Graphics
