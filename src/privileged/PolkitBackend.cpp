#include "privileged/PolkitBackend.h"

#include <QCoreApplication>
#include <QProcess>
#include <QStandardPaths>

namespace korvane {

namespace {
const QString kPkcheck = QStringLiteral("pkcheck");
const QString kPkexec = QStringLiteral("pkexec");
// A check without interaction answers at once; a person at the dialog may take their time.
constexpr int kCheckTimeoutMs = 30000;
} // namespace

bool PolkitBackend::available() {
    return !QStandardPaths::findExecutable(kPkcheck).isEmpty() &&
           !QStandardPaths::findExecutable(kPkexec).isEmpty();
}

QString PolkitBackend::actionFor(const QString &right) {
    if (right == QLatin1String("system.privilege.admin"))
        return QStringLiteral("org.freedesktop.policykit.exec");
    return right;
}

int PolkitBackend::create(AuthorizationRef *ref) {
    *ref = ++m_lastRef;
    m_granted.insert(*ref, {});
    return AuthorizationSuccess;
}

int PolkitBackend::check(const QString &action, bool allowInteraction) const {
    QStringList arguments{QStringLiteral("--action-id"), action, QStringLiteral("--process"),
                          QString::number(QCoreApplication::applicationPid())};
    if (allowInteraction)
        arguments << QStringLiteral("--allow-user-interaction");
    QProcess process;
    process.start(kPkcheck, arguments);
    if (!process.waitForStarted())
        return AuthorizationInternal;
    if (!process.waitForFinished(allowInteraction ? -1 : kCheckTimeoutMs)) {
        process.kill();
        process.waitForFinished();
        return AuthorizationInternal;
    }
    if (process.exitStatus() != QProcess::NormalExit)
        return AuthorizationInternal;
    switch (process.exitCode()) {
    case 0:
        return AuthorizationSuccess;
    case 1:
        return AuthorizationDenied;
    case 2:
        return allowInteraction ? AuthorizationDenied : AuthorizationInteractionNotAllowed;
    case 3:
        return AuthorizationCanceled;
    default:
        return AuthorizationInternal;
    }
}

int PolkitBackend::copyRights(AuthorizationRef ref, const AuthorizationRights &rights,
                              quint32 flags) {
    auto granted = m_granted.find(ref);
    if (granted == m_granted.end())
        return AuthorizationInvalidRef;
    const bool interaction = flags & AuthorizationFlagInteractionAllowed;
    const bool extend = flags & AuthorizationFlagExtendRights;
    const bool partial = flags & AuthorizationFlagPartialRights;
    for (const AuthorizationItem &item : rights.items) {
        const QString action = actionFor(item.name);
        if (granted->contains(action))
            continue;
        int status = extend ? check(action, interaction) : AuthorizationDenied;
        if (status == AuthorizationSuccess) {
            granted->insert(action);
            continue;
        }
        // Partial rights succeed with whatever could be granted.
        if (!partial)
            return status;
    }
    return AuthorizationSuccess;
}

void PolkitBackend::free(AuthorizationRef ref, quint32) {
    // Destroying the rights and merely releasing end the same here: the remembered grants go.
    m_granted.remove(ref);
}

int PolkitBackend::executeWithPrivileges(AuthorizationRef ref, const QString &tool,
                                         const std::optional<QStringList> &arguments) {
    if (!m_granted.contains(ref))
        return AuthorizationInvalidRef;
    QStringList commandLine{tool};
    if (arguments)
        commandLine += *arguments;
    return QProcess::startDetached(kPkexec, commandLine) ? AuthorizationSuccess
                                                         : AuthorizationToolExecuteFailure;
}

} // namespace korvane
