#include "os/SystemLog.h"

#include <cstdio>
#include <syslog.h>

namespace korvane {

namespace {
SystemLogCapture *s_innermost = nullptr;
bool s_toSyslog = false;
} // namespace

SystemLogCapture::SystemLogCapture() : m_previous(s_innermost)
{
    s_innermost = this;
}

SystemLogCapture::~SystemLogCapture()
{
    // Captures normally end innermost first; one that ends early is unlinked where it stands.
    if (s_innermost == this) {
        s_innermost = m_previous;
        return;
    }
    for (SystemLogCapture *capture = s_innermost; capture; capture = capture->m_previous) {
        if (capture->m_previous == this) {
            capture->m_previous = m_previous;
            break;
        }
    }
}

void systemNotice(const QString &text)
{
    if (SystemLogCapture *capture = s_innermost) {
        capture->m_notices.append(text);
        if (capture->m_onNotice)
            capture->m_onNotice(text);
    }
    systemLog(text);
}

void systemLog(const QString &text)
{
    if (s_innermost) {
        s_innermost->m_lines.append(text);
        return;
    }
    const QByteArray bytes = text.toLocal8Bit();
    std::fprintf(stderr, "Korvane: %s%s", bytes.constData(), bytes.endsWith('\n') ? "" : "\n");
    std::fflush(stderr);
    if (s_toSyslog)
        syslog(LOG_NOTICE, "%s", bytes.constData());
}

void sendSystemLogToSyslog(bool on)
{
    s_toSyslog = on;
}

} // namespace korvane
