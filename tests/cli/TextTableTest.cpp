#include "cli/TextTable.h"

#include <QTextStream>

#include <gtest/gtest.h>

namespace korvane {
namespace {

// The listing's own shape: format, state, vendor (cut to 6 at least, dropped third), version
// (dropped second), package (dropped first, hidden where empty), path.
class TextTableTest : public ::testing::Test {
protected:
    TextTable table;
    void SetUp() override
    {
        table.setColumns({{"FORMAT", 0, 0, false},
                          {"STATE", 0, 0, false},
                          {"VENDOR", 3, 6, true},
                          {"VERSION", 2, 0, true},
                          {"PACKAGE", 1, 0, true},
                          {"PATH", 0, 0, false}});
    }
    QStringList print(int width, bool header = false) const
    {
        QString text;
        QTextStream out(&text);
        table.print(out, width, header);
        QStringList lines = text.split('\n');
        EXPECT_EQ(lines.takeLast(), "");
        return lines;
    }
};

TEST_F(TextTableTest, AColumnNoRowFillsIsLeftOutAndTheRestAlign)
{
    table.addRow({"LV2", "on", "Velmora", "1.2", "-", "/home/a/.lv2/Tone.lv2"});
    table.addRow({"LV2", "off", "-", "", "-", "/home/a/.lv2 (Disabled)/Hall.lv2"});
    EXPECT_EQ(print(0), (QStringList{"LV2  on   Velmora  1.2  /home/a/.lv2/Tone.lv2",
                                     "LV2  off  -             /home/a/.lv2 (Disabled)/Hall.lv2"}));
    EXPECT_EQ(print(0, true).first(), "FORMAT  STATE  VENDOR   VERSION  PATH");
    EXPECT_EQ(print(0, true).at(1), "LV2     on     Velmora  1.2      /home/a/.lv2/Tone.lv2");
}

TEST_F(TextTableTest, ANarrowWidthDropsThePackageFirstThenCutsThenDropsInOrderButNeverThePath)
{
    const QString path = "/usr/lib/lv2/lsp-plugins.lv2";
    table.addRow({"LV2", "on", "Linux Studio Plugins Project", "1.2.14", "lsp-plugins-lv2", path});
    // Wide enough for everything.
    EXPECT_EQ(print(200).first(),
              "LV2  on  Linux Studio Plugins Project  1.2.14  lsp-plugins-lv2  " + path);
    // The package goes, and that is enough.
    EXPECT_EQ(print(80).first(), "LV2  on  Linux Studio Plugins Project  1.2.14  " + path);
    // Then the vendor is cut, but not below its least width.
    EXPECT_EQ(print(55).first(), "LV2  on  Linux St…  1.2.14  " + path);
    EXPECT_EQ(print(40).first(), "LV2  on  Linux St…  " + path);
    // The version went, and the vendor takes back what that freed; whatever may go has gone at
    // last, and the path stays whole however narrow the line.
    EXPECT_EQ(print(10).first(), "LV2  on  " + path);
    for (const int width : {80, 55, 40})
        EXPECT_LE(print(width).first().size() - path.size()
                      + std::min<qsizetype>(path.size(), width / 2),
                  width)
            << width;
}

} // namespace
} // namespace korvane
