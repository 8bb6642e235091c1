#include "FormatManagerFixture.h"

#include "codec/PropertyList.h"

namespace korvane {
namespace {

// Foo and bar in one group, Baz in another; a later pair of a name counts for nothing.
class GroupAssignmentTest : public ThreeAudioUnitsFixture {
protected:
    const QString file = homePath("Library/Application Support/Korvane/augroups.plist");

    void SetUp() override
    {
        ThreeAudioUnitsFixture::SetUp();
        addGroups({"Synths", "Drums"});
        writeText(file, PropertyList::toXml(QVariantList{"Foo.component", "Synths", "bar.component",
                                                         "Synths", "Baz.component", "Drums",
                                                         "Foo.component", "Drums"}));
        au->rescan();
    }
    // The group the file on disk gives a name.
    QString saved(const char *name) const
    {
        return GroupAssignment::findGroup(PropertyList::readArray(file).value_or(QVariantList()),
                                          name);
    }
};

TEST_F(GroupAssignmentTest, AScanReadsEachNamesFirstGroupAndPassesOverOddEntries)
{
    EXPECT_EQ(au->groupName(*item(au, "Foo.component")), "Synths");
    EXPECT_EQ(au->groupName(*item(au, "Baz.component")), "Drums");
    EXPECT_EQ(GroupAssignment::findGroup({42, "X", "C", QVariantList{}, "Odd"}, "C"), "");
}

// The menu's group goes to the selected rows and is saved at once, into a support folder made
// anew where it is gone; "none" takes the group away.
TEST_F(GroupAssignmentTest, SetGroupSavesTheSelectionsGroup)
{
    QDir(homePath("Library/Application Support")).removeRecursively();
    au->table().selectRows({0, 1});
    au->groups().setGroup("Drums");
    EXPECT_TRUE(saved("bar.component") == "Drums" && saved("Baz.component") == "Drums");
    EXPECT_EQ(saved("Foo.component"), "Synths");
    au->groups().setGroup("none");
    EXPECT_EQ(saved("Baz.component"), "");
}

// A group edited in the table is undone and redone in the file too, and the undone row is
// announced.
TEST_F(GroupAssignmentTest, ATableEditIsUndoneAndRedoneInTheFile)
{
    au->marking().changeItem(item(au, "Foo.component"), "AUGroup", "Drums");
    EXPECT_EQ(saved("Foo.component"), "Drums");
    changedRows.clear();
    undo->undo();
    EXPECT_EQ(saved("Foo.component"), "Synths");
    EXPECT_FALSE(changedRows.isEmpty());
    undo->redo();
    EXPECT_EQ(saved("Foo.component"), "Drums");
}

// The undo title takes the group and the name in one pass: a "%1" typed into a group stays as
// typed instead of being filled in again.
TEST_F(GroupAssignmentTest, TheUndoTitleShowsAGroupAsTypedWhateverItsPercentSigns)
{
    GroupRegistry &groups = services().groupRegistry();
    groups.setGroupAt(groups.groupCount(), "50%1 %2");
    au->marking().changeItem(item(au, "Foo.component"), "AUGroup", "50%1 %2");
    EXPECT_EQ(undo->undoActionName(), "setGroup 50%1 %2 for \"Foo.component\"");
}

// A plug-in keeps its group's position: a rename in the group editor shows on every member at once
// and is what the format's groups file says next.
TEST_F(GroupAssignmentTest, ARenamedGroupShowsOnItsMembersAndInTheFile)
{
    services().groupRegistry().setGroupAt(0, "Leads");
    EXPECT_EQ(au->groupName(*item(au, "Foo.component")), "Leads");
    EXPECT_EQ(au->groupName(*item(au, "bar.component")), "Leads");
    EXPECT_EQ(au->groupName(*item(au, "Baz.component")), "Drums");
    au->groups().save();
    EXPECT_EQ(saved("bar.component"), "Leads");
}

TEST_F(GroupAssignmentTest, ADamagedGroupsFileGivesNoGroups)
{
    writeText(file, "not a property list");
    au->rescan();
    EXPECT_EQ(au->groupName(*item(au, "Foo.component")), "");
}

// A format never scanned holds no plug-ins: saving would wipe its groups, so nothing is written.
TEST_F(GroupAssignmentTest, AFormatNeverScannedKeepsItsGroupsFile)
{
    relaunch();
    au->groups().save();
    EXPECT_EQ(saved("Foo.component"), "Synths");
}

} // namespace
} // namespace korvane
