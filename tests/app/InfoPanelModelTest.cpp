#include "PreferencesFixture.h"

#include "app/InfoPanelModel.h"

#include <QDir>

namespace korvane {
namespace {

using InfoPanelModelTest = PreferencesFixture;

TEST_F(InfoPanelModelTest, InfoPanelFallsBackToTheNameAndReadsTheContentPreferenceOfTheTabInFront)
{
    launch();
    InfoPanelModel info(*services, *pref);
    info.removeContentAt(0); // no item yet: nothing to remove
    // Bundles without an Info.plist, or with a damaged one.
    const QString folder = homePath("Library/Audio/Plug-Ins/Components");
    QDir().mkpath(folder + "/Plain.component/Contents");
    writeText(folder + "/Broken.component/Contents/Info.plist", "<plist><dict><key>");
    for (const QString name : {"Plain.component", "Broken.component"}) {
        auto item = std::make_shared<Plugin>();
        item->setLocation(folder);
        item->setName(name);
        info.showInfo(item);
        EXPECT_EQ(QStringList({info.name(), info.version(), info.info()}),
                  QStringList({name, "???", ""}));
    }
    const PluginPtr shown = info.item();

    // Whether the content list shows is read again at every show, for the tab in front.
    EXPECT_FALSE(info.showsContent());
    pref->store()->setValue("RTASShowContent", true);
    services->setActiveType(1);
    info.showInfo(nullptr);
    EXPECT_TRUE(info.showsContent());
    EXPECT_EQ(info.item(), shown); // null keeps the item shown
    EXPECT_TRUE(info.closeWindow());
    EXPECT_FALSE(info.isVisible());
}

// The plug-in holds its list; the panel's edits reach content.plist through the registry, so the
// next scan and the next run find them.
TEST_F(InfoPanelModelTest, AddedAndRemovedCompanionsAreStoredInTheRegistry)
{
    launch();
    InfoPanelModel info(*services, *pref);
    auto item = std::make_shared<Plugin>();
    item->setName("Echo.component");
    info.showInfo(item);
    ui.openPanelAnswers << homePath("Presets/Echo");
    info.addContent();
    EXPECT_EQ(services->contentRegistry().contentFor("Echo.component"),
              QStringList({"Echo.component", homePath("Presets/Echo")}));
    info.removeContentAt(0);
    EXPECT_EQ(services->contentRegistry().contentFor("Echo.component"),
              QStringList{"Echo.component"});
    launch(); // read again from the file
    EXPECT_EQ(services->contentRegistry().contentFor("Echo.component"),
              QStringList{"Echo.component"});
}

} // namespace
} // namespace korvane
