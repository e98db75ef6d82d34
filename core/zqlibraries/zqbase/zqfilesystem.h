#pragma once

#include "basepool/cstring.h"
#include "zqbase/zqbase_export.h"

// Directories of the test run.
class ZQBASE_API ZqFileSystem
{
public:
    enum EDirectory : unsigned int
    {
        eD_Scratch = 0,  // writable directory of this run, removed at its end
        eD_DataRoot = 1, // root of the test data (see ZqTestEnvironment)
    };

    // The directory of the selector, without a trailing separator; throws
    // CbExceptionPreconditionViolation for an unknown selector.
    static CString GetDirectory(unsigned int selector);
};
