#pragma once

#include "os/AuthorizationBackend.h"

#include <QObject>
#include <QString>
#include <QStringList>
#include <optional>

namespace korvane {

class UserInterface;

// Administrator rights for running tools: keeps one authorization, asks for a password when
// needed, runs a tool as root, finds and kills processes by name. Signals when rights are gained
// with interaction and when they are dropped.
class Authorization : public QObject {
    Q_OBJECT
public:
    static constexpr const char *AdminRight = "system.privilege.admin";
    static constexpr int MaxRightsItems = 20;
    static constexpr int MaxArguments = 19;
    // The value buffer of one rights item; a path must be shorter than this.
    static constexpr int MaxPathBytes = 128;

    Authorization(AuthorizationBackend &backend, UserInterface &ui);
    ~Authorization() override; // deauthenticates

    bool isAuthenticated(const QStringList &forCommands);
    bool fetchPassword(const QStringList &forCommands);
    bool authenticate(const QStringList &forCommands);
    void deauthenticate();
    int pidOf(const QString &forProcess);
    // nullopt and an empty list both start the tool without an argument vector.
    bool executeAsRoot(const QString &pathToCommand, const std::optional<QStringList> &arguments);
    bool killProcess(const QString &commandFromPS);

    AuthorizationRef authorizationRef() const { return m_authorizationRef; }

    // One "system.privilege.admin" item per path, at most 20, the count staying the list's;
    // nullopt when a filled path does not fit the value buffer.
    static std::optional<AuthorizationRights> rightsForCommands(const QStringList &commands);
    // The PID of the first "PID COMMAND" line whose command holds name, by the rule that rejects
    // a grep's line; 0 when none does.
    static int pidFromProcessList(const QString &text, const QString &name);

signals:
    void authenticated();
    void deauthenticated();

private:
    AuthorizationBackend &m_backend;
    UserInterface &m_ui;
    int copyRights(const QStringList &commands, quint32 flags);

    AuthorizationRef m_authorizationRef = 0;
};

} // namespace korvane
