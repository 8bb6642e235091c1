#include "panels/MyAboutObj.h"
#include "panels/MyMissingItems.h"

#include "support/ScriptedUi.h"
#include "support/TestRoots.h"

namespace korvane {
namespace {

class MyMissingItemsTest : public TestRoots {
protected:
    ScriptedUi ui;
};

TEST_F(MyMissingItemsTest, ListHasOneLinePerNameAndNoTrailingBreak)
{
    MyMissingItems *mi = MyMissingItems::getMI();
    for (const char *name : {"Reverb.component", "Delay.component", "Synth.component"})
        mi->addMissingItem(name);
    EXPECT_EQ(mi->text(), "Reverb.component\nDelay.component\nSynth.component");
    EXPECT_EQ(mi->showMissingItems(), 1);
    EXPECT_EQ(ui.missingItemsLists, QStringList{mi->text()});
    mi->removeMissingItems();
    mi->addMissingItem("Solo.vst");
    EXPECT_EQ(mi->text(), "Solo.vst");
}

TEST_F(MyMissingItemsTest, AnythingButRemoveCountsAsIgnore)
{
    MyMissingItems *mi = MyMissingItems::getMI();
    mi->addMissingItem("Gone.dpm");
    ui.missingItemsAnswers << 2 << 1 << 0 << 7;
    EXPECT_EQ(mi->showMissingItems(), 2);
    EXPECT_EQ(mi->showMissingItems(), 1);
    EXPECT_EQ(mi->showMissingItems(), 1);
    EXPECT_EQ(mi->showMissingItems(), 1);
}

using MyAboutObjTest = MyMissingItemsTest;

TEST_F(MyAboutObjTest, ReadsTheShippedResourceOrNothing)
{
    MyAboutObj *about = MyAboutObj::getAbout();
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
