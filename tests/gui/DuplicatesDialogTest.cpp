#include "gui/dialogs/DuplicatesDialog.h"

#include "GuiFixture.h"

#include "core/Locations.h"

#include <QPushButton>
#include <QTreeWidget>

namespace korvane {
namespace {

class DuplicatesDialogTest : public GuiTest {
protected:
    FormatManager *au = nullptr;

    void SetUp() override
    {
        GuiTest::SetUp();
        for (const int loc : {int(LocSystemActive), int(LocUserDisabled)})
            PluginLibraryBuilder::makeAudioUnit(folder(TypeAU, loc), "Echo.component",
                                                MachO::intel());
        PluginLibraryBuilder::makeAudioUnit(folder(TypeAU, LocSystemActive), "Solo.component",
                                            MachO::intel());
        makeContext();
        au = context->manager(TypeAU);
        au->rescan();
    }
    QList<DuplicateReport::Name> report() const
    {
        return DuplicateReport::find(au->plugins(), locations().allFolderPaths(au->traits()));
    }
    static void selectInTable(DuplicatesDialog &dialog)
    {
        dialog.findChild<QPushButton *>("selectInTable")->click();
    }
    QStringList selectedFolders() const
    {
        QStringList folders;
        for (const PluginPtr &item : au->table().selectedItems())
            folders << au->plugins().folderOnDisk(*item);
        folders.sort();
        return folders;
    }
};

// Nothing chosen in the report: every copy is selected in the table, and nothing else.
TEST_F(DuplicatesDialogTest, SelectInTableSelectsEveryCopy)
{
    DuplicatesDialog dialog(*au, report());
    selectInTable(dialog);
    QStringList expected{folder(TypeAU, LocSystemActive), folder(TypeAU, LocUserDisabled)};
    expected.sort();
    EXPECT_EQ(selectedFolders(), expected);
}

// One copy chosen in the report selects that copy alone; its name's row stands for all.
TEST_F(DuplicatesDialogTest, SelectInTableSelectsTheCopiesChosenInTheReport)
{
    DuplicatesDialog dialog(*au, report());
    auto *list = dialog.findChild<QTreeWidget *>();
    QTreeWidgetItem *name = list->topLevelItem(0);
    ASSERT_EQ(name->childCount(), 2);
    EXPECT_EQ(name->text(0), "Echo.component");
    QTreeWidgetItem *copy = name->child(0);
    const QString copyFolder = copy->text(3);
    EXPECT_EQ(copy->text(2), "1.0");
    EXPECT_EQ(copy->text(1), copyFolder == folder(TypeAU, LocSystemActive) ? "On" : "Off");
    copy->setSelected(true);
    selectInTable(dialog);
    EXPECT_EQ(selectedFolders(), QStringList{copyFolder});

    list->clearSelection();
    name->setSelected(true);
    selectInTable(dialog);
    EXPECT_EQ(selectedFolders().size(), 2);
}

// A rescan while the report is open makes new items: the report's are no longer in the table,
// and selecting them selects nothing rather than rows that are something else now.
TEST_F(DuplicatesDialogTest, CopiesGoneSinceTheReportAreNotSelected)
{
    DuplicatesDialog dialog(*au, report());
    au->rescan();
    selectInTable(dialog);
    EXPECT_TRUE(au->table().selectedItems().isEmpty());
}

// With nothing twice the report says so and offers nothing to select.
TEST_F(DuplicatesDialogTest, WithoutDuplicatesThereIsNothingToSelect)
{
    DuplicatesDialog dialog(*au, {});
    EXPECT_FALSE(dialog.findChild<QPushButton *>("selectInTable")->isEnabled());
}

} // namespace
} // namespace korvane
