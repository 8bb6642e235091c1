// Runs the built KorvaneCMD against temporary roots and looks at what it printed and moved.

#include "PluginLibraryBuilder.h"
#include "cli/Options.h"
#include "managers/MyAdminObj.h"
#include "managers/SetDocument.h"
#include "model/AUItem.h"
#include "platform/Bundle.h"
#include "platform/LibraryLock.h"
#include "platform/Locations.h"
#include "platform/PropertyList.h"
#include "shell/AppContext.h"
#include "support/ScriptedUi.h"
#include "support/TestRoots.h"

#include <QCryptographicHash>
#include <QDateTime>
#include <QDirIterator>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QProcess>
#include <QThread>

#include <sys/stat.h>

namespace korvane {
namespace {

using Builder = PluginLibraryBuilder;

// A tmpfs mounted on a folder for the guard's lifetime: another file system, where rename(2)
// cannot move and every move is a copy and a removal.
class TmpfsMount {
public:
    explicit TmpfsMount(const QString &folder) : m_folder(folder)
    {
        QDir().mkpath(folder);
        m_ok = QProcess::execute("mount", {"-t", "tmpfs", "-o", "size=64m", "tmpfs", folder}) == 0;
    }
    ~TmpfsMount()
    {
        if (m_ok && QProcess::execute("umount", {m_folder}) != 0)
            QProcess::execute("umount", {"-l", m_folder});
    }
    bool ok() const { return m_ok; }

private:
    QString m_folder;
    bool m_ok = false;
};

// Sets an environment variable of this process for the guard's lifetime.
class EnvironmentGuard {
public:
    EnvironmentGuard(const char *name, const QByteArray &value)
        : m_name(name), m_old(qgetenv(name)), m_wasSet(qEnvironmentVariableIsSet(name))
    {
        qputenv(name, value);
    }
    ~EnvironmentGuard()
    {
        if (m_wasSet)
            qputenv(m_name, m_old);
        else
            qunsetenv(m_name);
    }

private:
    const char *m_name;
    QByteArray m_old;
    bool m_wasSet;
};

struct ToolRun {
    int exitCode = -1;
    QString out;
    QString err;
};

// How to start the tool beyond its arguments.
struct RunOptions {
    QString systemRoot{};       // --root; empty: the test's root
    QByteArray input{};         // standard input, closed after it
    bool keepInputOpen = false; // leave standard input open after input
    QStringList environment{};  // extra "NAME=value" entries
    int timeoutMs = 60000;      // then the tool is killed and the run counts as failed
};

class KorvaneCmdTest : public TestRoots {
protected:
    void SetUp() override
    {
        TestRoots::SetUp();
        for (const char *path : {"Documents", "Library/Preferences"})
            QDir().mkpath(homePath(path));
        QDir().mkpath(support = homePath("Library/Application Support/Korvane/"));
        presets = au(LocSystemActive, "Beta Presets");
    }

    std::unique_ptr<QProcess> start(const QString &program, const QStringList &arguments,
                                    const RunOptions &options = {})
    {
        auto process = std::make_unique<QProcess>();
        // Whatever a program takes from the environment lies under the test's roots.
        QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
        environment.insert("KORVANE_ROOT", root());
        environment.insert("HOME", home());
        environment.remove("XDG_DATA_HOME");
        for (const QString &entry : options.environment)
            environment.insert(entry.section('=', 0, 0), entry.section('=', 1));
        process->setProcessEnvironment(environment);
        process->start(program, arguments);
        EXPECT_TRUE(process->waitForStarted()) << program.toStdString();
        if (!options.input.isEmpty())
            process->write(options.input);
        if (!options.keepInputOpen)
            process->closeWriteChannel();
        return process;
    }

    std::unique_ptr<QProcess> startTool(const QStringList &arguments,
                                        const RunOptions &options = {})
    {
        const QString top = options.systemRoot.isEmpty() ? root() : options.systemRoot;
        return start(KORVANE_CMD, QStringList{"--root", top, "--home", home()} + arguments,
                     options);
    }

    static ToolRun finish(QProcess &process, int timeoutMs = 60000)
    {
        const bool finished = process.waitForFinished(timeoutMs);
        EXPECT_TRUE(finished) << process.arguments().join(' ').toStdString();
        if (!finished) {
            process.kill();
            process.waitForFinished();
        }
        return {finished && process.exitStatus() == QProcess::NormalExit ? process.exitCode() : -1,
                QString::fromUtf8(process.readAllStandardOutput()),
                QString::fromUtf8(process.readAllStandardError())};
    }

    ToolRun tool(const QStringList &arguments, const RunOptions &options = {})
    {
        return finish(*startTool(arguments, options), options.timeoutMs);
    }

    // An Audio Unit folder, or a path inside it.
    QString au(int loc, const QString &name = {}) const
    {
        return folder(TypeAU, loc) + (name.isEmpty() ? "" : "/" + name);
    }

    // Every file and folder under both roots, one line each: path, digest of the contents and,
    // withTimes, size and modification time (a folder's changes whenever an entry comes or goes).
    std::string snapshot(bool withTimes = false) const
    {
        QStringList entries;
        const auto all = QDir::AllEntries | QDir::NoDotAndDotDot | QDir::Hidden | QDir::System;
        for (const QString &top : {root(), home()}) {
            QDirIterator it(top, all, QDirIterator::Subdirectories);
            while (it.hasNext()) {
                const QString path = it.next();
                QFile file(path);
                QByteArray digest;
                if (it.fileInfo().isFile() && file.open(QIODevice::ReadOnly))
                    digest = QCryptographicHash::hash(file.readAll(), QCryptographicHash::Md5);
                QString entry = path + ' ' + digest.toHex();
                struct stat info;
                if (withTimes && ::lstat(QFile::encodeName(path).constData(), &info) == 0)
                    entry += QStringLiteral(" %1 %2.%3")
                                 .arg(info.st_size)
                                 .arg(info.st_mtim.tv_sec)
                                 .arg(info.st_mtim.tv_nsec);
                entries << entry;
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

    // Alpha and Beta on system-wide, Gamma off and Delta on for the user; Beta has presets.
    void makeLibrary()
    {
        Builder::makeAudioUnit(au(LocSystemActive), "Alpha.component", MachO::universal2());
        Builder::makeAudioUnit(au(LocSystemActive), "Beta.component", MachO::intel());
        Builder::makeAudioUnit(au(LocUserDisabled), "Gamma.component", MachO::ppc());
        Builder::makeAudioUnit(au(LocUserActive), "Delta.component", MachO::x86_64());
        Builder::makeFile(presets, "Bright.preset");
        const QVariantList content{QStringList{"Beta.component", presets}};
        ASSERT_TRUE(writePlist(support + "content.plist", content));
        const QString prefs = homePath("Library/Preferences/com.velmora.Korvane.plist");
        ASSERT_TRUE(writePlist(prefs, QVariantMap{{"AUMoveContent", true}}));
    }

    using Entry = std::tuple<const char *, bool, bool>; // name, global, active

    // A set document in Documents holding the entries in order.
    QString writeSet(const QString &fileName, const QList<Entry> &entries)
    {
        QList<AUItemPtr> items;
        for (const auto &[name, global, active] : entries) {
            items << std::make_shared<AUItem>();
            items.last()->setAUName(name);
            items.last()->setAUGlobal(global);
            items.last()->setAUActive(active);
            items.last()->checkObject(TypeAU);
        }
        const QString path = homePath("Documents/" + fileName);
        EXPECT_TRUE(SetDocument::write(disk(), path, items));
        return path;
    }

    // Beta goes off, Gamma comes on, Alpha and Delta stay; one entry names nothing installed.
    QString writeSet()
    {
        return writeSet("Live.aukorv", {{"Alpha.component", true, true},
                                        {"Beta.component", true, false},
                                        {"Gamma.component", false, true},
                                        {"Missing.component", false, true},
                                        {"Delta.component", false, true}});
    }

    QJsonArray json(const QStringList &arguments)
    {
        return QJsonDocument::fromJson(tool(arguments).out.toUtf8()).array();
    }

    QString support, presets;
};

TEST_F(KorvaneCmdTest, ApplyingASetMovesExactlyTheChangedPlugInsWithTheirContent)
{
    makeLibrary();
    const QString set = writeSet();

    const ToolRun run = tool({"-AU", set});
    EXPECT_EQ(run.exitCode, 0) << run.err.toStdString();
    EXPECT_EQ(run.out, "disabled Beta.component\nenabled Gamma.component\n");
    EXPECT_EQ(run.err,
              "warning: AU set \"" + set + "\": no installed plug-in \"Missing.component\"\n");
    EXPECT_TRUE(isWholeBundle(au(LocSystemDisabled, "Beta.component")));
    EXPECT_TRUE(isWholeBundle(au(LocUserActive, "Gamma.component")));
    EXPECT_TRUE(isWholeBundle(au(LocSystemActive, "Alpha.component")));
    EXPECT_TRUE(isWholeBundle(au(LocUserActive, "Delta.component")));
    EXPECT_FALSE(QFile::exists(presets));
    const QString movedPresets = au(LocSystemDisabled, "Beta Presets");
    EXPECT_TRUE(QFile::exists(movedPresets + "/Bright.preset"));
    EXPECT_TRUE(readText(support + "content.plist").contains(movedPresets));

    const std::string before = snapshot();
    const ToolRun again = tool({"-AU", set});
    EXPECT_EQ(again.exitCode, 0);
    EXPECT_EQ(again.out, "");
    EXPECT_EQ(snapshot(), before);
}

TEST_F(KorvaneCmdTest, BadArgumentsAndUnreadableSetsExitTwoAndChangeNothing)
{
    makeLibrary();
    const QString set = writeSet();
    // Lets a first run make its folders and preferences; list would make none.
    ASSERT_EQ(tool({"enable", "--format", "au", "Alpha"}).exitCode, 0);
    static const char garbage[] = "\x04\x0bstreamtyped\x81\xe8\x03\x84\x01@\xff\xfe";
    writeText(homePath("Documents/garbage.aukorv"), QByteArray(garbage, sizeof garbage - 1));
    writePlist(homePath("Documents/plist.aukorv"), QVariantList{"Alpha.component"});
    const std::string before = snapshot();

    const QList<QStringList> bad{{"--bogus"},
                                 {"-AU"},
                                 {"frobnicate"},
                                 {"list", "--format", "wav"},
                                 {"list", "extra"},
                                 {"disable", "Alpha.component"},
                                 {"disable", "--format", "au", "Alpha", "Nope.component"},
                                 {"save-set", "--format", "au"}};
    for (const QStringList &arguments : bad) {
        const ToolRun run = tool(arguments);
        EXPECT_EQ(run.exitCode, 2) << arguments.join(' ').toStdString();
        EXPECT_TRUE(run.err.startsWith("KorvaneCMD: ")) << run.err.toStdString();
        EXPECT_EQ(run.out, "");
    }
    EXPECT_TRUE(tool(bad[6]).err.contains("Nope.component"));
    EXPECT_EQ(tool({"list"}, {.systemRoot = root() + "/nowhere"}).exitCode, 2);

    for (const char *name : {"none.aukorv", "garbage.aukorv", "plist.aukorv"}) {
        // The readable AU set would move plug-ins; the unreadable VST set stops the run first.
        const QString unreadable = homePath("Documents/") + name;
        const ToolRun run = tool({"-AU", set, "-VST", unreadable});
        EXPECT_EQ(run.exitCode, 2) << name;
        EXPECT_TRUE(run.err.contains(unreadable)) << run.err.toStdString();
        EXPECT_EQ(run.out, "");
        EXPECT_EQ(tool({"show-set", unreadable}).exitCode, 2);
    }
    EXPECT_EQ(snapshot(), before);
}

TEST_F(KorvaneCmdTest, AFailedMoveExitsOneNamesThePathAndLosesNothing)
{
    makeLibrary();
    const QString set = writeSet();
    QDir().mkpath(au(LocSystemDisabled));
    ImmutableGuard guard(au(LocSystemDisabled));
    if (!guard.ok())
        GTEST_SKIP() << "chattr +i is not supported here";

    const ToolRun run = tool({"-AU", set});
    EXPECT_EQ(run.exitCode, 1);
    // The tool proceeds past a failed move: each move is whole or not made.
    EXPECT_EQ(run.out, "enabled Gamma.component\n");
    for (const QString &part : {QString("error: could not disable \"Beta.component\""),
                                au(LocSystemActive, "Beta.component"), au(LocSystemDisabled)})
        EXPECT_TRUE(run.err.contains(part)) << run.err.toStdString();
    EXPECT_TRUE(isWholeBundle(au(LocSystemActive, "Beta.component")));
    EXPECT_TRUE(QFile::exists(presets + "/Bright.preset"));
    EXPECT_FALSE(QFile::exists(au(LocSystemDisabled, "Beta.component")));
}

TEST_F(KorvaneCmdTest, EachMoveSaysWhatItDidAndAnotherCopyInTheWayExitsOne)
{
    Builder::makeAudioUnit(au(LocSystemActive), "Twin.component", MachO::intel());
    Builder::makeAudioUnit(au(LocUserActive), "Twin.component", MachO::ppc());
    Builder::makeAudioUnit(au(LocSystemActive), "Alpha.component", MachO::intel());
    Builder::makeAudioUnit(au(LocUserActive), "Delta.component", MachO::intel());
    const QString now = homePath("Documents/now.aukorv");
    ASSERT_EQ(tool({"save-set", "--format", "au", now}).exitCode, 0);
    const ToolRun same = tool({"-AU", now});
    EXPECT_EQ(same.exitCode, 0) << same.err.toStdString();
    EXPECT_EQ(same.out, ""); // each entry of a twice-installed name finds its own copy

    // An entry found where the system copy lies but asking for the user folder, where the other
    // copy lies (a document edited by hand, or saved by another program).
    const QString set = writeSet("moves.aukorv", {{"Twin.component", false, true},
                                                  {"Alpha.component", false, false},
                                                  {"Delta.component", true, true}});
    {
        QList<AUItemPtr> items = SetDocument::read(set);
        items.first()->setAULocation(au(LocSystemActive));
        ASSERT_TRUE(SetDocument::write(disk(), set, items));
    }
    const ToolRun run = tool({"-AU", set});
    EXPECT_EQ(run.exitCode, 1);
    EXPECT_EQ(run.out,
              "disabled and moved to user Alpha.component\nmoved to system Delta.component\n");
    EXPECT_TRUE(run.err.startsWith("error: could not move to user \"Twin.component\": \""
                                   + au(LocSystemActive, "Twin.component")))
        << run.err.toStdString();
    const QString executable = "Twin.component/Contents/MacOS/Plugin";
    EXPECT_EQ(MachOHeader::firstBytes(au(LocSystemActive, executable)), MachO::intel());
    EXPECT_EQ(MachOHeader::firstBytes(au(LocUserActive, executable)), MachO::ppc());
    EXPECT_TRUE(isWholeBundle(au(LocUserDisabled, "Alpha.component")));
    EXPECT_TRUE(isWholeBundle(au(LocSystemActive, "Delta.component")));
}

TEST_F(KorvaneCmdTest, EnableAndDisableSwitchEveryPlugInOfTheName)
{
    makeLibrary();
    Builder::makeAudioUnit(au(LocUserActive), "Alpha.component", MachO::ppc());

    ToolRun off = tool({"disable", "--format", "AU", "Alpha", "Delta.component"});
    EXPECT_EQ(off.exitCode, 0) << off.err.toStdString();
    EXPECT_EQ(off.out, "disabled Alpha.component\ndisabled Alpha.component\n"
                       "disabled Delta.component\n");
    EXPECT_TRUE(isWholeBundle(au(LocSystemDisabled, "Alpha.component")));
    EXPECT_TRUE(isWholeBundle(au(LocUserDisabled, "Alpha.component")));
    EXPECT_TRUE(isWholeBundle(au(LocUserDisabled, "Delta.component")));

    ToolRun on = tool({"enable", "--format", "au", "Delta.component", "Gamma.component"});
    EXPECT_EQ(on.exitCode, 0);
    EXPECT_EQ(on.out, "enabled Delta.component\nenabled Gamma.component\n");
    EXPECT_EQ(tool({"enable", "--format", "au", "Gamma.component"}).out, ""); // already on
}

TEST_F(KorvaneCmdTest, JsonOutputCarriesExactlyTheDocumentedKeys)
{
    makeLibrary();
    Builder::makeAudioUnit(au(LocUserDisabled), "Alpha.component", MachO::ppc());
    const QString echo = folder(TypeVST, LocSystemDisabled);
    Builder::makeVST(echo, "Echo.vst", MachO::ppc());
    writePlist(support + "groups.plist", QVariantList{"", "Synths"});
    writePlist(support + "augroups.plist", QVariantList{"Alpha.component", "Synths"});

    const QJsonArray all = json({"list", "--json"});
    ASSERT_EQ(all.size(), 6);
    for (const QJsonValue &value : all)
        EXPECT_EQ(value.toObject().keys(), QStringList({"active", "architecture", "format",
                                                        "global", "group", "location", "name"}));
    EXPECT_TRUE(all.contains(QJsonObject{{"format", "AU"},
                                         {"name", "Alpha.component"},
                                         {"location", au(LocSystemActive)},
                                         {"global", true},
                                         {"active", true},
                                         {"group", "Synths"},
                                         {"architecture", "Universal Binary"}}));
    EXPECT_TRUE(all.contains(QJsonObject{{"format", "VST"},
                                         {"name", "Echo.vst"},
                                         {"location", echo},
                                         {"global", true},
                                         {"active", false},
                                         {"group", ""},
                                         {"architecture", "PPC"}}));
    const QString vst = tool({"list", "--format", "vst"}).out;
    EXPECT_EQ(vst.count('\n'), 1);
    EXPECT_TRUE(vst.contains(echo + "/Echo.vst")) << vst.toStdString();
    EXPECT_EQ(tool({"list"}).out.count('\n'), 6);

    const QString set = homePath("Documents/Now.aukorv");
    ASSERT_EQ(tool({"save-set", "--format", "au", set}).exitCode, 0);
    const QJsonArray items = json({"show-set", set, "--json"});
    ASSERT_EQ(items.size(), 5);
    for (const QJsonValue &value : items)
        EXPECT_EQ(value.toObject().keys(), QStringList({"active", "global", "location", "name"}));
    EXPECT_TRUE(items.contains(QJsonObject{{"name", "Gamma.component"},
                                           {"global", false},
                                           {"location", au(LocUserDisabled)},
                                           {"active", false}}));
    const QJsonObject twice{{"format", "AU"}, {"name", "Alpha.component"}, {"count", 2}};
    EXPECT_EQ(json({"duplicates", "--json"}), QJsonArray{twice});
    EXPECT_TRUE(tool({"duplicates", "--format", "vst"}).out.isEmpty());
}

TEST_F(KorvaneCmdTest, ReportingCommandsChangeNothingOnDisk)
{
    makeLibrary();
    const QString set = writeSet();
    // A first run seeds the preferences, and a damaged registry reads as absent and is rewritten.
    ASSERT_TRUE(QFile::remove(homePath("Library/Preferences/com.velmora.Korvane.plist")));
    writeText(support + "content.plist", "<?xml version=\"1.0\"?><plist><array><string>Beta");
    const std::string before = snapshot(true);

    const QList<QStringList> reporting{
        {"list"},          {"list", "--format", "vst", "--json"},
        {"duplicates"},    {"duplicates", "--format", "au", "--json"},
        {"show-set", set}, {"show-set", set, "--json"}};
    for (const QStringList &arguments : reporting) {
        const ToolRun run = tool(arguments);
        EXPECT_EQ(run.exitCode, 0)
            << arguments.join(' ').toStdString() << ": " << run.err.toStdString();
        EXPECT_EQ(snapshot(true), before) << arguments.join(' ').toStdString();
    }
    // Scanned without making the missing folders.
    EXPECT_EQ(tool({"list", "--format", "au"}).out.count('\n'), 4);
    EXPECT_EQ(tool({"show-set", set}).out.count('\n'), 5);
}

TEST_F(KorvaneCmdTest, SetsArriveThroughPipesAndWhatCannotBeReadExitsTwoAtOnce)
{
    makeLibrary();
    QFile file(writeSet());
    ASSERT_TRUE(file.open(QIODevice::ReadOnly));
    const QByteArray bytes = file.readAll();

    const ToolRun shown = tool({"show-set", "/dev/stdin"}, {.input = bytes});
    EXPECT_EQ(shown.exitCode, 0) << shown.err.toStdString();
    EXPECT_EQ(shown.out.count('\n'), 5);
    const ToolRun applied = tool({"-AU", "/dev/stdin"}, {.input = bytes});
    EXPECT_EQ(applied.exitCode, 0) << applied.err.toStdString();
    EXPECT_EQ(applied.out, "disabled Beta.component\nenabled Gamma.component\n");

    // A FIFO nobody writes to would keep a reader waiting for ever; a device is no document.
    const QString fifo = homePath("Documents/nobody.aukorv");
    ASSERT_EQ(::mkfifo(QFile::encodeName(fifo).constData(), 0600), 0);
    for (const QString &path : {fifo, QString("/dev/null"), homePath("Documents")}) {
        for (const QStringList &arguments :
             {QStringList{"show-set", path}, QStringList{"-AU", path}}) {
            const ToolRun run = tool(arguments, {.timeoutMs = 10000});
            EXPECT_EQ(run.exitCode, 2) << arguments.join(' ').toStdString();
            EXPECT_TRUE(run.err.startsWith("KorvaneCMD: ") && run.err.contains(path))
                << run.err.toStdString();
        }
    }
    EXPECT_EQ(tool({"show-set", "/dev/stdin"}).exitCode, 2); // an empty pipe
}

TEST_F(KorvaneCmdTest, OverlappingMoversTakeTurnsAndLoseNoPlugIn)
{
    // Each folder on a file system of its own; in memory, so that the sync of each move is quick.
    TmpfsMount active(au(LocSystemActive)), disabled(au(LocSystemDisabled));
    if (!active.ok() || !disabled.ok())
        GTEST_SKIP() << "cannot mount a tmpfs here";
    QStringList names;
    for (int i = 0; i < 200; ++i) {
        names << QString("Plug %1").arg(i, 3, 10, QChar('0'));
        Builder::makeAudioUnit(au(LocSystemActive), names.last(), MachO::intel());
    }

    const RunOptions patient{.environment = {"KORVANE_LOCK_WAIT_MS=60000"}};
    std::vector<std::unique_ptr<QProcess>> movers;
    for (const char *command : {"disable", "disable", "enable"}) {
        movers.push_back(startTool(QStringList{command, "--format", "au"} + names, patient));
        QThread::msleep(5);
    }
    for (const auto &mover : movers) {
        const ToolRun run = finish(*mover);
        EXPECT_EQ(run.exitCode, 0) << run.err.toStdString();
    }

    int whole = 0;
    for (const QString &name : std::as_const(names)) {
        const bool on = isWholeBundle(au(LocSystemActive, name + ".component"));
        const bool off = isWholeBundle(au(LocSystemDisabled, name + ".component"));
        EXPECT_NE(on, off) << name.toStdString();
        whole += on != off;
    }
    EXPECT_EQ(whole, 200);
    const auto all = QDir::AllEntries | QDir::NoDotAndDotDot | QDir::Hidden;
    EXPECT_EQ(QDir(au(LocSystemActive)).entryList(all).size()
                  + QDir(au(LocSystemDisabled)).entryList(all).size(),
              200); // no partial copies left behind
}

TEST_F(KorvaneCmdTest, AMoverStopsAfterItsWaitNamingTheHolderWhoseDeathFreesTheLock)
{
    makeLibrary();
    auto holder = start(HOLD_LIBRARY_LOCK, {}, {.keepInputOpen = true});
    ASSERT_TRUE(holder->waitForReadyRead(10000)) << holder->readAllStandardError().toStdString();
    ASSERT_EQ(holder->readLine(), "locked\n");
    const QString named = QString("hold_library_lock (process %1)").arg(holder->processId());

    const RunOptions briefly{.environment = {"KORVANE_LOCK_WAIT_MS=300"}};
    const ToolRun stopped = tool({"disable", "--format", "au", "Alpha"}, briefly);
    EXPECT_EQ(stopped.exitCode, 1);
    EXPECT_EQ(stopped.out, "");
    EXPECT_TRUE(stopped.err.contains(named)) << stopped.err.toStdString();
    EXPECT_TRUE(isWholeBundle(au(LocSystemActive, "Alpha.component")));
    EXPECT_EQ(tool({"list"}, briefly).exitCode, 0); // reporting needs no lock

    {
        // The window's apply, too, tells who holds the lock and moves nothing.
        const EnvironmentGuard wait("KORVANE_LOCK_WAIT_MS", "300");
        ScriptedUi ui;
        AppContext::Parts parts;
        parts.roots = roots();
        parts.ui = &ui;
        parts.awakeFromNib = false;
        AppContext context(std::move(parts));
        context.au()->reloadData();
        context.au()->setAllInactive();
        context.au()->activate();
        ASSERT_EQ(ui.alerts.size(), 1);
        EXPECT_TRUE(ui.alerts[0].informativeText.contains(named))
            << ui.alerts[0].informativeText.toStdString();
        EXPECT_TRUE(isWholeBundle(au(LocSystemActive, "Alpha.component")));
    }

    holder->kill(); // its lock file stays behind
    holder->waitForFinished();
    ASSERT_TRUE(QFile::exists(LibraryLock::lockFilePath(locations())));
    const ToolRun after = tool({"disable", "--format", "au", "Alpha"}, briefly);
    EXPECT_EQ(after.exitCode, 0) << after.err.toStdString();
    EXPECT_EQ(after.out, "disabled Alpha.component\n");
    EXPECT_FALSE(QFile::exists(LibraryLock::lockFilePath(locations())));

    // A holder killed before it wrote its name leaves an empty lock file; once it has stood a
    // while, it frees the library too.
    QFile empty(LibraryLock::lockFilePath(locations()));
    ASSERT_TRUE(empty.open(QIODevice::WriteOnly));
    empty.setFileTime(QDateTime::currentDateTime().addSecs(-60), QFileDevice::FileModificationTime);
    empty.close();
    const ToolRun afterEmpty = tool({"enable", "--format", "au", "Alpha"}, briefly);
    EXPECT_EQ(afterEmpty.exitCode, 0) << afterEmpty.err.toStdString();
    EXPECT_TRUE(isWholeBundle(au(LocSystemActive, "Alpha.component")));

    // Where no lock can be made, nothing moves either.
    ImmutableGuard guard(support);
    if (!guard.ok())
        return;
    const ToolRun unlockable = tool({"disable", "--format", "au", "Alpha"}, briefly);
    EXPECT_EQ(unlockable.exitCode, 1);
    EXPECT_TRUE(unlockable.err.contains(LibraryLock::lockFilePath(locations())))
        << unlockable.err.toStdString();
    EXPECT_TRUE(isWholeBundle(au(LocSystemActive, "Alpha.component")));
}

TEST(ProgramExitTest, DecodingASetAndReturningFromMainWithoutAResetExitsCleanly)
{
    QProcess process;
    process.start(DECODE_SET_AND_EXIT, QStringList{});
    ASSERT_TRUE(process.waitForFinished(60000));
    EXPECT_EQ(process.exitStatus(), QProcess::NormalExit);
    EXPECT_EQ(process.exitCode(), 0) << process.readAllStandardError().toStdString();
}

TEST_F(KorvaneCmdTest, HelpAndVersionExitZero)
{
    const ToolRun help = tool({"--help"}), version = tool({"--version"});
    EXPECT_EQ(help.exitCode + version.exitCode, 0);
    EXPECT_EQ(help.out, helpText());
    EXPECT_EQ(version.out, versionText() + "\n");
}

} // namespace
} // namespace korvane
