#include "AllFormatsFixture.h"

#include "gui/dialogs/UnusedFormatsDialog.h"
#include "gui/main/AllPluginsModel.h"
#include "gui/main/AllPluginsView.h"

#include <QAction>
#include <QCheckBox>
#include <QFileInfo>
#include <QLabel>
#include <QPushButton>
#include <QTreeWidget>

namespace korvane {
namespace {

class UnusedFormatsDialogTest : public AllFormatsTest {
protected:
    std::unique_ptr<UnusedFormatsDialog> openDialog()
    {
        AllPluginsModel &model = window->allPlugins()->model();
        model.refresh();
        return std::make_unique<UnusedFormatsDialog>(model.products(), window.get());
    }
    // The preview's rows: "name | format | from | to".
    static QStringList rows(const UnusedFormatsDialog &dialog)
    {
        QStringList lines;
        const QTreeWidget *list = dialog.previewList();
        for (int row = 0; row < list->topLevelItemCount(); ++row) {
            const QTreeWidgetItem *item = list->topLevelItem(row);
            lines << QStringList{item->text(0), item->text(1), item->text(2), item->text(3)}.join(
                " | ");
        }
        return lines;
    }
    int pendingEverywhere() const
    {
        int pending = 0;
        for (FormatManager *manager : context->managers())
            pending += manager->pendingCount();
        return pending;
    }
    static bool exists(const QString &path) { return QFileInfo::exists(path); }
};

TEST_F(UnusedFormatsDialogTest, ThePreviewNamesEachMoveAndCancelChangesNothing)
{
    openWindow();
    const QString vst = folder(TypeVST, LocUserActive);
    std::unique_ptr<UnusedFormatsDialog> dialog = openDialog();
    QStringList formats;
    for (const QCheckBox *box : dialog->formatBoxes())
        formats << box->text();
    EXPECT_EQ(formats, QStringList({"VST", "LV2", "VST3"}))
        << "Solo Synth's LV2 alone is no reason";
    EXPECT_TRUE(rows(*dialog).isEmpty());
    EXPECT_FALSE(dialog->switchOffButton()->isEnabled());

    dialog->formatBox("VST")->setChecked(false);
    dialog->formatBox("LV2")->setChecked(false);
    EXPECT_EQ(rows(*dialog),
              QStringList(
                  {"Echo Chamber.vst | VST | " + vst + " | " + vst + " (Disabled)",
                   "echo.lv2 | LV2 | " + homePath(".lv2") + " | " + homePath(".lv2 (Disabled)")}));
    EXPECT_EQ(dialog->summary()->text(), "2 plug-ins will be switched off.");
    EXPECT_TRUE(dialog->switchOffButton()->isEnabled());

    // No format kept: the product is left alone rather than switched off everywhere.
    dialog->formatBox("VST3")->setChecked(false);
    EXPECT_TRUE(rows(*dialog).isEmpty());

    dialog->formatBox("VST3")->setChecked(true);
    dialog->reject();
    EXPECT_EQ(pendingEverywhere(), 0);
    EXPECT_EQ(window->action("miUndo")->text(), "Undo") << "no mark was made, none to undo";
    EXPECT_TRUE(exists(vst + "/Echo Chamber.vst"));
    EXPECT_TRUE(exists(homePath(".lv2/echo.lv2")));
}

TEST_F(UnusedFormatsDialogTest, SwitchOffMovesTheUnusedFormatsCopiesThroughEachFormatsApply)
{
    openWindow();
    std::unique_ptr<UnusedFormatsDialog> dialog = openDialog();
    dialog->formatBox("LV2")->setChecked(false);
    dialog->formatBox("VST")->setChecked(false);
    dialog->accept();
    EXPECT_EQ(dialog->applied(), QStringList({"VST", "LV2"}));

    EXPECT_FALSE(exists(homePath(".lv2/echo.lv2")));
    EXPECT_TRUE(exists(homePath(".lv2 (Disabled)/echo.lv2/manifest.ttl")));
    EXPECT_TRUE(exists(folder(TypeVST, LocUserDisabled) + "/Echo Chamber.vst"));
    // The kept format and the products in one format stay where they were.
    EXPECT_TRUE(exists(homePath(".vst3/Echo Chamber.vst3")));
    EXPECT_TRUE(exists(homePath(".lv2/solo.lv2")));
    EXPECT_TRUE(exists(homePath(".lv2/duo.lv2")));
    EXPECT_EQ(pendingEverywhere(), 0);
    // The apply's rescan shows the plug-in off in its tab.
    FormatManager &lv2 = *context->manager(TypeLV2);
    ASSERT_GE(rowOf(lv2, "echo.lv2"), 0);
    EXPECT_FALSE(lv2.itemAt(rowOf(lv2, "echo.lv2"))->isActive());
}

TEST_F(UnusedFormatsDialogTest, ACopyThatCannotMoveIsShownWithItsReasonAndLeftUnmarked)
{
    // A copy in the distribution's folder, and a VST 3 folder nobody may change.
    writeLv2(rootPath("usr/lib/lv2/echo-system.lv2"), {{"urn:korvane:echo2", "Echo Chamber"}},
             "Korvane Tests");
    const ImmutableGuard locked(homePath(".vst3"));
    openWindow();
    std::unique_ptr<UnusedFormatsDialog> dialog = openDialog();
    dialog->formatBox("LV2")->setChecked(false);
    const QStringList preview = rows(*dialog);
    ASSERT_EQ(preview.size(), 2) << preview.join('\n').toStdString();
    const QString system = preview.filter("echo-system.lv2 |").value(0);
    EXPECT_TRUE(system.startsWith("echo-system.lv2 | LV2 | " + rootPath("usr/lib/lv2")
                                  + " | stays: echo-system.lv2 stays in "))
        << system.toStdString();
    EXPECT_TRUE(system.contains("the distribution owns that folder"));
    EXPECT_EQ(dialog->summary()->text(),
              "1 plug-in will be switched off. 1 will stay as they are.");

    if (locked.ok()) {
        dialog->formatBox("LV2")->setChecked(true);
        dialog->formatBox("VST3")->setChecked(false);
        const QStringList refused = rows(*dialog);
        ASSERT_EQ(refused.size(), 1);
        EXPECT_TRUE(refused.first().endsWith("stays: the folder " + homePath(".vst3")
                                             + " cannot be changed (no write access, locked or "
                                               "read-only)"))
            << refused.first().toStdString();
        EXPECT_FALSE(dialog->switchOffButton()->isEnabled());
        dialog->formatBox("VST3")->setChecked(true);
    }

    dialog->formatBox("LV2")->setChecked(false);
    dialog->accept();
    EXPECT_TRUE(exists(rootPath("usr/lib/lv2/echo-system.lv2/manifest.ttl")));
    EXPECT_TRUE(exists(homePath(".lv2 (Disabled)/echo.lv2")));
    EXPECT_EQ(pendingEverywhere(), 0) << "the refused copy was never marked";
}

} // namespace
} // namespace korvane
