#include "platform/Bundle.h"
#include "platform/LocalFileOperations.h"
#include "platform/SystemLog.h"
#include "support/TestRoots.h"

#include "PluginLibraryBuilder.h"

#include <QDir>
#include <QFile>
#include <QMap>
#include <QProcess>
#include <QRegularExpression>
#include <QTemporaryDir>
#include <QUrl>

#include <cstring>
#include <utility>

#include <sys/stat.h>
#include <unistd.h>

namespace korvane {
namespace {

using B = PluginLibraryBuilder;

// Everything below path, keyed by relative path: permissions, then contents or link target.
QMap<QString, QByteArray> snapshot(const QString &path)
{
    QMap<QString, QByteArray> result;
    for (const QString &relative : QStringList{""} + LocalFileOperations().subpaths(path)) {
        const QString name = relative.isEmpty() ? path : path + "/" + relative;
        const QByteArray full = QFile::encodeName(name);
        struct stat info;
        if (::lstat(full.constData(), &info) != 0)
            continue;
        QByteArray &entry = result[relative] = QByteArray::number(info.st_mode & 07777, 8) + " ";
        char target[512] = {};
        if (S_ISLNK(info.st_mode)) {
            entry += "link " + QByteArray(target, int(::readlink(full.constData(), target, 511)));
        } else if (!S_ISDIR(info.st_mode)) {
            QFile file(name);
            entry += file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray("unreadable");
        }
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

// Fails the third file copied and leaves half of it behind, as a full disk would.
class FailingOperations : public LocalFileOperations {
public:
    using LocalFileOperations::LocalFileOperations;
    int copied = 0;

protected:
    bool copyFile(const QString &from, const QString &to, FileError *error) override
    {
        if (++copied != 3)
            return LocalFileOperations::copyFile(from, to, error);
        QFile file(to);
        if (file.open(QIODevice::WriteOnly))
            file.write("half");
        if (error)
            *error = FileError{to, QStringLiteral("No space left on device")};
        return false;
    }
};

class FileOperationsTest : public TestRoots {
protected:
    FileOperations &ops() { return m_current ? *m_current : disk(); }
    QStringList entries(const QString &folder) { return ops().directoryContents(folder); }
    QString trash(const QString &relative) const
    {
        return homePath(".local/share/Trash/" + relative);
    }
    FileOperations *m_current = nullptr; // an injected failure, else the disk
};

int modeOf(const QString &path)
{
    struct stat info;
    return ::stat(QFile::encodeName(path).constData(), &info) == 0 ? int(info.st_mode & 07777) : -1;
}

TEST_F(FileOperationsTest, ListsSortedWithHiddenEntriesAndNoLinkedFolders)
{
    const QString folder = homePath("VST");
    for (const char *name : {"b", ".DS_Store", "Sub/Deep/a", "Sub copy"})
        B::makeFile(folder, name);
    ASSERT_TRUE(QFile::link(folder + "/Sub", folder + "/Linked"));
    ASSERT_TRUE(QFile::link(folder + "/nowhere", folder + "/Dangling"));

    EXPECT_EQ(entries(folder),
              QStringList({".DS_Store", "Dangling", "Linked", "Sub", "Sub copy", "b"}));
    EXPECT_EQ(ops().subpaths(folder), QStringList({".DS_Store", "Dangling", "Linked", "Sub",
                                                   "Sub/Deep", "Sub/Deep/a", "Sub copy", "b"}));
    EXPECT_TRUE(entries(folder + "/b").isEmpty());
    EXPECT_TRUE(ops().isDirectory(folder + "/Linked"));
    EXPECT_FALSE(ops().exists(folder + "/Dangling"));
}

TEST_F(FileOperationsTest, MoveNeverReplacesInventsFoldersOrLosesTheSource)
{
    const QString folder = homePath("VST");
    const QString source = B::makeFile(folder, "A.vst", {}, "mine");
    const QString occupied = B::makeFile(folder + " (Disabled)", "A.vst", {}, "theirs");
    const QString orphan = homePath("Gone/Deeper/A.vst");
    for (const QString &target : {occupied, orphan}) {
        FileError error;
        EXPECT_FALSE(ops().move(source, target, &error));
        EXPECT_EQ(error.path, target);
        EXPECT_FALSE(error.reason.isEmpty());
    }
    EXPECT_EQ(readText(source), "mine");
    EXPECT_EQ(readText(occupied), "theirs");
    EXPECT_FALSE(QFileInfo::exists(homePath("Gone")));

    const QString bundle = makeRichBundle(rootPath("VST"), "Echo.vst");
    const auto before = snapshot(bundle);
    const QString locked = B::makeFolder(rootPath("VST (Disabled)"));
    ImmutableGuard guard(locked);
    if (!guard.ok())
        GTEST_SKIP() << "chattr +i is not available here";
    EXPECT_FALSE(ops().move(bundle, locked + "/Echo.vst"));
    EXPECT_EQ(snapshot(bundle), before);
    EXPECT_TRUE(entries(locked).isEmpty());
}

// A plain file's or a bundle's sidecar follows it in every operation; where it cannot (another
// sidecar holds its name at the target) the item still goes and the sidecar stays, unreplaced.
TEST_F(FileOperationsTest, ASidecarGoesWhereItsItemGoesButNeverHoldsItBack)
{
    for (const bool bundle : {false, true}) {
        SCOPED_TRACE(bundle ? "bundle" : "plain file");
        const QString on = homePath(bundle ? "Bundles" : "Files"), off = on + " (Disabled)";
        bundle ? makeRichBundle(on, "Echo.vst") : B::makeFile(on, "Echo.vst", {}, "plain");
        B::makeFile(on, "._Echo.vst", {}, "finder info");
        B::makeFolder(off);

        ASSERT_TRUE(ops().move(on + "/Echo.vst", off + "/Echo.vst"));
        EXPECT_TRUE(entries(on).isEmpty());
        ASSERT_TRUE(ops().copy(off + "/Echo.vst", on + "/Echo.vst"));
        EXPECT_EQ(entries(on), QStringList({"._Echo.vst", "Echo.vst"}));
        EXPECT_EQ(readText(on + "/._Echo.vst"), "finder info");
        ASSERT_TRUE(ops().remove(on + "/Echo.vst"));
        EXPECT_TRUE(entries(on).isEmpty());

        B::makeFile(on, "._Echo.vst", {}, "another's");
        SystemLogCapture log;
        ASSERT_TRUE(ops().move(off + "/Echo.vst", on + "/Echo.vst"));
        EXPECT_EQ(readText(on + "/._Echo.vst"), "another's");
        EXPECT_EQ(entries(off), QStringList{"._Echo.vst"});
        EXPECT_EQ(log.lines().size(), 1);
    }
}

TEST_F(FileOperationsTest, CopyKeepsTheTreeAndNeverOverwritesOrLeavesHalfACopy)
{
    const QString source = makeRichBundle(homePath("VST"), "Echo.vst");
    ASSERT_TRUE(ops().copy(source, homePath("VST/Copy.vst")));
    EXPECT_EQ(snapshot(homePath("VST/Copy.vst")), snapshot(source));

    const QString existing = B::makeFile(homePath("VST"), "Other.vst", {}, "keep me");
    FileError error;
    EXPECT_FALSE(ops().copy(source, existing, &error));
    EXPECT_EQ(error.path, existing);
    EXPECT_EQ(readText(existing), "keep me");
    EXPECT_FALSE(ops().copy(source, source + "/Contents/Inside"));
    EXPECT_FALSE(QFileInfo::exists(source + "/Contents/Inside"));

    FailingOperations failing(roots());
    m_current = &failing;
    EXPECT_FALSE(ops().copy(source, homePath("Echo copy.vst"), &error));
    EXPECT_EQ(error.reason, "No space left on device");
    EXPECT_FALSE(QFileInfo::exists(homePath("Echo copy.vst")));
}

// A lock anywhere, on the bundle, deep inside it or on its folder, refuses the removal before a
// single file goes: a half-deleted plug-in is worse than one that stays.
TEST_F(FileOperationsTest, CreatesOneLevelAndRemovesAllOrNothing)
{
    FileError error;
    EXPECT_FALSE(ops().createDirectory(homePath("a/b"), &error));
    EXPECT_EQ(error.path, homePath("a/b"));
    EXPECT_TRUE(ops().createDirectory(homePath("a")));

    const QString folder = homePath("VST");
    const QString bundle = makeRichBundle(folder, "Echo.vst");
    const QString plain = B::makeFile(folder, "Plain.vst");
    const auto before = snapshot(folder);
    EXPECT_TRUE(ops().isDeletable(plain));
    for (const QString &locked :
         {bundle, bundle + "/Contents/Info.plist", bundle + "/Contents/MacOS",
          bundle + "/Contents/Resources/en.lproj/Strings", folder}) {
        SCOPED_TRACE(qPrintable(locked));
        ImmutableGuard guard(locked);
        if (!guard.ok())
            GTEST_SKIP() << "chattr +i is not available here";
        EXPECT_FALSE(ops().isDeletable(locked == folder ? plain : locked));
        EXPECT_FALSE(ops().remove(bundle, &error));
        EXPECT_EQ(error.path, locked);
        EXPECT_FALSE(locked == folder && ops().remove(plain));
        EXPECT_EQ(snapshot(folder), before);
    }
    EXPECT_TRUE(ops().remove(folder));
    EXPECT_FALSE(QFileInfo::exists(folder));
}

// The trash is made in the home, for its owner alone, and records where each item came from.
TEST_F(FileOperationsTest, TrashKeepsEveryItemAndWhereItCameFrom)
{
    ASSERT_TRUE(QDir(homePath(".local")).removeRecursively());
    const QString name = QStringLiteral("Echo Verb \u00fc.vst");
    const QString first = B::makeVST(rootPath("VST"), name, MachO::intel());
    B::makeFile(rootPath("VST"), "._" + name, {}, "finder info");
    const QString second = B::makeFile(rootPath("VST (Disabled)"), name, {}, "second");

    FileError error;
    QString trashedTo;
    ASSERT_TRUE(ops().moveToTrash(first, &error, &trashedTo)) << error.reason.toStdString();
    EXPECT_EQ(trashedTo, trash("files/" + name));
    for (const char *folder : {".local", ".local/share", ".local/share/Trash",
                               ".local/share/Trash/files", ".local/share/Trash/info"})
        EXPECT_EQ(modeOf(homePath(folder)), 0700) << folder;
    ASSERT_TRUE(ops().moveToTrash(second, &error, &trashedTo)) << error.reason.toStdString();
    EXPECT_EQ(trashedTo, trash("files/" + name + ".2"));
    EXPECT_EQ(readText(trashedTo), "second");

    // A stray entry without a record keeps its name and contents.
    B::makeFile(trash("files"), "Plain.vst", {}, "stray");
    ASSERT_TRUE(ops().moveToTrash(B::makeFile(rootPath("VST"), "Plain.vst"), &error, &trashedTo));
    EXPECT_EQ(trashedTo, trash("files/Plain.vst.2"));
    EXPECT_EQ(readText(trash("files/Plain.vst")), "stray");

    EXPECT_EQ(entries(rootPath("VST")), QStringList());
    EXPECT_EQ(entries(trash("files")),
              QStringList({"._" + name, name, name + ".2", "Plain.vst", "Plain.vst.2"}));
    EXPECT_EQ(entries(trash("info")),
              QStringList({"._" + name + ".trashinfo", name + ".2.trashinfo", name + ".trashinfo",
                           "Plain.vst.2.trashinfo"}));
    const QString path = QString::fromLatin1(QUrl::toPercentEncoding(root(), "/"))
                         + "/VST%20%28Disabled%29/Echo%20Verb%20%C3%BC.vst";
    const QRegularExpression record(
        "^\\[Trash Info\\]\nPath=" + QRegularExpression::escape(path)
        + "\nDeletionDate=\\d{4}-\\d\\d-\\d\\dT\\d\\d:\\d\\d:\\d\\d\n$");
    EXPECT_TRUE(record.match(readText(trash("info/" + name + ".2.trashinfo"))).hasMatch())
        << readText(trash("info/" + name + ".2.trashinfo")).toStdString();
}

TEST_F(FileOperationsTest, WithoutRoomForATrashNothingMovesAndNothingIsWritten)
{
    const QString item = B::makeFile(rootPath("VST"), "Echo.vst", {}, "mine");
    FileError error;
    const QString missing = homePath("missing");
    EXPECT_FALSE(LocalFileOperations(Roots::at(root(), missing)).moveToTrash(item, &error));
    EXPECT_EQ(error.path, missing);
    EXPECT_EQ(error.reason, "There is no trash: the home folder does not exist");
    EXPECT_FALSE(QFileInfo::exists(missing));

    ASSERT_TRUE(QDir(homePath(".local")).removeRecursively());
    ImmutableGuard guard(home());
    if (!guard.ok())
        GTEST_SKIP() << "chattr +i is not available here";
    EXPECT_FALSE(ops().moveToTrash(item, &error));
    EXPECT_EQ(error.path, homePath(".local"));
    EXPECT_TRUE(error.reason.startsWith("Cannot create the trash folder: "))
        << qPrintable(error.reason);
    EXPECT_TRUE(entries(home()).isEmpty());
    EXPECT_EQ(readText(item), "mine");
}

// Moves between a tmpfs and the test roots, where rename(2) cannot help.
class CrossDeviceMoveTest : public FileOperationsTest {
protected:
    void SetUp() override
    {
        TestRoots::SetUp();
        ASSERT_TRUE(m_mountPoint.isValid());
        const QStringList arguments{"-t", "tmpfs", "-o", "size=32m", "tmpfs", m_mountPoint.path()};
        m_mounted = QProcess::execute("mount", arguments) == 0;
        if (!m_mounted)
            GTEST_SKIP() << "cannot mount a tmpfs here; the cross-device move is not tested";
    }
    void TearDown() override
    {
        if (m_mounted && QProcess::execute("umount", {m_mountPoint.path()}) != 0)
            QProcess::execute("umount", {"-l", m_mountPoint.path()});
        TestRoots::TearDown();
    }
    QString mounted(const QString &relative) const { return m_mountPoint.path() + "/" + relative; }

private:
    QTemporaryDir m_mountPoint;
    bool m_mounted = false;
};

TEST_F(CrossDeviceMoveTest, BundleArrivesWholeInOnePlace)
{
    const QString source = makeRichBundle(mounted("VST"), "Echo.vst");
    const auto before = snapshot(source);
    const QString folder = B::makeFolder(rootPath("VST"));
    FileError error;
    ASSERT_TRUE(ops().move(source, folder + "/Echo.vst", &error)) << error.reason.toStdString();
    EXPECT_EQ(snapshot(folder + "/Echo.vst"), before);
    EXPECT_TRUE(entries(mounted("VST")).isEmpty());
    EXPECT_EQ(entries(folder), QStringList{"Echo.vst"});

    // A plain-file plug-in keeps its Finder type on the way back.
    const QString plain = B::makeFile(folder, "Plain.vst", "aPcs", "plain");
    ASSERT_TRUE(ops().move(plain, mounted("VST/Plain.vst"), &error)) << error.reason.toStdString();
    EXPECT_EQ(FinderInfo::hfsTypeString(mounted("VST/Plain.vst")), "'aPcs'");
    EXPECT_EQ(readText(mounted("VST/Plain.vst")), "plain");

    // Into the home trash from another file system, with its sidecar and a record for each.
    const QString trashed = makeRichBundle(mounted("VST"), "Old.vst");
    const auto old = snapshot(trashed);
    B::makeFile(mounted("VST"), "._Old.vst", {}, "finder info");
    QString trashedTo;
    ASSERT_TRUE(ops().moveToTrash(trashed, &error, &trashedTo)) << error.reason.toStdString();
    EXPECT_EQ(snapshot(trashedTo), old);
    EXPECT_EQ(entries(homePath(".local/share/Trash/files")), QStringList({"._Old.vst", "Old.vst"}));
    EXPECT_EQ(entries(homePath(".local/share/Trash/info")),
              QStringList({"._Old.vst.trashinfo", "Old.vst.trashinfo"}));
    EXPECT_EQ(entries(mounted("VST")), QStringList{"Plain.vst"});
}

// A long copy tells how far it has come, byte by byte, up to the item's whole size; a rename on
// one file system copies nothing and says nothing.
TEST_F(CrossDeviceMoveTest, ACopyingMoveReportsItsBytesAndARenameReportsNone)
{
    const QString source = makeRichBundle(mounted("VST"), "Echo.vst");
    B::makeFile(source + "/Contents/Resources", "Samples", {}, QByteArray(300000, 's'));
    const qint64 size = 200000 + 300000 + QFileInfo(source + "/Contents/Info.plist").size()
                        + QFileInfo(source + "/Contents/MacOS/Plugin").size()
                        + QByteArray("strings").size();
    QList<QPair<qint64, qint64>> reports;
    const CopyProgressScope scope(ops(), [&](qint64 copied, qint64 total) {
        reports.append({copied, total});
    });
    const QString folder = B::makeFolder(rootPath("VST"));
    ASSERT_TRUE(ops().move(source, folder + "/Echo.vst"));
    ASSERT_GE(reports.size(), 4); // the two large files take several blocks each
    for (qsizetype i = 1; i < reports.size(); ++i)
        EXPECT_GT(reports.at(i).first, reports.at(i - 1).first);
    EXPECT_EQ(reports.constLast(), qMakePair(size, size));

    reports.clear();
    ASSERT_TRUE(ops().move(folder + "/Echo.vst", rootPath("Echo.vst")));
    EXPECT_TRUE(reports.isEmpty());
    ASSERT_TRUE(ops().copy(rootPath("Echo.vst"), mounted("Copy.vst")));
    EXPECT_EQ(reports.constLast(), qMakePair(size, size));
    const qsizetype copyReports = reports.size();
    ops().setCopyProgress({});
    ASSERT_TRUE(ops().copy(rootPath("Echo.vst"), mounted("Again.vst")));
    EXPECT_EQ(reports.size(), copyReports);
}

// Fails the removal of what a cross-device move leaves behind, as a busy file system would.
class StuckLeftoverOperations : public LocalFileOperations {
public:
    using LocalFileOperations::LocalFileOperations;
    bool remove(const QString &path, FileError *error) override
    {
        if (!path.endsWith(".korvane-removing"))
            return LocalFileOperations::remove(path, error);
        if (error)
            *error = FileError{path, QStringLiteral("Device or resource busy")};
        return false;
    }
};

// Once the item is whole at the target it has moved: a hidden leftover that will not go is
// reported, not taken for a failed move, and does not block the next move from that folder.
TEST_F(CrossDeviceMoveTest, ALeftoverThatWillNotGoNeitherFailsNorBlocksAMove)
{
    const QString source = makeRichBundle(mounted("VST"), "Echo.vst");
    const auto before = snapshot(source);
    const QString folder = B::makeFolder(rootPath("VST"));
    StuckLeftoverOperations stuck(roots());
    m_current = &stuck;
    SystemLogCapture log;
    FileError error;
    EXPECT_TRUE(ops().move(source, folder + "/Echo.vst", &error)) << error.reason.toStdString();
    EXPECT_EQ(snapshot(folder + "/Echo.vst"), before);
    EXPECT_EQ(entries(mounted("VST")), QStringList{".Echo.vst.korvane-removing"});
    ASSERT_EQ(log.lines().size(), 1);
    EXPECT_TRUE(log.lines().constFirst().contains("Device or resource busy"));
    m_current = nullptr;

    const QString stale = B::makeFile(folder + "/.Echo.vst.korvane-removing", "Stale");
    ImmutableGuard guard(stale);
    if (!guard.ok())
        GTEST_SKIP() << "chattr +i is not available here";
    EXPECT_TRUE(ops().move(folder + "/Echo.vst", mounted("Echo.vst"), &error))
        << error.reason.toStdString();
    EXPECT_EQ(snapshot(mounted("Echo.vst")), before);
    EXPECT_EQ(entries(folder), QStringList{".Echo.vst.korvane-removing"});
}

// Puts another item at the target while the copy is under way, as another program could.
class IntrudingOperations : public LocalFileOperations {
public:
    using LocalFileOperations::LocalFileOperations;
    QString intruder;

protected:
    bool copyFile(const QString &from, const QString &to, FileError *error) override
    {
        if (!intruder.isEmpty())
            B::makeFile(std::exchange(intruder, {}), "Other", {}, "other");
        return LocalFileOperations::copyFile(from, to, error);
    }
};

// The source is out of sight only between hiding it and naming the copy; when the copy cannot take
// the name, the source comes back under its own.
TEST_F(CrossDeviceMoveTest, ATargetTakenDuringTheCopyLeavesTheSourceWhereItWas)
{
    const QString source = makeRichBundle(mounted("VST"), "Echo.vst");
    const auto before = snapshot(source);
    const QString folder = B::makeFolder(rootPath("VST"));
    IntrudingOperations intruding(roots());
    intruding.intruder = folder + "/Echo.vst";
    m_current = &intruding;
    FileError error;
    EXPECT_FALSE(ops().move(source, folder + "/Echo.vst", &error));
    EXPECT_EQ(error.path, folder + "/Echo.vst");
    EXPECT_EQ(error.reason, QString::fromLocal8Bit(std::strerror(EEXIST)));
    EXPECT_EQ(snapshot(source), before);
    EXPECT_EQ(entries(mounted("VST")), QStringList{"Echo.vst"});
    EXPECT_EQ(entries(folder), QStringList{"Echo.vst"});
    EXPECT_EQ(readText(folder + "/Echo.vst/Other"), "other");
}

TEST_F(CrossDeviceMoveTest, FailuresLeaveTheSourceWholeAndNoDebris)
{
    const QString source = makeRichBundle(mounted("VST"), "Echo.vst");
    const auto before = snapshot(source);
    const QString folder = B::makeFolder(rootPath("VST"));
    auto expectOnlyTheSource = [&] {
        EXPECT_EQ(snapshot(source), before);
        EXPECT_TRUE(entries(folder).isEmpty());
        EXPECT_EQ(entries(mounted("VST")), QStringList{"Echo.vst"});
    };

    FailingOperations failing(roots()); // the copy fails half-way
    m_current = &failing;
    FileError error;
    EXPECT_FALSE(ops().move(source, folder + "/Echo.vst", &error));
    EXPECT_EQ(failing.copied, 3);
    EXPECT_EQ(error.reason, "No space left on device");
    expectOnlyTheSource();
    // Nor does the trash keep a record of an item that never arrived.
    failing.copied = 0;
    EXPECT_FALSE(ops().moveToTrash(source, &error));
    EXPECT_EQ(error.reason, "No space left on device");
    EXPECT_TRUE(entries(homePath(".local/share/Trash/files")).isEmpty());
    EXPECT_TRUE(entries(homePath(".local/share/Trash/info")).isEmpty());
    expectOnlyTheSource();
    m_current = nullptr;

    const QString stuck = source + "/Contents/Resources/en.lproj/Strings"; // cannot be removed
    ImmutableGuard guard(stuck);
    if (!guard.ok())
        GTEST_SKIP() << "chattr +i is not available on the tmpfs";
    EXPECT_FALSE(ops().move(source, folder + "/Echo.vst", &error));
    EXPECT_EQ(error.path, stuck);
    expectOnlyTheSource();
}

} // namespace
} // namespace korvane
