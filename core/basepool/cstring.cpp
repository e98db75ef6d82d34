#include "basepool/cstring.h"

#include "basepool/cbexception.h"
#include "basepool/cbutf8.h"

#include <algorithm>
#include <cwctype>
#include <locale.h>

namespace
{
// Case mappings come from the C.UTF-8 locale, which knows umlauts and every other script; without
// it only ASCII letters change case.
locale_t utf8Locale()
{
    static const locale_t locale = []
    {
        for (const char* name : {"C.UTF-8", "C.utf8", "en_US.UTF-8"})
            if (locale_t l = newlocale(LC_CTYPE_MASK, name, nullptr))
                return l;
        return static_cast<locale_t>(nullptr);
    }();
    return locale;
}

char32_t foldLower(char32_t ch)
{
    const auto w = static_cast<wint_t>(ch);
    return utf8Locale() ? towlower_l(w, utf8Locale()) : std::towlower(w);
}

char32_t foldUpper(char32_t ch)
{
    const auto w = static_cast<wint_t>(ch);
    return utf8Locale() ? towupper_l(w, utf8Locale()) : std::towupper(w);
}

// One character of a string: a wchar_t of wide text, a UTF-8 sequence of narrow text. A byte of
// narrow text that starts no well-formed sequence is a character of its own with the code
// kRawByte + byte, which no real character has, so such bytes survive every operation unchanged.
constexpr char32_t kRawByte = 0x110000;

struct SChar
{
    std::size_t length;
    char32_t code;
};

SChar nextChar(const std::wstring& s, std::size_t pos)
{
    return {1, static_cast<char32_t>(s[pos])};
}

SChar nextChar(const std::string& s, std::size_t pos)
{
    const auto* bytes = reinterpret_cast<const unsigned char*>(s.data()) + pos;
    char32_t cp;
    const std::size_t length = CbUtf8::Decode(bytes, s.size() - pos, cp);
    if (cp == CbUtf8::kIllFormed)
        return {1, kRawByte + bytes[0]};
    return {length, cp};
}

// The characters of a delimiter or trim set.
template <class CharT> std::u32string codesOf(const CharT* chars)
{
    std::u32string codes;
    if (!chars)
        return codes;
    const std::basic_string<CharT> text(chars);
    for (std::size_t pos = 0; pos < text.size();)
    {
        const SChar c = nextChar(text, pos);
        codes += c.code;
        pos += c.length;
    }
    return codes;
}

bool contains(const std::u32string& set, char32_t code)
{
    return set.find(code) != std::u32string::npos;
}

void appendCode(std::wstring& out, char32_t code)
{
    out += static_cast<wchar_t>(code);
}

void appendCode(std::string& out, char32_t code)
{
    if (code >= kRawByte)
        out += static_cast<char>(code - kRawByte);
    else
        CbUtf8::Append(out, code);
}

// Applies fold to every character; raw bytes and values outside Unicode stay as they are.
template <class CharT> void mapCase(std::basic_string<CharT>& text, char32_t (*fold)(char32_t))
{
    std::basic_string<CharT> out;
    out.reserve(text.size());
    for (std::size_t pos = 0; pos < text.size();)
    {
        const SChar c = nextChar(text, pos);
        appendCode(out, c.code <= 0x10FFFF ? fold(c.code) : c.code);
        pos += c.length;
    }
    text.swap(out);
}

template <class CharT> std::size_t length(const CharT* s)
{
    return s ? std::char_traits<CharT>::length(s) : 0;
}
} // namespace

std::wstring CbUtf8ToWide(std::string_view text)
{
    std::wstring out;
    out.reserve(text.size());
    const auto* s = reinterpret_cast<const unsigned char*>(text.data());
    for (std::size_t i = 0; i < text.size();)
    {
        char32_t cp;
        i += CbUtf8::Decode(s + i, text.size() - i, cp);
        out += static_cast<wchar_t>(cp == CbUtf8::kIllFormed ? CbUtf8::kReplacement : cp);
    }
    return out;
}

std::string CbWideToUtf8(std::wstring_view text)
{
    std::string out;
    out.reserve(text.size());
    for (std::size_t i = 0; i < text.size();)
    {
        char32_t cp;
        i += CbUtf8::DecodeWide(text.data() + i, text.size() - i, cp);
        CbUtf8::Append(out, cp);
    }
    return out;
}

template <class CharT> CbStringT<CharT>::CbStringT(const OtherChar* text)
{
    if (!text)
        return;
    if constexpr (std::is_same_v<CharT, wchar_t>)
        m_text = CbUtf8ToWide(text);
    else
        m_text = CbWideToUtf8(text);
}

template <class CharT>
CbStringT<CharT>::CbStringT(const CbStringT<OtherChar>& other) : CbStringT(other.GetString())
{
}

template <class CharT> CharT CbStringT<CharT>::GetAt(int index) const
{
    // As in MFC, the terminator at GetLength() may be read.
    if (index < 0 || index > GetLength())
        CB_THROW(CbExceptionPreconditionViolation, "CbStringT::GetAt",
                 "index " + std::to_string(index) + " outside 0.." + std::to_string(GetLength()));
    return m_text.c_str()[index];
}

template <class CharT> void CbStringT<CharT>::SetAt(int index, CharT ch)
{
    if (index < 0 || index >= GetLength())
        CB_THROW(CbExceptionPreconditionViolation, "CbStringT::SetAt",
                 "index " + std::to_string(index) + " outside 0.." + std::to_string(GetLength() - 1));
    m_text[static_cast<std::size_t>(index)] = ch;
}

template <class CharT> bool CbStringT<CharT>::isSpace(CharT ch)
{
    return ch == ' ' || ch == '\t' || ch == '\n' || ch == '\r' || ch == '\v' || ch == '\f';
}

template <class CharT> int CbStringT<CharT>::Compare(const CharT* other) const
{
    std::basic_string_view<CharT> a(m_text), b(other ? other : std::basic_string_view<CharT>());
    // Code point order: compare as unsigned so that UTF-8 and UTF-32 order agree.
    std::size_t n = std::min(a.size(), b.size());
    for (std::size_t i = 0; i < n; ++i)
    {
        auto x = static_cast<std::make_unsigned_t<CharT>>(a[i]),
             y = static_cast<std::make_unsigned_t<CharT>>(b[i]);
        if (x != y)
            return x < y ? -1 : 1;
    }
    return a.size() == b.size() ? 0 : a.size() < b.size() ? -1 : 1;
}

template <class CharT> int CbStringT<CharT>::CompareNoCase(const CharT* other) const
{
    CbStringT a(*this), b(other);
    a.MakeLower();
    b.MakeLower();
    return a.Compare(b.GetString());
}

template <class CharT> int CbStringT<CharT>::Delete(int index, int count)
{
    if (index < 0)
        index = 0;
    if (count > 0 && index < GetLength())
        m_text.erase(static_cast<std::size_t>(index), static_cast<std::size_t>(count));
    return GetLength();
}

template <class CharT> int CbStringT<CharT>::Insert(int index, CharT ch)
{
    index = std::clamp(index, 0, GetLength());
    m_text.insert(m_text.begin() + index, ch);
    return GetLength();
}

template <class CharT> int CbStringT<CharT>::Insert(int index, const CharT* text)
{
    index = std::clamp(index, 0, GetLength());
    if (text)
        m_text.insert(static_cast<std::size_t>(index), text);
    return GetLength();
}

template <class CharT> int CbStringT<CharT>::Remove(CharT ch)
{
    const std::size_t before = m_text.size();
    m_text.erase(std::remove(m_text.begin(), m_text.end(), ch), m_text.end());
    return static_cast<int>(before - m_text.size());
}

template <class CharT> int CbStringT<CharT>::Replace(CharT oldChar, CharT newChar)
{
    int count = 0;
    for (CharT& c : m_text)
        if (c == oldChar)
        {
            c = newChar;
            ++count;
        }
    return count;
}

template <class CharT> int CbStringT<CharT>::Replace(const CharT* oldText, const CharT* newText)
{
    const std::size_t oldLength = length(oldText);
    if (oldLength == 0)
        return 0;
    const StdString replacement = newText ? newText : StdString();
    int count = 0;
    for (std::size_t pos = m_text.find(oldText, 0, oldLength); pos != StdString::npos;
         pos = m_text.find(oldText, pos, oldLength))
    {
        m_text.replace(pos, oldLength, replacement);
        pos += replacement.size();
        ++count;
    }
    return count;
}

template <class CharT> CbStringT<CharT>& CbStringT<CharT>::MakeLower()
{
    mapCase(m_text, foldLower);
    return *this;
}

template <class CharT> CbStringT<CharT>& CbStringT<CharT>::MakeUpper()
{
    mapCase(m_text, foldUpper);
    return *this;
}

template <class CharT> CbStringT<CharT>& CbStringT<CharT>::MakeReverse()
{
    // Characters, not code units, change places, so that narrow UTF-8 text stays valid.
    StdString reversed(m_text.size(), CharT());
    for (std::size_t pos = 0; pos < m_text.size();)
    {
        const SChar c = nextChar(m_text, pos);
        std::copy_n(m_text.begin() + pos, c.length, reversed.end() - pos - c.length);
        pos += c.length;
    }
    m_text.swap(reversed);
    return *this;
}

template <class CharT> CbStringT<CharT>& CbStringT<CharT>::TrimLeft()
{
    auto it = std::find_if(m_text.begin(), m_text.end(), [](CharT c) { return !isSpace(c); });
    m_text.erase(m_text.begin(), it);
    return *this;
}

template <class CharT> CbStringT<CharT>& CbStringT<CharT>::TrimLeft(CharT ch)
{
    const CharT chars[2] = {ch, 0};
    return TrimLeft(chars);
}

template <class CharT> CbStringT<CharT>& CbStringT<CharT>::TrimLeft(const CharT* chars)
{
    const std::u32string set = codesOf(chars);
    std::size_t pos = 0;
    while (pos < m_text.size())
    {
        const SChar c = nextChar(m_text, pos);
        if (!contains(set, c.code))
            break;
        pos += c.length;
    }
    m_text.erase(0, pos);
    return *this;
}

template <class CharT> CbStringT<CharT>& CbStringT<CharT>::TrimRight()
{
    auto it = std::find_if(m_text.rbegin(), m_text.rend(), [](CharT c) { return !isSpace(c); });
    m_text.erase(it.base(), m_text.end());
    return *this;
}

template <class CharT> CbStringT<CharT>& CbStringT<CharT>::TrimRight(CharT ch)
{
    const CharT chars[2] = {ch, 0};
    return TrimRight(chars);
}

template <class CharT> CbStringT<CharT>& CbStringT<CharT>::TrimRight(const CharT* chars)
{
    // Narrow text is walked forwards: only there are its character boundaries known.
    const std::u32string set = codesOf(chars);
    std::size_t keep = 0;
    for (std::size_t pos = 0; pos < m_text.size();)
    {
        const SChar c = nextChar(m_text, pos);
        pos += c.length;
        if (!contains(set, c.code))
            keep = pos;
    }
    m_text.erase(keep);
    return *this;
}

template <class CharT> CbStringT<CharT>& CbStringT<CharT>::Trim()
{
    return TrimRight().TrimLeft();
}

template <class CharT> CbStringT<CharT>& CbStringT<CharT>::Trim(CharT ch)
{
    return TrimRight(ch).TrimLeft(ch);
}

template <class CharT> CbStringT<CharT>& CbStringT<CharT>::Trim(const CharT* chars)
{
    return TrimRight(chars).TrimLeft(chars);
}

template <class CharT> int CbStringT<CharT>::Find(CharT ch, int start) const
{
    if (start < 0 || start > GetLength())
        return -1;
    const std::size_t pos = m_text.find(ch, static_cast<std::size_t>(start));
    return pos == StdString::npos ? -1 : static_cast<int>(pos);
}

template <class CharT> int CbStringT<CharT>::Find(const CharT* text, int start) const
{
    if (!text || start < 0 || start > GetLength())
        return -1;
    const std::size_t pos = m_text.find(text, static_cast<std::size_t>(start));
    return pos == StdString::npos ? -1 : static_cast<int>(pos);
}

template <class CharT> int CbStringT<CharT>::ReverseFind(CharT ch) const
{
    const std::size_t pos = m_text.rfind(ch);
    return pos == StdString::npos ? -1 : static_cast<int>(pos);
}

template <class CharT> int CbStringT<CharT>::FindOneOf(const CharT* chars) const
{
    const std::u32string set = codesOf(chars);
    for (std::size_t pos = 0; pos < m_text.size();)
    {
        const SChar c = nextChar(m_text, pos);
        if (contains(set, c.code))
            return static_cast<int>(pos);
        pos += c.length;
    }
    return -1;
}

template <class CharT> CbStringT<CharT> CbStringT<CharT>::Mid(int first) const
{
    return Mid(first, GetLength());
}

template <class CharT> CbStringT<CharT> CbStringT<CharT>::Mid(int first, int count) const
{
    first = std::clamp(first, 0, GetLength());
    count = std::clamp(count, 0, GetLength() - first);
    return CbStringT(m_text.substr(static_cast<std::size_t>(first), static_cast<std::size_t>(count)));
}

template <class CharT> CbStringT<CharT> CbStringT<CharT>::Left(int count) const
{
    return Mid(0, count);
}

template <class CharT> CbStringT<CharT> CbStringT<CharT>::Right(int count) const
{
    count = std::clamp(count, 0, GetLength());
    return Mid(GetLength() - count, count);
}

template <class CharT> std::vector<CbStringT<CharT>> CbStringT<CharT>::Split(const CharT* delimiters) const
{
    std::vector<CbStringT> pieces;
    int start = 0;
    for (CbStringT token = Tokenize(delimiters, start); start >= 0; token = Tokenize(delimiters, start))
        pieces.push_back(token);
    return pieces;
}

template <class CharT> CbStringT<CharT> CbStringT<CharT>::Tokenize(const CharT* delimiters, int& start) const
{
    const std::u32string set = codesOf(delimiters);
    std::size_t pos = start < 0 ? m_text.size() : static_cast<std::size_t>(start);
    while (pos < m_text.size())
    {
        const SChar c = nextChar(m_text, pos);
        if (!contains(set, c.code))
            break;
        pos += c.length;
    }
    if (pos >= m_text.size())
    {
        start = -1;
        return CbStringT();
    }
    const std::size_t first = pos;
    SChar c{0, 0};
    while (pos < m_text.size() && !contains(set, (c = nextChar(m_text, pos)).code))
        pos += c.length;
    // Past the delimiter that ended the token, or one past the end, as MFC does.
    start = static_cast<int>(pos + (pos < m_text.size() ? c.length : 1));
    return CbStringT(m_text.substr(first, pos - first));
}

template class CbStringT<wchar_t>;
template class CbStringT<char>;
