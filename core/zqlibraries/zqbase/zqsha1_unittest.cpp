// Test of ZqSHA1: the digest of a fixed text, from memory and from a file in the run's scratch
// directory.

#include "basepool/cbexception.h"
#include "zqbase/zqfilesystem.h"
#include "zqbase/zqsha1.h"
#include "zqbase/zqunittest.h"

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <string>

namespace
{
const char s_sampleText[] =
    "Teneri rectum eos non lapide mem. Rari ea veri adeo pati quum ab bono. In eandem ausint eo formis. Si "
    "omnibus defectu mo discere ex creatus ideoque. Sim ego exhibentur industriam consistere effectibus "
    "detorqueat cui sed. Eos sum cap conflantur abducendam quamprimum caligantis uno. Validas ii vi et "
    "divinae "
    "idearum ferenda quomodo ea. Opus deo nul dat omne deum unum imo sibi. Cui brachia hic vox sopitum sex "
    "aliquot fecisse avocabo studiis. Ea occasio lapidis fallere vigilem si nullibi vi.";
const char s_sampleDigest[] = "E77FCE55C15C202C1926FAACD963E1459A948581";

// Deletes the file when it goes out of scope, on every way out of the subtest.
class CRemoveFile
{
public:
    explicit CRemoveFile(std::string path) : m_path(std::move(path)) {}
    ~CRemoveFile() { std::remove(m_path.c_str()); }
    CRemoveFile(const CRemoveFile&) = delete;
    CRemoveFile& operator=(const CRemoveFile&) = delete;

private:
    std::string m_path;
};
} // namespace

class ZqSHA1_UnitTest : public ZqUnitTest
{
    CB_DECLARE_RTTI(ZqSHA1_UnitTest)

protected:
    EResult runUnitTest(unsigned int index) override;

private:
    bool checkDigest(bool computed, const std::string& digest, const wchar_t* source) const;
    bool writeSampleFile(const std::string& path) const;
};

CB_IMPLEMENT_RTTI(ZqSHA1_UnitTest, ZqUnitTest::RTTI);

bool ZqSHA1_UnitTest::checkDigest(bool computed, const std::string& digest, const wchar_t* source) const
{
    if (!computed)
    {
        WriteMessageFormat(eError, L"SHA-1 %s: keine Prüfsumme berechnet\n", source);
        return false;
    }
    if (digest != s_sampleDigest)
    {
        WriteMessageFormat(eError, L"SHA-1 %s: %S statt %S\n", source, digest.c_str(), s_sampleDigest);
        return false;
    }
    return true;
}

bool ZqSHA1_UnitTest::writeSampleFile(const std::string& path) const
{
    std::FILE* file = std::fopen(path.c_str(), "wb");
    if (!file)
    {
        WriteMessageFormat(eError, L"Datei %S kann nicht angelegt werden: %S\n", path.c_str(),
                           std::strerror(errno));
        return false;
    }
    const std::size_t length = sizeof(s_sampleText) - 1;
    const bool written = std::fwrite(s_sampleText, 1, length, file) == length;
    if (std::fclose(file) != 0 || !written)
    {
        WriteMessageFormat(eError, L"Datei %S kann nicht geschrieben werden\n", path.c_str());
        return false;
    }
    return true;
}

ZqUnitTest::EResult ZqSHA1_UnitTest::runUnitTest(unsigned int index)
{
    if (index != 0)
        CB_THROW(CbException, "ZqSHA1_UnitTest::runUnitTest");

    std::string digest;
    bool computed = ZqSHA1::GetChecksum(reinterpret_cast<const unsigned char*>(s_sampleText),
                                        sizeof(s_sampleText) - 1, digest);
    if (!checkDigest(computed, digest, L"des Speichers"))
        return eAborted;

    const CString path = ZqFileSystem::GetDirectory(ZqFileSystem::eD_Scratch) + L"/ZqSHA1_UnitTest.dat";
    const std::string narrowPath = CbWideToUtf8(path.Std());
    const CRemoveFile removeAtEnd(narrowPath);
    if (!writeSampleFile(narrowPath))
        return eAborted;
    computed = ZqSHA1::GetChecksum(path.GetString(), digest);
    if (!checkDigest(computed, digest, L"der Datei"))
        return eAborted;
    return ePassed;
}
