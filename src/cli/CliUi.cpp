#include "cli/CliUi.h"

#include "core/Texts.h"

#include <QTextStream>

namespace korvane {

namespace {
// A scan reports every folder entry; redrawing each would cost more than the scan.
constexpr qint64 kRedrawIntervalMs = 100;
// A line longer than the terminal wraps, and "\r" then no longer rewrites it.
constexpr int kMaxLine = 78;
const QString kClearLine = QStringLiteral("\r\x1b[K");
} // namespace

CliUi::CliUi(QTextStream *progress) : m_progress(progress) {}

AlertAnswer CliUi::runAlert(const Alert &alert)
{
    // Every alert takes its default button. After a failed move that is Proceed: each move is
    // whole or not made at all, so the rest of the set is applied and the failure reported.
    const AlertAnswer answer = alert.addedButtons ? AlertAnswer::First : AlertAnswer::Default;
    const QString button = alert.buttons.value(0); // the first button, either way
    QString text = alert.messageText;
    if (!alert.informativeText.isEmpty())
        text += QStringLiteral(": ") + alert.informativeText;
    m_answered << text.simplified() + QStringLiteral(" -> ") + button;
    return answer;
}

void CliUi::progressBegin(const QString &title)
{
    m_text = title;
    m_value = m_maximum = 0;
    draw(true);
}

void CliUi::progressText(const QString &upper)
{
    m_text = upper;
    draw(false);
}

void CliUi::progressValue(double value, double maximum)
{
    m_value = value;
    m_maximum = maximum;
    draw(false);
}

void CliUi::progressEnd()
{
    if (m_progress && m_drawn) {
        *m_progress << kClearLine;
        m_progress->flush();
    }
    m_drawn = false;
}

void CliUi::draw(bool force)
{
    if (!m_progress)
        return;
    if (!force && m_drawn && m_sinceDrawn.elapsed() < kRedrawIntervalMs)
        return;
    QString line = m_text;
    if (m_maximum > 0)
        line += QStringLiteral(" %1%").arg(qRound(100.0 * m_value / m_maximum));
    if (line.size() > kMaxLine)
        line = QStringLiteral("...") + line.right(kMaxLine - 3);
    *m_progress << kClearLine << line;
    m_progress->flush();
    m_sinceDrawn.start();
    m_drawn = true;
}

} // namespace korvane
