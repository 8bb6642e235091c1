#include "platform/Locations.h"
#include "support/TestRoots.h"

namespace korvane {
namespace {

class LocationsTest : public TestRoots {};

TEST_F(LocationsTest, LibraryAndTildeFollowTheRoots)
{
    EXPECT_EQ(Locations::systemRoot(), root());
    EXPECT_EQ(Locations::home(), home());
    EXPECT_EQ(Locations::expand("/Library/Audio/Plug-Ins/VST"), root() + "/Library/Audio/Plug-Ins/VST");
    EXPECT_EQ(Locations::expand("/Library"), root() + "/Library");
    EXPECT_EQ(Locations::expand("~/Library/Audio"), home() + "/Library/Audio");
    EXPECT_EQ(Locations::expand("~"), home());

    // Only a leading "/Library" component and a leading "~" or "~/" are mapped.
    EXPECT_EQ(Locations::expand("/Libraryx/a"), "/Libraryx/a");
    EXPECT_EQ(Locations::expand("/usr/Library/a"), "/usr/Library/a");
    EXPECT_EQ(Locations::expand("~other/a"), "~other/a");
    EXPECT_EQ(Locations::expand("a/~/b"), "a/~/b");

    // Expanding twice changes nothing.
    const QString once = Locations::folderPath(TypeRTAS, LocSystemDisabled);
    EXPECT_EQ(Locations::expand(once), once);
}

TEST_F(LocationsTest, ExpandedPathsAreStandardised)
{
    EXPECT_EQ(Locations::expand("~/Library//Audio/./Plug-Ins/x/../VST/"), home() + "/Library/Audio/Plug-Ins/VST");
    EXPECT_EQ(Locations::expand("/Library/Audio/"), root() + "/Library/Audio");
    EXPECT_EQ(Locations::expand("/tmp//a/./b/"), "/tmp/a/b");
    EXPECT_EQ(Locations::expand(""), "");
}

TEST_F(LocationsTest, DefaultRootLeavesLibraryAlone)
{
    qunsetenv("KORVANE_ROOT");
    EXPECT_EQ(Locations::systemRoot(), "/");
    EXPECT_EQ(Locations::expand("/Library/Preferences/"), "/Library/Preferences");
    EXPECT_EQ(Locations::expand(Locations::machinePreferencesFile()), "/Library/Preferences/com.velmora.Korvane.plist");
}

TEST_F(LocationsTest, FolderTable)
{
    EXPECT_EQ(Locations::folder(TypeAU, LocSystemActive), "/Library/Audio/Plug-Ins/Components");
    EXPECT_EQ(Locations::folder(TypeAU, LocUserDisabled), "~/Library/Audio/Plug-Ins/Components (Disabled)");
    EXPECT_EQ(Locations::folder(TypeRTAS, LocSystemDisabled), "/Library/Application Support/Digidesign/Plug-Ins (Disabled)");
    EXPECT_EQ(Locations::folder(TypeMAS, LocUserActive), "~/Library/Audio/Plug-Ins/MAS");
    EXPECT_EQ(Locations::folder(TypeVST, LocUserDisabled), "~/Library/Audio/Plug-Ins/VST (Disabled)");
    EXPECT_EQ(Locations::folderPath(TypeVST, LocUserDisabled), home() + "/Library/Audio/Plug-Ins/VST (Disabled)");

    for (const auto &[type, loc] : {std::pair{-1, 0}, {4, 0}, {0, -1}, {0, 4}}) {
        EXPECT_TRUE(Locations::folder(type, loc).isEmpty()) << type << "," << loc;
        EXPECT_TRUE(Locations::folderPath(type, loc).isEmpty()) << type << "," << loc;
    }

    EXPECT_EQ(Locations::dataFile("content.plist"), "~/Library/Application Support/Korvane/content.plist");
    EXPECT_EQ(Locations::expand(Locations::userPreferencesFile()),
              home() + "/Library/Preferences/com.velmora.Korvane.plist");
}

} // namespace
} // namespace korvane
