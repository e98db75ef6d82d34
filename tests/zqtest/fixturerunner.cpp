// zqtest with the fixture module as the one it loads when none is named, for tools that start a
// test program bare (CMake's test discovery).

#include "zqbase/zqtest/zqtestrunner.h"

int main(int argc, char** argv)
{
    return ZqTestRunner::Main(argc, argv, ZQ_FIXTURE_MODULE);
}
