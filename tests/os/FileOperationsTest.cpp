#include "support/TestRoots.h"

#include "DiskFixture.h"

#include <QFile>

#include <unistd.h>

namespace korvane {
namespace {

class FileOperationsTest : public DiskFixture {};

// Neither a move nor a copy replaces what is at the target, makes missing folders, or writes into a
// locked one or into the item itself.
TEST_F(FileOperationsTest, MoveAndCopyNeverReplaceInventFoldersOrLoseTheSource)
{
    const QString source = makeRichBundle(homePath("VST"), "Echo.vst");
    const auto before = snapshot(source);
    const QString occupied = B::makeFile(homePath("VST (Disabled)"), "Echo.vst", {}, "theirs");
    const QString locked = B::makeFolder(rootPath("VST (Disabled)"));
    QStringList targets{occupied, homePath("Gone/Deeper/Echo.vst"), source + "/Contents/Inside"};
    ImmutableGuard guard(locked);
    if (guard.ok()) // where chattr +i is not available the locked folder is not tried
        targets << locked + "/Echo.vst";
    for (const bool moving : {true, false}) {
        for (const QString &target : targets) {
            SCOPED_TRACE(qPrintable((moving ? "move to " : "copy to ") + target));
            FileError error;
            EXPECT_FALSE(moving ? files.move(source, target, &error)
                                : files.copy(source, target, &error));
            EXPECT_FALSE(error.reason.isEmpty());
            EXPECT_EQ(error.path, target);
            EXPECT_EQ(snapshot(source), before);
        }
    }
    EXPECT_EQ(readText(occupied), "theirs");
    EXPECT_FALSE(QFileInfo::exists(homePath("Gone")));
    EXPECT_TRUE(entries(locked).isEmpty());
}

// A copy that fails half-way, as on a full disk, takes its half back.
TEST_F(FileOperationsTest, AFailedCopyLeavesNoHalfCopy)
{
    const QString source = makeRichBundle(homePath("VST"), "Echo.vst");
    files.failEveryThirdCopy = true;
    FileError error;
    EXPECT_FALSE(files.copy(source, homePath("Echo copy.vst"), &error));
    EXPECT_EQ(error.reason, "No space left on device");
    EXPECT_FALSE(QFileInfo::exists(homePath("Echo copy.vst")));
}

// A " (Disabled)" folder that is a link to the active one, or a hard link, shows one item under two
// names: a move or copy between them is refused as what it is, never taken for a target in the
// way, and the item stays as it was.
TEST_F(FileOperationsTest, AnItemIsNeverMovedOntoItself)
{
    const QString on = homePath("VST"), off = homePath("VST (Disabled)");
    makeRichBundle(on, "Echo.vst");
    B::makeFile(on, "._Echo.vst", {}, "finder info");
    B::makeFile(on, "Plain.vst", {}, "plain");
    ASSERT_TRUE(QFile::link(on, off));
    B::makeFolder(homePath("Other"));
    ASSERT_EQ(::link(QFile::encodeName(on + "/Plain.vst").constData(),
                     QFile::encodeName(homePath("Other/Plain.vst")).constData()),
              0);
    const auto before = snapshot(on);
    for (const auto &[from, to] : {std::pair{on + "/Echo.vst", off + "/Echo.vst"},
                                   std::pair{on + "/Plain.vst", off + "/Plain.vst"},
                                   std::pair{on + "/Plain.vst", homePath("Other/Plain.vst")}}) {
        for (const bool moving : {true, false}) {
            SCOPED_TRACE(qPrintable((moving ? "move to " : "copy to ") + to));
            FileError error;
            EXPECT_FALSE(moving ? files.move(from, to, &error) : files.copy(from, to, &error));
            EXPECT_EQ(error.reason, "The source and the target are the same item");
            EXPECT_EQ(error.path, to);
            EXPECT_EQ(snapshot(on), before);
        }
    }
}

TEST_F(FileOperationsTest, CreatesOneLevelOfFolderAtATime)
{
    FileError error;
    EXPECT_FALSE(files.createDirectory(homePath("a/b"), &error));
    EXPECT_EQ(error.path, homePath("a/b"));
    EXPECT_TRUE(files.createDirectory(homePath("a")));
}

// A lock anywhere, on the bundle, deep inside it or on its folder, refuses the removal before a
// single file goes: a half-deleted plug-in is worse than one that stays.
TEST_F(FileOperationsTest, ALockAnywhereRefusesTheWholeRemoval)
{
    FileError error;
    const QString folder = homePath("VST");
    const QString bundle = makeRichBundle(folder, "Echo.vst");
    const QString plain = B::makeFile(folder, "Plain.vst");
    B::makeFile(folder, "a.vst");
    const auto before = snapshot(folder);
    EXPECT_TRUE(files.isDeletable(plain));
    for (const QString &locked :
         {bundle, bundle + "/Contents/Info.plist", bundle + "/Contents/MacOS",
          bundle + "/Contents/Resources/en.lproj/Strings", folder}) {
        SCOPED_TRACE(qPrintable(locked));
        ImmutableGuard guard(locked);
        if (!guard.ok())
            GTEST_SKIP() << "chattr +i is not available here";
        EXPECT_FALSE(files.isDeletable(locked == folder ? plain : locked));
        EXPECT_FALSE(files.remove(bundle, &error));
        EXPECT_EQ(error.path, locked);
        EXPECT_FALSE(locked == folder && files.remove(plain));
        EXPECT_EQ(snapshot(folder), before);
    }
}

// Listings run in byte order; a linked folder is an entry, never a way in.
TEST_F(FileOperationsTest, ListingsRunInByteOrderAndALinkedFolderIsNeverAWayIn)
{
    const QString folder = homePath("VST");
    makeRichBundle(folder, "Echo.vst");
    B::makeFile(folder, "Plain.vst");
    B::makeFile(folder, "a.vst");
    const QString outside = B::makeFile(homePath("Outside"), "Kept");
    ASSERT_TRUE(QFile::link(homePath("Outside"), folder + "/Linked"));
    EXPECT_EQ(entries(folder), QStringList({"Echo.vst", "Linked", "Plain.vst", "a.vst"}));
    EXPECT_EQ(files.subpaths(folder).filter("Linked"), QStringList{"Linked"});
    EXPECT_TRUE(files.isDirectory(folder + "/Linked"));
    EXPECT_TRUE(files.remove(folder));
    EXPECT_FALSE(QFileInfo::exists(folder));
    EXPECT_TRUE(QFileInfo::exists(outside));
}

} // namespace
} // namespace korvane
