// Test of the string classes CString (wide) and CStringA (narrow UTF-8). Its subtests are the rows of
// one static table: the row's name is the operation it checks, its lambda builds its strings (with
// umlauts, ß and a character outside the basic multilingual plane), exercises that operation and
// reports the first mismatch through ZqFail.

#include "basepool/cbexception.h"
#include "basepool/cstring.h"
#include "zqbase/zqunittest.h"

#include <cstring>
#include <cwchar>
#include <iterator>

// U+1D11E MUSICAL SYMBOL G CLEF: one wchar_t, four bytes of UTF-8.
#define CBSTR_CLEF L"\U0001D11E"
#define CBSTR_CLEF_UTF8 "\xF0\x9D\x84\x9E"

namespace
{
CString toWide(const CString& text)
{
    return text;
}

CString toWide(const CStringA& text)
{
    return CString(text);
}

// Writes why actual differs from expected; the caller returns eFailed.
template <class CharT>
bool sameText(const CbStringT<CharT>& actual, const CharT* expected, const char* expression)
{
    if (actual == expected)
        return true;
    ZqFail(L"%S: erwartet \"%s\", erhalten \"%s\"\n", expression,
           toWide(CbStringT<CharT>(expected)).GetString(), toWide(actual).GetString());
    return false;
}

bool sameNumber(long long actual, long long expected, const char* expression)
{
    if (actual == expected)
        return true;
    ZqFail(L"%S: erwartet %lld, erhalten %lld\n", expression, expected, actual);
    return false;
}

template <class F> bool throwsPreconditionViolation(F&& operation)
{
    try
    {
        operation();
    }
    catch (const CbExceptionPreconditionViolation&)
    {
        return true;
    }
    return false;
}

template <class CharT>
bool samePieces(const std::vector<CbStringT<CharT>>& actual, std::initializer_list<const CharT*> expected,
                const char* expression)
{
    if (actual.size() != expected.size())
    {
        ZqFail(L"%S: erwartet %zu Teile, erhalten %zu\n", expression, expected.size(), actual.size());
        return false;
    }
    std::size_t i = 0;
    for (const CharT* piece : expected)
        if (!sameText(actual[i++], piece, expression))
            return false;
    return true;
}
} // namespace

#define CBSTR_EXPECT(condition)                                                                              \
    if (!(condition))                                                                                        \
    return ZqFail(L"Bedingung verletzt: %S\n", #condition)
#define CBSTR_EXPECT_TEXT(actual, expected)                                                                  \
    if (!sameText((actual), (expected), #actual))                                                            \
    return ZqUnitTest::eFailed
#define CBSTR_EXPECT_NUMBER(actual, expected)                                                                \
    if (!sameNumber((actual), (expected), #actual))                                                          \
    return ZqUnitTest::eFailed
#define CBSTR_EXPECT_PIECES(actual, ...)                                                                     \
    if (!samePieces((actual), {__VA_ARGS__}, #actual))                                                       \
    return ZqUnitTest::eFailed

namespace
{
const ZqSubtestRow s_rows[] = {
    {"Compare / operator ==",
     []
     {
         const CString apples(L"Äpfel"), same(L"Äpfel"), pears(L"Birne");
         CBSTR_EXPECT_NUMBER(apples.Compare(same), 0);
         CBSTR_EXPECT(apples == same && apples == L"Äpfel" && L"Äpfel" == apples);
         CBSTR_EXPECT(apples != pears && !(apples == L"äpfel"));
         // Code point order: Ä (U+00C4) sorts after Z and before characters outside the BMP.
         CBSTR_EXPECT(CString(L"Apfel").Compare(L"Äpfel") < 0);
         CBSTR_EXPECT(apples.Compare(L"Zebra") > 0);
         CBSTR_EXPECT(CString(L"Ä").Compare(CBSTR_CLEF) < 0);
         CBSTR_EXPECT(CString(L"Straße").Compare(L"Straße" CBSTR_CLEF) < 0);
         CBSTR_EXPECT(CString(L"Straße").Compare(L"STRASSE") != 0);
         // Narrow UTF-8 text orders by code point as well.
         CBSTR_EXPECT(CStringA("Äpfel").Compare("Zebra") > 0);
         CBSTR_EXPECT(CStringA("Maß") == "Maß" && CStringA("Maß") != CStringA("Mas"));
         return ZqUnitTest::ePassed;
     }},
    {"CompareNoCase",
     []
     {
         CBSTR_EXPECT_NUMBER(CString(L"ÄRGER").CompareNoCase(L"ärger"), 0);
         CBSTR_EXPECT_NUMBER(CString(L"Straße").CompareNoCase(L"STRAẞE"), 0);
         CBSTR_EXPECT_NUMBER(CString(L"\U00010400").CompareNoCase(L"\U00010428"), 0);
         CBSTR_EXPECT_NUMBER(CStringA("Öl").CompareNoCase("öL"), 0);
         CBSTR_EXPECT(CString(L"apfel").CompareNoCase(L"Birne") < 0);
         CBSTR_EXPECT(CString(L"Zebra").CompareNoCase(L"äpfel") < 0);
         CBSTR_EXPECT(CString(L"abc").CompareNoCase(L"ABCD") < 0);
         CBSTR_EXPECT(CString(L"Öl").CompareNoCase(L"Ol") != 0);
         return ZqUnitTest::ePassed;
     }},
    {"Delete",
     []
     {
         CString text(L"Grüße" CBSTR_CLEF L"!");
         CBSTR_EXPECT_NUMBER(text.Delete(2), 6);
         CBSTR_EXPECT_TEXT(text, L"Grße" CBSTR_CLEF L"!");
         CBSTR_EXPECT_NUMBER(text.Delete(4), 5);
         CBSTR_EXPECT_TEXT(text, L"Grße!");
         CBSTR_EXPECT_NUMBER(text.Delete(3, 100), 3);
         CBSTR_EXPECT_NUMBER(text.Delete(-2, 1), 2);
         CBSTR_EXPECT_NUMBER(text.Delete(10), 2);
         CBSTR_EXPECT_NUMBER(text.Delete(0, 0), 2);
         CBSTR_EXPECT_TEXT(text, L"rß");
         CStringA narrow("Maße");
         CBSTR_EXPECT_NUMBER(narrow.Delete(2, 2), 3);
         CBSTR_EXPECT_TEXT(narrow, "Mae");
         return ZqUnitTest::ePassed;
     }},
    {"Empty",
     []
     {
         CString text(L"Fülle" CBSTR_CLEF);
         text.Empty();
         CBSTR_EXPECT(text.IsEmpty() && text.GetLength() == 0 && text == L"" && text.GetString()[0] == 0);
         text += L"ß";
         CBSTR_EXPECT_TEXT(text, L"ß");
         CStringA narrow("Öl");
         narrow.Empty();
         CBSTR_EXPECT(narrow.IsEmpty() && narrow.GetString()[0] == 0);
         return ZqUnitTest::ePassed;
     }},
    {"Find / ReverseFind / FindOneOf",
     []
     {
         const CString text(L"Straße, Maß, Größe" CBSTR_CLEF);
         CBSTR_EXPECT_NUMBER(text.Find(L'ß'), 4);
         CBSTR_EXPECT_NUMBER(text.Find(L'ß', 5), 10);
         CBSTR_EXPECT_NUMBER(text.Find(L"Maß"), 8);
         CBSTR_EXPECT_NUMBER(text.Find(L"ß", 11), 16);
         CBSTR_EXPECT_NUMBER(text.Find(CBSTR_CLEF), 18);
         CBSTR_EXPECT_NUMBER(text.Find(L'x'), -1);
         CBSTR_EXPECT_NUMBER(text.Find(L'ß', 99), -1);
         CBSTR_EXPECT_NUMBER(text.ReverseFind(L'ß'), 16);
         CBSTR_EXPECT_NUMBER(text.ReverseFind(L'x'), -1);
         CBSTR_EXPECT_NUMBER(text.FindOneOf(L"öM"), 8);
         CBSTR_EXPECT_NUMBER(text.FindOneOf(CBSTR_CLEF L"x"), 18);
         CBSTR_EXPECT_NUMBER(text.FindOneOf(L"xyz"), -1);
         // Narrow: byte indices, characters in the set.
         const CStringA narrow("Straße Ã");
         CBSTR_EXPECT_NUMBER(narrow.Find("ße"), 4);
         CBSTR_EXPECT_NUMBER(narrow.FindOneOf("äß"), 4);
         CBSTR_EXPECT_NUMBER(narrow.FindOneOf("ä"), -1);
         return ZqUnitTest::ePassed;
     }},
    {"Format",
     []
     {
         CString text;
         text.Format(L"%s hat %d Äpfel und %S Birnen für %.2f €", L"Jürgen", 3, "fünf", 1.5);
         CBSTR_EXPECT_TEXT(text, L"Jürgen hat 3 Äpfel und fünf Birnen für 1.50 €");
         text.Format(L"[%-4s|%4S|%c%C|%ls|%hs]", L"Öl", "Maß", L'ß', 'x', CBSTR_CLEF, "ü");
         CBSTR_EXPECT_TEXT(text, L"[Öl  | Maß|ßx|" CBSTR_CLEF L"|ü]");
         text.Format(L"%I64d %05.1f %x %%", -9000000000LL, 2.25, 255u);
         CBSTR_EXPECT_TEXT(text, L"-9000000000 002.2 ff %");
         text.AppendFormat(L" %s", L"gut");
         CBSTR_EXPECT_TEXT(text, L"-9000000000 002.2 ff % gut");
         CStringA narrow;
         narrow.Format("%s/%S/%.1S", "Grüße", CBSTR_CLEF, L"äö");
         CBSTR_EXPECT_TEXT(narrow, "Grüße/" CBSTR_CLEF_UTF8 "/ä");
         const CString many(L'ß', 1000);
         text.Format(L"<%s>", many.GetString());
         CBSTR_EXPECT_NUMBER(text.GetLength(), 1002);
         CBSTR_EXPECT(text.Mid(1, 1000) == many);
         return ZqUnitTest::ePassed;
     }},
    {"GetAt / operator []",
     []
     {
         const CString text(L"Über" CBSTR_CLEF);
         CBSTR_EXPECT(text.GetAt(0) == L'Ü' && text[1] == L'b' && text[4] == 0x1D11E);
         CBSTR_EXPECT(text.GetAt(5) == 0);
         CBSTR_EXPECT(throwsPreconditionViolation([&] { text.GetAt(6); }));
         CBSTR_EXPECT(throwsPreconditionViolation([&] { text.GetAt(-1); }));
         const CStringA narrow("Ü");
         CBSTR_EXPECT(narrow[0] == '\xC3' && narrow.GetAt(1) == '\x9C');
         return ZqUnitTest::ePassed;
     }},
    {"GetLength",
     []
     {
         CBSTR_EXPECT_NUMBER(CString().GetLength(), 0);
         CBSTR_EXPECT_NUMBER(CString(L"Grüße").GetLength(), 5);
         CBSTR_EXPECT_NUMBER(CString(CBSTR_CLEF).GetLength(), 1);
         CBSTR_EXPECT_NUMBER(CStringA("Grüße").GetLength(), 7);
         CBSTR_EXPECT_NUMBER(CStringA(CBSTR_CLEF_UTF8).GetLength(), 4);
         CBSTR_EXPECT_NUMBER(CString(CStringA("Grüße" CBSTR_CLEF_UTF8)).GetLength(), 6);
         CBSTR_EXPECT_NUMBER(CString(L"ab\0cd", 5).GetLength(), 5);
         return ZqUnitTest::ePassed;
     }},
    {"Insert",
     []
     {
         CString text(L"Gße");
         CBSTR_EXPECT_NUMBER(text.Insert(1, L'r'), 4);
         CBSTR_EXPECT_NUMBER(text.Insert(2, L"ü"), 5);
         CBSTR_EXPECT_TEXT(text, L"Grüße");
         CBSTR_EXPECT_NUMBER(text.Insert(100, 0x1D11E), 6);
         CBSTR_EXPECT_NUMBER(text.Insert(-5, L"»"), 7);
         CBSTR_EXPECT_NUMBER(text.Insert(3, static_cast<const wchar_t*>(nullptr)), 7);
         CBSTR_EXPECT_TEXT(text, L"»Grüße" CBSTR_CLEF);
         CStringA narrow("Mae");
         CBSTR_EXPECT_NUMBER(narrow.Insert(2, "ß"), 5);
         CBSTR_EXPECT_TEXT(narrow, "Maße");
         return ZqUnitTest::ePassed;
     }},
    {"IsEmpty",
     []
     {
         CBSTR_EXPECT(CString().IsEmpty() && CString(L"").IsEmpty());
         CBSTR_EXPECT(CString(static_cast<const wchar_t*>(nullptr)).IsEmpty());
         CBSTR_EXPECT(!CString(L" ").IsEmpty() && !CString(CBSTR_CLEF).IsEmpty());
         CBSTR_EXPECT(CString(L"ä").Left(0).IsEmpty());
         CString formatted;
         formatted.Format(L"%s", L"");
         CBSTR_EXPECT(formatted.IsEmpty());
         CBSTR_EXPECT(!CStringA("ß").IsEmpty() && CStringA("").IsEmpty());
         return ZqUnitTest::ePassed;
     }},
    {"MakeLower / MakeUpper",
     []
     {
         CString text(L"Grüße aus Köln ÄÖÜ \U00010400");
         CBSTR_EXPECT_TEXT(text.MakeLower(), L"grüße aus köln äöü \U00010428");
         CBSTR_EXPECT_TEXT(text.MakeUpper(), L"GRÜßE AUS KÖLN ÄÖÜ \U00010400");
         CBSTR_EXPECT_TEXT(CString(L"ẞ").MakeLower(), L"ß");
         CBSTR_EXPECT_TEXT(CString(L"123 " CBSTR_CLEF).MakeUpper(), L"123 " CBSTR_CLEF);
         CStringA narrow("Öl und Äther");
         CBSTR_EXPECT_TEXT(narrow.MakeUpper(), "ÖL UND ÄTHER");
         CBSTR_EXPECT_TEXT(narrow.MakeLower(), "öl und äther");
         return ZqUnitTest::ePassed;
     }},
    {"MakeReverse",
     []
     {
         CString text(L"Grüße" CBSTR_CLEF);
         CBSTR_EXPECT_TEXT(text.MakeReverse(), CBSTR_CLEF L"eßürG");
         CBSTR_EXPECT_TEXT(text.MakeReverse(), L"Grüße" CBSTR_CLEF);
         CBSTR_EXPECT_TEXT(CString(L"ÄbÄ").MakeReverse(), L"ÄbÄ");
         CBSTR_EXPECT(CString().MakeReverse().IsEmpty());
         // Narrow text reverses characters, so it stays valid UTF-8.
         CStringA narrow("aß" CBSTR_CLEF_UTF8);
         CBSTR_EXPECT_TEXT(narrow.MakeReverse(), CBSTR_CLEF_UTF8 "ßa");
         return ZqUnitTest::ePassed;
     }},
    {"Mid / Left / Right",
     []
     {
         const CString text(L"Grüße" CBSTR_CLEF);
         CBSTR_EXPECT_TEXT(text.Mid(2), L"üße" CBSTR_CLEF);
         CBSTR_EXPECT_TEXT(text.Mid(2, 2), L"üß");
         CBSTR_EXPECT_TEXT(text.Mid(-1, 2), L"Gr");
         CBSTR_EXPECT_TEXT(text.Mid(4, 100), L"e" CBSTR_CLEF);
         CBSTR_EXPECT_TEXT(text.Mid(10), L"");
         CBSTR_EXPECT_TEXT(text.Left(3), L"Grü");
         CBSTR_EXPECT_TEXT(text.Left(100), L"Grüße" CBSTR_CLEF);
         CBSTR_EXPECT_TEXT(text.Left(-1), L"");
         CBSTR_EXPECT_TEXT(text.Right(2), L"e" CBSTR_CLEF);
         CBSTR_EXPECT_TEXT(text.Right(0), L"");
         CBSTR_EXPECT_TEXT(text.Right(100), L"Grüße" CBSTR_CLEF);
         const CStringA narrow("Grüße");
         CBSTR_EXPECT_TEXT(narrow.Left(4), "Grü");
         CBSTR_EXPECT_TEXT(narrow.Right(3), "ße");
         return ZqUnitTest::ePassed;
     }},
    {"operator =",
     []
     {
         CString text;
         text = L"Käse";
         CBSTR_EXPECT_TEXT(text, L"Käse");
         CString copy;
         copy = text;
         copy.SetAt(0, L'R');
         CBSTR_EXPECT_TEXT(text, L"Käse");
         CBSTR_EXPECT_TEXT(copy, L"Räse");
         text = L'ß';
         CBSTR_EXPECT_TEXT(text, L"ß");
         text = CBSTR_CLEF L"ab";
         text = text.GetString() + 1;
         CBSTR_EXPECT_TEXT(text, L"ab");
         text = text;
         CBSTR_EXPECT_TEXT(text, L"ab");
         text = static_cast<const wchar_t*>(nullptr);
         CBSTR_EXPECT(text.IsEmpty());
         CStringA narrow;
         narrow = "Öl";
         CBSTR_EXPECT_TEXT(narrow, "Öl");
         return ZqUnitTest::ePassed;
     }},
    {"operator +=",
     []
     {
         CString text(L"Grü");
         text += L"ß";
         text += L'e';
         text += CString(CBSTR_CLEF);
         CBSTR_EXPECT_TEXT(text, L"Grüße" CBSTR_CLEF);
         text += text;
         CBSTR_EXPECT_TEXT(text, L"Grüße" CBSTR_CLEF L"Grüße" CBSTR_CLEF);
         text += static_cast<const wchar_t*>(nullptr);
         CBSTR_EXPECT_NUMBER(text.GetLength(), 12);
         CBSTR_EXPECT_TEXT(L"Ä" + CString(L"ö") + L'ü' + L"ß", L"Äöüß");
         CStringA narrow("Ma");
         narrow += "ß";
         CBSTR_EXPECT_TEXT(narrow, "Maß");
         return ZqUnitTest::ePassed;
     }},
    {"const CharType * operator",
     []
     {
         const CString text(L"Grüße" CBSTR_CLEF);
         const wchar_t* pointer = text;
         CBSTR_EXPECT(std::wcscmp(pointer, L"Grüße" CBSTR_CLEF) == 0);
         CBSTR_EXPECT(std::wcslen(text) == 6 && pointer[6] == 0);
         CBSTR_EXPECT(std::wcschr(text, L'ß') == pointer + 3);
         CBSTR_EXPECT(pointer == text.GetString());
         CBSTR_EXPECT_TEXT(CbFormat(L"<%s>", static_cast<const wchar_t*>(text)), L"<Grüße" CBSTR_CLEF L">");
         const CStringA narrow("Grüße");
         const char* bytes = narrow;
         CBSTR_EXPECT(std::strlen(bytes) == 7 && std::strcmp(bytes, "Grüße") == 0);
         return ZqUnitTest::ePassed;
     }},
    {"Remove",
     []
     {
         CString text(L"Straße ßß");
         CBSTR_EXPECT_NUMBER(text.Remove(L'ß'), 3);
         CBSTR_EXPECT_TEXT(text, L"Strae ");
         CBSTR_EXPECT_NUMBER(text.Remove(L'x'), 0);
         CString clefs(L"a" CBSTR_CLEF L"b" CBSTR_CLEF);
         CBSTR_EXPECT_NUMBER(clefs.Remove(0x1D11E), 2);
         CBSTR_EXPECT_TEXT(clefs, L"ab");
         CStringA narrow("a-b-ä");
         CBSTR_EXPECT_NUMBER(narrow.Remove('-'), 2);
         CBSTR_EXPECT_TEXT(narrow, "abä");
         return ZqUnitTest::ePassed;
     }},
    {"Replace",
     []
     {
         CString text(L"Größe größer");
         CBSTR_EXPECT_NUMBER(text.Replace(L'ö', L'o'), 2);
         CBSTR_EXPECT_TEXT(text, L"Große großer");
         CBSTR_EXPECT_NUMBER(text.Replace(L"ß", L"ss"), 2);
         CBSTR_EXPECT_TEXT(text, L"Grosse grosser");
         CBSTR_EXPECT_NUMBER(text.Replace(L"ss", L"ß"), 2);
         CBSTR_EXPECT_NUMBER(text.Replace(L"e", L"ee"), 2);
         CBSTR_EXPECT_TEXT(text, L"Großee großeer");
         CBSTR_EXPECT_NUMBER(text.Replace(L"x", L"y"), 0);
         CBSTR_EXPECT_NUMBER(text.Replace(L"", L"y"), 0);
         CString clef(L"Note " CBSTR_CLEF);
         CBSTR_EXPECT_NUMBER(clef.Replace(CBSTR_CLEF, L"G-Schlüssel"), 1);
         CBSTR_EXPECT_TEXT(clef, L"Note G-Schlüssel");
         CStringA narrow("Maß");
         CBSTR_EXPECT_NUMBER(narrow.Replace("ß", "ss"), 1);
         CBSTR_EXPECT_TEXT(narrow, "Mass");
         return ZqUnitTest::ePassed;
     }},
    {"SetAt",
     []
     {
         CString text(L"Mase");
         text.SetAt(2, L'ß');
         CBSTR_EXPECT_TEXT(text, L"Maße");
         text.SetAt(3, 0x1D11E);
         CBSTR_EXPECT_TEXT(text, L"Maß" CBSTR_CLEF);
         CBSTR_EXPECT(throwsPreconditionViolation([&] { text.SetAt(4, L'x'); }));
         CBSTR_EXPECT(throwsPreconditionViolation([&] { text.SetAt(-1, L'x'); }));
         CBSTR_EXPECT_TEXT(text, L"Maß" CBSTR_CLEF);
         CStringA narrow("abc");
         narrow.SetAt(1, 'x');
         CBSTR_EXPECT_TEXT(narrow, "axc");
         return ZqUnitTest::ePassed;
     }},
    {"Split",
     []
     {
         const CString text(L"Äpfel, Birnen;;Kürbis " CBSTR_CLEF);
         CBSTR_EXPECT_PIECES(text.Split(L",; "), L"Äpfel", L"Birnen", L"Kürbis", CBSTR_CLEF);
         CBSTR_EXPECT_PIECES(text.Split(CBSTR_CLEF L";"), L"Äpfel, Birnen", L"Kürbis ");
         CBSTR_EXPECT(CString(L";;").Split(L";").empty() && CString().Split(L";").empty());
         // "Ã" shares its first byte with the delimiter "ä" and must not be cut.
         CBSTR_EXPECT_PIECES(CStringA("xäyÃz").Split("ä"), "x", "yÃz");
         return ZqUnitTest::ePassed;
     }},
    {"Trim / TrimLeft / TrimRight",
     []
     {
         CBSTR_EXPECT_TEXT(CString(L"  \tGrüße\n ").Trim(), L"Grüße");
         CBSTR_EXPECT_TEXT(CString(L"  \tGrüße\n ").TrimLeft(), L"Grüße\n ");
         CBSTR_EXPECT_TEXT(CString(L"  \tGrüße\n ").TrimRight(), L"  \tGrüße");
         CBSTR_EXPECT_TEXT(CString(L"ßßaßß").Trim(L'ß'), L"a");
         CBSTR_EXPECT_TEXT(CString(L"äöäxä").TrimLeft(L"äö"), L"xä");
         CBSTR_EXPECT_TEXT(CString(L"x" CBSTR_CLEF L" " CBSTR_CLEF).TrimRight(CBSTR_CLEF L" "), L"x");
         CBSTR_EXPECT_TEXT(CString(L"   ").Trim(), L"");
         CBSTR_EXPECT_TEXT(CStringA("äÃxä").Trim("ä"), "Ãx");
         CBSTR_EXPECT_TEXT(CStringA(" Öl ").Trim(), "Öl");
         return ZqUnitTest::ePassed;
     }},
    {"Convert",
     []
     {
         const CString wide(L"Grüße " CBSTR_CLEF L" €");
         const CStringA narrow(wide);
         CBSTR_EXPECT_TEXT(narrow, "Gr\xC3\xBC\xC3\x9F"
                                   "e " CBSTR_CLEF_UTF8 " \xE2\x82\xAC");
         CBSTR_EXPECT_NUMBER(wide.GetLength(), 9);
         CBSTR_EXPECT_NUMBER(narrow.GetLength(), 16);
         CBSTR_EXPECT(CString(narrow) == wide);
         CBSTR_EXPECT(CString("Grüße " CBSTR_CLEF_UTF8 " €") == wide);
         CBSTR_EXPECT(CbUtf8ToWide(CbWideToUtf8(wide.Std())) == wide.Std());
         // Bytes that are not UTF-8 become U+FFFD, one per ill-formed part.
         CBSTR_EXPECT_TEXT(CString("a\xFF"
                                   "b\xE2\x82"),
                           L"a\uFFFDb\uFFFD");
         // A surrogate pair in wide text (from UTF-16) converts to one character.
         const wchar_t pair[] = {static_cast<wchar_t>(0xD834), static_cast<wchar_t>(0xDD1E), 0};
         CBSTR_EXPECT_TEXT(CStringA(pair), CBSTR_CLEF_UTF8);
         return ZqUnitTest::ePassed;
     }},
};
} // namespace

// The string test: 22 table-driven subtests, one per row of s_rows.
class CbStr_UnitTest : public ZqUnitTest
{
    CB_DECLARE_RTTI(CbStr_UnitTest)

protected:
    unsigned int getSubtestCount() const override { return static_cast<unsigned int>(std::size(s_rows)); }
    // Indices are not checked: the runner keeps to 0 .. getSubtestCount() - 1, and a table-driven test
    // reads its row directly.
    CString getSubtestName(unsigned int index) override { return CString(s_rows[index].name); }
    EResult runUnitTest(unsigned int index) override { return s_rows[index].function(); }
};

CB_IMPLEMENT_RTTI(CbStr_UnitTest, ZqUnitTest::RTTI);
