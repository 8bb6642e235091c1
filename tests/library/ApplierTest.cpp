#include "FormatManagerFixture.h"

#include "codec/FinderInfo.h"
#include "codec/PropertyList.h"
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
    services().storeContent({"Foo.component", preset, outside, climbing});
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
    mark(au, "Foo.component", false);
    au->apply();
    EXPECT_TRUE(QFileInfo(auPath(1, "Sub/Foo.preset")).isFile());
    EXPECT_FALSE(exists(preset));
}

// What a move across file systems leaves when its process dies at each step, and what the next
// scan makes of it: one whole copy under the plug-in's name, nothing half-copied in sight.
TEST_F(ApplierTest, TheNextScanLeavesOneWholeCopyUnderTheName)
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
TEST_F(ApplierTest, OnlyTheLeftoversOfAMoverThatIsGoneAreSettled)
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
TEST_F(ApplierTest, ALoneSidecarJoinsItsPlugInOnlyWhereThatIsBeyondDoubt)
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
TEST_F(ApplierTest, OnlyAScanThatHasTheLibraryToItselfTouchesLeftovers)
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
    services().storeContent({"Foo.component", link + "/victim", preset});
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
