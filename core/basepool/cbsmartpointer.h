#pragma once

#include "basepool/cbrefcounted.h"

#include <cstddef>
#include <type_traits>
#include <utility>

// Intrusive shared pointer over any T with AddRef() and Release() (usually through CbRefCounted).
// Because the count lives in the object, a raw pointer taken from one CbSmartPointer can be
// wrapped again without creating a second count:
//
//     CbSmartPointer<ZqAttributeParameter> p = CbMakeSmart<ZqParametrizationPlanar>();
//     CbSmartPointer<ZqAttributeParameter> q(p.Get());   // both hold the one object, count 2
template <class T> class CbSmartPointer
{
public:
    using element_type = T;

    CbSmartPointer() noexcept = default;
    CbSmartPointer(std::nullptr_t) noexcept {}
    // Takes a reference of its own; the pointer may come from new or from another smart pointer.
    explicit CbSmartPointer(T* object) noexcept : m_object(object) { acquire(); }
    CbSmartPointer(const CbSmartPointer& other) noexcept : m_object(other.m_object) { acquire(); }
    CbSmartPointer(CbSmartPointer&& other) noexcept : m_object(std::exchange(other.m_object, nullptr)) {}
    template <class U, class = std::enable_if_t<std::is_convertible_v<U*, T*>>>
    CbSmartPointer(const CbSmartPointer<U>& other) noexcept : m_object(other.Get())
    {
        acquire();
    }
    template <class U, class = std::enable_if_t<std::is_convertible_v<U*, T*>>>
    CbSmartPointer(CbSmartPointer<U>&& other) noexcept : m_object(other.Detach())
    {
    }
    ~CbSmartPointer() { release(); }

    CbSmartPointer& operator=(CbSmartPointer other) noexcept
    {
        std::swap(m_object, other.m_object);
        return *this;
    }

    T* Get() const noexcept { return m_object; }
    T& operator*() const noexcept { return *m_object; }
    T* operator->() const noexcept { return m_object; }
    explicit operator bool() const noexcept { return m_object != nullptr; }
    bool IsNull() const noexcept { return m_object == nullptr; }

    void Reset() noexcept { CbSmartPointer().swap(*this); }
    // Hands the reference over to the caller, who must Release() it.
    T* Detach() noexcept { return std::exchange(m_object, nullptr); }
    void swap(CbSmartPointer& other) noexcept { std::swap(m_object, other.m_object); }

    template <class U> friend bool operator==(const CbSmartPointer& a, const CbSmartPointer<U>& b) noexcept
    {
        return a.Get() == b.Get();
    }
    friend bool operator==(const CbSmartPointer& a, std::nullptr_t) noexcept { return a.m_object == nullptr; }

private:
    void acquire() noexcept
    {
        if (m_object)
            counted(m_object)->AddRef();
    }
    void release() noexcept
    {
        if (m_object)
            counted(m_object)->Release();
    }
    // A CbRefCounted object is counted through that base, so that a class with a Release of its own
    // (ZqEffect::Release gives back device resources) is still counted and deleted.
    static auto counted(T* object) noexcept
    {
        if constexpr (std::is_base_of_v<CbRefCounted, T>)
            return static_cast<const CbRefCounted*>(object);
        else
            return object;
    }

    T* m_object = nullptr;
};

template <class T, class... Args> CbSmartPointer<T> CbMakeSmart(Args&&... arguments)
{
    return CbSmartPointer<T>(new T(std::forward<Args>(arguments)...));
}

// Cast along the class tree; null when the object is not a U.
template <class U, class T> CbSmartPointer<U> CbDynamicPointerCast(const CbSmartPointer<T>& pointer) noexcept
{
    return CbSmartPointer<U>(dynamic_cast<U*>(pointer.Get()));
}
