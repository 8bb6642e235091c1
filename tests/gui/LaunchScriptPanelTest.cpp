#include "GuiFixture.h"

#include "gui/windows/LaunchScriptPanel.h"
#include "managers/TypeManager.h"
#include "shell/LumoScript.h"

#include <QDir>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QTest>

namespace korvane {
namespace {

class LaunchScriptPanelTest : public GuiTest {};

TEST_F(LaunchScriptPanelTest, ScriptFollowsTheChosenFormatsAndIsSavedAsShown)
{
    // The set pop-ups of AU and VST showing "Mix" and "Live"; RTAS has none.
    const QString support = homePath("Library/Application Support/Korvane/");
    QDir().mkpath(support);
    ASSERT_TRUE(writePlist(support + "ausets.plist", QVariantList{"no set", "Mix"}));
    ASSERT_TRUE(writePlist(support + "vstsets.plist", QVariantList{"no set", "Live"}));
    makeContext();
    context->awakeFromNib();
    context->manager(TypeAU)->selectSetIndex(1);
    context->manager(TypeVST)->selectSetIndex(1);
    LumoScript *script = context->script();
    script->setLayout(LumoScript::Layout::Shell);
    script->setToolPath("/opt/korvane/KorvaneCMD");
    LaunchScriptPanel panel(*script, context->formats());
    panel.openScriptWindow();
    ASSERT_TRUE(panel.isVisible());
    ASSERT_TRUE(panel.hostCommand()->isVisible());

    panel.segment(TypeVST)->click(); // chosen before AU: the order stays AU, VST
    panel.segment(TypeAU)->click();
    const QString head = "#!/bin/sh\n# KorvaneCMD launch script\nset -e\n";
    EXPECT_EQ(panel.scriptText()->toPlainText(),
              head + "'/opt/korvane/KorvaneCMD' -AU 'Mix' -VST 'Live'\n");

    panel.segment(TypeRTAS)->click(); // no RTAS set: told, and the button goes up again
    EXPECT_EQ(ui.alertMessages(), QStringList{"There is no set selected for RTAS"});
    EXPECT_FALSE(panel.segment(TypeRTAS)->isChecked());
    EXPECT_TRUE(panel.segment(TypeAU)->isChecked() && panel.segment(TypeVST)->isChecked());

    panel.segment(TypeAU)->click();
    QTest::keyClicks(panel.hostCommand(), "ardour8 \"My Session\"");
    const QString shown = head
                          + "'/opt/korvane/KorvaneCMD' -VST 'Live'\n"
                            "exec 'ardour8' 'My Session'\n";
    EXPECT_EQ(panel.scriptText()->toPlainText(), shown);

    // What the text holds when saved is what is written, a person's edit included.
    panel.scriptText()->moveCursor(QTextCursor::End);
    QTest::keyClicks(panel.scriptText(), "# mine");
    QDir().mkpath(homePath("Documents"));
    const QString path = homePath("Documents/live.sh");
    ui.savePanelAnswers.enqueue(path);
    panel.saveButton()->click();
    EXPECT_EQ(readText(path), shown + "# mine");
}

} // namespace
} // namespace korvane
