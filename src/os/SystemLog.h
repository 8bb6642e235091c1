#pragma once

#include <QString>
#include <QStringList>
#include <functional>

namespace korvane {

// The diagnostics sink: standard error (and syslog once a program's entry asked for it), or a
// capture.
void systemLog(const QString &text);
// Called once by a program's entry with RunSettings::systemLog (KORVANE_SYSLOG). The sink is the
// process's own, as standard error is, so the setting is too.
void sendSystemLogToSyslog(bool on);
// A diagnostic a person must read even where no window shows the log (a move to the trash, a file
// kept aside): it goes where systemLog goes, and KorvaneCMD prints it on standard error at once.
void systemNotice(const QString &text);

// While one exists, diagnostics go to it instead, so tests can read them.
class SystemLogCapture {
public:
    SystemLogCapture();
    ~SystemLogCapture();
    SystemLogCapture(const SystemLogCapture &) = delete;
    SystemLogCapture &operator=(const SystemLogCapture &) = delete;
    QStringList lines() const { return m_lines; }
    bool contains(const QString &line) const { return m_lines.contains(line); }

    // The notices among the lines, in order; each is also handed to the handler as it comes.
    QStringList notices() const { return m_notices; }
    void setNoticeHandler(std::function<void(const QString &)> handler)
    {
        m_onNotice = std::move(handler);
    }

private:
    friend void systemLog(const QString &text);
    friend void systemNotice(const QString &text);
    QStringList m_lines;
    QStringList m_notices;
    std::function<void(const QString &)> m_onNotice;
    SystemLogCapture *m_previous;
};

} // namespace korvane
