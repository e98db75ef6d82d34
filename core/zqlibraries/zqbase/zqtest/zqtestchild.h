#pragma once

#include "zqbase/zqbase_export.h"

struct ZqTestOptions;

// The child side of an isolated run: the runner started again by its supervisor for one class and a
// list of subtest indices. It sends the class's events on descriptor 3 and dies with the runner:
// when the runner ends, however it ends, the child kills its own process group, so that processes a
// test started go with it.
class ZQBASE_API ZqTestChild
{
public:
    static int Main(const ZqTestOptions& options);
};
