#include "library/Authorization.h"
#include "os/AllowAllAuthorization.h"
#include "os/PolkitAuthorization.h"

#include "os/SystemLog.h"
#include "support/ScriptedUi.h"
#include "support/TestRoots.h"

#include <QCoreApplication>
#include <QFile>
#include <QProcess>
#include <QStandardPaths>
#include <QThread>

namespace korvane {
namespace {

// Records every call; rights are held once granted with interaction (or when told so).
class FakeBackend : public AuthorizationBackend {
public:
    int create(AuthorizationRef *ref) override { return *ref = ++lastRef, AuthorizationSuccess; }
    int copyRights(AuthorizationRef, const AuthorizationRights &rights, quint32 flags) override
    {
        copies.append(rights);
        flagsSeen.append(flags);
        held = held || ((flags & AuthorizationFlagInteractionAllowed) && grantOnInteraction);
        return held ? AuthorizationSuccess : AuthorizationDenied;
    }
    void free(AuthorizationRef ref, quint32 flags) override { frees.append({ref, flags}); }
    int executeWithPrivileges(AuthorizationRef, const QString &tool,
                              const std::optional<QStringList> &arguments) override
    {
        runs.append({tool, arguments});
        return executeStatus;
    }
    QByteArray processList(bool *ok) override { return *ok = pipeOpens, psOutput; }

    AuthorizationRef lastRef = 0;
    bool held = false, grantOnInteraction = true, pipeOpens = true;
    int executeStatus = AuthorizationSuccess;
    QByteArray psOutput;
    QList<AuthorizationRights> copies;
    QList<quint32> flagsSeen;
    QList<QPair<AuthorizationRef, quint32>> frees;
    QList<QPair<QString, std::optional<QStringList>>> runs;
};

// Records what polkit would be asked instead of asking; pkcheck answers checkAnswer.
class RecordingPolkit : public PolkitAuthorization {
public:
    int checkAnswer = 2; // a password would be needed
    QList<QStringList> checks, execs;

protected:
    int runCheck(const QStringList &arguments, int) override
    {
        return checks << arguments, checkAnswer;
    }
    bool startExec(const QStringList &arguments) override { return execs << arguments, true; }
};

// The backends are declared first so that they outlive the authentications using them.
class AuthorizationTest : public TestRoots {
protected:
    FakeBackend backend;
    RecordingPolkit polkit;
    ScriptedUi ui;
    SystemLogCapture log;
    Authorization auth{backend, ui};
};

TEST_F(AuthorizationTest, RightsAreAskedForOnceNeverForNothingAndDroppedOnce)
{
    int gained = 0, dropped = 0;
    QObject::connect(&auth, &Authorization::authenticated, [&] { ++gained; });
    QObject::connect(&auth, &Authorization::deauthenticated, [&] { ++dropped; });
    auth.deauthenticate(); // nothing open yet
    EXPECT_TRUE(auth.authenticate({"/usr/bin/tool"}));
    EXPECT_TRUE(auth.authenticate({"/usr/bin/tool"})); // held now: two checks, no dialog
    EXPECT_FALSE(auth.authenticate({}));               // even with the rights held
    EXPECT_EQ(gained, 1);
    EXPECT_EQ(backend.flagsSeen, QList<quint32>({2, 3, 2, 2, 2}));
    EXPECT_EQ(backend.copies[0].items.value(0).value, "/usr/bin/tool");
    const AuthorizationRef ref = auth.authorizationRef();
    auth.deauthenticate();
    auth.deauthenticate();
    EXPECT_EQ(dropped, 1);
    EXPECT_EQ(auth.authorizationRef(), 0u);
    EXPECT_EQ(backend.frees, (QList<QPair<AuthorizationRef, quint32>>{{ref, 8}}));
}

TEST_F(AuthorizationTest, RefusalRunsNothingALongPathIsRefusedAndArgumentsAreCapped)
{
    backend.grantOnInteraction = false;
    EXPECT_FALSE(auth.executeAsRoot("/usr/bin/tool", QStringList{"a"}));
    EXPECT_TRUE(backend.runs.isEmpty());
    EXPECT_EQ(ui.beeps + log.lines().size(), 0);

    backend.held = true;
    backend.copies.clear();
    // A path too long for the rights' buffer is refused, never cut to name another tool.
    EXPECT_TRUE(Authorization::rightsForCommands({"/" + QString(126, 'a')}));
    EXPECT_FALSE(auth.executeAsRoot("/" + QString(127, 'a'), std::nullopt));
    EXPECT_TRUE(backend.copies.isEmpty());
    const QStringList many(25, "x");
    for (const std::optional<QStringList> &arguments :
         {std::optional(many), std::optional(QStringList()), std::optional<QStringList>()})
        EXPECT_TRUE(auth.executeAsRoot("/usr/bin/tool", arguments));
    EXPECT_EQ(backend.runs.value(0).second, QStringList(19, "x"));
    EXPECT_TRUE(!backend.runs.value(1).second && !backend.runs.value(2).second);
}

TEST_F(AuthorizationTest, AProcessIsTheFirstLineNamingItAndOnlyAFoundOneIsKilled)
{
    const QByteArray list = "    1 /sbin/init\n  412 /Applications/Host.app/Contents/MacOS/Host\n"
                            "  977 grep Host\n  978 grep Lonely\n";
    const QList<std::tuple<QByteArray, QString, int>> cases{
        {list, "Host", 412},
        {"  977 grep Host\n  412 /Applications/Host\n", "Host", 0}, // a grep's line first
        {list, "Nothing", 0},                                       // never the first line's PID 1
        {list, "", 0},
        {list, "12", 0}, // the PID column is no part of the name's match
        {"", "Host", 0},
        {"no digits Lonely", "Lonely", 0},
        {QByteArray("\xff\xfe\x00 Lonely", 10), "Lonely", 0},
    };
    for (const auto &[output, name, pid] : cases) {
        backend.psOutput = output;
        EXPECT_EQ(auth.pidOf(name), pid) << name.toStdString();
    }
    EXPECT_EQ(ui.beeps, 0);

    backend.pipeOpens = false;
    EXPECT_EQ(auth.pidOf("Host"), 0);
    EXPECT_EQ(ui.beeps, 1);
    EXPECT_EQ(log.lines(), QStringList{"Error opening pipe: Host"});

    // A kill answers yes even when the kill fails, but no without a process.
    backend.pipeOpens = true;
    backend.psOutput = "  412 /Applications/Host\n  977 grep Host\n";
    backend.executeStatus = AuthorizationToolExecuteFailure;
    EXPECT_TRUE(auth.killProcess("Host"));
    EXPECT_EQ(backend.runs.value(0),
              qMakePair(QString("/bin/kill"), std::optional(QStringList{"412"})));
    // The rights first asked for name the process, not the kill tool.
    EXPECT_EQ(backend.copies[0].items.value(0).value, "Host");

    backend.psOutput = "  977 grep Ghost\n";
    EXPECT_FALSE(auth.killProcess("Ghost"));
    EXPECT_EQ(backend.runs.size(), 1);
    EXPECT_EQ(ui.beeps, 3);
    EXPECT_EQ(log.lines().mid(1), QStringList({"Error -60031 in AuthorizationExecuteWithPrivileges",
                                               "Error killing process 0, invalid PID."}));
}

TEST_F(AuthorizationTest, PolkitAsksOncePerActionAndNeverForPlainChecks)
{
    Authorization asked(polkit, ui);
    // Running a tool: pkexec asks, pkcheck only looks.
    EXPECT_TRUE(asked.executeAsRoot("/usr/sbin/tool", QStringList{"-x"}));
    for (const QStringList &check : polkit.checks)
        EXPECT_FALSE(check.contains("--allow-user-interaction"));
    EXPECT_EQ(polkit.execs, (QList<QStringList>{{"/usr/sbin/tool", "-x"}}));
    // Refused outright, nothing reaches pkexec; nor does a tool pkexec would take for an option.
    asked.deauthenticate();
    polkit.checkAnswer = 1;
    EXPECT_FALSE(asked.executeAsRoot("/usr/sbin/tool", std::nullopt));
    polkit.checkAnswer = 0;
    EXPECT_FALSE(asked.executeAsRoot("--user", QStringList{"root"}));
    EXPECT_EQ(polkit.execs.size(), 1);
}

// A process whose own name imitates the line of PID 1 is still found, and killed, as itself.
TEST_F(AuthorizationTest, ARealProcessIsFoundAndKilledAsItself)
{
    AllowAllAuthorization allowAll;
    Authorization asked(allowAll, ui);
    const QString marker =
        QStringLiteral("korvane-host-%1").arg(QCoreApplication::applicationPid());
    const QString program = homePath("host\n    1 " + marker);
    ASSERT_TRUE(QFile::link(QStandardPaths::findExecutable("sleep"), program));
    QProcess child;
    child.start(program, {"30"});
    ASSERT_TRUE(child.waitForStarted());
    // Started may be told before the child's exec shows in /proc on a busy machine.
    int pid = 0;
    for (int tries = 0; tries < 50 && (pid = asked.pidOf(marker)) == 0; ++tries)
        QThread::msleep(100);
    ASSERT_EQ(pid, child.processId()); // guards the kill below
    EXPECT_TRUE(asked.killProcess(marker));
    EXPECT_TRUE(child.waitForFinished(10000));
    EXPECT_EQ(child.exitStatus(), QProcess::CrashExit);
}

} // namespace
} // namespace korvane
