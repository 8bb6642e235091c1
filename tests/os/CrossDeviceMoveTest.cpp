#include "codec/FinderInfo.h"
#include "os/SystemLog.h"
#include "support/TestRoots.h"

#include "DiskFixture.h"

#include <QDir>
#include <QProcess>
#include <QTemporaryDir>

// Moves between file systems, where rename(2) cannot help: a copy, then the source removed.
namespace korvane {
namespace {

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
class CrossDeviceMoveTest : public DiskFixture {
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
