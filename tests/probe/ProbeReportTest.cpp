#include "probe/ProbeReport.h"

#include <gtest/gtest.h>

// The probe's reports: JSON from a process that ran a plug-in's code, so of any shape.
namespace korvane {
namespace {

TEST(ProbeReportTest, WhatIsNotAReportIsRefusedWithAReason)
{
    QString error;
    EXPECT_FALSE(ProbeReport::parse("{\"probe\":1", &error));
    EXPECT_TRUE(error.startsWith("the probe's report is not JSON")) << qPrintable(error);
    EXPECT_FALSE(ProbeReport::parse("[]", &error));
    EXPECT_FALSE(ProbeReport::parse("{\"probe\":2}", &error));
    EXPECT_EQ(error, "not a probe report");
}

TEST(ProbeReportTest, FieldsOfTheWrongShapeReadAsEmptyOrZero)
{
    const auto odd = ProbeReport::parse(R"({"probe":1,"format":7,"plugins":[5,{"uniqueId":"x",
        "name":["n"],"audioInputs":-3,"controlInputs":1e300,"features":[1,"ok"]}]})");
    ASSERT_TRUE(odd);
    ASSERT_EQ(odd->plugins.size(), 2);
    EXPECT_TRUE(odd->format.isEmpty());
    EXPECT_EQ(odd->plugins[1].audioInputs, 0);
    EXPECT_EQ(odd->plugins[1].controlInputs, 0);
    EXPECT_EQ(odd->plugins[1].features, QStringList{"ok"});
}

TEST(ProbeReportTest, MorePluginsThanTheLimitAreRefused)
{
    QString error;
    QByteArray many = "{\"probe\":1,\"plugins\":[";
    for (int i = 0; i <= ProbeReport::maxPlugins; ++i)
        many += i ? ",{}" : "{}";
    EXPECT_FALSE(ProbeReport::parse(many + "]}", &error));
    EXPECT_EQ(error, "more than 4096 plug-ins");
}

TEST(ProbeReportTest, WhatIsWrittenIsReadBack)
{
    ProbeReport report;
    report.format = "dssi";
    report.plugins.append(
        ProbedPlugin{"23", "TS", "Trivial", "Maker", "PD", {}, {}, {}, {}, 0, 1, 2, 0, true, 1});
    const auto back = ProbeReport::fromJson(report.toJson());
    ASSERT_TRUE(back);
    EXPECT_EQ(back->plugins[0].id, "23");
    EXPECT_EQ(back->plugins[0].vendor, "Maker");
    EXPECT_TRUE(back->plugins[0].runSynth);
    EXPECT_EQ(back->plugins[0].controlInputs, 2);
}

} // namespace
} // namespace korvane
