// Test of ZqSemanticVersion: construction, parsing of narrow and wide text, ToString, comparison and
// assignment, checked step by step; the first step that fails ends the test.

#include "basepool/cbexception.h"
#include "zqbase/zqsemanticversion.h"
#include "zqbase/zqunittest.h"

#include <cstdint>
#include <exception>
#include <string>
#include <utility>

class ZqSemanticVersion_UnitTest : public ZqUnitTest
{
    CB_DECLARE_RTTI(ZqSemanticVersion_UnitTest)

protected:
    EResult runUnitTest(unsigned int index) override;

private:
    struct SExpected
    {
        std::uint32_t major, minor, patch;
        const char* label;
        const char* text; // ToString(), or null where the step does not look at it
    };

    // True when version has the expected fields; otherwise writes what was found under what.
    bool expect(const ZqSemanticVersion& version, const SExpected& expected, const CString& what) const;
    template <class Char> bool expectParsed(const Char* text, const SExpected& expected) const;
    template <class Char>
    bool expectAssigned(ZqSemanticVersion& target, const Char* text, const SExpected& expected) const;

    bool checkNumberConstruction() const;
    bool checkLabelConstruction() const;
    bool checkPlainText() const;
    bool checkDashInLabel() const;
    bool checkFourthComponent() const;
    bool checkMissingComponents() const;
    bool checkComparison() const;
    bool checkAssignment() const;
    bool checkTextAssignment() const;
    bool checkRejectedText() const;
    bool checkSetLabel() const;
};

CB_IMPLEMENT_RTTI(ZqSemanticVersion_UnitTest, ZqUnitTest::RTTI);

namespace
{
CString describe(const ZqSemanticVersion& version)
{
    return CbFormat(L"%u.%u.%u Label \"%S\" (\"%S\")", version.major, version.minor, version.patch,
                    version.GetLabel().c_str(), version.ToString().c_str());
}

CString textOf(const char* text)
{
    return CString(text);
}

CString textOf(const wchar_t* text)
{
    return CString(L"L") + text;
}
} // namespace

bool ZqSemanticVersion_UnitTest::expect(const ZqSemanticVersion& version, const SExpected& expected,
                                        const CString& what) const
{
    const bool fields = version.major == expected.major && version.minor == expected.minor &&
                        version.patch == expected.patch && version.GetLabel() == expected.label;
    if (fields && (!expected.text || version.ToString() == expected.text))
        return true;
    WriteMessageFormat(eError, L"%s: erwartet %u.%u.%u Label \"%S\"%S%S, erhalten %s\n", what.GetString(),
                       expected.major, expected.minor, expected.patch, expected.label,
                       expected.text ? " als " : "", expected.text ? expected.text : "",
                       describe(version).GetString());
    return false;
}

template <class Char>
bool ZqSemanticVersion_UnitTest::expectParsed(const Char* text, const SExpected& expected) const
{
    const CString what = L"Version aus \"" + textOf(text) + L"\"";
    try
    {
        return expect(ZqSemanticVersion(text), expected, what);
    }
    catch (const std::exception& exception)
    {
        WriteMessageFormat(eError, L"%s: Ausnahme %S\n", what.GetString(), exception.what());
        return false;
    }
}

template <class Char>
bool ZqSemanticVersion_UnitTest::expectAssigned(ZqSemanticVersion& target, const Char* text,
                                                const SExpected& expected) const
{
    const CString what = L"Zuweisung von \"" + textOf(text) + L"\"";
    try
    {
        target = text;
    }
    catch (const std::exception& exception)
    {
        WriteMessageFormat(eError, L"%s: Ausnahme %S\n", what.GetString(), exception.what());
        return false;
    }
    return expect(target, expected, what);
}

bool ZqSemanticVersion_UnitTest::checkNumberConstruction() const
{
    return expect(ZqSemanticVersion(), {0, 0, 0, "", "0.0.0"}, L"Standardkonstruktor") &&
           expect(ZqSemanticVersion(1, 2, 3), {1, 2, 3, "", nullptr}, L"Version (1, 2, 3)");
}

bool ZqSemanticVersion_UnitTest::checkLabelConstruction() const
{
    return expect(ZqSemanticVersion(1, 2, 3, "beta-1"), {1, 2, 3, "beta-1", nullptr},
                  L"Version (1, 2, 3, \"beta-1\")") &&
           expect(ZqSemanticVersion(1, 2, 3, L"beta-1"), {1, 2, 3, "beta-1", nullptr},
                  L"Version (1, 2, 3, L\"beta-1\")");
}

bool ZqSemanticVersion_UnitTest::checkPlainText() const
{
    return expectParsed("1.2.3", {1, 2, 3, "", "1.2.3"}) &&
           expectParsed("1.2.3-beta-1", {1, 2, 3, "beta-1", "1.2.3-beta-1"}) &&
           expectParsed(L"1.2.3", {1, 2, 3, "", "1.2.3"}) &&
           expectParsed(L"1.2.3-beta-1", {1, 2, 3, "beta-1", "1.2.3-beta-1"});
}

bool ZqSemanticVersion_UnitTest::checkDashInLabel() const
{
    return expectParsed(L"2.1.0-02438-1804", {2, 1, 0, "02438-1804", "2.1.0-02438-1804"});
}

bool ZqSemanticVersion_UnitTest::checkFourthComponent() const
{
    return expectParsed("1.2.3.4", {1, 2, 3, "", "1.2.3"}) &&
           expectParsed("1.2.3.4-beta-2", {1, 2, 3, "beta-2", "1.2.3-beta-2"});
}

bool ZqSemanticVersion_UnitTest::checkMissingComponents() const
{
    return expectParsed("1.1-beta-4", {1, 1, 0, "beta-4", "1.1.0-beta-4"}) &&
           expectParsed("1-beta-4", {1, 0, 0, "beta-4", "1.0.0-beta-4"});
}

bool ZqSemanticVersion_UnitTest::checkComparison() const
{
    const ZqSemanticVersion d;
    const ZqSemanticVersion v(1, 2, 3);
    const ZqSemanticVersion b(1, 2, 3, "beta-1");
    const struct
    {
        bool holds;
        const wchar_t* relation;
    } relations[] = {
        {d < v, L"0.0.0 < 1.2.3"},   {d <= v, L"0.0.0 <= 1.2.3"}, {v == b, L"1.2.3 == 1.2.3-beta-1"},
        {d != v, L"0.0.0 != 1.2.3"}, {v >= d, L"1.2.3 >= 0.0.0"}, {v > d, L"1.2.3 > 0.0.0"},
    };
    for (const auto& relation : relations)
        if (!relation.holds)
        {
            WriteMessageFormat(eError, L"Vergleich %s gilt nicht\n", relation.relation);
            return false;
        }
    return true;
}

bool ZqSemanticVersion_UnitTest::checkAssignment() const
{
    ZqSemanticVersion d;
    const ZqSemanticVersion v(1, 2, 3);
    ZqSemanticVersion wideLabel(1, 2, 3, L"beta-1");

    d = wideLabel;
    if (!(d == wideLabel) || !expect(d, {1, 2, 3, "beta-1", nullptr}, L"Kopie von 1.2.3-beta-1"))
        return false;
    d = v;
    if (!expect(d, {1, 2, 3, "", nullptr}, L"Kopie von 1.2.3"))
        return false;
    d = std::move(wideLabel);
    return expect(d, {1, 2, 3, "beta-1", nullptr}, L"Verschiebung von 1.2.3-beta-1") &&
           expect(wideLabel, {0, 0, 0, "", nullptr}, L"Quelle der Verschiebung");
}

bool ZqSemanticVersion_UnitTest::checkTextAssignment() const
{
    ZqSemanticVersion d;
    return expectAssigned(d, "2.3.4", {2, 3, 4, "", "2.3.4"}) &&
           expectAssigned(d, "2.3.4.5", {2, 3, 4, "", "2.3.4"}) &&
           expectAssigned(d, "2.3.4.5-beta-4", {2, 3, 4, "beta-4", "2.3.4-beta-4"}) &&
           expectAssigned(d, "2.3.4-beta-2", {2, 3, 4, "beta-2", nullptr}) &&
           expectAssigned(d, L"3.4.5-beta-3", {3, 4, 5, "beta-3", nullptr}) &&
           expectAssigned(d, L"1.2-beta-5", {1, 2, 0, "beta-5", "1.2.0-beta-5"}) &&
           expectAssigned(d, L"1-beta-6", {1, 0, 0, "beta-6", "1.0.0-beta-6"});
}

bool ZqSemanticVersion_UnitTest::checkRejectedText() const
{
    for (const char* text : {"1", "1.2", "1.2.3", "1.2.3.4", "1.2.3.c"})
        try
        {
            ZqSemanticVersion version(text);
        }
        catch (...)
        {
            WriteMessageFormat(eError, L"Version aus \"%S\" wirft eine Ausnahme\n", text);
            return false;
        }
    for (const char* text : {"a", "1.b", "1.2.c"})
    {
        bool thrown = false;
        try
        {
            ZqSemanticVersion version(text);
        }
        catch (...)
        {
            thrown = true;
        }
        if (!thrown)
        {
            WriteMessageFormat(eError, L"Version aus \"%S\" wirft keine Ausnahme\n", text);
            return false;
        }
    }
    return true;
}

bool ZqSemanticVersion_UnitTest::checkSetLabel() const
{
    ZqSemanticVersion version;
    version = ZqSemanticVersion();
    version.SetLabel("beta-1");
    return expect(version, {0, 0, 0, "beta-1", "0.0.0-beta-1"}, L"SetLabel(\"beta-1\")");
}

ZqUnitTest::EResult ZqSemanticVersion_UnitTest::runUnitTest(unsigned int index)
{
    if (index != 0)
        CB_THROW(CbException, "ZqSemanticVersion_UnitTest::runUnitTest");

    using Step = bool (ZqSemanticVersion_UnitTest::*)() const;
    static const Step steps[] = {
        &ZqSemanticVersion_UnitTest::checkNumberConstruction,
        &ZqSemanticVersion_UnitTest::checkLabelConstruction,
        &ZqSemanticVersion_UnitTest::checkPlainText,
        &ZqSemanticVersion_UnitTest::checkDashInLabel,
        &ZqSemanticVersion_UnitTest::checkFourthComponent,
        &ZqSemanticVersion_UnitTest::checkMissingComponents,
        &ZqSemanticVersion_UnitTest::checkComparison,
        &ZqSemanticVersion_UnitTest::checkAssignment,
        &ZqSemanticVersion_UnitTest::checkTextAssignment,
        &ZqSemanticVersion_UnitTest::checkRejectedText,
        &ZqSemanticVersion_UnitTest::checkSetLabel,
    };
    for (const Step step : steps)
        if (!(this->*step)())
            return eAborted;
    return ePassed;
}
