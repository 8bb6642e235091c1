// Runs the built KorvaneCMD against temporary roots and looks at what it printed and moved.

#include "PluginLibraryBuilder.h"
#include "app/AppContext.h"
#include "cli/Options.h"
#include "core/FormatTable.h"
#include "core/Locations.h"
#include "library/FormatManager.h"
#include "library/SetDocument.h"
#include "os/LibraryLock.h"
#include "support/RunKorvaneCmd.h"
#include "support/ScriptedUi.h"
#include "support/TestRoots.h"

#include <QCryptographicHash>
#include <QDateTime>
#include <QDirIterator>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QProcess>
#include <QScopeGuard>
#include <QTemporaryDir>
#include <QTemporaryFile>

#include <dirent.h>
#include <fcntl.h>
#include <spawn.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

namespace korvane {
namespace {

using Builder = PluginLibraryBuilder;

class KorvaneCmdTest : public TestRoots {
protected:
    void SetUp() override
    {
        TestRoots::SetUp();
        QDir().mkpath(homePath("Documents"));
        QDir().mkpath(support = homePath("Library/Application Support/Korvane/"));
        // Alpha and Beta on system-wide, Gamma off and Delta on for the user.
        Builder::makeAudioUnit(au(LocSystemActive), "Alpha.component", MachO::universal2());
        Builder::makeAudioUnit(au(LocSystemActive), "Beta.component", MachO::intel());
        Builder::makeAudioUnit(au(LocUserDisabled), "Gamma.component", MachO::ppc());
        Builder::makeAudioUnit(au(LocUserActive), "Delta.component", MachO::x86_64());
    }

    // Whatever a program takes from the environment lies under the test's roots unless changed
    // here; input is its standard input, closed after it.
    std::unique_ptr<QProcess> start(const QString &program, const QStringList &arguments,
                                    const QByteArray &input = {},
                                    const QMap<QString, QString> &changed = {})
    {
        EnvironmentChanges changes{
            {"KORVANE_ROOT", root()}, {"HOME", home()}, {"XDG_DATA_HOME", std::nullopt}};
        for (auto it = changed.cbegin(); it != changed.cend(); ++it)
            changes.append({it.key(), it.value()});
        return startKorvaneCmd(program, arguments, changes, input);
    }

    // A run not over in 30 seconds is killed and counts as failed.
    static ToolRun finish(QProcess &process) { return finishKorvaneCmd(process, 30000); }

    // The tool, given the roots as options as well.
    ToolRun tool(const QStringList &arguments, const QByteArray &input = {})
    {
        const QStringList roots{"--root", root(), "--home", home()};
        return finish(*start(KORVANE_CMD, roots + arguments, input));
    }

    // The same with arguments as bytes, which QProcess would decode and encode again as text.
    ToolRun toolBytes(const QList<QByteArray> &arguments)
    {
        QList<QByteArray> all{KORVANE_CMD, "--root", QFile::encodeName(root()), "--home",
                              QFile::encodeName(home())};
        all += arguments;
        std::vector<char *> argv;
        for (QByteArray &argument : all)
            argv.push_back(argument.data());
        argv.push_back(nullptr);
        QTemporaryFile out, err;
        EXPECT_TRUE(out.open() && err.open());
        posix_spawn_file_actions_t actions;
        posix_spawn_file_actions_init(&actions);
        posix_spawn_file_actions_addopen(&actions, STDIN_FILENO, "/dev/null", O_RDONLY, 0);
        posix_spawn_file_actions_adddup2(&actions, out.handle(), STDOUT_FILENO);
        posix_spawn_file_actions_adddup2(&actions, err.handle(), STDERR_FILENO);
        pid_t pid = -1;
        int status = -1;
        const bool started =
            ::posix_spawn(&pid, KORVANE_CMD, &actions, nullptr, argv.data(), environ) == 0;
        posix_spawn_file_actions_destroy(&actions);
        EXPECT_TRUE(started && ::waitpid(pid, &status, 0) == pid);
        return {WIFEXITED(status) ? WEXITSTATUS(status) : -1, QString::fromUtf8(out.readAll()),
                QString::fromUtf8(err.readAll())};
    }

    // A folder's entries as the bytes the file system holds.
    static QList<QByteArray> rawEntries(const QString &folder)
    {
        QList<QByteArray> names;
        if (DIR *dir = ::opendir(QFile::encodeName(folder).constData())) {
            while (const dirent *entry = ::readdir(dir))
                if (entry->d_name[0] != '.')
                    names << entry->d_name;
            ::closedir(dir);
        }
        std::sort(names.begin(), names.end());
        return names;
    }

    QString au(int loc, const QString &name = {}) const
    {
        return folder(TypeAU, loc) + (name.isEmpty() ? "" : "/" + name);
    }

    // Every file and folder under both roots, one line each: path, digest of the contents and,
    // withTimes, size and modification time (a folder's changes whenever an entry comes or goes).
    std::string snapshot(bool withTimes = true) const
    {
        QStringList entries;
        const auto all = QDir::AllEntries | QDir::NoDotAndDotDot | QDir::Hidden | QDir::System;
        for (const QString &top : {root(), home()}) {
            for (QDirIterator it(top, all, QDirIterator::Subdirectories); it.hasNext();) {
                const QFileInfo info = it.nextFileInfo();
                QFile file(info.filePath());
                entries << info.filePath();
                if (info.isFile() && file.open(QIODevice::ReadOnly))
                    entries.last() +=
                        ' '
                        + QCryptographicHash::hash(file.readAll(), QCryptographicHash::Md5).toHex();
                if (withTimes)
                    entries.last() += QString(" %1 %2")
                                          .arg(info.size())
                                          .arg(info.lastModified().toMSecsSinceEpoch());
            }
        }
        entries.sort();
        return entries.join('\n').toStdString();
    }

    static bool isWholeBundle(const QString &path)
    {
        return QFile::exists(path + "/Contents/Info.plist")
               && QFile::exists(path + "/Contents/MacOS/Plugin");
    }

    using Entry = std::tuple<const char *, bool, bool>; // name, global, active

    // A set document in Documents holding the entries in order; by default Beta goes off, Gamma
    // comes on, Alpha and Delta stay and one entry names nothing installed.
    QString writeSet(const QString &fileName = "Live.aukorv",
                     const QList<Entry> &entries = {{"Alpha.component", true, true},
                                                    {"Beta.component", true, false},
                                                    {"Gamma.component", false, true},
                                                    {"Missing.component", false, true},
                                                    {"Delta.component", false, true}})
    {
        const Format &au = FormatTable::builtIn().at(TypeAU);
        QList<PluginPtr> items;
        for (const auto &[name, global, active] : entries) {
            items << std::make_shared<Plugin>();
            items.last()->setName(name);
            items.last()->setGlobal(global);
            items.last()->setActive(active);
            items.last()->updateLocation(au, locations().allFolderPaths(au));
        }
        QString path = homePath("Documents/" + fileName);
        EXPECT_TRUE(SetDocument::write(disk(), path, items));
        return path;
    }

    QString support;
};

TEST_F(KorvaneCmdTest, ApplyingASetAndNamingPlugInsMoveExactlyWhatChanges)
{
    const QString set = writeSet();
    QFile file(set);
    ASSERT_TRUE(file.open(QIODevice::ReadOnly));

    const ToolRun run = tool({"-AU", "/dev/stdin"}, file.readAll()); // through a pipe
    EXPECT_EQ(run.exitCode, 0) << run.err.toStdString();
    EXPECT_EQ(run.out, "disabled Beta.component\nenabled Gamma.component\n");
    EXPECT_EQ(run.err,
              "warning: AU set \"/dev/stdin\": no installed plug-in \"Missing.component\"\n");
    for (const QString &path :
         {au(LocSystemDisabled, "Beta.component"), au(LocUserActive, "Gamma.component"),
          au(LocSystemActive, "Alpha.component"), au(LocUserActive, "Delta.component")})
        EXPECT_TRUE(isWholeBundle(path)) << path.toStdString();

    const std::string before = snapshot(false); // the lock file comes and goes
    const ToolRun again = tool({"-AU", set});
    EXPECT_EQ(again.exitCode, 0);
    EXPECT_EQ(again.out, "");
    EXPECT_EQ(snapshot(false), before);

    // A name switches every copy of it, with or without its extension.
    Builder::makeAudioUnit(au(LocUserActive), "Alpha.component", MachO::ppc());
    const ToolRun off = tool({"disable", "--format", "AU", "Alpha", "Delta.component"});
    EXPECT_EQ(off.exitCode, 0) << off.err.toStdString();
    EXPECT_EQ(off.out, "disabled Alpha.component\ndisabled Alpha.component\n"
                       "disabled Delta.component\n");
    EXPECT_TRUE(isWholeBundle(au(LocSystemDisabled, "Alpha.component")));
    EXPECT_TRUE(isWholeBundle(au(LocUserDisabled, "Alpha.component")));
    const ToolRun on = tool({"enable", "--format", "au", "Delta.component", "Gamma.component"});
    EXPECT_EQ(on.exitCode, 0);
    EXPECT_EQ(on.out, "enabled Delta.component\n"); // Gamma is on already
    // One unknown name and nothing moves.
    const ToolRun unknown = tool({"disable", "--format", "au", "Delta", "Nope.component"});
    EXPECT_EQ(unknown.exitCode, 2);
    EXPECT_TRUE(unknown.err.startsWith("KorvaneCMD: ") && unknown.err.contains("Nope.component"))
        << unknown.err.toStdString();
    EXPECT_TRUE(isWholeBundle(au(LocUserActive, "Delta.component")));

    // A saved set applied at once changes nothing; each copy of Alpha finds its own entry.
    ASSERT_EQ(tool({"save-set", "--format", "au", homePath("Documents/now.aukorv")}).exitCode, 0);
    EXPECT_EQ(tool({"-AU", homePath("Documents/now.aukorv")}).out, "");
}

// Reports, help and every refused command line leave both roots as they were, to the file times.
TEST_F(KorvaneCmdTest, ReportsAndRefusalsChangeNothingOnDisk)
{
    const QString set = writeSet();
    Builder::makeAudioUnit(au(LocUserDisabled), "Alpha.component", MachO::ppc());
    const QString echo = folder(TypeVST, LocSystemDisabled);
    Builder::makeVST(echo, "Echo.vst", MachO::ppc());
    writePlist(support + "groups.plist", QVariantList{"", "Synths"});
    writePlist(support + "augroups.plist", QVariantList{"Alpha.component", "Synths"});
    // A first run would seed the preferences; a damaged registry reads as absent.
    writeText(support + "content.plist", "<?xml version=\"1.0\"?><plist><array><string>Beta");
    static const char garbage[] = "\x04\x0bstreamtyped\x81\xe8\x03\x84\x01@\xff\xfe";
    writeText(homePath("Documents/garbage.aukorv"), QByteArray(garbage, sizeof garbage - 1));
    writePlist(homePath("Documents/plist.aukorv"), QVariantList{"Alpha.component"});
    const QString fifo = homePath("Documents/nobody.aukorv");
    ASSERT_EQ(::mkfifo(QFile::encodeName(fifo).constData(), 0600), 0);
    QFile file(set);
    ASSERT_TRUE(file.open(QIODevice::ReadOnly));
    const QByteArray bytes = file.readAll();
    // Larger than any set document, refused by its size; a sparse file, outside the roots.
    QTemporaryDir elsewhere;
    QFile huge(elsewhere.filePath("huge.aukorv"));
    ASSERT_TRUE(huge.open(QIODevice::WriteOnly) && huge.resize(65 << 20));
    huge.close();
    const std::string before = snapshot();

    QMap<QString, QString> out;
    for (const QStringList &arguments : QList<QStringList>{{"list", "--json"},
                                                           {"list", "--format", "vst"},
                                                           {"duplicates", "--json"},
                                                           {"duplicates"},
                                                           {"show-set", "/dev/stdin", "--json"},
                                                           {"--help"},
                                                           {"--version"}}) {
        const ToolRun run = tool(arguments, bytes);
        EXPECT_EQ(run.exitCode, 0) << arguments.join(' ').toStdString() << run.err.toStdString();
        EXPECT_EQ(snapshot(), before) << arguments.join(' ').toStdString();
        out[arguments.join(' ')] = run.out;
    }
    QList<QStringList> refused{{"--bogus"}, {"list", "--format", "wav"}};
    // The readable AU set would move plug-ins; the unreadable VST set stops the run first. A FIFO
    // nobody writes to would keep a reader waiting for ever; a device is no document.
    for (const QString &path :
         {homePath("Documents/none.aukorv"), homePath("Documents/garbage.aukorv"),
          homePath("Documents/plist.aukorv"), fifo, QString("/dev/null"), homePath("Documents"),
          QString("/dev/stdin"), huge.fileName()})
        refused << QStringList{"-AU", set, "-VST", path} << QStringList{"show-set", path};
    for (const QStringList &arguments : refused) {
        const ToolRun run = tool(arguments); // /dev/stdin: an empty pipe
        EXPECT_EQ(run.exitCode, 2) << arguments.join(' ').toStdString();
        EXPECT_TRUE(run.err.startsWith("KorvaneCMD: ") && run.err.contains(arguments.last()))
            << run.err.toStdString();
        EXPECT_EQ(run.out, "");
    }
    // The option overrides the environment, and a missing root is refused.
    const QString nowhere = "--root=" + root() + "/nowhere";
    EXPECT_EQ(finish(*start(KORVANE_CMD, {nowhere, "list"})).exitCode, 2);
    EXPECT_EQ(snapshot(), before);

    EXPECT_EQ(out["--help"], helpText());
    EXPECT_EQ(out["--version"], versionText() + "\n");
    const auto json = [](const QString &text) { return QJsonDocument::fromJson(text.toUtf8()); };
    const QJsonArray all = json(out["list --json"]).array();
    EXPECT_EQ(all.size(), 6);
    EXPECT_TRUE(all.contains(json(QString(R"({"format":"AU","name":"Alpha.component",
        "location":"%1","global":true,"active":true,"group":"Synths",
        "architecture":"Universal Binary"})")
                                      .arg(au(LocSystemActive)))
                                 .object()));
    const QString vst = out["list --format vst"];
    EXPECT_TRUE(vst.count('\n') == 1 && vst.contains(echo + "/Echo.vst")) << vst.toStdString();
    const QJsonArray items = json(out["show-set /dev/stdin --json"]).array();
    ASSERT_EQ(items.size(), 5);
    EXPECT_EQ(items[1].toObject().keys(), QStringList({"active", "global", "location", "name"}));
    EXPECT_EQ(items[1].toObject()["active"], false); // Beta
    const QJsonArray duplicates = json(out["duplicates --json"]).array();
    ASSERT_EQ(duplicates.size(), 1);
    QJsonObject alpha = duplicates.first().toObject();
    // Each copy where it lies, with its version and state, in list order.
    const auto copy = [](const QString &location, bool active) {
        return QJsonObject{{"location", location}, {"version", "1.0"}, {"active", active}};
    };
    EXPECT_EQ(alpha.take("copies").toArray(),
              QJsonArray({copy(au(LocSystemActive), true), copy(au(LocUserDisabled), false)}));
    EXPECT_EQ(alpha, json(R"({"format":"AU","name":"Alpha.component","count":2})").object());
    // As text, a line per copy: format, count, name, state, version, folder.
    const QStringList lines = out["duplicates"].split('\n', Qt::SkipEmptyParts);
    ASSERT_EQ(lines.size(), 2) << out["duplicates"].toStdString();
    EXPECT_EQ(lines.at(0).simplified(),
              "AU 2 Alpha.component on 1.0 " + au(LocSystemActive).simplified());
    EXPECT_EQ(lines.at(1).simplified(),
              "AU 2 Alpha.component off 1.0 " + au(LocUserDisabled).simplified());
}

// A move into a folder that refuses it is not made: the tool names the paths, goes on with the
// others and exits 1. A check foresees it.
TEST_F(KorvaneCmdTest, EachMoveSaysWhatItDidAndAFailedOneLosesNothing)
{
    const QString set = writeSet("moves.aukorv", {{"Alpha.component", false, false},
                                                  {"Beta.component", true, false},
                                                  {"Delta.component", true, true}});
    QDir().mkpath(au(LocSystemDisabled));
    ImmutableGuard guard(au(LocSystemDisabled));
    if (!guard.ok())
        GTEST_SKIP() << "chattr +i is not supported here";
    // A check sees the folder refuse: the same lines and the same exit as the run.
    const ToolRun check = tool({"--check", "-AU", set});
    EXPECT_EQ(check.exitCode, 1);
    EXPECT_EQ(check.out,
              "disabled and moved to user Alpha.component\nmoved to system Delta.component\n");
    EXPECT_TRUE(check.err.startsWith("error: could not disable \"Beta.component\": \""
                                     + au(LocSystemActive, "Beta.component"))
                && check.err.contains("cannot be changed"))
        << check.err.toStdString();
    const ToolRun run = tool({"-AU", set});
    EXPECT_EQ(run.exitCode, 1);
    EXPECT_EQ(run.out,
              "disabled and moved to user Alpha.component\nmoved to system Delta.component\n");
    EXPECT_TRUE(run.err.startsWith("error: could not disable \"Beta.component\": \""
                                   + au(LocSystemActive, "Beta.component"))
                && run.err.contains(au(LocSystemDisabled)))
        << run.err.toStdString();
    EXPECT_TRUE(isWholeBundle(au(LocUserDisabled, "Alpha.component")));
    EXPECT_TRUE(isWholeBundle(au(LocSystemActive, "Delta.component")));
    EXPECT_TRUE(isWholeBundle(au(LocSystemActive, "Beta.component")));
}

// The lock belongs to the plug-in folders, not to a home: a holder of another home, and another
// user at that (who may read the system folders but not write them), stops every mover of these
// folders after its wait. Its death frees them, and it leaves nothing behind.
TEST_F(KorvaneCmdTest, AMoverOfAnyHomeStopsAfterItsWaitNamingTheHolderWhoseDeathFreesTheLock)
{
    qputenv("KORVANE_LOCK_WAIT_MS", "300"); // for the tool; the window below is handed it
    const auto unset = qScopeGuard([] { qunsetenv("KORVANE_LOCK_WAIT_MS"); });
    QTemporaryDir otherHome;
    const auto readable = QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner | QFile::ReadGroup
                          | QFile::ExeGroup | QFile::ReadOther | QFile::ExeOther;
    ASSERT_TRUE(QFile::setPermissions(root(), readable)
                && QFile::setPermissions(otherHome.path(), readable));
    const QString plugIns = QFileInfo(au(LocSystemActive)).path();
    QDir().mkpath(au(LocSystemDisabled));
    const QStringList before = QDir(plugIns).entryList(QDir::AllEntries | QDir::Hidden);
    auto holder =
        start("setpriv", {"--reuid=65534", "--regid=65534", "--clear-groups", HOLD_LIBRARY_LOCK},
              {}, {{"HOME", otherHome.path()}});
    ASSERT_TRUE(holder->waitForReadyRead(10000)) << holder->readAllStandardError().toStdString();
    ASSERT_EQ(holder->readLine(), "locked\n");
    const QString named = QString("hold_library_lock (process %1)").arg(holder->processId());
    const QStringList disable{"disable", "--format", "au", "Alpha"};

    const ToolRun stopped = tool(disable);
    EXPECT_EQ(stopped.exitCode, 1);
    EXPECT_EQ(stopped.out, "");
    EXPECT_TRUE(stopped.err.contains(named)) << stopped.err.toStdString();
    EXPECT_EQ(tool({"list"}).exitCode, 0); // reporting needs no lock
    // A check would answer for a library in the middle of changing: it waits and fails alike.
    const ToolRun check = tool(disable + QStringList{"--check"});
    EXPECT_EQ(check.exitCode, 1);
    EXPECT_TRUE(check.err.contains("nothing checked: ") && check.err.contains(named))
        << check.err.toStdString();
    {
        // The window's apply, too, tells who holds the lock and moves nothing.
        ScriptedUi ui;
        RunSettings settings;
        settings.lockWaitMs = 300;
        AppContext context(
            {.roots = roots(), .settings = settings, .ui = &ui, .prepareWindow = false});
        context.manager(TypeAU)->rescan();
        context.manager(TypeAU)->marking().setAllInactive();
        context.manager(TypeAU)->apply();
        ASSERT_EQ(ui.alerts.size(), 1);
        EXPECT_TRUE(ui.alerts[0].informativeText.contains(named))
            << ui.alerts[0].informativeText.toStdString();
    }
    EXPECT_TRUE(isWholeBundle(au(LocSystemActive, "Alpha.component")));

    holder->kill();
    holder->waitForFinished();
    EXPECT_EQ(tool(disable).out, "disabled Alpha.component\n");
    EXPECT_EQ(QDir(plugIns).entryList(QDir::AllEntries | QDir::Hidden), before);
}

// A name that is not UTF-8 and the valid name it would decode to with replacement characters are
// two plug-ins; each is switched by its own bytes and nothing else moves.
TEST_F(KorvaneCmdTest, NamesThatReadAlikeAreTwoPlugInsEachSwitchedByItsBytes)
{
    const QByteArray bad = "Bad\xff\xfe.component", twin = "Bad\xef\xbf\xbd\xef\xbf\xbd.component";
    const QByteArray on = QFile::encodeName(au(LocSystemActive)) + '/';
    for (const QByteArray &name : {bad, twin}) {
        const QString made = Builder::makeAudioUnit(au(LocSystemActive), "Made", MachO::intel());
        ASSERT_EQ(::rename(QFile::encodeName(made).constData(), (on + name).constData()), 0);
    }
    // The temporary root's own clean-up would not find these names.
    const auto cleanUp = qScopeGuard([&] {
        for (const int loc : {LocSystemActive, LocSystemDisabled})
            disk().remove(au(loc));
    });
    EXPECT_EQ(tool({"list", "--format", "au"}).out.count('\n'), 6);
    const auto withOthers = [](const QByteArray &name) {
        return QList<QByteArray>{"Alpha.component", name, "Beta.component"};
    };

    const ToolRun off = toolBytes({"disable", "--format", "au", bad});
    EXPECT_EQ(off.exitCode, 0) << off.err.toStdString();
    EXPECT_EQ(rawEntries(au(LocSystemDisabled)), QList<QByteArray>{bad});
    EXPECT_EQ(rawEntries(au(LocSystemActive)), withOthers(twin));
    ASSERT_EQ(toolBytes({"disable", "--format", "au", twin}).exitCode, 0);
    EXPECT_EQ(rawEntries(au(LocSystemDisabled)), (QList<QByteArray>{twin, bad}));
    ASSERT_EQ(toolBytes({"enable", "--format", "au", bad}).exitCode, 0);
    EXPECT_EQ(rawEntries(au(LocSystemDisabled)), QList<QByteArray>{twin});
    EXPECT_EQ(rawEntries(au(LocSystemActive)), withOthers(bad));
    EXPECT_EQ(rawEntries(au(LocUserActive)), QList<QByteArray>{"Delta.component"});
    EXPECT_EQ(rawEntries(au(LocUserDisabled)), QList<QByteArray>{"Gamma.component"});
}

// Leaving main with shared instances alive must not depend on the order statics go in.
TEST_F(KorvaneCmdTest, DecodingASetAndReturningFromMainWithoutAResetExitsCleanly)
{
    const ToolRun run = finish(*start(DECODE_SET_AND_EXIT, {}));
    EXPECT_EQ(run.exitCode, 0) << run.err.toStdString();
}

// A " (Disabled)" folder that is the active one, by a link or a bind mount: each plug-in is listed
// once, and switching one off moves nothing, says why and fails; nothing goes to the trash.
TEST_F(KorvaneCmdTest, ADisabledFolderThatIsTheActiveOneMovesNothingOntoItself)
{
    const QString on = au(LocSystemActive), off = au(LocSystemDisabled);
    const auto check = [&](const char *how) {
        SCOPED_TRACE(how);
        const QString one = on + " and " + off + " are one folder";
        const ToolRun listed = tool({"list", "--format", "au"});
        EXPECT_EQ(listed.out.count("/Alpha.component\n"), 1) << listed.out.toStdString();
        EXPECT_EQ(listed.err.count(one), 1) << listed.err.toStdString();
        const ToolRun run = tool({"disable", "--format", "au", "Alpha"});
        EXPECT_EQ(run.exitCode, 1);
        EXPECT_EQ(run.out, "");
        EXPECT_EQ(run.err.count(one), 1) << run.err.toStdString(); // once per run
        EXPECT_TRUE(run.err.contains("error: could not disable \"Alpha.component\"")
                    && run.err.contains("one and the same"))
            << run.err.toStdString();
        EXPECT_TRUE(isWholeBundle(au(LocSystemActive, "Alpha.component")));
        EXPECT_TRUE(QDir(homePath(".local/share/Trash/files")).isEmpty());
    };
    ASSERT_TRUE(QFile::link(on, off));
    check("a link");
    ASSERT_TRUE(QFile::remove(off) && QDir().mkpath(off));
    if (QProcess::execute("mount", {"--bind", on, off}) != 0)
        GTEST_SKIP() << "mount --bind is refused here; the bind mount is not tested";
    const auto unmount = qScopeGuard([&] {
        if (QProcess::execute("umount", {off}) != 0)
            QProcess::execute("umount", {"-l", off});
    });
    check("a bind mount");
}

// With the home at the system root, the user's folders are the system's: every plug-in listed
// once, and each move made without another copy in the way.
TEST_F(KorvaneCmdTest, AHomeAtTheSystemRootMovesLikeAnyOther)
{
    const auto run = [&](const QStringList &arguments) {
        return finish(
            *start(KORVANE_CMD, QStringList{"--root", root(), "--home", root()} + arguments));
    };
    EXPECT_EQ(run({"list", "--format", "au"}).out.count('\n'), 2); // Alpha and Beta
    const ToolRun off = run({"disable", "--format", "au", "Alpha", "Beta"});
    EXPECT_EQ(off.exitCode, 0) << off.err.toStdString();
    EXPECT_EQ(off.out, "disabled Alpha.component\ndisabled Beta.component\n");
    const ToolRun on = run({"enable", "--format", "au", "Alpha"});
    EXPECT_EQ(on.exitCode, 0) << on.err.toStdString();
    EXPECT_EQ(on.out, "enabled Alpha.component\n");
    EXPECT_TRUE(isWholeBundle(au(LocSystemActive, "Alpha.component")));
    EXPECT_TRUE(isWholeBundle(au(LocSystemDisabled, "Beta.component")));
}

// What goes to the trash (an identical copy, a user's file in the way) and a damaged data file
// kept aside are said on standard error without --verbose; the moves still succeed.
TEST_F(KorvaneCmdTest, WhatGoesToTheTrashOrIsKeptAsideIsSaidWithoutVerbose)
{
    QDir().mkpath(au(LocSystemDisabled));
    ASSERT_TRUE(disk().copy(au(LocSystemActive, "Alpha.component"),
                            au(LocSystemDisabled, "Alpha.component")));
    const QString echo =
        Builder::makeVST(folder(TypeVST, LocSystemActive), "Echo.vst", MachO::ppc());
    const QString inTheWay =
        Builder::makeFile(folder(TypeVST, LocSystemDisabled), "Echo.vst", {}, "notes");
    writeText(support + "content.plist", "<?xml version=\"1.0\"?><plist><array><string>Beta");
    const QString trash = homePath(".local/share/Trash/files/");

    const ToolRun alpha = tool({"disable", "--format", "au", "Alpha"});
    EXPECT_EQ(alpha.exitCode, 0);
    EXPECT_EQ(alpha.out, "disabled Alpha.component\n");
    const QStringList said = alpha.err.split('\n', Qt::SkipEmptyParts);
    ASSERT_EQ(said.size(), 2) << alpha.err.toStdString();
    EXPECT_TRUE(said[0].startsWith("KorvaneCMD: Could not read " + support
                                   + "content.plist; kept it as " + support
                                   + "content.plist.damaged-"))
        << said[0].toStdString();
    EXPECT_EQ(said[1], "KorvaneCMD: Alpha.component was already at "
                           + au(LocSystemDisabled, "Alpha.component") + "; the identical copy from "
                           + au(LocSystemActive, "Alpha.component")
                           + " is now in the trash: " + trash + "Alpha.component");

    const ToolRun vst = tool({"disable", "--format", "vst", "Echo.vst"});
    EXPECT_EQ(vst.exitCode, 0);
    EXPECT_EQ(vst.out, "disabled Echo.vst\n");
    EXPECT_EQ(vst.err, "KorvaneCMD: " + inTheWay
                           + " was in the way and is now in the trash: " + trash + "Echo.vst\n");
    EXPECT_TRUE(isWholeBundle(inTheWay) && !QFileInfo::exists(echo));
    EXPECT_EQ(readText(trash + "Echo.vst"), "notes");
}

// HOME pointing nowhere is refused as --home is, and nothing is made of it; a relative
// KORVANE_ROOT is taken from the working folder, as --root is.
TEST_F(KorvaneCmdTest, TheEnvironmentsFoldersAreHeldToTheRulesOfTheOptions)
{
    const QString nowhere = home() + "/nowhere";
    for (const QStringList &arguments :
         {QStringList{"list"}, QStringList{"disable", "--format", "au", "Alpha"}}) {
        const ToolRun run = finish(*start(KORVANE_CMD, arguments, {}, {{"HOME", nowhere}}));
        EXPECT_EQ(run.exitCode, 2);
        EXPECT_EQ(run.err, "KorvaneCMD: HOME: no folder \"" + nowhere + "\"\n");
    }
    EXPECT_FALSE(QFileInfo::exists(nowhere));
    EXPECT_TRUE(isWholeBundle(au(LocSystemActive, "Alpha.component")));

    QProcess relative;
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert("KORVANE_ROOT", QFileInfo(root()).fileName());
    environment.insert("HOME", home());
    relative.setProcessEnvironment(environment);
    relative.setWorkingDirectory(QFileInfo(root()).path());
    relative.start(KORVANE_CMD, {"list", "--format", "au"});
    const ToolRun listed = finish(relative);
    EXPECT_EQ(listed.exitCode, 0) << listed.err.toStdString();
    EXPECT_TRUE(listed.out.contains(" " + au(LocSystemActive, "Alpha.component") + "\n"))
        << listed.out.toStdString();
}

// A name holding a line break, a tab or a backslash is one escaped line of the text listing and
// itself in JSON; a name given with its extension switches only that plug-in, one without it
// those of that stem.
TEST_F(KorvaneCmdTest, NamesAreShownOneALineAndAnExactNameWins)
{
    for (const char *name : {"Two\nLines", "Tab\there", "Back\\slash"})
        Builder::makeAudioUnit(au(LocUserActive), name, MachO::intel());
    const ToolRun text = tool({"list", "--format", "au"});
    EXPECT_EQ(text.out.count('\n'), 7);
    for (const char *shown :
         {"/Two\\nLines.component\n", "/Tab\\there.component\n", "/Back\\\\slash.component\n"})
        EXPECT_TRUE(text.out.contains(shown)) << shown << text.out.toStdString();
    QStringList names;
    for (const QJsonValue item :
         QJsonDocument::fromJson(tool({"list", "--json"}).out.toUtf8()).array())
        names << item["name"].toString();
    EXPECT_TRUE(names.contains("Two\nLines.component") && names.contains("Back\\slash.component"));
    EXPECT_EQ(tool({"duplicates", "--json"}).out, "[\n]\n");

    const QString vst = folder(TypeVST, LocUserActive);
    Builder::makeVST(vst, "Echo.vst", MachO::intel());
    Builder::makeVST(vst, "Echo.vst.vst", MachO::intel());
    EXPECT_EQ(tool({"disable", "--format", "vst", "Echo.vst"}).out, "disabled Echo.vst\n");
    EXPECT_TRUE(isWholeBundle(vst + "/Echo.vst.vst"));
    EXPECT_EQ(tool({"enable", "--format", "vst", "Echo"}).out, "enabled Echo.vst\n");
    EXPECT_EQ(tool({"disable", "--format", "vst", "Echo.vst.vst"}).out, "disabled Echo.vst.vst\n");
}

// A mover's JSON object; a failure to parse fails the test.
QJsonObject jsonOf(const ToolRun &run)
{
    QJsonParseError error;
    const QJsonDocument document = QJsonDocument::fromJson(run.out.toUtf8(), &error);
    EXPECT_TRUE(document.isObject()) << error.errorString().toStdString() << run.out.toStdString();
    return document.object();
}

// Each move as name, action, from and to, and its outcome apart.
std::pair<QStringList, QStringList> movesOf(const QJsonObject &report)
{
    QStringList moves, outcomes;
    for (const QJsonValue move : report["moves"].toArray()) {
        moves << QStringList{move["name"].toString(), move["action"].toString(),
                             move["from"].toString(), move["to"].toString()}
                     .join('|');
        outcomes << move["outcome"].toString();
    }
    return {moves, outcomes};
}

// A check scans, merges and says what a real run says, to the line and the JSON move, and leaves
// the tree as it was, to the file times: exit 3 while a move is pending, 0 once none is.
TEST_F(KorvaneCmdTest, ACheckReportsWhatARealRunWouldDoAndChangesNothing)
{
    const QString set = writeSet();
    const std::string untouched = snapshot();
    const ToolRun check = tool({"--check", "-AU", set});
    EXPECT_EQ(check.exitCode, 3) << check.err.toStdString();
    EXPECT_EQ(check.out, "disabled Beta.component\nenabled Gamma.component\n");
    EXPECT_TRUE(check.err.contains("no installed plug-in \"Missing.component\"")
                && check.err.endsWith("KorvaneCMD: nothing moved (--check)\n"))
        << check.err.toStdString();
    const QJsonObject foreseen = jsonOf(tool({"-AU", set, "--json", "--check"}));
    const ToolRun disable = tool({"disable", "--format", "au", "--check", "Alpha", "Delta"});
    EXPECT_EQ(disable.exitCode, 3);
    EXPECT_EQ(disable.out, "disabled Alpha.component\ndisabled Delta.component\n");
    EXPECT_EQ(tool({"enable", "--format", "au", "--check", "Alpha"}).exitCode, 0); // on already
    EXPECT_EQ(snapshot(), untouched);

    const ToolRun real = tool({"--json", "-AU", set});
    EXPECT_EQ(real.exitCode, 0) << real.err.toStdString();
    const QJsonObject done = jsonOf(real);
    EXPECT_EQ(foreseen["check"], true);
    EXPECT_EQ(done["check"], false);
    EXPECT_EQ(foreseen["changed"], true);
    EXPECT_EQ(done["changed"], true);
    const auto [wouldMove, would] = movesOf(foreseen);
    const auto [didMove, did] = movesOf(done);
    EXPECT_EQ(wouldMove, didMove);
    EXPECT_EQ(wouldMove,
              QStringList({"Beta.component|disable|" + au(LocSystemActive, "Beta.component") + '|'
                               + au(LocSystemDisabled, "Beta.component"),
                           "Gamma.component|enable|" + au(LocUserDisabled, "Gamma.component") + '|'
                               + au(LocUserActive, "Gamma.component")}));
    EXPECT_EQ(would, QStringList({"would", "would"}));
    EXPECT_EQ(did, QStringList({"done", "done"}));
    EXPECT_EQ(foreseen["before"], done["before"]);
    EXPECT_EQ(foreseen["after"], done["after"]);
    EXPECT_EQ(done["after"].toObject()["AU"].toArray(),
              QJsonArray({"Alpha.component", "Delta.component", "Gamma.component"}));
    EXPECT_EQ(done["warnings"].toArray().size(), 1);
    EXPECT_TRUE(isWholeBundle(au(LocSystemDisabled, "Beta.component")));

    // As wanted now: nothing pending, nothing changed.
    const std::string applied = snapshot(false);
    const ToolRun settled = tool({"--check", "-AU", set});
    EXPECT_EQ(settled.exitCode, 0);
    EXPECT_EQ(settled.out, "");
    const ToolRun again = tool({"-AU", set, "--json"});
    EXPECT_EQ(again.exitCode, 0);
    EXPECT_EQ(jsonOf(again)["changed"], false);
    EXPECT_TRUE(jsonOf(again)["moves"].toArray().isEmpty());
    EXPECT_EQ(snapshot(false), applied);
}

// What only a look at the target tells: another installed copy there refuses the move (exit 1
// for the check as for the run), an identical copy or a stranger's file would go to the trash.
// The check foresees each, and the real run then does as foreseen.
TEST_F(KorvaneCmdTest, ACheckForeseesRefusedMovesAndWhatWouldGoToTheTrash)
{
    Builder::makeAudioUnit(au(LocSystemDisabled), "Beta.component", MachO::ppc()); // differs
    ASSERT_TRUE(disk().copy(au(LocSystemActive, "Alpha.component"),
                            au(LocSystemDisabled, "Alpha.component")));
    Builder::makeVST(folder(TypeVST, LocSystemActive), "Echo.vst", MachO::ppc());
    Builder::makeFile(folder(TypeVST, LocSystemDisabled), "Echo.vst", {}, "notes");
    const std::string before = snapshot();

    const QStringList au{"disable", "--format", "au", "Alpha", "Beta", "--json"};
    const ToolRun check = tool(au + QStringList{"--check"});
    EXPECT_EQ(check.exitCode, 1);
    EXPECT_TRUE(check.err.contains("error: could not disable \"Beta.component\"")
                && check.err.contains("both copies are kept"))
        << check.err.toStdString();
    const QJsonObject foreseen = jsonOf(check);
    const ToolRun echoCheck = tool({"disable", "--format", "vst", "Echo", "--check", "--json"});
    EXPECT_EQ(echoCheck.exitCode, 3);
    EXPECT_EQ(jsonOf(echoCheck)["warnings"].toArray(),
              QJsonArray{"KorvaneCMD: " + folder(TypeVST, LocSystemDisabled)
                         + "/Echo.vst is in the way and would go to the trash"});
    EXPECT_EQ(snapshot(), before);

    const ToolRun real = tool(au);
    EXPECT_EQ(real.exitCode, 1);
    const QJsonObject done = jsonOf(real);
    EXPECT_EQ(movesOf(foreseen).first, movesOf(done).first);
    EXPECT_EQ(movesOf(foreseen).second, QStringList({"would", "refused"}));
    EXPECT_EQ(movesOf(done).second, QStringList({"done", "refused"}));
    EXPECT_EQ(done["moves"].toArray()[1].toObject()["error"],
              foreseen["moves"].toArray()[1].toObject()["error"]);
    EXPECT_TRUE(foreseen["warnings"].toArray().first().toString().endsWith(
        "the identical copy from " + this->au(LocSystemActive, "Alpha.component")
        + " would go to the trash"));
    EXPECT_TRUE(done["warnings"].toArray().first().toString().contains("is now in the trash"));
    EXPECT_EQ(foreseen["after"], done["after"]);
    EXPECT_EQ(done["errors"].toArray().size(), 1);
    EXPECT_TRUE(isWholeBundle(this->au(LocSystemActive, "Beta.component")));
    EXPECT_TRUE(isWholeBundle(this->au(LocSystemDisabled, "Beta.component")));
}

// A set as plain names: a file with comments, blank lines, spaces and CRLF endings, names with
// or without their extension, --only for the rest; then every way of asking wrongly, each
// moving nothing.
TEST_F(KorvaneCmdTest, ApplyTakesPlainListsOfNamesAndRefusesWhatItCannotMatch)
{
    const QString on = homePath("Documents/room-a.txt");
    writeText(on, "# Room A, autumn\n\n  Alpha  \r\nGamma.component\r\n\t# Beta stays off\n");
    const QStringList apply{"apply", "--format", "au", "--on-file", on, "--only"};
    const ToolRun run = tool(apply);
    EXPECT_EQ(run.exitCode, 0) << run.err.toStdString();
    EXPECT_EQ(run.out,
              "disabled Beta.component\ndisabled Delta.component\nenabled Gamma.component\n");
    EXPECT_EQ(tool(apply + QStringList{"--check"}).exitCode, 0);
    EXPECT_EQ(jsonOf(tool(apply + QStringList{"--json"}))["changed"], false);
    const ToolRun mixed = tool({"apply", "--format", "au", "--on", "Delta", "--off-file", on});
    EXPECT_EQ(mixed.out, "disabled Alpha.component\ndisabled Gamma.component\n"
                         "enabled Delta.component\n");

    QTemporaryDir elsewhere;
    QFile huge(elsewhere.filePath("huge.txt"));
    ASSERT_TRUE(huge.open(QIODevice::WriteOnly) && huge.resize(2 << 20));
    huge.close();
    const QString fifo = homePath("Documents/nobody.txt");
    ASSERT_EQ(::mkfifo(QFile::encodeName(fifo).constData(), 0600), 0);
    const QString more = homePath("Documents/more.txt");
    writeText(more, "Beta\nDelta\n");
    const std::string before = snapshot();
    const std::pair<QStringList, const char *> wrong[] = {
        {{"--on", "Beta", "--off-file", more}, "\"Beta\" is named both on and off"},
        {{"--on", "Alpha", "--off", "Alpha.component"}, "\"Alpha.component\" is named both"},
        {{"--on-file", homePath("Documents/none.txt")}, "none.txt"},
        {{"--on-file", homePath("Documents")}, "folder"},
        {{"--on-file", fifo}, "not a regular file"},
        {{"--off-file", huge.fileName()}, "larger than"}};
    for (const auto &[arguments, said] : wrong) {
        const ToolRun refused = tool(QStringList{"apply", "--format", "au"} + arguments);
        EXPECT_EQ(refused.exitCode, 2) << arguments.join(' ').toStdString();
        EXPECT_TRUE(refused.err.contains(said)) << refused.err.toStdString();
    }
    // A name the library lacks is no wrong command line but a failure: exit 1, named, in the
    // JSON's errors too, and nothing moves even with --check.
    const ToolRun unknown =
        tool({"apply", "--format", "au", "--off", "Beta", "--on", "Nope", "--json", "--check"});
    EXPECT_EQ(unknown.exitCode, 1);
    EXPECT_EQ(
        jsonOf(unknown)["errors"].toArray(),
        QJsonArray({"KorvaneCMD: no AU plug-in named \"Nope\"", "KorvaneCMD: nothing changed"}));
    EXPECT_EQ(unknown.err,
              "KorvaneCMD: no AU plug-in named \"Nope\"\nKorvaneCMD: nothing changed\n");
    EXPECT_EQ(tool({"apply", "--format", "au", "--on", "Nope"}).exitCode, 1);
    EXPECT_EQ(snapshot(), before);
}

// The install check of the README, for Munki's installcheck_script and the like: KorvaneCMD's
// check piped into exactly the documented line, which exits 0 (install: make it so) while a move
// is pending or anything went wrong, and 1 once the machine is as wanted.
TEST_F(KorvaneCmdTest, TheDocumentedInstallCheckAsksForAnInstallUntilTheLibraryIsAsWanted)
{
    const QString line = "import json, sys; r = json.loads(sys.stdin.read() or \"{}\"); "
                         "sys.exit(1 if r.get(\"changed\") is False and not r.get(\"errors\") "
                         "else 0)";
    QFile readme(KORVANE_TEST_DATA "/../../README.md");
    ASSERT_TRUE(readme.open(QIODevice::ReadOnly));
    const QString documented = QString::fromUtf8(readme.readAll());
    ASSERT_TRUE(documented.contains("KorvaneCMD --check --json apply --format au --on-file "
                                    "/Library/Korvane/room-a.txt --only | python3 -c '"
                                    + line + "'"));

    const QString list = homePath("Documents/room-a.txt");
    writeText(list, "Alpha\nGamma\n");
    // The roots come from the environment, as the documented line gives none.
    const auto installCheck = [&](const QStringList &arguments) {
        QProcess check, reader;
        QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
        environment.insert("KORVANE_ROOT", root());
        environment.insert("HOME", home());
        environment.remove("XDG_DATA_HOME");
        check.setProcessEnvironment(environment);
        check.setStandardOutputProcess(&reader);
        check.start(KORVANE_CMD, arguments);
        reader.start("python3", {"-c", line});
        EXPECT_TRUE(check.waitForStarted() && reader.waitForStarted());
        finish(check);
        return finish(reader).exitCode;
    };
    const QStringList wanted{"--check", "--json",    "apply", "--format",
                             "au",      "--on-file", list,    "--only"};
    EXPECT_EQ(installCheck(wanted), 0);
    ASSERT_EQ(tool({"apply", "--format", "au", "--on-file", list, "--only"}).exitCode, 0);
    EXPECT_EQ(installCheck(wanted), 1);
    writeText(list, "Alpha\nNope\n"); // fails, and the install that follows says why
    EXPECT_EQ(installCheck(wanted), 0);
    EXPECT_EQ(installCheck(wanted + QStringList{"--bogus"}), 0); // no JSON at all
}

} // namespace
} // namespace korvane
