#include "zqbase/zqunittestfilebasedrecreate.h"

#include "basepool/cbexception.h"

#include <filesystem>
#include <fstream>
#include <iterator>

CB_IMPLEMENT_RTTI(ZqUnitTestFileBasedRecreate, ZqUnitTestFileBased::RTTI);

namespace
{
std::vector<char> readAll(const std::string& path)
{
    std::ifstream in(path, std::ios::binary);
    return std::vector<char>(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
}
} // namespace

ZqUnitTestFileBasedRecreate::ZqUnitTestFileBasedRecreate() = default;

ZqUnitTestFileBasedRecreate::ZqUnitTestFileBasedRecreate(const wchar_t* name, unsigned int count)
    : ZqUnitTestFileBased(name, count)
{
}

bool ZqUnitTestFileBasedRecreate::CanRecreate(unsigned int index) const
{
    return index < getSubtestCount();
}

bool ZqUnitTestFileBasedRecreate::Recreate(unsigned int index)
{
    if (!CanRecreate(index))
        return false;
    const std::string input = GetInputPath(index);
    const std::string output = GetOutputPath(index);
    struct SRelease
    {
        ZqUnitTestFileBasedRecreate* test;
        ~SRelease()
        {
            test->releaseUnitTestInput();
            test->releaseUnitTestOutput();
        }
    } release{this};
    try
    {
        CbStreamReadBinary stream(input);
        serializeUnitTestInput(stream);
        if (!recreate())
        {
            WriteMessageFormat(eError, L"Referenz nicht berechnet: %S\n", output.c_str());
            return false;
        }
        const bool existed = std::filesystem::exists(output);
        const std::vector<char> before = existed ? readAll(output) : std::vector<char>();
        CbStreamWriteBinary written(output);
        serializeUnitTestOutput(written);
        written.Close();
        const wchar_t* change = !existed ? L"neu" : readAll(output) == before ? L"unverändert" : L"geändert";
        WriteMessageFormat(eInfo, L"Referenz geschrieben: %S (%s)\n", output.c_str(), change);
        return true;
    }
    catch (const CbException& e)
    {
        WriteMessageFormat(eError, L"Referenz nicht geschrieben: %S (%S)\n", output.c_str(), e.what());
        return false;
    }
}
