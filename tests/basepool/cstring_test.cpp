// Edge cases of CString/CStringA: the formatting rules of wide and narrow formats, UTF-8 conversions of
// ill-formed text, case folding beyond ASCII, tokenizing and the clamping of substrings.

#include "basepool/cbexception.h"
#include "basepool/cstring.h"

#include <climits>
#include <cstdint>
#include <gtest/gtest.h>

template <class CharT> void PrintTo(const CbStringT<CharT>& text, std::ostream* os)
{
    if constexpr (std::is_same_v<CharT, wchar_t>)
        *os << '"' << CbWideToUtf8(text.Std()) << '"';
    else
        *os << '"' << text.Std() << '"';
}

namespace
{
// U+1D11E MUSICAL SYMBOL G CLEF, outside the basic multilingual plane.
const wchar_t* const kClef = L"\U0001D11E";
const char* const kClefUtf8 = "\xF0\x9D\x84\x9E";

std::vector<std::wstring> pieces(const std::vector<CString>& split)
{
    std::vector<std::wstring> out;
    for (const CString& s : split)
        out.push_back(s.Std());
    return out;
}

std::vector<std::string> pieces(const std::vector<CStringA>& split)
{
    std::vector<std::string> out;
    for (const CStringA& s : split)
        out.push_back(s.Std());
    return out;
}
} // namespace

TEST(CStringFormat, TextArgumentsFollowTheOriginalPlatformsRule)
{
    // Wide format: %s wide, %S narrow; %hs always narrow, %ls and %ws always wide.
    EXPECT_EQ(CbFormat(L"%s|%S|%hs|%ls|%ws", L"Größe", "Maß", "Öl", L"Über", kClef).Std(),
              std::wstring(L"Größe|Maß|Öl|Über|") + kClef);
    // Narrow format: the other way round, output in UTF-8.
    EXPECT_EQ(CbFormat("%s|%S|%hs|%ls", "Größe", L"Maß", "Öl", kClef).Std(),
              std::string("Größe|Maß|Öl|") + kClefUtf8);
    EXPECT_EQ(CbFormat(L"%c%C%hc%lc", L'ä', 'x', 'y', L'ß').Std(), L"äxyß");
    EXPECT_EQ(CbFormat("%c%C%lc", 'x', L'ä', 0x1D11E).Std(), std::string("xä") + kClefUtf8);
    EXPECT_EQ(CbFormat(L"%s", static_cast<const wchar_t*>(nullptr)).Std(), L"(null)");
    EXPECT_EQ(CbFormat(L"100%% %S", "sicher").Std(), L"100% sicher");
}

TEST(CStringFormat, NumbersAsInC)
{
    const std::int64_t big = -1234567890123LL;
    EXPECT_EQ(CbFormat(L"%I64d %I64u %I64X %I32d %Iu", big, 18446744073709551615ULL, 0xABCDEF0123ULL, -7,
                       std::size_t(42))
                  .Std(),
              L"-1234567890123 18446744073709551615 ABCDEF0123 -7 42");
    EXPECT_EQ(CbFormat(L"%lld %zu %ld %hd %hhu", -5LL, std::size_t(6), 7L, 70000, 300).Std(),
              L"-5 6 7 4464 44");
    EXPECT_EQ(CbFormat(L"[%5d|%-5d|%05d|%+d|% d]", 42, 42, 42, 42, 42).Std(), L"[   42|42   |00042|+42| 42]");
    EXPECT_EQ(CbFormat(L"%x %#o %#x", 255u, 8u, 255u).Std(), L"ff 010 0xff");
    EXPECT_EQ(CbFormat(L"%.3f %8.2f %e %g %G", 3.14159, -2.5, 1234.5, 0.0001, 1e20).Std(),
              L"3.142    -2.50 1.234500e+03 0.0001 1E+20");
    EXPECT_EQ(CbFormat(L"%Lf", 1.5L).Std(), L"1.500000");
    EXPECT_EQ(CbFormat("%.2f %d %s", 0.125, -3, "x").Std(), "0.12 -3 x");
    // Width and precision from the arguments; a negative width means left-justified.
    EXPECT_EQ(CbFormat(L"[%*d|%-*d|%*d|%.*f]", 4, 1, 3, 2, -3, 3, 2, 1.0).Std(), L"[   1|2  |3  |1.00]");
}

TEST(CStringFormat, WidthAndPrecisionCountCharactersOfWideAndNarrowText)
{
    // Width pads and precision cuts in characters, whatever the text's encoding.
    EXPECT_EQ(CbFormat(L"[%5s|%-5S|%.2s|%.2S|%4.1S]", L"äö", "äö", L"äöü", "äöü", "ßx").Std(),
              L"[   äö|äö   |äö|äö|   ß]");
    EXPECT_EQ(CbFormat("[%5s|%-5S|%.2s|%.2S|%*.*S]", "äö", L"äö", "äöü", L"äöü", 3, 1, kClef).Std(),
              std::string("[   äö|äö   |äö|äö|  ") + kClefUtf8 + "]");
    EXPECT_EQ(CbFormat(L"[%3c|%-3C]", L'ä', 'x').Std(), L"[  ä|x  ]");
    // Precision bounds what is read: the arrays below have no terminator.
    const char narrow[3] = {'a', 'b', 'c'};
    const wchar_t wide[2] = {L'ä', L'ö'};
    EXPECT_EQ(CbFormat(L"%.3S%.2s", narrow, wide).Std(), L"abcäö");
}

TEST(CStringFormat, LongOutputsGrowPastAnyInitialBuffer)
{
    const std::wstring longWide(100000, L'ü');
    const std::string longNarrow(70000, 'n');
    const CString wide = CbFormat(L"<%s|%S|%5000d>", longWide.c_str(), longNarrow.c_str(), 7);
    ASSERT_EQ(wide.GetLength(), 1 + 100000 + 1 + 70000 + 1 + 5000 + 1);
    EXPECT_EQ(wide.Mid(1, 100000).Std(), longWide);
    EXPECT_EQ(wide.Right(3).Std(), L" 7>");

    const CStringA narrow = CbFormat("%s%S", longNarrow.c_str(), longWide.c_str());
    EXPECT_EQ(narrow.GetLength(), 70000 + 2 * 100000);
}

TEST(CStringFormat, IllFormedTextArgumentsAreReplacedNotRejected)
{
    EXPECT_EQ(CbFormat(L"%S|%S",
                       "a\xFF"
                       "b",
                       "\xE2\x82")
                  .Std(),
              L"a\uFFFDb|\uFFFD");
    // A lone surrogate in wide text becomes U+FFFD in UTF-8 output.
    const wchar_t lone[] = {L'x', static_cast<wchar_t>(0xD800), 0};
    EXPECT_EQ(CbFormat("%S", lone).Std(), "x\xEF\xBF\xBD");
}

TEST(CStringFormat, FormatAppendFormatAndAliasedFormats)
{
    CString text;
    text.Format(L"%d Punkte", 3);
    text.AppendFormat(L", %s", L"fertig");
    EXPECT_EQ(text.Std(), L"3 Punkte, fertig");
    text.Format(L"%S", "neu");
    EXPECT_EQ(text.Std(), L"neu");

    // The format may be the string's own text.
    CString self(L"<%d>");
    self.Format(self.GetString(), 5);
    EXPECT_EQ(self.Std(), L"<5>");
    CStringA selfA("%s!");
    selfA.AppendFormat(selfA.GetString(), "x");
    EXPECT_EQ(selfA.Std(), "%s!x!");
}

TEST(CStringFormat, StringObjectsPassAsTheirText)
{
    // As with MFC's CString, a string object may be handed to a format directly.
    const CString name(L"Jürgen");
    const CStringA town("Köln");
    EXPECT_EQ(CbFormat(L"%s aus %S", name, town).Std(), L"Jürgen aus Köln");
    EXPECT_EQ(CbFormat("%s/%S", town, name).Std(), "Köln/Jürgen");
    CString text(L"alt");
    text.Format(L"%s, %s", text, name);
    EXPECT_EQ(text.Std(), L"alt, Jürgen");
    text.AppendFormat(L" %d%s", 1, text);
    EXPECT_EQ(text.Std(), L"alt, Jürgen 1alt, Jürgen");
}

TEST(CStringFormat, MalformedFormatsThrow)
{
    EXPECT_THROW(CbFormat(L"50%"), CbExceptionPreconditionViolation);
    EXPECT_THROW(CbFormat(L"%y", 1), CbExceptionPreconditionViolation);
    int written = 0;
    EXPECT_THROW(CbFormat("%n", &written), CbExceptionPreconditionViolation);
    EXPECT_THROW(CbFormat(static_cast<const wchar_t*>(nullptr)), CbExceptionPreconditionViolation);
}

TEST(CStringUtf8, ValidTextRoundTrips)
{
    const std::wstring wide = std::wstring(L"a\u00E4\u00DF\u20AC") + kClef + L"\U0010FFFF";
    const std::string narrow = CbWideToUtf8(wide);
    EXPECT_EQ(narrow, std::string("a\xC3\xA4\xC3\x9F\xE2\x82\xAC") + kClefUtf8 + "\xF4\x8F\xBF\xBF");
    EXPECT_EQ(CbUtf8ToWide(narrow), wide);
    // Embedded NULs are characters like any other.
    EXPECT_EQ(CbUtf8ToWide(std::string_view("a\0b", 3)), std::wstring(L"a\0b", 3));

    const CString fromNarrow("Grüße");
    const CStringA back(fromNarrow);
    EXPECT_EQ(fromNarrow.Std(), L"Grüße");
    EXPECT_EQ(back.Std(), "Grüße");
    EXPECT_EQ(CString(static_cast<const char*>(nullptr)).GetLength(), 0);
}

TEST(CStringUtf8, EachMaximalIllFormedSubsequenceBecomesOneReplacement)
{
    const std::wstring r = L"\uFFFD";
    // A truncated sequence is one replacement and does not swallow the character after it.
    EXPECT_EQ(CbUtf8ToWide("\xE2\x82"
                           "A"),
              r + L"A");
    EXPECT_EQ(CbUtf8ToWide("\xF0\x9D\x84"), r);
    EXPECT_EQ(CbUtf8ToWide("x\x80y"), L"x" + r + L"y");
    // Bytes that can never start a sequence, overlong forms, encoded surrogates and code points
    // beyond U+10FFFF: every byte is rejected on its own.
    EXPECT_EQ(CbUtf8ToWide("\xC0\xAF"), r + r);
    EXPECT_EQ(CbUtf8ToWide("\xE0\x80\xAF"), r + r + r);
    EXPECT_EQ(CbUtf8ToWide("\xED\xA0\x80"), r + r + r);
    EXPECT_EQ(CbUtf8ToWide("\xF4\x90\x80\x80"), r + r + r + r);
    EXPECT_EQ(CbUtf8ToWide("\xF5\xFF"), r + r);
    // The first and last code points of each length are accepted.
    EXPECT_EQ(CbUtf8ToWide("\xC2\x80\xDF\xBF\xE0\xA0\x80\xED\x9F\xBF\xEE\x80\x80\xF0\x90\x80\x80"),
              L"\u0080\u07FF\u0800\uD7FF\uE000\U00010000");
}

TEST(CStringUtf8, WideSurrogatesAndOutOfRangeValues)
{
    const std::string r = "\xEF\xBF\xBD";
    // A surrogate pair (text that came from UTF-16) is one character; lone halves are replaced.
    const wchar_t pair[] = {static_cast<wchar_t>(0xD834), static_cast<wchar_t>(0xDD1E), 0};
    EXPECT_EQ(CbWideToUtf8(pair), kClefUtf8);
    const wchar_t lone[] = {static_cast<wchar_t>(0xDD1E), L'a', static_cast<wchar_t>(0xD834), 0};
    EXPECT_EQ(CbWideToUtf8(lone), r + "a" + r);
    const wchar_t outside[] = {static_cast<wchar_t>(0x110000), static_cast<wchar_t>(-1), 0};
    EXPECT_EQ(CbWideToUtf8(outside), r + r);
}

TEST(CStringCase, FoldsUmlautsAndCharactersOutsideTheBmp)
{
    CString wide(L"Straße ÄÖÜ \U00010428 σ");
    EXPECT_EQ(wide.MakeUpper().Std(), L"STRAßE ÄÖÜ \U00010400 Σ");
    EXPECT_EQ(wide.MakeLower().Std(), L"straße äöü \U00010428 σ");

    CStringA narrow("Grüße \xF0\x90\x90\xA8");
    EXPECT_EQ(narrow.MakeUpper().Std(), "GRÜßE \xF0\x90\x90\x80");
    EXPECT_EQ(CString(L"ẞ").MakeLower().Std(), L"ß");

    EXPECT_EQ(CString(L"ÄRGER").CompareNoCase(L"ärger"), 0);
    EXPECT_EQ(CStringA("ÄRGER").CompareNoCase("ärger"), 0);
    EXPECT_LT(CString(L"apfel").CompareNoCase(L"Birne"), 0);
    EXPECT_GT(CString(L"apfel").Compare(L"Birne"), 0);
}

TEST(CStringCase, NarrowTextKeepsBytesThatAreNotUtf8)
{
    CStringA text("a\xFF"
                  "b\xC3");
    EXPECT_EQ(text.MakeUpper().Std(), "A\xFF"
                                      "B\xC3");
    EXPECT_EQ(text.MakeReverse().Std(), "\xC3"
                                        "B\xFF"
                                        "A");
    // Reversing narrow text reverses characters, not bytes.
    EXPECT_EQ(CStringA("aä\xF0\x9D\x84\x9E").MakeReverse().Std(), "\xF0\x9D\x84\x9E"
                                                                  "äa");
}

TEST(CStringCompare, NarrowAndWideAgreeOnCodePointOrder)
{
    const wchar_t* const words[] = {L"", L"a", L"z", L"é", L"\uFFFD", kClef};
    for (const wchar_t* a : words)
        for (const wchar_t* b : words)
        {
            const int wide = CString(a).Compare(b);
            const int narrow = CStringA(CString(a)).Compare(CStringA(CString(b)).GetString());
            EXPECT_EQ((wide > 0) - (wide < 0), (narrow > 0) - (narrow < 0))
                << CbWideToUtf8(a) << " vs " << CbWideToUtf8(b);
            EXPECT_EQ(wide < 0, CString(a) < CString(b));
            EXPECT_EQ(narrow < 0, CStringA(CString(a)) < CStringA(CString(b)));
        }
}

TEST(CStringTokenize, SplitDropsEmptyPieces)
{
    using W = std::vector<std::wstring>;
    EXPECT_EQ(pieces(CString(L",a,,bä;c,").Split(L",;")), (W{L"a", L"bä", L"c"}));
    EXPECT_EQ(pieces(CString(L"").Split(L",")), W{});
    EXPECT_EQ(pieces(CString(L",,,").Split(L",")), W{});
    EXPECT_EQ(pieces(CString(L"a b").Split(L"")), W{L"a b"});
    EXPECT_EQ(pieces(CString(L"x\U0001D11Ey").Split(kClef)), (W{L"x", L"y"}));
}

TEST(CStringTokenize, TokenizeAdvancesAndEndsWithMinusOne)
{
    const CString text(L"ab, c");
    int start = 0;
    EXPECT_EQ(text.Tokenize(L", ", start).Std(), L"ab");
    EXPECT_EQ(start, 3);
    // As in MFC, start moves one past the delimiter that ended the token, or past the end.
    EXPECT_EQ(text.Tokenize(L", ", start).Std(), L"c");
    EXPECT_EQ(start, 6);
    EXPECT_TRUE(text.Tokenize(L", ", start).IsEmpty());
    EXPECT_EQ(start, -1);
    EXPECT_TRUE(text.Tokenize(L", ", start).IsEmpty());
    EXPECT_EQ(start, -1);
    start = 99;
    EXPECT_TRUE(text.Tokenize(L",", start).IsEmpty());
    EXPECT_EQ(start, -1);
}

TEST(CStringTokenize, NarrowDelimitersAreCharactersNotBytes)
{
    // "Ã" (C3 83) shares its first byte with "ä" (C3 A4); neither may match the other.
    using N = std::vector<std::string>;
    EXPECT_EQ(pieces(CStringA("xäyÃz").Split("ä")), (N{"x", "yÃz"}));
    EXPECT_EQ(CStringA("Ãä").FindOneOf("ä"), 2);
    EXPECT_EQ(CStringA("Ãä").FindOneOf("ö"), -1);
    CStringA trimmed("äÃxÃä");
    EXPECT_EQ(trimmed.Trim("ä").Std(), "ÃxÃ");
    EXPECT_EQ(CStringA("ÃäÃ").TrimRight("ä").Std(), "ÃäÃ");
    EXPECT_EQ(CStringA("\xFFx\xFF").Trim("\xFF").Std(), "x");
}

TEST(CStringSubstrings, MidLeftRightClampLikeMfc)
{
    const CString text(L"äbc");
    EXPECT_EQ(text.Mid(-3, 2).Std(), L"äb");
    EXPECT_EQ(text.Mid(1, 100).Std(), L"bc");
    EXPECT_EQ(text.Mid(2).Std(), L"c");
    EXPECT_TRUE(text.Mid(10).IsEmpty());
    EXPECT_TRUE(text.Mid(1, -1).IsEmpty());
    EXPECT_TRUE(text.Mid(INT_MAX, INT_MAX).IsEmpty());
    EXPECT_EQ(text.Mid(INT_MIN, INT_MAX).Std(), L"äbc");
    EXPECT_TRUE(text.Left(-1).IsEmpty());
    EXPECT_EQ(text.Left(100).Std(), L"äbc");
    EXPECT_EQ(text.Right(2).Std(), L"bc");
    EXPECT_EQ(text.Right(100).Std(), L"äbc");
    EXPECT_TRUE(text.Right(INT_MIN).IsEmpty());
}

TEST(CStringAccess, TerminatorIsReadableButNothingBeyond)
{
    CString text(L"ab");
    EXPECT_EQ(text.GetAt(2), L'\0');
    EXPECT_EQ(text[2], L'\0');
    EXPECT_THROW(text.GetAt(3), CbExceptionPreconditionViolation);
    EXPECT_THROW(text.GetAt(-1), CbExceptionPreconditionViolation);
    try
    {
        text.SetAt(2, L'x');
        FAIL() << "SetAt at the terminator must throw";
    }
    catch (const CbExceptionPreconditionViolation& e)
    {
        EXPECT_STREQ(e.GetFunction(), "CbStringT::SetAt");
    }
    EXPECT_EQ(text.Std(), L"ab");
}
