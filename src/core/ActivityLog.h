#pragma once

#include <QObject>
#include <QString>

namespace korvane {

// The log window's text and whether the window is shown. Every part of a run appends what it did
// here; the window follows the signals.
class ActivityLog : public QObject {
    Q_OBJECT
public:
    void append(const QString &entry);
    QString text() const { return m_text; }

    void show();
    void hide(); // also what closing the window by its close box does
    bool isVisible() const { return m_visible; }
    bool isShowEnabled() const { return !m_visible; } // "Show Log" while the window is hidden

signals:
    void logChanged();
    void logVisibilityChanged(bool visible);

private:
    QString m_text;
    bool m_visible = false;
};

} // namespace korvane
