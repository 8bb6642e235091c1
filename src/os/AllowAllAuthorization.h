#pragma once

#include "os/AuthorizationBackend.h"

namespace korvane {

// Where no authorization service is present, or the program already runs as root: every right
// is granted, and a tool runs with the program's own rights.
class AllowAllAuthorization : public AuthorizationBackend {
public:
    int create(AuthorizationRef *ref) override;
    int copyRights(AuthorizationRef ref, const AuthorizationRights &rights, quint32 flags) override;
    void free(AuthorizationRef ref, quint32 flags) override;
    int executeWithPrivileges(AuthorizationRef ref, const QString &tool,
                              const std::optional<QStringList> &arguments) override;

private:
    AuthorizationRef m_lastRef = 0;
};

} // namespace korvane
