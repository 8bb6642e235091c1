#include "os/LibraryLock.h"
#include "core/FormatTable.h"
#include "os/LocalFileOperations.h"
#include "os/LockTable.h"
#include "support/TestRoots.h"

#include <QDir>
#include <QElapsedTimer>

#include <cerrno>
#include <thread>

#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>

namespace korvane {
namespace {

// A file system that keeps no locks, as some network ones do.
class LocklessDisk : public LocalFileOperations {
public:
    int lockFolder(int) override { return ENOLCK; }
};

class LibraryLockTest : public TestRoots {
protected:
    void SetUp() override
    {
        TestRoots::SetUp();
        plugIns = rootPath("Library/Audio/Plug-Ins");
        QDir().mkpath(plugIns + "/Components");
        QDir().mkpath(plugIns + "/VST");
    }
    // The folder's lock as another process would hold it: through a descriptor of its own.
    static int holdElsewhere(const QString &folder)
    {
        const int fd = ::open(QFile::encodeName(folder).constData(), O_RDONLY | O_DIRECTORY);
        return fd >= 0 && ::flock(fd, LOCK_EX | LOCK_NB) == 0 ? fd : -1;
    }
    static bool isFree(const QString &folder)
    {
        const int fd = holdElsewhere(folder);
        if (fd >= 0)
            ::close(fd);
        return fd >= 0;
    }
    QString plugIns;
};

TEST_F(LibraryLockTest, TheFolderHoldingEachPlugInFolderIsLockedOrItsNearestExistingAncestor)
{
    const Format &au = FormatTable::builtIn().at(TypeAU);
    const QStringList folders = locations().pluginFolders(au);
    EXPECT_EQ(folders, QStringList({plugIns + "/Components", plugIns + "/Components (Disabled)",
                                    homePath("Library/Audio/Plug-Ins/Components"),
                                    homePath("Library/Audio/Plug-Ins/Components (Disabled)")}));
    // The RTAS user-disabled content lies outside the Digidesign folder and is locked too.
    EXPECT_TRUE(locations()
                    .pluginFolders(FormatTable::builtIn())
                    .contains(homePath("Library/Application Support/Plug-Ins (Disabled)")));
    EXPECT_EQ(LibraryLock::lockedFolder(plugIns + "/Components (Disabled)"), plugIns);
    EXPECT_EQ(LibraryLock::lockedFolder(homePath("Library/Audio/Plug-Ins/VST")), home());

    {
        const LibraryLock lock(locks(), disk(), folders);
        ASSERT_TRUE(lock.isLocked()) << lock.failure().toStdString();
        EXPECT_FALSE(isFree(plugIns));
        EXPECT_FALSE(isFree(home()));
        EXPECT_TRUE(isFree(rootPath("Library")));
        // Holders in one process share: code that locks again inside a locked run goes on.
        {
            const LibraryLock again(locks(), disk(), {plugIns + "/VST"}, 0);
            EXPECT_TRUE(again.isLocked());
        }
        EXPECT_FALSE(isFree(plugIns));
    }
    EXPECT_TRUE(isFree(plugIns) && isFree(home()));
    EXPECT_EQ(QDir(plugIns).entryList(QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot),
              QStringList({"Components", "VST"})); // nothing left behind
}

// Another holder is waited for until the wait runs out, and named from the kernel's list.
TEST_F(LibraryLockTest, AnotherHolderIsWaitedForThenNamed)
{
    const int other = holdElsewhere(plugIns);
    ASSERT_GE(other, 0);
    {
        QElapsedTimer timer;
        timer.start();
        const LibraryLock lock(locks(), disk(), {plugIns + "/VST"}, 150);
        EXPECT_FALSE(lock.isLocked());
        EXPECT_GE(timer.elapsed(), 150);
        const QString named =
            QString("%1 (process %2)").arg(program_invocation_short_name).arg(::getpid());
        EXPECT_EQ(lock.holder(), named);
        EXPECT_EQ(lock.failure(), "the plug-in library is in use by " + named);
    }
    std::thread letGo([other] {
        std::this_thread::sleep_for(std::chrono::milliseconds(100));
        ::close(other);
    });
    const LibraryLock lock(locks(), disk(), {plugIns + "/VST"}, 5000);
    letGo.join();
    EXPECT_TRUE(lock.isLocked()) << lock.failure().toStdString();
}

// Two runs in one program (a table each) exclude each other as two programs do: the kernel ties
// a lock to the open folder, not to the process. Within a run the lock is shared at any depth and
// lets go with its last holder.
TEST_F(LibraryLockTest, TwoRunsInOneProgramExcludeEachOtherWhileOneHoldsAtAnyDepth)
{
    LocklessDisk lockless;
    for (FileOperations *files : std::initializer_list<FileOperations *>{&disk(), &lockless}) {
        SCOPED_TRACE(files == &lockless ? "lock file" : "flock");
        LockTable otherRun;
        {
            const LibraryLock outer(locks(), *files, {plugIns + "/VST"}, 0);
            ASSERT_TRUE(outer.isLocked()) << outer.failure().toStdString();
            {
                const LibraryLock inner(locks(), *files, {plugIns + "/Components"}, 0);
                EXPECT_TRUE(inner.isLocked());
            }
            EXPECT_EQ(locks().size(), 1);
            const LibraryLock other(otherRun, *files, {plugIns + "/Components"}, 100);
            EXPECT_FALSE(other.isLocked());
            EXPECT_TRUE(other.holder().contains(QString::number(::getpid())))
                << other.failure().toStdString();
            EXPECT_EQ(otherRun.size(), 0);
        }
        EXPECT_EQ(locks().size(), 0);
        const LibraryLock other(otherRun, *files, {plugIns + "/Components"}, 0);
        EXPECT_TRUE(other.isLocked()) << other.failure().toStdString();
    }
}

// A link (or a bind mount) may show one folder under two paths; locking it twice would wait on
// this process itself.
TEST_F(LibraryLockTest, OneFolderUnderTwoPathsIsLockedOnce)
{
    ASSERT_TRUE(QFile::link(plugIns, rootPath("Library/Audio/Linked")));
    QDir().mkpath(rootPath("Library/Audio/Linked/Components (Disabled)"));
    const LibraryLock lock(
        locks(), disk(), {plugIns + "/Components", rootPath("Library/Audio/Linked/Components")}, 0);
    EXPECT_TRUE(lock.isLocked()) << lock.failure().toStdString();
    EXPECT_FALSE(isFree(plugIns));
}

// Where the file system keeps no locks, a lock file in the folder stands in while it may be made,
// and goes with the lock; where it may not, nothing is locked and the folder is named.
TEST_F(LibraryLockTest, WithoutKernelLocksALockFileStandsInOrTheFolderIsNamed)
{
    LocklessDisk lockless;
    {
        const LibraryLock lock(locks(), lockless, {plugIns + "/VST"}, 0);
        ASSERT_TRUE(lock.isLocked()) << lock.failure().toStdString();
        EXPECT_TRUE(QFile::exists(plugIns + "/.korvane.lock"));
    }
    EXPECT_FALSE(QFile::exists(plugIns + "/.korvane.lock"));

    ImmutableGuard guard(plugIns);
    if (!guard.ok())
        GTEST_SKIP() << "chattr +i is not supported here";
    const LibraryLock lock(locks(), lockless, {plugIns + "/VST"}, 0);
    EXPECT_FALSE(lock.isLocked());
    EXPECT_TRUE(lock.holder().isEmpty());
    EXPECT_TRUE(lock.failure().contains('"' + plugIns + '"')) << lock.failure().toStdString();
}

} // namespace
} // namespace korvane
