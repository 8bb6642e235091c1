#include "FormatManagerFixture.h"

#include "app/AppServices.h"
#include "managers/MyMASObj.h"
#include "managers/MyRTASObj.h"
#include "managers/MyVSTObj.h"
#include "platform/PropertyList.h"
#include "platform/SystemLog.h"

#include <QLocale>

namespace korvane {

// Fails the chosen operations, as a full disk or a broken trash would.
class RefusingOperations : public LocalFileOperations {
public:
    using LocalFileOperations::LocalFileOperations;
    QString moveSource; // a move from here fails
    bool trash = true;
    bool move(const QString &from, const QString &to, FileError *error) override
    {
        if (from == moveSource) {
            if (error)
                *error = {from, QStringLiteral("No space left on device")};
            return false;
        }
        return LocalFileOperations::move(from, to, error);
    }
    bool moveToTrash(const QString &path, FileError *error, QString *trashedTo) override
    {
        if (!trash) {
            if (error)
                *error = {path, QStringLiteral("No trash here")};
            return false;
        }
        return LocalFileOperations::moveToTrash(path, error, trashedTo);
    }
};

// Moves as they run between file systems, where every byte is copied: each reports its bytes.
class CopyingOperations : public LocalFileOperations {
public:
    using LocalFileOperations::LocalFileOperations;
    static constexpr qint64 Size = qint64(64) << 20;
    void setCopyProgress(CopyProgress progress) override { m_progress = std::move(progress); }
    bool move(const QString &from, const QString &to, FileError *error) override
    {
        if (m_progress) {
            m_progress(Size / 2, Size);
            m_progress(Size, Size);
        }
        return LocalFileOperations::move(from, to, error);
    }

private:
    CopyProgress m_progress;
};

// Presses Cancel once the first plug-in is under way.
class CancellingUi : public ScriptedUi {
public:
    int asked = 0;
    bool progressCancelled() override { return ++asked > 1; }
};

class ActivationTest : public FormatManagerFixture {
protected:
    static void mark(TypeManager *manager, const QString &name, bool active)
    {
        manager->selectRows({rowOf(manager, name)});
        active ? manager->setSelectedActive() : manager->setSelectedInactive();
    }
    QString logText() { return services().logText(); }
    // Foo.component active (PPC), marked to go off; then an older Foo.component (Intel, with a
    // licence file the scan never looks at) appears in the disabled folder.
    void conflict()
    {
        source =
            PluginLibraryBuilder::makeAudioUnit(folder(TypeAU, 0), "Foo.component", MachO::ppc());
        au->reloadData();
        au->setAllInactive();
        target = addAU(LocSystemDisabled, "Foo.component");
        PluginLibraryBuilder::makeFile(target + "/Contents/Resources", "Licence.txt");
    }
    QString source, target;
};

TEST_F(ActivationTest, ApplyMovesEveryPendingChange)
{
    const QString a = addAU(LocSystemActive, "A.component");
    const QString b = addAU(LocSystemActive, "B.component");
    PluginLibraryBuilder::makeAudioUnit(folder(TypeAU, 3), "C.component", MachO::ppc());
    au->reloadData();
    au->setAllInactive(); // C is off already
    EXPECT_EQ(au->countOfUnprocessedLogItems(), 2);

    au->AUActivate();
    EXPECT_FALSE(exists(a) || exists(b));
    EXPECT_TRUE(whole(auPath(1, "A.component"), MachO::intel()));
    EXPECT_TRUE(whole(auPath(1, "B.component"), MachO::intel()));
    EXPECT_FALSE(au->isApplyEnabled());

    mark(au, "C.component", true);
    mark(au, "B.component", true);
    QStringList reported; // in log order, which is the order of the scan
    for (const MoveOutcome &o : au->applyAllPending())
        reported << QString("%1 > %2 %3%4").arg(o.from, o.to).arg(int(o.enabled)).arg(int(o.ok));
    EXPECT_EQ(reported, QStringList({auPath(1, "B.component > ") + auPath(0, "B.component 11"),
                                     auPath(3, "C.component > ") + auPath(2, "C.component 11")}));
    EXPECT_TRUE(whole(auPath(0, "B.component"), MachO::intel()));
    EXPECT_TRUE(whole(auPath(2, "C.component"), MachO::ppc())); // user folder created
    EXPECT_EQ(au->numberOfRowsInTableView(), 3);
    EXPECT_FALSE(au->isApplyEnabled());
}

TEST_F(ActivationTest, StopAtAFailureLeavesTheRestAndSaysWhich)
{
    for (const char *name : {"A.component", "B.component", "C.component"})
        addAU(LocSystemActive, name);
    RefusingOperations files(roots());
    files.moveSource = auPath(0, "A.component");
    relaunch(&files);
    SystemLogCapture capture;

    au->reloadData();
    au->setAllInactive();
    ui.alertAnswers << AlertDefault; // Proceed: the others still move
    EXPECT_EQ(au->applyAllPending().size(), 3);
    EXPECT_TRUE(exists(auPath(0, "A.component")));
    EXPECT_TRUE(exists(auPath(1, "B.component")) && exists(auPath(1, "C.component")));

    for (const char *name : {"B.component", "C.component"})
        QDir().rename(auPath(1, name), auPath(0, name));
    au->reloadData();
    au->setAllInactive();
    ui.alertAnswers << AlertAlternate; // Stop
    QStringList reported;
    for (const MoveOutcome &o : au->applyAllPending())
        reported << QString("%1 %2%3").arg(o.name).arg(int(o.ok)).arg(int(o.stopped));
    EXPECT_EQ(reported, QStringList({"A.component 00", "B.component 01", "C.component 01"}));
    ASSERT_EQ(ui.alerts.size(), 2);
    EXPECT_EQ(ui.alerts[1].messageText, "File operation error...\n error: No space left on "
                                        "device\n with file: "
                                            + auPath(0, "A.component"));
    for (const char *name : {"A.component", "B.component", "C.component"})
        EXPECT_TRUE(exists(auPath(0, name))) << name;
    EXPECT_TRUE(logText().endsWith("Stopped, not moved: B.component, C.component\n"));
    EXPECT_EQ(capture.lines().last(), "Stopped, not moved: B.component, C.component");
    relaunch();
}

// Cancel takes effect between plug-ins: what moved stays moved and the log names the rest. While a
// plug-in is copied the bar moves within it and the lower line counts its bytes.
TEST_F(ActivationTest, ALongApplyShowsItsBytesAndStopsBetweenPlugIns)
{
    for (const char *name : {"A.component", "B.component", "C.component"})
        addAU(LocSystemActive, name);
    CopyingOperations files(roots());
    CancellingUi person;
    ManagersOfOneRun run(locations(), files, person);
    SystemLogCapture capture;
    run.au.reloadData();
    run.au.setAllInactive();
    person.progressValues.clear();

    const QList<MoveOutcome> outcomes = run.au.applyAllPending();
    ASSERT_EQ(outcomes.size(), 3);
    EXPECT_TRUE(outcomes[0].ok && outcomes[1].stopped && outcomes[2].stopped);
    EXPECT_TRUE(exists(auPath(1, "A.component")));
    EXPECT_TRUE(exists(auPath(0, "B.component")) && exists(auPath(0, "C.component")));
    EXPECT_EQ(person.progressValues.mid(0, 3), QList<double>({0, 0.5, 1}));
    const QLocale locale;
    EXPECT_TRUE(person.progressDetails.contains(
        QString("%1 of %2")
            .arg(locale.formattedDataSize(CopyingOperations::Size / 2),
                 locale.formattedDataSize(CopyingOperations::Size))));
    EXPECT_TRUE(run.services.logText().endsWith("Stopped, not moved: B.component, C.component\n"));
    EXPECT_EQ(capture.lines().last(), "Stopped, not moved: B.component, C.component");
}

TEST_F(ActivationTest, AnOccupiedTargetGoesToTheTrashOnlyForASourceThatIsThere)
{
    SystemLogCapture capture;
    const QString there = "Target exist: read yes, write yes, delete yes";
    conflict();
    QDir(source).removeRecursively(); // gone behind the program's back
    au->AUActivate();
    EXPECT_EQ(capture.lines(), QStringList({there, "fehlgeschlagen"}));
    EXPECT_EQ(ui.alerts.size(), 1);
    EXPECT_TRUE(whole(target, MachO::intel()));
    QDir(target).removeRecursively();

    conflict(); // made room for without asking, but kept in the trash with everything inside
    au->AUActivate();
    ASSERT_EQ(capture.lines().size(), 4);
    EXPECT_EQ(capture.lines()[2], there);
    const QString trashed = capture.lines()[3].section("Target moved to the trash: ", 1);
    EXPECT_TRUE(trashed.startsWith(homePath(".local/share/Trash/files/")));
    EXPECT_TRUE(whole(trashed, MachO::intel()));
    EXPECT_TRUE(exists(trashed + "/Contents/Resources/Licence.txt"));
    EXPECT_TRUE(logText().contains(target + " was in the way and is now in the trash: " + trashed));
    EXPECT_EQ(ui.alerts.size(), 1);
    EXPECT_FALSE(exists(source));
    EXPECT_TRUE(whole(target, MachO::ppc()));
    QDir(target).removeRecursively();

    // Without a trash the target stays, and the move fails as any failed move does.
    RefusingOperations files(roots());
    files.trash = false;
    relaunch(&files);
    conflict();
    QList<MoveOutcome> outcomes = au->applyAllPending();
    EXPECT_TRUE(outcomes.size() == 1 && !outcomes[0].ok);
    EXPECT_EQ(ui.alerts.size(), 2);
    EXPECT_TRUE(whole(source, MachO::ppc()));
    EXPECT_TRUE(whole(target, MachO::intel()));
    QDir(target).removeRecursively();
    relaunch();

    conflict();
    {
        ImmutableGuard guard(target);
        if (!guard.ok())
            GTEST_SKIP() << "no immutable files here";
        outcomes = au->applyAllPending();
    }
    EXPECT_EQ(capture.lines().mid(capture.lines().size() - 3),
              QStringList({"Target exist: read yes, write no, delete no", "Delete not sucessful",
                           "fehlgeschlagen"}));
    ASSERT_EQ(ui.alerts.size(), 3);
    EXPECT_TRUE(ui.alerts[2].messageText.startsWith("File operation error...\n error: "));
    EXPECT_TRUE(outcomes.size() == 1 && !outcomes[0].ok);
    EXPECT_TRUE(whole(source, MachO::ppc()));
    EXPECT_TRUE(exists(target));
}

TEST_F(ActivationTest, AMoveOntoAnotherInstalledCopyIsRefused)
{
    // Foo twice: in the user's folder (Intel), and disabled system-wide (PPC). Both are marked
    // for the empty system folder; whichever goes first, the other must not replace it.
    const QString user = addAU(LocUserActive, "Foo.component");
    const QString off =
        PluginLibraryBuilder::makeAudioUnit(folder(TypeAU, 1), "Foo.component", MachO::ppc());
    // Bar twice, and not the same build: an identical pair is settled instead.
    addAU(LocSystemActive, "Bar.component");
    const QString bar =
        PluginLibraryBuilder::makeAudioUnit(folder(TypeAU, 2), "Bar.component", MachO::ppc());
    SystemLogCapture capture;
    au->reloadData();
    for (const AUItemPtr &it : au->items()) {
        if (!it->getAUGlobal())
            au->changeObject(it, "AUGlobal", true);
        else if (!it->getAUActive())
            au->changeObject(it, "AUActive", true);
    }

    QStringList reported;
    for (const MoveOutcome &o : au->applyAllPending())
        reported << QString("%1 %2%3").arg(o.from).arg(int(o.ok)).arg(int(o.otherCopyAtTarget));
    EXPECT_EQ(reported, QStringList({off + " 10", bar + " 01", user + " 01"}));
    EXPECT_TRUE(whole(auPath(0, "Foo.component"), MachO::ppc()));
    EXPECT_TRUE(whole(user, MachO::intel()));
    EXPECT_TRUE(whole(auPath(0, "Bar.component"), MachO::intel()) && exists(bar));
    ASSERT_EQ(ui.alerts.size(), 2);
    EXPECT_EQ(ui.alerts[0].messageText,
              "File operation error...\n error: Another installed copy of the plug-in lies there; "
              "both copies are kept\n with file: "
                  + auPath(0, "Bar.component"));
    EXPECT_TRUE(logText().contains("Foo.component stays in " + folder(TypeAU, 2)
                                   + ": another installed copy lies at "
                                   + auPath(0, "Foo.component")));
    EXPECT_TRUE(
        capture.contains("Target is an installed copy, both kept: " + auPath(0, "Bar.component")));
    EXPECT_FALSE(capture.contains("fehlgeschlagen"));
}

TEST_F(ActivationTest, AnIdenticalCopyWhereThePlugInBelongsLeavesOneCopyThere)
{
    const QString on = addAU(LocSystemActive, "Foo.component");
    const QString off = addAU(LocSystemDisabled, "Foo.component");
    au->reloadData();
    for (const AUItemPtr &it : au->items())
        if (it->getAUActive())
            au->changeObject(it, "AUActive", false);
    const QList<MoveOutcome> outcomes = au->applyAllPending();
    ASSERT_EQ(outcomes.size(), 1);
    EXPECT_TRUE(outcomes[0].ok);
    const QString trashed = homePath(".local/share/Trash/files/Foo.component");
    EXPECT_TRUE(whole(trashed, MachO::intel()) && whole(off, MachO::intel()) && !exists(on));
    EXPECT_TRUE(logText().contains("Foo.component was already at " + off
                                   + "; the identical copy from " + on
                                   + " is now in the trash: " + trashed));
    EXPECT_TRUE(ui.alerts.isEmpty());
    EXPECT_EQ(names(au), QStringList{"Foo.component"});
}

TEST_F(ActivationTest, ContentInTheFormatsFoldersFollowsThePlugIn)
{
    setPref("AUMoveContent", true);
    addAU(LocSystemActive, "Foo.component");
    const QString preset = PluginLibraryBuilder::makeFile(folder(TypeAU, 0) + "/Sub", "Foo.preset");
    const QString outside = PluginLibraryBuilder::makeFile(homePath("Documents"), "Foo.txt");
    // Under the user's folder by its text, above every folder in fact.
    PluginLibraryBuilder::makeFile(home(), "victim.txt");
    const QString climbing = folder(TypeAU, 2) + "/../../../../victim.txt";
    services().saveContent({"Foo.component", preset, outside, climbing});
    au->reloadData();
    mark(au, "Foo.component", false);

    au->AUActivate();
    const QString moved = auPath(1, "Sub/Foo.preset");
    EXPECT_TRUE(QFileInfo(moved).isFile());
    EXPECT_FALSE(exists(preset));
    EXPECT_TRUE(exists(outside));
    EXPECT_TRUE(exists(homePath("victim.txt")));
    EXPECT_FALSE(exists(rootPath("victim.txt")));
    EXPECT_EQ(PropertyList::read(homePath("Library/Application Support/Korvane/content.plist"))
                  .value_or(QVariant())
                  .toList(),
              QVariantList({QVariantList{"Foo.component", moved, outside, climbing}}));
}

TEST_F(ActivationTest, APlugInInASubfolderMovesToTheSameSubfolderAndBack)
{
    const QString source =
        PluginLibraryBuilder::makeVST(folder(TypeVST, 2) + "/Sub", "Foo.vst", MachO::intel());
    MyVSTObj *vst = &context->vst;
    vst->reloadData();
    mark(vst, "Sub/Foo.vst", false);

    vst->VSTActivate();
    EXPECT_FALSE(exists(source));
    EXPECT_TRUE(whole(folder(TypeVST, 3) + "/Sub/Foo.vst", MachO::intel()));
    ASSERT_EQ(names(vst), QStringList({"Sub/Foo.vst"}));
    EXPECT_EQ(vst->itemAt(0)->getAULocation(), folder(TypeVST, 3));

    mark(vst, "Sub/Foo.vst", true);
    vst->VSTActivate();
    EXPECT_TRUE(whole(source, MachO::intel()));
}

TEST_F(ActivationTest, MarkingBackAndForthLeavesNothingPending)
{
    addAU(LocSystemActive, "A.component");
    au->reloadData();
    mark(au, "A.component", false);
    EXPECT_TRUE(au->isApplyEnabled());
    mark(au, "A.component", true);
    EXPECT_FALSE(au->isApplyEnabled());

    // Put the flag back behind the log's back: the record stays pending until a command looks.
    mark(au, "A.component", false);
    const AUItemPtr a = item(au, "A.component");
    a->setAUActive(true);
    a->checkObject(TypeAU);
    au->setAllActive(); // skips items that are already on
    EXPECT_TRUE(au->isApplyEnabled());
    au->setSelectedActive(); // sets every selected item whatever its state
    EXPECT_FALSE(au->isApplyEnabled());
    EXPECT_EQ(au->countOfUnprocessedLogItems(), 0);
}

TEST_F(ActivationTest, CheckAndCreatePathMakesTheParentThenThePlugInFolder)
{
    context->mas.checkAndCreatePath(true);
    EXPECT_TRUE(QFileInfo(rootPath("Library/Application Support/Digidesign")).isDir());
    EXPECT_TRUE(QFileInfo(folder(TypeMAS, 0)).isDir());

    // Something that exists at a path is left alone, folder or not.
    PluginLibraryBuilder::makeFile(homePath("Library/Application Support/Digidesign"), "Plug-Ins");
    context->rtas.checkAndCreatePath(false);
    EXPECT_TRUE(QFileInfo(folder(TypeRTAS, 2)).isFile());
}

} // namespace korvane
