#pragma once

#include "basepool/basepool_export.h"

#include <cstddef>
#include <cstring>

// Contiguous growable array of elements whose size in bytes is chosen at run time (vertex records
// whose attributes are known only when a file is read). Element i starts GetElementSize() * i bytes
// after GetData(); the block is aligned for any fundamental type, an element only when the element
// size is a multiple of that type's alignment, so Get/Set copy through memcpy.
//
//     ZqArrayDynamicSize vertices(3 * sizeof(float));
//     const float p[3] = {1, 2, 3};
//     vertices.Add(p);
//     vertices.Get<float>(0, sizeof(float));   // 2
//
// Growth follows CbArray: grow-by slots at a time, or doubling from 1 when grow-by is 0. New
// elements are zero-filled. An allocation that cannot be satisfied throws CbExceptionMemory and
// leaves the array as it was; an index past the end throws CbExceptionContainer.
class BASEPOOL_API ZqArrayDynamicSize
{
public:
    explicit ZqArrayDynamicSize(std::size_t elementSize = 0, unsigned int growBy = 0);
    ZqArrayDynamicSize(const ZqArrayDynamicSize& other);
    ZqArrayDynamicSize(ZqArrayDynamicSize&& other) noexcept;
    ZqArrayDynamicSize& operator=(const ZqArrayDynamicSize& other);
    ZqArrayDynamicSize& operator=(ZqArrayDynamicSize&& other) noexcept;
    ~ZqArrayDynamicSize();

    std::size_t GetElementSize() const { return m_elementSize; }
    // Sets the element size in bytes. The elements held so far are removed and the block is freed:
    // their bytes mean nothing under another size.
    void SetElementSize(std::size_t elementSize);

    unsigned int GetCount() const { return m_count; }
    bool IsEmpty() const { return m_count == 0; }
    // Slots in the block.
    unsigned int GetMemoryElementCount() const { return m_capacity; }
    unsigned int GetGrowBy() const { return m_growBy; }
    void SetGrowBy(unsigned int growBy) { m_growBy = growBy; }

    // Sets the element count; new elements are zero-filled. growBy >= 0 sets the grow-by count first.
    void SetCount(unsigned int count, int growBy = -1);
    // Reallocates the block to count slots. With keepElements the block never drops an element (it
    // holds at least GetCount() slots); without, elements from count on are removed.
    void SetMemoryElementCount(unsigned int count, bool keepElements);

    unsigned char* GetData() { return m_data; }
    const unsigned char* GetData() const { return m_data; }
    // Start of element index: checked by GetAt, unchecked by operator[] in release builds.
    unsigned char* GetAt(unsigned int index) { return m_data + checkedIndex(index) * m_elementSize; }
    const unsigned char* GetAt(unsigned int index) const
    {
        return m_data + checkedIndex(index) * m_elementSize;
    }
    unsigned char* operator[](unsigned int index)
    {
#ifndef NDEBUG
        return GetAt(index);
#else
        return m_data + index * m_elementSize;
#endif
    }
    const unsigned char* operator[](unsigned int index) const
    {
#ifndef NDEBUG
        return GetAt(index);
#else
        return m_data + index * m_elementSize;
#endif
    }

    // A value of type T stored offset bytes into element index; throws CbExceptionContainer when it
    // does not lie inside the element.
    template <class T> T Get(unsigned int index, std::size_t offset = 0) const
    {
        T value;
        std::memcpy(&value, fieldAt(index, offset, sizeof(T)), sizeof(T));
        return value;
    }
    template <class T> void Set(unsigned int index, std::size_t offset, const T& value)
    {
        std::memcpy(const_cast<unsigned char*>(fieldAt(index, offset, sizeof(T))), &value, sizeof(T));
    }

    // Appends one element copied from GetElementSize() bytes at element (which may lie in this
    // array); returns true when the block was reallocated.
    bool Add(const void* element);
    // Inserts count copies of the element at element before index.
    void InsertAt(unsigned int index, const void* element, unsigned int count = 1);
    void RemoveAt(unsigned int index, unsigned int count = 1);
    // Removes every element and frees the block.
    void RemoveAll() noexcept;

private:
    unsigned int grownCapacity() const;
    void reallocate(unsigned int capacity, const char* function);
    std::size_t checkedIndex(unsigned int index) const;
    const unsigned char* fieldAt(unsigned int index, std::size_t offset, std::size_t size) const;

    unsigned char* m_data = nullptr;
    std::size_t m_elementSize = 0;
    unsigned int m_count = 0;
    unsigned int m_capacity = 0;
    unsigned int m_growBy = 0;
};
