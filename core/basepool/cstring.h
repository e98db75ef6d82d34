#pragma once

#include "basepool/basepool_export.h"

#include <cstdarg>
#include <string>
#include <string_view>
#include <type_traits>
#include <vector>

// Text conversions between UTF-8 (narrow) and UTF-32 (wide, wchar_t on Linux). Each maximal
// ill-formed part of UTF-8 input becomes one U+FFFD; in wide input a surrogate pair (text that came
// from UTF-16) is one character, while lone surrogates and values outside Unicode become U+FFFD.
BASEPOOL_API std::wstring CbUtf8ToWide(std::string_view text);
BASEPOOL_API std::string CbWideToUtf8(std::wstring_view text);

// printf-style formatting with the rules of the original platform: in a wide format "%s" and "%c"
// take wide text and "%S"/"%C" narrow text; in a narrow format it is the other way round. "%hs"
// is always narrow, "%ls" and "%ws" always wide. Width and precision of text count characters, in a
// narrow format too, and text arguments are converted through UTF-8 (ill-formed parts become
// U+FFFD). Numbers behave as in C in the C locale; "%I64d", "%I32d" and "%Iu" (size_t) are understood.
// An unknown or incomplete conversion and "%n" throw CbExceptionPreconditionViolation.
BASEPOOL_API std::wstring CbFormatV(const wchar_t* format, va_list args);
BASEPOOL_API std::string CbFormatV(const char* format, va_list args);
// The same over "..."; call CbFormat or Format, which prepare the arguments.
BASEPOOL_API std::wstring CbFormatArgs(const wchar_t* format, ...);
BASEPOOL_API std::string CbFormatArgs(const char* format, ...);

template <class CharT> class CbStringT;

template <class T> inline constexpr bool CbIsString = false;
template <class CharT> inline constexpr bool CbIsString<CbStringT<CharT>> = true;

// What one formatting argument passes through "...": a string object its text, as MFC's CString did
// when handed to Format directly; numbers, pointers, enumerations and arrays as they are. Anything
// else (a std::wstring, say) would arrive as garbage, so it does not compile.
template <class T> decltype(auto) CbFormatArgument(const T& value)
{
    if constexpr (CbIsString<T>)
        return value.GetString();
    else
    {
        static_assert(std::is_scalar_v<T> || std::is_array_v<T>,
                      "CbFormat: pass text as a pointer (GetString(), c_str()) or as a CString");
        return (value);
    }
}

// The string class of names and messages: MFC-style operations over std::basic_string, passed and
// returned by value. CString holds wide text, CStringA narrow UTF-8 text; each converts from the
// other through UTF-8. Indices and counts are in code units of CharT. The operations that look at
// characters (case mapping, reversing, the character sets of FindOneOf, Trim and Tokenize) treat a
// UTF-8 sequence of narrow text as one character and keep bytes that are not UTF-8 unchanged.
template <class CharT> class CbStringT
{
public:
    using CharType = CharT;
    using OtherChar = std::conditional_t<std::is_same_v<CharT, wchar_t>, char, wchar_t>;
    using StdString = std::basic_string<CharT>;

    CbStringT() = default;
    CbStringT(const CharT* text) : m_text(text ? text : StdString()) {}
    CbStringT(const CharT* text, int length)
        : m_text(text ? StdString(text, length > 0 ? length : 0) : StdString())
    {
    }
    CbStringT(CharT ch, int repeat = 1) : m_text(repeat > 0 ? repeat : 0, ch) {}
    CbStringT(StdString text) : m_text(std::move(text)) {}
    CbStringT(std::basic_string_view<CharT> text) : m_text(text) {}
    explicit CbStringT(const OtherChar* text);
    explicit CbStringT(const CbStringT<OtherChar>& other);

    // Length and content.
    int GetLength() const { return static_cast<int>(m_text.size()); }
    bool IsEmpty() const { return m_text.empty(); }
    void Empty() { m_text.clear(); }
    // GetAt(GetLength()) reads the terminator, as in MFC; indices beyond it, and SetAt outside the
    // text, throw CbExceptionPreconditionViolation.
    CharT GetAt(int index) const;
    void SetAt(int index, CharT ch);
    CharT operator[](int index) const { return GetAt(index); }
    const CharT* GetString() const { return m_text.c_str(); }
    operator const CharT*() const { return m_text.c_str(); }
    const StdString& Std() const { return m_text; }

    // Comparison: Compare is lexicographic by code point; CompareNoCase folds case first (umlauts
    // included). Both return <0, 0 or >0.
    int Compare(const CharT* other) const;
    int CompareNoCase(const CharT* other) const;
    friend bool operator==(const CbStringT& a, const CbStringT& b) { return a.m_text == b.m_text; }
    friend bool operator==(const CbStringT& a, const CharT* b) { return a.Compare(b) == 0; }
    friend auto operator<=>(const CbStringT& a, const CbStringT& b) { return a.m_text <=> b.m_text; }

    // Assignment and concatenation.
    CbStringT& operator=(const CharT* text)
    {
        m_text = text ? text : StdString();
        return *this;
    }
    CbStringT& operator=(CharT ch)
    {
        m_text.assign(1, ch);
        return *this;
    }
    CbStringT& operator+=(const CbStringT& text)
    {
        m_text += text.m_text;
        return *this;
    }
    CbStringT& operator+=(const CharT* text)
    {
        if (text)
            m_text += text;
        return *this;
    }
    CbStringT& operator+=(CharT ch)
    {
        m_text += ch;
        return *this;
    }
    friend CbStringT operator+(CbStringT a, const CbStringT& b) { return a += b; }
    friend CbStringT operator+(CbStringT a, const CharT* b) { return a += b; }
    friend CbStringT operator+(const CharT* a, const CbStringT& b) { return CbStringT(a) += b; }
    friend CbStringT operator+(CbStringT a, CharT b) { return a += b; }

    // Editing; each returns the new length (Delete, Insert) or the number of changes (Remove, Replace).
    int Delete(int index, int count = 1);
    int Insert(int index, CharT ch);
    int Insert(int index, const CharT* text);
    int Remove(CharT ch);
    int Replace(CharT oldChar, CharT newChar);
    int Replace(const CharT* oldText, const CharT* newText);
    CbStringT& MakeLower();
    CbStringT& MakeUpper();
    CbStringT& MakeReverse();
    CbStringT& Trim();
    CbStringT& Trim(CharT ch);
    CbStringT& Trim(const CharT* chars);
    CbStringT& TrimLeft();
    CbStringT& TrimLeft(CharT ch);
    CbStringT& TrimLeft(const CharT* chars);
    CbStringT& TrimRight();
    CbStringT& TrimRight(CharT ch);
    CbStringT& TrimRight(const CharT* chars);

    // Searching; -1 when nothing is found.
    int Find(CharT ch, int start = 0) const;
    int Find(const CharT* text, int start = 0) const;
    int ReverseFind(CharT ch) const;
    int FindOneOf(const CharT* chars) const;

    // Substrings; out-of-range arguments are clamped as MFC does.
    CbStringT Mid(int first) const;
    CbStringT Mid(int first, int count) const;
    CbStringT Left(int count) const;
    CbStringT Right(int count) const;

    // The pieces between any of the delimiter characters, empty pieces dropped.
    std::vector<CbStringT> Split(const CharT* delimiters) const;
    // MFC's Tokenize: the next non-empty token from start on; start moves past the delimiter that
    // ended it (one past the end for the last token). At the end the result is empty and start -1.
    CbStringT Tokenize(const CharT* delimiters, int& start) const;

    // printf-style formatting with the original platform's %s rule (see CbFormatV). The format may be
    // this string's own text, and a CString or CStringA argument passes its text.
    template <class... Args> void Format(const CharT* format, const Args&... args)
    {
        m_text = CbFormatArgs(format, CbFormatArgument(args)...);
    }
    template <class... Args> void AppendFormat(const CharT* format, const Args&... args)
    {
        m_text += CbFormatArgs(format, CbFormatArgument(args)...);
    }
    void FormatV(const CharT* format, va_list args) { m_text = CbFormatV(format, args); }

private:
    static bool isSpace(CharT ch);

    StdString m_text;
};

using CString = CbStringT<wchar_t>;
using CStringA = CbStringT<char>;

// Explicitly instantiated in cstring.cpp.
extern template class BASEPOOL_API CbStringT<wchar_t>;
extern template class BASEPOOL_API CbStringT<char>;

// Formats a new string: CbFormat(L"%d Punkte in %s", n, name).
template <class... Args> CString CbFormat(const wchar_t* format, const Args&... args)
{
    return CString(CbFormatArgs(format, CbFormatArgument(args)...));
}
template <class... Args> CStringA CbFormat(const char* format, const Args&... args)
{
    return CStringA(CbFormatArgs(format, CbFormatArgument(args)...));
}
