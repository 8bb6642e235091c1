#include "os/PolkitAuthorization.h"

#include <QCoreApplication>
#include <QProcess>
#include <QStandardPaths>

namespace korvane {

namespace {
const QString kPkcheck = QStringLiteral("pkcheck");
const QString kPkexec = QStringLiteral("pkexec");
const QString kExecAction = QStringLiteral("org.freedesktop.policykit.exec");
// A check without interaction answers at once; a person at the dialog may take their time.
constexpr int kCheckTimeoutMs = 30000;
} // namespace

bool PolkitAuthorization::available()
{
    return !QStandardPaths::findExecutable(kPkcheck).isEmpty()
           && !QStandardPaths::findExecutable(kPkexec).isEmpty();
}

QString PolkitAuthorization::actionFor(const QString &right)
{
    if (right == QLatin1String("system.privilege.admin"))
        return kExecAction;
    return right;
}

int PolkitAuthorization::create(AuthorizationRef *ref)
{
    *ref = ++m_lastRef;
    m_granted.insert(*ref, {});
    return AuthorizationSuccess;
}

int PolkitAuthorization::runCheck(const QStringList &arguments, int timeoutMs)
{
    QProcess process;
    process.start(kPkcheck, arguments);
    if (!process.waitForStarted())
        return -1;
    if (!process.waitForFinished(timeoutMs)) {
        process.kill();
        process.waitForFinished();
        return -1;
    }
    return process.exitStatus() == QProcess::NormalExit ? process.exitCode() : -1;
}

bool PolkitAuthorization::startExec(const QStringList &arguments)
{
    return QProcess::startDetached(kPkexec, arguments);
}

int PolkitAuthorization::check(const QString &action, bool allowInteraction)
{
    QStringList arguments{QStringLiteral("--action-id"), action, QStringLiteral("--process"),
                          QString::number(QCoreApplication::applicationPid())};
    if (allowInteraction)
        arguments << QStringLiteral("--allow-user-interaction");
    switch (runCheck(arguments, allowInteraction ? -1 : kCheckTimeoutMs)) {
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

int PolkitAuthorization::copyRights(AuthorizationRef ref, const AuthorizationRights &rights,
                                    quint32 flags)
{
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
        int status = AuthorizationDenied;
        if (extend && action == kExecAction) {
            // pkexec asks when it starts the tool; asking here too would show the same dialog
            // twice. A right that needs only a password is taken as granted for pkexec to ask.
            status = check(action, false);
            if (interaction && status == AuthorizationInteractionNotAllowed)
                status = AuthorizationSuccess;
        } else if (extend) {
            status = check(action, interaction);
        }
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

void PolkitAuthorization::free(AuthorizationRef ref, quint32)
{
    // Destroying the rights and merely releasing end the same here: the remembered grants go.
    m_granted.remove(ref);
}

int PolkitAuthorization::executeWithPrivileges(AuthorizationRef ref, const QString &tool,
                                               const std::optional<QStringList> &arguments)
{
    if (!m_granted.contains(ref))
        return AuthorizationInvalidRef;
    // pkexec would read such a name as one of its own options.
    if (tool.isEmpty() || tool.startsWith(QLatin1Char('-')))
        return AuthorizationToolExecuteFailure;
    QStringList commandLine{tool};
    if (arguments)
        commandLine += *arguments;
    return startExec(commandLine) ? AuthorizationSuccess : AuthorizationToolExecuteFailure;
}

} // namespace korvane
