// zqtest: loads test modules and runs their test classes (docs/runner.md).

#include "zqbase/zqtest/zqtestrunner.h"

int main(int argc, char** argv)
{
    return ZqTestRunner::Main(argc, argv);
}
