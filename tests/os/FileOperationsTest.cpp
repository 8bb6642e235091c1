#include "codec/FinderInfo.h"
#include "os/LocalFileOperations.h"
#include "os/StagingFolders.h"
#include "os/SystemLog.h"
#include "support/TestRoots.h"

#include "PluginLibraryBuilder.h"

#include <QDir>
#include <QFile>
#include <QMap>
#include <QProcess>
#include <QRegularExpression>
#include <QTemporaryDir>
#include <QUrl>

#include <filesystem>
#include <utility>

#include <sys/stat.h>

namespace korvane {
namespace {

using B = PluginLibraryBuilder;

int modeOf(const QString &path)
{
    struct stat info;
    return ::lstat(QFile::encodeName(path).constData(), &info) == 0 ? int(info.st_mode & 07777)
                                                                    : -1;
}

// Everything below path, keyed by relative path: permissions, then contents or link target.
QMap<QString, QByteArray> snapshot(const QString &path)
{
    QMap<QString, QByteArray> result;
    for (const QString &relative : QStringList{""} + LocalFileOperations().subpaths(path)) {
        QFile file(relative.isEmpty() ? path : path + "/" + relative);
        QByteArray &entry = result[relative] = QByteArray::number(modeOf(file.fileName()), 8);
        if (QFileInfo(file).isSymLink())
            entry +=
                " link " + std::filesystem::read_symlink(file.fileName().toStdString()).string();
        else if (file.open(QIODevice::ReadOnly)) // not a folder
            entry += " " + file.readAll();
    }
    return result;
}

// A plug-in bundle with some depth: executable, resources, a symbolic link and a read-only file.
QString makeRichBundle(const QString &folder, const QString &name)
{
    const QString bundle = B::makeVST(folder, name, MachO::universal2());
    B::makeFile(bundle + "/Contents/Resources", "en.lproj/Strings", {}, "strings");
    B::makeFile(bundle + "/Contents/Resources", "Presets", {}, QByteArray(200000, 'p'));
    QFile::setPermissions(bundle + "/Contents/Resources/Presets", QFile::ReadOwner);
    QFile::link("Resources/Presets", bundle + "/Contents/Presets");
    return bundle;
}

// The local disk with faults on request: every third file copied fails half-written, as on a full
// disk; `intruder` appears before the first copy, as another program could make it; a
// cross-device move's leftover will not be removed, as on a busy file system.
struct InjectedOperations : LocalFileOperations {
    using LocalFileOperations::LocalFileOperations;
    bool failEveryThirdCopy = false, stuckLeftover = false;
    QString intruder;
    int copied = 0;

    bool remove(const QString &path, FileError *error = nullptr) override
    {
        if (!stuckLeftover || !path.contains(StagingFolders::removingName() + "/"))
            return LocalFileOperations::remove(path, error);
        if (error)
            *error = FileError{path, QStringLiteral("Device or resource busy")};
        return false;
    }
    bool copyFile(const QString &from, const QString &to, FileError *error) override
    {
        if (!intruder.isEmpty())
            B::makeFile(std::exchange(intruder, {}), "Other", {}, "other");
        if (++copied % 3 != 0 || !failEveryThirdCopy)
            return LocalFileOperations::copyFile(from, to, error);
        QFile half(to);
        half.open(QIODevice::WriteOnly) && half.write("half");
        if (error)
            *error = FileError{to, QStringLiteral("No space left on device")};
        return false;
    }
};

class FileOperationsTest : public TestRoots {
protected:
    QStringList entries(const QString &folder) { return files.directoryContents(folder); }
    QString trash(const QString &path) const { return homePath(".local/share/Trash/" + path); }
    InjectedOperations files{roots()};
};

// Neither a move nor a copy replaces what is at the target, makes missing folders, writes into a
// locked one or into the item itself, or leaves half a copy behind.
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

    files.failEveryThirdCopy = true;
    FileError error;
    EXPECT_FALSE(files.copy(source, homePath("Echo copy.vst"), &error));
    EXPECT_EQ(error.reason, "No space left on device");
    EXPECT_FALSE(QFileInfo::exists(homePath("Echo copy.vst")));
}

// A plain file's or a bundle's sidecar follows it in every operation. A move whose sidecar cannot
// follow is not made: a stale sidecar at the target would speak for the item, so nothing moves
// while one lies there, and an item whose sidecar will not leave goes back to it.
TEST_F(FileOperationsTest, ASidecarGoesWhereItsItemGoesOrTheMoveIsNotMade)
{
    SystemLogCapture outer;
    for (const bool bundle : {false, true}) {
        SCOPED_TRACE(bundle ? "bundle" : "plain file");
        const QString on = homePath(bundle ? "Bundles" : "Files"), off = on + " (Disabled)";
        bundle ? makeRichBundle(on, "Echo.vst") : B::makeFile(on, "Echo.vst", {}, "plain");
        B::makeFile(on, "._Echo.vst", {}, "finder info");
        B::makeFolder(off);

        ASSERT_TRUE(files.move(on + "/Echo.vst", off + "/Echo.vst"));
        EXPECT_TRUE(entries(on).isEmpty());
        ASSERT_TRUE(files.copy(off + "/Echo.vst", on + "/Echo.vst"));
        EXPECT_EQ(snapshot(on), snapshot(off));
        ASSERT_TRUE(files.remove(on + "/Echo.vst"));
        EXPECT_TRUE(entries(on).isEmpty());

        B::makeFile(on, "._Echo.vst", {}, "another's");
        FileError error;
        EXPECT_FALSE(files.move(off + "/Echo.vst", on + "/Echo.vst", &error));
        EXPECT_EQ(error.path, on + "/._Echo.vst");
        EXPECT_EQ(error.code, EEXIST);
        EXPECT_EQ(readText(on + "/._Echo.vst"), "another's");
        EXPECT_EQ(entries(off), QStringList({"._Echo.vst", "Echo.vst"}));
        QFile::remove(on + "/._Echo.vst");
        ImmutableGuard stuck(off + "/._Echo.vst");
        if (!stuck.ok())
            continue;
        error = {};
        EXPECT_FALSE(files.move(off + "/Echo.vst", on + "/Echo.vst", &error));
        EXPECT_TRUE(error.path.endsWith("/._Echo.vst")) << error.path.toStdString();
        EXPECT_EQ(entries(off), QStringList({"._Echo.vst", "Echo.vst"}));
        EXPECT_TRUE(entries(on).isEmpty());
    }
    EXPECT_TRUE(outer.lines().isEmpty());

    // In a batch the folders' listings stand in for one look per item: they keep up with the
    // batch's own moves, whatever way a path names their folder, and a sidecar gone meanwhile is
    // no failure.
    const QString on = homePath("Batch"), off = on + " (Disabled)";
    for (const char *name : {"A.vst", "B.vst", "C.vst"})
        B::makeFile(on, name, {}, name);
    B::makeFile(on, "._A.vst", {}, "a");
    B::makeFile(on, "._C.vst", {}, "c");
    B::makeFolder(off);
    {
        const BatchScope batch(files);
        ASSERT_TRUE(files.move(on + "/A.vst", off + "/A.vst"));
        ASSERT_TRUE(files.move(off + "//A.vst", on + "/../Batch/./A.vst"));
        QFile::remove(on + "/._C.vst");
        ASSERT_TRUE(files.move(on + "/C.vst", off + "/C.vst"));
        ASSERT_TRUE(files.move(on + "/A.vst", off + "/A.vst"));
    }
    EXPECT_EQ(entries(on), QStringList{"B.vst"});
    EXPECT_EQ(entries(off), QStringList({"._A.vst", "A.vst", "C.vst"}));
    EXPECT_TRUE(outer.lines().isEmpty());
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

// A lock anywhere, on the bundle, deep inside it or on its folder, refuses the removal before a
// single file goes: a half-deleted plug-in is worse than one that stays.
TEST_F(FileOperationsTest, CreatesOneLevelAndRemovesAllOrNothing)
{
    FileError error;
    EXPECT_FALSE(files.createDirectory(homePath("a/b"), &error));
    EXPECT_EQ(error.path, homePath("a/b"));
    EXPECT_TRUE(files.createDirectory(homePath("a")));

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
    // Listings run in byte order; a linked folder is an entry, never a way in.
    const QString outside = B::makeFile(homePath("Outside"), "Kept");
    ASSERT_TRUE(QFile::link(homePath("Outside"), folder + "/Linked"));
    EXPECT_EQ(entries(folder), QStringList({"Echo.vst", "Linked", "Plain.vst", "a.vst"}));
    EXPECT_EQ(files.subpaths(folder).filter("Linked"), QStringList{"Linked"});
    EXPECT_TRUE(files.isDirectory(folder + "/Linked"));
    EXPECT_TRUE(files.remove(folder));
    EXPECT_FALSE(QFileInfo::exists(folder));
    EXPECT_TRUE(QFileInfo::exists(outside));
}

// The trash is made in the home, for its owner alone, and records where each item came from;
// without room for it nothing moves and nothing is written.
TEST_F(FileOperationsTest, TrashKeepsEveryItemAndWhereItCameFrom)
{
    ASSERT_TRUE(QDir(homePath(".local")).removeRecursively());
    const QString name = QStringLiteral("Echo Verb \u00fc.vst");
    const QString first = B::makeVST(rootPath("VST"), name, MachO::intel());
    B::makeFile(rootPath("VST"), "._" + name, {}, "finder info");
    const QString second = B::makeFile(rootPath("VST (Disabled)"), name, {}, "second");
    FileError error;
    EXPECT_FALSE(
        LocalFileOperations(Roots::at(root(), homePath("none"))).moveToTrash(first, &error));
    EXPECT_EQ(error.path, homePath("none"));
    EXPECT_FALSE(ImmutableGuard(home()).ok() && files.moveToTrash(first, &error)); // locked home
    EXPECT_TRUE(entries(home()).isEmpty());

    QString trashedTo;
    ASSERT_TRUE(files.moveToTrash(first, &error)) << qPrintable(error.reason);
    ASSERT_TRUE(files.moveToTrash(second, &error, &trashedTo)) << qPrintable(error.reason);
    EXPECT_EQ(trashedTo, trash("files/" + name + ".2"));
    EXPECT_EQ(readText(trashedTo), "second");
    B::makeFile(trash("files"), "Plain.vst", {}, "stray"); // an entry without a record stays
    ASSERT_TRUE(files.moveToTrash(B::makeFile(rootPath("VST"), "Plain.vst")));
    EXPECT_EQ(readText(trash("files/Plain.vst")), "stray");
    for (const char *folder : {".local", ".local/share", ".local/share/Trash",
                               ".local/share/Trash/files", ".local/share/Trash/info"})
        EXPECT_EQ(modeOf(homePath(folder)), 0700) << folder;
    EXPECT_TRUE(entries(rootPath("VST")).isEmpty());
    EXPECT_EQ(entries(trash("files")),
              QStringList({"._" + name, name, name + ".2", "Plain.vst", "Plain.vst.2"}));
    EXPECT_EQ(entries(trash("info")),
              QStringList({"._" + name + ".trashinfo", name + ".2.trashinfo", name + ".trashinfo",
                           "Plain.vst.2.trashinfo"}));
    const QString path = QString::fromLatin1(QUrl::toPercentEncoding(root(), "/"))
                         + "/VST%20%28Disabled%29/Echo%20Verb%20%C3%BC.vst";
    const QRegularExpression record("^\\[Trash Info\\]\nPath=" + QRegularExpression::escape(path)
                                    + "\nDeletionDate=\\d{4}-\\d\\d-\\d\\dT[\\d:]{8}\n$");
    const QString info = readText(trash("info/" + name + ".2.trashinfo"));
    EXPECT_TRUE(record.match(info).hasMatch()) << qPrintable(info);
}

// A tmpfs for the life of a test: moves between it and the roots cannot use rename(2).
struct Tmpfs {
    QTemporaryDir dir;
    const bool mounted =
        QProcess::execute("mount", {"-t", "tmpfs", "-o", "size=32m", "tmpfs", dir.path()}) == 0;
    ~Tmpfs()
    {
        if (mounted && QProcess::execute("umount", {dir.path()}) != 0)
            QProcess::execute("umount", {"-l", dir.path()});
    }
    QString path(const QString &relative) const { return dir.path() + "/" + relative; }
};

// A rich bundle on a tmpfs, and an empty folder in the roots.
class CrossDeviceMoveTest : public FileOperationsTest {
protected:
    void SetUp() override
    {
        TestRoots::SetUp();
        if (!tmpfs.mounted)
            GTEST_SKIP() << "cannot mount a tmpfs here; the cross-device move is not tested";
        source = makeRichBundle(tmpfs.path("VST"), "Echo.vst");
        before = snapshot(source);
        target = B::makeFolder(rootPath("VST"));
    }
    Tmpfs tmpfs;
    QString source, target;
    QMap<QString, QByteArray> before;
};

// A long copy tells how far it has come, byte by byte, up to the item's whole size; a rename on
// one file system copies nothing and says nothing. Once the item is whole at the target it has
// moved: a hidden leftover that will not go is reported, not taken for a failed move, and does not
// block the next move from that folder.
TEST_F(CrossDeviceMoveTest, ItemsArriveWholeAndSayHowFarTheyHaveCome)
{
    const qint64 size = 200000 + QByteArray("strings").size()
                        + QFileInfo(source + "/Contents/Info.plist").size()
                        + QFileInfo(source + "/Contents/MacOS/Plugin").size();
    QList<QPair<qint64, qint64>> reports;
    const CopyProgressScope scope(files, [&](qint64 copied, qint64 total) {
        reports.append({copied, total});
    });
    files.stuckLeftover = true;
    SystemLogCapture log;
    FileError error;
    ASSERT_TRUE(files.move(source, target + "/Echo.vst", &error)) << qPrintable(error.reason);
    EXPECT_EQ(snapshot(target + "/Echo.vst"), before);
    const QString hidden = StagingFolders::removingName();
    EXPECT_EQ(entries(tmpfs.path("VST")), QStringList{hidden});
    EXPECT_EQ(entries(tmpfs.path("VST/" + hidden)), QStringList{"Echo.vst"});
    ASSERT_EQ(log.lines().size(), 1);
    EXPECT_TRUE(log.lines().constFirst().contains("Device or resource busy"));
    ASSERT_GE(reports.size(), 4);
    EXPECT_EQ(reports.constLast(), qMakePair(size, size));
    files.stuckLeftover = false;
    reports.clear();
    ASSERT_TRUE(files.move(target + "/Echo.vst", rootPath("Echo.vst")));
    EXPECT_TRUE(reports.isEmpty());

    const ImmutableGuard stale(B::makeFile(rootPath(hidden + "/Echo.vst"), "Stale"));
    ASSERT_TRUE(files.move(rootPath("Echo.vst"), tmpfs.path("Echo.vst"), &error))
        << qPrintable(error.reason);
    EXPECT_EQ(snapshot(tmpfs.path("Echo.vst")), before);
    EXPECT_EQ(entries(root()), QStringList({hidden, "VST"})); // its fresh folder went with it

    // A plain-file plug-in keeps its Finder type on the way back.
    const QString plain = B::makeFile(target, "Plain.vst", "aPcs", "plain");
    ASSERT_TRUE(files.move(plain, tmpfs.path("VST/Plain.vst"), &error)) << qPrintable(error.reason);
    EXPECT_EQ(FinderInfo::hfsTypeString(tmpfs.path("VST/Plain.vst")), "'aPcs'");
    EXPECT_EQ(readText(tmpfs.path("VST/Plain.vst")), "plain");

    // Into the home trash from another file system.
    QString trashedTo;
    ASSERT_TRUE(files.moveToTrash(tmpfs.path("Echo.vst"), &error, &trashedTo))
        << qPrintable(error.reason);
    EXPECT_EQ(snapshot(trashedTo), before);
}

// The copy and the hidden source keep the item's own name inside their staging folders, so a name
// as long as a folder allows crosses too.
TEST_F(CrossDeviceMoveTest, ANameOf250BytesMovesAcrossAndBack)
{
    const QString name = QString(246, 'L') + ".vst";
    const QString away = tmpfs.path("VST/" + name), here = target + "/" + name;
    ASSERT_TRUE(QDir().rename(source, away));
    FileError error;
    ASSERT_TRUE(files.move(away, here, &error)) << qPrintable(error.reason);
    EXPECT_EQ(snapshot(here), before);
    EXPECT_TRUE(entries(tmpfs.path("VST")).isEmpty());
    ASSERT_TRUE(files.move(here, away, &error)) << qPrintable(error.reason);
    EXPECT_EQ(snapshot(away), before);
    EXPECT_TRUE(entries(target).isEmpty());
}

TEST_F(CrossDeviceMoveTest, FailuresLeaveTheSourceWholeAndNoDebris)
{
    auto expectOnlyTheSource = [&] {
        EXPECT_EQ(snapshot(source), before);
        EXPECT_TRUE(entries(target).isEmpty());
        EXPECT_EQ(entries(tmpfs.path("VST")), QStringList{"Echo.vst"});
    };
    files.failEveryThirdCopy = true; // the copy fails half-way
    FileError error;
    EXPECT_FALSE(files.move(source, target + "/Echo.vst", &error));
    EXPECT_EQ(error.reason, "No space left on device");
    expectOnlyTheSource();
    // Nor does the trash keep a record of an item that never arrived.
    EXPECT_FALSE(files.moveToTrash(source, &error));
    EXPECT_EQ(entries(trash("files")) + entries(trash("info")), QStringList());
    expectOnlyTheSource();
    files.failEveryThirdCopy = false;

    // The source is out of sight only between hiding it and naming the copy; when the copy
    // cannot take the name, the source comes back under its own.
    files.intruder = target + "/Echo.vst";
    EXPECT_FALSE(files.move(source, target + "/Echo.vst", &error));
    EXPECT_EQ(error.path, target + "/Echo.vst");
    EXPECT_EQ(readText(target + "/Echo.vst/Other"), "other");
    ASSERT_TRUE(QDir(target + "/Echo.vst").removeRecursively());
    expectOnlyTheSource();

    const QString stuck = source + "/Contents/Resources/en.lproj/Strings"; // cannot be removed
    ImmutableGuard guard(stuck);
    if (!guard.ok())
        GTEST_SKIP() << "chattr +i is not available on the tmpfs";
    EXPECT_FALSE(files.move(source, target + "/Echo.vst", &error));
    EXPECT_EQ(error.path, stuck);
    expectOnlyTheSource();
}

} // namespace
} // namespace korvane
