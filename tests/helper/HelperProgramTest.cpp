#include "HelperFixture.h"

#include "os/LibraryLock.h"
#include "os/PathBytes.h"

#include <cerrno>
#include <sys/stat.h>

namespace korvane {
namespace {

using helper::Ending;
using helper::Move;

class HelperProgramTest : public HelperFixture {};

// A small tmpfs for the life of a test, mounted as a plug-in folder (root's, 0755).
struct Tmpfs {
    explicit Tmpfs(const QString &at, const char *size) : path(at)
    {
        QDir().mkpath(at);
        mounted = QProcess::execute("mount", {"-t", "tmpfs", "-o",
                                              QString("size=%1,mode=0755").arg(size), "tmpfs", at})
                  == 0;
    }
    ~Tmpfs()
    {
        if (mounted && QProcess::execute("umount", {path}) != 0)
            QProcess::execute("umount", {"-l", path});
    }
    QString path;
    bool mounted = false;
};

// Switching off and on inside the system folders: a missing " (Disabled)" folder and subfolders
// are made as root's own, readable by all; a plug-in that is a link moves as the link, and one
// whose name is no UTF-8 by its own bytes.
TEST_F(HelperProgramTest, MovesInsideTheSystemFoldersMakingTheTargetFolders)
{
    makeBundle(vst("Echo.vst"));
    makeBundle(vst("Vendor/Deep.vst"));
    makeBundle(auOff("Tape.component"));
    QDir().mkpath(au(""));
    QTemporaryDir elsewhere;
    makeBundle(elsewhere.path() + "/Real.vst");
    ASSERT_TRUE(QFile::link(elsewhere.path() + "/Real.vst", vst("Alias.vst")));
    const QByteArray oddName = "Bad\xff\xfe.vst";
    const QString odd = pathFromBytes(oddName);
    // Qt cannot remove a name it cannot decode: the temporary root would stay behind.
    const auto forget = [](const QString *path) { ::unlink(pathBytes(*path).constData()); };
    const QString oddMoved = vstOff(odd), oddLeft = vst(odd);
    const std::unique_ptr<const QString, decltype(forget)> cleanMoved(&oddMoved, forget);
    const std::unique_ptr<const QString, decltype(forget)> cleanLeft(&oddLeft, forget);
    writeText(vst("Bad.vst"), "odd");
    ASSERT_EQ(
        ::rename(QFile::encodeName(vst("Bad.vst")).constData(), pathBytes(vst(odd)).constData()),
        0);

    const QList<Move> moves{{vst("Echo.vst"), vstOff("Echo.vst")},
                            {vst("Vendor/Deep.vst"), vstOff("Vendor/Deep.vst")},
                            {auOff("Tape.component"), au("Tape.component")},
                            {vst("Alias.vst"), vstOff("Alias.vst")},
                            {vst(odd), vstOff(odd)}};
    const Run run = runHelper(moves);

    EXPECT_EQ(run.exit, helper::ExitAllMoved);
    ASSERT_EQ(run.lines.size(), 6);
    for (int i = 0; i < 5; ++i) {
        const helper::MoveResult result = run.line(i).result.value_or(helper::MoveResult{});
        EXPECT_EQ(result.move, moves.at(i));
        EXPECT_TRUE(result.ok) << qPrintable(result.error);
    }
    EXPECT_EQ(run.ending().kind, Ending::Done);
    EXPECT_EQ(run.ending().moved, 5);
    EXPECT_TRUE(isWholeBundle(vstOff("Echo.vst")) && !isThere(vst("Echo.vst")));
    EXPECT_TRUE(isWholeBundle(vstOff("Vendor/Deep.vst")) && !isThere(vst("Vendor/Deep.vst")));
    EXPECT_TRUE(isWholeBundle(au("Tape.component")));
    EXPECT_TRUE(QFileInfo(vstOff("Alias.vst")).isSymLink());
    EXPECT_TRUE(isWholeBundle(elsewhere.path() + "/Real.vst"));
    struct stat moved;
    EXPECT_EQ(::lstat(pathBytes(vstOff(odd)).constData(), &moved), 0);
    EXPECT_EQ(moved.st_size, 3);
    for (const QString &made : {folder(TypeVST, LocSystemDisabled), vstOff("Vendor")}) {
        struct stat info;
        ASSERT_EQ(::lstat(QFile::encodeName(made).constData(), &info), 0);
        EXPECT_EQ(info.st_uid, 0u);
        EXPECT_EQ(info.st_mode & 07777, 0755u) << qPrintable(made);
    }
}

// Across file systems the copy is made whole before the source goes; a copy that does not fit
// leaves the source whole and nothing under its name at the target.
TEST_F(HelperProgramTest, MovesAcrossFileSystemsAndKeepsTheSourceWhenTheCopyDoesNotFit)
{
    makeBundle(vst("Small.vst"));
    makeBundle(vst("Large.vst"), 2 * 1024 * 1024);
    const Tmpfs disabled(folder(TypeVST, LocSystemDisabled), "1m");
    if (!disabled.mounted)
        GTEST_SKIP() << "cannot mount a tmpfs here";

    const Run run = runHelper(QList<Move>{{vst("Small.vst"), vstOff("Small.vst")},
                                          {vst("Large.vst"), vstOff("Large.vst")}});

    EXPECT_EQ(run.exit, helper::ExitSomeFailed);
    EXPECT_TRUE(run.line(0).result && run.line(0).result->ok);
    ASSERT_TRUE(run.line(1).result);
    EXPECT_FALSE(run.line(1).result->ok);
    EXPECT_EQ(run.line(1).result->code, ENOSPC);
    EXPECT_TRUE(isWholeBundle(vstOff("Small.vst")) && !isThere(vst("Small.vst")));
    EXPECT_TRUE(isWholeBundle(vst("Large.vst"), 2 * 1024 * 1024));
    EXPECT_FALSE(QFileInfo::exists(vstOff("Large.vst")));
    EXPECT_EQ(run.ending().moved, 1);
    EXPECT_EQ(run.ending().failed, 1);
}

// Each request below holds one path the helper may not move, after one it may: the whole request
// is refused (exit 2), the path named, and nothing moves.
TEST_F(HelperProgramTest, RefusesTheWholeRequestForAnyPathItMayNotMove)
{
    makeBundle(vst("Echo.vst"));
    makeBundle(vst("Other.vst"));
    makeBundle(homePath("Library/Audio/Plug-Ins/VST/Mine.vst"));
    makeBundle(rootPath("Library/Audio/Plug-Ins/Elsewhere/Odd.vst"));
    QTemporaryDir outside;
    makeBundle(outside.path() + "/Evil.vst");
    QDir().mkpath(vst(""));
    ASSERT_TRUE(QFile::link(outside.path(), vst("Linked")));
    makeBundle(vst("Shared/Open.vst"));
    ASSERT_EQ(::chmod(QFile::encodeName(vst("Shared")).constData(), 0777), 0);
    makeBundle(vst("Theirs/Kept.vst"));
    ASSERT_EQ(::chown(QFile::encodeName(vst("Theirs")).constData(), 65534, 65534), 0);
    // A format folder may be a link, but not to a folder others may change.
    QTemporaryDir open;
    ASSERT_EQ(::chmod(QFile::encodeName(open.path()).constData(), 0777), 0);
    makeBundle(open.path() + "/Tape.component");
    QDir().mkpath(rootPath("Library/Audio/Plug-Ins"));
    ASSERT_TRUE(QFile::link(open.path(), folder(TypeAU, LocSystemActive)));
    const QString off = vstOff("Other.vst");

    struct Case {
        const char *what;
        Move move;
        const char *reason;
    };
    const QList<Case> cases{
        {"outside the folders",
         {rootPath("Library/Audio/Plug-Ins/Elsewhere/Odd.vst"), off},
         "the path lies outside the system plug-in folders"},
        {"relative", {"Library/Audio/Plug-Ins/VST/Other.vst", off}, "not an absolute path"},
        {"a .. step", {vst("Other.vst"), vstOff("../VST (Disabled)/Other.vst")}, "not an absolute"},
        {"a NUL byte",
         {vst("Other.vst"), vstOff(QString("Oth") + QChar(0) + "er.vst")},
         "not an absolute"},
        {"the user's folder",
         {homePath("Library/Audio/Plug-Ins/VST/Mine.vst"), off},
         "the path lies in the user's own folders"},
        {"another place", {vst("Other.vst"), vstOff("Renamed.vst")}, "the target is not the"},
        {"the same folder", {vst("Other.vst"), vst("Renamed.vst")}, "the target is not the"},
        {"another format's folder",
         {vst("Other.vst"), auOff("Other.vst")},
         "the target lies in another format's folders than its source"},
        {"a link on the way",
         {vst("Linked/Evil.vst"), vstOff("Linked/Evil.vst")},
         "a folder on the way is a link"},
        {"a folder others may write in",
         {vst("Shared/Open.vst"), vstOff("Shared/Open.vst")},
         "the folder can be changed by others than root"},
        {"another user's folder",
         {vst("Theirs/Kept.vst"), vstOff("Theirs/Kept.vst")},
         "the folder can be changed by others than root"},
        {"a format folder leading to such a folder",
         {au("Tape.component"), auOff("Tape.component")},
         "the folder can be changed by others than root"},
    };
    for (const Case &refused : cases) {
        SCOPED_TRACE(refused.what);
        const Run run = runHelper(QList<Move>{{vst("Echo.vst"), vstOff("Echo.vst")}, refused.move});
        EXPECT_EQ(run.exit, helper::ExitRefused);
        ASSERT_EQ(run.lines.size(), 1);
        EXPECT_EQ(run.ending().kind, Ending::Refused);
        EXPECT_TRUE(run.ending().error.startsWith(refused.reason))
            << qPrintable(run.ending().error);
        EXPECT_FALSE(run.ending().path.isEmpty());
        EXPECT_TRUE(isWholeBundle(vst("Echo.vst")));
        EXPECT_FALSE(QFileInfo::exists(folder(TypeVST, LocSystemDisabled)));
    }
    EXPECT_TRUE(isWholeBundle(outside.path() + "/Evil.vst"));
}

// Requests that are not what the program writes, and command lines it does not give, are
// refused before anything is looked at.
TEST_F(HelperProgramTest, RefusesMalformedRequestsAndArguments)
{
    makeBundle(vst("Echo.vst"));
    const QByteArray good = helper::encodeRequest({{vst("Echo.vst"), vstOff("Echo.vst")}});
    const QStringList plain = helperArguments();
    const QList<std::tuple<const char *, QByteArray, QStringList>> cases{
        {"no JSON", "moves: Echo.vst", plain},
        {"cut short", good.chopped(3), plain},
        {"a number for a path", R"({"moves":[{"from":1,"to":"/x"}]})", plain},
        {"a key of its own", R"({"moves":[],"trash":true})", plain},
        {"too large", QByteArray(helper::MaxRequestBytes, ' ') + good, plain},
        {"no home", good, {"--root", root()}},
        {"a relative root", good, {"--root", "tmp", "--home", home()}},
        {"a root not written plainly", good, {"--root", root() + "/.", "--home", home()}},
        {"a repeated root", good, QStringList{"--root", "/"} + plain},
        {"a wait too long", good, {"--root", root(), "--home", home(), "--wait-ms", "9999999"}},
    };
    for (const auto &[what, request, arguments] : cases) {
        SCOPED_TRACE(what);
        const Run run = runHelper(request, arguments);
        EXPECT_EQ(run.exit, helper::ExitRefused);
        EXPECT_EQ(run.ending().kind, Ending::Refused);
    }
    EXPECT_TRUE(isWholeBundle(vst("Echo.vst")));
}

// Another mover holding the system folders (here this test, as KorvaneCMD or a window would) is
// waited for: the helper moves once it lets go, and gives up with exit 3, naming it, when it
// does not let go in time.
TEST_F(HelperProgramTest, WaitsForAnotherMoverAndGivesUpWhenItKeepsTheLock)
{
    makeBundle(vst("Echo.vst"));
    const QList<Move> moves{{vst("Echo.vst"), vstOff("Echo.vst")}};
    auto held = std::make_unique<LibraryLock>(locks(), disk(),
                                              QStringList{folder(TypeVST, LocSystemActive)}, 0);
    ASSERT_TRUE(held->isLocked());
    const Run run = runHelper(helper::encodeRequest(moves), helperArguments(300));
    EXPECT_EQ(run.exit, helper::ExitLockNotTaken);
    EXPECT_GE(run.ms, 300);
    EXPECT_EQ(run.ending().kind, Ending::LockNotTaken);
    EXPECT_TRUE(run.ending().holder.contains(QString::number(::getpid())));
    EXPECT_TRUE(isWholeBundle(vst("Echo.vst")));

    QProcess process;
    process.start(KORVANE_HELPER, helperArguments(10000));
    ASSERT_TRUE(process.waitForStarted());
    process.write(helper::encodeRequest(moves));
    process.closeWriteChannel();
    EXPECT_FALSE(process.waitForFinished(400));
    EXPECT_TRUE(isWholeBundle(vst("Echo.vst")));
    held.reset();
    ASSERT_TRUE(process.waitForFinished(10000));
    EXPECT_EQ(process.exitCode(), helper::ExitAllMoved);
    EXPECT_TRUE(isWholeBundle(vstOff("Echo.vst")));
}

// A move that fails (an immutable target folder, another copy at the target) fails alone; the
// others still move and both copies of a taken target stay.
TEST_F(HelperProgramTest, AFailedMoveFailsAloneAndTheOthersStillMove)
{
    makeBundle(vst("Echo.vst"));
    makeBundle(auOff("Tape.component"));
    makeBundle(au("Twice.component"));
    makeBundle(auOff("Twice.component"), 7);
    QDir().mkpath(folder(TypeVST, LocSystemDisabled));
    const ImmutableGuard frozen(folder(TypeVST, LocSystemDisabled));
    if (!frozen.ok())
        GTEST_SKIP() << "chattr +i does not work here";

    const Run run = runHelper(QList<Move>{{vst("Echo.vst"), vstOff("Echo.vst")},
                                          {au("Twice.component"), auOff("Twice.component")},
                                          {auOff("Tape.component"), au("Tape.component")}});

    EXPECT_EQ(run.exit, helper::ExitSomeFailed);
    ASSERT_EQ(run.lines.size(), 4);
    const auto result = [&run](int i) { return run.line(i).result.value_or(helper::MoveResult{}); };
    EXPECT_FALSE(result(0).ok);
    EXPECT_EQ(result(0).code, EPERM) << qPrintable(result(0).error);
    EXPECT_FALSE(result(1).ok);
    EXPECT_EQ(result(1).code, EEXIST) << qPrintable(result(1).error);
    EXPECT_TRUE(result(2).ok);
    EXPECT_TRUE(isWholeBundle(vst("Echo.vst")));
    EXPECT_TRUE(isWholeBundle(au("Twice.component")));
    EXPECT_TRUE(isWholeBundle(auOff("Twice.component"), 7));
    EXPECT_TRUE(isWholeBundle(au("Tape.component")));
    EXPECT_EQ(run.ending().failed, 2);
}

} // namespace
} // namespace korvane
