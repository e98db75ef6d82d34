#include "zqbase/zqunittestfilebased.h"

#include "basepool/cbexception.h"
#include "zqbase/zqtestenvironment.h"

#include <filesystem>

CB_IMPLEMENT_RTTI(ZqUnitTestFileBased, ZqUnitTest::RTTI);

namespace
{
// Releases what a case read, however the case ends.
class CReleaseGuard
{
public:
    CReleaseGuard(std::function<void()> release) : m_release(std::move(release)) {}
    ~CReleaseGuard() { m_release(); }

private:
    std::function<void()> m_release;
};
} // namespace

ZqUnitTestFileBased::ZqUnitTestFileBased() = default;

ZqUnitTestFileBased::ZqUnitTestFileBased(const wchar_t* name, unsigned int count)
    : m_name(name), m_count(count)
{
}

void ZqUnitTestFileBased::initSubtests()
{
    if (m_name.IsEmpty())
        m_name = GetClassName();
}

std::string ZqUnitTestFileBased::casePath(unsigned int index, const char* extension) const
{
    const CString name = m_name.IsEmpty() ? CString(GetClassName()) : m_name;
    return ZqTestEnvironment::GetDataDirectory(GetClassName()) + "/Cases/" +
           CbWideToUtf8(CbFormat(L"%s-%03u", name.GetString(), index).Std()) + extension;
}

std::string ZqUnitTestFileBased::GetInputPath(unsigned int index) const
{
    return casePath(index, ".in");
}

std::string ZqUnitTestFileBased::GetOutputPath(unsigned int index) const
{
    return casePath(index, ".out");
}

void ZqUnitTestFileBased::checkIndex(unsigned int index, const char* function) const
{
    if (index >= m_count)
        CB_THROW(CbException, function, "subtest index " + std::to_string(index) + " out of range");
}

unsigned int ZqUnitTestFileBased::getSubtestCount() const
{
    return m_count;
}

CString ZqUnitTestFileBased::getSubtestName(unsigned int index)
{
    checkIndex(index, "ZqUnitTestFileBased::getSubtestName");
    const CString name = m_name.IsEmpty() ? CString(GetClassName()) : m_name;
    return CbFormat(L"%s #%03u", name.GetString(), index);
}

ZqUnitTest::EResult ZqUnitTestFileBased::runUnitTest(unsigned int index)
{
    checkIndex(index, "ZqUnitTestFileBased::runUnitTest");
    const std::string input = GetInputPath(index);
    const std::string output = GetOutputPath(index);
    CReleaseGuard guard(
        [this]
        {
            releaseUnitTestInput();
            releaseUnitTestOutput();
        });
    try
    {
        CbStreamReadBinary stream(input);
        serializeUnitTestInput(stream);
        if (std::filesystem::exists(output))
        {
            CbStreamReadBinary expected(output);
            serializeUnitTestOutput(expected);
        }
    }
    catch (const CbException& e)
    {
        WriteMessageFormat(eError, L"Testfall nicht lesbar: %S (%S)\n", input.c_str(), e.what());
        return eFailed;
    }
    return runUnitTest();
}

void ZqUnitTestFileBased::serializeUnitTestOutput(CbStreamWriteBinary&) const {}

void ZqUnitTestFileBased::serializeUnitTestOutput(CbStreamReadBinary&) {}

void ZqUnitTestFileBased::releaseUnitTestInput() {}

void ZqUnitTestFileBased::releaseUnitTestOutput() {}

void ZqUnitTestFileBased::WriteUnitTestInput(unsigned int index) const
{
    const std::string path = GetInputPath(index);
    std::filesystem::create_directories(std::filesystem::path(path).parent_path());
    CbStreamWriteBinary stream(path);
    serializeUnitTestInput(stream);
    stream.Close();
}
