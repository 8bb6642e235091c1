#include "os/AllowAllAuthorization.h"

#include <QProcess>

namespace korvane {

int AllowAllAuthorization::create(AuthorizationRef *ref)
{
    *ref = ++m_lastRef;
    return AuthorizationSuccess;
}

int AllowAllAuthorization::copyRights(AuthorizationRef ref, const AuthorizationRights &, quint32)
{
    return ref ? AuthorizationSuccess : AuthorizationInvalidRef;
}

void AllowAllAuthorization::free(AuthorizationRef, quint32) {}

int AllowAllAuthorization::executeWithPrivileges(AuthorizationRef ref, const QString &tool,
                                                 const std::optional<QStringList> &arguments)
{
    if (!ref)
        return AuthorizationInvalidRef;
    return QProcess::startDetached(tool, arguments.value_or(QStringList()))
               ? AuthorizationSuccess
               : AuthorizationToolExecuteFailure;
}

} // namespace korvane
