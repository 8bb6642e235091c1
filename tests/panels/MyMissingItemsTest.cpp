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

class MyAboutObjTest : public TestRoots {
protected:
    void SetUp() override
    {
        TestRoots::SetUp();
        m_oldResources = qgetenv("KORVANE_RESOURCES");
    }
    void TearDown() override
    {
        if (m_oldResources.isNull())
            qunsetenv("KORVANE_RESOURCES");
        else
            qputenv("KORVANE_RESOURCES", m_oldResources);
        TestRoots::TearDown();
    }
    QByteArray m_oldResources;
};

TEST_F(MyAboutObjTest, ReadsTheShippedResource)
{
    qputenv("KORVANE_RESOURCES", KORVANE_TEST_DATA "/../../resources");
    MyAboutObj *about = MyAboutObj::getAbout();
    about->openAbout();
    EXPECT_TRUE(about->isVisible());
    EXPECT_TRUE(about->richText().startsWith("{\\rtf1"));
    EXPECT_TRUE(about->richText().contains("Korvane"));
}

TEST_F(MyAboutObjTest, MissingResourceGivesEmptyText)
{
    qputenv("KORVANE_RESOURCES", homePath("nowhere").toUtf8());
    MyAboutObj *about = MyAboutObj::getAbout();
    about->openAbout();
    EXPECT_TRUE(about->isVisible());
    EXPECT_TRUE(about->richText().isEmpty());
}

} // namespace
} // namespace korvane
