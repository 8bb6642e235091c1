#pragma once

#include "os/AuthorizationBackend.h"

#include <QHash>
#include <QSet>

namespace korvane {

// Authorization through polkit: pkcheck tests or obtains a right for this process, pkexec runs a
// tool as root. Each action asks the user at most once: the right to run a tool is asked for by
// pkexec itself, the program's own rights by pkcheck. Rights obtained are remembered per
// authorization until it is freed, since polkit itself may not keep them.
class PolkitAuthorization : public AuthorizationBackend {
public:
    // pkcheck and pkexec are both on the search path.
    static bool available();
    // The polkit action standing for a right; "system.privilege.admin" is pkexec's own action.
    static QString actionFor(const QString &right);

    int create(AuthorizationRef *ref) override;
    int copyRights(AuthorizationRef ref, const AuthorizationRights &rights, quint32 flags) override;
    void free(AuthorizationRef ref, quint32 flags) override;
    int executeWithPrivileges(AuthorizationRef ref, const QString &tool,
                              const std::optional<QStringList> &arguments) override;

protected:
    // pkcheck's exit code, -1 when it did not run or finish in time.
    virtual int runCheck(const QStringList &arguments, int timeoutMs);
    // Starts pkexec with these arguments without waiting for it.
    virtual bool startExec(const QStringList &arguments);

private:
    int check(const QString &action, bool allowInteraction);

    AuthorizationRef m_lastRef = 0;
    QHash<AuthorizationRef, QSet<QString>> m_granted;
};

} // namespace korvane
