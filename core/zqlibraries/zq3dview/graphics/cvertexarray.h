#pragma once

#include "zq3dview/graphics/cbuffer.h"

namespace Graphics
{
// A vertex array object: which buffers feed which vertex attributes, and the index buffer. It
// refers to buffers without owning them; the mesh that owns the buffers owns the array too.
class ZQ3DVIEW_API CVertexArray : public CGLObject<SVertexArrayTraits>
{
public:
    // A new, empty vertex array (IDevice::CreateVertexArray).
    static CVertexArray Create();

    // Attribute location reads components floats per vertex from buffer, starting offset bytes
    // into each vertex of stride bytes.
    void SetFloatAttribute(unsigned int location, const CBuffer& buffer, unsigned int components,
                           std::size_t stride, std::size_t offset);
    // 32-bit unsigned indices.
    void SetIndexBuffer(const CBuffer& buffer);

    void Bind() const;

private:
    using CGLObject::CGLObject;
};
} // namespace Graphics
