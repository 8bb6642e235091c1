#include "panels/MyMissingItems.h"
#include "panels/MyAboutObj.h"

#include "support/ScriptedUi.h"
#include "support/TestRoots.h"

namespace korvane {
namespace {

class MyMissingItemsTest : public TestRoots {
protected:
    ScriptedUi ui;
};

TEST_F(MyMissingItemsTest, OneLinePerNameAndAnythingButRemoveCountsAsIgnore)
{
    MyMissingItems missing(ui);
    MyMissingItems *mi = &missing;
    for (const char *name : {"Reverb.component", "Delay.component", "Synth.component"})
        mi->addMissingItem(name);
    EXPECT_EQ(mi->text(), "Reverb.component\nDelay.component\nSynth.component");
    ui.missingItemsAnswers << 2 << 0 << 7;
    for (int expected : {2, 1, 1, 1}) // the last with no answer queued
        EXPECT_EQ(mi->showMissingItems(), expected);
    EXPECT_EQ(ui.missingItemsLists.value(0), mi->text());
    mi->removeMissingItems();
    mi->addMissingItem("Solo.vst");
    EXPECT_EQ(mi->text(), "Solo.vst");
}

using MyAboutObjTest = MyMissingItemsTest;

TEST_F(MyAboutObjTest, ReadsTheShippedResourceOrNothing)
{
    MyAboutObj aboutObj;
    MyAboutObj *about = &aboutObj;
    qputenv("KORVANE_RESOURCES", KORVANE_TEST_DATA "/../../resources");
    about->openAbout();
    EXPECT_TRUE(about->isVisible());
    EXPECT_TRUE(about->richText().startsWith("{\\rtf1"));
    EXPECT_TRUE(about->richText().contains("Korvane"));

    qputenv("KORVANE_RESOURCES", homePath("nowhere").toUtf8());
    about->openAbout();
    qunsetenv("KORVANE_RESOURCES");
    EXPECT_TRUE(about->richText().isEmpty());
}

} // namespace
} // namespace korvane
