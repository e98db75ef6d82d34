#include "zqbase/zqfilesystem.h"

#include "basepool/cbexception.h"
#include "zqbase/zqtestenvironment.h"

CString ZqFileSystem::GetDirectory(unsigned int selector)
{
    switch (selector)
    {
    case eD_Scratch:
        return CString(ZqTestEnvironment::GetScratchDirectory().c_str());
    case eD_DataRoot:
        return CString(ZqTestEnvironment::GetDataRoot().c_str());
    default:
        CB_THROW(CbExceptionPreconditionViolation, "ZqFileSystem::GetDirectory",
                 "unknown directory selector " + std::to_string(selector));
    }
}
