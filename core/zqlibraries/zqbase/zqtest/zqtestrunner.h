#pragma once

#include "zqbase/zqbase_export.h"

// The test runner behind zqtest: loads modules, selects, lists and runs their test classes and
// reports the results (docs/runner.md). Main is the whole program; it returns the exit status:
// 0 all passed, 1 a subtest failed, crashed or timed out, 2 bad usage, a module that cannot be
// loaded or registers no test, or a filter that matches nothing.
class ZQBASE_API ZqTestRunner
{
public:
    // defaultModule: the module to load when none is named; null for libZqUnitTests.so beside the
    // program. A run that a signal stopped ends by that signal once its reports are written.
    static int Main(int argc, char** argv, const char* defaultModule = nullptr);
};
