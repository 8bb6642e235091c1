#include "PreferencesFixture.h"

#include "app/Preferences.h"
#include "codec/PropertyList.h"
#include "os/SystemLog.h"

#include <QDir>
#include <fcntl.h>
#include <sys/stat.h>

namespace korvane {
namespace {

using PreferencesTest = PreferencesFixture;

TEST_F(PreferencesTest, FirstLaunchSeedsOrCopiesAReadableMachineWideFileOrLeavesAllOff)
{
    launch();
    const QVariantMap seed = stored(); // every format on, but no AUScanSubfolders
    EXPECT_EQ(seed.value("MASOn"), true);
    EXPECT_EQ(seed.value("VSTScanSubfolders"), true);
    EXPECT_FALSE(seed.contains("AUScanSubfolders"));

    const QVariantMap machineWide{{"VSTOn", true}, {"RTASOn", false}};
    const QByteArray unreadable = "<plist><dict><key>AUOn</key>"; // no template: seeded
    for (const QByteArray &bytes : {unreadable, PropertyList::toXml(machineWide)}) {
        QFile::remove(homePath(kPreferencesPlist));
        writeText(rootPath(kPreferencesPlist), bytes);
        EXPECT_EQ(launch()->isFormatOn(TypeAU), bytes == unreadable); // never seeded
        EXPECT_EQ(stored(), bytes == unreadable ? seed : machineWide);
        EXPECT_EQ(readText(rootPath(kPreferencesPlist)).toUtf8(), bytes);
    }

    // Where the machine-wide file cannot be copied, everything is off.
    QFile::remove(homePath(kPreferencesPlist));
    ImmutableGuard guard(homePath("Library/Preferences"));
    if (!guard.ok())
        GTEST_SKIP() << "chattr +i not supported here";
    launch();
    for (int type = 0; type < 4; ++type)
        EXPECT_FALSE(pref->isFormatOn(type) || pref->defaultSet(type) != QString()) << type;
    EXPECT_FALSE(QFile::exists(homePath(kPreferencesPlist)));
}

TEST_F(PreferencesTest, AnUnreadableFileIsKeptAsideAndCountsAsAbsentOrLeftWhereItCannotBe)
{
    const QString folder = homePath("Library/Preferences");
    const QByteArray damaged("bplist00\0\xff\x13", 11);
    writeText(rootPath(kPreferencesPlist), PropertyList::toXml(QVariantMap{{"VSTOn", true}}));
    writeText(homePath(kPreferencesPlist), damaged);
    SystemLogCapture log;
    EXPECT_FALSE(launch()->isFormatOn(TypeAU)); // copied from the machine-wide file
    EXPECT_EQ(stored(), QVariantMap({{"VSTOn", true}}));
    const QStringList kept = QDir(folder).entryList({"com.velmora.Korvane.plist.damaged-*"});
    ASSERT_EQ(kept.size(), 1);
    QFile file(folder + "/" + kept.first());
    ASSERT_TRUE(file.open(QIODevice::ReadOnly));
    EXPECT_EQ(file.readAll(), damaged);
    EXPECT_EQ(log.lines(), QStringList{"Could not read " + homePath(kPreferencesPlist)
                                       + "; kept it as " + file.fileName()});

    // A file that cannot be moved aside is not replaced; the defaults hold in memory only.
    QDir(folder).removeRecursively();
    writeText(homePath(kPreferencesPlist), "not a property list");
    ImmutableGuard guard(folder);
    if (!guard.ok())
        GTEST_SKIP() << "chattr +i not supported here";
    launch()->setDefaultType(TypeVST); // as at quit
    EXPECT_EQ(readText(homePath(kPreferencesPlist)), "not a property list");
    EXPECT_TRUE(pref->isFormatOn(TypeAU));
    EXPECT_EQ(pref->defaultType(), TypeVST);
    // Said once, not at every write.
    EXPECT_EQ(log.lines().mid(1), QStringList{"Could not read " + homePath(kPreferencesPlist)
                                              + " nor move it aside; left it as it is"});
}

TEST_F(PreferencesTest, TheFileIsReadOnceAndAgainOnlyWhenItChanged)
{
    launch()->setDefaultSet(TypeMAS, "/sets/a.maskorv");
    const QByteArray path = QFile::encodeName(homePath(kPreferencesPlist));
    struct stat before;
    ASSERT_EQ(::stat(path.constData(), &before), 0);
    writeText(homePath(kPreferencesPlist),
              readText(homePath(kPreferencesPlist)).replace("a.maskorv", "b.maskorv").toUtf8());
    struct timespec times[2] = {before.st_atim, before.st_mtim};
    ASSERT_EQ(::utimensat(AT_FDCWD, path.constData(), times, 0), 0);
    // Same size and time: the cached values are what is read.
    EXPECT_EQ(pref->defaultSet(TypeMAS), QString("/sets/a.maskorv"));
    times[1].tv_nsec = (times[1].tv_nsec + 1) % 1000000000; // any change of time is a new version
    ASSERT_EQ(::utimensat(AT_FDCWD, path.constData(), times, 0), 0);
    EXPECT_EQ(pref->defaultSet(TypeMAS), QString("/sets/b.maskorv"));

    // Another process (the command-line tool) replaces the file.
    ASSERT_TRUE(writePlist(homePath(kPreferencesPlist), QVariantMap{{"MASOn", true}}));
    EXPECT_TRUE(pref->isFormatOn(TypeMAS));
    EXPECT_FALSE(pref->isFormatOn(TypeAU));
}

TEST_F(PreferencesTest, ControlsGoToTheStoreAndComeBackAndTheSetChooserFollowsTheTab)
{
    launch();
    QVariantMap expected{{"SUCheckAtStartup", pref->form.checkForUpdates = true}};
    const int rows = FormatTable::builtIn().count();
    for (int type = 0; type < rows; ++type) {
        PreferencesPage &c = pref->form.pages[type];
        const QString x = FormatTable::builtIn().at(type).prefix;
        expected[x + "DefaultSet"] = c.defaultSet = QString("/sets/%1").arg(type);
        expected[x + "ActivateAfterLoading"] = c.activateAfterLoading = type == 1;
        expected[x + "On"] = c.on = type != 2;
        expected[x + "ShowContent"] = c.showContent = type == 3;
        expected[x + "MoveContent"] = c.moveContent = type == 0;
        expected[x + "Type"] = c.typeColumn = type == 2;
        c.scanSubfolders = type == 1;
        // Not shown for Audio Units (nor formats whose hosts never recurse), so never written.
        if (FormatTable::builtIn().at(type).scansSubfolders)
            expected[x + "ScanSubfolders"] = c.scanSubfolders;
    }
    EXPECT_TRUE(pref->closeWindow());
    EXPECT_EQ(stored(), expected);

    QList<QPair<int, bool>> asked;
    QObject::connect(pref.get(), &Preferences::architectureColumnRequested,
                     [&](int type, bool show) {
                         asked.append({type, show});
                     });
    pref->form = PreferencesForm();
    pref->prepareWindow(); // every control back from the store...
    pref->storeForm();     // ...and out again unchanged
    EXPECT_EQ(stored(), expected);
    QList<QPair<int, bool>> columns;
    for (int type = 0; type < rows; ++type)
        columns.append({type, type == 2});
    EXPECT_EQ(asked, columns);

    // A type out of range reads as off and stores nothing; Audio Units never scan subfolders.
    pref->setDefaultSet(4, "/tmp/x.aukorv");
    pref->store()->setValues({{"ScanSubfolders", true}, {"AUScanSubfolders", true}});
    EXPECT_FALSE(pref->defaultSet(rows) || pref->scansSubfolders(-1) || pref->scansSubfolders(0));
    EXPECT_FALSE(stored().contains("DefaultSet"));

    // The set chooser asks for the extension of the tab in front, and stores the window even
    // when cancelled; a tab without a format restricts nothing and keeps nothing.
    pref->form.selectedTab = 2;
    pref->form.pages[1].moveContent = true;
    pref->chooseDefaultSet();
    EXPECT_EQ(ui.openPanels.value(0).allowedTypes, QStringList{"rtaskorv"});
    EXPECT_EQ(stored().value("RTASMoveContent"), QVariant(true));
    ui.openPanelAnswers << QString("/sets/new.rtaskorv") << QString("/sets/other.vstkorv");
    pref->chooseDefaultSet();
    pref->form.selectedTab = 0;
    pref->chooseDefaultSet();
    EXPECT_TRUE(ui.openPanels.value(2).allowedTypes.isEmpty());
    EXPECT_EQ(pref->defaultSet(1), QString("/sets/new.rtaskorv"));
    EXPECT_EQ(pref->defaultSet(3), QString("/sets/3"));
}

} // namespace
} // namespace korvane
