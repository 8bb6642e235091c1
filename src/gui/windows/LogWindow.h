#pragma once

#include <QWidget>

class QPlainTextEdit;

namespace korvane {

class ActivityLog;

// The log window: the program's log as plain text, following what is appended. It is shown and
// hidden by the log's own visibility (showLog, hideLog); closing it hides the log, so Show Log is
// enabled exactly while this window is not on the screen.
class LogWindow : public QWidget {
    Q_OBJECT
public:
    explicit LogWindow(ActivityLog &log, QWidget *parent = nullptr);

    bool isShowLogEnabled() const;
    QPlainTextEdit *text() const { return m_text; }

signals:
    // For the Show Log menu item.
    void showLogEnabledChanged(bool enabled);

protected:
    void closeEvent(QCloseEvent *event) override;

private:
    void followLog();
    void followVisibility(bool visible);

    ActivityLog &m_log;
    QPlainTextEdit *m_text = nullptr;
    qsizetype m_shown = 0; // characters of the log in the view
};

} // namespace korvane
