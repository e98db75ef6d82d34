// Test of ZqMD5: the eight combinations of narrow and wide input and output with both algorithms
// agree, and a benchmark times each combination separately.

#include "basepool/cbexception.h"
#include "zqbase/cbtimer.h"
#include "zqbase/zqbenchmark.h"
#include "zqbase/zqmd5.h"
#include "zqbase/zqunittest.h"

#include <string>

class ZqMD5_UnitTest : public ZqUnitTest, public ZqBenchmark
{
    CB_DECLARE_RTTI(ZqMD5_UnitTest)

protected:
    unsigned int getSubtestCount() const override { return 2; }
    CString getSubtestName(unsigned int index) override;
    EResult runUnitTest(unsigned int index) override;

    unsigned int getBenchmarkCount() const override { return 8; }
    CString getBenchmarkName(unsigned int index) override;
    // Each combination of input and output is one group: the two algorithms side by side.
    unsigned int getGroup(unsigned int index) const override { return index % 4; }
    unsigned int getIterationCount() const override { return 20; }
    bool runBenchmark(unsigned int index, SBenchmarkData& data) override;
    void dump(const CString& text) override;
    void onBeforeRun() override;
    void onAfterRun(bool success) override;

private:
    // Digest of input (narrow or wide) into output (narrow or wide), as narrow text.
    static bool checksum(bool wideInput, bool wideOutput, ZqMD5::EFlags flags, const char* narrow,
                         const wchar_t* wide, CStringA& result);
    static ZqMD5::EFlags flagsOf(unsigned int combination)
    {
        return combination < 4 ? ZqMD5::eF_OriginalAlgorithm : ZqMD5::eF_MSCryptography;
    }
    static bool isWideInput(unsigned int combination) { return (combination & 2) != 0; }
    static bool isWideOutput(unsigned int combination) { return (combination & 1) != 0; }

    bool runChecksumTest();

    // Input of the benchmark: the same text in UTF-8 and in wide characters, and its digest.
    std::string m_benchNarrow;
    std::wstring m_benchWide;
    CStringA m_benchExpected;
};

// A benchmark in C++ only: the record names its test base alone, as every test but the four container
// tests does.
CB_IMPLEMENT_RTTI(ZqMD5_UnitTest, ZqUnitTest::RTTI);

CString ZqMD5_UnitTest::getSubtestName(unsigned int index)
{
    switch (index)
    {
    case 0:
        return L"Unit-Test";
    case 1:
        return L"Benchmark";
    default:
        CB_THROW(CbException, "ZqMD5_UnitTest::getSubtestName");
    }
}

ZqUnitTest::EResult ZqMD5_UnitTest::runUnitTest(unsigned int index)
{
    switch (index)
    {
    case 0:
        return runChecksumTest() ? ePassed : eAborted;
    case 1:
        return RunBenchmark() ? ePassed : eAborted;
    default:
        return eFailed;
    }
}

CString ZqMD5_UnitTest::getBenchmarkName(unsigned int index)
{
    static const wchar_t* const names[8] = {
        L"A -> A [ZqMD5::eF_OriginalAlgorithm]", L"A -> W [ZqMD5::eF_OriginalAlgorithm]",
        L"W -> A [ZqMD5::eF_OriginalAlgorithm]", L"W -> W [ZqMD5::eF_OriginalAlgorithm]",
        L"A -> A [ZqMD5::eF_MSCryptography]",    L"A -> W [ZqMD5::eF_MSCryptography]",
        L"W -> A [ZqMD5::eF_MSCryptography]",    L"W -> W [ZqMD5::eF_MSCryptography]",
    };
    if (index >= 8)
        CB_THROW(CbException, "ZqMD5_UnitTest::getBenchmarkName");
    return names[index];
}

bool ZqMD5_UnitTest::checksum(bool wideInput, bool wideOutput, ZqMD5::EFlags flags, const char* narrow,
                              const wchar_t* wide, CStringA& result)
{
    if (!wideOutput)
        return wideInput ? ZqMD5::GetChecksum(wide, result, flags)
                         : ZqMD5::GetChecksum(narrow, result, flags);
    CString output;
    const bool computed =
        wideInput ? ZqMD5::GetChecksum(wide, output, flags) : ZqMD5::GetChecksum(narrow, output, flags);
    result = CStringA(output);
    return computed;
}

bool ZqMD5_UnitTest::runChecksumTest()
{
    const char* narrow = "hello world and good night";
    const wchar_t* wide = L"hello world and good night";

    CStringA first;
    for (unsigned int combination = 0; combination < 8; ++combination)
    {
        CStringA digest;
        if (!checksum(isWideInput(combination), isWideOutput(combination), flagsOf(combination), narrow, wide,
                      digest))
        {
            WriteMessageFormat(eError, L"%s: keine Prüfsumme berechnet\n",
                               getBenchmarkName(combination).GetString());
            return false;
        }
        if (combination == 0)
            first = digest;
        else if (digest != first)
        {
            WriteMessageFormat(eError, L"%s: Prüfsumme %S weicht von %S ab\n",
                               getBenchmarkName(combination).GetString(), digest.GetString(),
                               first.GetString());
            return false;
        }
    }
    return true;
}

void ZqMD5_UnitTest::onBeforeRun()
{
    // 16 KiB of text with umlauts, so that the wide cases pay for their conversion.
    const std::wstring line = L"hello world and good night, gute Nacht und schöne Grüße ";
    m_benchWide.clear();
    while (m_benchWide.size() < 16 * 1024)
        m_benchWide += line;
    m_benchNarrow = CbWideToUtf8(m_benchWide);
    ZqMD5::GetChecksum(m_benchNarrow.c_str(), m_benchExpected);
}

void ZqMD5_UnitTest::onAfterRun(bool)
{
    m_benchNarrow = std::string();
    m_benchWide = std::wstring();
}

bool ZqMD5_UnitTest::runBenchmark(unsigned int index, SBenchmarkData& data)
{
    if (index >= 8)
    {
        WriteMessage(eError, L"Unbekannter Benchmark\n");
        return false;
    }
    CStringA digest;
    const CbTimer timer;
    const bool computed = checksum(isWideInput(index), isWideOutput(index), flagsOf(index),
                                   m_benchNarrow.c_str(), m_benchWide.c_str(), digest);
    data.AddSample(timer.GetElapsedSeconds());
    if (!computed || digest != m_benchExpected)
    {
        WriteMessageFormat(eError, L"%s: Prüfsumme %S statt %S\n", getBenchmarkName(index).GetString(),
                           digest.GetString(), m_benchExpected.GetString());
        return false;
    }
    data.result = static_cast<double>(m_benchNarrow.size());
    return true;
}

void ZqMD5_UnitTest::dump(const CString& text)
{
    WriteMessage(eInfo, text + L"\n");
}
