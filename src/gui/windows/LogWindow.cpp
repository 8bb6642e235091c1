#include "gui/windows/LogWindow.h"

#include "core/ActivityLog.h"
#include "core/Texts.h"

#include <QCloseEvent>
#include <QFontDatabase>
#include <QPlainTextEdit>
#include <QScrollBar>
#include <QTextCursor>
#include <QVBoxLayout>

namespace korvane {

LogWindow::LogWindow(ActivityLog &log, QWidget *parent) : QWidget(parent, Qt::Window), m_log(log)
{
    setWindowTitle(korvane::tr("Log"));
    setAccessibleName(korvane::tr("Log"));
    m_text = new QPlainTextEdit(this);
    m_text->setObjectName(QStringLiteral("etLog"));
    m_text->setAccessibleName(korvane::tr("Log text"));
    m_text->setReadOnly(true);
    m_text->setLineWrapMode(QPlainTextEdit::NoWrap);
    m_text->setFont(QFontDatabase::systemFont(QFontDatabase::FixedFont));
    auto *layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(m_text);
    resize(560, 360);

    connect(&log, &ActivityLog::logChanged, this, &LogWindow::followLog);
    connect(&log, &ActivityLog::logVisibilityChanged, this, &LogWindow::followVisibility);
    followLog();
    if (log.isVisible())
        followVisibility(true);
}

bool LogWindow::isShowLogEnabled() const
{
    return m_log.isShowEnabled();
}

void LogWindow::followLog()
{
    const QString log = m_log.text();
    QScrollBar *bar = m_text->verticalScrollBar();
    const bool atEnd = bar->value() == bar->maximum();
    // The log only grows: what is new is appended, so a long log is not laid out again.
    if (log.size() >= m_shown) {
        QTextCursor cursor(m_text->document());
        cursor.movePosition(QTextCursor::End);
        cursor.insertText(log.mid(m_shown));
    } else {
        m_text->setPlainText(log);
    }
    m_shown = log.size();
    if (atEnd)
        bar->setValue(bar->maximum());
}

void LogWindow::followVisibility(bool visible)
{
    if (visible) {
        show();
        raise();
        activateWindow();
    } else {
        hide();
    }
    emit showLogEnabledChanged(m_log.isShowEnabled());
}

void LogWindow::closeEvent(QCloseEvent *event)
{
    if (m_log.isVisible())
        m_log.hide();
    QWidget::closeEvent(event);
}

} // namespace korvane
