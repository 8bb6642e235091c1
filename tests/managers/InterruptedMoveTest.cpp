#include "FormatManagerFixture.h"

#include "platform/LibraryLock.h"
#include "platform/ReadOnlyFileOperations.h"

#include <QLockFile>

namespace korvane {

class InterruptedMoveTest : public FormatManagerFixture {
protected:
    QStringList entries(const QString &folder) { return disk().directoryContents(folder); }
};

// What a move across file systems leaves when its process dies at each step, and what the next
// scan makes of it: one whole copy under the plug-in's name, nothing half-copied in sight.
TEST_F(InterruptedMoveTest, TheNextScanLeavesOneWholeCopyUnderTheName)
{
    const QString name = "Echo.component", on = folder(TypeAU, 0), off = folder(TypeAU, 1);
    const QString hidden = "." + name + ".korvane-removing", part = "." + name + ".korvane-partial";
    // The plug-in in the on folder, its old copy hidden there, its new copy, its partial copy;
    // built as PPC unless Intel, Half when a copy or removal was cut short.
    enum { On, Hidden, Off, Partial, Intel = 4, Half = 8 };
    const QString paths[] = {on + "/" + name, on + "/" + hidden, off + "/" + name,
                             off + "/" + part};
    const QString undid = "Undid an interrupted move: " + paths[On] + " is back";
    const QString finished = "Finished an interrupted move: " + paths[Off] + " is whole";
    const QString removed = "Removed " + paths[Partial] + ", the partial copy";
    const QString keptHidden = "Kept " + paths[Hidden] + ", the hidden copy";
    const QString keptPartial = "Kept " + paths[Partial] + ", the partial copy";
    const struct {
        const char *step; // where the move from on to off was cut short
        QList<int> pieces;
        QStringList on, off;
        QString items, log;
    } cases[] = {
        {"copying", {On, Partial | Half}, {name}, {}, "on PPC", removed},
        {"source hidden, copy not named", {Hidden, Partial}, {name}, {}, "on PPC", undid},
        {"copy named", {Hidden, Off}, {}, {name}, "off PPC", finished},
        {"old copy half removed", {Hidden | Half, Off}, {}, {name}, "off PPC", finished},
        // Someone else's plug-in of the same name is no proof the move got through.
        {"another at the target", {Hidden, Off | Intel}, {name}, {name}, "on PPC,off Intel", undid},
        {"another in its place", {Hidden, On | Intel}, {hidden, name}, {}, "on Intel", keptHidden},
        {"partial copy alone", {Partial | Half}, {}, {part}, "", keptPartial},
    };
    for (const auto &c : cases) {
        SCOPED_TRACE(c.step);
        for (const QString &folder : {on, off}) {
            QDir(folder).removeRecursively();
            B::makeFolder(folder);
        }
        for (const int piece : c.pieces) { // built under its own name, then given the piece's
            const QString &path = paths[piece & 3];
            const QString made = B::makeAudioUnit(path.section('/', 0, -2), "Building.component",
                                                  piece & Intel ? MachO::intel() : MachO::ppc());
            if (piece & Half)
                QFile::remove(made + "/Contents/MacOS/Plugin");
            QDir().rename(made, path);
        }
        relaunch();
        au->reloadData();
        EXPECT_EQ(entries(on), c.on);
        EXPECT_EQ(entries(off), c.off);
        QStringList items;
        for (const AUItemPtr &it : au->items())
            items << (it->getAULocation() == on ? "on " : "off ") + it->getPlattformIdent();
        EXPECT_EQ(items.join(','), c.items);
        EXPECT_TRUE(logText().contains(c.log)) << logText().toStdString();
    }
}

TEST_F(InterruptedMoveTest, OnlyAScanThatHasTheLibraryToItselfTouchesLeftovers)
{
    // A subfolder's plug-in moved off with subfolders on; its old copy still hidden beside it.
    const QString vstOn = folder(TypeVST, LocUserActive), vstOff = folder(TypeVST, LocUserDisabled);
    const QString moved = B::makeVST(vstOff + "/Sub", "Fx.vst", MachO::intel());
    QDir().mkpath(vstOn + "/Sub");
    ASSERT_TRUE(disk().copy(moved, vstOn + "/Sub/.Fx.vst.korvane-removing"));
    const auto scan = [&] {
        setPref("VSTScanSubfolders", true);
        vst->reloadData();
        return names(vst);
    };
    {
        // Another program holds the library: its move may be under way, not cut short.
        services().createSupportFolder();
        QLockFile other(LibraryLock::lockFilePath(locations()));
        ASSERT_TRUE(other.tryLock(0));
        EXPECT_EQ(scan(), QStringList{"Sub/Fx.vst"});
        EXPECT_EQ(entries(vstOn + "/Sub"), QStringList{".Fx.vst.korvane-removing"});
    }
    ReadOnlyFileOperations readOnly(disk());
    relaunch(&readOnly);
    EXPECT_EQ(scan(), QStringList{"Sub/Fx.vst"});
    EXPECT_EQ(entries(vstOn + "/Sub"), QStringList{".Fx.vst.korvane-removing"});

    relaunch();
    EXPECT_EQ(scan(), QStringList{"Sub/Fx.vst"});
    EXPECT_TRUE(entries(vstOn + "/Sub").isEmpty());
    EXPECT_TRUE(whole(moved, MachO::intel()));
}

} // namespace korvane
