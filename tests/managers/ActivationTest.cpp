#include "FormatManagerFixture.h"

#include "app/AppServices.h"
#include "managers/MyMASObj.h"
#include "managers/MyRTASObj.h"
#include "managers/MyVSTObj.h"
#include "platform/Bundle.h"
#include "platform/PropertyList.h"
#include "platform/SystemLog.h"

namespace korvane {

class ActivationTest : public FormatManagerFixture {
protected:
    static void mark(TypeManager *manager, const QString &name, bool active)
    {
        manager->selectRows({rowOf(manager, name)});
        active ? manager->setSelectedActive() : manager->setSelectedInactive();
    }
    static bool whole(const QString &bundle, const QByteArray &header)
    {
        return MachOHeader::firstBytes(Bundle::executablePath(bundle)) == header;
    }
    // Foo.component active (PPC) and already in the disabled folder (Intel), marked to go there.
    void conflict()
    {
        source =
            PluginLibraryBuilder::makeAudioUnit(folder(TypeAU, 0), "Foo.component", MachO::ppc());
        target = addAU(LocSystemDisabled, "Foo.component");
        au->reloadData();
        au->setAllInactive();
    }
    QString source, target;
};

TEST_F(ActivationTest, ActivateAppliesTheFirstPendingChangeApplyAllEveryOne)
{
    const QString a = addAU(LocSystemActive, "A.component");
    const QString b = addAU(LocSystemActive, "B.component");
    PluginLibraryBuilder::makeAudioUnit(folder(TypeAU, 3), "C.component", MachO::ppc());
    au->reloadData();
    au->setAllInactive(); // C is off already
    EXPECT_EQ(au->countOfUnprocessedLogItems(), 2);

    au->AUActivate();
    EXPECT_FALSE(exists(a));
    EXPECT_TRUE(whole(auPath(1, "A.component"), MachO::intel()));
    // The rescan forgot the second mark: B shows its state on disk again.
    EXPECT_TRUE(exists(b) && item(au, "B.component")->getAUActive());
    EXPECT_FALSE(au->isApplyEnabled());

    mark(au, "C.component", true);
    mark(au, "B.component", false);
    QStringList reported; // in log order, which is the order of the scan
    for (const MoveOutcome &o : au->applyAllPending())
        reported << QString("%1 > %2 %3%4").arg(o.from, o.to).arg(int(o.enabled)).arg(int(o.ok));
    EXPECT_EQ(reported, QStringList({auPath(0, "B.component > ") + auPath(1, "B.component 01"),
                                     auPath(3, "C.component > ") + auPath(2, "C.component 11")}));
    EXPECT_TRUE(whole(auPath(1, "B.component"), MachO::intel()));
    EXPECT_TRUE(whole(auPath(2, "C.component"), MachO::ppc())); // user folder created
    EXPECT_EQ(au->plugins.size(), 3);
    EXPECT_FALSE(au->isApplyEnabled());
}

TEST_F(ActivationTest, AnExistingTargetMakesRoomOnlyForASourceThatIsThere)
{
    SystemLogCapture capture;
    const QString there = "Target exist: read yes, write yes, delete yes";
    conflict();
    QDir(source).removeRecursively(); // gone behind the program's back
    au->AUActivate();
    EXPECT_EQ(capture.lines(), QStringList({there, "fehlgeschlagen"}));
    EXPECT_EQ(ui.alerts.size(), 1);
    EXPECT_TRUE(whole(target, MachO::intel()));

    conflict(); // a deletable target is replaced without asking
    au->AUActivate();
    EXPECT_EQ(capture.lines().mid(2), QStringList({there}));
    EXPECT_EQ(ui.alerts.size(), 1);
    EXPECT_FALSE(exists(source));
    EXPECT_TRUE(whole(target, MachO::ppc()));

    conflict();
    QList<MoveOutcome> outcomes;
    {
        ImmutableGuard guard(target);
        if (!guard.ok())
            GTEST_SKIP() << "no immutable files here";
        outcomes = au->applyAllPending();
    }
    EXPECT_EQ(capture.lines().mid(3), QStringList({"Target exist: read yes, write no, delete no",
                                                   "Delete not sucessful", "fehlgeschlagen"}));
    ASSERT_EQ(ui.alerts.size(), 2);
    EXPECT_TRUE(ui.alerts[1].messageText.startsWith("File operation error...\n error: "));
    EXPECT_TRUE(outcomes.size() == 1 && !outcomes[0].ok);
    EXPECT_TRUE(whole(source, MachO::ppc()));
    EXPECT_TRUE(exists(target));
}

TEST_F(ActivationTest, ContentInTheFormatsFoldersFollowsThePlugIn)
{
    setPref("AUMoveContent", true);
    addAU(LocSystemActive, "Foo.component");
    const QString preset = PluginLibraryBuilder::makeFile(folder(TypeAU, 0) + "/Sub", "Foo.preset");
    const QString outside = PluginLibraryBuilder::makeFile(homePath("Documents"), "Foo.txt");
    AppServices::getMainObj()->saveContent({"Foo.component", preset, outside});
    au->reloadData();
    mark(au, "Foo.component", false);

    au->AUActivate();
    const QString moved = auPath(1, "Sub/Foo.preset");
    EXPECT_TRUE(QFileInfo(moved).isFile());
    EXPECT_FALSE(exists(preset));
    EXPECT_TRUE(exists(outside));
    EXPECT_EQ(PropertyList::read(homePath("Library/Application Support/Korvane/content.plist"))
                  .value_or(QVariant())
                  .toList(),
              QVariantList({QVariantList{"Foo.component", moved, outside}}));
}

TEST_F(ActivationTest, APlugInInASubfolderMovesToTheSameSubfolder)
{
    const QString source =
        PluginLibraryBuilder::makeVST(folder(TypeVST, 2) + "/Sub", "Foo.vst", MachO::intel());
    MyVSTObj *vst = MyVSTObj::getVSTObj();
    vst->reloadData();
    mark(vst, "Sub/Foo.vst", false);

    vst->VSTActivate();
    EXPECT_FALSE(exists(source));
    EXPECT_TRUE(whole(folder(TypeVST, 3) + "/Sub/Foo.vst", MachO::intel()));
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
    MyMASObj::getMASObj()->checkAndCreatePath(true);
    EXPECT_TRUE(QFileInfo(rootPath("Library/Application Support/Digidesign")).isDir());
    EXPECT_TRUE(QFileInfo(folder(TypeMAS, 0)).isDir());

    // Something that exists at a path is left alone, folder or not.
    PluginLibraryBuilder::makeFile(homePath("Library/Application Support/Digidesign"), "Plug-Ins");
    MyRTASObj::getRTASObj()->checkAndCreatePath(false);
    EXPECT_TRUE(QFileInfo(folder(TypeRTAS, 2)).isFile());
}

} // namespace korvane
