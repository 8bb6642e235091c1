#include "panels/MyPrefObj.h"

#include "platform/PropertyList.h"
#include "support/ScriptedUi.h"
#include "support/TestRoots.h"

#include <QDir>

namespace korvane {
namespace {

class MyPrefObjTest : public TestRoots {
protected:
    QString userFile() const { return homePath("Library/Preferences/com.velmora.Korvane.plist"); }
    QString machineFile() const { return rootPath("Library/Preferences/com.velmora.Korvane.plist"); }
    QVariantMap stored() const { return PropertyList::readDictionary(userFile()).value_or(QVariantMap()); }
    static QByteArray bytes(const QString &path)
    {
        QFile file(path);
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
    }
    ScriptedUi ui;
};

TEST_F(MyPrefObjTest, FirstLaunchSeedsTheDefaults)
{
    MyPrefObj *pref = MyPrefObj::getPref();
    for (int type = 0; type < 4; ++type) {
        EXPECT_TRUE(pref->isTypeActive(type)) << type;
        EXPECT_EQ(pref->scanSubpaths(type), type != 0) << type;
        ASSERT_TRUE(pref->getDefaultSet(type)) << type;
        EXPECT_EQ(*pref->getDefaultSet(type), QString("")) << type;
        EXPECT_FALSE(pref->activateDefaultSet(type));
        EXPECT_FALSE(pref->moveContent(type));
        EXPECT_FALSE(pref->showContent(type));
        EXPECT_FALSE(pref->showType(type));
    }
    const QVariantMap map = stored();
    EXPECT_EQ(map.size(), 31);
    EXPECT_FALSE(map.contains("SUCheckAtStartup"));
    EXPECT_FALSE(map.contains("ActiveTabView"));
    EXPECT_FALSE(map.contains("AUScanSubfolders"));
}

TEST_F(MyPrefObjTest, MachineWideFileIsCopiedAndNotSeededOver)
{
    QDir().mkpath(rootPath("Library/Preferences"));
    ASSERT_TRUE(PropertyList::writeXml(machineFile(), QVariantMap{{"VSTOn", true}, {"RTASOn", false}}));
    MyPrefObj *pref = MyPrefObj::getPref();
    EXPECT_EQ(bytes(userFile()), bytes(machineFile()));
    EXPECT_TRUE(pref->isTypeActive(3));
    EXPECT_FALSE(pref->isTypeActive(1));
    EXPECT_FALSE(pref->isTypeActive(0)); // never seeded
    EXPECT_FALSE(pref->scanSubpaths(2));
}

TEST_F(MyPrefObjTest, FailedCopyLeavesEveryTypeOff)
{
    QDir().mkpath(rootPath("Library/Preferences"));
    ASSERT_TRUE(PropertyList::writeXml(machineFile(), QVariantMap{{"AUOn", true}}));
    QDir().mkpath(homePath("Library/Preferences"));
    ImmutableGuard guard(homePath("Library/Preferences"));
    if (!guard.ok())
        GTEST_SKIP() << "chattr +i not supported here";
    MyPrefObj *pref = MyPrefObj::getPref();
    EXPECT_FALSE(QFile::exists(userFile()));
    for (int type = 0; type < 4; ++type) {
        EXPECT_FALSE(pref->isTypeActive(type));
        EXPECT_EQ(pref->getDefaultSet(type), QString());
    }
}

TEST_F(MyPrefObjTest, OutOfRangeTypeAnswersNoAndStoresNothing)
{
    MyPrefObj *pref = MyPrefObj::getPref();
    pref->defaults()->setObject("ScanSubfolders", true);
    pref->defaults()->setObject("AUScanSubfolders", true);
    const QByteArray before = bytes(userFile());
    for (int type : {-1, 4, 100}) {
        pref->setDefaultSet(type, "/tmp/x.aukorv");
        EXPECT_EQ(pref->getDefaultSet(type), std::nullopt);
        EXPECT_FALSE(pref->isTypeActive(type));
        EXPECT_FALSE(pref->activateDefaultSet(type));
        EXPECT_FALSE(pref->showType(type));
        EXPECT_FALSE(pref->showContent(type));
        EXPECT_FALSE(pref->moveContent(type));
        EXPECT_FALSE(pref->scanSubpaths(type));
    }
    EXPECT_FALSE(pref->scanSubpaths(0)); // whatever the store holds
    EXPECT_EQ(bytes(userFile()), before);
}

TEST_F(MyPrefObjTest, ReadsSeeTheFileAsItIsNow)
{
    writeText(userFile(), "<?xml version=\"1.0\"?><plist><dict><key>AUOn</key>");
    MyPrefObj *pref = MyPrefObj::getPref();
    EXPECT_FALSE(pref->isTypeActive(0)); // unreadable: empty
    pref->setDefaultSet(2, "/sets/a.maskorv");
    pref->setDefaultType(3);
    EXPECT_EQ(stored(), (QVariantMap{{"MASDefaultSet", "/sets/a.maskorv"}, {"ActiveTabView", 3}}));
    EXPECT_EQ(pref->getDefaultType(), 3);
    // Another process (the command-line tool) rewrites the file.
    ASSERT_TRUE(PropertyList::writeXml(userFile(), QVariantMap{{"MASOn", true}}));
    EXPECT_TRUE(pref->isTypeActive(2));
    EXPECT_EQ(pref->getDefaultSet(2), QString());
}

TEST_F(MyPrefObjTest, UpdatePrefsWritesEveryControl)
{
    MyPrefObj *pref = MyPrefObj::getPref();
    pref->controls.checkForUpdates = true;
    for (int type = 0; type < 4; ++type) {
        PrefTypeControls &c = pref->controls.types[type];
        c.defaultSet = QString("/sets/%1").arg(type);
        c.showMessage = type == 0;
        c.activateAfterLoading = type == 1;
        c.on = type != 2;
        c.showContent = type == 3;
        c.moveContent = type == 0;
        c.scanSubfolders = type == 1;
        c.type = type == 2;
    }
    EXPECT_TRUE(pref->windowShouldClose());
    const QVariantMap map = stored();
    EXPECT_EQ(map.size(), 32); // every control, and no AUScanSubfolders
    EXPECT_EQ(map.value("SUCheckAtStartup"), QVariant(true));
    for (int type = 0; type < 4; ++type) {
        const QString x = MyPrefObj::keyPrefix(type);
        EXPECT_EQ(map.value(x + "DefaultSet"), QVariant(QString("/sets/%1").arg(type)));
        EXPECT_EQ(map.value(x + "ShowMessage"), QVariant(type == 0));
        EXPECT_EQ(map.value(x + "ActivateAfterLoading"), QVariant(type == 1));
        EXPECT_EQ(map.value(x + "On"), QVariant(type != 2));
        EXPECT_EQ(map.value(x + "ShowContent"), QVariant(type == 3));
        EXPECT_EQ(map.value(x + "MoveContent"), QVariant(type == 0));
        EXPECT_EQ(map.value(x + "Type"), QVariant(type == 2));
        if (type != 0) {
            EXPECT_EQ(map.value(x + "ScanSubfolders"), QVariant(type == 1));
        }
    }
}

TEST_F(MyPrefObjTest, SetDocumentPanelFiltersByTabAndAlwaysStores)
{
    MyPrefObj *pref = MyPrefObj::getPref();
    pref->controls.selectedTab = 2;
    pref->controls.types[1].moveContent = true;
    pref->controls.types[1].defaultSet = "/old.rtaskorv";
    pref->setDefault(); // cancelled
    ASSERT_EQ(ui.openPanels.size(), 1);
    EXPECT_EQ(ui.openPanels[0].allowedTypes, QStringList{"rtaskorv"});
    EXPECT_EQ(ui.openPanels[0].directory, homePath("Documents"));
    EXPECT_EQ(stored().value("RTASMoveContent"), QVariant(true));
    EXPECT_EQ(stored().value("RTASDefaultSet"), QVariant("/old.rtaskorv"));

    ui.openPanelAnswers.enqueue(QString("/sets/new.rtaskorv"));
    pref->setDefault();
    EXPECT_EQ(pref->getDefaultSet(1), QString("/sets/new.rtaskorv"));

    // A tab without a format: no restriction, nothing chosen is kept.
    pref->controls.selectedTab = 0;
    ui.openPanelAnswers.enqueue(QString("/sets/other.vstkorv"));
    pref->setDefault();
    EXPECT_TRUE(ui.openPanels.last().allowedTypes.isEmpty());
    EXPECT_EQ(pref->getDefaultSet(3), QString(""));
    EXPECT_EQ(pref->getDefaultSet(1), QString("/sets/new.rtaskorv"));
}

TEST_F(MyPrefObjTest, AwakeFromNibFillsControlsAndAsksForEachTypeColumn)
{
    MyPrefObj *pref = MyPrefObj::getPref();
    pref->defaults()->setObjects({{"SUCheckAtStartup", true},
                                  {"RTASType", true},
                                  {"VSTType", true},
                                  {"MASDefaultSet", QVariant()},
                                  {"AUDefaultSet", "/a.aukorv"}});
    QList<QPair<int, bool>> asked;
    QObject::connect(pref, &MyPrefObj::showPlattformRequested,
                     [&](int type, bool show) { asked.append({type, show}); });
    pref->awakeFromNib();
    const QList<QPair<int, bool>> expected{{0, false}, {1, true}, {2, false}, {3, true}};
    EXPECT_EQ(asked, expected);
    EXPECT_TRUE(pref->controls.checkForUpdates);
    EXPECT_EQ(pref->controls.types[0].defaultSet, "/a.aukorv");
    EXPECT_FALSE(pref->controls.types[2].defaultSet.isNull()); // missing: empty string
    EXPECT_TRUE(pref->controls.types[1].scanSubfolders);
}

} // namespace
} // namespace korvane
