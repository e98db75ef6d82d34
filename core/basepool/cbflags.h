#pragma once

#include <type_traits>

// A set of flags of the enumeration E, kept as the bits of its underlying type.
//
//     CbFlags<ZqEigenSolver<double>::EFlags> flags = ZqEigenSolver<double>::eF_Symmetric;
//     flags |= ZqEigenSolver<double>::eF_SortAscending;
template <class E> class CbFlags
{
public:
    using Bits = std::make_unsigned_t<std::underlying_type_t<E>>;

    constexpr CbFlags() = default;
    constexpr CbFlags(E flag) : m_bits(static_cast<Bits>(flag)) {}
    constexpr static CbFlags FromBits(Bits bits)
    {
        CbFlags f;
        f.m_bits = bits;
        return f;
    }

    constexpr Bits GetBits() const { return m_bits; }
    constexpr bool IsSet(E flag) const
    {
        return (m_bits & static_cast<Bits>(flag)) == static_cast<Bits>(flag);
    }
    constexpr bool IsAnySet(CbFlags flags) const { return (m_bits & flags.m_bits) != 0; }
    constexpr bool IsEmpty() const { return m_bits == 0; }

    constexpr CbFlags& Add(CbFlags flags)
    {
        m_bits |= flags.m_bits;
        return *this;
    }
    constexpr CbFlags& Remove(CbFlags flags)
    {
        m_bits &= static_cast<Bits>(~flags.m_bits);
        return *this;
    }
    constexpr CbFlags& operator|=(CbFlags flags) { return Add(flags); }
    constexpr friend CbFlags operator|(CbFlags a, CbFlags b) { return a.Add(b); }
    constexpr friend CbFlags operator&(CbFlags a, CbFlags b) { return FromBits(a.m_bits & b.m_bits); }
    constexpr friend bool operator==(CbFlags a, CbFlags b) { return a.m_bits == b.m_bits; }

private:
    Bits m_bits = 0;
};
