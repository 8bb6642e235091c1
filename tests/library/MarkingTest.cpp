#include "FormatManagerFixture.h"

#include "codec/PropertyList.h"

namespace korvane {
namespace {

using MarkingTest = ThreeAudioUnitsFixture;

// A toggle announces its row only and shows the plug-in's new place at once; toggled back, nothing
// is pending; undone twice, the place comes back. Nothing rebuilds the list.
TEST_F(MarkingTest, AToggleAnnouncesItsRowAndShowsTheNewPlaceUntilUndone)
{
    const PluginPtr foo = item(au, "Foo.component");
    au->marking().changeItem(au->itemAt(rowOf(au, "Foo.component")), "AUActive", false);
    EXPECT_EQ(changedRows, QList<int>{rowOf(au, "Foo.component")});
    EXPECT_EQ(foo->location(), folder(TypeAU, LocSystemDisabled));
    EXPECT_TRUE(au->isApplyEnabled());
    au->marking().changeItem(foo, "AUActive", true);
    EXPECT_FALSE(au->isApplyEnabled());
    undo->undo();
    undo->undo();
    EXPECT_EQ(foo->location(), folder(TypeAU, LocSystemActive));
    EXPECT_FALSE(au->isApplyEnabled());
    EXPECT_EQ(resets, 0);
}

// The group commands switch the members of the selected row's group, and only those not yet in
// the state: Foo and bar in one group, Baz in another; a later pair of a name counts for nothing.
TEST_F(MarkingTest, GroupOnAndOffSwitchTheSelectedRowsGroup)
{
    addGroups({"Synths", "Drums"});
    const QString file = homePath("Library/Application Support/Korvane/augroups.plist");
    writeText(file, PropertyList::toXml(QVariantList{"Foo.component", "Synths", "bar.component",
                                                     "Synths", "Baz.component", "Drums",
                                                     "Foo.component", "Drums"}));
    au->rescan();
    au->table().selectRows({rowOf(au, "Foo.component")});
    au->marking().setGroupInactive();
    EXPECT_EQ(item(au, "Foo.component")->location(), folder(TypeAU, LocSystemDisabled));
    EXPECT_TRUE(item(au, "Baz.component")->isActive());
    au->marking().setGroupActive(); // Foo back unmarked, bar marked
    EXPECT_TRUE(item(au, "bar.component")->isActive());
    EXPECT_EQ(au->pendingCount(), 1);
}

// A bulk mark is one undo step under its name, and marks only what is not yet in the state.
TEST_F(MarkingTest, MarkItemsIsOneUndoStepForTheItemsThatChange)
{
    const QList<PluginPtr> marked =
        au->marking().markItems(au->items(), false, "Switch Off 2 Plug-Ins");
    EXPECT_EQ(marked.size(), 2); // bar is off already
    EXPECT_EQ(au->pendingCount(), 2);
    EXPECT_EQ(undo->undoActionName(), "Switch Off 2 Plug-Ins");
    undo->undo();
    EXPECT_EQ(au->pendingCount(), 0);
    EXPECT_FALSE(au->isApplyEnabled());
    EXPECT_TRUE(au->marking().markItems(au->items(), true, "On").size() == 1);
}

} // namespace
} // namespace korvane
