#include "FormatManagerFixture.h"

namespace korvane {
namespace {

using TableStateTest = ThreeAudioUnitsFixture;

// A sort is stable, reorders the list itself and keeps the selected plug-in selected; it is
// announced as a reorder, never as a rebuilt list.
TEST_F(TableStateTest, ASortIsStableAndKeepsTheSelectionWithoutRebuildingTheList)
{
    int reorders = 0;
    QObject::connect(au, &FormatManager::itemsReordered, [&] { ++reorders; });
    au->table().selectRows({rowOf(au, "Foo.component")});
    au->table().sortBy({{"AUName", true, false}});
    EXPECT_EQ(names(au), QStringList({"Baz.component", "Foo.component", "bar.component"}));
    au->table().sortBy({{"AUActive", false, false}});
    EXPECT_EQ(names(au), QStringList({"Baz.component", "Foo.component", "bar.component"}));
    EXPECT_EQ(au->table().selectedRows(), QList<int>{1});
    EXPECT_EQ(reorders, 2);
    EXPECT_EQ(resets, 0);
}

// Names ignoring case sort as people count ("Bass 2" before "Bass 10"), the same again when the
// kept keys are used a second time; by case they sort by code point.
TEST_F(TableStateTest, NamesSortInNaturalOrderIgnoringCase)
{
    for (const char *name : {"Bass 10.component", "bass 2.component", "Bass 1.component"})
        addAU(LocUserActive, name);
    au->rescan();
    for (int pass = 0; pass < 2; ++pass) {
        au->table().sortBy({{"AUName", true, true}});
        EXPECT_EQ(names(au).filter("ass"),
                  QStringList({"Bass 1.component", "bass 2.component", "Bass 10.component"}));
    }
    au->table().sortBy({{"AUName", true, false}});
    EXPECT_EQ(names(au).filter("ass"),
              QStringList({"Bass 1.component", "Bass 10.component", "bass 2.component"}));
}

// The selection is kept by identity: a sort or another plug-in's removal never leaves a stale row,
// and a rescan finds the selected plug-ins again by name and place.
TEST_F(TableStateTest, TheSelectionFollowsItsPlugInsThroughSortsAndRescans)
{
    au->table().selectRows({rowOf(au, "bar.component"), rowOf(au, "Baz.component")},
                           rowOf(au, "bar.component"));
    au->table().sortBy({{"AUName", false, true}});
    EXPECT_EQ(au->table().selectedRow(), rowOf(au, "bar.component"));
    au->rescan();
    QStringList selected;
    for (const PluginPtr &plugin : au->table().selectedItems())
        selected << plugin->name();
    selected.sort();
    EXPECT_EQ(selected, QStringList({"Baz.component", "bar.component"}));
    // The row selected last is the last one found in list order.
    EXPECT_EQ(au->table().selectedRow(), rowOf(au, "bar.component"));
}

} // namespace
} // namespace korvane
