#include "FormatManagerFixture.h"

#include "platform/LibraryLock.h"
#include "platform/ReadOnlyFileOperations.h"

#include <QLockFile>
#include <functional>

namespace korvane {

using B = PluginLibraryBuilder;

// What a move across file systems leaves when its process dies at each step, and what the next
// scan makes of it: one whole copy under the plug-in's name, nothing half-copied in sight.
class InterruptedMoveTest : public FormatManagerFixture {
protected:
    const QString name = "Echo.component";
    QString on() const { return folder(TypeAU, LocSystemActive); }
    QString off() const { return folder(TypeAU, LocSystemDisabled); }
    QString partial(const QString &folder) const
    {
        return folder + "/." + name + ".korvane-partial";
    }
    QString removing(const QString &folder) const
    {
        return folder + "/." + name + ".korvane-removing";
    }
    // Built under its own name, then given the leftover's; half is a copy or removal cut short.
    QString bundle(const QString &path, const QByteArray &header, bool half = false) const
    {
        const QString folder = path.section('/', 0, -2);
        const QString made = B::makeAudioUnit(folder, "Building.component", header);
        if (half)
            QFile::remove(made + "/Contents/MacOS/Plugin");
        QDir().rename(made, path);
        return path;
    }
    QStringList scanned()
    {
        QStringList rows;
        for (const AUItemPtr &it : au->items())
            rows << QString("%1 %2").arg(it->getAULocation() == on() ? "on" : "off",
                                         it->getPlattformIdent());
        return rows;
    }
    QStringList entries(const QString &folder) { return disk().directoryContents(folder); }
};

TEST_F(InterruptedMoveTest, TheNextScanLeavesOneWholeCopyUnderTheName)
{
    const QString hiddenName = "." + name + ".korvane-removing";
    const QString partialName = "." + name + ".korvane-partial";
    const struct {
        const char *step; // where the move from on to off was cut short
        std::function<void()> leave;
        QStringList on, off, items;
        QString log;
    } cases[] = {
        {"copying",
         [&] {
             bundle(on() + "/" + name, MachO::ppc());
             bundle(partial(off()), MachO::ppc(), true);
         },
         {name},
         {},
         {"on PPC"},
         "Removed " + partial(off()) + ", the partial copy of an interrupted move"},
        {"source hidden, copy not yet named",
         [&] {
             bundle(removing(on()), MachO::ppc());
             bundle(partial(off()), MachO::ppc());
         },
         {name},
         {},
         {"on PPC"},
         "Undid an interrupted move: " + on() + "/" + name + " is back in place"},
        {"copy named",
         [&] {
             bundle(removing(on()), MachO::ppc());
             bundle(off() + "/" + name, MachO::ppc());
         },
         {},
         {name},
         {"off PPC"},
         "Finished an interrupted move: " + off() + "/" + name + " is whole, its old copy "
             + removing(on()) + " is removed"},
        {"old copy half removed",
         [&] {
             bundle(removing(on()), MachO::ppc(), true);
             bundle(off() + "/" + name, MachO::ppc());
         },
         {},
         {name},
         {"off PPC"},
         "Finished an interrupted move: " + off() + "/" + name + " is whole, its old copy "
             + removing(on()) + " is removed"},
        // Someone else's plug-in of the same name is no proof the move got through.
        {"another plug-in at the target",
         [&] {
             bundle(removing(on()), MachO::ppc());
             bundle(off() + "/" + name, MachO::intel());
         },
         {name},
         {name},
         {"on PPC", "off Intel"},
         "Undid an interrupted move: " + on() + "/" + name + " is back in place"},
        {"another plug-in in its place",
         [&] {
             bundle(removing(on()), MachO::ppc());
             bundle(on() + "/" + name, MachO::intel());
         },
         {hiddenName, name},
         {},
         {"on Intel"},
         "Kept " + removing(on()) + ", the hidden copy of an interrupted move: " + on() + "/" + name
             + " holds a different item"},
        {"partial copy alone",
         [&] { bundle(partial(off()), MachO::ppc(), true); },
         {},
         {partialName},
         {},
         "Kept " + partial(off()) + ", the partial copy of an interrupted move: no other copy of "
             + name + " was found"},
    };
    for (const auto &c : cases) {
        SCOPED_TRACE(c.step);
        for (const QString &folder : {on(), off()}) {
            QDir(folder).removeRecursively();
            B::makeFolder(folder);
        }
        c.leave();
        relaunch();
        au->reloadData();
        EXPECT_EQ(entries(on()), c.on);
        EXPECT_EQ(entries(off()), c.off);
        EXPECT_EQ(scanned(), c.items);
        EXPECT_TRUE(services().logText().contains(c.log)) << services().logText().toStdString();
    }
}

TEST_F(InterruptedMoveTest, OnlyAScanThatHasTheLibraryToItselfTouchesLeftovers)
{
    // A subfolder's plug-in moved off with subfolders on; its old copy still hidden beside it.
    const QString vstOn = folder(TypeVST, LocUserActive), vstOff = folder(TypeVST, LocUserDisabled);
    const QString moved = B::makeVST(vstOff + "/Sub", "Fx.vst", MachO::intel());
    QDir().mkpath(vstOn + "/Sub");
    ASSERT_TRUE(disk().copy(moved, vstOn + "/Sub/.Fx.vst.korvane-removing"));
    setPref("VSTScanSubfolders", true);
    const auto scan = [&] {
        context->vst.reloadData();
        return names(&context->vst);
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
    setPref("VSTScanSubfolders", true);
    EXPECT_EQ(scan(), QStringList{"Sub/Fx.vst"});
    EXPECT_EQ(entries(vstOn + "/Sub"), QStringList{".Fx.vst.korvane-removing"});

    relaunch();
    setPref("VSTScanSubfolders", true);
    EXPECT_EQ(scan(), QStringList{"Sub/Fx.vst"});
    EXPECT_TRUE(entries(vstOn + "/Sub").isEmpty());
    EXPECT_TRUE(whole(moved, MachO::intel()));
}

} // namespace korvane
