#include "FormatManagerFixture.h"

#include "codec/PropertyList.h"
#include "library/AudioUnitSolo.h"

#include <QLocale>

namespace korvane {

class TableTest : public FormatManagerFixture {
protected:
    UndoStack *undo = nullptr;
    int resets = 0;         // whole-list rebuilds
    QList<int> changedRows; // the rows of the last announcement

    void SetUp() override
    {
        FormatManagerFixture::SetUp();
        addAU(LocSystemActive, "Foo.component");
        addAU(LocUserDisabled, "bar.component");
        addAU(LocUserActive, "Baz.component");
        au->rescan();
        undo = services().undoStack();
        QObject::connect(au, &FormatManager::itemsChanged,
                         [this](const QList<int> &rows) { changedRows = rows; });
        QObject::connect(au, &FormatManager::itemsReset, [this] { ++resets; });
    }
};

// A toggle announces its row only and shows the plug-in's new place at once; undone, the place
// comes back. A sort is stable and keeps the selected plug-in. Neither rebuilds the list.
TEST_F(TableTest, TogglesUndoAndSortsChangeRowsWithoutRebuildingTheList)
{
    const PluginPtr foo = item(au, "Foo.component");
    au->changeItem(au->itemAt(rowOf(au, "Foo.component")), "AUActive", false);
    EXPECT_EQ(changedRows, QList<int>{rowOf(au, "Foo.component")});
    EXPECT_EQ(foo->location(), folder(TypeAU, LocSystemDisabled));
    au->changeItem(foo, "AUActive", true);
    EXPECT_FALSE(au->isApplyEnabled());
    undo->undo();
    undo->undo();
    EXPECT_EQ(foo->location(), folder(TypeAU, LocSystemActive));
    EXPECT_FALSE(au->isApplyEnabled());

    au->selectRows({rowOf(au, "Foo.component")});
    au->sortBy({{"AUName", true, false}});
    EXPECT_EQ(names(au), QStringList({"Baz.component", "Foo.component", "bar.component"}));
    au->sortBy({{"AUActive", false, false}});
    EXPECT_EQ(names(au), QStringList({"Baz.component", "Foo.component", "bar.component"}));
    EXPECT_EQ(au->selectedRows(), QList<int>{1});
    EXPECT_EQ(resets, 0);
}

// Only recognised files unless the person says all; nothing is overwritten; Cancel stops between
// files, what was copied stays, the log names the rest, and a large file shows its bytes.
TEST_F(TableTest, DropInstallsIntoTheUsersFolderWithoutOverwriting)
{
    const QString drops = homePath("drops"), user = folder(TypeAU, LocUserActive);
    const qint64 size = qint64(5) << 20;
    B::makeAudioUnit(drops, "New.component", MachO::intel());
    B::makeAudioUnit(drops, "Last.component", MachO::intel());
    writeText(drops + "/readme.txt", QByteArray(size, 'b'));
    writeText(drops + "/Baz.component", "impostor");
    QDir(user).removeRecursively();
    const QStringList paths{drops + "/New.component", drops + "/readme.txt"};

    ui.alertAnswers << AlertAnswer::Third; // Cancel
    EXPECT_FALSE(au->installDropped(paths));
    EXPECT_TRUE(au->installDropped(paths)); // recognised only, into a user folder that was missing
    EXPECT_TRUE(exists(user + "/New.component/Contents/Info.plist"));
    EXPECT_FALSE(exists(user + "/readme.txt"));
    EXPECT_GE(rowOf(au, "New.component"), 0); // rescanned

    addAU(LocUserActive, "Baz.component");
    ui = {};
    // All Files; Cancel for Baz, which is installed; then Cancel before the third.
    ui.alertAnswers << AlertAnswer::Second << AlertAnswer::Third;
    ui.cancelAt = 3;
    EXPECT_TRUE(au->installDropped(
        {drops + "/readme.txt", drops + "/Baz.component", drops + "/Last.component"}));
    EXPECT_EQ(QFileInfo(user + "/readme.txt").size(), size);
    EXPECT_TRUE(QFileInfo(user + "/Baz.component").isDir());
    EXPECT_FALSE(exists(user + "/Last.component"));
    EXPECT_TRUE(ui.progressValues.contains(0.5)); // half of the first file of three
    EXPECT_TRUE(
        ui.progressDetails.contains(QString("%1 of %1").arg(QLocale().formattedDataSize(size))));
    EXPECT_TRUE(
        logText().endsWith(QString("Stopped, not installed: %1/Last.component\n").arg(drops)));
}

// A drop of a plug-in installed in the system folder once made an active second copy beside it
// without a word. The person hears where it is, with its version, and chooses.
TEST_F(TableTest, ADropOfAnInstalledPlugInSaysWhereAndReplacesOrKeepsBothSwitchedOff)
{
    const QString drops = homePath("drops");
    B::makeAudioUnit(drops, "Foo.component", MachO::intel());
    const QString system = auPath(LocSystemActive, "Foo.component");
    for (const AlertAnswer answer : {AlertAnswer::Third, AlertAnswer::Second}) {
        ui.alertAnswers << AlertAnswer::First << answer; // install recognised, then the choice
        EXPECT_TRUE(au->installDropped({drops + "/Foo.component"}));
    }
    ASSERT_EQ(ui.alerts.size(), 4);
    EXPECT_EQ(ui.alerts.at(1).messageText, "“Foo.component” is already installed");
    EXPECT_TRUE(ui.alerts.at(1).informativeText.startsWith("Installed: " + system
                                                           + " (version 1.0)\nDropped: " + drops
                                                           + "/Foo.component (version 1.0)"))
        << ui.alerts.at(1).informativeText.toStdString();
    EXPECT_EQ(ui.alerts.at(1).buttons, QStringList({"Replace", "Keep Both", "Cancel"}));
    // Cancel copied nothing; Keep Both put the new one beside, switched off.
    EXPECT_TRUE(exists(system));
    EXPECT_FALSE(exists(auPath(LocUserActive, "Foo.component")));
    EXPECT_TRUE(exists(auPath(LocUserDisabled, "Foo.component")));

    // Replace: every installed copy to the trash, the dropped one where a drop installs.
    ui.alertAnswers << AlertAnswer::First << AlertAnswer::First;
    EXPECT_TRUE(au->installDropped({drops + "/Foo.component"}));
    EXPECT_FALSE(exists(system) || exists(auPath(LocUserDisabled, "Foo.component")));
    EXPECT_TRUE(exists(auPath(LocUserActive, "Foo.component")));
    EXPECT_TRUE(exists(homePath(".local/share/Trash/files/Foo.component")));
    EXPECT_EQ(names(au).count("Foo.component"), 1);
}

// Highest row first, so that the rows still to go keep their places; a row marked but not yet
// applied goes from where it lies and leaves nothing to apply. A failed trash still drops the item
// from the list, and the plug-in stays where it is; either is said in the log.
TEST_F(TableTest, DeleteTrashesTheSelectedRowsFromTheHighestDown)
{
    au->changeItem(au->itemAt(rowOf(au, "Baz.component")), "AUActive", false);
    ASSERT_TRUE(au->isApplyEnabled());
    // A drag out hands over the plug-in where it lies, not where the mark will put it.
    EXPECT_EQ(au->plugins().pathOnDisk(*au->itemAt(rowOf(au, "Baz.component"))),
              auPath(LocUserActive, "Baz.component"));
    au->selectRows({0, 1});
    au->moveSelectedToTrash();
    const QString trash = homePath(".local/share/Trash/files/");
    EXPECT_TRUE(exists(trash + "bar.component") && exists(trash + "Baz.component"));
    EXPECT_TRUE(logText().contains(auPath(LocUserActive, "Baz.component")
                                   + " is now in the trash: " + trash + "Baz.component\n"));
    EXPECT_EQ(names(au), QStringList({"Foo.component"}));
    EXPECT_FALSE(au->isApplyEnabled());

    ImmutableGuard guard(folder(TypeAU, LocSystemActive));
    if (!guard.ok())
        GTEST_SKIP() << "chattr +i is not supported here";
    au->selectRows({0});
    au->moveSelectedToTrash();
    EXPECT_EQ(au->rowCount(), 0);
    EXPECT_TRUE(exists(auPath(LocSystemActive, "Foo.component")));
    EXPECT_TRUE(logText().contains(auPath(LocSystemActive, "Foo.component")
                                   + " could not go to the trash: "));
}

// Foo and bar in one group, Baz in another; a later pair of a name counts for nothing. The group
// commands switch the members of the selected row's group.
TEST_F(TableTest, GroupsAreReadSavedUndoneAndSwitchedTogether)
{
    services().groups() = {"Synths", "Drums"};
    const QString file = homePath("Library/Application Support/Korvane/augroups.plist");
    writeText(file, PropertyList::toXml(QVariantList{"Foo.component", "Synths", "bar.component",
                                                     "Synths", "Baz.component", "Drums",
                                                     "Foo.component", "Drums"}));
    au->rescan();
    const auto saved = [&](const char *name) {
        return FormatManager::findGroup(PropertyList::readArray(file).value_or(QVariantList()),
                                        name);
    };
    EXPECT_EQ(item(au, "Foo.component")->group(), "Synths");
    EXPECT_EQ(item(au, "Baz.component")->group(), "Drums");
    EXPECT_EQ(FormatManager::findGroup({42, "X", "C", QVariantList{}, "Odd"}, "C"), "");

    au->selectRows({rowOf(au, "Foo.component")});
    au->setGroupInactive();
    EXPECT_EQ(item(au, "Foo.component")->location(), folder(TypeAU, LocSystemDisabled));
    au->setGroupActive(); // Foo back unmarked, bar marked
    EXPECT_TRUE(item(au, "bar.component")->isActive());
    EXPECT_EQ(au->pendingCount(), 1);

    QDir(homePath("Library/Application Support")).removeRecursively();
    au->selectRows({0, 1});
    au->setGroup("Drums");
    EXPECT_TRUE(saved("bar.component") == "Drums" && saved("Foo.component") == "Synths");
    au->setGroup("none");
    EXPECT_EQ(saved("Baz.component"), "");

    au->changeItem(item(au, "Foo.component"), "AUGroup", "Drums");
    changedRows.clear();
    undo->undo();
    EXPECT_EQ(saved("Foo.component"), "Synths");
    EXPECT_FALSE(changedRows.isEmpty());
    undo->redo();
    EXPECT_EQ(saved("Foo.component"), "Drums");

    writeText(file, "not a property list");
    au->rescan();
    EXPECT_EQ(item(au, "Foo.component")->group(), "");
}

class SoloEnvironmentTest : public FormatManagerFixture {
protected:
    FaultyOperations counting{roots()};

    void SetUp() override
    {
        FormatManagerFixture::SetUp();
        instrument(
            LocSystemActive, "Synth.component",
            {"aumu appl Osmaker: Tone", "aumu Acme Acme: Big Synth", "aufx Acme Acme: Delay"});
        instrument(LocUserActive, "System.component", {"aumu appl Osmaker: Sampler"});
        addAU(LocUserDisabled, "Off.component");
        relaunch(&counting);
        au->rescan();
    }
    // Components given as "type manufacturer name".
    void instrument(int loc, const QString &name, const QStringList &components)
    {
        QVariantList list;
        for (const QString &c : components)
            list << QVariantMap{{"type", c.section(' ', 0, 0)},
                                {"subtype", "test"},
                                {"manufacturer", c.section(' ', 1, 1)},
                                {"name", c.section(' ', 2)}};
        B::makeBundle(folder(TypeAU, loc), name, MachO::intel(), {{"AudioComponents", list}});
    }
};

// Set up, the solo environment moves the other instruments out of the way once; torn down, it
// brings them back once. Moves that fail are silent and remove nothing.
TEST_F(SoloEnvironmentTest, TwoBeginsMoveOnceAndEndRestoresOnce)
{
    AudioUnitSolo solo(*au);
    EXPECT_FALSE(solo.end()); // nothing set up: nothing moves
    EXPECT_TRUE(solo.begin(item(au, "Synth.component")));
    EXPECT_EQ(counting.moves, 2);
    EXPECT_TRUE(exists(auPath(LocSystemDisabled, "Synth.component")));
    EXPECT_FALSE(exists(auPath(LocSystemActive, "Synth.component"))); // the copy is gone again
    EXPECT_TRUE(exists(auPath(LocUserDisabled, "System.component")));
    EXPECT_TRUE(solo.begin(item(au, "System.component")));
    EXPECT_EQ(counting.moves, 2);

    EXPECT_FALSE(solo.end());
    EXPECT_EQ(counting.moves, 4);
    EXPECT_TRUE(exists(auPath(LocSystemActive, "Synth.component/Contents/Info.plist")));
    EXPECT_TRUE(exists(auPath(LocUserActive, "System.component")));
    EXPECT_TRUE(exists(auPath(LocUserDisabled, "Off.component")));

    QDir(folder(TypeAU, LocSystemDisabled)).removeRecursively();
    solo.begin(item(au, "Synth.component"));
    EXPECT_TRUE(exists(auPath(LocSystemActive, "Synth.component")));
    solo.end();
    EXPECT_EQ(counting.moves, 8);
    EXPECT_TRUE(exists(auPath(LocSystemActive, "Synth.component")));
    EXPECT_TRUE(exists(auPath(LocUserActive, "System.component")));
    EXPECT_TRUE(ui.alerts.isEmpty());

    instrument(LocUserActive, "Another.component", {"aumu Zeta Zeta: Pad"});
    QStringList names; // system then user, instruments only
    for (const AudioUnitComponent &component : solo.instruments())
        names << component.manufacturer().value_or("?") + ":" + component.name().value_or("?");
    EXPECT_EQ(names,
              QStringList({"Osmaker:Tone", "Acme:Big Synth", "Zeta:Pad", "Osmaker:Sampler"}));
}

TEST(AudioUnitComponentNames, ParsesManufacturerAndEffect)
{
    AudioUnitComponent component(Component{"/nowhere.component", 0});
    const auto parsed = [&component](const QByteArray &pascalName) {
        component.parseName(pascalName);
        return component.manufacturer().value_or("-") + "|" + component.name().value_or("-");
    };
    const auto counted = [](const QByteArray &text) { return char(text.size()) + text; };
    EXPECT_EQ(parsed(counted("Acme:   Big Synth")), "Acme|Big Synth");
    EXPECT_EQ(parsed(counted("No colon here")), "-|-");
    EXPECT_EQ(parsed(counted("Acme: ")), "Acme|");
    EXPECT_EQ(parsed(char(0xC8) + QByteArray("Acme: X")), "-|-");    // a negative length is no name
    EXPECT_EQ(parsed(char(0x40) + QByteArray("Acme: X")), "Acme|X"); // shorter than announced
    EXPECT_EQ(parsed({}), "-|-");
}

} // namespace korvane
