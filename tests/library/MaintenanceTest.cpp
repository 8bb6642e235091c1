#include "FormatManagerFixture.h"

namespace korvane {
namespace {

using MaintenanceTest = ThreeAudioUnitsFixture;

// Highest row first, so that the rows still to go keep their places; a row marked but not yet
// applied goes from where it lies and leaves nothing to apply. A failed trash still drops the item
// from the list, and the plug-in stays where it is; either is said in the log.
TEST_F(MaintenanceTest, DeleteTrashesTheSelectedRowsFromTheHighestDown)
{
    au->marking().changeItem(au->itemAt(rowOf(au, "Baz.component")), "AUActive", false);
    ASSERT_TRUE(au->isApplyEnabled());
    // A drag out hands over the plug-in where it lies, not where the mark will put it.
    EXPECT_EQ(au->plugins().pathOnDisk(*au->itemAt(rowOf(au, "Baz.component"))),
              auPath(LocUserActive, "Baz.component"));
    au->table().selectRows({0, 1});
    au->maintenance().moveSelectedToTrash();
    const QString trash = homePath(".local/share/Trash/files/");
    EXPECT_TRUE(exists(trash + "bar.component") && exists(trash + "Baz.component"));
    EXPECT_TRUE(logText().contains(auPath(LocUserActive, "Baz.component")
                                   + " is now in the trash: " + trash + "Baz.component\n"));
    EXPECT_EQ(names(au), QStringList({"Foo.component"}));
    EXPECT_FALSE(au->isApplyEnabled());

    ImmutableGuard guard(folder(TypeAU, LocSystemActive));
    if (!guard.ok())
        GTEST_SKIP() << "chattr +i is not supported here";
    au->table().selectRows({0});
    au->maintenance().moveSelectedToTrash();
    EXPECT_EQ(au->rowCount(), 0);
    EXPECT_TRUE(exists(auPath(LocSystemActive, "Foo.component")));
    EXPECT_TRUE(logText().contains(auPath(LocSystemActive, "Foo.component")
                                   + " could not go to the trash: "));
}

// A name held twice is reported once in the log, with its count; names held once are not.
TEST_F(MaintenanceTest, TheDuplicateReportNamesEachNameHeldTwiceOnce)
{
    addAU(LocUserActive, "Foo.component");
    au->rescan();
    au->maintenance().reportDuplicates();
    EXPECT_EQ(logText().section('\n', 1), "Plugin Foo.component is found 2 times\n");
}

// The architecture switch marks only the builds of that architecture.
TEST_F(MaintenanceTest, AnArchitectureSwitchMarksOnlyItsBuilds)
{
    B::makeAudioUnit(folder(TypeAU, LocSystemActive), "Zeta.component", MachO::ppc());
    B::makeAudioUnit(folder(TypeAU, LocSystemActive), "alpha.component", MachO::universal2());
    au->rescan();
    au->maintenance().setArchitectureActive(3, false);
    EXPECT_FALSE(item(au, "alpha.component")->isActive());
    EXPECT_TRUE(item(au, "Zeta.component")->isActive() && au->isApplyEnabled());
}

} // namespace
} // namespace korvane
