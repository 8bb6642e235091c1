#pragma once

#include <QByteArray>
#include <QList>
#include <QString>
#include <QStringList>
#include <memory>
#include <optional>

namespace korvane {

// Authorization flags and status codes with fixed values, so the numbers in the log read the
// same on every platform.
enum AuthorizationFlag : quint32 {
    AuthorizationFlagDefaults = 0,
    AuthorizationFlagInteractionAllowed = 1,
    AuthorizationFlagExtendRights = 2,
    AuthorizationFlagPartialRights = 4,
    AuthorizationFlagDestroyRights = 8,
};

enum AuthorizationStatus : int {
    AuthorizationSuccess = 0,
    AuthorizationInvalidSet = -60001,
    AuthorizationInvalidRef = -60002,
    AuthorizationDenied = -60005,
    AuthorizationCanceled = -60006,
    AuthorizationInteractionNotAllowed = -60007,
    AuthorizationInternal = -60008,
    AuthorizationToolExecuteFailure = -60031,
};

// An open authorization; 0 is none.
using AuthorizationRef = quint64;

struct AuthorizationItem {
    QString name;     // the right, e.g. "system.privilege.admin"
    QByteArray value; // e.g. the tool's path; may be empty
    quint32 flags = 0;
};

// count may exceed items.size(): only the items that fit were filled in.
struct AuthorizationRights {
    quint32 count = 0;
    QList<AuthorizationItem> items;
};

// What the program needs of the platform's authorization service. The real one on Linux is
// polkit; tests install a fake that records every call and answers from a script.
class AuthorizationBackend {
public:
    virtual ~AuthorizationBackend() = default;

    // An authorization holding no rights yet.
    virtual int create(AuthorizationRef *ref) = 0;
    // Whether the rights are held (or, with ExtendRights, obtained) for ref.
    virtual int copyRights(AuthorizationRef ref, const AuthorizationRights &rights,
                           quint32 flags) = 0;
    virtual void free(AuthorizationRef ref, quint32 flags) = 0;
    // Starts tool as root and returns at once; nullopt passes no argument vector at all.
    virtual int executeWithPrivileges(AuthorizationRef ref, const QString &tool,
                                      const std::optional<QStringList> &arguments) = 0;
    // The running processes as "PID COMMAND" lines; ok false when they cannot be listed.
    virtual QByteArray processList(bool *ok);

    // Polkit where it helps, else one that allows all: as root polkit adds nothing but prompts,
    // and without it there is nobody to ask.
    static std::unique_ptr<AuthorizationBackend> createDefault();
};

} // namespace korvane
