#include "GuiFixture.h"

#include "gui/windows/GroupEditorWindow.h"

#include <QPushButton>
#include <QTableWidget>

namespace korvane {
namespace {

class GroupEditorWindowTest : public GuiTest {
protected:
    void click(GroupEditorWindow &window, const char *button)
    {
        window.findChild<QPushButton *>(button)->click();
    }
};

TEST_F(GroupEditorWindowTest, EveryEditReachesTheGroupsSubmenuAtOnce)
{
    makeContext();
    MyMainObj *main = context->main();
    GroupEditorWindow window(*main);
    main->showGroups();
    ASSERT_TRUE(window.isVisible());
    QTableWidget *table = window.table();
    EXPECT_EQ(table->rowCount(), 0);

    QStringList menu;
    QObject::connect(main, &AppServices::groupMenuChanged, [&] { menu = main->groupMenuTitles(); });
    click(window, "pbGroupAdd");
    click(window, "pbGroupAdd");
    EXPECT_EQ(menu, QStringList({"New Group", "New Group"}));
    table->item(1, 0)->setText("Drums"); // the cell's editor commits
    EXPECT_EQ(menu, QStringList({"New Group", "Drums"}));
    EXPECT_EQ(main->getGroups(), QStringList({"", "New Group", "Drums"}));

    // Delete without a selection leaves the registry alone: position 0 is no group.
    table->clearSelection();
    click(window, "pbGroupDel");
    EXPECT_EQ(main->getGroups(), QStringList({"", "New Group", "Drums"}));

    table->selectRow(0);
    click(window, "pbGroupDel");
    EXPECT_EQ(menu, QStringList({"Drums"}));
    ASSERT_EQ(table->rowCount(), 1);
    EXPECT_EQ(table->item(0, 0)->text(), "Drums");
}

} // namespace
} // namespace korvane
