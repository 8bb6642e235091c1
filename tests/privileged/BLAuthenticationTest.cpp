#include "privileged/BLAuthentication.h"

#include "platform/SystemLog.h"
#include "support/ScriptedUi.h"
#include "support/TestRoots.h"

namespace korvane {
namespace {

// Records every call; rights are held once granted with interaction (or when told so).
class FakeBackend : public AuthorizationBackend {
public:
    struct Copy {
        AuthorizationRights rights;
        quint32 flags;
    };
    int create(AuthorizationRef *ref) override
    {
        *ref = ++lastRef;
        return AuthorizationSuccess;
    }
    int copyRights(AuthorizationRef, const AuthorizationRights &rights, quint32 flags) override
    {
        copies.append({rights, flags});
        if (flags & AuthorizationFlagInteractionAllowed)
            held = held || grantOnInteraction;
        return held ? AuthorizationSuccess : AuthorizationDenied;
    }
    void free(AuthorizationRef ref, quint32 flags) override { frees.append({ref, flags}); }
    int executeWithPrivileges(AuthorizationRef, const QString &tool,
                              const std::optional<QStringList> &arguments) override
    {
        executes.append({tool, arguments});
        return executeStatus;
    }
    QByteArray processList(const QString &command, bool *ok) override
    {
        commands.append(command);
        *ok = pipeOpens;
        return psOutput;
    }

    AuthorizationRef lastRef = 0;
    bool held = false, grantOnInteraction = true, pipeOpens = true;
    int executeStatus = AuthorizationSuccess;
    QByteArray psOutput;
    QList<Copy> copies;
    QList<QPair<AuthorizationRef, quint32>> frees;
    QList<QPair<QString, std::optional<QStringList>>> executes;
    QStringList commands;
};

class BLAuthenticationTest : public TestRoots {
protected:
    void SetUp() override
    {
        TestRoots::SetUp();
        AuthorizationBackend::setCurrent(&backend);
        QObject::connect(auth(), &BLAuthentication::authenticated, [this] { ++gained; });
        QObject::connect(auth(), &BLAuthentication::deauthenticated, [this] { ++dropped; });
    }
    BLAuthentication *auth() { return BLAuthentication::sharedInstance(); }

    FakeBackend backend;
    ScriptedUi ui;
    SystemLogCapture log;
    int gained = 0, dropped = 0;
};

TEST_F(BLAuthenticationTest, EmptyListAnswersNoWithoutDialog)
{
    backend.held = true;
    EXPECT_FALSE(auth()->authenticate({}));
    EXPECT_TRUE(backend.copies.isEmpty());
    EXPECT_EQ(gained, 0);
    EXPECT_NE(auth()->authorizationRef(), 0u); // the check still opened the reference
}

TEST_F(BLAuthenticationTest, AuthenticateChecksAsksAndChecksAgain)
{
    EXPECT_TRUE(auth()->authenticate({"/usr/bin/tool"}));
    EXPECT_EQ(gained, 1);
    ASSERT_EQ(backend.copies.size(), 3);
    EXPECT_EQ(backend.copies[0].flags, 2u);
    EXPECT_EQ(backend.copies[1].flags, 3u);
    EXPECT_EQ(backend.copies[2].flags, 2u);
    const AuthorizationItem &item = backend.copies[0].rights.items.value(0);
    EXPECT_EQ(item.name, "system.privilege.admin");
    EXPECT_EQ(item.value, "/usr/bin/tool");

    // Held now: no further dialog.
    EXPECT_TRUE(auth()->authenticate({"/usr/bin/tool"}));
    EXPECT_EQ(backend.copies.size(), 5); // two checks, no request
    EXPECT_EQ(gained, 1);
}

TEST_F(BLAuthenticationTest, RefusalRunsNothingAndSaysNothing)
{
    backend.grantOnInteraction = false;
    EXPECT_FALSE(auth()->executeCommand("/usr/bin/tool", QStringList{"a"}));
    EXPECT_TRUE(backend.executes.isEmpty());
    EXPECT_EQ(gained, 0);
    EXPECT_TRUE(log.lines().isEmpty());
    EXPECT_EQ(ui.beeps, 0);
}

TEST_F(BLAuthenticationTest, RightsItemsCappedAtTwentyAndLongPathsRefused)
{
    QStringList paths;
    for (int i = 0; i < 25; ++i)
        paths << QString("/bin/tool%1").arg(i);
    const auto rights = BLAuthentication::rightsForCommands(paths);
    ASSERT_TRUE(rights);
    EXPECT_EQ(rights->count, 25u);
    ASSERT_EQ(rights->items.size(), 20);
    EXPECT_EQ(rights->items.last().value, "/bin/tool19");

    EXPECT_TRUE(BLAuthentication::rightsForCommands({"/" + QString(126, 'a')}));
    const QString tooLong = "/" + QString(127, 'a');
    backend.held = true;
    EXPECT_FALSE(auth()->executeCommand(tooLong, std::nullopt));
    EXPECT_TRUE(backend.copies.isEmpty());
    EXPECT_TRUE(backend.executes.isEmpty());
}

TEST_F(BLAuthenticationTest, ArgumentsCappedAtNineteenAndEmptyMeansNone)
{
    backend.held = true;
    QStringList arguments;
    for (int i = 0; i < 25; ++i)
        arguments << QString::number(i);
    EXPECT_TRUE(auth()->executeCommand("/usr/bin/tool", arguments));
    EXPECT_TRUE(auth()->executeCommand("/usr/bin/tool", QStringList()));
    EXPECT_TRUE(auth()->executeCommand("/usr/bin/tool", std::nullopt));
    ASSERT_EQ(backend.executes.size(), 3);
    EXPECT_EQ(backend.executes[0].second, arguments.mid(0, 19));
    EXPECT_FALSE(backend.executes[1].second);
    EXPECT_FALSE(backend.executes[2].second);
}

TEST_F(BLAuthenticationTest, ExecuteFailureBeepsAndLogsTheStatus)
{
    backend.held = true;
    backend.executeStatus = AuthorizationToolExecuteFailure;
    EXPECT_FALSE(auth()->executeCommand("/usr/bin/tool", std::nullopt));
    EXPECT_EQ(ui.beeps, 1);
    EXPECT_EQ(log.lines(), QStringList{"Error -60031 in AuthorizationExecuteWithPrivileges"});
}

TEST_F(BLAuthenticationTest, DeauthenticateTwiceSignalsOnce)
{
    auth()->deauthenticate(); // nothing open yet
    auth()->isAuthenticated({"/usr/bin/tool"});
    const AuthorizationRef ref = auth()->authorizationRef();
    auth()->deauthenticate();
    auth()->deauthenticate();
    EXPECT_EQ(dropped, 1);
    EXPECT_EQ(auth()->authorizationRef(), 0u);
    const QList<QPair<AuthorizationRef, quint32>> expected{{ref, AuthorizationFlagDestroyRights}};
    EXPECT_EQ(backend.frees, expected);
}

TEST_F(BLAuthenticationTest, GetPIDReadsOnlyTheFirstMatchingLine)
{
    backend.psOutput = "  412 /Applications/Host.app/Contents/MacOS/Host\n  977 grep Host\n";
    EXPECT_EQ(auth()->getPID("Host"), 412);
    EXPECT_EQ(backend.commands.value(0), "/bin/ps -axwwopid,command | grep \"Host\"");
    // grep's own line first: the process's line is not tried.
    backend.psOutput = "  977 grep Host\n  412 /Applications/Host\n";
    EXPECT_EQ(auth()->getPID("Host"), 0);
    for (const QByteArray &output : {QByteArray("  977 grep Lonely\n"), QByteArray(),
                                     QByteArray("no digits Lonely"), QByteArray("\xff\xfe\x00 Lonely", 10)}) {
        backend.psOutput = output;
        EXPECT_EQ(auth()->getPID("Lonely"), 0) << output.toStdString();
    }
    EXPECT_EQ(ui.beeps, 0);
}

TEST_F(BLAuthenticationTest, GetPIDWithoutPipeBeepsAndLogs)
{
    backend.pipeOpens = false;
    EXPECT_EQ(auth()->getPID("Host"), 0);
    EXPECT_EQ(ui.beeps, 1);
    EXPECT_EQ(log.lines(), QStringList{"Error opening pipe: Host"});
}

TEST_F(BLAuthenticationTest, KillAnswersYesEvenWhenKillFailsToStart)
{
    backend.psOutput = "  412 /Applications/Host\n  977 grep Host\n";
    backend.executeStatus = AuthorizationToolExecuteFailure;
    EXPECT_TRUE(auth()->killProcess("Host"));
    ASSERT_EQ(backend.executes.size(), 1);
    EXPECT_EQ(backend.executes[0].first, "/bin/kill");
    EXPECT_EQ(backend.executes[0].second, QStringList{"412"});
    // The rights first asked for name the process, not the kill tool.
    EXPECT_EQ(backend.copies[0].rights.items.value(0).value, "Host");
}

TEST_F(BLAuthenticationTest, KillWithoutSuchProcessBeepsAndLogs)
{
    backend.held = true;
    backend.psOutput = "  977 grep Ghost\n";
    EXPECT_FALSE(auth()->killProcess("Ghost"));
    EXPECT_EQ(ui.beeps, 1);
    EXPECT_EQ(log.lines(), QStringList{"Error killing process 0, invalid PID."});
    EXPECT_TRUE(backend.executes.isEmpty());
}

TEST_F(BLAuthenticationTest, ActivationRightUsesAFreshAuthorizationWithFlagsSeven)
{
    EXPECT_TRUE(auth()->requestActivationRight());
    ASSERT_EQ(backend.copies.size(), 1);
    EXPECT_EQ(backend.copies[0].flags, 7u);
    const AuthorizationRights &rights = backend.copies[0].rights;
    EXPECT_EQ(rights.count, 1u);
    EXPECT_EQ(rights.items.value(0).name, "com.velmora.korvane.activate");
    EXPECT_TRUE(rights.items.value(0).value.isEmpty());
    EXPECT_EQ(backend.frees.size(), 1);
    EXPECT_EQ(auth()->authorizationRef(), 0u);
}

} // namespace
} // namespace korvane
