#include "privileged/BLAuthentication.h"
#include "privileged/NullAuthorizationBackend.h"
#include "privileged/PolkitBackend.h"

#include "platform/SharedInstances.h"
#include "platform/SystemLog.h"
#include "support/ScriptedUi.h"
#include "support/TestRoots.h"

#include <QCoreApplication>
#include <QFile>
#include <QProcess>
#include <QStandardPaths>
#include <QTemporaryDir>
#include <QXmlStreamReader>

namespace korvane {
namespace {

// Records what polkit would be asked instead of asking; pkcheck answers checkAnswer.
class RecordingPolkit : public PolkitBackend {
public:
    int checkAnswer = 2; // a password would be needed
    QList<QStringList> checks, execs;

protected:
    int runCheck(const QStringList &arguments, int) override
    {
        checks << arguments;
        return checkAnswer;
    }
    bool startExec(const QStringList &arguments) override
    {
        execs << arguments;
        return true;
    }
};

// The backends are members so that they outlive the shared instance using them until tear-down.
class AuthorizationBackendTest : public TestRoots {
protected:
    ScriptedUi ui;
    SystemLogCapture log;
    NullAuthorizationBackend allowAll;
    RecordingPolkit polkit;
};

TEST_F(AuthorizationBackendTest, AllowAllBackendReportsAToolThatCannotStart)
{
    BLAuthentication auth(allowAll, ui);
    EXPECT_FALSE(auth.executeCommand(homePath("no-such-tool"), QStringList{"x"}));
    EXPECT_EQ(ui.beeps, 1);
    EXPECT_EQ(log.lines(), QStringList{"Error -60031 in AuthorizationExecuteWithPrivileges"});
}

TEST_F(AuthorizationBackendTest, PolkitAsksOncePerActionAndNeverForPlainChecks)
{
    BLAuthentication authentication(polkit, ui);
    BLAuthentication *auth = &authentication;
    auto asked = [&] {
        return std::count_if(polkit.checks.begin(), polkit.checks.end(), [](const QStringList &a) {
            return a.contains("--allow-user-interaction");
        });
    };

    // Running a tool: pkexec asks, pkcheck only looks.
    EXPECT_TRUE(auth->executeCommand("/usr/sbin/tool", QStringList{"-x"}));
    EXPECT_EQ(asked(), 0);
    EXPECT_EQ(polkit.execs, (QList<QStringList>{{"/usr/sbin/tool", "-x"}}));
    // The program's own right: one pkcheck that may ask, and no pkexec.
    polkit.checks.clear();
    EXPECT_TRUE(auth->requestActivationRight());
    const QString pid = QString::number(QCoreApplication::applicationPid());
    EXPECT_EQ(polkit.checks, (QList<QStringList>{{"--action-id", "com.velmora.korvane.activate",
                                                  "--process", pid, "--allow-user-interaction"}}));
    // Refused outright, nothing reaches pkexec; nor does a tool pkexec would take for an option.
    auth->deauthenticate();
    polkit.checkAnswer = 1;
    EXPECT_FALSE(auth->executeCommand("/usr/sbin/tool", std::nullopt));
    polkit.checkAnswer = 0;
    EXPECT_FALSE(auth->executeCommand("--user", QStringList{"root"}));
    EXPECT_EQ(polkit.execs.size(), 1);

    // Unknown references, and checks that may not extend the rights, run nothing at all.
    polkit.checks.clear();
    const AuthorizationRights rights{1, {{"system.privilege.admin", "/bin/kill", 0}}};
    EXPECT_EQ(polkit.copyRights(42, rights, AuthorizationFlagExtendRights),
              AuthorizationInvalidRef);
    EXPECT_EQ(polkit.executeWithPrivileges(42, "/bin/kill", std::nullopt), AuthorizationInvalidRef);
    AuthorizationRef ref = 0;
    ASSERT_EQ(polkit.create(&ref), AuthorizationSuccess);
    EXPECT_EQ(polkit.copyRights(ref, rights, AuthorizationFlagDefaults), AuthorizationDenied);
    EXPECT_EQ(polkit.copyRights(ref, rights, AuthorizationFlagPartialRights), AuthorizationSuccess);
    polkit.free(ref, AuthorizationFlagDestroyRights);
    EXPECT_EQ(polkit.copyRights(ref, rights, AuthorizationFlagDefaults), AuthorizationInvalidRef);
    EXPECT_TRUE(polkit.checks.isEmpty());
}

// The shipped policy declares the right the program asks for, with defaults polkit knows.
TEST_F(AuthorizationBackendTest, PolicyDeclaresTheActivationRight)
{
    QFile file(KORVANE_POLICY_FILE);
    ASSERT_TRUE(file.open(QIODevice::ReadOnly));
    QXmlStreamReader xml(file.read(64 * 1024));
    QStringList actions, defaults;
    while (!xml.atEnd()) {
        if (xml.readNext() != QXmlStreamReader::StartElement)
            continue;
        if (xml.name() == u"action")
            actions << xml.attributes().value("id").toString();
        else if (xml.name().startsWith(u"allow_"))
            defaults << xml.readElementText();
    }
    EXPECT_FALSE(xml.hasError()) << xml.errorString().toStdString();
    EXPECT_EQ(actions, QStringList{BLAuthentication::ActivationRight});
    EXPECT_EQ(defaults, QStringList(3, "auth_admin_keep"));
}

// The lookup reads /proc: a name is only ever compared, never run, and a process whose own name
// imitates the line of PID 1 is still found (and killed) as itself.
TEST_F(AuthorizationBackendTest, ProcessLookupRunsNothingAndFindsOnlyTheProcessNamed)
{
    BLAuthentication authentication(allowAll, ui);
    BLAuthentication *auth = &authentication;
    const QString touched = homePath("touched");
    for (const QString &name : {"x$(touch " + touched + ")", "\"; touch " + touched + "; echo \"",
                                "`touch " + touched + "`", QString()})
        EXPECT_EQ(auth->getPID(name), 0) << name.toStdString();
    EXPECT_FALSE(QFileInfo::exists(touched));

    QTemporaryDir folder;
    const QString marker =
        QStringLiteral("korvane-host-%1").arg(QCoreApplication::applicationPid());
    const QString program = folder.path() + "/host\n    1 " + marker;
    ASSERT_TRUE(QFile::link(QStandardPaths::findExecutable("sleep"), program));
    QProcess child;
    child.start(program, {"30"});
    ASSERT_TRUE(child.waitForStarted());
    ASSERT_EQ(auth->getPID(marker), child.processId()); // guards the kill below
    EXPECT_TRUE(auth->killProcess(marker));
    EXPECT_TRUE(child.waitForFinished(10000));
    EXPECT_EQ(child.exitStatus(), QProcess::CrashExit);
}

} // namespace
} // namespace korvane
