#pragma once

#include "basepool/cstring.h"

#include <cstdint>
#include <string>

class CbStreamReadBinary;

// Names that files of the generic container format store (entry names, keys, kind names): UTF-8 of
// at most kMaxBytes bytes without a zero character. A name that breaks these rules is refused when
// it is added, so that everything written reads back as the same name, and when it is read, so
// that two different byte strings never become one name.
class ZqCheckedName
{
public:
    static constexpr std::uint32_t kMaxBytes = 65536;

    // The reason name cannot be stored, or an empty text when it can.
    static std::string GetProblem(const CString& name);
    // Throws CbExceptionPreconditionViolation from function when name cannot be stored; what says
    // which name it is ("key", "entry name").
    static void Require(const CString& name, const char* function, const char* what);
    // The name in double quotes as UTF-8, for messages.
    static std::string Quote(const CString& name);
    // Reads a name; throws CbExceptionWrongFileVersion from function for a name that breaks the rules.
    static CString Read(CbStreamReadBinary& stream, const char* function, const char* what);
};
