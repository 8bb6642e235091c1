#include "FormatManagerFixture.h"

#include "app/AppServices.h"
#include "managers/MyVSTObj.h"
#include "platform/PropertyList.h"

#include <QLocale>

namespace korvane {

class TableTest : public FormatManagerFixture {
protected:
    UndoManager *undo = nullptr;
    int reloads = 0;        // rows announced as changed
    int resets = 0;         // whole-list rebuilds
    QList<int> changedRows; // the rows of the last announcement

    void SetUp() override
    {
        FormatManagerFixture::SetUp();
        addAU(LocSystemActive, "Foo.component");
        addAU(LocUserDisabled, "bar.component");
        addAU(LocUserActive, "Baz.component");
        au->reloadData();
        undo = services().getUndoManager();
        QObject::connect(au, &TypeManager::itemsChanged, [this](const QList<int> &rows) {
            ++reloads;
            changedRows = rows;
        });
        QObject::connect(au, &TypeManager::itemsReset, [this] { ++resets; });
    }
};

TEST_F(TableTest, UndoRestoresTogglesAndActionNamesFollowTheFormat)
{
    const AUItemPtr foo = item(au, "Foo.component");
    au->setObjectValue(false, "AUActive", rowOf(au, "Foo.component"));
    EXPECT_FALSE(foo->getAUActive());
    // One row announced, nothing rebuilt.
    EXPECT_EQ(changedRows, QList<int>{rowOf(au, "Foo.component")});
    EXPECT_EQ(resets, 0);
    EXPECT_EQ(foo->getAULocation(), folder(TypeAU, LocSystemDisabled));
    EXPECT_EQ(undo->undoActionName(), "disable \"Foo.component\"");
    au->changeObject(foo, "AUActive", true);
    EXPECT_EQ(undo->undoActionName(), "enable \"Foo.component\"");
    EXPECT_FALSE(au->isApplyEnabled());

    undo->undo();
    EXPECT_FALSE(foo->getAUActive());
    undo->undo();
    EXPECT_TRUE(foo->getAUActive());
    EXPECT_EQ(foo->getAULocation(), folder(TypeAU, LocSystemActive));
    EXPECT_FALSE(au->isApplyEnabled());

    au->changeObject(item(au, "Baz.component"), "AUGlobal", false);
    EXPECT_EQ(undo->undoActionName(), "setGlobal for \"Baz.component\"");
    EXPECT_EQ(item(au, "Baz.component")->getAULocation(), folder(TypeAU, LocSystemActive));

    PluginLibraryBuilder::makeVST(folder(TypeVST, LocUserDisabled), "Foo.vst", MachO::intel());
    MyVSTObj *vst = &context->vst;
    vst->reloadData();
    vst->changeObject(item(vst, "Foo.vst"), "AUActive", false);
    EXPECT_EQ(undo->undoActionName(), "Foo.vst \"setActive\"");
}

TEST_F(TableTest, GroupEditUndoAndRedoRewriteTheGroupsFile)
{
    services().getGroups() << "Synths";
    const QString groupsFile = homePath("Library/Application Support/Korvane/augroups.plist");
    const auto grouped = [&] {
        return PropertyList::readStringArray(groupsFile).value_or(QStringList()).contains("Synths");
    };
    au->changeObject(item(au, "Foo.component"), "AUGroup", "Synths");
    EXPECT_EQ(undo->undoActionName(), "setGroup Synths for \"Foo.component\"");
    EXPECT_TRUE(grouped());

    reloads = 0;
    undo->undo();
    EXPECT_EQ(item(au, "Foo.component")->getAUGroup(), "");
    EXPECT_FALSE(grouped());
    EXPECT_EQ(reloads, 1);
    undo->redo();
    EXPECT_EQ(item(au, "Foo.component")->getAUGroup(), "Synths");
    EXPECT_TRUE(grouped());
    EXPECT_EQ(reloads, 2);
}

TEST_F(TableTest, SortingIsStableKeepsTheSelectionAndRowsDragOutAsPaths)
{
    const int fooID = item(au, "Foo.component")->getItemID();
    int reorders = 0;
    QObject::connect(au, &TypeManager::itemsReordered, [&] { ++reorders; });
    au->selectRows({rowOf(au, "Foo.component")});
    au->sortDescriptorsDidChange({{"AUName", true, false}});
    EXPECT_EQ(names(au), QStringList({"Baz.component", "Foo.component", "bar.component"}));
    au->sortDescriptorsDidChange({{"AUName", true, true}});
    EXPECT_EQ(names(au), QStringList({"bar.component", "Baz.component", "Foo.component"}));
    au->sortDescriptorsDidChange({{"AUActive", false, false}});
    EXPECT_EQ(names(au), QStringList({"Baz.component", "Foo.component", "bar.component"}));
    EXPECT_EQ(item(au, "Foo.component")->getItemID(), fooID);
    EXPECT_EQ(reorders, 3);
    EXPECT_EQ(resets, 0);
    // The selection is the plug-in, wherever the sort put it; a rescan finds it again.
    EXPECT_EQ(au->selectedRows(), QList<int>{1});
    au->sortDescriptorsDidChange({{"AUName", false, true}});
    EXPECT_EQ(au->selectedItems(), QList<AUItemPtr>{item(au, "Foo.component")});
    au->reloadData();
    EXPECT_EQ(resets, 1);
    EXPECT_EQ(au->selectedItems(), QList<AUItemPtr>{item(au, "Foo.component")});

    EXPECT_EQ(au->writeRows({2, 42}), QStringList({auPath(3, "bar.component")}));
    const DropValidation onRow = au->validateDrop(1, true, false);
    EXPECT_TRUE(onRow.row == 2 && !onRow.onRow && onRow.operation == 4);
    EXPECT_EQ(au->validateDrop(1, false, true).operation, 0);
}

TEST_F(TableTest, DropInstallsIntoTheUsersFolderWithoutOverwriting)
{
    const QString drops = homePath("drops"), user = folder(TypeAU, LocUserActive);
    PluginLibraryBuilder::makeAudioUnit(drops, "New.component", MachO::intel());
    writeText(drops + "/readme.txt", "text");
    writeText(drops + "/Baz.component", "impostor");
    QDir(user).removeRecursively();
    const QStringList paths{drops + "/New.component", drops + "/readme.txt"};

    ui.alertAnswers << 1002;
    EXPECT_FALSE(au->acceptDrop(paths));
    EXPECT_EQ(ui.alerts[0].messageText, "Install Files");
    EXPECT_EQ(ui.alerts[0].informativeText, "Install AudioUnits only?");
    EXPECT_EQ(ui.alerts[0].buttons, QStringList({"AudioUnits only", "All Files", "Cancel"}));

    addAU(LocSystemActive, "Late.component");
    EXPECT_TRUE(au->acceptDrop(paths)); // recognised only, into a user folder that was missing
    EXPECT_TRUE(exists(user + "/New.component/Contents/Info.plist"));
    EXPECT_FALSE(exists(user + "/readme.txt"));
    EXPECT_TRUE(ui.progressTitles.contains("install AudioUnits:"));
    EXPECT_GE(rowOf(au, "Late.component"), 0); // rescanned

    addAU(LocUserActive, "Baz.component");
    ui.alertAnswers << 1001;
    const qsizetype before = ui.progressValues.size();
    EXPECT_TRUE(au->acceptDrop({drops + "/readme.txt", drops + "/Baz.component"}));
    EXPECT_TRUE(exists(user + "/readme.txt"));
    EXPECT_TRUE(QFileInfo(user + "/Baz.component").isDir());
    EXPECT_EQ(ui.progressValues.mid(before, 2), QList<double>({1, 2}));
}

// Cancel stops an install between files; what was copied stays, the log names the rest, and a
// large file shows its bytes on the way.
TEST_F(TableTest, ACancelledInstallKeepsWhatArrivedAndSaysWhatDidNot)
{
    class CancelAfterFirst : public ScriptedUi {
    public:
        bool progressCancelled() override { return !progressTexts.isEmpty(); }
    } person;
    ManagersOfOneRun run(locations(), disk(), person);
    const QString drops = homePath("drops"), user = folder(TypeAU, LocUserActive);
    const qint64 size = qint64(5) << 20;
    PluginLibraryBuilder::makeFile(drops, "Big.component", {}, QByteArray(size, 'b'));
    PluginLibraryBuilder::makeAudioUnit(drops, "Next.component", MachO::intel());
    PluginLibraryBuilder::makeAudioUnit(drops, "Last.component", MachO::intel());

    person.alertAnswers << 1001; // All Files
    EXPECT_TRUE(run.au.acceptDrop(
        {drops + "/Big.component", drops + "/Next.component", drops + "/Last.component"}));
    EXPECT_EQ(QFileInfo(user + "/Big.component").size(), size);
    EXPECT_FALSE(exists(user + "/Next.component") || exists(user + "/Last.component"));
    EXPECT_EQ(person.progressTexts.first(), drops + "/Big.component");
    EXPECT_TRUE(person.progressValues.contains(0.5)); // half of the first file of three
    const QLocale locale;
    EXPECT_TRUE(
        person.progressDetails.contains(QString("%1 of %1").arg(locale.formattedDataSize(size))));
    EXPECT_TRUE(
        run.services.logText().endsWith(QString("Stopped, not installed: %1/Next.component, "
                                                "%1/Last.component\n")
                                            .arg(drops)));
}

} // namespace korvane
