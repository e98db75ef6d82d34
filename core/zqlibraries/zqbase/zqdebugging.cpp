#include "zqbase/zqdebugging.h"

#include "zqbase/zqtestenvironment.h"

unsigned int ZqDebugging::GetDebugFlags() const
{
    return m_flags | (ZqTestEnvironment::IsDebugOutputEnabled() ? eDF_WriteImages : eDF_None);
}
