#include "AppFixture.h"

#include "app/LaunchScript.h"
#include "library/FormatManager.h"

#include <QCoreApplication>
#include <QDir>
#include <QProcess>
#include <QRegularExpression>
#include <QStandardPaths>

namespace korvane {

namespace {

using Layout = LaunchScript::Layout;

const QString kRecorder = QStringLiteral(KORVANE_ARGV_RECORDER);

// The shell command inside an AppleScript's "do shell script" string, as sh receives it.
QString doShellScriptCommand(const QString &script)
{
    static const QRegularExpression literal(R"re(do shell script "((?:[^"\\\n]|\\.)*)")re");
    const QString quoted = literal.match(script).captured(1);
    QString command;
    for (qsizetype i = 0; i < quoted.size(); ++i) {
        QChar c = quoted.at(i);
        if (c == u'\\') {
            c = quoted.at(++i);
            c = c == u'n' ? QChar(u'\n') : c == u'r' ? QChar(u'\r') : c;
        }
        command += c;
    }
    return command;
}

} // namespace

class LaunchScriptTest : public AppTest {
protected:
    void SetUp() override
    {
        AppTest::SetUp();
        makeContext();
        script = context->script();
        script->setLayout(Layout::AppleScript);
        script->setToolPath(kRecorder);
    }

    // The four formats' set pop-ups showing these titles; the segments clicked from VST to AU.
    void selectSets(const QStringList &titles)
    {
        const QString support = homePath("Library/Application Support/Korvane/");
        QDir().mkpath(support);
        const char *files[] = {"ausets.plist", "rtassets.plist", "massets.plist", "vstsets.plist"};
        for (int type = 3; type >= 0; --type) {
            ASSERT_TRUE(writePlist(support + files[type], QVariantList{"no set", titles[type]}));
            context->manager(type)->sets().loadSetList();
            context->manager(type)->sets().selectSetIndex(1);
            script->setFormatSelected(type, true);
        }
    }

    // Runs a script with sh in an empty folder of its own, which must stay empty: the exit code,
    // and the fields the argument recorder wrote (per run the count, then argv).
    std::tuple<int, QStringList> runScript(const QString &path)
    {
        const QString folder = homePath(QString("run%1").arg(++runs)), record = folder + ".rec";
        QDir().mkpath(folder);
        QProcess sh;
        sh.setWorkingDirectory(folder);
        qputenv("KORVANE_RECORD", record.toUtf8()); // only the recorder reads it
        sh.start("sh", {path});
        EXPECT_TRUE(sh.waitForFinished(10000));
        EXPECT_TRUE(QDir(folder).isEmpty()) << folder.toStdString();
        QFile file(record);
        QStringList fields =
            QString::fromUtf8(file.open(QIODevice::ReadOnly) ? file.readAll() : "").split(QChar(0));
        fields.removeLast(); // after the last NUL
        return {sh.exitStatus() == QProcess::NormalExit ? sh.exitCode() : -1, fields};
    }

    LaunchScript *script = nullptr;
    int runs = 0;
};

// Whatever a set's name holds, the tool receives exactly that name, in format order, and nothing
// else runs: no quote, separator, substitution or line break in a name gets out of its argument.
TEST_F(LaunchScriptTest, HostileSetNamesReachTheToolExactlyAndRunNothingElse)
{
    const QList<QStringList> rounds = {
        {"/sets/'; touch X; echo '.aukorv", "/sets/\"; touch Y; echo \".rtaskorv",
         "/sets/$(touch Z).maskorv", "/sets/`touch W`.vstkorv"},
        {"/sets/a\nb\\c\\\n.aukorv", "/sets/'\\''\"'\"'.rtaskorv", "/sets/$HOME * ?.maskorv",
         "-VST x; exit 0 #.vstkorv"},
        {" lead/\u65e5\u672c \u00e9\t.aukorv", "/sets/%@ \\\" \\n \\\\.rtaskorv",
         "/sets/;|&<>(){}!~\\.maskorv", "/sets/\"\"\"'''.vstkorv"},
    };
    // Written for sh: quotes, escapes and an empty word; nothing in it is expanded or run.
    const QString host =
        kRecorder + R"( it\'s '$HOME;touch H' "two words" "\"q\" \$x \\ \`" a\ b '' c"d"'e' "k\n")";
    const QStringList hostRun = {"9",         kRecorder,       "it's", "$HOME;touch H",
                                 "two words", "\"q\" $x \\ `", "a b",  "",
                                 "cde",       "k\\n"};
    context->prepareWindow();
    for (int segment = 0; segment < 4; ++segment) // no set anywhere yet: each is told, in order
        script->setFormatSelected(segment, true);
    script->rebuild();
    EXPECT_EQ(ui.alertMessages().first(), "There is no set selected for AudioUnits");
    EXPECT_EQ(ui.alertMessages().size(), 4);
    EXPECT_FALSE(script->isFormatSelected(TypeVST));
    script->setHostCommand(host);
    for (const QStringList &names : rounds) {
        selectSets(names);
        // The roots of the library shown come first.
        const QStringList toolRun = {"13",   kRecorder, "--root", root(),  "--home",
                                     home(), "-AU",     names[0], "-RTAS", names[1],
                                     "-MAS", names[2],  "-VST",   names[3]};
        for (Layout layout : {Layout::Shell, Layout::AppleScript}) {
            script->setLayout(layout);
            script->rebuild();
            const QString path = homePath(QString("script%1").arg(runs));
            if (layout == Layout::Shell)
                script->saveScript(path);
            else // as "do shell script" would hand it to sh
                writeText(path, doShellScriptCommand(script->script()).toUtf8());
            const auto [exitCode, fields] = runScript(path);
            EXPECT_EQ(exitCode, 0) << script->script().toStdString();
            EXPECT_EQ(fields, layout == Layout::Shell ? toolRun + hostRun : toolRun)
                << script->script().toStdString();
        }
    }
    EXPECT_EQ(ui.alerts.size(), 4); // every set found

    // A tool that fails stops the script before the host starts.
    script->setLayout(Layout::Shell);
    script->setToolPath(QStandardPaths::findExecutable("false"));
    script->rebuild();
    script->saveScript(homePath("failing"));
    const auto [failed, hostRan] = runScript(homePath("failing"));
    EXPECT_NE(failed, 0);
    EXPECT_TRUE(hostRan.isEmpty());
}

// A script is written only for a tool that is there: from the build tree the window used to name
// a KorvaneCMD beside itself that does not exist.
TEST_F(LaunchScriptTest, TheToolIsFoundBesideTheProgramOrInTheBuildTreeAndAMissingOneIsNoScript)
{
    const QString here = QCoreApplication::applicationDirPath();
    EXPECT_EQ(LaunchScript::toolCandidates().mid(0, 2),
              QStringList({here + "/KorvaneCMD", QDir::cleanPath(here + "/../KorvaneCMD")}));
    // Through a link the script names the real program, which stays where it is.
    QFile::link(kRecorder, homePath("KorvaneCMD"));
    script->setToolPath(homePath("KorvaneCMD"));
    script->setLayout(Layout::Shell);
    script->rebuild();
    EXPECT_TRUE(script->toolProblem().isEmpty());

    script->setToolPath(homePath("missing/KorvaneCMD"));
    for (Layout layout : {Layout::Shell, Layout::AppleScript}) {
        script->setLayout(layout);
        script->rebuild();
        EXPECT_TRUE(script->script().contains("KorvaneCMD was not found (looked at "
                                              + homePath("missing/KorvaneCMD") + ")"));
        script->saveScript(homePath("launch"));
        EXPECT_FALSE(QFileInfo::exists(homePath("launch")));
        ASSERT_FALSE(ui.alerts.isEmpty());
        EXPECT_EQ(ui.alerts.last().messageText, "Script not saved");
    }
}

// The window tests save an edited text; here: the name and mode per layout, and a folder that
// refuses the file, which is said.
TEST_F(LaunchScriptTest, SavingWritesTheShownTextAndSaysWhyItCouldNot)
{
    const QString documents = homePath("Documents"), locked = homePath("Locked");
    QDir().mkpath(documents);
    QDir().mkpath(locked);
    for (Layout layout : {Layout::AppleScript, Layout::Shell}) {
        script->setLayout(layout);
        script->openWindow();
        const QString name = layout == Layout::Shell ? "untitled.sh" : "untitled.applescript";
        ui.savePanelAnswers << documents + "/" + name;
        script->saveScript();
        EXPECT_EQ(ui.savePanels.last().directory, documents);
        EXPECT_EQ(ui.savePanels.last().fileName, name);
        EXPECT_EQ(readText(documents + "/" + name), script->script());
        EXPECT_EQ(QFileInfo(documents + "/" + name).isExecutable(), layout == Layout::Shell);
    }

    ImmutableGuard guard(locked);
    if (!guard.ok())
        GTEST_SKIP() << "chattr +i is not available here";
    ui.savePanelAnswers << locked + "/launch.sh";
    script->saveScript();
    EXPECT_FALSE(QFileInfo::exists(locked + "/launch.sh"));
    ASSERT_EQ(ui.alerts.size(), 1);
    EXPECT_EQ(ui.alerts.first().messageText, "Script not saved");
    EXPECT_TRUE(
        ui.alerts.first().informativeText.startsWith("Could not save " + locked + "/launch.sh: "));
}

// The host command line splits as sh splits a simple command, without expanding anything; a
// line sh would not take is refused with its reason, shown in the script and when saving.
TEST_F(LaunchScriptTest, TheHostCommandLineSplitsAsAShellUserExpects)
{
    const QList<std::pair<QString, QStringList>> split = {
        {"", {}},
        {" \t\n ", {}},
        {"host  -a\t-b\nc", {"host", "-a", "-b", "c"}},
        {R"('a b'"c d"e\ f)", {"a bc de f"}},
        {R"('\' "\a\"\$\`\\")", {"\\", "\\a\"$`\\"}},
        {"\"\" ''", {"", ""}},
        {"a\\\nb \\\nc \"d\\\ne\"", {"ab", "c", "de"}},
        {"# $HOME; ~ *", {"#", "$HOME;", "~", "*"}},
    };
    for (const auto &[line, words] : split)
        EXPECT_EQ(LaunchScript::splitCommandLine(line), std::optional<QStringList>(words))
            << line.toStdString();
    const QList<std::pair<QString, QString>> refused = {
        {"host 'it", "an unclosed single quote"},
        {"host \"it\\\"", "an unclosed double quote"},
        {"host it\\", "ends in a backslash"},
    };
    for (const auto &[line, why] : refused) {
        QString problem;
        EXPECT_FALSE(LaunchScript::splitCommandLine(line, &problem)) << line.toStdString();
        EXPECT_TRUE(problem.contains(why)) << problem.toStdString();
    }

    script->setLayout(Layout::Shell);
    script->setHostCommand("host 'it");
    EXPECT_TRUE(script->script().contains(
        "\n# The host is not started: The host command line has an unclosed single quote (')\n"));
    EXPECT_FALSE(script->script().contains("exec "));
    ui.savePanelAnswers << homePath("launch.sh");
    script->saveScript();
    EXPECT_TRUE(ui.savePanels.isEmpty());
    script->saveScript(homePath("launch.sh"));
    EXPECT_FALSE(QFileInfo::exists(homePath("launch.sh")));
    EXPECT_EQ(ui.alertMessages(), QStringList({"Script not saved", "Script not saved"}));
}

} // namespace korvane
