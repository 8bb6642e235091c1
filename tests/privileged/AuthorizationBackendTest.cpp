#include "privileged/BLAuthentication.h"
#include "privileged/NullAuthorizationBackend.h"
#include "privileged/PolkitBackend.h"

#include "platform/SharedInstances.h"
#include "platform/SystemLog.h"
#include "support/ScriptedUi.h"
#include "support/TestRoots.h"

#include <QFileInfo>
#include <QThread>

namespace korvane {
namespace {

class AuthorizationBackendTest : public TestRoots {
protected:
    void TearDown() override
    {
        TestRoots::TearDown();
        AuthorizationBackend::setCurrent(nullptr);
    }
    ScriptedUi ui;
    SystemLogCapture log;
};

TEST_F(AuthorizationBackendTest, AllowAllBackendReportsAToolThatCannotStart)
{
    NullAuthorizationBackend backend;
    AuthorizationBackend::setCurrent(&backend);
    BLAuthentication *auth = BLAuthentication::sharedInstance();
    const QString missing = homePath("no-such-tool");
    EXPECT_FALSE(auth->executeCommand(missing, QStringList{"x"}));
    EXPECT_EQ(ui.beeps, 1);
    EXPECT_EQ(log.lines(), QStringList{"Error -60031 in AuthorizationExecuteWithPrivileges"});
}

TEST_F(AuthorizationBackendTest, AllowAllBackendRunsTheTool)
{
    NullAuthorizationBackend backend;
    AuthorizationBackend::setCurrent(&backend);
    const QString marker = homePath("ran");
    EXPECT_TRUE(BLAuthentication::sharedInstance()->executeCommand(
        "/bin/sh", QStringList{"-c", "touch \"$0\"", marker}));
    for (int i = 0; i < 200 && !QFileInfo::exists(marker); ++i)
        QThread::msleep(10);
    EXPECT_TRUE(QFileInfo::exists(marker));
}

TEST_F(AuthorizationBackendTest, InstalledBackendIsDroppedWithTheSharedInstances)
{
    NullAuthorizationBackend backend;
    AuthorizationBackend::setCurrent(&backend);
    EXPECT_EQ(&AuthorizationBackend::current(), &backend);
    resetSharedInstances();
    EXPECT_NE(&AuthorizationBackend::current(), &backend);
}

TEST_F(AuthorizationBackendTest, PolkitRefusesUnknownReferencesWithoutAsking)
{
    PolkitBackend polkit;
    AuthorizationRights rights{1, {{"system.privilege.admin", "/bin/kill", 0}}};
    EXPECT_EQ(polkit.copyRights(42, rights, AuthorizationFlagExtendRights), AuthorizationInvalidRef);
    EXPECT_EQ(polkit.executeWithPrivileges(42, "/bin/kill", std::nullopt), AuthorizationInvalidRef);
    AuthorizationRef ref = 0;
    ASSERT_EQ(polkit.create(&ref), AuthorizationSuccess);
    // Without ExtendRights nothing is obtained, so nothing is asked.
    EXPECT_EQ(polkit.copyRights(ref, rights, AuthorizationFlagDefaults), AuthorizationDenied);
    EXPECT_EQ(polkit.copyRights(ref, rights, AuthorizationFlagPartialRights), AuthorizationSuccess);
    polkit.free(ref, AuthorizationFlagDestroyRights);
    EXPECT_EQ(polkit.copyRights(ref, rights, AuthorizationFlagDefaults), AuthorizationInvalidRef);
    EXPECT_EQ(PolkitBackend::actionFor("system.privilege.admin"), "org.freedesktop.policykit.exec");
    EXPECT_EQ(PolkitBackend::actionFor("com.velmora.korvane.activate"), "com.velmora.korvane.activate");
}

} // namespace
} // namespace korvane
