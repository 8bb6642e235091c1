#include "ShellFixture.h"

#include "managers/MyAdminObj.h"
#include "managers/MyVSTObj.h"
#include "platform/PropertyList.h"
#include "shell/LumoScript.h"

#include <QCoreApplication>
#include <QDir>
#include <QProcess>

namespace korvane {

namespace {

using Layout = LumoScript::Layout;

const QString kRecorder = QStringLiteral(KORVANE_ARGV_RECORDER);

// The records the argument recorder appended to path: each run's argv, argv[0] included.
QList<QStringList> records(const QString &path)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return {};
    const QList<QByteArray> fields = file.readAll().split('\0');
    QList<QStringList> runs;
    for (qsizetype i = 0; i + 1 < fields.size();) {
        const int count = fields.at(i++).toInt();
        QStringList argv;
        for (int n = 0; n < count && i < fields.size(); ++n)
            argv << QString::fromUtf8(fields.at(i++));
        runs << argv;
    }
    return runs;
}

// The shell command inside an AppleScript's "do shell script" string, as sh receives it.
QString doShellScriptCommand(const QString &script)
{
    const QString start = QStringLiteral(" do shell script \"");
    const qsizetype from = script.indexOf(start);
    if (from < 0)
        return {};
    QString command;
    for (qsizetype i = from + start.size(); i < script.size(); ++i) {
        const QChar c = script.at(i);
        if (c == u'"')
            return command;
        if (c == u'\n')
            return {}; // a literal never runs across lines here
        if (c == u'\\' && i + 1 < script.size()) {
            const QChar next = script.at(++i);
            command += next == u'n' ? QChar(u'\n') : next == u'r' ? QChar(u'\r') : next;
        } else {
            command += c;
        }
    }
    return {};
}

} // namespace

class LumoScriptTest : public ShellTest {
protected:
    void SetUp() override
    {
        ShellTest::SetUp();
        makeContext();
        script = context->script();
        script->setLayout(Layout::AppleScript);
    }

    // The set pop-ups of the four formats holding and showing these titles, AU to VST; the
    // segments clicked from VST back to AU.
    void selectSets(const QStringList &titles)
    {
        const QString support = homePath("Library/Application Support/Korvane/");
        QDir().mkpath(support);
        const char *files[] = {"ausets.plist", "rtassets.plist", "massets.plist", "vstsets.plist"};
        for (int type = 3; type >= 0; --type) {
            ASSERT_TRUE(
                writePlist(support + files[type], QVariantList{"no set", titles.value(type)}));
            TypeManager *manager = context->manager(type);
            manager->awakeFromNib();
            manager->selectSetIndex(1);
            ASSERT_EQ(manager->getSelectedSet(), titles.value(type));
            script->setSegmentSelected(type, true);
        }
    }

    // Runs a script with sh in a folder of its own; the recorder writes to record.
    int runScript(const QString &path, const QString &record, const QString &folder)
    {
        QDir().mkpath(folder);
        QProcess sh;
        sh.setWorkingDirectory(folder);
        QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
        environment.insert("KORVANE_RECORD", record);
        sh.setProcessEnvironment(environment);
        sh.start("sh", {path});
        EXPECT_TRUE(sh.waitForFinished(10000));
        return sh.exitStatus() == QProcess::NormalExit ? sh.exitCode() : -1;
    }

    LumoScript *script = nullptr;
};

TEST_F(LumoScriptTest, SegmentsWithoutASetAreToldInOrderAndDeselected)
{
    context->awakeFromNib();
    for (bool opening : {false, true}) { // opening the window deselects silently
        for (int segment = 0; segment < 4; ++segment)
            script->setSegmentSelected(segment, true);
        opening ? script->openScriptWindow() : script->changeArgument();
        for (int segment = 0; segment < 4; ++segment)
            EXPECT_FALSE(script->isSegmentSelected(segment)) << segment;
        EXPECT_FALSE(script->script().contains(" -")) << script->script().toStdString();
    }
    QStringList told;
    for (const char *name : {"AudioUnits", "RTAS", "MAS", "VST"})
        told << QString("There is no set selected for ") + name;
    EXPECT_EQ(ui.alertMessages(), told);
    EXPECT_TRUE(script->isWindowVisible());
}

// Whatever a set's name holds, the tool receives exactly that name, in format order, and nothing
// else runs: no quote, separator, substitution or line break in a name gets out of its argument.
TEST_F(LumoScriptTest, HostileSetNamesReachTheToolExactlyAndRunNothingElse)
{
    const QList<QStringList> rounds = {
        {"/sets/'; touch X; echo '.aukorv", "/sets/\"; touch Y; echo \".rtaskorv",
         "/sets/$(touch Z).maskorv", "/sets/`touch W`.vstkorv"},
        {"/sets/a\nb\\c\\\n.aukorv", "/sets/'\\''\"'\"'.rtaskorv", "/sets/$HOME * ?.maskorv",
         "-VST x; exit 0 #.vstkorv"},
        {" lead/\u65e5\u672c \u00e9\t.aukorv", "/sets/%@ \\\" \\n \\\\.rtaskorv",
         "/sets/;|&<>(){}!~\\.maskorv", "/sets/\"\"\"'''.vstkorv"},
    };
    const QString host = kRecorder + " it's $HOME;touch H \"two words\" \"\"\"quoted\"\"\"";
    const QStringList hostArgv = {kRecorder, "it's", "$HOME;touch", "H", "two words", "\"quoted\""};
    context->awakeFromNib();
    script->setLayout(Layout::Shell); // by default the tool beside the program
    script->changeArgument();
    EXPECT_TRUE(
        script->script().contains("'" + QCoreApplication::applicationDirPath() + "/KorvaneCMD'"));
    script->setToolPath(kRecorder);
    int run = 0;
    for (const QStringList &names : rounds) {
        selectSets(names);
        const QStringList toolArgv = {kRecorder, "-AU",    names[0], "-RTAS", names[1],
                                      "-MAS",    names[2], "-VST",   names[3]};
        for (Layout layout : {Layout::Shell, Layout::AppleScript}) {
            const QString folder = homePath(QString("run%1").arg(++run));
            const QString record = homePath(QString("record%1").arg(run));
            script->setLayout(layout);
            script->setHostCommand(host);
            script->changeArgument();
            QString path = homePath(QString("script%1").arg(run));
            if (layout == Layout::Shell) {
                script->savePanelDidEnd(1, path);
                EXPECT_TRUE(QFileInfo(path).isExecutable());
            } else { // as "do shell script" would hand it to sh
                const QString command = doShellScriptCommand(script->script());
                ASSERT_FALSE(command.isEmpty()) << script->script().toStdString();
                writeText(path, command.toUtf8());
            }
            EXPECT_EQ(runScript(path, record, folder), 0) << script->script().toStdString();
            QList<QStringList> expected{toolArgv};
            if (layout == Layout::Shell)
                expected << hostArgv;
            EXPECT_EQ(records(record), expected) << script->script().toStdString();
            EXPECT_EQ(QDir(folder).entryList(QDir::AllEntries | QDir::NoDotAndDotDot),
                      QStringList());
        }
    }
    EXPECT_TRUE(ui.alerts.isEmpty());

    // Without a host the script only applies; a tool that fails stops it before the host starts.
    script->setLayout(Layout::Shell);
    script->setHostCommand("");
    script->savePanelDidEnd(1, homePath("apply"));
    EXPECT_EQ(runScript(homePath("apply"), homePath("record-apply"), homePath("run-apply")), 0);
    EXPECT_EQ(records(homePath("record-apply")).size(), 1);
    script->setHostCommand(host);
    script->setToolPath(homePath("missing/KorvaneCMD"));
    script->changeArgument();
    script->savePanelDidEnd(1, homePath("failing"));
    EXPECT_NE(runScript(homePath("failing"), homePath("record-failing"), homePath("run-failing")),
              0);
    EXPECT_EQ(records(homePath("record-failing")), QList<QStringList>());
}

TEST_F(LumoScriptTest, SavingWritesTheShownTextAndFailsSilently)
{
    const QString documents = homePath("Documents"), locked = homePath("Locked");
    QDir().mkpath(documents);
    QDir().mkpath(locked);
    for (Layout layout : {Layout::AppleScript, Layout::Shell}) {
        script->setLayout(layout);
        script->openScriptWindow();
        script->setScript(script->script() + "# edited \u00e9\n");
        const QString name = layout == Layout::Shell ? "untitled.sh" : "untitled.applescript";
        ui.savePanelAnswers << documents + "/" + name;
        script->saveScript();
        script->saveScript(); // cancelled
        EXPECT_EQ(ui.savePanels.value(0).directory, documents);
        EXPECT_EQ(ui.savePanels.last().fileName, name);
        EXPECT_EQ(readText(documents + "/" + name), script->script());
        EXPECT_EQ(QFileInfo(documents + "/" + name).isExecutable(), layout == Layout::Shell);
    }
    EXPECT_EQ(QDir(documents).entryList(QDir::Files),
              QStringList({"untitled.applescript", "untitled.sh"}));

    ImmutableGuard guard(locked);
    if (!guard.ok())
        GTEST_SKIP() << "chattr +i is not available here";
    ui.savePanelAnswers << locked + "/launch.sh";
    script->saveScript();
    EXPECT_FALSE(QFileInfo::exists(locked + "/launch.sh"));
    EXPECT_TRUE(ui.alerts.isEmpty());
}

} // namespace korvane
