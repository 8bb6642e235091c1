#include "panels/MyInfoObj.h"

#include "app/AppServices.h"
#include "panels/MyPrefObj.h"
#include "platform/PropertyList.h"
#include "support/ScriptedUi.h"
#include "support/TestRoots.h"

#include <QDir>

namespace korvane {
namespace {

class MyInfoObjTest : public TestRoots {
protected:
    // A bundle in the user's Components folder, with the given Info.plist bytes (none when empty).
    AUItemPtr makeItem(const QString &name, const QByteArray &infoPlist = {})
    {
        const QString folder = homePath("Library/Audio/Plug-Ins/Components");
        QDir().mkpath(folder + "/" + name + "/Contents");
        if (!infoPlist.isEmpty())
            writeText(folder + "/" + name + "/Contents/Info.plist", infoPlist);
        auto item = std::make_shared<AUItem>();
        item->setAULocation(folder);
        item->setAUName(name);
        return item;
    }
    void setShowContent(int type, bool show)
    {
        MyPrefObj::getPref()->defaults()->setObject(MyPrefObj::keyPrefix(type) + "ShowContent", show);
    }
    ScriptedUi ui;
};

TEST_F(MyInfoObjTest, BundleWithoutInfoPlistShowsTheItemName)
{
    MyInfoObj *info = MyInfoObj::getInfo();
    EXPECT_FALSE(info->isVisible());
    info->showInfo(makeItem("Plain.component"));
    EXPECT_EQ(info->name(), "Plain.component");
    EXPECT_EQ(info->version(), "???");
    EXPECT_EQ(info->info(), "");
    EXPECT_TRUE(info->isVisible());
    EXPECT_TRUE(info->windowShouldClose());
    EXPECT_FALSE(info->isVisible());
}

TEST_F(MyInfoObjTest, BinaryInfoPlistIsRead)
{
    const QVariantMap dictionary{{"CFBundleName", "Reverb"},
                                 {"CFBundleVersion", "2.1"},
                                 {"CFBundleGetInfoString", "Reverb 2.1, Velmora"}};
    MyInfoObj *info = MyInfoObj::getInfo();
    info->showInfo(makeItem("Reverb.component", PropertyList::toBinary(dictionary)));
    EXPECT_EQ(info->name(), "Reverb");
    EXPECT_EQ(info->version(), "2.1");
    EXPECT_EQ(info->info(), "Reverb 2.1, Velmora");

    // A malformed Info.plist falls back like a missing one.
    info->showInfo(makeItem("Broken.component", "<plist><dict><key>"));
    EXPECT_EQ(info->name(), "Broken.component");
    EXPECT_EQ(info->version(), "???");
}

TEST_F(MyInfoObjTest, ShowContentIsReadAgainAtEveryShow)
{
    MyInfoObj *info = MyInfoObj::getInfo();
    const AUItemPtr item = makeItem("Synth.component");
    setShowContent(0, true);
    info->showInfo(item);
    EXPECT_TRUE(info->shouldDisplayContent());

    setShowContent(0, false);
    info->showInfo(nullptr);
    EXPECT_FALSE(info->shouldDisplayContent());
    EXPECT_EQ(info->item(), item); // null keeps the item shown

    // The type of the tab in front decides.
    setShowContent(1, true);
    AppServices::getMainObj()->setActiveType(1);
    info->showInfo(nullptr);
    EXPECT_TRUE(info->shouldDisplayContent());
}

TEST_F(MyInfoObjTest, ContentTableFollowsTheItem)
{
    MyInfoObj *info = MyInfoObj::getInfo();
    EXPECT_EQ(info->numberOfRowsInTableView(), 0);
    EXPECT_EQ(info->objectValue(0), QString());
    info->deleteContent(0); // no item: nothing to remove

    const AUItemPtr item = makeItem("Sampler.component");
    info->showInfo(item);
    EXPECT_EQ(info->numberOfRowsInTableView(), 0);

    ui.openPanelAnswers.enqueue(QString("/Library/Sampler Data"));
    info->addContent();
    ASSERT_EQ(ui.openPanels.size(), 1);
    const OpenPanelRequest &request = ui.openPanels[0];
    EXPECT_FALSE(request.canChooseFiles);
    EXPECT_TRUE(request.canChooseDirectories);
    EXPECT_FALSE(request.canCreateDirectories);
    EXPECT_EQ(request.directory, homePath("Documents"));
    EXPECT_EQ(info->numberOfRowsInTableView(), 1);
    EXPECT_EQ(info->objectValue(0), "/Library/Sampler Data");
    EXPECT_EQ(item->contentList(), (QStringList{"Sampler.component", "/Library/Sampler Data"}));

    info->addContent(); // cancelled
    EXPECT_EQ(info->numberOfRowsInTableView(), 1);
    info->deleteContent(-1);
    EXPECT_EQ(info->numberOfRowsInTableView(), 1);
    info->deleteContent(0);
    EXPECT_EQ(info->numberOfRowsInTableView(), 0);
}

} // namespace
} // namespace korvane
