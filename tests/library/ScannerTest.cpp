#include "FormatManagerFixture.h"

#include "core/Recognition.h"
#include "library/FormatTraits.h"
#include "os/LibraryLock.h"
#include "os/ProcessList.h"
#include "os/ReadOnlyFileOperations.h"
#include "os/SystemLog.h"

#include <QProcess>

#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>

namespace korvane {

class ScannerTest : public FormatManagerFixture {
protected:
    static void mark(FormatManager *manager, const QString &name, bool active)
    {
        manager->table().selectRows({rowOf(manager, name)});
        active ? manager->marking().setSelectedActive() : manager->marking().setSelectedInactive();
    }
    QStringList entries(const QString &folder) { return disk().directoryContents(folder); }
};

TEST_F(ScannerTest, AudioUnitItemsMirrorTheFourFolders)
{
    B::makeAudioUnit(folder(TypeAU, 0), "Zeta.component", MachO::ppc());
    B::makeAudioUnit(folder(TypeAU, 0), "alpha.component", MachO::universal2());
    for (const char *name :
         {"notacomponent", "Foo.COMPONENT", "Foo.component.zip", ".DS_Store", "._Zeta.component"})
        B::makeFile(folder(TypeAU, 0), name);
    B::makeAudioUnit(folder(TypeAU, 1), "Off.component", MachO::universal3());
    B::makeAudioUnit(folder(TypeAU, 2), "Zeta.component", MachO::intel());
    B::makeAudioUnit(folder(TypeAU, 3), "Mine.component", MachO::x86_64());
    au->rescan();

    // name, location code, ID, architecture, global and active flags. Rows sort by name
    // case-insensitively; IDs keep the scan's order.
    QStringList rows;
    for (const PluginPtr &it : au->items()) {
        int loc = 0;
        while (loc < 4 && it->location() != folder(TypeAU, loc))
            ++loc;
        rows << QString("%1 %2 #%3 ").arg(it->name()).arg(loc).arg(it->id())
                    + it->architectureName() + (it->isGlobal() ? " 1" : " 0")
                    + (it->isActive() ? "1" : "0");
    }
    EXPECT_EQ(rows, QStringList({"alpha.component 0 #1 Universal Binary 11",
                                 "Mine.component 3 #5 Unknown 00", "notacomponent 0 #2 PPC 11",
                                 "Off.component 1 #3 Unknown 10", "Zeta.component 0 #0 PPC 11",
                                 "Zeta.component 2 #4 Intel 01"}));
    EXPECT_FALSE(au->isApplyEnabled());
}

// The plug-in is a value the scan fills: its companions come from the registry at the scan, and a
// registry without an entry for it leaves it none.
TEST_F(ScannerTest, AScannedPlugInCarriesTheContentTheRegistryListsForIt)
{
    addAU(LocSystemActive, "Foo.component");
    addAU(LocUserActive, "Bar.component");
    const QString preset = folder(TypeAU, 0) + "/Sub/Foo.preset";
    services().contentRegistry().store(QStringList{"Foo.component", preset});
    au->rescan();
    const PluginPtr foo = au->itemAt(rowOf(au, "Foo.component"));
    ASSERT_TRUE(foo && foo->hasContent());
    EXPECT_EQ(foo->contentCount(), 1);
    EXPECT_EQ(foo->contentAt(0), preset);
    EXPECT_FALSE(au->itemAt(rowOf(au, "Bar.component"))->hasContent());
}

// Each folder is named as written, empty ones show nothing, the bar keeps its last value. A scan
// makes a format's missing folders, Audio Units only their disabled ones.
TEST_F(ScannerTest, ProgressStepsToTwentyFiveAndMissingFoldersAreMade)
{
    addAU(LocSystemActive, "A.component");
    addAU(LocSystemActive, "B.component");
    addAU(LocUserDisabled, "C.component");
    au->rescan();
    EXPECT_EQ(ui.progressTexts,
              QStringList({"scan for AudioUnits:/Library/Audio/Plug-Ins/Components",
                           "scan for AudioUnits:~/Library/Audio/Plug-Ins/Components (Disabled)"}));
    EXPECT_EQ(ui.progressValues, QList<double>({12, 25, 25}));

    vst->rescan();
    context->mas.rescan();
    context->rtas.rescan();
    for (int type : {TypeAU, TypeVST, TypeMAS, TypeRTAS})
        for (int loc = 0; loc < 4; ++loc)
            EXPECT_EQ(QFileInfo(folder(type, loc)).isDir(), type != TypeAU || loc != LocUserActive)
                << type << " " << loc;

    // A failed creation only means the folder gives nothing.
    QDir(rootPath("Library/Audio/Plug-Ins")).removeRecursively();
    au->rescan();
    EXPECT_FALSE(exists(folder(TypeAU, 1)));
    EXPECT_EQ(names(au), QStringList{"C.component"});
}

TEST_F(ScannerTest, SubfoldersAreScannedInAllFourFolders)
{
    B::makeVST(folder(TypeVST, 2) + "/Sub", "Foo.vst", MachO::intel());
    B::makeVST(folder(TypeVST, 2), "Top.vst", MachO::ppc());
    B::makeVST(folder(TypeVST, 1) + "/Deep/Er", "Sys.vst", MachO::intel());
    // Siblings whose names merely begin like a bundle's are plug-ins of their own.
    for (const char *name : {"Echo.vst", "Echo.vst copy.vst", "Echo.vst2.vst"})
        B::makeVST(folder(TypeVST, 0) + "/Fx", name, MachO::intel());

    setPref("VSTScanSubfolders", true);
    vst->rescan();
    // Bundles are collapsed: nothing inside a .vst is listed on its own.
    EXPECT_EQ(names(vst), QStringList({"Deep/Er/Sys.vst", "Fx/Echo.vst", "Fx/Echo.vst copy.vst",
                                       "Fx/Echo.vst2.vst", "Sub/Foo.vst", "Top.vst"}));
    EXPECT_EQ(item(vst, "Sub/Foo.vst")->location(), folder(TypeVST, 2));

    setPref("VSTScanSubfolders", false);
    vst->rescan();
    EXPECT_EQ(names(vst), QStringList({"Top.vst"}));
}

TEST_F(ScannerTest, FilesNeedTheirFinderTypeFoldersArePackagesOfTheFormatsKind)
{
    const QString dir = rootPath("plugins");
    const auto file = [&](const QString &name, const QString &type = {}) {
        return B::makeFile(dir, name, type);
    };
    const auto bundle = [&](const QString &name, const QVariantMap &info = {},
                            B::PlistFormat format = B::Xml) {
        return B::makeBundle(dir, name, MachO::intel(), info, format);
    };
    const auto package = [&](const QString &name) { return B::makeFolder(dir + "/" + name); };
    const auto broken = [&](const QString &name, const QByteArray &info) { // damaged Info.plist
        writeText(package(name + "/Contents") + "/Info.plist", info);
        return dir + "/" + name;
    };
    const struct {
        Recognition test;
        const char *type;
    } formats[] = {
        {&isVSTPlugInPath, "aPcs"}, {&isRTASPlugInPath, "TDMw"}, {&isMASPlugInPath, "Mas!"}};
    for (const auto &f : formats) {
        SCOPED_TRACE(f.type);
        const auto test = [&f](const QString &path) { return f.test(path, nullptr); };
        EXPECT_TRUE(test(file(QString("Plug") + f.type, f.type)));
        EXPECT_FALSE(test(file(QString(".Hidden") + f.type, f.type)));
        EXPECT_FALSE(test(file("Other", "TEXT")));
        EXPECT_FALSE(test(file("Untyped")));
        EXPECT_FALSE(test(dir + "/Missing"));
    }
    const QVariantMap tdmw{{"CFBundlePackageType", "TDMw"}};
    const struct {
        Recognition test;
        QString path;
        bool expected;
    } cases[] = {
        {&isVSTPlugInPath, B::makeVST(dir, "Foo.vst", MachO::ppc()), true},
        {&isVSTPlugInPath, package("Bare.vst"), true},
        {&isVSTPlugInPath, bundle("Foo.vst3"), false},
        {&isVSTPlugInPath, file("Loose.vst"), false},    // a file needs the Finder type
        {&isVSTPlugInPath, file("Rtas", "TDMw"), false}, // each format wants its own type
        {&isRTASPlugInPath, B::makeRTAS(dir, "Eq.rtas", MachO::ppc()), true},
        {&isRTASPlugInPath, bundle("Bin.dpm", tdmw, B::Binary), true},
        {&isRTASPlugInPath, bundle("Bndl.dpm", {{"CFBundlePackageType", "BNDL"}}), false},
        {&isRTASPlugInPath, package("NoInfo.dpm"), false},
        {&isRTASPlugInPath, file("Fake.rtas"), false}, // named like a package, but a file
        {&isRTASPlugInPath, file("Typed.rtas", "TDMw"), true},
        {&isRTASPlugInPath, broken("Broken.dpm", QByteArray("bplist00\xff\xff\x01garbage", 18)),
         false},
        {&isMASPlugInPath, B::makeMAS(dir, "Comp.bundle", MachO::ppc()), true},
        {&isMASPlugInPath, B::makeMAS(dir, "Comp", MachO::ppc(), B::Binary), true},
        {&isMASPlugInPath, bundle("Empty.bundle", {{"MotuPluginTypeUUID", ""}}), false},
        {&isMASPlugInPath, package("Folder"), false},
        {&isMASPlugInPath, broken("Broken.bundle", "<?xml version=\"1.0\"?><plist><dict><key>Mo"),
         false},
        // AppleDouble sidecars carry their owner's name but are never plug-ins.
        {&isMASPlugInPath, B::makeMAS(dir, "._Comp.bundle", MachO::ppc()), false},
        // Nor is what a move cut short leaves beside its source and its target, whole as it is.
        {&isAudioUnitName, ".Foo.component.korvane-partial.component", true},
        {&isMASPlugInPath, B::makeMAS(dir, ".Comp.bundle.korvane-removing.2", MachO::ppc()), false},
    };
    for (const auto &c : cases)
        EXPECT_EQ(c.test(c.path, nullptr), c.expected) << c.path.section('/', -1).toStdString();
}

// What a move across file systems leaves when its process dies at each step, and what the next
// scan makes of it: one whole copy under the plug-in's name, nothing half-copied in sight.
TEST_F(ScannerTest, TheNextScanLeavesOneWholeCopyUnderTheName)
{
    const QString name = "Echo.component", on = folder(TypeAU, 0), off = folder(TypeAU, 1);
    const QString hidden = "." + name + ".korvane-removing", part = "." + name + ".korvane-partial";
    // The plug-in in the on folder, its old copy hidden there, its new copy, its partial copy;
    // built as PPC unless Intel, Half when a copy or removal was cut short.
    enum { On, Hidden, Off, Partial, Intel = 4, Half = 8 };
    const QString paths[] = {on + "/" + name, on + "/" + hidden, off + "/" + name,
                             off + "/" + part};
    const struct {
        const char *step; // where the move from on to off was cut short
        QList<int> pieces;
        QStringList on, off;
        QString items, log; // the log's verb
    } cases[] = {
        {"copying", {On, Partial | Half}, {name}, {}, "on PPC", "Removed"},
        {"source hidden, copy not named", {Hidden, Partial}, {name}, {}, "on PPC", "Undid"},
        {"copy named", {Hidden, Off}, {}, {name}, "off PPC", "Finished"},
        {"old copy half removed", {Hidden | Half, Off}, {}, {name}, "off PPC", "Finished"},
        // Someone else's plug-in of the same name is no proof the move got through.
        {"other at target", {Hidden, Off | Intel}, {name}, {name}, "on PPC,off Intel", "Undid"},
        {"another in its place", {Hidden, On | Intel}, {hidden, name}, {}, "on Intel", "Kept"},
        {"partial copy alone", {Partial | Half}, {}, {part}, "", "Kept"},
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
        au->rescan();
        EXPECT_EQ(entries(on), c.on);
        EXPECT_EQ(entries(off), c.off);
        QStringList items;
        for (const PluginPtr &it : au->items())
            items << (it->location() == on ? "on " : "off ") + it->architectureName();
        EXPECT_EQ(items.join(','), c.items);
        EXPECT_TRUE(logText().contains(c.log + " ")) << logText().toStdString();
    }
}

// A staging folder names the mover that made it. While that mover runs, the scan leaves its work
// alone; one named after a pid whose process started at another time is a dead mover's, and the
// next scan puts it right as any move cut short.
TEST_F(ScannerTest, OnlyTheLeftoversOfAMoverThatIsGoneAreSettled)
{
    const QString on = folder(TypeAU, LocSystemActive), off = folder(TypeAU, LocSystemDisabled);
    QProcess mover;
    mover.start("sleep", {"60"});
    ASSERT_TRUE(mover.waitForStarted());
    const std::optional<quint64> started = processStartTime(mover.processId());
    ASSERT_TRUE(started);
    const auto staging = [&](quint64 start, const char *kind) {
        return QString(".korvane-%1-%2.%3").arg(mover.processId()).arg(start).arg(kind);
    };
    // Echo was cut short after its copy took the name; Fx while it was being copied.
    const QString live = staging(*started, "removing"), gone = staging(*started + 1, "partial");
    B::makeAudioUnit(on + "/" + live, "Echo.component", MachO::ppc());
    B::makeAudioUnit(off, "Echo.component", MachO::ppc());
    B::makeAudioUnit(on, "Fx.component", MachO::intel());
    QFile::remove(B::makeAudioUnit(off + "/" + gone, "Fx.component", MachO::intel())
                  + "/Contents/MacOS/Plugin");
    {
        SystemLogCapture log;
        au->rescan();
        EXPECT_EQ(entries(on), QStringList({live, "Fx.component"}));
        EXPECT_EQ(entries(off), QStringList{"Echo.component"});
        EXPECT_TRUE(log.contains(
            QString("Left %1 alone: the program moving it still runs").arg(on + "/" + live)))
            << log.lines().join('\n').toStdString();
    }
    EXPECT_EQ(names(au), QStringList({"Echo.component", "Fx.component"}));
    // Nor is a staging folder ever a folder of plug-ins, where subfolders are scanned.
    B::makeVST(folder(TypeVST, LocUserDisabled) + "/Sub/" + live, "Copied.vst", MachO::intel());
    setPref("VSTScanSubfolders", true);
    vst->rescan();
    EXPECT_TRUE(names(vst).isEmpty()) << names(vst).join(',').toStdString();

    mover.kill();
    mover.waitForFinished();
    au->rescan();
    EXPECT_EQ(entries(on), QStringList{"Fx.component"});
    EXPECT_EQ(entries(off), QStringList{"Echo.component"});
    EXPECT_TRUE(logText().contains("Finished an interrupted move")) << logText().toStdString();
    EXPECT_TRUE(whole(off + "/Echo.component", MachO::ppc()));
}

// A move cut short between a plug-in and its Finder information: the next scan puts the sidecar
// beside the plug-in, but only where that is beyond doubt, and never over another sidecar.
TEST_F(ScannerTest, ALoneSidecarJoinsItsPlugInOnlyWhereThatIsBeyondDoubt)
{
    const QString on = folder(TypeAU, LocSystemActive), off = folder(TypeAU, LocSystemDisabled);
    const QString user = folder(TypeAU, LocUserActive);
    B::makeAudioUnit(off, "Echo.component", MachO::intel());
    B::makeAudioUnit(off, "Twin.component", MachO::intel());
    B::makeAudioUnit(user, "Twin.component", MachO::intel());
    B::makeAudioUnit(off, "Dup.component", MachO::intel());
    B::makeFile(off, "._Dup.component", {}, "its own");
    for (const char *name :
         {"._Echo.component", "._Gone.component", "._Twin.component", "._Dup.component"})
        B::makeFile(on, name, {}, name);
    const QStringList stay{"._Dup.component", "._Gone.component", "._Twin.component"};
    {
        ImmutableGuard guard(off);
        if (!guard.ok())
            GTEST_SKIP() << "no immutable files here";
        au->rescan();
        EXPECT_EQ(entries(on), QStringList({"._Dup.component", "._Echo.component",
                                            "._Gone.component", "._Twin.component"}));
        EXPECT_TRUE(logText().contains("Kept " + on + "/._Echo.component"))
            << logText().toStdString();
    }
    au->rescan();
    EXPECT_EQ(entries(on), stay);
    EXPECT_EQ(readText(off + "/._Echo.component"), "._Echo.component");
    EXPECT_EQ(readText(off + "/._Dup.component"), "its own");
    EXPECT_TRUE(logText().contains("Moved " + on + "/._Echo.component")) << logText().toStdString();
    EXPECT_EQ(names(au).size(), 4);
}

// A subfolder's plug-in moved off with subfolders on, its old copy still hidden beside it: only a
// scan holding the library settles it. Moved back, it returns to its subfolder.
TEST_F(ScannerTest, OnlyAScanThatHasTheLibraryToItselfTouchesLeftovers)
{
    const QString vstOn = folder(TypeVST, LocUserActive), vstOff = folder(TypeVST, LocUserDisabled);
    const QString moved = B::makeVST(vstOff + "/Sub", "Fx.vst", MachO::intel());
    QDir().mkpath(vstOn + "/Sub");
    ASSERT_TRUE(disk().copy(moved, vstOn + "/Sub/.Fx.vst.korvane-removing"));
    const auto scan = [&] {
        setPref("VSTScanSubfolders", true);
        vst->rescan();
        return names(vst);
    };
    {
        // Another program holds the folders: its move may be under way, not cut short. A lock
        // of its own on the folder, as another process takes it.
        const int other = ::open(QFile::encodeName(LibraryLock::lockedFolder(vstOn)).constData(),
                                 O_RDONLY | O_DIRECTORY | O_CLOEXEC);
        ASSERT_EQ(::flock(other, LOCK_EX | LOCK_NB), 0);
        const auto unlock = qScopeGuard([other] { ::close(other); });
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

    mark(vst, "Sub/Fx.vst", true); // back to the subfolder it came from
    vst->apply();
    EXPECT_TRUE(whole(vstOn + "/Sub/Fx.vst", MachO::intel()) && !exists(moved));
    EXPECT_EQ(vst->itemAt(0)->location(), vstOn);
}

} // namespace korvane
