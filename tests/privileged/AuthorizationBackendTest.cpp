#include "privileged/BLAuthentication.h"
#include "privileged/NullAuthorizationBackend.h"
#include "privileged/PolkitBackend.h"

#include "platform/SharedInstances.h"
#include "platform/SystemLog.h"
#include "support/ScriptedUi.h"
#include "support/TestRoots.h"

namespace korvane {
namespace {

using AuthorizationBackendTest = TestRoots;

TEST_F(AuthorizationBackendTest, AllowAllBackendReportsAToolThatCannotStart) {
    ScriptedUi ui;
    SystemLogCapture log;
    NullAuthorizationBackend backend;
    AuthorizationBackend::setCurrent(&backend);
    EXPECT_FALSE(BLAuthentication::sharedInstance()->executeCommand(homePath("no-such-tool"),
                                                                    QStringList{"x"}));
    EXPECT_EQ(ui.beeps, 1);
    EXPECT_EQ(log.lines(), QStringList{"Error -60031 in AuthorizationExecuteWithPrivileges"});
    // The installed backend goes with the shared instances.
    resetSharedInstances();
    EXPECT_NE(&AuthorizationBackend::current(), &backend);
}

TEST_F(AuthorizationBackendTest, PolkitAsksNothingForUnknownReferencesOrPlainChecks) {
    PolkitBackend polkit;
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
}

} // namespace
} // namespace korvane
