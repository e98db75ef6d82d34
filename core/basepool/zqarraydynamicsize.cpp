#include "basepool/zqarraydynamicsize.h"

#include "basepool/cbarrayallocation.h"
#include "basepool/cbexception.h"

#include <algorithm>
#include <climits>
#include <cstddef>
#include <string>
#include <utility>
#include <vector>

namespace
{
constexpr std::size_t kAlignment = alignof(std::max_align_t);

unsigned char* allocateBlock(unsigned int count, std::size_t elementSize, const char* function)
{
    return static_cast<unsigned char*>(CbArrayAllocation::Allocate(count, elementSize, kAlignment, function));
}
} // namespace

ZqArrayDynamicSize::ZqArrayDynamicSize(std::size_t elementSize, unsigned int growBy)
    : m_elementSize(elementSize), m_growBy(growBy)
{
}

ZqArrayDynamicSize::ZqArrayDynamicSize(const ZqArrayDynamicSize& other)
    : m_elementSize(other.m_elementSize), m_growBy(other.m_growBy)
{
    m_data = allocateBlock(other.m_count, m_elementSize, "ZqArrayDynamicSize::ZqArrayDynamicSize");
    if (m_data)
        std::memcpy(m_data, other.m_data, other.m_count * m_elementSize);
    m_count = m_capacity = other.m_count;
}

ZqArrayDynamicSize::ZqArrayDynamicSize(ZqArrayDynamicSize&& other) noexcept
    : m_data(std::exchange(other.m_data, nullptr)), m_elementSize(other.m_elementSize),
      m_count(std::exchange(other.m_count, 0)), m_capacity(std::exchange(other.m_capacity, 0)),
      m_growBy(other.m_growBy)
{
}

ZqArrayDynamicSize& ZqArrayDynamicSize::operator=(const ZqArrayDynamicSize& other)
{
    if (this != &other)
    {
        ZqArrayDynamicSize copy(other);
        copy.m_growBy = m_growBy;
        *this = std::move(copy);
    }
    return *this;
}

ZqArrayDynamicSize& ZqArrayDynamicSize::operator=(ZqArrayDynamicSize&& other) noexcept
{
    if (this != &other)
    {
        CbArrayAllocation::Free(m_data, kAlignment);
        m_data = std::exchange(other.m_data, nullptr);
        m_elementSize = other.m_elementSize;
        m_count = std::exchange(other.m_count, 0);
        m_capacity = std::exchange(other.m_capacity, 0);
    }
    return *this;
}

ZqArrayDynamicSize::~ZqArrayDynamicSize()
{
    CbArrayAllocation::Free(m_data, kAlignment);
}

void ZqArrayDynamicSize::SetElementSize(std::size_t elementSize)
{
    RemoveAll();
    m_elementSize = elementSize;
}

void ZqArrayDynamicSize::RemoveAll() noexcept
{
    CbArrayAllocation::Free(m_data, kAlignment);
    m_data = nullptr;
    m_count = m_capacity = 0;
}

unsigned int ZqArrayDynamicSize::grownCapacity() const
{
    if (m_growBy)
        return m_capacity > UINT_MAX - m_growBy ? UINT_MAX : m_capacity + m_growBy;
    if (m_capacity == 0)
        return 1;
    return m_capacity > UINT_MAX / 2 ? UINT_MAX : 2 * m_capacity;
}

void ZqArrayDynamicSize::reallocate(unsigned int capacity, const char* function)
{
    unsigned char* block = allocateBlock(capacity, m_elementSize, function);
    const unsigned int keep = std::min(m_count, capacity);
    if (keep && m_elementSize)
        std::memcpy(block, m_data, keep * m_elementSize);
    CbArrayAllocation::Free(m_data, kAlignment);
    m_data = block;
    m_capacity = capacity;
    m_count = keep;
}

void ZqArrayDynamicSize::SetCount(unsigned int count, int growBy)
{
    if (growBy >= 0)
        m_growBy = static_cast<unsigned int>(growBy);
    if (count > m_capacity)
        reallocate(std::max(count, grownCapacity()), "ZqArrayDynamicSize::SetCount");
    if (count > m_count && m_elementSize)
        std::memset(m_data + m_count * m_elementSize, 0, (count - m_count) * m_elementSize);
    m_count = count;
}

void ZqArrayDynamicSize::SetMemoryElementCount(unsigned int count, bool keepElements)
{
    const unsigned int capacity = keepElements ? std::max(count, m_count) : count;
    if (capacity != m_capacity)
        reallocate(capacity, "ZqArrayDynamicSize::SetMemoryElementCount");
}

bool ZqArrayDynamicSize::Add(const void* element)
{
    if (m_count < m_capacity)
    {
        if (m_elementSize)
            std::memmove(m_data + m_count * m_elementSize, element, m_elementSize);
        ++m_count;
        return false;
    }
    if (m_capacity == UINT_MAX)
        CB_THROW(CbExceptionMemory, "ZqArrayDynamicSize::Add", "the array holds 2^32-1 elements");
    // Copy the element before the old block goes: it may lie in it.
    std::vector<unsigned char> copy(static_cast<const unsigned char*>(element),
                                    static_cast<const unsigned char*>(element) + m_elementSize);
    reallocate(grownCapacity(), "ZqArrayDynamicSize::Add");
    if (m_elementSize)
        std::memcpy(m_data + m_count * m_elementSize, copy.data(), m_elementSize);
    ++m_count;
    return true;
}

void ZqArrayDynamicSize::InsertAt(unsigned int index, const void* element, unsigned int count)
{
    if (index > m_count)
        CB_THROW(CbExceptionContainer, "ZqArrayDynamicSize::InsertAt",
                 "index " + std::to_string(index) + " of " + std::to_string(m_count) + " elements");
    if (count == 0)
        return;
    if (count > UINT_MAX - m_count)
        CB_THROW(CbExceptionMemory, "ZqArrayDynamicSize::InsertAt", "more than 2^32-1 elements");
    std::vector<unsigned char> copy(static_cast<const unsigned char*>(element),
                                    static_cast<const unsigned char*>(element) + m_elementSize);
    const unsigned int total = m_count + count;
    if (total > m_capacity)
        reallocate(std::max(total, grownCapacity()), "ZqArrayDynamicSize::InsertAt");
    if (m_elementSize == 0)
    {
        m_count = total;
        return;
    }
    unsigned char* at = m_data + index * m_elementSize;
    std::memmove(at + count * m_elementSize, at, (m_count - index) * m_elementSize);
    for (unsigned int i = 0; i < count; ++i)
        std::memcpy(at + i * m_elementSize, copy.data(), m_elementSize);
    m_count = total;
}

void ZqArrayDynamicSize::RemoveAt(unsigned int index, unsigned int count)
{
    if (index > m_count || count > m_count - index)
        CB_THROW(CbExceptionContainer, "ZqArrayDynamicSize::RemoveAt",
                 "elements " + std::to_string(index) + " + " + std::to_string(count) + " of " +
                     std::to_string(m_count));
    if (m_elementSize)
    {
        unsigned char* at = m_data + index * m_elementSize;
        std::memmove(at, at + count * m_elementSize, (m_count - index - count) * m_elementSize);
    }
    m_count -= count;
}

std::size_t ZqArrayDynamicSize::checkedIndex(unsigned int index) const
{
    if (index >= m_count)
        CB_THROW(CbExceptionContainer, "ZqArrayDynamicSize::GetAt",
                 "index " + std::to_string(index) + " of " + std::to_string(m_count) + " elements");
    return index;
}

const unsigned char* ZqArrayDynamicSize::fieldAt(unsigned int index, std::size_t offset,
                                                 std::size_t size) const
{
    const std::size_t start = checkedIndex(index) * m_elementSize;
    if (offset > m_elementSize || size > m_elementSize - offset)
        CB_THROW(CbExceptionContainer, "ZqArrayDynamicSize::Get",
                 std::to_string(size) + " bytes at " + std::to_string(offset) + " do not fit an element of " +
                     std::to_string(m_elementSize));
    return m_data + start + offset;
}
