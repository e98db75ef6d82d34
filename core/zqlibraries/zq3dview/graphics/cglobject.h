#pragma once

#include "zq3dview/zq3dview_export.h"

#include <utility>

namespace Graphics
{
// The EGL context current on this thread, null when there is none.
ZQ3DVIEW_API void* GetCurrentContext() noexcept;

// Owns exactly one OpenGL object name and deletes it when destroyed or reset; move-only, so a name
// has one owner and no raw name travels through the scene code. Traits::Delete(name) deletes a
// name of its kind. Releasing a scene's device resources is destroying these wrappers; creating
// them again is the same code as the first time.
//
// A name belongs to the context that was current when the wrapper took it, and is deleted only
// while that context is current: names of a context that is gone were freed with it, and a name is
// never deleted in another context, where it would stand for another object. The scene releases its
// resources in its device's context before the device goes.
template <class Traits> class CGLObject
{
public:
    CGLObject() noexcept = default;
    explicit CGLObject(unsigned int name) noexcept
        : m_name(name), m_context(name ? GetCurrentContext() : nullptr)
    {
    }
    CGLObject(CGLObject&& other) noexcept
        : m_name(std::exchange(other.m_name, 0u)), m_context(std::exchange(other.m_context, nullptr))
    {
    }
    CGLObject& operator=(CGLObject&& other) noexcept
    {
        if (this != &other)
        {
            Reset();
            m_name = std::exchange(other.m_name, 0u);
            m_context = std::exchange(other.m_context, nullptr);
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
        if (m_name && GetCurrentContext() == m_context)
            Traits::Delete(m_name);
        m_name = 0;
        m_context = nullptr;
    }

private:
    unsigned int m_name = 0;
    void* m_context = nullptr;
};

// The deleters, one per kind of object; called with the name's context current.
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
