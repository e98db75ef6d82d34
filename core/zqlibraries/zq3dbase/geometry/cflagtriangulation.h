#pragma once

#include "basepool/cbexception.h"
#include "basepool/cbtypename.h"
#include "zq3dbase/geometry/eelementkind.h"
#include "zq3dbase/geometry/smemoryblock.h"

#include <algorithm>
#include <bit>
#include <climits>
#include <cstdint>
#include <string>

namespace Geometry
{
// One bit per element of a triangulation (marks of a traversal, a selection), for the elements of
// its kind (see EElementKind), addressed by index or by a reference of type TRef. 64 flags share a
// word, so the flags of ten million vertices take 1.2 MB.
//
// The store caches its element count: after the triangulation gained or lost elements, call
// SetAccurate() to follow it (flags of existing elements stay, new ones are clear). It keeps a
// pointer to its triangulation, which must outlive it and stay where it is.
//
//     CFlagTriangulation<CVertexRef> visited(triangulation, eEK_Vertices);
//     if (!visited.TestAndSet(v)) ...       // first visit of v
//
// Throws: SetAccurate with a kind outside 0 to 4 throws CbException naming
// "Geometry::CFlagTriangulation<class Geometry::CVertexRef>::SetAccurate" (for that TRef).
template <class TRef> class CFlagTriangulation
{
public:
    explicit CFlagTriangulation(const CTriangulation& triangulation, unsigned int kind = eEK_Vertices)
        : m_triangulation(&triangulation)
    {
        SetAccurate(kind);
    }

    // Sets the element kind (0 to 4) and sizes the store to the triangulation's count of it.
    void SetAccurate(unsigned int kind)
    {
        if (kind >= kElementKindCount)
            CB_THROW(CbException, functionName("SetAccurate").c_str(),
                     "element kind " + std::to_string(kind) + " outside 0 to 4");
        const std::uint64_t count = CountElements(*m_triangulation, kind);
        if (count > UINT_MAX)
            CB_THROW(CbExceptionMemory, functionName("SetAccurate").c_str(),
                     std::to_string(count) + " flags");
        const auto newCount = static_cast<unsigned int>(count);
        const unsigned int kept = std::min(m_count, newCount);
        m_words.SetCount(wordCount(newCount));
        // Clear everything from the first flag that was not kept: the tail of its word and the rest.
        const unsigned int firstWord = kept / 64;
        if (firstWord < m_words.GetCount())
        {
            m_words[firstWord] &= lowBits(kept % 64);
            std::fill(m_words.begin() + firstWord + 1, m_words.end(), std::uint64_t(0));
        }
        m_kind = kind;
        m_count = newCount;
    }
    // Follows the triangulation's present count of the store's kind.
    void SetAccurate() { SetAccurate(m_kind); }

    unsigned int GetKind() const { return m_kind; }
    unsigned int GetCount() const { return m_count; }

    // Element index below GetCount() (not checked).
    bool IsSet(unsigned int index) const { return (m_words[index / 64] >> (index % 64)) & 1u; }
    bool IsSet(TRef element) const { return IsSet(element.GetIndex()); }
    void Set(unsigned int index, bool value = true)
    {
        const std::uint64_t bit = std::uint64_t(1) << (index % 64);
        std::uint64_t& word = m_words[index / 64];
        word = value ? (word | bit) : (word & ~bit);
    }
    void Set(TRef element, bool value = true) { Set(element.GetIndex(), value); }
    // Sets the flag and returns whether it was set before.
    bool TestAndSet(unsigned int index)
    {
        const bool before = IsSet(index);
        Set(index);
        return before;
    }
    bool TestAndSet(TRef element) { return TestAndSet(element.GetIndex()); }

    void SetAll(bool value)
    {
        std::fill(m_words.begin(), m_words.end(), value ? ~std::uint64_t(0) : std::uint64_t(0));
        if (value && m_count % 64)
            m_words[m_count / 64] = lowBits(m_count % 64);
    }
    // Number of flags set.
    unsigned int CountSet() const
    {
        unsigned int n = 0;
        for (const std::uint64_t word : m_words)
            n += static_cast<unsigned int>(std::popcount(word));
        return n;
    }

    // "Geometry::CFlagTriangulation<class Geometry::CVertexRef>::" + member.
    static std::string functionName(const char* member)
    {
        return CbTypeNameTemplate("Geometry::CFlagTriangulation", CbTypeName<TRef>::Get()) + "::" + member;
    }

private:
    static unsigned int wordCount(unsigned int flags) { return flags / 64 + (flags % 64 != 0); }
    // The lowest n bits (n < 64).
    static std::uint64_t lowBits(unsigned int n) { return (std::uint64_t(1) << n) - 1; }

    const CTriangulation* m_triangulation;
    unsigned int m_kind = eEK_None;
    unsigned int m_count = 0;
    // Bits past m_count are always clear, so CountSet and resizing need no masking.
    SMemoryBlock<std::uint64_t> m_words;
};
} // namespace Geometry

template <class TRef> struct CbTypeName<Geometry::CFlagTriangulation<TRef>>
{
    static std::string Get()
    {
        return "class " + CbTypeNameTemplate("Geometry::CFlagTriangulation", CbTypeName<TRef>::Get());
    }
};
