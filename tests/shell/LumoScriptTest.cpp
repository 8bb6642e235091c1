#include "ShellFixture.h"

#include "managers/MyAdminObj.h"
#include "managers/MyVSTObj.h"
#include "platform/PropertyList.h"
#include "shell/LumoScript.h"

#include <QDir>

namespace korvane {

namespace {

const QString kBundle = QStringLiteral("/Applications/Korvane.app");

QString scriptWithOptions(const QString &options)
{
    return QStringLiteral("-- KorvaneCMD launch script\n"
                          "\n"
                          "tell application \"Finder\"\n"
                          " do shell script \"'%1/Contents/MacOS/KorvaneCMD/KorvaneCMD'%2\"\n"
                          "  tell application \"Logic Pro\"\n"
                          "    activate\n"
                          "  end tell\n"
                          "end tell\n")
        .arg(kBundle, options);
}

} // namespace

class LumoScriptTest : public ShellTest {
protected:
    void SetUp() override
    {
        ShellTest::SetUp();
        qputenv("KORVANE_BUNDLE", kBundle.toUtf8());
        makeContext();
        script = context->script();
    }

    LumoScript *script = nullptr;
};

TEST_F(LumoScriptTest, ChosenSetsBecomeOptionsInFormatOrder)
{
    // The set pop-ups of AU and VST holding and showing "Mix" and "Live".
    const QString support = homePath("Library/Application Support/Korvane/");
    QDir().mkpath(support);
    ASSERT_TRUE(PropertyList::writeXml(support + "ausets.plist", QVariantList{"no set", "Mix"}));
    ASSERT_TRUE(PropertyList::writeXml(support + "vstsets.plist", QVariantList{"no set", "Live"}));
    context->awakeFromNib();
    context->au()->selectSetIndex(1);
    context->vst()->selectSetIndex(1);
    script->setSegmentSelected(TypeVST, true); // clicked before AU: the order stays AU, VST
    script->setSegmentSelected(TypeAU, true);
    script->changeArgument();
    EXPECT_EQ(script->script(), scriptWithOptions(" -AU 'Mix' -VST 'Live'"));
    EXPECT_TRUE(ui.alerts.isEmpty());
    EXPECT_TRUE(script->isSegmentSelected(TypeAU) && script->isSegmentSelected(TypeVST));
}

TEST_F(LumoScriptTest, SegmentsWithoutASetAreToldInOrderAndDeselected)
{
    context->awakeFromNib();
    for (bool opening : {false, true}) { // opening the window deselects silently
        for (int segment = 0; segment < 4; ++segment)
            script->setSegmentSelected(segment, true);
        opening ? script->openScriptWindow() : script->changeArgument();
        for (int segment = 0; segment < 4; ++segment)
            EXPECT_FALSE(script->isSegmentSelected(segment)) << segment;
        EXPECT_EQ(script->script(), scriptWithOptions("")); // the tool path alone
    }
    EXPECT_EQ(ui.alertMessages(), QStringList({"There is no set selected for AudioUnits",
                                               "There is no set selected for RTAS",
                                               "There is no set selected for MAS",
                                               "There is no set selected for VST"}));
    EXPECT_EQ(ui.alerts.last().title, "Scrip Generation");
    EXPECT_EQ(ui.alerts.last().buttons, QStringList{"Ok"});
    EXPECT_TRUE(script->isWindowVisible());
}

TEST_F(LumoScriptTest, SavingWritesTheShownTextAndFailsSilently)
{
    const QString documents = homePath("Documents"), locked = homePath("Locked");
    QDir().mkpath(documents);
    QDir().mkpath(locked);
    script->openScriptWindow();
    script->setScript(script->script() + "-- edited\n");
    ui.savePanelAnswers << documents + "/launch.applescript";
    script->saveScript();
    script->saveScript(); // cancelled
    EXPECT_EQ(ui.savePanels.value(0).directory, documents);
    EXPECT_EQ(ui.savePanels.value(0).fileName, "untitled.applescript");
    EXPECT_EQ(readText(documents + "/launch.applescript"), script->script());
    EXPECT_EQ(QDir(documents).entryList(QDir::Files), QStringList{"launch.applescript"});

    ImmutableGuard guard(locked);
    if (!guard.ok())
        GTEST_SKIP() << "chattr +i is not available here";
    ui.savePanelAnswers << locked + "/launch.applescript";
    script->saveScript();
    EXPECT_FALSE(QFileInfo::exists(locked + "/launch.applescript"));
    EXPECT_TRUE(ui.alerts.isEmpty());
}

} // namespace korvane
