#include "platform/SystemLog.h"
#include "platform/ProcessList.h"

#include <gtest/gtest.h>

namespace korvane {
namespace {

TEST(SystemLogTest, InnermostCaptureTakesTheLines) {
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

TEST(ProcessListTest, ReadsOutputLongerThanOneChunk) {
    bool ok = false;
    const char *command = "head -c 1300 /dev/zero | tr '\\0' x; echo end";
    EXPECT_EQ(readCommandOutput(command, &ok), QByteArray(1300, 'x') + "end\n");
    EXPECT_TRUE(ok);
}

} // namespace
} // namespace korvane
