#include "privileged/BLAuthentication.h"

#include "platform/SystemLog.h"
#include "support/ScriptedUi.h"
#include "support/TestRoots.h"

#include <algorithm>

namespace korvane {
namespace {

// Records every call and answers from fields the test sets.
class FakeBackend : public AuthorizationBackend {
public:
    struct CopyCall {
        AuthorizationRef ref;
        AuthorizationRights rights;
        quint32 flags;
    };
    struct ExecuteCall {
        QString tool;
        std::optional<QStringList> arguments;
    };

    int create(AuthorizationRef *ref) override
    {
        *ref = ++lastRef;
        return AuthorizationSuccess;
    }
    int copyRights(AuthorizationRef ref, const AuthorizationRights &rights, quint32 flags) override
    {
        copies.append({ref, rights, flags});
        if (flags & AuthorizationFlagInteractionAllowed) {
            if (!grantOnInteraction)
                return AuthorizationCanceled;
            held = true;
        }
        return held ? AuthorizationSuccess : AuthorizationInteractionNotAllowed;
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

    int interactiveCopies() const
    {
        return int(std::count_if(copies.begin(), copies.end(), [](const CopyCall &c) {
            return c.flags & AuthorizationFlagInteractionAllowed;
        }));
    }

    AuthorizationRef lastRef = 0;
    bool held = false;
    bool grantOnInteraction = true;
    int executeStatus = AuthorizationSuccess;
    bool pipeOpens = true;
    QByteArray psOutput;
    QList<CopyCall> copies;
    QList<QPair<AuthorizationRef, quint32>> frees;
    QList<ExecuteCall> executes;
    QStringList commands;
};

class BLAuthenticationTest : public TestRoots {
protected:
    void SetUp() override
    {
        TestRoots::SetUp();
        AuthorizationBackend::setCurrent(&backend);
    }
    void TearDown() override
    {
        // Drops the shared instance, which frees its authorization through the fake.
        TestRoots::TearDown();
        AuthorizationBackend::setCurrent(nullptr);
    }

    BLAuthentication *auth() { return BLAuthentication::sharedInstance(); }

    FakeBackend backend;
    ScriptedUi ui;
    SystemLogCapture log;
};

TEST_F(BLAuthenticationTest, SharedInstanceIsOneObject)
{
    EXPECT_EQ(BLAuthentication::sharedInstance(), BLAuthentication::sharedInstance());
    EXPECT_EQ(auth()->authorizationRef(), 0u);
}

TEST_F(BLAuthenticationTest, EmptyListAnswersNoWithoutDialog)
{
    int gained = 0;
    QObject::connect(auth(), &BLAuthentication::authenticated, [&] { ++gained; });
    backend.held = true;
    EXPECT_FALSE(auth()->authenticate({}));
    EXPECT_TRUE(backend.copies.isEmpty());
    EXPECT_EQ(gained, 0);
    // The reference is still created by the check.
    EXPECT_NE(auth()->authorizationRef(), 0u);
}

TEST_F(BLAuthenticationTest, HeldRightsNeedNoDialog)
{
    backend.held = true;
    int gained = 0;
    QObject::connect(auth(), &BLAuthentication::authenticated, [&] { ++gained; });
    EXPECT_TRUE(auth()->authenticate({"/usr/bin/tool"}));
    EXPECT_EQ(backend.interactiveCopies(), 0);
    EXPECT_EQ(gained, 0);
    ASSERT_EQ(backend.copies.size(), 1);
    EXPECT_EQ(backend.copies[0].flags, quint32(AuthorizationFlagExtendRights));
    const AuthorizationRights &rights = backend.copies[0].rights;
    ASSERT_EQ(rights.count, 1u);
    EXPECT_EQ(rights.items[0].name, "system.privilege.admin");
    EXPECT_EQ(rights.items[0].value, "/usr/bin/tool");
    EXPECT_EQ(rights.items[0].flags, 0u);
}

TEST_F(BLAuthenticationTest, FetchedRightsSignalOnce)
{
    int gained = 0;
    QObject::connect(auth(), &BLAuthentication::authenticated, [&] { ++gained; });
    EXPECT_TRUE(auth()->authenticate({"/usr/bin/tool"}));
    EXPECT_EQ(gained, 1);
    ASSERT_EQ(backend.copies.size(), 3); // check, ask, check again
    EXPECT_EQ(backend.copies[1].flags,
              quint32(AuthorizationFlagInteractionAllowed | AuthorizationFlagExtendRights));
}

TEST_F(BLAuthenticationTest, RefusedRightsAnswerNoAndSignalNothing)
{
    backend.grantOnInteraction = false;
    int gained = 0;
    QObject::connect(auth(), &BLAuthentication::authenticated, [&] { ++gained; });
    EXPECT_FALSE(auth()->authenticate({"/usr/bin/tool"}));
    EXPECT_FALSE(auth()->executeCommand("/usr/bin/tool", QStringList{"a"}));
    EXPECT_TRUE(backend.executes.isEmpty());
    EXPECT_EQ(gained, 0);
    EXPECT_TRUE(log.lines().isEmpty());
    EXPECT_EQ(ui.beeps, 0);
}

TEST_F(BLAuthenticationTest, RightsItemsCappedAtTwentyWhileCountStays)
{
    QStringList paths;
    for (int i = 0; i < 25; ++i)
        paths << QString("/bin/tool%1").arg(i);
    const auto rights = BLAuthentication::rightsForCommands(paths);
    ASSERT_TRUE(rights);
    EXPECT_EQ(rights->count, 25u);
    ASSERT_EQ(rights->items.size(), 20);
    EXPECT_EQ(rights->items.last().value, "/bin/tool19");
}

TEST_F(BLAuthenticationTest, PathTooLongForTheValueBufferIsRefused)
{
    const QString fits = "/" + QString(126, 'a');
    const QString tooLong = "/" + QString(127, 'a');
    EXPECT_TRUE(BLAuthentication::rightsForCommands({fits}));
    EXPECT_FALSE(BLAuthentication::rightsForCommands({tooLong}));

    backend.held = true;
    EXPECT_FALSE(auth()->executeCommand(tooLong, std::nullopt));
    EXPECT_TRUE(backend.copies.isEmpty());
    EXPECT_TRUE(backend.executes.isEmpty());
}

TEST_F(BLAuthenticationTest, ExecutePassesAtMostNineteenArguments)
{
    backend.held = true;
    QStringList arguments;
    for (int i = 0; i < 25; ++i)
        arguments << QString::number(i);
    EXPECT_TRUE(auth()->executeCommand("/usr/bin/tool", arguments));
    ASSERT_EQ(backend.executes.size(), 1);
    ASSERT_TRUE(backend.executes[0].arguments);
    EXPECT_EQ(*backend.executes[0].arguments, arguments.mid(0, 19));
}

TEST_F(BLAuthenticationTest, EmptyArgumentsPassNoVectorLikeNil)
{
    backend.held = true;
    EXPECT_TRUE(auth()->executeCommand("/usr/bin/tool", QStringList()));
    EXPECT_TRUE(auth()->executeCommand("/usr/bin/tool", std::nullopt));
    ASSERT_EQ(backend.executes.size(), 2);
    EXPECT_FALSE(backend.executes[0].arguments);
    EXPECT_FALSE(backend.executes[1].arguments);
    EXPECT_EQ(backend.executes[0].tool, "/usr/bin/tool");
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
    int dropped = 0;
    QObject::connect(auth(), &BLAuthentication::deauthenticated, [&] { ++dropped; });
    auth()->deauthenticate(); // nothing open yet
    EXPECT_EQ(dropped, 0);
    auth()->isAuthenticated({"/usr/bin/tool"});
    const AuthorizationRef ref = auth()->authorizationRef();
    auth()->deauthenticate();
    auth()->deauthenticate();
    EXPECT_EQ(dropped, 1);
    EXPECT_EQ(auth()->authorizationRef(), 0u);
    ASSERT_EQ(backend.frees.size(), 1);
    EXPECT_EQ(backend.frees[0].first, ref);
    EXPECT_EQ(backend.frees[0].second, quint32(AuthorizationFlagDestroyRights));
}

TEST_F(BLAuthenticationTest, GetPIDRunsTheExactCommand)
{
    backend.psOutput = "  412 /Applications/Host.app/Contents/MacOS/Host\n"
                       "  977 grep Host\n";
    EXPECT_EQ(auth()->getPID("Host"), 412);
    EXPECT_EQ(backend.commands, QStringList{"/bin/ps -axwwopid,command | grep \"Host\""});
}

TEST_F(BLAuthenticationTest, GetPIDTakesOnlyTheFirstMatchingLine)
{
    // Only grep's own line names it.
    backend.psOutput = "  977 grep Lonely\n";
    EXPECT_EQ(auth()->getPID("Lonely"), 0);
    // grep's line first: the process's line is not tried.
    backend.psOutput = "  977 grep Host\n  412 /Applications/Host\n";
    EXPECT_EQ(auth()->getPID("Host"), 0);
    backend.psOutput = "";
    EXPECT_EQ(auth()->getPID("Host"), 0);
    backend.psOutput = "no digits Host\n";
    EXPECT_EQ(auth()->getPID("Host"), 0);
    backend.psOutput = QByteArray("\xff\xfe\x00 Host", 8);
    EXPECT_EQ(auth()->getPID("Host"), 0);
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
    backend.held = true;
    backend.psOutput = "  412 /Applications/Host\n  977 grep Host\n";
    backend.executeStatus = AuthorizationToolExecuteFailure;
    EXPECT_TRUE(auth()->killProcess("Host"));
    ASSERT_EQ(backend.executes.size(), 1);
    EXPECT_EQ(backend.executes[0].tool, "/bin/kill");
    EXPECT_EQ(backend.executes[0].arguments, QStringList{"412"});
    // The first rights asked for are the process name's.
    EXPECT_EQ(backend.copies[0].rights.items[0].value, "Host");
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

TEST_F(BLAuthenticationTest, ActivationRightAsksWithFlagsSeven)
{
    backend.held = true;
    EXPECT_TRUE(auth()->requestActivationRight());
    ASSERT_EQ(backend.copies.size(), 1);
    EXPECT_EQ(backend.copies[0].flags, 7u);
    const AuthorizationRights &rights = backend.copies[0].rights;
    ASSERT_EQ(rights.count, 1u);
    EXPECT_EQ(rights.items[0].name, "com.velmora.korvane.activate");
    EXPECT_TRUE(rights.items[0].value.isEmpty());
    // A fresh authorization, released again; the shared one is untouched.
    EXPECT_EQ(backend.frees.size(), 1);
    EXPECT_EQ(auth()->authorizationRef(), 0u);
}

} // namespace
} // namespace korvane
