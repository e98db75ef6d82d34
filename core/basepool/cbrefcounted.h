#pragma once

#include <atomic>

// Base of reference-counted objects shared through CbSmartPointer. The count starts at 0 and the
// object deletes itself when the last CbSmartPointer lets go of it. Copies of an object start with
// a count of their own, so copying never shares or steals references.
//
// Interfaces that are handed around by CbSmartPointer (ITestCase, ZqAttributeParameter, ...)
// derive from it virtually, so that an implementation of two such interfaces has one count.
class CbRefCounted
{
public:
    void AddRef() const noexcept { m_references.fetch_add(1, std::memory_order_relaxed); }
    void Release() const noexcept
    {
        if (m_references.fetch_sub(1, std::memory_order_acq_rel) == 1)
            delete this;
    }
    unsigned int GetReferenceCount() const noexcept { return m_references.load(std::memory_order_relaxed); }

protected:
    CbRefCounted() = default;
    CbRefCounted(const CbRefCounted&) noexcept {}
    CbRefCounted& operator=(const CbRefCounted&) noexcept { return *this; }
    virtual ~CbRefCounted() = default;

private:
    mutable std::atomic<unsigned int> m_references{0};
};
