#include "os/SystemLog.h"
#include "support/TestRoots.h"

#include "DiskFixture.h"

#include <QFile>

// A plain file's or a bundle's sidecar follows it in every operation. A move whose sidecar cannot
// follow is not made: a stale sidecar at the target would speak for the item, so nothing moves
// while one lies there, and an item whose sidecar will not leave goes back to it.
namespace korvane {
namespace {

// Each case on a plain-file plug-in and on a bundle, each in folders of its own.
class SidecarsTest : public DiskFixture {
protected:
    struct Kind {
        bool bundle;
        QString on, off;
    };
    void SetUp() override
    {
        DiskFixture::SetUp();
        for (const bool bundle : {false, true}) {
            const QString on = homePath(bundle ? "Bundles" : "Files");
            kinds.append({bundle, on, B::makeFolder(on + " (Disabled)")});
        }
    }
    // Nothing a test here does is worth a line in the system log.
    void TearDown() override { EXPECT_TRUE(log.lines().isEmpty()); }
    // The plug-in and its sidecar in a folder.
    static void makeItem(const Kind &kind, const QString &folder)
    {
        kind.bundle ? makeRichBundle(folder, "Echo.vst")
                    : B::makeFile(folder, "Echo.vst", {}, "plain");
        B::makeFile(folder, "._Echo.vst", {}, "finder info");
    }
    SystemLogCapture log;
    QList<Kind> kinds;
};

TEST_F(SidecarsTest, ASidecarIsMovedCopiedAndRemovedWithItsItem)
{
    for (const Kind &kind : kinds) {
        SCOPED_TRACE(kind.bundle ? "bundle" : "plain file");
        const QString &on = kind.on, &off = kind.off;
        makeItem(kind, on);
        ASSERT_TRUE(files.move(on + "/Echo.vst", off + "/Echo.vst"));
        EXPECT_TRUE(entries(on).isEmpty());
        ASSERT_TRUE(files.copy(off + "/Echo.vst", on + "/Echo.vst"));
        EXPECT_EQ(snapshot(on), snapshot(off));
        ASSERT_TRUE(files.remove(on + "/Echo.vst"));
        EXPECT_TRUE(entries(on).isEmpty());
    }
}

TEST_F(SidecarsTest, AStaleSidecarAtTheTargetStopsTheMove)
{
    for (const Kind &kind : kinds) {
        SCOPED_TRACE(kind.bundle ? "bundle" : "plain file");
        makeItem(kind, kind.off);
        B::makeFile(kind.on, "._Echo.vst", {}, "another's");
        FileError error;
        EXPECT_FALSE(files.move(kind.off + "/Echo.vst", kind.on + "/Echo.vst", &error));
        EXPECT_EQ(error.path, kind.on + "/._Echo.vst");
        EXPECT_EQ(error.code, EEXIST);
        EXPECT_EQ(readText(kind.on + "/._Echo.vst"), "another's");
        EXPECT_EQ(entries(kind.off), QStringList({"._Echo.vst", "Echo.vst"}));
    }
}

TEST_F(SidecarsTest, AnItemWhoseSidecarWillNotLeaveStaysWithIt)
{
    for (const Kind &kind : kinds) {
        SCOPED_TRACE(kind.bundle ? "bundle" : "plain file");
        makeItem(kind, kind.off);
        B::makeFolder(kind.on);
        ImmutableGuard stuck(kind.off + "/._Echo.vst");
        if (!stuck.ok())
            GTEST_SKIP() << "chattr +i is not available here";
        FileError error;
        EXPECT_FALSE(files.move(kind.off + "/Echo.vst", kind.on + "/Echo.vst", &error));
        EXPECT_TRUE(error.path.endsWith("/._Echo.vst")) << error.path.toStdString();
        EXPECT_EQ(entries(kind.off), QStringList({"._Echo.vst", "Echo.vst"}));
        EXPECT_TRUE(entries(kind.on).isEmpty());
    }
}

// In a batch the folders' listings stand in for one look per item: they keep up with the batch's
// own moves, whatever way a path names their folder, and a sidecar gone meanwhile is no failure.
TEST_F(SidecarsTest, InABatchTheListingsKeepUpWithTheBatchsOwnMoves)
{
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
}

} // namespace
} // namespace korvane
