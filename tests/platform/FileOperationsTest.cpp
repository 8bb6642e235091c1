#include "platform/Bundle.h"
#include "platform/FileOperations.h"
#include "support/TestRoots.h"

#include "PluginLibraryBuilder.h"

#include <QDir>
#include <QFile>
#include <QMap>
#include <QProcess>
#include <QTemporaryDir>

#include <sys/stat.h>
#include <unistd.h>

namespace korvane {
namespace {

// Everything below path: kind, permissions, contents or link target, keyed by relative path.
QMap<QString, QByteArray> snapshot(const QString &path)
{
    QMap<QString, QByteArray> result;
    const QStringList entries = QStringList{QString()} + FileOperations::current().subpaths(path);
    for (const QString &relative : entries) {
        const QString full = relative.isEmpty() ? path : path + "/" + relative;
        struct stat info;
        if (::lstat(QFile::encodeName(full).constData(), &info) != 0)
            continue;
        QByteArray description = QByteArray::number(info.st_mode & 07777, 8) + " ";
        if (S_ISLNK(info.st_mode)) {
            char target[512] = {};
            description += "link " + QByteArray(target, int(::readlink(QFile::encodeName(full).constData(), target, 511)));
        } else if (S_ISDIR(info.st_mode)) {
            description += "folder";
        } else {
            QFile file(full);
            description += file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray("unreadable");
        }
        result.insert(relative, description);
    }
    return result;
}

// A plug-in bundle with some depth: executable, resources, a symbolic link and a read-only file.
QString makeRichBundle(const QString &folder, const QString &name)
{
    const QString bundle = PluginLibraryBuilder::makeVST(folder, name, MachO::universal2());
    PluginLibraryBuilder::makeFile(bundle + "/Contents/Resources", "en.lproj/Strings", {}, "strings");
    PluginLibraryBuilder::makeFile(bundle + "/Contents/Resources", "Presets", {}, QByteArray(200000, 'p'));
    QFile::setPermissions(bundle + "/Contents/Resources/Presets", QFile::ReadOwner | QFile::ReadGroup);
    QFile::link("Resources/Presets", bundle + "/Contents/Presets");
    return bundle;
}

QStringList entriesOf(const QString &folder)
{
    return FileOperations::current().directoryContents(folder);
}

// Fails the n-th file copied, as a full disk or an I/O error would.
class FailingOperations : public FileOperations {
public:
    explicit FailingOperations(int failAt) : m_failAt(failAt) {}
    int copied = 0;

protected:
    bool copyFile(const QString &from, const QString &to, FileError *error) override
    {
        if (++copied == m_failAt) {
            // Leave a half-written file behind, as a real failure would.
            QFile file(to);
            if (file.open(QIODevice::WriteOnly))
                file.write("half");
            if (error)
                *error = FileError{to, QStringLiteral("No space left on device")};
            return false;
        }
        return FileOperations::copyFile(from, to, error);
    }

private:
    int m_failAt;
};

class FileListingTest : public TestRoots {};

TEST_F(FileListingTest, ListsSortedWithHiddenEntriesAndNoLinkedFolders)
{
    const QString folder = homePath("VST");
    PluginLibraryBuilder::makeFile(folder, "b");
    PluginLibraryBuilder::makeFile(folder, ".DS_Store");
    PluginLibraryBuilder::makeFile(folder, "Sub/Deep/a");
    PluginLibraryBuilder::makeFile(folder, "Sub copy");
    ASSERT_TRUE(QFile::link(folder + "/Sub", folder + "/Linked"));
    ASSERT_TRUE(QFile::link(folder + "/nowhere", folder + "/Dangling"));

    FileOperations &ops = FileOperations::current();
    EXPECT_EQ(ops.directoryContents(folder), QStringList({".DS_Store", "Dangling", "Linked", "Sub", "Sub copy", "b"}));
    EXPECT_EQ(ops.subpaths(folder), QStringList({".DS_Store", "Dangling", "Linked", "Sub", "Sub/Deep", "Sub/Deep/a",
                                                 "Sub copy", "b"}));
    EXPECT_TRUE(ops.directoryContents(folder + "/b").isEmpty());
    EXPECT_TRUE(ops.directoryContents(folder + "/missing").isEmpty());

    EXPECT_TRUE(ops.exists(folder + "/Linked"));
    EXPECT_TRUE(ops.isDirectory(folder + "/Linked"));
    EXPECT_FALSE(ops.exists(folder + "/Dangling"));
    EXPECT_FALSE(ops.isDirectory(folder + "/b"));
}

class FileOperationsTest : public TestRoots {
protected:
    FileOperations &ops() { return FileOperations::current(); }
};

TEST_F(FileOperationsTest, MoveIntoLockedFolderKeepsSource)
{
    const QString source = makeRichBundle(rootPath("Library/Audio/Plug-Ins/VST"), "Echo.vst");
    const auto before = snapshot(source);
    const QString disabled = PluginLibraryBuilder::makeFolder(rootPath("Library/Audio/Plug-Ins/VST (Disabled)"));

    ImmutableGuard guard(disabled);
    if (!guard.ok())
        GTEST_SKIP() << "chattr +i is not available here";
    FileError error;
    EXPECT_FALSE(ops().move(source, disabled + "/Echo.vst", &error));
    EXPECT_FALSE(error.reason.isEmpty());
    EXPECT_EQ(snapshot(source), before);
    EXPECT_TRUE(entriesOf(disabled).isEmpty());
}

TEST_F(FileOperationsTest, MoveNeverReplacesOrInventsFolders)
{
    const QString folder = homePath("VST");
    const QString source = PluginLibraryBuilder::makeFile(folder, "A.vst", {}, "mine");
    const QString occupied = PluginLibraryBuilder::makeFile(folder + " (Disabled)", "A.vst", {}, "theirs");

    FileError error;
    EXPECT_FALSE(ops().move(source, occupied, &error));
    EXPECT_EQ(error.path, occupied);
    EXPECT_FALSE(error.reason.isEmpty());
    EXPECT_EQ(readText(source), "mine");
    EXPECT_EQ(readText(occupied), "theirs");

    const QString orphan = homePath("Gone/Deeper/A.vst");
    EXPECT_FALSE(ops().move(source, orphan, &error));
    EXPECT_EQ(error.path, orphan);
    EXPECT_EQ(readText(source), "mine");
    EXPECT_FALSE(QFileInfo::exists(homePath("Gone")));

    EXPECT_FALSE(ops().move(folder + "/Missing.vst", folder + "/Other.vst", &error));
    EXPECT_EQ(error.path, folder + "/Missing.vst");

    // A plain file keeps its Finder type, and a sidecar travels with its file.
    ASSERT_TRUE(FinderInfo::setFileType(source, 0x61506373));
    ASSERT_TRUE(ops().move(source, folder + "/B.vst", &error));
    EXPECT_EQ(FinderInfo::hfsTypeString(folder + "/B.vst"), "'aPcs'");
    PluginLibraryBuilder::makeFile(folder, "._B.vst", {}, "sidecar");
    ASSERT_TRUE(ops().move(folder + "/B.vst", folder + "/C.vst", &error));
    EXPECT_EQ(entriesOf(folder), QStringList({"._C.vst", "C.vst"}));
}

TEST_F(FileOperationsTest, CopyKeepsTreeAndNeverOverwrites)
{
    const QString source = makeRichBundle(homePath("VST"), "Echo.vst");
    const QString target = homePath("Copies/Echo.vst");
    PluginLibraryBuilder::makeFolder(homePath("Copies"));
    ASSERT_TRUE(ops().copy(source, target));
    EXPECT_EQ(snapshot(target), snapshot(source));

    const QString existing = PluginLibraryBuilder::makeFile(homePath("Copies"), "Other.vst", {}, "keep me");
    FileError error;
    EXPECT_FALSE(ops().copy(source, existing, &error));
    EXPECT_EQ(error.path, existing);
    EXPECT_EQ(readText(existing), "keep me");

    EXPECT_FALSE(ops().copy(source, source + "/Contents/Inside", &error));
    EXPECT_FALSE(QFileInfo::exists(source + "/Contents/Inside"));
}

TEST_F(FileOperationsTest, FailedCopyLeavesNoTarget)
{
    const QString source = makeRichBundle(homePath("VST"), "Echo.vst");
    FailingOperations failing(3);
    FileOperations::setCurrent(&failing);
    FileError error;
    EXPECT_FALSE(ops().copy(source, homePath("Echo copy.vst"), &error));
    EXPECT_EQ(error.reason, "No space left on device");
    EXPECT_FALSE(QFileInfo::exists(homePath("Echo copy.vst")));
}

TEST_F(FileOperationsTest, LockedItemsCannotBeRemoved)
{
    const QString folder = homePath("VST");
    const QString bundle = makeRichBundle(folder, "Echo.vst");
    const QString locked = bundle + "/Contents/Info.plist";
    const QString plain = PluginLibraryBuilder::makeFile(folder, "Plain.vst");
    EXPECT_TRUE(ops().isDeletable(plain));
    EXPECT_FALSE(ops().isDeletable(folder + "/Missing.vst"));

    {
        ImmutableGuard guard(locked);
        if (!guard.ok())
            GTEST_SKIP() << "chattr +i is not available here";
        EXPECT_FALSE(ops().isDeletable(locked));
        EXPECT_FALSE(ops().isWritable(locked));
        FileError error;
        EXPECT_FALSE(ops().remove(bundle, &error));
        EXPECT_EQ(error.path, locked);
        EXPECT_TRUE(QFileInfo::exists(locked));
    }
    {
        ImmutableGuard guard(folder);
        ASSERT_TRUE(guard.ok());
        EXPECT_FALSE(ops().isDeletable(plain));
        EXPECT_FALSE(ops().remove(plain));
        EXPECT_TRUE(QFileInfo::exists(plain));
    }
    EXPECT_TRUE(ops().remove(folder));
    EXPECT_FALSE(QFileInfo::exists(folder));
}

TEST_F(FileOperationsTest, CreatesOneLevelAndTrashesIntoHome)
{
    FileError error;
    EXPECT_FALSE(ops().createDirectory(homePath("a/b"), &error));
    EXPECT_EQ(error.path, homePath("a/b"));
    EXPECT_TRUE(ops().createDirectory(homePath("a")));
    EXPECT_TRUE(ops().isDirectory(homePath("a")));

    const QString bundle = makeRichBundle(homePath("VST"), "Old.vst");
    const auto before = snapshot(bundle);
    ASSERT_TRUE(ops().moveToTrash(bundle, &error)) << error.reason.toStdString();
    EXPECT_FALSE(QFileInfo::exists(bundle));
    EXPECT_EQ(snapshot(homePath(".local/share/Trash/files/Old.vst")), before);
    EXPECT_FALSE(ops().moveToTrash(bundle, &error));
}

// Moves between a tmpfs and the ext4 test roots, where rename(2) cannot help.
class CrossDeviceMoveTest : public TestRoots {
protected:
    void SetUp() override
    {
        TestRoots::SetUp();
        ASSERT_TRUE(m_mountPoint.isValid());
        m_mounted = QProcess::execute("mount", {"-t", "tmpfs", "-o", "size=32m", "tmpfs", m_mountPoint.path()}) == 0;
        if (!m_mounted)
            GTEST_SKIP() << "cannot mount a tmpfs here; the cross-device move is not tested";
        struct stat mounted, roots;
        if (::stat(QFile::encodeName(m_mountPoint.path()).constData(), &mounted) != 0
            || ::stat(QFile::encodeName(root()).constData(), &roots) != 0 || mounted.st_dev == roots.st_dev)
            GTEST_SKIP() << "the tmpfs is not a file system of its own";
    }
    void TearDown() override
    {
        if (m_mounted && QProcess::execute("umount", {m_mountPoint.path()}) != 0)
            QProcess::execute("umount", {"-l", m_mountPoint.path()});
        TestRoots::TearDown();
    }
    QString mounted(const QString &relative) const { return m_mountPoint.path() + "/" + relative; }
    FileOperations &ops() { return FileOperations::current(); }

private:
    QTemporaryDir m_mountPoint;
    bool m_mounted = false;
};

TEST_F(CrossDeviceMoveTest, BundleArrivesWholeInOnePlace)
{
    const QString source = makeRichBundle(mounted("VST"), "Echo.vst");
    const auto before = snapshot(source);
    const QString folder = PluginLibraryBuilder::makeFolder(rootPath("Library/Audio/Plug-Ins/VST"));
    const QString target = folder + "/Echo.vst";

    FileError error;
    ASSERT_TRUE(ops().move(source, target, &error)) << error.reason.toStdString();
    EXPECT_EQ(snapshot(target), before);
    EXPECT_FALSE(QFileInfo::exists(source));
    EXPECT_TRUE(entriesOf(mounted("VST")).isEmpty());
    EXPECT_EQ(entriesOf(folder), QStringList{"Echo.vst"});

    // A plain-file plug-in keeps its Finder type on the way back.
    const QString plain = PluginLibraryBuilder::makeFile(folder, "Plain.vst", "aPcs", "plain");
    ASSERT_TRUE(ops().move(plain, mounted("VST/Plain.vst"), &error)) << error.reason.toStdString();
    EXPECT_EQ(FinderInfo::hfsTypeString(mounted("VST/Plain.vst")), "'aPcs'");
    EXPECT_EQ(readText(mounted("VST/Plain.vst")), "plain");
}

TEST_F(CrossDeviceMoveTest, FailedCopyLeavesSourceWholeAndNoDebris)
{
    const QString source = makeRichBundle(mounted("VST"), "Echo.vst");
    const auto before = snapshot(source);
    const QString folder = PluginLibraryBuilder::makeFolder(rootPath("Library/Audio/Plug-Ins/VST"));

    FailingOperations failing(3);
    FileOperations::setCurrent(&failing);
    FileError error;
    EXPECT_FALSE(ops().move(source, folder + "/Echo.vst", &error));
    EXPECT_EQ(failing.copied, 3);
    EXPECT_EQ(error.reason, "No space left on device");
    EXPECT_EQ(snapshot(source), before);
    EXPECT_TRUE(entriesOf(folder).isEmpty());
    EXPECT_EQ(entriesOf(mounted("VST")), QStringList{"Echo.vst"});
}

TEST_F(CrossDeviceMoveTest, SourceThatCannotGoStaysAndTargetIsTakenBack)
{
    const QString source = makeRichBundle(mounted("VST"), "Echo.vst");
    const auto before = snapshot(source);
    const QString folder = PluginLibraryBuilder::makeFolder(rootPath("Library/Audio/Plug-Ins/VST"));

    ImmutableGuard guard(source + "/Contents/Resources/en.lproj/Strings");
    if (!guard.ok())
        GTEST_SKIP() << "chattr +i is not available on the tmpfs";
    FileError error;
    EXPECT_FALSE(ops().move(source, folder + "/Echo.vst", &error));
    EXPECT_EQ(error.path, source + "/Contents/Resources/en.lproj/Strings");
    EXPECT_EQ(snapshot(source), before);
    EXPECT_TRUE(entriesOf(folder).isEmpty());
    EXPECT_EQ(entriesOf(mounted("VST")), QStringList{"Echo.vst"});
}

} // namespace
} // namespace korvane
