#include "library/Authorization.h"

#include "core/UserInterface.h"
#include "os/SystemLog.h"

#include <QFile>
#include <climits>

namespace korvane {

Authorization::Authorization(AuthorizationBackend &backend, UserInterface &ui)
    : m_backend(backend), m_ui(ui)
{
}

Authorization::~Authorization()
{
    deauthenticate();
}

std::optional<AuthorizationRights> Authorization::rightsForCommands(const QStringList &commands)
{
    AuthorizationRights rights;
    rights.count = quint32(commands.size());
    for (const QString &command : commands) {
        if (rights.items.size() == MaxRightsItems)
            break;
        const QByteArray value = QFile::encodeName(command);
        // A shortened path would name another tool: refuse rather than cut it.
        if (value.size() >= MaxPathBytes)
            return std::nullopt;
        rights.items.append({QString::fromLatin1(AdminRight), value, 0});
    }
    return rights;
}

int Authorization::copyRights(const QStringList &commands, quint32 flags)
{
    if (commands.isEmpty())
        return AuthorizationInvalidSet;
    const auto rights = rightsForCommands(commands);
    if (!rights)
        return AuthorizationInvalidSet;
    return m_backend.copyRights(m_authorizationRef, *rights, flags);
}

bool Authorization::isAuthenticated(const QStringList &forCommands)
{
    if (!m_authorizationRef)
        m_backend.create(&m_authorizationRef);
    // Extending without interaction tells whether the rights are held, never showing a dialog.
    return copyRights(forCommands, AuthorizationFlagExtendRights) == AuthorizationSuccess;
}

bool Authorization::fetchPassword(const QStringList &forCommands)
{
    if (copyRights(forCommands, AuthorizationFlagInteractionAllowed | AuthorizationFlagExtendRights)
        != AuthorizationSuccess)
        return false;
    emit authenticated();
    return true;
}

bool Authorization::authenticate(const QStringList &forCommands)
{
    if (!isAuthenticated(forCommands))
        fetchPassword(forCommands);
    return isAuthenticated(forCommands);
}

void Authorization::deauthenticate()
{
    if (!m_authorizationRef)
        return;
    m_backend.free(m_authorizationRef, AuthorizationFlagDestroyRights);
    m_authorizationRef = 0;
    emit deauthenticated();
}

namespace {
// The integer at the start of text after white space, 0 when there is none; clamped like intValue.
// end receives where the number stops.
int leadingInteger(QStringView text, qsizetype *end)
{
    qsizetype i = 0;
    while (i < text.size() && text.at(i).isSpace())
        ++i;
    bool negative = false;
    if (i < text.size() && (text.at(i) == u'-' || text.at(i) == u'+')) {
        negative = text.at(i) == u'-';
        ++i;
    }
    qint64 value = 0;
    for (; i < text.size() && text.at(i) >= u'0' && text.at(i) <= u'9'; ++i) {
        value = value * 10 + (text.at(i).unicode() - u'0');
        if (value > qint64(INT_MAX) + 1)
            value = qint64(INT_MAX) + 1;
    }
    *end = i;
    if (negative)
        return value > INT_MAX ? INT_MIN : int(-value);
    return value > INT_MAX ? INT_MAX : int(value);
}
} // namespace

int Authorization::pidFromProcessList(const QString &text, const QString &name)
{
    // An empty name is in every line; it names no process.
    if (name.isEmpty())
        return 0;
    for (QStringView line : QStringView(text).split(u'\n')) {
        qsizetype end = 0;
        const int pid = leadingInteger(line, &end);
        // The name counts in the command column only: "12" must not pick the line of PID 412.
        const QStringView command = line.mid(end);
        const qsizetype found = command.indexOf(name);
        if (found < 0)
            continue;
        // Only the first line that names the process counts: when a grep stands before the
        // name the answer is 0, even if the process's own line follows.
        if (command.left(found).contains(QLatin1String("grep")))
            return 0;
        return pid;
    }
    return 0;
}

int Authorization::pidOf(const QString &forProcess)
{
    bool ok = false;
    const QByteArray output = m_backend.processList(&ok);
    if (!ok) {
        systemLog(QStringLiteral("Error opening pipe: ") + forProcess);
        m_ui.beep();
        return 0;
    }
    return pidFromProcessList(QString::fromLatin1(output), forProcess);
}

bool Authorization::executeAsRoot(const QString &pathToCommand,
                                  const std::optional<QStringList> &arguments)
{
    if (!authenticate({pathToCommand}))
        return false;
    std::optional<QStringList> vector;
    if (arguments && !arguments->isEmpty())
        vector = arguments->mid(0, MaxArguments);
    const int status = m_backend.executeWithPrivileges(m_authorizationRef, pathToCommand, vector);
    if (status == AuthorizationSuccess)
        return true;
    m_ui.beep();
    systemLog(QStringLiteral("Error %1 in AuthorizationExecuteWithPrivileges").arg(status));
    return false;
}

bool Authorization::killProcess(const QString &commandFromPS)
{
    // The right asked for is the process name's, not /bin/kill's; the kill below asks again.
    if (!isAuthenticated({commandFromPS}))
        authenticate({commandFromPS});
    const QString pid = QString::number(pidOf(commandFromPS));
    if (pid.toInt() < 1) {
        m_ui.beep();
        systemLog(QStringLiteral("Error killing process ") + pid
                  + QStringLiteral(", invalid PID."));
        return false;
    }
    executeAsRoot(QStringLiteral("/bin/kill"), QStringList{pid});
    return true;
}

} // namespace korvane
