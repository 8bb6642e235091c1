#include "FormatManagerFixture.h"

#include "app/AppServices.h"
#include "managers/MyAdminObj.h"
#include "managers/MyMASObj.h"
#include "managers/MyRTASObj.h"
#include "managers/MyVSTObj.h"
#include "panels/MyPrefObj.h"
#include "platform/Bundle.h"
#include "platform/PropertyList.h"
#include "platform/SystemLog.h"

#include <QDir>

namespace korvane {

class ActivationTest : public FormatManagerFixture {
protected:
    void SetUp() override
    {
        FormatManagerFixture::SetUp();
        for (const QString &base : {root(), home()}) {
            QDir().mkpath(base + "/Library/Audio/Plug-Ins");
            QDir().mkpath(base + "/Library/Application Support");
        }
        au = MyAdminObj::getAUObj();
    }
    // The row of the item of that name whose location is the folder of that location code.
    int rowAt(const TypeManager *manager, const QString &name, int loc) const
    {
        for (int i = 0; i < manager->plugins.size(); ++i) {
            const AUItemPtr &it = manager->plugins.at(i);
            if (it->getAUName() == name && it->getAULocation() == folder(manager->typeIndex(), loc))
                return i;
        }
        return -1;
    }
    void mark(TypeManager *manager, const QString &name, int loc, bool active)
    {
        const int row = rowAt(manager, name, loc);
        ASSERT_GE(row, 0);
        manager->selectRows({row});
        active ? manager->setSelectedActive() : manager->setSelectedInactive();
    }
    static bool whole(const QString &bundle, const QByteArray &header)
    {
        return MachOHeader::firstBytes(Bundle::executablePath(bundle)) == header;
    }

    MyAdminObj *au = nullptr;
};

TEST_F(ActivationTest, OneActionAppliesTheFirstPendingChangeOnly)
{
    const QString a = addAU(LocSystemActive, "A.component");
    const QString b = addAU(LocSystemActive, "B.component");
    au->reloadData();
    au->setAllInactive();
    EXPECT_EQ(au->countOfUnprocessedLogItems(), 2);

    au->AUActivate();
    EXPECT_FALSE(exists(a));
    EXPECT_TRUE(whole(folder(TypeAU, 1) + "/A.component", MachO::intel()));
    // The rescan forgot the second mark: B shows its state on disk again.
    EXPECT_TRUE(exists(b) && item(au, "B.component")->getAUActive());
    EXPECT_FALSE(au->isApplyEnabled());
}

TEST_F(ActivationTest, ApplyAllPendingReportsEachChange)
{
    addAU(LocSystemActive, "A.component");
    addAU(LocSystemActive, "B.component");
    PluginLibraryBuilder::makeAudioUnit(folder(TypeAU, 3), "C.component", MachO::ppc());
    au->reloadData();
    mark(au, "C.component", LocUserDisabled, true);
    mark(au, "A.component", LocSystemActive, false);

    const QList<MoveOutcome> outcomes = au->applyAllPending();
    QStringList reported; // in log order, which is the order of the scan
    for (const MoveOutcome &o : outcomes)
        reported << QStringList{o.from, o.to, o.enabled ? "on" : "off", o.ok ? "ok" : "failed"}
                        .join(" > ");
    EXPECT_EQ(reported, QStringList({folder(TypeAU, 0) + "/A.component > " + folder(TypeAU, 1) +
                                         "/A.component > off > ok",
                                     folder(TypeAU, 3) + "/C.component > " + folder(TypeAU, 2) +
                                         "/C.component > on > ok"}));
    EXPECT_TRUE(whole(folder(TypeAU, 1) + "/A.component", MachO::intel()));
    EXPECT_TRUE(whole(folder(TypeAU, 2) + "/C.component", MachO::ppc())); // user folder created
    EXPECT_EQ(au->plugins.size(), 3);
    EXPECT_FALSE(au->isApplyEnabled());
}

TEST_F(ActivationTest, ADeletableTargetIsReplacedWithoutAsking)
{
    PluginLibraryBuilder::makeAudioUnit(folder(TypeAU, 0), "Foo.component", MachO::ppc());
    PluginLibraryBuilder::makeAudioUnit(folder(TypeAU, 1), "Foo.component", MachO::intel());
    au->reloadData();
    mark(au, "Foo.component", LocSystemActive, false);

    SystemLogCapture capture;
    au->AUActivate();
    EXPECT_EQ(capture.lines(), QStringList({"Target exist: read yes, write yes, delete yes"}));
    EXPECT_TRUE(ui.alerts.isEmpty());
    EXPECT_FALSE(exists(folder(TypeAU, 0) + "/Foo.component"));
    EXPECT_TRUE(whole(folder(TypeAU, 1) + "/Foo.component", MachO::ppc()));
}

TEST_F(ActivationTest, AnUndeletableTargetStopsTheMoveAndKeepsTheSource)
{
    const QString source =
        PluginLibraryBuilder::makeAudioUnit(folder(TypeAU, 0), "Foo.component", MachO::ppc());
    const QString target =
        PluginLibraryBuilder::makeAudioUnit(folder(TypeAU, 1), "Foo.component", MachO::intel());
    au->reloadData();
    mark(au, "Foo.component", LocSystemActive, false);

    SystemLogCapture capture;
    QList<MoveOutcome> outcomes;
    {
        ImmutableGuard guard(target);
        if (!guard.ok())
            GTEST_SKIP() << "no immutable files here";
        outcomes = au->applyAllPending();
    }
    EXPECT_EQ(capture.lines(), QStringList({"Target exist: read yes, write no, delete no",
                                            "Delete not sucessful", "fehlgeschlagen"}));
    ASSERT_EQ(ui.alerts.size(), 1);
    EXPECT_TRUE(ui.alerts[0].messageText.startsWith("File operation error...\n error: "));
    ASSERT_EQ(outcomes.size(), 1);
    EXPECT_FALSE(outcomes[0].ok);
    EXPECT_TRUE(whole(source, MachO::ppc()));
    EXPECT_TRUE(exists(target));
}

TEST_F(ActivationTest, AVanishedSourceNeverCostsTheTarget)
{
    const QString source =
        PluginLibraryBuilder::makeAudioUnit(folder(TypeAU, 0), "Foo.component", MachO::ppc());
    const QString target =
        PluginLibraryBuilder::makeAudioUnit(folder(TypeAU, 1), "Foo.component", MachO::intel());
    au->reloadData();
    mark(au, "Foo.component", LocSystemActive, false);
    QDir(source).removeRecursively(); // gone behind the program's back

    SystemLogCapture capture;
    au->AUActivate();
    EXPECT_EQ(capture.lines(),
              QStringList({"Target exist: read yes, write yes, delete yes", "fehlgeschlagen"}));
    EXPECT_EQ(ui.alerts.size(), 1);
    EXPECT_TRUE(whole(target, MachO::intel()));
}

TEST_F(ActivationTest, AMoveIntoAnImmutableFolderLosesNothing)
{
    const QString source = addAU(LocSystemActive, "Foo.component");
    au->reloadData(); // creates the disabled folder
    mark(au, "Foo.component", LocSystemActive, false);

    SystemLogCapture capture;
    {
        ImmutableGuard guard(folder(TypeAU, 1));
        if (!guard.ok())
            GTEST_SKIP() << "no immutable files here";
        au->AUActivate();
    }
    EXPECT_EQ(capture.lines(), QStringList({"fehlgeschlagen"}));
    EXPECT_EQ(ui.alerts.size(), 1);
    EXPECT_TRUE(whole(source, MachO::intel()));
    EXPECT_TRUE(QDir(folder(TypeAU, 1)).isEmpty());
    EXPECT_TRUE(item(au, "Foo.component")->getAUActive());
}

TEST_F(ActivationTest, ContentInTheFormatsFoldersFollowsThePlugIn)
{
    MyPrefObj::getPref()->defaults()->setObject("AUMoveContent", true);
    addAU(LocSystemActive, "Foo.component");
    const QString preset = PluginLibraryBuilder::makeFile(folder(TypeAU, 0) + "/Sub", "Foo.preset");
    const QString outside = PluginLibraryBuilder::makeFile(homePath("Documents"), "Foo.txt");
    AppServices::getMainObj()->saveContent({"Foo.component", preset, outside});
    au->reloadData();
    mark(au, "Foo.component", LocSystemActive, false);

    au->AUActivate();
    const QString moved = folder(TypeAU, 1) + "/Sub/Foo.preset";
    EXPECT_TRUE(QFileInfo(moved).isFile());
    EXPECT_FALSE(exists(preset));
    EXPECT_TRUE(exists(outside));
    const auto registry =
        PropertyList::read(homePath("Library/Application Support/Korvane/content.plist"));
    ASSERT_TRUE(registry.has_value());
    EXPECT_EQ(registry->toList(), QVariantList({QVariantList{"Foo.component", moved, outside}}));
}

TEST_F(ActivationTest, APlugInInASubfolderMovesToTheSameSubfolder)
{
    const QString source =
        PluginLibraryBuilder::makeVST(folder(TypeVST, 2) + "/Sub", "Foo.vst", MachO::intel());
    MyVSTObj *vst = MyVSTObj::getVSTObj();
    vst->reloadData();
    mark(vst, "Sub/Foo.vst", LocUserActive, false);

    vst->VSTActivate();
    EXPECT_FALSE(exists(source));
    EXPECT_TRUE(whole(folder(TypeVST, 3) + "/Sub/Foo.vst", MachO::intel()));
}

TEST_F(ActivationTest, MarkingBackAndForthLeavesNothingPending)
{
    addAU(LocSystemActive, "A.component");
    au->reloadData();
    mark(au, "A.component", LocSystemActive, false);
    EXPECT_TRUE(au->isApplyEnabled());
    mark(au, "A.component", LocSystemDisabled, true);
    EXPECT_FALSE(au->isApplyEnabled());
    EXPECT_TRUE(au->log.at(0).isLogProcessed());

    // Put the flag back behind the log's back: the record stays pending until a command looks.
    mark(au, "A.component", LocSystemActive, false);
    const AUItemPtr a = item(au, "A.component");
    a->setAUActive(true);
    a->checkObject(TypeAU);
    au->setAllActive(); // skips items that are already on
    EXPECT_TRUE(au->isApplyEnabled());
    au->setSelectedActive(); // sets every selected item whatever its state
    EXPECT_FALSE(au->isApplyEnabled());
    EXPECT_EQ(au->countOfUnprocessedLogItems(), 0);
}

TEST_F(ActivationTest, GroupCommandsSwitchTheSelectedRowsGroup)
{
    const QString support = homePath("Library/Application Support/Korvane");
    QDir().mkpath(support);
    PropertyList::writeXml(support + "/groups.plist", QVariantList{"", "Drums"});
    AppServices::getMainObj()->loadGroups();
    PropertyList::writeXml(support + "/augroups.plist",
                           QVariantList{"Kick.component", "Drums", "Snare.component", "Drums"});
    for (const char *name : {"Kick.component", "Piano.component", "Snare.component"})
        addAU(LocSystemActive, name);
    au->reloadData();

    au->setGroupInactive(); // nothing selected
    EXPECT_EQ(au->countOfUnprocessedLogItems(), 0);

    au->selectRows({rowOf(au, "Kick.component")});
    au->setGroupInactive();
    EXPECT_EQ(item(au, "Snare.component")->getAULocation(), folder(TypeAU, 1));
    EXPECT_TRUE(item(au, "Piano.component")->getAUActive());
    EXPECT_EQ(au->countOfUnprocessedLogItems(), 2);
    au->setGroupActive();
    EXPECT_FALSE(au->isApplyEnabled());
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
