#include "platform/Locations.h"
#include "support/TestRoots.h"

namespace korvane {
namespace {

class LocationsTest : public TestRoots {};

TEST_F(LocationsTest, OnlyLeadingLibraryAndTildeFollowTheRootsAndPathsAreStandardised)
{
    const QList<std::pair<QString, QString>> cases = {
        {"/Library/Audio/Plug-Ins/VST", root() + "/Library/Audio/Plug-Ins/VST"},
        {"/Library/Audio/", root() + "/Library/Audio"},
        {"/Library", root() + "/Library"},
        {"~", home()},
        {"~/Library//Audio/./Plug-Ins/x/../VST/", home() + "/Library/Audio/Plug-Ins/VST"},
        {"/Libraryx/a", "/Libraryx/a"},
        {"/usr/Library/a", "/usr/Library/a"},
        {"~other/a", "~other/a"},
        {"a/~/b", "a/~/b"},
        {"/tmp//a/./b/", "/tmp/a/b"},
        {"", ""},
    };
    for (const auto &[path, expected] : cases)
        EXPECT_EQ(locations().expand(path), expected) << path.toStdString();
    // Expanding twice changes nothing.
    const QString once = folder(TypeRTAS, LocSystemDisabled);
    EXPECT_EQ(once, root() + "/Library/Application Support/Digidesign/Plug-Ins (Disabled)");
    EXPECT_EQ(locations().expand(once), once);

    EXPECT_EQ(Locations(Roots::at("/", home())).machinePreferencesPath(),
              "/Library/Preferences/com.velmora.Korvane.plist");
}

TEST_F(LocationsTest, TheEnvironmentIsReadOnlyWhereTheProgramsAskForIt)
{
    const QByteArray oldRoot = qgetenv("KORVANE_ROOT"), oldHome = qgetenv("HOME"),
                     oldData = qgetenv("XDG_DATA_HOME");
    qputenv("KORVANE_ROOT", root().toUtf8() + "/");
    qputenv("HOME", home().toUtf8());
    qputenv("XDG_DATA_HOME", "relative/share"); // not absolute: ignored
    Roots roots = Roots::fromEnvironment();
    EXPECT_EQ(roots, Roots::at(root(), home()));
    EXPECT_EQ(roots.trashFolder(), home() + "/.local/share/Trash");
    qputenv("XDG_DATA_HOME", "/srv/data");
    qunsetenv("KORVANE_ROOT");
    roots = Roots::fromEnvironment();
    EXPECT_EQ(roots.systemRoot, "/");
    EXPECT_EQ(roots.trashFolder(), "/srv/data/Trash");
    qputenv("KORVANE_ROOT", oldRoot);
    qputenv("HOME", oldHome);
    oldData.isNull() ? qunsetenv("XDG_DATA_HOME") : qputenv("XDG_DATA_HOME", oldData);
}

TEST_F(LocationsTest, EveryFormatHasItsFourFoldersAndNothingOutsideThem)
{
    const FormatTable &formats = FormatTable::builtIn();
    EXPECT_EQ(formats.at(TypeAU).folder(LocUserDisabled),
              "~/Library/Audio/Plug-Ins/Components (Disabled)");
    EXPECT_EQ(formats.at(TypeMAS).folder(LocSystemActive), "/Library/Audio/Plug-Ins/MAS");
    for (int loc : {-1, 4})
        EXPECT_TRUE(formats.at(TypeVST).folder(loc).isEmpty()) << loc;
    EXPECT_EQ(formats.find(4), nullptr);
    EXPECT_EQ(formats.typeOfName("rtas"), TypeRTAS);
    EXPECT_EQ(formats.typeOfTabIdentifier("tabVST"), TypeVST);
    EXPECT_FALSE(formats.typeOfName("clap").has_value());
}

} // namespace
} // namespace korvane

namespace korvane {
namespace {

// The built-in rows carry the program's own words, misspellings and all.
TEST(FormatTableTest, BuiltInRowsHoldTheirOwnTexts)
{
    const QStringList expected[] = {
        {"scan AudioUnits:", "AudioUnits only", "install AudioUnits:", "AudioUnits Plug-In Info",
         "AudioUnits Backup Restore", "Please select a AudioUnit Plug-In", "aukorv aukorv",
         "Untitled.aukorv Untitled.aukorv untitled.aukorv",
         "~/Library/Audio/Plug-Ins/Components/%@"},
        {"scan RTAS-Plugins:", "RTAS-PlugIns only", "install RTAS-PlugIns:", "RTAS Plug-Ins Info",
         "RTAS Plug-Ins Backup Restore", "Please select a RTAS Plug-In", "rtaskorv rtaskorv",
         "Untitled.rtaskorv Untitled.rtaskorv untitled.rtaskorv",
         "~/Library/Application Support/Digidesign/Plug-Ins/%@"},
        {"scan MAS-Plugins:", "MAS-PlugIns only", "install MAS-PlugIns:", "MAS Plug-Ins Info",
         "MAS Plug-Ins Backup Restore", "Please select a MAS Plug-In", "MASkorv maskorv",
         "Untitled.maskorv Untitled.MASkorv untitled.MASkorv", "~/Library/Audio/Plug-Ins/MAS/%@"},
        {"scan VST-Plugins:", "VST-PlugIns only", "install VST-PlugIns:", "VST Plug-Ins Info",
         "VST Plug-Ins Backup Restore", "Please select a VST Plug-In", "vstkorv vstkorv",
         "Untitled.vstkorv Untitled.vstkorv untitled.vstkorv", "~/Library/Audio/Plug-Ins/VST/%@"},
    };
    for (const Format &f : FormatTable::builtIn()) {
        const QStringList texts{f.panelTitle,
                                f.installFirstButton,
                                f.installProgressTitle,
                                f.infoMessage,
                                f.backupRestoreMessage,
                                f.infoText,
                                f.documentExtension + " " + f.defaultSetExtension,
                                f.windowLoadName + " " + f.untitledName + " " + f.savePanelName,
                                f.installTarget};
        EXPECT_EQ(texts, expected[f.type]) << f.type;
        EXPECT_EQ(f.folderTextPrefix, "scan for" + f.panelTitle.mid(4));
        EXPECT_EQ(f.installInformative, "Install " + f.installFirstButton + "?");
    }
}

} // namespace
} // namespace korvane
