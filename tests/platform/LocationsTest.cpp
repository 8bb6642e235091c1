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
        EXPECT_EQ(Locations::expand(path), expected) << path.toStdString();
    // Expanding twice changes nothing.
    const QString once = Locations::folderPath(TypeRTAS, LocSystemDisabled);
    EXPECT_EQ(once, root() + "/Library/Application Support/Digidesign/Plug-Ins (Disabled)");
    EXPECT_EQ(Locations::expand(once), once);

    qunsetenv("KORVANE_ROOT");
    EXPECT_EQ(Locations::expand(Locations::machinePreferencesFile()),
              "/Library/Preferences/com.velmora.Korvane.plist");
}

TEST_F(LocationsTest, FoldersOutsideTheTableAreEmpty)
{
    EXPECT_EQ(Locations::folder(TypeAU, LocUserDisabled),
              "~/Library/Audio/Plug-Ins/Components (Disabled)");
    for (const auto &[type, loc] : {std::pair{-1, 0}, {4, 0}, {0, -1}, {0, 4}})
        EXPECT_TRUE(Locations::folderPath(type, loc).isEmpty()) << type << "," << loc;
}

} // namespace
} // namespace korvane
