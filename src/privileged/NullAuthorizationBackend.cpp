#include "privileged/NullAuthorizationBackend.h"

#include <QProcess>

namespace korvane {

int NullAuthorizationBackend::create(AuthorizationRef *ref)
{
    *ref = ++m_lastRef;
    return AuthorizationSuccess;
}

int NullAuthorizationBackend::copyRights(AuthorizationRef ref, const AuthorizationRights &, quint32)
{
    return ref ? AuthorizationSuccess : AuthorizationInvalidRef;
}

void NullAuthorizationBackend::free(AuthorizationRef, quint32) {}

int NullAuthorizationBackend::executeWithPrivileges(AuthorizationRef ref, const QString &tool,
                                                    const std::optional<QStringList> &arguments)
{
    if (!ref)
        return AuthorizationInvalidRef;
    return QProcess::startDetached(tool, arguments.value_or(QStringList()))
               ? AuthorizationSuccess
               : AuthorizationToolExecuteFailure;
}

} // namespace korvane
