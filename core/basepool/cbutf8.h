#pragma once

#include <cstddef>
#include <string>

// UTF-8 decoding and encoding of single characters, shared by the string conversions and the
// formatter.
namespace CbUtf8
{
constexpr char32_t kReplacement = 0xFFFD;
// Result of Decode for an ill-formed sequence.
constexpr char32_t kIllFormed = 0xFFFFFFFF;

// Decodes the character at s, of which at most n bytes (n >= 1) may be read; a NUL byte also ends
// an incomplete sequence, so NUL-terminated text may be passed with n = SIZE_MAX. Returns the bytes
// consumed. An ill-formed sequence yields kIllFormed and consumes its longest valid beginning (at
// least one byte), so that each maximal ill-formed part counts as one character and the byte that
// broke the sequence starts the next one.
inline std::size_t Decode(const unsigned char* s, std::size_t n, char32_t& cp)
{
    const unsigned char lead = s[0];
    if (lead < 0x80)
    {
        cp = lead;
        return 1;
    }
    std::size_t length;
    unsigned char low = 0x80, high = 0xBF; // allowed range of the second byte
    if (lead >= 0xC2 && lead <= 0xDF)
        length = 2;
    else if (lead >= 0xE0 && lead <= 0xEF)
    {
        length = 3;
        low = lead == 0xE0 ? 0xA0 : 0x80;  // no overlong forms
        high = lead == 0xED ? 0x9F : 0xBF; // no surrogates
    }
    else if (lead >= 0xF0 && lead <= 0xF4)
    {
        length = 4;
        low = lead == 0xF0 ? 0x90 : 0x80;  // no overlong forms
        high = lead == 0xF4 ? 0x8F : 0xBF; // nothing beyond U+10FFFF
    }
    else
    {
        cp = kIllFormed;
        return 1;
    }
    char32_t value = lead & (0x7F >> length);
    for (std::size_t i = 1; i < length; ++i)
    {
        if (i >= n || s[i] < low || s[i] > high)
        {
            cp = kIllFormed;
            return i;
        }
        value = (value << 6) | (s[i] & 0x3F);
        low = 0x80;
        high = 0xBF;
    }
    cp = value;
    return length;
}

// True for a Unicode scalar value: a code point that is not a surrogate.
inline bool IsScalar(char32_t cp)
{
    return cp <= 0x10FFFF && (cp < 0xD800 || cp > 0xDFFF);
}

// Appends cp in UTF-8; anything but a scalar value becomes U+FFFD.
inline void Append(std::string& out, char32_t cp)
{
    if (!IsScalar(cp))
        cp = kReplacement;
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

// The code point of the wide text at s, of which at most n units may be read: one unit, or a
// surrogate pair (wide text that came from UTF-16) combined into one character. Returns the units
// consumed; the value may be no scalar value (a lone surrogate, a negative wchar_t).
inline std::size_t DecodeWide(const wchar_t* s, std::size_t n, char32_t& cp)
{
    const auto first = static_cast<char32_t>(s[0]);
    if (first >= 0xD800 && first <= 0xDBFF && n > 1)
    {
        const auto second = static_cast<char32_t>(s[1]);
        if (second >= 0xDC00 && second <= 0xDFFF)
        {
            cp = 0x10000 + ((first - 0xD800) << 10) + (second - 0xDC00);
            return 2;
        }
    }
    cp = first;
    return 1;
}
} // namespace CbUtf8
