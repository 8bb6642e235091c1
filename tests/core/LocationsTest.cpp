#include "core/Locations.h"

#include "core/FormatTable.h"
#include "support/TestRoots.h"

namespace korvane {
namespace {

class LocationsTest : public TestRoots {};

TEST_F(LocationsTest, OnlyALeadingLibraryUsrOrTildeFollowsTheRoots)
{
    const QList<std::pair<QString, QString>> cases = {
        {"/Library/Audio/", root() + "/Library/Audio"},
        {"~/Library//Audio/./Plug-Ins/x/../VST/", home() + "/Library/Audio/Plug-Ins/VST"},
        {"~", home()},
        {"/Library", root() + "/Library"},
        {root() + "/Library", root() + "/Library"}, // expanding twice changes nothing
        {"/Libraryx/a", "/Libraryx/a"},
        {"/usr/Library/a", root() + "/usr/Library/a"},
        {"/usr/lib/lv2", root() + "/usr/lib/lv2"},
        {"/usrx/lib", "/usrx/lib"},
        {"/opt/lv2", "/opt/lv2"},
        {"~other/a", "~other/a"},
        {"a/~/b", "a/~/b"},
    };
    for (const auto &[path, expected] : cases)
        EXPECT_EQ(locations().expand(path), expected) << path.toStdString();
    EXPECT_EQ(Locations(Roots::at("/", home())).machinePreferencesPath(),
              "/Library/Preferences/com.velmora.Korvane.plist");
}

// Out of range is nothing, not a neighbour's folder or format.
TEST_F(LocationsTest, AFolderOrFormatOutOfRangeIsNothing)
{
    for (int loc : {-1, 4})
        EXPECT_TRUE(FormatTable::builtIn().at(TypeVST).folder(loc).isEmpty()) << loc;
    EXPECT_EQ(FormatTable::builtIn().find(FormatTable::builtIn().count()), nullptr);
}

// Only the programs' entry points read the environment. A relative XDG_DATA_HOME is ignored: the
// trash would be wherever the program was started.
TEST_F(LocationsTest, TheEnvironmentGivesTheRootsButNotARelativeDataHome)
{
    const QByteArray savedHome = qgetenv("HOME"), savedData = qgetenv("XDG_DATA_HOME");
    qputenv("KORVANE_ROOT", root().toUtf8() + "/");
    qputenv("HOME", home().toUtf8());
    qputenv("XDG_DATA_HOME", "relative/share");
    EXPECT_EQ(Roots::fromEnvironment(), Roots::at(root(), home()));
    qunsetenv("KORVANE_ROOT");
    qputenv("XDG_DATA_HOME", "/srv/data");
    EXPECT_EQ(Roots::fromEnvironment().systemRoot, "/");
    EXPECT_EQ(Roots::fromEnvironment().trashFolder(), "/srv/data/Trash");
    qputenv("HOME", savedHome);
    savedData.isNull() ? qunsetenv("XDG_DATA_HOME") : qputenv("XDG_DATA_HOME", savedData);
}

// --root and --home, as both programs read them: over the environment's roots, each checked to be
// a folder (the option first, then what the environment leaves in place), the hosts' variables
// kept through a new home.
TEST_F(LocationsTest, RootAndHomeOptionsReplaceTheEnvironmentsOnlyWithFolders)
{
    Roots environment = Roots::at(root() + "/gone", home());
    environment.pluginPaths.insert("LV2_PATH", "~/lv2");
    EXPECT_EQ(environment.refusalWithOptions({}, {}),
              QString("KORVANE_ROOT: no folder \"%1/gone\"").arg(root()));
    EXPECT_EQ(environment.refusalWithOptions(root(), {}), "");
    EXPECT_EQ(environment.refusalWithOptions(root() + "/typo", {}),
              QString("--root: no folder \"%1/typo\"").arg(root()));
    const QString otherHome = root() + "/home";
    EXPECT_EQ(environment.refusalWithOptions(root(), otherHome),
              QString("--home: no folder \"%1\"").arg(otherHome));

    QDir().mkpath(otherHome);
    const Roots given = environment.withOptions(root(), otherHome);
    EXPECT_EQ(given.systemRoot, root());
    EXPECT_EQ(given.trashFolder(), otherHome + "/.local/share/Trash");
    EXPECT_EQ(given.pluginPaths.value("LV2_PATH"), "~/lv2");
    EXPECT_EQ(environment.withOptions({}, {}), environment);
}

} // namespace
} // namespace korvane
