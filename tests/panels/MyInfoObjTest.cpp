#include "panels/MyInfoObj.h"

#include "PanelsFixture.h"
#include "app/AppServices.h"
#include "panels/MyPrefObj.h"
#include "platform/PropertyList.h"

#include <QDir>

namespace korvane {
namespace {

class MyInfoObjTest : public PanelsFixture {
protected:
    // A bundle in the user's Components folder, with the given Info.plist bytes (none when empty).
    AUItemPtr makeItem(const QString &name, const QByteArray &infoPlist = {})
    {
        const QString bundle = homePath("Library/Audio/Plug-Ins/Components/") + name;
        QDir().mkpath(bundle + "/Contents");
        if (!infoPlist.isEmpty())
            writeText(bundle + "/Contents/Info.plist", infoPlist);
        auto item = std::make_shared<AUItem>(&services());
        item->setAULocation(homePath("Library/Audio/Plug-Ins/Components"));
        item->setAUName(name);
        return item;
    }
    QStringList shown() { return {info()->name(), info()->version(), info()->info()}; }
    MyInfoObj *info()
    {
        if (!m_info)
            m_info = std::make_unique<MyInfoObj>(services(), *pref());
        return m_info.get();
    }
    std::unique_ptr<MyInfoObj> m_info;
};

TEST_F(MyInfoObjTest, InfoPlistFieldsOrTheItemNameAndQuestionMarks)
{
    const QByteArray binary =
        PropertyList::toBinary(QVariantMap{{"CFBundleName", "Reverb"},
                                           {"CFBundleVersion", "2.1"},
                                           {"CFBundleGetInfoString", "Reverb 2.1, Velmora"}});
    EXPECT_FALSE(info()->isVisible());
    info()->showInfo(makeItem("Plain.component"));
    EXPECT_EQ(shown(), QStringList({"Plain.component", "???", ""}));
    info()->showInfo(makeItem("Reverb.component", binary));
    EXPECT_EQ(shown(), QStringList({"Reverb", "2.1", "Reverb 2.1, Velmora"}));
    info()->showInfo(makeItem("Broken.component", "<plist><dict><key>"));
    EXPECT_EQ(shown(), QStringList({"Broken.component", "???", ""}));
    EXPECT_TRUE(info()->isVisible());
    EXPECT_TRUE(info()->windowShouldClose());
    EXPECT_FALSE(info()->isVisible());
}

TEST_F(MyInfoObjTest, ShowContentIsReadAgainAtEveryShow)
{
    const AUItemPtr item = makeItem("Synth.component");
    pref()->defaults()->setObject("AUShowContent", true);
    info()->showInfo(item);
    EXPECT_TRUE(info()->shouldDisplayContent());

    pref()->defaults()->setObject("AUShowContent", false);
    info()->showInfo(nullptr);
    EXPECT_FALSE(info()->shouldDisplayContent());
    EXPECT_EQ(info()->item(), item); // null keeps the item shown

    // The type of the tab in front decides.
    pref()->defaults()->setObject("RTASShowContent", true);
    services().setActiveType(1);
    info()->showInfo(nullptr);
    EXPECT_TRUE(info()->shouldDisplayContent());
}

TEST_F(MyInfoObjTest, ContentTableFollowsTheItem)
{
    EXPECT_EQ(info()->numberOfRowsInTableView(), 0);
    EXPECT_EQ(info()->objectValue(0), QString());
    info()->deleteContent(0); // no item: nothing to remove

    const AUItemPtr item = makeItem("Sampler.component");
    info()->showInfo(item);
    ui.openPanelAnswers.enqueue(QString("/Library/Sampler Data"));
    info()->addContent();
    info()->addContent(); // cancelled
    ASSERT_EQ(ui.openPanels.size(), 2);
    const OpenPanelRequest &panel = ui.openPanels[0];
    EXPECT_TRUE(panel.canChooseDirectories && !panel.canChooseFiles && !panel.canCreateDirectories);
    EXPECT_EQ(panel.directory, homePath("Documents"));
    EXPECT_EQ(info()->objectValue(0), "/Library/Sampler Data");
    EXPECT_EQ(item->contentList(), (QStringList{"Sampler.component", "/Library/Sampler Data"}));

    info()->deleteContent(-1);
    EXPECT_EQ(info()->numberOfRowsInTableView(), 1);
    info()->deleteContent(0);
    EXPECT_EQ(info()->numberOfRowsInTableView(), 0);
}

} // namespace
} // namespace korvane
