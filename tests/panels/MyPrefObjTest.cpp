#include "panels/MyPrefObj.h"

#include "PanelsFixture.h"
#include "platform/Locations.h"
#include "platform/PropertyList.h"
#include "platform/SystemLog.h"

#include <QDir>
#include <fcntl.h>
#include <sys/stat.h>

namespace korvane {
namespace {

const QString kPlist = QStringLiteral("Library/Preferences/com.velmora.Korvane.plist");

class MyPrefObjTest : public PanelsFixture {
protected:
    QVariantMap stored() const
    {
        return PropertyList::readDictionary(homePath(kPlist)).value_or(QVariantMap());
    }
};

TEST_F(MyPrefObjTest, FirstLaunchSeedsTheDefaults)
{
    MyPrefObj *pref = this->pref();
    QVariantMap seed;
    for (int type = 0; type < 4; ++type) {
        const QString x = prefix(type);
        for (const char *flag :
             {"ShowMessage", "ActivateAfterLoading", "MoveContent", "ShowContent", "Type"})
            seed[x + flag] = false;
        seed[x + "On"] = true;
        seed[x + "DefaultSet"] = "";
        if (type != 0)
            seed[x + "ScanSubfolders"] = true;
        EXPECT_TRUE(pref->isTypeActive(type)) << type;
        EXPECT_EQ(pref->scanSubpaths(type), type != 0) << type;
        EXPECT_EQ(pref->getDefaultSet(type), QString("")) << type;
    }
    EXPECT_EQ(stored(), seed); // all off but On, and no AUScanSubfolders
}

TEST_F(MyPrefObjTest, MachineWideFileIsCopiedAndNotSeededOverAndAFailedCopyLeavesAllOff)
{
    QDir().mkpath(rootPath("Library/Preferences"));
    const QVariantMap machineWide{{"VSTOn", true}, {"RTASOn", false}};
    ASSERT_TRUE(writePlist(rootPath(kPlist), machineWide));
    MyPrefObj *pref = this->pref();
    EXPECT_EQ(readText(homePath(kPlist)), readText(rootPath(kPlist)));
    EXPECT_TRUE(pref->isTypeActive(3));
    EXPECT_FALSE(pref->isTypeActive(1));
    EXPECT_FALSE(pref->isTypeActive(0)); // never seeded
    EXPECT_FALSE(pref->scanSubpaths(2));

    // One that cannot be read is no template: the defaults are seeded.
    ASSERT_TRUE(QFile::remove(homePath(kPlist)));
    writeText(rootPath(kPlist), "<plist><dict><key>AUOn</key>");
    relaunch();
    EXPECT_TRUE(this->pref()->isTypeActive(TypeAU));
    EXPECT_EQ(readText(rootPath(kPlist)), "<plist><dict><key>AUOn</key>");

    ASSERT_TRUE(QFile::remove(homePath(kPlist)));
    ASSERT_TRUE(writePlist(rootPath(kPlist), machineWide));
    ImmutableGuard guard(homePath("Library/Preferences"));
    if (!guard.ok())
        GTEST_SKIP() << "chattr +i not supported here";
    relaunch(); // the next launch
    pref = this->pref();
    EXPECT_FALSE(QFile::exists(homePath(kPlist)));
    for (int type = 0; type < 4; ++type) {
        EXPECT_FALSE(pref->isTypeActive(type));
        EXPECT_EQ(pref->getDefaultSet(type), QString());
    }
}

TEST_F(MyPrefObjTest, OutOfRangeTypeAnswersNoAndStoresNothing)
{
    MyPrefObj *pref = this->pref();
    pref->defaults()->setObjects({{"ScanSubfolders", true}, {"AUScanSubfolders", true}});
    const QString before = readText(homePath(kPlist));
    for (int type : {-1, 4, 100}) {
        pref->setDefaultSet(type, "/tmp/x.aukorv");
        EXPECT_EQ(pref->getDefaultSet(type), std::nullopt);
        EXPECT_FALSE(pref->isTypeActive(type) || pref->activateDefaultSet(type)
                     || pref->showType(type) || pref->showContent(type) || pref->moveContent(type)
                     || pref->scanSubpaths(type))
            << type;
    }
    EXPECT_FALSE(pref->scanSubpaths(0)); // whatever the store holds
    EXPECT_EQ(readText(homePath(kPlist)), before);
}

TEST_F(MyPrefObjTest, AnUnreadableFileIsKeptAsideAndCountsAsAbsent)
{
    QDir().mkpath(homePath("Library/Preferences"));
    const QVariantMap machineWide{{"VSTOn", true}};
    const struct {
        QByteArray bytes;
        bool machineWide;
    } cases[] = {
        {"<?xml version=\"1.0\"?><plist><dict><key>AUOn</key>", false},
        {PropertyList::toXml(QVariantList{"AUOn", true}), false}, // not a dictionary
        {QByteArray("bplist00\0\xff\x13", 11), false},
        {"", true},
        {PropertyList::toXml(QVariantList{}), true},
    };
    for (const auto &c : cases) {
        relaunch(); // the next launch
        QDir(homePath("Library/Preferences")).removeRecursively();
        QFile::remove(rootPath(kPlist));
        if (c.machineWide)
            writeText(rootPath(kPlist), PropertyList::toXml(machineWide));
        writeText(homePath(kPlist), c.bytes);
        SystemLogCapture log;
        MyPrefObj *pref = this->pref();
        const QStringList kept = QDir(homePath("Library/Preferences"))
                                     .entryList({"com.velmora.Korvane.plist.damaged-*"});
        ASSERT_EQ(kept.size(), 1) << c.bytes.toStdString();
        const QString keptPath = homePath("Library/Preferences/" + kept.first());
        QFile file(keptPath);
        ASSERT_TRUE(file.open(QIODevice::ReadOnly));
        EXPECT_EQ(file.readAll(), c.bytes);
        EXPECT_EQ(log.lines(),
                  QStringList{"Could not read " + homePath(kPlist) + "; kept it as " + keptPath});
        // Seeded or copied from the machine-wide file, as on a first launch.
        EXPECT_EQ(pref->isTypeActive(TypeAU), !c.machineWide) << c.bytes.toStdString();
        EXPECT_TRUE(pref->isTypeActive(TypeVST));
        EXPECT_EQ(stored().value("VSTOn"), QVariant(true));
    }

    // A file that cannot be moved aside is not replaced; the defaults hold in memory only.
    relaunch();
    QDir(homePath("Library/Preferences")).removeRecursively();
    const QByteArray garbage = "not a property list";
    writeText(homePath(kPlist), garbage);
    ImmutableGuard guard(homePath("Library/Preferences"));
    if (!guard.ok())
        GTEST_SKIP() << "chattr +i not supported here";
    SystemLogCapture log;
    MyPrefObj *pref = this->pref();
    pref->setDefaultType(TypeVST); // as at quit
    EXPECT_EQ(readText(homePath(kPlist)).toUtf8(), garbage);
    for (int type = 0; type < 4; ++type)
        EXPECT_TRUE(pref->isTypeActive(type));
    EXPECT_EQ(pref->getDefaultType(), TypeVST);
    // Said once, not at every write.
    EXPECT_EQ(log.lines(), QStringList{"Could not read " + homePath(kPlist)
                                       + " nor move it aside; left it as it is"});
}

TEST_F(MyPrefObjTest, TheFileIsReadOnceAndAgainOnlyWhenItChanged)
{
    MyPrefObj *pref = this->pref();
    pref->setDefaultSet(TypeMAS, "/sets/a.maskorv");
    EXPECT_EQ(pref->getDefaultSet(TypeMAS), QString("/sets/a.maskorv"));

    // Rewritten in place with the same size and time: the cached values are what is read.
    struct stat before;
    ASSERT_EQ(::stat(QFile::encodeName(homePath(kPlist)).constData(), &before), 0);
    {
        QFile file(homePath(kPlist));
        ASSERT_TRUE(file.open(QIODevice::ReadWrite));
        QByteArray bytes = file.readAll();
        bytes.replace("/sets/a.maskorv", "/sets/b.maskorv");
        file.seek(0);
        file.write(bytes);
    }
    const struct timespec times[2] = {before.st_atim, before.st_mtim};
    ASSERT_EQ(::utimensat(AT_FDCWD, QFile::encodeName(homePath(kPlist)).constData(), times, 0), 0);
    EXPECT_EQ(pref->getDefaultSet(TypeMAS), QString("/sets/a.maskorv"));

    // Any change of time is a new version.
    struct timespec later[2] = {before.st_atim, before.st_mtim};
    later[1].tv_nsec = (later[1].tv_nsec + 1) % 1000000000;
    ASSERT_EQ(::utimensat(AT_FDCWD, QFile::encodeName(homePath(kPlist)).constData(), later, 0), 0);
    EXPECT_EQ(pref->getDefaultSet(TypeMAS), QString("/sets/b.maskorv"));

    // Another process (the command-line tool) replaces the file.
    ASSERT_TRUE(writePlist(homePath(kPlist), QVariantMap{{"MASOn", true}}));
    EXPECT_TRUE(pref->isTypeActive(TypeMAS));
    EXPECT_FALSE(pref->isTypeActive(TypeAU));
    EXPECT_EQ(pref->getDefaultSet(TypeMAS), QString());
}

TEST_F(MyPrefObjTest, EveryControlGoesToTheStoreAndComesBack)
{
    MyPrefObj *pref = this->pref();
    QVariantMap expected{{"SUCheckAtStartup", pref->controls.checkForUpdates = true}};
    for (int type = 0; type < 4; ++type) {
        PrefTypeControls &c = pref->controls.types[type];
        const QString x = prefix(type);
        expected[x + "DefaultSet"] = c.defaultSet = QString("/sets/%1").arg(type);
        expected[x + "ShowMessage"] = c.showMessage = type == 0;
        expected[x + "ActivateAfterLoading"] = c.activateAfterLoading = type == 1;
        expected[x + "On"] = c.on = type != 2;
        expected[x + "ShowContent"] = c.showContent = type == 3;
        expected[x + "MoveContent"] = c.moveContent = type == 0;
        expected[x + "Type"] = c.type = type == 2;
        c.scanSubfolders = type == 1;
        if (type != 0) // not shown for Audio Units, so never written
            expected[x + "ScanSubfolders"] = c.scanSubfolders;
    }
    EXPECT_TRUE(pref->windowShouldClose());
    EXPECT_EQ(stored(), expected);

    QList<QPair<int, bool>> asked;
    QObject::connect(pref, &MyPrefObj::showPlattformRequested, [&](int type, bool show) {
        asked.append({type, show});
    });
    pref->controls = PrefControls();
    pref->awakeFromNib(); // every control back from the store...
    pref->updatePrefs();  // ...and out again unchanged
    EXPECT_EQ(stored(), expected);
    EXPECT_EQ(asked, (QList<QPair<int, bool>>{{0, false}, {1, false}, {2, true}, {3, false}}));
}

TEST_F(MyPrefObjTest, SetDocumentPanelFiltersByTabAndAlwaysStores)
{
    MyPrefObj *pref = this->pref();
    pref->controls.selectedTab = 2;
    pref->controls.types[1].moveContent = true;
    pref->controls.types[1].defaultSet = "/old.rtaskorv";
    pref->setDefault(); // cancelled
    EXPECT_EQ(ui.openPanels.value(0).allowedTypes, QStringList{"rtaskorv"});
    EXPECT_EQ(ui.openPanels.value(0).directory, homePath("Documents"));
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

} // namespace
} // namespace korvane
