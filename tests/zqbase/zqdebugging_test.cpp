// ZqDebugging: an object's own flags and the run's switch add up; neither clears the other.

#include "zqbase/zqdebugging.h"
#include "zqbase/zqtestenvironment.h"

#include <gtest/gtest.h>

namespace
{
struct Debuggable : ZqDebugging
{
};
} // namespace

TEST(ZqDebugging, TheRunsSwitchSetsTheImageFlagForEveryObjectOnTopOfItsOwnFlags)
{
    Debuggable a, b;
    a.SetDebugFlags(4);
    EXPECT_FALSE(a.IsDebugFlagSet(ZqDebugging::eDF_WriteImages));
    EXPECT_TRUE(a.IsDebugFlagSet(4));
    ZqTestEnvironment::SetDebugOutputEnabled(true);
    EXPECT_EQ(a.GetDebugFlags(), 5u);
    EXPECT_TRUE(b.IsDebugFlagSet(ZqDebugging::eDF_WriteImages));
    EXPECT_FALSE(b.IsDebugFlagSet(ZqDebugging::eDF_WriteImages | 4));
    ZqTestEnvironment::SetDebugOutputEnabled(false);
    EXPECT_EQ(a.GetDebugFlags(), 4u);
    b.SetDebugFlags(ZqDebugging::eDF_WriteImages);
    EXPECT_TRUE(b.IsDebugFlagSet(ZqDebugging::eDF_WriteImages));
}
