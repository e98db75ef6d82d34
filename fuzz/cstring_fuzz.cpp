// Arbitrary bytes as UTF-8 text: the conversions, the text conversions of the formatter and the
// narrow character operations must accept every input, and their results must agree.

#include "basepool/cstring.h"

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <string>

namespace
{
void check(bool condition)
{
    if (!condition)
        std::abort();
}
} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const std::string bytes(reinterpret_cast<const char*>(data), size);

    // Decoding is idempotent once ill-formed parts are replaced.
    const std::wstring wide = CbUtf8ToWide(bytes);
    const std::string narrow = CbWideToUtf8(wide);
    check(CbUtf8ToWide(narrow) == wide);
    check(wide.size() <= bytes.size());

    // %S and %.*S of narrow text agree with the conversion; the precision counts characters.
    const std::string text = bytes.substr(0, bytes.find('\0'));
    const std::wstring converted = CbUtf8ToWide(text);
    check(CbFormat(L"%S", text.c_str()).Std() == converted);
    const int precision = size ? data[0] % 8 : 0;
    check(CbFormat(L"%.*S", precision, text.c_str()).Std() == converted.substr(0, precision));
    check(CbFormat("%-20s|", text.c_str()).GetLength() >= static_cast<int>(text.size()) + 1);

    // Narrow character operations keep every byte that is not part of a changed letter.
    CStringA reversed(text.c_str());
    reversed.MakeReverse();
    std::string sortedIn = text, sortedOut = reversed.Std();
    std::sort(sortedIn.begin(), sortedIn.end());
    std::sort(sortedOut.begin(), sortedOut.end());
    check(sortedIn == sortedOut);

    const CStringA delimiters(text.substr(0, std::min<std::size_t>(text.size(), 3)).c_str());
    const CStringA whole(text.c_str());
    for (const CStringA& piece : whole.Split(delimiters))
        check(!piece.IsEmpty() && whole.Find(piece) >= 0);
    CStringA trimmed(whole);
    trimmed.Trim(delimiters);
    check(trimmed.GetLength() <= whole.GetLength());
    CStringA upper(whole);
    upper.MakeUpper().MakeLower();
    check(whole.FindOneOf(delimiters) <= whole.GetLength());
    return 0;
}
