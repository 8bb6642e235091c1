#include "privileged/BLAuthentication.h"

#include "platform/SystemLog.h"
#include "support/ScriptedUi.h"
#include "support/TestRoots.h"

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
        tools.append(tool);
        argumentLists.append(arguments);
        return executeStatus;
    }
    QByteArray processList(bool *ok) override
    {
        *ok = pipeOpens;
        return psOutput;
    }

    AuthorizationRef lastRef = 0;
    bool held = false, grantOnInteraction = true, pipeOpens = true;
    int executeStatus = AuthorizationSuccess;
    QByteArray psOutput;
    QList<AuthorizationRights> copies;
    QList<quint32> flagsSeen;
    QList<QPair<AuthorizationRef, quint32>> frees;
    QStringList tools;
    QList<std::optional<QStringList>> argumentLists;
};

class BLAuthenticationTest : public TestRoots {
protected:
    void SetUp() override
    {
        TestRoots::SetUp();
        QObject::connect(auth(), &BLAuthentication::authenticated, [this] { ++gained; });
        QObject::connect(auth(), &BLAuthentication::deauthenticated, [this] { ++dropped; });
    }
    BLAuthentication *auth() { return &m_auth; }

    FakeBackend backend;
    ScriptedUi ui;
    BLAuthentication m_auth{backend, ui};
    SystemLogCapture log;
    int gained = 0, dropped = 0;
};

TEST_F(BLAuthenticationTest, AuthenticateChecksAsksAndChecksAgainButNeverForAnEmptyList)
{
    EXPECT_TRUE(auth()->authenticate({"/usr/bin/tool"}));
    EXPECT_TRUE(auth()->authenticate({"/usr/bin/tool"})); // held now: two checks, no dialog
    EXPECT_FALSE(auth()->authenticate({}));               // even with the rights held
    EXPECT_EQ(gained, 1);
    EXPECT_EQ(backend.flagsSeen, QList<quint32>({2, 3, 2, 2, 2}));
    EXPECT_EQ(backend.copies[0].items.value(0).name, "system.privilege.admin");
    EXPECT_EQ(backend.copies[0].items.value(0).value, "/usr/bin/tool");
}

TEST_F(BLAuthenticationTest, RefusalRunsNothingAndLimitsCapRightsAndArguments)
{
    backend.grantOnInteraction = false;
    EXPECT_FALSE(auth()->executeCommand("/usr/bin/tool", QStringList{"a"}));
    EXPECT_TRUE(backend.tools.isEmpty());
    EXPECT_EQ(gained + ui.beeps + log.lines().size(), 0); // no signal, beep or log line

    QStringList numbers;
    for (int i = 0; i < 25; ++i)
        numbers << QString::number(i);
    const auto rights = BLAuthentication::rightsForCommands(numbers);
    ASSERT_TRUE(rights);
    EXPECT_EQ(rights->count, 25u);
    ASSERT_EQ(rights->items.size(), 20);
    EXPECT_EQ(rights->items.last().value, "19");
    EXPECT_TRUE(BLAuthentication::rightsForCommands({"/" + QString(126, 'a')}));

    backend.held = true;
    backend.copies.clear();
    EXPECT_FALSE(auth()->executeCommand("/" + QString(127, 'a'), std::nullopt)); // never cut
    EXPECT_TRUE(backend.copies.isEmpty());
    for (const std::optional<QStringList> &arguments :
         {std::optional(numbers), std::optional(QStringList()), std::optional<QStringList>()})
        EXPECT_TRUE(auth()->executeCommand("/usr/bin/tool", arguments));
    EXPECT_EQ(backend.argumentLists,
              QList<std::optional<QStringList>>({numbers.mid(0, 19), std::nullopt, std::nullopt}));
}

TEST_F(BLAuthenticationTest, GetPIDReadsOnlyTheFirstLineWhoseCommandNamesTheProcess)
{
    const QByteArray list = "    1 /sbin/init\n  412 /Applications/Host.app/Contents/MacOS/Host\n"
                            "  977 grep Host\n  978 grep Lonely\n";
    const struct {
        QByteArray output;
        QString name;
        int pid;
    } cases[] = {
        {list, "Host", 412},
        {"  977 grep Host\n  412 /Applications/Host\n", "Host", 0}, // a grep's line first
        {list, "Lonely", 0},
        {list, "Nothing", 0}, // never the first line's PID 1
        {list, "", 0},
        {list, "12", 0}, // the PID column is no part of the name's match
        {"", "Host", 0},
        {"no digits Lonely", "Lonely", 0},
        {QByteArray("\xff\xfe\x00 Lonely", 10), "Lonely", 0},
    };
    for (const auto &entry : cases) {
        backend.psOutput = entry.output;
        EXPECT_EQ(auth()->getPID(entry.name), entry.pid) << entry.name.toStdString();
    }
    EXPECT_EQ(ui.beeps, 0);

    backend.pipeOpens = false;
    EXPECT_EQ(auth()->getPID("Host"), 0);
    EXPECT_EQ(ui.beeps, 1);
    EXPECT_EQ(log.lines(), QStringList{"Error opening pipe: Host"});
}

TEST_F(BLAuthenticationTest, KillAnswersYesEvenWhenKillFailsButNoWithoutAProcess)
{
    backend.psOutput = "  412 /Applications/Host\n  977 grep Host\n";
    backend.executeStatus = AuthorizationToolExecuteFailure;
    EXPECT_TRUE(auth()->killProcess("Host"));
    EXPECT_EQ(backend.tools, QStringList{"/bin/kill"});
    EXPECT_EQ(backend.argumentLists.value(0), QStringList{"412"});
    // The rights first asked for name the process, not the kill tool.
    EXPECT_EQ(backend.copies[0].items.value(0).value, "Host");

    backend.psOutput = "  977 grep Ghost\n";
    EXPECT_FALSE(auth()->killProcess("Ghost"));
    EXPECT_EQ(backend.tools.size(), 1);
    EXPECT_EQ(ui.beeps, 2);
    EXPECT_EQ(log.lines(), QStringList({"Error -60031 in AuthorizationExecuteWithPrivileges",
                                        "Error killing process 0, invalid PID."}));
}

TEST_F(BLAuthenticationTest, DeauthenticateTwiceSignalsOnceAndActivationUsesItsOwnReference)
{
    auth()->deauthenticate(); // nothing open yet
    EXPECT_TRUE(auth()->requestActivationRight());
    EXPECT_EQ(auth()->authorizationRef(), 0u);
    EXPECT_EQ(backend.flagsSeen, QList<quint32>{7});
    EXPECT_EQ(backend.copies[0].items.value(0).name, "com.velmora.korvane.activate");

    auth()->isAuthenticated({"/usr/bin/tool"});
    const AuthorizationRef ref = auth()->authorizationRef();
    auth()->deauthenticate();
    auth()->deauthenticate();
    EXPECT_EQ(dropped, 1);
    EXPECT_EQ(auth()->authorizationRef(), 0u);
    EXPECT_EQ(backend.frees, (QList<QPair<AuthorizationRef, quint32>>{{1, 0}, {ref, 8}}));
}

} // namespace
} // namespace korvane
