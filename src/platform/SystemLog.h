#pragma once

#include <QString>
#include <QStringList>

namespace korvane {

// The diagnostics sink: standard error (and syslog when KORVANE_SYSLOG is set), or a capture.
void systemLog(const QString &text);

// While one exists, diagnostics go to it instead, so tests can read them.
class SystemLogCapture {
public:
    SystemLogCapture();
    ~SystemLogCapture();
    SystemLogCapture(const SystemLogCapture &) = delete;
    SystemLogCapture &operator=(const SystemLogCapture &) = delete;
    QStringList lines() const { return m_lines; }
    bool contains(const QString &line) const { return m_lines.contains(line); }

private:
    friend void systemLog(const QString &text);
    QStringList m_lines;
    SystemLogCapture *m_previous;
};

} // namespace korvane
