#pragma once

#include "basepool/cbarrayallocation.h"
#include "basepool/cbexception.h"

#include <algorithm>
#include <climits>
#include <cstdint>
#include <cstring>
#include <initializer_list>
#include <iterator>
#include <memory>
#include <new>
#include <ranges>
#include <span>
#include <string>
#include <type_traits>
#include <utility>

// Contiguous growable array with an element policy (TPolicy::Construct makes the elements that
// appear without a value, see CbArrayPolicyConstructDefault). CbArray<T> is this array with the
// default policy; use CbArrayEx directly only to choose another policy.
//
// Layout and invariants: the data pointer owns a block of capacity slots; the end pointer is data +
// count, and null while the array is empty; slots 0 .. count-1 hold constructed elements, the rest is
// raw storage. When the block is full, Add grows it by the grow-by count, or doubles it (at least 1
// slot) when grow-by is 0:
//
//     CbArray<int> a;          // capacity 0
//     a.Add(1);                // true:  capacity 1
//     a.Add(2);                // true:  capacity 2
//     a.Add(3);                // true:  capacity 4
//     a.Add(4);                // false: capacity 4
//
// operator[] is a plain pointer offset in release builds (debug builds check the index and throw
// CbExceptionContainer); GetAt always checks. Iterators are plain pointers and stay valid until the
// block is reallocated. An allocation that cannot be satisfied throws CbExceptionMemory and leaves
// the array as it was. The grow-by count belongs to the array object: construction from another
// array takes it over, assignment and Swap keep the target's own.
template <class T, class TPolicy> class CbArrayEx
{
public:
    using value_type = T;
    using size_type = unsigned int;
    using difference_type = std::ptrdiff_t;
    using reference = T&;
    using const_reference = const T&;
    using pointer = T*;
    using const_pointer = const T*;
    using iterator = T*;
    using const_iterator = const T*;
    using reverse_iterator = std::reverse_iterator<T*>;
    using const_reverse_iterator = std::reverse_iterator<const T*>;
    // What Reversed() returns: a begin and an end for a range-based loop or an algorithm. Not
    // std::ranges::subrange, whose reverse-iterator form clang before 15 rejects with libstdc++ 12.
    template <class Iterator> struct SIteratorRange
    {
        Iterator first, last;
        Iterator begin() const { return first; }
        Iterator end() const { return last; }
    };

    CbArrayEx() noexcept = default;
    explicit CbArrayEx(unsigned int growBy) noexcept : m_nGrowBy(growBy) {}
    CbArrayEx(std::initializer_list<T> values)
    {
        copyFrom(values.begin(), values.size(), "CbArray::CbArray");
    }
    CbArrayEx(const CbArrayEx& other) : m_nGrowBy(other.m_nGrowBy)
    {
        copyFrom(other.m_pData, other.m_nCount, "CbArray::CbArray");
    }
    CbArrayEx(CbArrayEx&& other) noexcept : m_nGrowBy(other.m_nGrowBy) { takeBlock(other); }
    ~CbArrayEx() { release(); }

    CbArrayEx& operator=(const CbArrayEx& other)
    {
        if (this != &other)
            copyFrom(other.m_pData, other.m_nCount, "CbArray::operator=");
        return *this;
    }
    CbArrayEx& operator=(CbArrayEx&& other) noexcept
    {
        if (this != &other)
        {
            release();
            takeBlock(other);
        }
        return *this;
    }
    CbArrayEx& operator=(std::initializer_list<T> values)
    {
        copyFrom(values.begin(), values.size(), "CbArray::operator=");
        return *this;
    }

    // Size and storage.
    unsigned int GetCount() const { return m_nCount; }
    bool IsEmpty() const { return m_nCount == 0; }
    unsigned int GetCapacity() const { return m_nCapacity; }
    unsigned int GetGrowBy() const { return m_nGrowBy; }
    // Slots added when the block is full; 0 doubles the capacity.
    void SetGrowBy(unsigned int growBy) { m_nGrowBy = growBy; }

    // Element access.
    T& operator[](unsigned int index)
    {
        checkIndexInDebug(index);
        return m_pData[index];
    }
    const T& operator[](unsigned int index) const
    {
        checkIndexInDebug(index);
        return m_pData[index];
    }
    T& GetAt(unsigned int index) { return m_pData[checkedIndex(index, "CbArray::GetAt")]; }
    const T& GetAt(unsigned int index) const { return m_pData[checkedIndex(index, "CbArray::GetAt")]; }
    void SetAt(unsigned int index, const T& value) { m_pData[checkedIndex(index, "CbArray::SetAt")] = value; }
    T& GetFirst() { return m_pData[checkedIndex(0, "CbArray::GetFirst")]; }
    const T& GetFirst() const { return m_pData[checkedIndex(0, "CbArray::GetFirst")]; }
    T& GetLast() { return m_pData[checkedIndex(m_nCount - 1, "CbArray::GetLast")]; }
    const T& GetLast() const { return m_pData[checkedIndex(m_nCount - 1, "CbArray::GetLast")]; }
    // The block (null when none is allocated) and the end pointer (null while the array is empty).
    T* GetData() { return m_pData; }
    const T* GetData() const { return m_pData; }
    T* GetDataEnd() { return m_pEnd; }
    const T* GetDataEnd() const { return m_pEnd; }
    // Elements first .. first+count-1; throws CbExceptionContainer when they are not all there.
    std::span<T> GetRange(unsigned int first, unsigned int count)
    {
        checkRange(first, count, "CbArray::GetRange");
        return std::span<T>(m_pData + first, count);
    }
    std::span<const T> GetRange(unsigned int first, unsigned int count) const
    {
        checkRange(first, count, "CbArray::GetRange");
        return std::span<const T>(m_pData + first, count);
    }

    // Iteration: begin()/end() forwards, rbegin()/rend() backwards, Reversed() for a backward
    // range-based loop: for (int value : array.Reversed()).
    T* begin() { return m_pData; }
    T* end() { return m_pData + m_nCount; }
    const T* begin() const { return m_pData; }
    const T* end() const { return m_pData + m_nCount; }
    const T* cbegin() const { return m_pData; }
    const T* cend() const { return m_pData + m_nCount; }
    reverse_iterator rbegin() { return reverse_iterator(end()); }
    reverse_iterator rend() { return reverse_iterator(begin()); }
    const_reverse_iterator rbegin() const { return const_reverse_iterator(end()); }
    const_reverse_iterator rend() const { return const_reverse_iterator(begin()); }
    const_reverse_iterator crbegin() const { return rbegin(); }
    const_reverse_iterator crend() const { return rend(); }
    SIteratorRange<reverse_iterator> Reversed() { return {rbegin(), rend()}; }
    SIteratorRange<const_reverse_iterator> Reversed() const { return {rbegin(), rend()}; }

    // Appends one element; returns true when the block had to be reallocated for it.
    bool Add(const T& value) { return emplaceLast("CbArray::Add", value); }
    bool Add(T&& value) { return emplaceLast("CbArray::Add", std::move(value)); }
    template <class... TArgs> bool Emplace(TArgs&&... args)
    {
        return emplaceLast("CbArray::Emplace", std::forward<TArgs>(args)...);
    }
    // Appends count elements copied from values (which may lie in this array).
    void Append(const T* values, unsigned int count);
    void Append(const CbArrayEx& other) { Append(other.m_pData, other.m_nCount); }

    // Inserts count copies of value before index (index = count appends); value may be an element of
    // this array. Throws CbExceptionContainer for an index past the end.
    void InsertAt(unsigned int index, const T& value, unsigned int count = 1);
    // Moves value in before index.
    void InsertAt(unsigned int index, T&& value)
    {
        if (index > m_nCount)
            throwOutOfRange("CbArray::InsertAt", index, m_nCount);
        emplaceLast("CbArray::InsertAt", std::move(value));
        std::rotate(m_pData + index, m_pData + m_nCount - 1, m_pData + m_nCount);
    }
    // Removes count elements from index on; throws CbExceptionContainer unless they all exist.
    void RemoveAt(unsigned int index, unsigned int count = 1);
    // Removes every element equal to value and returns how many went.
    unsigned int Remove(const T& value)
    {
        const T copy(value);
        return RemoveIf([&copy](const T& element) { return element == copy; });
    }
    template <class TPredicate> unsigned int RemoveIf(TPredicate predicate)
    {
        T* last = std::remove_if(begin(), end(), predicate);
        const auto removed = static_cast<unsigned int>(end() - last);
        shrinkTo(m_nCount - removed);
        return removed;
    }
    // Removes the last element; throws CbExceptionContainer on an empty array.
    void RemoveLast()
    {
        checkedIndex(m_nCount - 1, "CbArray::RemoveLast");
        shrinkTo(m_nCount - 1);
    }
    // Removes every element and frees the block.
    void RemoveAll() noexcept
    {
        release();
        m_pData = m_pEnd = nullptr;
        m_nCount = m_nCapacity = 0;
    }

    // Sets the element count: surplus elements are destroyed, new ones made by the policy. Growing
    // past the capacity reallocates to count slots, or to the next growth step when that is larger.
    void SetCount(unsigned int count);
    // Reallocates to exactly capacity slots; elements from capacity on are destroyed.
    void SetCapacity(unsigned int capacity)
    {
        if (capacity != m_nCapacity)
            reallocate(capacity, "CbArray::SetCapacity");
    }
    // Makes room for at least capacity elements.
    void Reserve(unsigned int capacity)
    {
        if (capacity > m_nCapacity)
            reallocate(capacity, "CbArray::Reserve");
    }
    // Shrinks the block to the element count.
    void FreeExtra() { SetCapacity(m_nCount); }

    // Exchanges the contents (block, count, capacity) with other; each keeps its grow-by count.
    void Swap(CbArrayEx& other) noexcept
    {
        std::swap(m_pData, other.m_pData);
        std::swap(m_pEnd, other.m_pEnd);
        std::swap(m_nCount, other.m_nCount);
        std::swap(m_nCapacity, other.m_nCapacity);
    }
    friend void swap(CbArrayEx& a, CbArrayEx& b) noexcept { a.Swap(b); }

    friend bool operator==(const CbArrayEx& a, const CbArrayEx& b)
    {
        return a.m_nCount == b.m_nCount && std::equal(a.begin(), a.end(), b.begin());
    }

private:
    static T* allocate(unsigned int capacity, const char* function)
    {
        return static_cast<T*>(CbArrayAllocation::Allocate(capacity, sizeof(T), alignof(T), function));
    }
    static void freeBlock(T* block) noexcept { CbArrayAllocation::Free(block, alignof(T)); }

    // Constructs count elements at destination from source: moved when that cannot throw, copied
    // otherwise, so that a failure leaves the source intact. On an exception nothing stays constructed.
    static void transfer(T* destination, T* source, unsigned int count)
    {
        if constexpr (std::is_trivially_copyable_v<T>)
        {
            if (count)
                std::memcpy(static_cast<void*>(destination), source, std::size_t(count) * sizeof(T));
        }
        else if constexpr (std::is_nothrow_move_constructible_v<T> || !std::is_copy_constructible_v<T>)
            std::uninitialized_move_n(source, count, destination);
        else
            std::uninitialized_copy_n(static_cast<const T*>(source), count, destination);
    }

    // The capacity after one growth step, clamped to the 32-bit count.
    unsigned int grownCapacity() const
    {
        if (m_nGrowBy)
            return m_nCapacity > UINT_MAX - m_nGrowBy ? UINT_MAX : m_nCapacity + m_nGrowBy;
        if (m_nCapacity == 0)
            return 1;
        return m_nCapacity > UINT_MAX / 2 ? UINT_MAX : 2 * m_nCapacity;
    }

    // Count after adding extra elements; throws CbExceptionMemory past the 32-bit count.
    unsigned int countPlus(std::size_t extra, const char* function) const
    {
        if (extra > UINT_MAX - m_nCount)
            CB_THROW(CbExceptionMemory, function,
                     std::to_string(m_nCount) + " + " + std::to_string(extra) +
                         " elements exceed a 32-bit count");
        return m_nCount + static_cast<unsigned int>(extra);
    }

    void updateEnd() noexcept { m_pEnd = m_nCount ? m_pData + m_nCount : nullptr; }

    // Replaces the block by newBlock of newCapacity slots whose first count elements are already
    // constructed; the old elements are destroyed.
    void adoptBlock(T* newBlock, unsigned int newCapacity, unsigned int count) noexcept
    {
        std::destroy_n(m_pData, m_nCount);
        freeBlock(m_pData);
        m_pData = newBlock;
        m_nCapacity = newCapacity;
        m_nCount = count;
        updateEnd();
    }

    void reallocate(unsigned int capacity, const char* function)
    {
        T* block = allocate(capacity, function);
        const unsigned int keep = std::min(m_nCount, capacity);
        try
        {
            transfer(block, m_pData, keep);
        }
        catch (...)
        {
            freeBlock(block);
            throw;
        }
        adoptBlock(block, capacity, keep);
    }

    template <class... TArgs> bool emplaceLast(const char* function, TArgs&&... args)
    {
        if (m_nCount < m_nCapacity)
        {
            ::new (static_cast<void*>(m_pData + m_nCount)) T(std::forward<TArgs>(args)...);
            m_pEnd = m_pData + ++m_nCount;
            return false;
        }
        if (m_nCapacity == UINT_MAX)
            countPlus(1, function);
        const unsigned int capacity = grownCapacity();
        T* block = allocate(capacity, function);
        // The new element first: its argument may be an element of the old block.
        try
        {
            ::new (static_cast<void*>(block + m_nCount)) T(std::forward<TArgs>(args)...);
        }
        catch (...)
        {
            freeBlock(block);
            throw;
        }
        try
        {
            transfer(block, m_pData, m_nCount);
        }
        catch (...)
        {
            block[m_nCount].~T();
            freeBlock(block);
            throw;
        }
        adoptBlock(block, capacity, m_nCount + 1);
        return true;
    }

    void copyFrom(const T* source, std::size_t count, const char* function);

    void shrinkTo(unsigned int count) noexcept
    {
        std::destroy_n(m_pData + count, m_nCount - count);
        m_nCount = count;
        updateEnd();
    }

    void release() noexcept
    {
        std::destroy_n(m_pData, m_nCount);
        freeBlock(m_pData);
    }

    void takeBlock(CbArrayEx& other) noexcept
    {
        m_pData = std::exchange(other.m_pData, nullptr);
        m_pEnd = std::exchange(other.m_pEnd, nullptr);
        m_nCount = std::exchange(other.m_nCount, 0);
        m_nCapacity = std::exchange(other.m_nCapacity, 0);
    }

    [[noreturn]] static void throwOutOfRange(const char* function, unsigned int index, unsigned int count)
    {
        CB_THROW(CbExceptionContainer, function,
                 "index " + std::to_string(index) + " of " + std::to_string(count) + " elements");
    }
    unsigned int checkedIndex(unsigned int index, const char* function) const
    {
        if (index >= m_nCount)
            throwOutOfRange(function, index, m_nCount);
        return index;
    }
    void checkIndexInDebug([[maybe_unused]] unsigned int index) const
    {
#ifndef NDEBUG
        checkedIndex(index, "CbArray::operator[]");
#endif
    }
    void checkRange(unsigned int first, unsigned int count, const char* function) const
    {
        if (first > m_nCount || count > m_nCount - first)
            CB_THROW(CbExceptionContainer, function,
                     "elements " + std::to_string(first) + " + " + std::to_string(count) + " of " +
                         std::to_string(m_nCount));
    }

    T* m_pData = nullptr;
    T* m_pEnd = nullptr;
    // Kept for the layout; no operation reads or writes it.
    std::uint32_t m_nReserved = 0;
    unsigned int m_nCount = 0;
    unsigned int m_nCapacity = 0;
    unsigned int m_nGrowBy = 0;
};

template <class T, class TPolicy> void CbArrayEx<T, TPolicy>::Append(const T* values, unsigned int count)
{
    if (count == 0)
        return;
    const unsigned int total = countPlus(count, "CbArray::Append");
    if (total <= m_nCapacity)
    {
        // values may lie in this array, but only in slots below the count, which stay untouched.
        std::uninitialized_copy_n(values, count, m_pData + m_nCount);
        m_nCount = total;
        updateEnd();
        return;
    }
    const unsigned int capacity = std::max(total, grownCapacity());
    T* block = allocate(capacity, "CbArray::Append");
    try
    {
        std::uninitialized_copy_n(values, count, block + m_nCount);
    }
    catch (...)
    {
        freeBlock(block);
        throw;
    }
    try
    {
        transfer(block, m_pData, m_nCount);
    }
    catch (...)
    {
        std::destroy_n(block + m_nCount, count);
        freeBlock(block);
        throw;
    }
    adoptBlock(block, capacity, total);
}

template <class T, class TPolicy>
void CbArrayEx<T, TPolicy>::InsertAt(unsigned int index, const T& value, unsigned int count)
{
    if (index > m_nCount)
        throwOutOfRange("CbArray::InsertAt", index, m_nCount);
    if (count == 0)
        return;
    const unsigned int total = countPlus(count, "CbArray::InsertAt");
    if (total <= m_nCapacity)
    {
        if constexpr (std::is_trivially_copyable_v<T>)
        {
            const T copy = value;
            std::memmove(static_cast<void*>(m_pData + index + count), m_pData + index,
                         std::size_t(m_nCount - index) * sizeof(T));
            std::uninitialized_fill_n(m_pData + index, count, copy);
            m_nCount = total;
            updateEnd();
        }
        else
        {
            // Make the copies behind the last element (value is still where it was), then rotate
            // them into place.
            const unsigned int oldCount = m_nCount;
            std::uninitialized_fill_n(m_pData + oldCount, count, value);
            m_nCount = total;
            updateEnd();
            std::rotate(m_pData + index, m_pData + oldCount, m_pData + total);
        }
        return;
    }
    const unsigned int capacity = std::max(total, grownCapacity());
    T* block = allocate(capacity, "CbArray::InsertAt");
    unsigned int made = 0; // elements constructed in block, in the order copies, head, tail
    try
    {
        std::uninitialized_fill_n(block + index, count, value);
        made = 1;
        transfer(block, m_pData, index);
        made = 2;
        transfer(block + index + count, m_pData + index, m_nCount - index);
    }
    catch (...)
    {
        if (made >= 1)
            std::destroy_n(block + index, count);
        if (made >= 2)
            std::destroy_n(block, index);
        freeBlock(block);
        throw;
    }
    adoptBlock(block, capacity, total);
}

template <class T, class TPolicy> void CbArrayEx<T, TPolicy>::RemoveAt(unsigned int index, unsigned int count)
{
    if (index > m_nCount || count > m_nCount - index)
        CB_THROW(CbExceptionContainer, "CbArray::RemoveAt",
                 "elements " + std::to_string(index) + " + " + std::to_string(count) + " of " +
                     std::to_string(m_nCount));
    if (count == 0)
        return;
    if constexpr (std::is_trivially_copyable_v<T>)
    {
        std::memmove(static_cast<void*>(m_pData + index), m_pData + index + count,
                     std::size_t(m_nCount - index - count) * sizeof(T));
        m_nCount -= count;
        updateEnd();
    }
    else
    {
        std::move(m_pData + index + count, m_pData + m_nCount, m_pData + index);
        shrinkTo(m_nCount - count);
    }
}

template <class T, class TPolicy> void CbArrayEx<T, TPolicy>::SetCount(unsigned int count)
{
    if (count <= m_nCount)
    {
        shrinkTo(count);
        return;
    }
    if (count > m_nCapacity)
        reallocate(std::max(count, grownCapacity()), "CbArray::SetCount");
    TPolicy::Construct(m_pData + m_nCount, count - m_nCount);
    m_nCount = count;
    updateEnd();
}

template <class T, class TPolicy>
void CbArrayEx<T, TPolicy>::copyFrom(const T* source, std::size_t count, const char* function)
{
    if (count > UINT_MAX)
        CB_THROW(CbExceptionMemory, function, std::to_string(count) + " elements exceed a 32-bit count");
    const auto n = static_cast<unsigned int>(count);
    if (n > m_nCapacity)
    {
        // Copy into a new block first, so a failing copy leaves this array as it was.
        T* block = allocate(n, function);
        try
        {
            std::uninitialized_copy_n(source, n, block);
        }
        catch (...)
        {
            freeBlock(block);
            throw;
        }
        adoptBlock(block, n, n);
        return;
    }
    const unsigned int common = std::min(n, m_nCount);
    std::copy_n(source, common, m_pData);
    if (n > m_nCount)
    {
        std::uninitialized_copy_n(source + common, n - common, m_pData + common);
        m_nCount = n;
        updateEnd();
    }
    else
        shrinkTo(n);
}
