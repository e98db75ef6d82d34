// A module that loads but registers no test class.

#include "basepool/basepool_export.h"

extern "C" __attribute__((visibility("default"))) int ZqTestEmptyModuleAnswer()
{
    return 42;
}
