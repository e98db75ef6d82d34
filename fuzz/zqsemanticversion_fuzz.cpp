// Version text from untrusted bytes. Whatever the parser accepts must write back through ToString as
// text that parses to the same numbers and label; whatever it rejects must be rejected with a
// CbException, by the narrow and the wide parser alike.

#include "basepool/cbexception.h"
#include "basepool/cstring.h"
#include "zqbase/zqsemanticversion.h"

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <optional>
#include <string>

namespace
{
[[noreturn]] void fail(const char* what, const std::string& text)
{
    std::fprintf(stderr, "%s for \"%s\"\n", what, text.c_str());
    std::abort();
}

template <class Char> std::optional<ZqSemanticVersion> parse(const Char* text)
{
    try
    {
        return ZqSemanticVersion(text);
    }
    catch (const CbException&)
    {
        return std::nullopt;
    }
}

bool sameNumbers(const ZqSemanticVersion& a, const ZqSemanticVersion& b)
{
    return a.major == b.major && a.minor == b.minor && a.patch == b.patch;
}
} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    // The parser sees C strings: the text ends at the first zero byte.
    const std::string text(reinterpret_cast<const char*>(data), size);
    const std::string cText(text.c_str());

    const std::optional<ZqSemanticVersion> narrow = parse(cText.c_str());
    const std::optional<ZqSemanticVersion> wide = parse(CbUtf8ToWide(cText).c_str());
    if (narrow.has_value() != wide.has_value())
        fail("narrow and wide parsers disagree", cText);
    if (!narrow)
        return 0;
    if (!sameNumbers(*narrow, *wide) || wide->GetLabel() != CbWideToUtf8(CbUtf8ToWide(narrow->GetLabel())))
        fail("narrow and wide parsers read different versions", cText);

    const std::string written = narrow->ToString();
    const std::optional<ZqSemanticVersion> reread = parse(written.c_str());
    if (!reread)
        fail("ToString wrote text the parser rejects", cText);
    if (!sameNumbers(*reread, *narrow) || reread->GetLabel() != narrow->GetLabel() || !(*reread == *narrow))
        fail("ToString wrote text that reads as another version", cText);
    if (reread->ToString() != written)
        fail("ToString is not stable", cText);
    return 0;
}
