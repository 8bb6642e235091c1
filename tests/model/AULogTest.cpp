#include "model/AULog.h"

#include <gtest/gtest.h>

using namespace korvane;

TEST(AULogTest, AMatchingRecordTracksWhetherTheItemIsWhereItLies)
{
    AULog log;
    log.setLogName("Echo.vst");
    log.setLogPath("/Library/Audio/Plug-Ins/VST");
    log.setLogID(4);
    EXPECT_TRUE(log.checkAndUpdateLogID("Echo.vst", "/Library/Audio/Plug-Ins/VST", 4));
    EXPECT_TRUE(log.isLogProcessed());
    EXPECT_TRUE(log.checkAndUpdateLogID("Echo.vst", "/Library/Audio/Plug-Ins/VST/", 4));
    EXPECT_FALSE(log.isLogProcessed()); // exact comparison

    log.setLogProcessed(true);
    EXPECT_FALSE(log.checkAndUpdateLogID("Echo.vst", "/elsewhere", 5));
    EXPECT_FALSE(log.checkAndUpdateLog("echo.vst", "/elsewhere"));
    EXPECT_TRUE(log.isLogProcessed());
    EXPECT_TRUE(log.checkAndUpdateLog("Echo.vst", "/elsewhere")); // the name alone matches
    EXPECT_FALSE(log.isLogProcessed());
}
