// printf-style formatting of CString and CStringA. The format is parsed here, one conversion at a
// time: text conversions are done by hand, so that the original platform's %s/%S rule holds and
// widths count characters; numbers go to the C library's snprintf in the C locale.

#include "basepool/cbexception.h"
#include "basepool/cbutf8.h"
#include "basepool/cstring.h"

#include <climits>
#include <cstdint>
#include <cstdio>
#include <cwchar>
#include <locale.h>

namespace
{
// The integer arguments of "l", "ll", "j", "z", "t" and "I64" are all fetched as 64-bit values.
static_assert(sizeof(long) == sizeof(long long) && sizeof(std::size_t) == sizeof(long long) &&
              sizeof(std::intmax_t) == sizeof(long long) && sizeof(std::ptrdiff_t) == sizeof(long long));
static_assert(sizeof(wchar_t) == sizeof(int));

// Numbers are formatted in the C locale, whatever the program set globally.
class CCLocaleScope
{
public:
    CCLocaleScope()
    {
        static const locale_t c = newlocale(LC_ALL_MASK, "C", nullptr);
        m_previous = c ? uselocale(c) : nullptr;
    }
    ~CCLocaleScope()
    {
        if (m_previous)
            uselocale(m_previous);
    }
    CCLocaleScope(const CCLocaleScope&) = delete;
    CCLocaleScope& operator=(const CCLocaleScope&) = delete;

private:
    locale_t m_previous;
};

enum class ELength
{
    eDefault,
    eChar,     // hh
    eShort,    // h: also "narrow" for text
    eLong,     // l, w: also "wide" for text
    eLongLong, // ll, q, j, z, t, I64, I
    eLongDouble,
};

struct SConversion
{
    std::string flags;
    int width = -1;
    int precision = -1;
    ELength length = ELength::eDefault;
    char conversion = 0;
    bool leftJustified = false;
};

[[noreturn]] void throwBadFormat(const std::string& reason)
{
    CB_THROW(CbExceptionPreconditionViolation, "CbFormatV", reason);
}

template <class CharT> int parseNumber(const CharT*& p)
{
    long long value = 0;
    while (*p >= '0' && *p <= '9')
    {
        value = value * 10 + (*p++ - '0');
        if (value > INT_MAX)
            throwBadFormat("width or precision too large");
    }
    return static_cast<int>(value);
}

// Parses the conversion after a '%' (p points behind it) and consumes the '*' arguments.
template <class CharT> SConversion parseConversion(const CharT*& p, va_list* args)
{
    SConversion c;
    for (; *p == '-' || *p == '+' || *p == ' ' || *p == '#' || *p == '0'; ++p)
        c.flags += static_cast<char>(*p);
    if (*p == '*')
    {
        ++p;
        c.width = va_arg(*args, int);
        if (c.width < 0)
        {
            c.flags += '-';
            c.width = c.width == INT_MIN ? INT_MAX : -c.width;
        }
    }
    else if (*p >= '0' && *p <= '9')
        c.width = parseNumber(p);
    if (*p == '.')
    {
        ++p;
        if (*p == '*')
        {
            ++p;
            const int precision = va_arg(*args, int);
            c.precision = precision < 0 ? -1 : precision;
        }
        else
            c.precision = parseNumber(p);
    }
    if (p[0] == 'I' && p[1] == '6' && p[2] == '4')
        c.length = ELength::eLongLong, p += 3;
    else if (p[0] == 'I' && p[1] == '3' && p[2] == '2')
        p += 3;
    else if (p[0] == 'I')
        c.length = ELength::eLongLong, p += 1;
    else if (p[0] == 'h' && p[1] == 'h')
        c.length = ELength::eChar, p += 2;
    else if (p[0] == 'l' && p[1] == 'l')
        c.length = ELength::eLongLong, p += 2;
    else if (*p == 'h')
        c.length = ELength::eShort, ++p;
    else if (*p == 'l' || *p == 'w')
        c.length = ELength::eLong, ++p;
    else if (*p == 'L')
        c.length = ELength::eLongDouble, ++p;
    else if (*p == 'q' || *p == 'j' || *p == 'z' || *p == 't')
        c.length = ELength::eLongLong, ++p;
    if (*p == 0)
        throwBadFormat("incomplete conversion at the end of the format");
    if (*p < 0x20 || *p > 0x7E)
        throwBadFormat("unknown conversion");
    c.conversion = static_cast<char>(*p++);
    c.leftJustified = c.flags.find('-') != std::string::npos;
    return c;
}

std::string numberSpec(const SConversion& c, const char* length)
{
    std::string pattern(1, '%');
    pattern += c.flags;
    if (c.width >= 0)
        pattern += std::to_string(c.width);
    if (c.precision >= 0)
    {
        pattern += '.';
        pattern += std::to_string(c.precision);
    }
    pattern += length;
    pattern += c.conversion;
    return pattern;
}

template <class Value> std::string formatNumber(const std::string& pattern, Value value)
{
    char small[64];
    const int needed = std::snprintf(small, sizeof small, pattern.c_str(), value);
    if (needed < 0)
        throwBadFormat("cannot format " + pattern);
    if (static_cast<std::size_t>(needed) < sizeof small)
        return std::string(small, static_cast<std::size_t>(needed));
    std::string big(static_cast<std::size_t>(needed) + 1, '\0');
    std::snprintf(big.data(), big.size(), pattern.c_str(), value);
    big.resize(static_cast<std::size_t>(needed));
    return big;
}

// The digits of a numeric conversion; the argument is fetched with the type its length names.
std::string formatNumber(const SConversion& c, va_list* args)
{
    switch (c.conversion)
    {
    case 'd':
    case 'i':
    case 'u':
    case 'o':
    case 'x':
    case 'X':
    {
        const bool isSigned = c.conversion == 'd' || c.conversion == 'i';
        if (c.length == ELength::eLong || c.length == ELength::eLongLong)
        {
            const std::string pattern = numberSpec(c, "ll");
            return isSigned ? formatNumber(pattern, va_arg(*args, long long))
                            : formatNumber(pattern, va_arg(*args, unsigned long long));
        }
        const std::string pattern = numberSpec(c, c.length == ELength::eChar    ? "hh"
                                                  : c.length == ELength::eShort ? "h"
                                                                                : "");
        return isSigned ? formatNumber(pattern, va_arg(*args, int))
                        : formatNumber(pattern, va_arg(*args, unsigned));
    }
    case 'f':
    case 'F':
    case 'e':
    case 'E':
    case 'g':
    case 'G':
    case 'a':
    case 'A':
        if (c.length == ELength::eLongDouble)
            return formatNumber(numberSpec(c, "L"), va_arg(*args, long double));
        return formatNumber(numberSpec(c, ""), va_arg(*args, double));
    case 'p':
        return formatNumber(numberSpec(c, ""), va_arg(*args, void*));
    case 'n':
        throwBadFormat("%n is not supported");
    default:
        throwBadFormat(std::string("unknown conversion '%") + c.conversion + "'");
    }
}

void appendCode(std::wstring& out, char32_t code)
{
    out += static_cast<wchar_t>(code);
}

void appendCode(std::string& out, char32_t code)
{
    CbUtf8::Append(out, code);
}

// Collects the characters of a text argument into Out's encoding, at most limit of them; returns
// how many it took. Wide into wide and narrow into narrow copy the code units unchanged.
template <class Out> int collect(const wchar_t* text, int limit, Out& out)
{
    int count = 0;
    for (std::size_t i = 0; count < limit && text[i]; ++count)
    {
        if constexpr (std::is_same_v<Out, std::wstring>)
            out += text[i++];
        else
        {
            char32_t cp;
            // Reads a second unit only after a high surrogate, which is never the terminator.
            i += CbUtf8::DecodeWide(text + i, SIZE_MAX, cp);
            appendCode(out, cp);
        }
    }
    return count;
}

template <class Out> int collect(const char* text, int limit, Out& out)
{
    const auto* s = reinterpret_cast<const unsigned char*>(text);
    int count = 0;
    for (std::size_t i = 0; count < limit && s[i]; ++count)
    {
        char32_t cp;
        // Decode stops at a terminator inside a sequence, so it never reads past the text.
        const std::size_t length = CbUtf8::Decode(s + i, SIZE_MAX, cp);
        if constexpr (std::is_same_v<Out, std::string>)
            out.append(text + i, length);
        else
            appendCode(out, cp == CbUtf8::kIllFormed ? CbUtf8::kReplacement : cp);
        i += length;
    }
    return count;
}

// Appends text padded to the conversion's width.
template <class Out> void appendPadded(Out& out, const SConversion& c, int characters, const Out& text)
{
    const std::size_t padding = c.width > characters ? static_cast<std::size_t>(c.width - characters) : 0;
    if (!c.leftJustified)
        out.append(padding, ' ');
    out += text;
    if (c.leftJustified)
        out.append(padding, ' ');
}

// %s, %S, %c, %C in a format of CharT.
template <class CharT> void appendText(std::basic_string<CharT>& out, const SConversion& c, va_list* args)
{
    constexpr bool wideFormat = std::is_same_v<CharT, wchar_t>;
    const bool lower = c.conversion == 's' || c.conversion == 'c';
    const bool wideArgument = c.length == ELength::eShort  ? false
                              : c.length == ELength::eLong ? true
                                                           : lower == wideFormat;
    const int limit = c.precision >= 0 ? c.precision : INT_MAX;
    std::basic_string<CharT> text;
    int characters = 0;
    if (c.conversion == 'c' || c.conversion == 'C')
    {
        const int value = va_arg(*args, int);
        characters = 1;
        if (wideArgument)
            appendCode(text, static_cast<char32_t>(value));
        else if constexpr (wideFormat)
            text += static_cast<wchar_t>(value >= 0 && value < 0x80 ? value : CbUtf8::kReplacement);
        else
            text += static_cast<char>(value);
    }
    else if (wideArgument)
    {
        const wchar_t* s = va_arg(*args, const wchar_t*);
        characters = collect(s ? s : L"(null)", limit, text);
    }
    else
    {
        const char* s = va_arg(*args, const char*);
        characters = collect(s ? s : "(null)", limit, text);
    }
    appendPadded(out, c, characters, text);
}

template <class CharT> std::basic_string<CharT> format(const CharT* format, va_list original)
{
    if (!format)
        throwBadFormat("null format");
    va_list args;
    va_copy(args, original);
    std::basic_string<CharT> out;
    try
    {
        CCLocaleScope locale;
        for (const CharT* p = format; *p;)
        {
            if (*p != '%')
            {
                out += *p++;
                continue;
            }
            if (*++p == '%')
            {
                out += *p++;
                continue;
            }
            const SConversion c = parseConversion(p, &args);
            if (c.conversion == 's' || c.conversion == 'S' || c.conversion == 'c' || c.conversion == 'C')
                appendText(out, c, &args);
            else
                for (char digit : formatNumber(c, &args))
                    out += static_cast<CharT>(digit);
        }
    }
    catch (...)
    {
        va_end(args);
        throw;
    }
    va_end(args);
    return out;
}
} // namespace

std::wstring CbFormatV(const wchar_t* format, va_list args)
{
    return ::format(format, args);
}

std::string CbFormatV(const char* format, va_list args)
{
    return ::format(format, args);
}

std::wstring CbFormatArgs(const wchar_t* format, ...)
{
    va_list args;
    va_start(args, format);
    std::wstring result;
    try
    {
        result = ::format(format, args);
    }
    catch (...)
    {
        va_end(args);
        throw;
    }
    va_end(args);
    return result;
}

std::string CbFormatArgs(const char* format, ...)
{
    va_list args;
    va_start(args, format);
    std::string result;
    try
    {
        result = ::format(format, args);
    }
    catch (...)
    {
        va_end(args);
        throw;
    }
    va_end(args);
    return result;
}
