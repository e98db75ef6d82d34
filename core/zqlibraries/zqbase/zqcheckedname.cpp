#include "zqbase/zqcheckedname.h"

#include "basepool/cbexception.h"
#include "basepool/cbstreamreadbinary.h"

std::string ZqCheckedName::GetProblem(const CString& name)
{
    if (name.Std().find(L'\0') != std::wstring::npos)
        return "contains a zero character";
    const std::string utf8 = CbWideToUtf8(name.Std());
    if (CbUtf8ToWide(utf8) != name.Std())
        return "is not valid Unicode text";
    if (utf8.size() > kMaxBytes)
        return "is longer than " + std::to_string(kMaxBytes) + " bytes";
    return {};
}

std::string ZqCheckedName::Quote(const CString& name)
{
    std::string text = "\"";
    text += CbWideToUtf8(name.Std());
    text += '"';
    return text;
}

void ZqCheckedName::Require(const CString& name, const char* function, const char* what)
{
    const std::string problem = GetProblem(name);
    if (!problem.empty())
        CB_THROW(CbExceptionPreconditionViolation, function,
                 std::string(what) + " " + Quote(name) + " " + problem);
}

CString ZqCheckedName::Read(CbStreamReadBinary& stream, const char* function, const char* what)
{
    std::uint32_t length = 0;
    stream.Read(length);
    if (length > kMaxBytes)
        CB_THROW(CbExceptionWrongFileVersion, function,
                 std::string(what) + " of " + std::to_string(length) + " bytes, longer than the " +
                     std::to_string(kMaxBytes) + " allowed");
    std::string bytes(length, '\0');
    stream.Read(bytes.data(), length);
    const std::wstring wide = CbUtf8ToWide(bytes);
    if (CbWideToUtf8(wide) != bytes || wide.find(L'\0') != std::wstring::npos)
        CB_THROW(CbExceptionWrongFileVersion, function,
                 std::string(what) + " is not UTF-8 text without zero characters");
    return CString(wide);
}
