#include "GuiFixture.h"

#include "app/Preferences.h"
#include "core/UndoStack.h"
#include "gui/main/FormatTab.h"
#include "gui/main/MainWindow.h"
#include "gui/table/PluginTableView.h"
#include "gui/table/RowMenu.h"
#include "gui/windows/GroupEditorWindow.h"
#include "gui/windows/LogWindow.h"

#include <QAction>
#include <QApplication>
#include <QComboBox>
#include <QLineEdit>
#include <QMenu>
#include <QPushButton>
#include <QSignalSpy>
#include <QTest>

namespace korvane {
namespace {

// The window driven from the keyboard: three Audio Units in front.
class KeyboardTest : public WindowTest {
protected:
    FormatManager *au = nullptr;

    void SetUp() override
    {
        WindowTest::SetUp();
        for (const char *name : {"Alder", "Birch", "Cedar"})
            PluginLibraryBuilder::makeAudioUnit(folder(TypeAU, LocUserActive), name,
                                                MachO::intel());
        au = openWindow(TypeAU);
    }
    bool active(const char *name) const
    {
        return au->itemAt(rowOf(*au, QString(name) + ".component"))->isActive();
    }
};

TEST_F(KeyboardTest, TabLeavesTheTableInOneStepAndSpaceAndEnterActOnTheSelection)
{
    page->searchField()->setFocus();
    QTest::keyClick(QApplication::focusWidget(), Qt::Key_Tab);
    EXPECT_EQ(QApplication::focusWidget(), page->table());
    QTest::keyClick(page->table(), Qt::Key_Tab); // out of the table at once, not to the next cell
    EXPECT_NE(QApplication::focusWidget(), page->table());
    EXPECT_FALSE(page->table()->isAncestorOf(QApplication::focusWidget()));
    QTest::keyClick(QApplication::focusWidget(), Qt::Key_Backtab);
    EXPECT_EQ(QApplication::focusWidget(), page->table());
    // Tabbed into, the current row takes Space even before anything is selected.
    au->table().selectRows({});
    page->table()->setCurrentIndex(page->table()->model()->index(1, 0));
    page->table()->selectionModel()->clearSelection();
    QTest::keyClick(page->table(), Qt::Key_Space);
    EXPECT_FALSE(active("Birch"));
    window->action("miUndo")->trigger();
    EXPECT_TRUE(active("Birch"));

    // Space flips the selected rows as one step, whichever column is current.
    au->table().selectRows({rowOf(*au, "Alder.component"), rowOf(*au, "Cedar.component")},
                           rowOf(*au, "Alder.component"));
    QTest::keyClick(page->table(), Qt::Key_Space);
    EXPECT_FALSE(active("Alder"));
    EXPECT_TRUE(active("Birch"));
    EXPECT_FALSE(active("Cedar"));
    EXPECT_EQ(window->action("miUndo")->text(), "Undo Switch Off 2 Plug-Ins");
    QTest::keyClick(page->table(), Qt::Key_Space);
    EXPECT_TRUE(active("Alder") && active("Cedar"));

    QSignalSpy info(au, &FormatManager::infoRequested);
    QTest::keyClick(page->table(), Qt::Key_Return);
    EXPECT_EQ(info.size(), 1);
}

TEST_F(KeyboardTest, EscapeAndCtrlWCloseEverySecondaryWindow)
{
    const QList<QWidget *> windows{window->findChild<LogWindow *>(),
                                   window->findChild<GroupEditorWindow *>()};
    for (QWidget *secondary : windows) {
        ASSERT_TRUE(secondary);
        for (const QKeySequence &keys :
             {QKeySequence(Qt::Key_Escape), QKeySequence(Qt::CTRL | Qt::Key_W)}) {
            secondary->show();
            QApplication::setActiveWindow(secondary); // the offscreen platform moves no focus
            ASSERT_TRUE(QTest::qWaitForWindowActive(secondary));
            QTest::keySequence(secondary, keys);
            EXPECT_FALSE(secondary->isVisible()) << secondary->metaObject()->className();
        }
    }
    // The log's own close ran: the menu offers to show it again.
    EXPECT_FALSE(context->main()->log().isVisible());
    EXPECT_TRUE(window->isVisible());
}

TEST_F(KeyboardTest, TheRowMenuActsOnTheSelectionAndAsksBeforeTheTrash)
{
    au->table().selectRows({rowOf(*au, "Birch.component")});
    // The menu's Move to Trash goes through the table to the window, as a right click's does.
    PluginTableView *table = window->page(TypeAU)->table();
    const auto trash = [table] { emit table->moveToTrashRequested(); };
    std::unique_ptr<QMenu> menu(RowMenu::make(*au, window.get(), trash));
    const auto item = [&menu](const char *name) { return menu->findChild<QAction *>(name); };
    QStringList texts;
    for (QAction *action : menu->actions())
        if (!action->isSeparator())
            texts << action->text();
    EXPECT_EQ(texts, QStringList({"On", "Off", "Set Group", "Info", "Show in File Manager",
                                  "Move to Trash..."}));
    item("miRowOff")->trigger();
    EXPECT_FALSE(active("Birch"));
    EXPECT_TRUE(active("Alder"));

    ui.alertAnswers.enqueue(AlertAnswer::Default); // Cancel
    item("miRowTrash")->trigger();
    EXPECT_EQ(ui.alertMessages(), QStringList({"Move to trash"}));
    EXPECT_TRUE(QFileInfo::exists(folder(TypeAU, LocUserActive) + "/Birch.component"));

    // With nothing selected every command is off.
    au->table().selectRows({});
    menu.reset(RowMenu::make(*au, window.get(), trash));
    EXPECT_FALSE(item("miRowOn")->isEnabled());
    EXPECT_FALSE(item("miRowTrash")->isEnabled());
}

} // namespace
} // namespace korvane
