#include "FormatManagerFixture.h"

#include "codec/FinderInfo.h"
#include "codec/PropertyList.h"
#include "core/FormatTable.h"
#include "core/LinuxFormats.h"
#include "os/LibraryLock.h"
#include "os/ProcessList.h"
#include "os/ReadOnlyFileOperations.h"
#include "os/SystemLog.h"

#include <QDataStream>
#include <QProcess>
#include <QScopeGuard>
#include <QTemporaryDir>

#include <cstring>
#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>

namespace korvane {

namespace {

QString sidecarOf(const QString &item)
{
    return QFileInfo(item).path() + "/._" + QFileInfo(item).fileName();
}

// A Finder type kept only in an AppleDouble sidecar "._NAME" beside the item, as a file system
// without extended attributes keeps it.
void writeSidecarType(const QString &item, const QByteArray &type)
{
    QByteArray bytes;
    QDataStream out(&bytes, QIODevice::WriteOnly);
    out << quint32(0x00051607) << quint32(0x00020000) << quint64(0) << quint64(0) << quint16(1)
        << quint32(9) << quint32(38) << quint32(32);
    QDir().mkpath(QFileInfo(item).path());
    QFile sidecar(sidecarOf(item));
    ASSERT_TRUE(sidecar.open(QIODevice::WriteOnly | QIODevice::Truncate));
    sidecar.write(bytes + type + QByteArray(28, '\0'));
}

} // namespace

class ApplierTest : public FormatManagerFixture {
protected:
    static void mark(FormatManager *manager, const QString &name, bool active)
    {
        manager->table().selectRows({rowOf(manager, name)});
        active ? manager->marking().setSelectedActive() : manager->marking().setSelectedInactive();
    }
    QString source, target;
    QStringList entries(const QString &folder) { return disk().directoryContents(folder); }
};

TEST_F(ApplierTest, ApplyMovesEveryPendingChange)
{
    const QString a = addAU(LocSystemActive, "A.component");
    addAU(LocSystemActive, "B.component");
    B::makeAudioUnit(folder(TypeAU, 3), "C.component", MachO::ppc());
    au->rescan();
    au->marking().setAllInactive(); // C is off already
    au->apply();
    EXPECT_TRUE(whole(auPath(1, "A.component"), MachO::intel()) && !exists(a));
    EXPECT_FALSE(au->isApplyEnabled());

    mark(au, "C.component", true);
    mark(au, "B.component", true);
    mark(au, "A.component", true); // and back: nothing pending
    mark(au, "A.component", false);
    QStringList reported; // in log order, which is the order of the scan
    for (const MoveOutcome &o : au->applyPending())
        reported << QString("%1 > %2 %3%4").arg(o.from, o.to).arg(int(o.enabled)).arg(int(o.ok));
    EXPECT_EQ(reported, QStringList({auPath(1, "B.component > ") + auPath(0, "B.component 11"),
                                     auPath(3, "C.component > ") + auPath(2, "C.component 11")}));
    EXPECT_TRUE(whole(auPath(0, "B.component"), MachO::intel()));
    EXPECT_TRUE(whole(auPath(2, "C.component"), MachO::ppc())); // user folder created
    EXPECT_EQ(au->rowCount(), 3);
}

// A failure asks whether to go on; Stop, or Cancel between plug-ins, leaves the rest where they
// are.
TEST_F(ApplierTest, AFailureOrACancelStopsTheApplyBetweenPlugIns)
{
    for (const char *name : {"A.component", "B.component", "C.component"})
        addAU(LocSystemActive, name);
    FaultyOperations files(roots());
    files.moveSource = auPath(0, "A.component");
    relaunch(&files);
    const auto apply = [this] {
        au->rescan();
        au->marking().setAllInactive();
        QStringList reported;
        for (const MoveOutcome &o : au->applyPending())
            reported << QString("%1 %2%3").arg(o.name).arg(int(o.ok)).arg(int(o.stopped));
        return reported;
    };
    ui.alertAnswers << AlertAnswer::Default << AlertAnswer::Alternate; // Proceed, then Stop
    EXPECT_EQ(apply(), QStringList({"A.component 00", "B.component 10", "C.component 10"}));
    EXPECT_EQ(files.moves, 3); // a full disk is not tried a second time
    for (const char *name : {"B.component", "C.component"})
        EXPECT_TRUE(QDir().rename(auPath(1, name), auPath(0, name)));
    EXPECT_EQ(apply(), QStringList({"A.component 00", "B.component 01", "C.component 01"}));
    EXPECT_TRUE(ui.alerts.value(1).messageText.endsWith("No space left on device\n with file: "
                                                        + auPath(0, "A.component")));
    EXPECT_TRUE(logText().endsWith("Stopped, not moved: B.component, C.component\n"));

    files.moveSource.clear();
    ui.cancelAt = 2;
    relaunch(&files);
    EXPECT_EQ(apply(), QStringList({"A.component 10", "B.component 01", "C.component 01"}));
    EXPECT_TRUE(exists(auPath(1, "A.component")) && exists(auPath(0, "B.component")));
    EXPECT_TRUE(logText().endsWith("Stopped, not moved: B.component, C.component\n"));
    relaunch();
}

// Something in the way that is no plug-in of the format (a user's file of the same name) goes to
// the trash, and the logs say so; a plug-in that came to the target after the scan is installed
// like any other and stays, and so does the moving one.
TEST_F(ApplierTest, AFileInTheWayGoesToTheTrashSaidButALateCopyStays)
{
    SystemLogCapture capture;
    const auto conflict = [&](bool plugIn) {
        source = B::makeVST(folder(TypeVST, 0), "Foo.vst", MachO::ppc());
        vst->rescan();
        vst->marking().setAllInactive();
        target = plugIn ? B::makeVST(folder(TypeVST, 1), "Foo.vst", MachO::intel())
                        : B::makeFile(folder(TypeVST, 1), "Foo.vst", {}, "notes");
    };
    conflict(false);
    QDir(source).removeRecursively(); // gone behind the program's back
    vst->apply();
    EXPECT_EQ(capture.lines(),
              QStringList({"Target exist: read yes, write yes, delete yes", "fehlgeschlagen"}));
    EXPECT_EQ(ui.alerts.size(), 1);
    EXPECT_EQ(readText(target), "notes");
    QFile::remove(target);

    conflict(false);
    vst->apply();
    const QString trashed = homePath(".local/share/Trash/files/Foo.vst");
    const QString said = target + " was in the way and is now in the trash: " + trashed;
    EXPECT_EQ(capture.notices(), QStringList{said});
    EXPECT_TRUE(logText().contains(said + "\n"));
    EXPECT_EQ(readText(trashed), "notes");
    EXPECT_EQ(ui.alerts.size(), 1);
    EXPECT_TRUE(whole(target, MachO::ppc()) && !exists(source));
    QDir(target).removeRecursively();

    conflict(true);
    const QList<MoveOutcome> late = vst->applyPending();
    EXPECT_TRUE(late.size() == 1 && late[0].otherCopyAtTarget);
    EXPECT_TRUE(whole(source, MachO::ppc()) && whole(target, MachO::intel()));
    EXPECT_EQ(capture.notices().size(), 1); // nothing more went to the trash
    EXPECT_TRUE(ui.alerts.value(1).messageText.contains("Another installed copy"));
    QDir(target).removeRecursively();
    QDir(source).removeRecursively();

    // A target that cannot go to the trash stays, and the move fails as any failed move does.
    conflict(false);
    QList<MoveOutcome> outcomes;
    {
        ImmutableGuard guard(target);
        if (!guard.ok())
            GTEST_SKIP() << "no immutable files here";
        outcomes = vst->applyPending();
    }
    EXPECT_EQ(capture.lines().mid(capture.lines().size() - 3),
              QStringList({"Target exist: read yes, write no, delete no", "Delete not sucessful",
                           "fehlgeschlagen"}));
    EXPECT_TRUE(outcomes.size() == 1 && !outcomes[0].ok);
    EXPECT_EQ(ui.alerts.size(), 3);
    EXPECT_TRUE(whole(source, MachO::ppc()) && readText(target) == "notes");
}

// Whichever copy of a twice-installed plug-in goes first, the other must not replace it; an
// identical copy already in place settles the pair instead, the moving copy going to the trash.
TEST_F(ApplierTest, AMoveOntoAnotherInstalledCopyIsRefusedUnlessItIsIdentical)
{
    // Foo in the user's folder (Intel) and disabled system-wide (PPC), both marked for the empty
    // system folder; Bar on there and a different build in the user's folder; Qux on and off.
    const QString user = addAU(LocUserActive, "Foo.component");
    const QString off = B::makeAudioUnit(folder(TypeAU, 1), "Foo.component", MachO::ppc());
    addAU(LocSystemActive, "Bar.component");
    const QString bar = B::makeAudioUnit(folder(TypeAU, 2), "Bar.component", MachO::ppc());
    const QString qux = addAU(LocSystemActive, "Qux.component");
    const QString quxOff = addAU(LocSystemDisabled, "Qux.component");
    SystemLogCapture capture;
    au->rescan();
    for (const PluginPtr &it : au->items())
        if (!it->isGlobal() || !it->isActive())
            au->marking().changeItem(it, it->isGlobal() ? "AUActive" : "AUGlobal", true);

    QStringList reported;
    for (const MoveOutcome &o : au->applyPending())
        reported << QString("%1 %2%3").arg(o.from).arg(int(o.ok)).arg(int(o.otherCopyAtTarget));
    EXPECT_EQ(reported, QStringList({off + " 10", quxOff + " 10", bar + " 01", user + " 01"}));
    EXPECT_TRUE(whole(auPath(0, "Foo.component"), MachO::ppc()));
    EXPECT_TRUE(whole(user, MachO::intel()));
    EXPECT_TRUE(whole(auPath(0, "Bar.component"), MachO::intel()) && exists(bar));
    EXPECT_EQ(ui.alerts.size(), 2);
    EXPECT_TRUE(logText().contains("Foo.component stays in " + folder(TypeAU, 2)
                                   + ": another installed copy lies at "
                                   + auPath(0, "Foo.component")));
    EXPECT_FALSE(capture.contains("fehlgeschlagen"));

    const QString trashed = homePath(".local/share/Trash/files/Qux.component");
    EXPECT_TRUE(whole(trashed, MachO::intel()) && whole(qux, MachO::intel()) && !exists(quxOff));
    EXPECT_TRUE(logText().contains("the identical copy from " + quxOff + " is now in the trash"));
    EXPECT_EQ(capture.notices(),
              QStringList{"Qux.component was already at " + qux + "; the identical copy from "
                          + quxOff + " is now in the trash: " + trashed});
    EXPECT_EQ(names(au).count("Qux.component"), 1);
}

TEST_F(ApplierTest, ContentInTheFormatsFoldersFollowsThePlugIn)
{
    setPref("AUMoveContent", true);
    addAU(LocSystemActive, "Foo.component");
    const QString preset = B::makeFile(folder(TypeAU, 0) + "/Sub", "Foo.preset");
    const QString outside = B::makeFile(homePath("Documents"), "Foo.txt");
    // Under the user's folder by its text, above every folder in fact.
    B::makeFile(home(), "victim.txt");
    const QString climbing = folder(TypeAU, 2) + "/../../../../victim.txt";
    services().contentRegistry().store(QStringList{"Foo.component", preset, outside, climbing});
    au->rescan();
    mark(au, "Foo.component", false);

    au->apply();
    const QString moved = auPath(1, "Sub/Foo.preset");
    EXPECT_TRUE(QFileInfo(moved).isFile());
    EXPECT_FALSE(exists(preset));
    EXPECT_TRUE(exists(outside) && exists(homePath("victim.txt")));
    EXPECT_FALSE(exists(rootPath("victim.txt")));
    EXPECT_EQ(
        PropertyList::readArray(homePath("Library/Application Support/Korvane/content.plist")),
        QVariantList({QVariantList{"Foo.component", moved, outside, climbing}}));
}

// A companion added in the info panel once moved only after the next rescan.
TEST_F(ApplierTest, ACompanionAddedSinceTheScanMovesWithTheFirstApply)
{
    setPref("AUMoveContent", true);
    addAU(LocSystemActive, "Foo.component");
    const QString preset = B::makeFile(folder(TypeAU, 0) + "/Sub", "Foo.preset");
    au->rescan();
    au->itemAt(0)->addContent(preset); // what the info panel's Add does
    services().contentRegistry().store(*au->itemAt(0));
    mark(au, "Foo.component", false);
    au->apply();
    EXPECT_TRUE(QFileInfo(auPath(1, "Sub/Foo.preset")).isFile());
    EXPECT_FALSE(exists(preset));
}

// Companions beside a plug-in of a later pair: the second user folder of Linux VST 2 (~/.lxvst)
// and a folder LV2_PATH adds. One in a distribution folder stays, said.
TEST_F(ApplierTest, ContentOfEveryPairFollowsThePlugInButNotOutOfTheDistributionsFolders)
{
    const QString added = rootPath("opt/lv2");
    const FormatTable table = withRunFolders(FormatTable::builtIn(), locations().roots(),
                                             {{"LV2_PATH", added}, {"VST_PATH", ""}});
    const Format &lv2 = table.at(*table.typeOfName("lv2"));
    const Format &lxvst = table.at(*table.typeOfName("lxvst"));
    const int addedLoc = int(locations().allFolderPaths(lv2).indexOf(added));
    const int lxvstLoc = int(locations().allFolderPaths(lxvst).indexOf(homePath(".lxvst")));
    ASSERT_GE(addedLoc, 4);
    ASSERT_GE(lxvstLoc, 4);
    const QString packaged = locations().folderPath(lv2, 2 * 2); // /usr/lib/lv2
    ASSERT_TRUE(lv2.isDistributionOwned(4));

    QDir().mkpath(added + "/Hall.lv2");
    writeText(added + "/Hall.lv2/manifest.ttl", "");
    const QString hallPreset = B::makeFile(added + "/Presets", "Hall.preset");
    const QString packagedPreset = B::makeFile(packaged, "Hall.shared");
    const QString echo = B::makeFile(homePath(".lxvst"), "Echo.so");
    const QString echoBank = B::makeFile(homePath(".lxvst/Banks"), "Echo.fxb");
    // A run of that table, as the programs make one.
    AllowAllAuthorization allowAll;
    AppServices run(RunParts{locations(), disk(), ui, table, locks()});
    Preferences pref(run.parts(), run.dataFiles());
    MissingItemsPrompt missingItems(ui);
    Authorization authorization(allowAll, ui);
    const ManagerParts parts = managerParts(run, pref, missingItems, authorization);
    run.contentRegistry().store(QStringList{"Hall.lv2", hallPreset, packagedPreset});
    run.contentRegistry().store(QStringList{"Echo.so", echoBank});
    pref.store()->setValue("LV2MoveContent", true);
    pref.store()->setValue("LXVSTMoveContent", true);

    for (const Format *row : {&lv2, &lxvst}) {
        FormatManager manager(*row, parts);
        manager.rescan();
        ASSERT_EQ(manager.items().size(), 1) << qPrintable(row->prefix);
        mark(&manager, manager.itemAt(0)->name(), false);
        manager.apply();
    }
    const QString addedOff = locations().folderPath(lv2, addedLoc + 1);
    EXPECT_TRUE(exists(addedOff + "/Hall.lv2"));
    EXPECT_TRUE(QFileInfo(addedOff + "/Presets/Hall.preset").isFile());
    EXPECT_FALSE(exists(hallPreset));
    EXPECT_TRUE(QFileInfo(packagedPreset).isFile());
    EXPECT_TRUE(run.log().text().contains(packagedPreset + " of Hall.lv2 stays where it is"))
        << qPrintable(run.log().text());
    const QString lxvstOff = locations().folderPath(lxvst, lxvstLoc + 1);
    EXPECT_FALSE(exists(echo));
    EXPECT_TRUE(QFileInfo(lxvstOff + "/Banks/Echo.fxb").isFile());
    EXPECT_FALSE(exists(echoBank));
}

// A plain-file VST known only by the Finder type in its sidecar, switched on where a stale
// sidecar of no plug-in lies: that goes to the trash, said, and the plug-in moves with its own
// Finder information, so it is still a plug-in. Where the stale one cannot go, nothing moves.
TEST_F(ApplierTest, AStaleSidecarInTheWayGoesToTheTrashAndThePlugInStaysListed)
{
    const QString on = folder(TypeVST, LocSystemActive), off = folder(TypeVST, LocSystemDisabled);
    writeSidecarType(B::makeFile(off, "Foo"), "aPcs");
    const auto stale = [&] { writeSidecarType(on + "/Foo", "TEXT"); };
    stale();
    SystemLogCapture capture;
    vst->rescan();
    ASSERT_EQ(names(vst), QStringList{"Foo"});
    const auto apply = [&](bool active) {
        mark(vst, "Foo", active);
        const QList<MoveOutcome> outcomes = vst->applyPending();
        EXPECT_EQ(outcomes.size(), 1);
        return outcomes.value(0);
    };
    EXPECT_TRUE(apply(true).ok);
    EXPECT_EQ(names(vst), QStringList{"Foo"});
    EXPECT_TRUE(item(vst, "Foo")->isActive());
    EXPECT_EQ(FinderInfo::hfsTypeString(on + "/Foo"), "'aPcs'");
    const QString trashed = homePath(".local/share/Trash/files/._Foo");
    QFile sidecar(trashed);
    ASSERT_TRUE(sidecar.open(QIODevice::ReadOnly));
    EXPECT_EQ(FinderInfo::typeFromAppleDouble(sidecar.readAll()), 0x54455854u); // TEXT
    const QString said = on
                         + "/._Foo was in the way of the Finder information of Foo and is now "
                           "in the trash: "
                         + trashed;
    EXPECT_EQ(capture.notices(), QStringList{said});
    EXPECT_TRUE(logText().contains(said + "\n"));

    ASSERT_TRUE(apply(false).ok);
    stale();
    ImmutableGuard guard(sidecarOf(on + "/Foo"));
    if (!guard.ok())
        GTEST_SKIP() << "no immutable files here";
    const MoveOutcome failed = apply(true);
    EXPECT_FALSE(failed.ok);
    EXPECT_EQ(failed.error.path, on + "/._Foo");
    EXPECT_EQ(FinderInfo::hfsTypeString(off + "/Foo"), "'aPcs'");
    EXPECT_EQ(names(vst), QStringList{"Foo"});
    EXPECT_FALSE(item(vst, "Foo")->isActive());
}

// Whatever a path's text says, a link on the way can lead out of the folders: a companion behind
// one, and a plug-in whose subfolder in the other folder is one, stay where they are, said.
TEST_F(ApplierTest, NothingMovesThroughALinkOnTheWay)
{
    QTemporaryDir outside;
    const QString victim = B::makeFile(outside.path(), "victim", {}, "not ours");
    setPref("AUMoveContent", true);
    addAU(LocSystemActive, "Foo.component");
    const QString link = folder(TypeAU, 0) + "/link-out";
    ASSERT_TRUE(QFile::link(outside.path(), link));
    const QString preset = B::makeFile(folder(TypeAU, 0) + "/Sub", "Foo.preset");
    services().contentRegistry().store(QStringList{"Foo.component", link + "/victim", preset});
    SystemLogCapture capture;
    au->rescan();
    mark(au, "Foo.component", false);
    au->apply();
    EXPECT_TRUE(whole(auPath(1, "Foo.component"), MachO::intel()));
    EXPECT_TRUE(QFileInfo(auPath(1, "Sub/Foo.preset")).isFile());
    EXPECT_EQ(readText(victim), "not ours");
    EXPECT_FALSE(exists(auPath(1, "link-out")));
    const QString said = "The companion " + link + "/victim of Foo.component stays where it is: "
                         + link + " on the way is a link or no folder";
    EXPECT_EQ(capture.notices(), QStringList{said});
    EXPECT_TRUE(logText().contains(said));

    // Switched off from a subfolder whose counterpart in the disabled folder is a link.
    setPref("VSTScanSubfolders", true);
    const QString fx =
        B::makeVST(folder(TypeVST, LocUserActive) + "/Sub", "Fx.vst", MachO::intel());
    B::makeFolder(folder(TypeVST, LocUserDisabled));
    ASSERT_TRUE(QFile::link(outside.path(), folder(TypeVST, LocUserDisabled) + "/Sub"));
    vst->rescan();
    mark(vst, "Sub/Fx.vst", false);
    const QList<MoveOutcome> outcomes = vst->applyPending();
    ASSERT_EQ(outcomes.size(), 1);
    EXPECT_FALSE(outcomes[0].ok);
    EXPECT_EQ(outcomes[0].error.path, folder(TypeVST, LocUserDisabled) + "/Sub");
    EXPECT_TRUE(whole(fx, MachO::intel()));
    EXPECT_EQ(entries(outside.path()), QStringList{"victim"});
}

} // namespace korvane
