#include "FormatManagerFixture.h"

#include "library/DropInstall.h"

#include <QLocale>

namespace korvane {
namespace {

using DropInstallTest = ThreeAudioUnitsFixture;

// Only recognised files unless the person says all; nothing is overwritten; Cancel stops between
// files, what was copied stays, the log names the rest, and a large file shows its bytes.
TEST_F(DropInstallTest, DropInstallsIntoTheUsersFolderWithoutOverwriting)
{
    const QString drops = homePath("drops"), user = folder(TypeAU, LocUserActive);
    const qint64 size = qint64(5) << 20;
    B::makeAudioUnit(drops, "New.component", MachO::intel());
    B::makeAudioUnit(drops, "Last.component", MachO::intel());
    writeText(drops + "/readme.txt", QByteArray(size, 'b'));
    writeText(drops + "/Baz.component", "impostor");
    QDir(user).removeRecursively();
    const QStringList paths{drops + "/New.component", drops + "/readme.txt"};

    ui.alertAnswers << AlertAnswer::Third; // Cancel
    EXPECT_FALSE(DropInstall::install(*au, paths));
    EXPECT_TRUE(
        DropInstall::install(*au, paths)); // recognised only, into a user folder that was missing
    EXPECT_TRUE(exists(user + "/New.component/Contents/Info.plist"));
    EXPECT_FALSE(exists(user + "/readme.txt"));
    EXPECT_GE(rowOf(au, "New.component"), 0); // rescanned

    addAU(LocUserActive, "Baz.component");
    ui = {};
    // All Files; Cancel for Baz, which is installed; then Cancel before the third.
    ui.alertAnswers << AlertAnswer::Second << AlertAnswer::Third;
    ui.cancelAt = 3;
    EXPECT_TRUE(DropInstall::install(
        *au, {drops + "/readme.txt", drops + "/Baz.component", drops + "/Last.component"}));
    EXPECT_EQ(QFileInfo(user + "/readme.txt").size(), size);
    EXPECT_TRUE(QFileInfo(user + "/Baz.component").isDir());
    EXPECT_FALSE(exists(user + "/Last.component"));
    EXPECT_TRUE(ui.progressValues.contains(0.5)); // half of the first file of three
    EXPECT_TRUE(
        ui.progressDetails.contains(QString("%1 of %1").arg(QLocale().formattedDataSize(size))));
    EXPECT_TRUE(
        logText().endsWith(QString("Stopped, not installed: %1/Last.component\n").arg(drops)));
}

// A drop of a plug-in installed in the system folder once made an active second copy beside it
// without a word. The person hears where it is, with its version, and chooses.
TEST_F(DropInstallTest, ADropOfAnInstalledPlugInSaysWhereAndReplacesOrKeepsBothSwitchedOff)
{
    const QString drops = homePath("drops");
    B::makeAudioUnit(drops, "Foo.component", MachO::intel());
    const QString system = auPath(LocSystemActive, "Foo.component");
    for (const AlertAnswer answer : {AlertAnswer::Third, AlertAnswer::Second}) {
        ui.alertAnswers << AlertAnswer::First << answer; // install recognised, then the choice
        EXPECT_TRUE(DropInstall::install(*au, {drops + "/Foo.component"}));
    }
    ASSERT_EQ(ui.alerts.size(), 4);
    EXPECT_EQ(ui.alerts.at(1).messageText, "“Foo.component” is already installed");
    EXPECT_TRUE(ui.alerts.at(1).informativeText.startsWith("Installed: " + system
                                                           + " (version 1.0)\nDropped: " + drops
                                                           + "/Foo.component (version 1.0)"))
        << ui.alerts.at(1).informativeText.toStdString();
    EXPECT_EQ(ui.alerts.at(1).buttons, QStringList({"Replace", "Keep Both", "Cancel"}));
    // Cancel copied nothing; Keep Both put the new one beside, switched off.
    EXPECT_TRUE(exists(system));
    EXPECT_FALSE(exists(auPath(LocUserActive, "Foo.component")));
    EXPECT_TRUE(exists(auPath(LocUserDisabled, "Foo.component")));

    // Replace: every installed copy to the trash, the dropped one where a drop installs.
    ui.alertAnswers << AlertAnswer::First << AlertAnswer::First;
    EXPECT_TRUE(DropInstall::install(*au, {drops + "/Foo.component"}));
    EXPECT_FALSE(exists(system) || exists(auPath(LocUserDisabled, "Foo.component")));
    EXPECT_TRUE(exists(auPath(LocUserActive, "Foo.component")));
    EXPECT_TRUE(exists(homePath(".local/share/Trash/files/Foo.component")));
    EXPECT_EQ(names(au).count("Foo.component"), 1);
}

} // namespace
} // namespace korvane
