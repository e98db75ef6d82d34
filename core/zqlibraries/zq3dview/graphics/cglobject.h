#pragma once

#include "zq3dview/zq3dview_export.h"

#include <utility>

namespace Graphics
{
// Owns exactly one OpenGL object name and deletes it when destroyed or reset; move-only, so a name
// has one owner and no raw name travels through the scene code. Traits::Delete(name) deletes a
// name of its kind. Releasing a scene's device resources is destroying these wrappers; creating
// them again is the same code as the first time.
//
// A name is deleted only while a context is current: names of a context that is gone were freed
// with it. The device releases every scene resource before it destroys its context.
template <class Traits> class CGLObject
{
public:
    CGLObject() noexcept = default;
    explicit CGLObject(unsigned int name) noexcept : m_name(name) {}
    CGLObject(CGLObject&& other) noexcept : m_name(std::exchange(other.m_name, 0u)) {}
    CGLObject& operator=(CGLObject&& other) noexcept
    {
        if (this != &other)
        {
            Reset();
            m_name = std::exchange(other.m_name, 0u);
        }
        return *this;
    }
    CGLObject(const CGLObject&) = delete;
    CGLObject& operator=(const CGLObject&) = delete;
    ~CGLObject() { Reset(); }

    unsigned int GetName() const noexcept { return m_name; }
    explicit operator bool() const noexcept { return m_name != 0; }

    void Reset() noexcept
    {
        if (m_name)
            Traits::Delete(m_name);
        m_name = 0;
    }

private:
    unsigned int m_name = 0;
};

// The deleters, one per kind of object.
struct ZQ3DVIEW_API SBufferTraits
{
    static void Delete(unsigned int name) noexcept;
};
struct ZQ3DVIEW_API SVertexArrayTraits
{
    static void Delete(unsigned int name) noexcept;
};
struct ZQ3DVIEW_API SShaderTraits
{
    static void Delete(unsigned int name) noexcept;
};
struct ZQ3DVIEW_API SProgramTraits
{
    static void Delete(unsigned int name) noexcept;
};
struct ZQ3DVIEW_API SRenderbufferTraits
{
    static void Delete(unsigned int name) noexcept;
};
struct ZQ3DVIEW_API SFramebufferTraits
{
    static void Delete(unsigned int name) noexcept;
};

using CShaderName = CGLObject<SShaderTraits>;
using CRenderbufferName = CGLObject<SRenderbufferTraits>;
} // namespace Graphics
