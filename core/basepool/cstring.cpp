#include "basepool/cstring.h"

#include "basepool/cbexception.h"

#include <algorithm>
#include <cstdio>
#include <cwchar>
#include <cwctype>
#include <locale.h>

namespace
{
// The C locale with UTF-8 character handling: numbers format as in C, "%ls" in a narrow format
// and "%s" of narrow text in a wide format convert through UTF-8, and case folding knows umlauts.
locale_t utf8Locale()
{
    static locale_t locale = []
    {
        for (const char* name : {"C.UTF-8", "C.utf8", "en_US.UTF-8"})
            if (locale_t l = newlocale(LC_ALL_MASK, name, nullptr))
                return l;
        return static_cast<locale_t>(nullptr);
    }();
    return locale;
}

class CUtf8Scope
{
public:
    CUtf8Scope() : m_previous(utf8Locale() ? uselocale(utf8Locale()) : nullptr) {}
    ~CUtf8Scope()
    {
        if (m_previous)
            uselocale(m_previous);
    }

private:
    locale_t m_previous;
};

wchar_t foldLower(wchar_t ch)
{
    return utf8Locale() ? static_cast<wchar_t>(towlower_l(ch, utf8Locale()))
                        : static_cast<wchar_t>(std::towlower(ch));
}

wchar_t foldUpper(wchar_t ch)
{
    return utf8Locale() ? static_cast<wchar_t>(towupper_l(ch, utf8Locale()))
                        : static_cast<wchar_t>(std::towupper(ch));
}

// Rewrites a format of the original platform into one of the C library. wide: the format is wide,
// so an unqualified %s/%c means wide text.
template <class CharT> std::basic_string<CharT> translateFormat(const CharT* format, bool wide)
{
    std::basic_string<CharT> out;
    const CharT* p = format;
    while (*p)
    {
        if (*p != '%')
        {
            out += *p++;
            continue;
        }
        out += *p++;
        if (*p == '%')
        {
            out += *p++;
            continue;
        }
        while (*p == '-' || *p == '+' || *p == ' ' || *p == '#' || *p == '0')
            out += *p++;
        while (*p == '*' || (*p >= '0' && *p <= '9'))
            out += *p++;
        if (*p == '.')
        {
            out += *p++;
            while (*p == '*' || (*p >= '0' && *p <= '9'))
                out += *p++;
        }
        std::basic_string<CharT> length;
        if (p[0] == 'I' && p[1] == '6' && p[2] == '4')
        {
            length = {'l', 'l'};
            p += 3;
        }
        else if (p[0] == 'I' && p[1] == '3' && p[2] == '2')
            p += 3;
        else if (p[0] == 'I' && p[1] != 0)
        {
            length = {'z'};
            p += 1;
        }
        else
            while (*p == 'h' || *p == 'l' || *p == 'L' || *p == 'z' || *p == 'j' || *p == 't' || *p == 'q')
                length += *p++;
        CharT conversion = *p;
        if (!conversion)
            break;
        ++p;
        const bool text = conversion == 's' || conversion == 'S' || conversion == 'c' || conversion == 'C';
        if (!text)
        {
            out += length;
            out += conversion;
            continue;
        }
        bool wideArgument;
        if (length == std::basic_string<CharT>{'h'})
            wideArgument = false;
        else if (length == std::basic_string<CharT>{'l'} || length == std::basic_string<CharT>{'w'})
            wideArgument = true;
        else
            wideArgument = (conversion == 's' || conversion == 'c') == wide;
        if (wideArgument)
            out += 'l';
        out += static_cast<CharT>(conversion == 's' || conversion == 'S' ? 's' : 'c');
    }
    return out;
}

constexpr std::size_t kMaxFormatted = std::size_t(1) << 26;
} // namespace

std::wstring CbUtf8ToWide(std::string_view text)
{
    std::wstring out;
    out.reserve(text.size());
    const auto* s = reinterpret_cast<const unsigned char*>(text.data());
    const std::size_t n = text.size();
    for (std::size_t i = 0; i < n;)
    {
        unsigned char c = s[i];
        int extra = c < 0x80 ? 0 : (c >> 5) == 0x6 ? 1 : (c >> 4) == 0xE ? 2 : (c >> 3) == 0x1E ? 3 : -1;
        if (extra == 0)
        {
            out += static_cast<wchar_t>(c);
            ++i;
            continue;
        }
        if (extra < 0 || i + extra >= n)
        {
            out += L'\xFFFD';
            ++i;
            continue;
        }
        char32_t cp = c & (0x3F >> extra);
        bool ok = true;
        for (int k = 1; k <= extra; ++k)
        {
            if ((s[i + k] & 0xC0) != 0x80)
            {
                ok = false;
                break;
            }
            cp = (cp << 6) | (s[i + k] & 0x3F);
        }
        static const char32_t minimum[] = {0, 0x80, 0x800, 0x10000};
        if (!ok || cp < minimum[extra] || cp > 0x10FFFF || (cp >= 0xD800 && cp <= 0xDFFF))
        {
            out += L'\xFFFD';
            ++i;
            continue;
        }
        out += static_cast<wchar_t>(cp);
        i += extra + 1;
    }
    return out;
}

std::string CbWideToUtf8(std::wstring_view text)
{
    std::string out;
    out.reserve(text.size());
    for (wchar_t wc : text)
    {
        auto cp = static_cast<char32_t>(wc);
        if (cp > 0x10FFFF || (cp >= 0xD800 && cp <= 0xDFFF))
            cp = 0xFFFD;
        if (cp < 0x80)
            out += static_cast<char>(cp);
        else if (cp < 0x800)
        {
            out += static_cast<char>(0xC0 | (cp >> 6));
            out += static_cast<char>(0x80 | (cp & 0x3F));
        }
        else if (cp < 0x10000)
        {
            out += static_cast<char>(0xE0 | (cp >> 12));
            out += static_cast<char>(0x80 | ((cp >> 6) & 0x3F));
            out += static_cast<char>(0x80 | (cp & 0x3F));
        }
        else
        {
            out += static_cast<char>(0xF0 | (cp >> 18));
            out += static_cast<char>(0x80 | ((cp >> 12) & 0x3F));
            out += static_cast<char>(0x80 | ((cp >> 6) & 0x3F));
            out += static_cast<char>(0x80 | (cp & 0x3F));
        }
    }
    return out;
}

std::wstring CbFormatV(const wchar_t* format, va_list args)
{
    if (!format)
        CB_THROW(CbExceptionPreconditionViolation, "CbFormatV", "null format");
    const std::wstring translated = translateFormat(format, true);
    CUtf8Scope scope;
    std::wstring buffer(256, L'\0');
    for (;;)
    {
        va_list copy;
        va_copy(copy, args);
        int written = std::vswprintf(buffer.data(), buffer.size(), translated.c_str(), copy);
        va_end(copy);
        if (written >= 0)
        {
            buffer.resize(static_cast<std::size_t>(written));
            return buffer;
        }
        // vswprintf does not tell a short buffer from an encoding error; grow up to a sane limit.
        if (buffer.size() >= kMaxFormatted)
            CB_THROW(CbExceptionPreconditionViolation, "CbFormatV", "format error or text too long");
        buffer.resize(buffer.size() * 4);
    }
}

std::string CbFormatV(const char* format, va_list args)
{
    if (!format)
        CB_THROW(CbExceptionPreconditionViolation, "CbFormatV", "null format");
    const std::string translated = translateFormat(format, false);
    CUtf8Scope scope;
    va_list copy;
    va_copy(copy, args);
    int needed = std::vsnprintf(nullptr, 0, translated.c_str(), copy);
    va_end(copy);
    if (needed < 0)
        CB_THROW(CbExceptionPreconditionViolation, "CbFormatV", "format error");
    std::string buffer(static_cast<std::size_t>(needed) + 1, '\0');
    va_copy(copy, args);
    std::vsnprintf(buffer.data(), buffer.size(), translated.c_str(), copy);
    va_end(copy);
    buffer.resize(static_cast<std::size_t>(needed));
    return buffer;
}

namespace
{
template <class CharT> std::wstring toWide(const std::basic_string<CharT>& s)
{
    if constexpr (std::is_same_v<CharT, wchar_t>)
        return s;
    else
        return CbUtf8ToWide(s);
}

template <class CharT> std::basic_string<CharT> fromWide(const std::wstring& s)
{
    if constexpr (std::is_same_v<CharT, wchar_t>)
        return s;
    else
        return CbWideToUtf8(s);
}

template <class CharT> std::size_t length(const CharT* s)
{
    return s ? std::char_traits<CharT>::length(s) : 0;
}
} // namespace

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

template <class CharT> std::size_t CbStringT<CharT>::checkedIndex(int index) const
{
    if (index < 0 || index >= GetLength())
        CB_THROW(CbExceptionPreconditionViolation, "CbStringT::GetAt", "index out of range");
    return static_cast<std::size_t>(index);
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
    std::wstring w = toWide(m_text);
    for (wchar_t& c : w)
        c = foldLower(c);
    m_text = fromWide<CharT>(w);
    return *this;
}

template <class CharT> CbStringT<CharT>& CbStringT<CharT>::MakeUpper()
{
    std::wstring w = toWide(m_text);
    for (wchar_t& c : w)
        c = foldUpper(c);
    m_text = fromWide<CharT>(w);
    return *this;
}

template <class CharT> CbStringT<CharT>& CbStringT<CharT>::MakeReverse()
{
    // Reverse characters, not bytes, so that narrow UTF-8 text stays valid.
    std::wstring w = toWide(m_text);
    std::reverse(w.begin(), w.end());
    m_text = fromWide<CharT>(w);
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
    m_text.erase(0, std::min(m_text.find_first_not_of(chars ? chars : StdString().c_str()), m_text.size()));
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
    const std::size_t last = m_text.find_last_not_of(chars ? chars : StdString().c_str());
    m_text.erase(last == StdString::npos ? 0 : last + 1);
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
    if (!chars)
        return -1;
    const std::size_t pos = m_text.find_first_of(chars);
    return pos == StdString::npos ? -1 : static_cast<int>(pos);
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
    const StdString delims = delimiters ? delimiters : StdString();
    if (start < 0 || start >= GetLength())
    {
        start = -1;
        return CbStringT();
    }
    const std::size_t first = m_text.find_first_not_of(delims, static_cast<std::size_t>(start));
    if (first == StdString::npos)
    {
        start = -1;
        return CbStringT();
    }
    std::size_t last = m_text.find_first_of(delims, first);
    if (last == StdString::npos)
        last = m_text.size();
    start = static_cast<int>(std::min(last + 1, m_text.size()));
    if (last == m_text.size())
        start = GetLength();
    return CbStringT(m_text.substr(first, last - first));
}

template <class CharT> void CbStringT<CharT>::Format(const CharT* format, ...)
{
    va_list args;
    va_start(args, format);
    try
    {
        m_text = CbFormatV(format, args);
    }
    catch (...)
    {
        va_end(args);
        throw;
    }
    va_end(args);
}

template <class CharT> void CbStringT<CharT>::AppendFormat(const CharT* format, ...)
{
    va_list args;
    va_start(args, format);
    try
    {
        m_text += CbFormatV(format, args);
    }
    catch (...)
    {
        va_end(args);
        throw;
    }
    va_end(args);
}

template class CbStringT<wchar_t>;
template class CbStringT<char>;

CString CbFormat(const wchar_t* format, ...)
{
    va_list args;
    va_start(args, format);
    CString result;
    try
    {
        result.FormatV(format, args);
    }
    catch (...)
    {
        va_end(args);
        throw;
    }
    va_end(args);
    return result;
}

CStringA CbFormat(const char* format, ...)
{
    va_list args;
    va_start(args, format);
    CStringA result;
    try
    {
        result.FormatV(format, args);
    }
    catch (...)
    {
        va_end(args);
        throw;
    }
    va_end(args);
    return result;
}
