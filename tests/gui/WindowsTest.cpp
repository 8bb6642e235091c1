// One check per small window, each bound to its controller as a person uses it.

#include "GuiFixture.h"

#include "app/InfoPanelModel.h"
#include "app/LaunchScript.h"
#include "codec/PropertyList.h"
#include "gui/windows/GroupEditorWindow.h"
#include "gui/windows/InfoPanel.h"
#include "gui/windows/LaunchScriptPanel.h"
#include "gui/windows/LogWindow.h"
#include "gui/windows/PreferencesWindow.h"

#include <QCheckBox>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QStandardPaths>
#include <QTableWidget>
#include <QTest>

namespace korvane {
namespace {

using WindowsTest = GuiTest;

TEST_F(WindowsTest, GroupEditorEditsReachTheGroupsSubmenuAtOnce)
{
    makeContext();
    AppController *main = context->main();
    GroupRegistry &groups = main->groupRegistry();
    GroupEditorWindow window(groups);
    groups.showGroups();
    QTableWidget *table = window.table();
    QStringList menu;
    QObject::connect(&groups, &GroupRegistry::groupMenuChanged,
                     [&] { menu = groups.groupMenuTitles(); });
    const auto click = [&](const char *name) { window.findChild<QPushButton *>(name)->click(); };
    click("pbGroupAdd");
    click("pbGroupAdd");
    table->item(1, 0)->setText("Drums"); // the cell's editor commits
    EXPECT_EQ(menu, QStringList({"New Group", "Drums"}));

    table->clearSelection(); // nothing chosen: nothing goes, position 0 is no group
    click("pbGroupDel");
    EXPECT_EQ(groups.names(), QStringList({"", "New Group", "Drums"}));
    table->selectRow(0);
    click("pbGroupDel");
    EXPECT_EQ(menu, QStringList({"Drums"}));
    EXPECT_EQ(table->rowCount(), 1);
}

TEST_F(WindowsTest, InfoPanelFollowsTheTableWhileOpenAndEditsContentWhereAllowed)
{
    const QString folder = this->folder(TypeAU, LocSystemActive);
    PluginLibraryBuilder::makeBundle(folder, "Alder Chorus.component", MachO::intel(),
                                     {{"CFBundleGetInfoString", "Alder <b>Chorus</b> 2.1"}});
    PluginLibraryBuilder::makeBundle(folder, "Birch Delay.component", MachO::intel());
    const QString presets = PluginLibraryBuilder::makeFolder(homePath("Cedar Presets"));
    makeContext();
    context->prepareWindow();
    FormatManager *au = context->manager(TypeAU);
    au->rescan();
    const int alder = rowOf(*au, "Alder Chorus.component");
    const int birch = rowOf(*au, "Birch Delay.component");
    InfoPanel panel(*context->info());
    QListWidget *list = panel.contentList();

    au->table().selectRows({alder});
    au->maintenance().requestInfo(); // the info command
    ASSERT_TRUE(panel.isVisible());
    EXPECT_EQ(panel.infoField()->text(), "Alder <b>Chorus</b> 2.1");
    EXPECT_EQ(panel.infoField()->textFormat(), Qt::PlainText);
    EXPECT_FALSE(list->isVisible());
    au->table().setCurrentRow(birch);
    EXPECT_EQ(panel.nameField()->text(), "Birch Delay");
    EXPECT_EQ(panel.infoField()->text(), "");

    context->pref()->store()->setValue("AUShowContent", true);
    au->table().selectRows({birch});
    au->maintenance().requestInfo();
    ASSERT_TRUE(list->isVisible());
    ui.openPanelAnswers.enqueue(presets);
    panel.findChild<QPushButton *>("pbAdd")->click();
    ASSERT_EQ(list->count(), 1);
    EXPECT_EQ(list->item(0)->text(), presets);
    list->setCurrentRow(-1);
    panel.findChild<QPushButton *>("pbRemove")->click(); // nothing chosen: nothing goes
    EXPECT_EQ(au->itemAt(birch)->contentCount(), 1);
    list->setCurrentRow(0);
    panel.findChild<QPushButton *>("pbRemove")->click();
    EXPECT_EQ(au->itemAt(birch)->contentCount(), 0);

    panel.close(); // a closed panel follows no more
    au->table().setCurrentRow(alder);
    EXPECT_EQ(panel.nameField()->text(), "Birch Delay");
}

TEST_F(WindowsTest, LaunchScriptFollowsTheChosenFormatsAndIsSavedAsShown)
{
    const QString support =
        PluginLibraryBuilder::makeFolder(homePath("Library/Application Support/Korvane"));
    ASSERT_TRUE(writePlist(support + "/vstsets.plist", QVariantList{"no set", "Live"}));
    makeContext();
    context->prepareWindow();
    context->manager(TypeVST)->sets().selectSetIndex(1);
    LaunchScript *script = context->script();
    script->setLayout(LaunchScript::Layout::Shell);
    const QString tool = QStandardPaths::findExecutable("true"); // a program that is there
    script->setToolPath(tool);
    LaunchScriptPanel panel(*script, context->formats());
    panel.openScriptWindow();

    panel.segment(TypeVST)->click();
    panel.segment(TypeRTAS)->click(); // no RTAS set: the button goes up again
    EXPECT_FALSE(panel.segment(TypeRTAS)->isChecked());
    QTest::keyClicks(panel.hostCommand(), "ardour8 \"My Session\"");
    const QString shown = "#!/bin/sh\n# KorvaneCMD launch script\nset -e\n"
                          "'"
                          + tool + "' --root '" + root() + "' --home '" + home()
                          + "' -VST 'Live'\n"
                            "exec 'ardour8' 'My Session'\n";
    EXPECT_EQ(panel.scriptText()->toPlainText(), shown);

    // What the text holds when saved is what is written, a person's edit included.
    panel.scriptText()->moveCursor(QTextCursor::End);
    QTest::keyClicks(panel.scriptText(), "# mine");
    ui.savePanelAnswers.enqueue(homePath("live.sh"));
    panel.saveButton()->click();
    EXPECT_EQ(readText(homePath("live.sh")), shown + "# mine");
}

TEST_F(WindowsTest, TheLogWindowFollowsTheLogAndItsCloseBoxEnablesShowLogAgain)
{
    makeContext();
    AppController *main = context->main();
    ActivityLog &log = main->log();
    log.append("a\n");
    LogWindow window(log);
    log.show();
    ASSERT_TRUE(window.isVisible());
    log.append("b\n");
    EXPECT_EQ(window.text()->toPlainText(), "a\nb\n");
    window.close(); // the close box
    EXPECT_TRUE(main->isMenuItemEnabled(AppController::MenuItem::ShowLog));
}

TEST_F(WindowsTest, PreferencesOpenWritingNothingAndAnEditWritesOnlyItselfAndActsAtOnce)
{
    // Switched off in the file; the controllers are made afresh, with no window loaded.
    makeContext();
    for (const auto &[key, on] : {std::pair{"AUOn", false}, {"RTASOn", true}, {"MASOn", false}})
        context->pref()->store()->setValue(key, on);
    makeContext();
    const QString file = homePath("Library/Preferences/com.velmora.Korvane.plist");
    const auto stored = [&] { return PropertyList::readDictionary(file).value_or(QVariantMap()); };
    const QString before = readText(file);
    QVariantMap expected = stored();
    PreferencesWindow window(*context->pref(), *context->main());
    window.show();
    EXPECT_FALSE(window.findChild<QCheckBox *>("cbAUOn")->isChecked());
    EXPECT_TRUE(window.findChild<QCheckBox *>("cbRTASOn")->isChecked());
    window.close();
    EXPECT_EQ(readText(file), before);

    window.show();
    QCheckBox *type = window.findChild<QCheckBox *>("cbVSTType");
    type->click();
    EXPECT_EQ(context->manager(TypeVST)->table().columns().count("AUType"), 1);
    expected["VSTType"] = true;
    expected["SUCheckAtStartup"] = false; // every control is stored, and reads as before
    EXPECT_EQ(PropertyList::toXml(stored()), PropertyList::toXml(expected));
    window.close();
    window.show(); // read again from the file: no second column
    type->click();
    EXPECT_EQ(context->manager(TypeVST)->table().columns().count("AUType"), 0);
}

} // namespace
} // namespace korvane
