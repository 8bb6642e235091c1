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

    // Out of range is nothing, not a neighbour's folder or format.
    const FormatTable &formats = FormatTable::builtIn();
    for (int loc : {-1, 4})
        EXPECT_TRUE(formats.at(TypeVST).folder(loc).isEmpty()) << loc;
    EXPECT_EQ(formats.find(4), nullptr);
    EXPECT_FALSE(formats.typeOfName("clap").has_value());
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

} // namespace
} // namespace korvane
