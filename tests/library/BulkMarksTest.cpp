#include "library/BulkMarks.h"

#include "FormatManagerFixture.h"

namespace korvane {
namespace {

class BulkMarksTest : public FormatManagerFixture {};

// All Off over Linux VST 2 marks the plug-in in /usr/local/lib/vst and leaves the one in the
// distribution's /usr/lib/vst unmarked, said once in the log: an apply could only refuse it.
TEST_F(BulkMarksTest, TheDistributionsPlugInsAreNotMarked)
{
    const Format &row =
        FormatTable::builtIn().at(*FormatTable::builtIn().typeOfName(QStringLiteral("lxvst")));
    for (const int loc : {int(LocSystemActive), 6}) {
        QDir().mkpath(locations().folderPath(row, loc));
        writeText(locations().folderPath(row, loc) + "/Echo.so", "echo");
    }
    FormatManager lxvst(row, context->parts);
    lxvst.rescan();
    ASSERT_EQ(lxvst.items().size(), 2);
    const QList<PluginPtr> marked = BulkMarks::all(lxvst, {lxvst.items(), 100}, false);
    ASSERT_EQ(marked.size(), 1);
    EXPECT_EQ(marked.first()->location(), locations().folderPath(row, LocSystemDisabled));
    EXPECT_EQ(lxvst.pendingCount(), 1);
    EXPECT_TRUE(logText().contains("1 plug-ins in the distribution's folders stay as they are"))
        << qPrintable(logText());
}

} // namespace
} // namespace korvane
