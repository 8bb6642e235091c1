#include "platform/SystemLog.h"

#include <gtest/gtest.h>

namespace korvane {
namespace {

TEST(SystemLogTest, InnermostCaptureTakesTheLines)
{
    SystemLogCapture outer;
    systemLog("first");
    {
        SystemLogCapture inner;
        systemLog("move not sucessful");
        EXPECT_EQ(inner.lines(), QStringList{"move not sucessful"});
    }
    systemLog("last");
    EXPECT_EQ(outer.lines(), QStringList({"first", "last"}));
}

} // namespace
} // namespace korvane
