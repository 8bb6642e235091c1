#pragma once

#include "core/UserInterface.h"

#include <QElapsedTimer>
#include <QObject>
#include <QPointer>
#include <QWidget>

namespace korvane {

class ProgressDialog;

// The core's prompts as real dialogs: alerts as message boxes, the open and save panels as file
// dialogs, the missing-items dialog, and a progress dialog that keeps the windows painting while
// long work runs on this thread.
class QtUi : public QObject, public UserInterface {
    Q_OBJECT
public:
    explicit QtUi(QObject *parent = nullptr);
    ~QtUi() override;

    // The window dialogs belong to; none: they stand alone.
    void setWindow(QWidget *window) { m_window = window; }

    AlertAnswer runAlert(const Alert &alert) override;
    std::optional<QString> runSavePanel(const SavePanelRequest &request) override;
    std::optional<QString> runOpenPanel(const OpenPanelRequest &request) override;
    MissingItemsAnswer runMissingItems(const QString &list) override;
    void progressBegin(const QString &title) override;
    void progressText(const QString &upper) override;
    void progressDetail(const QString &lower) override;
    void progressValue(double value, double maximum) override;
    void progressEnd() override;
    void openUrl(const QUrl &url) override;
    void beep() override;
    bool progressCancelled() override;

private:
    // The window a new dialog stands over: the progress panel while it shows, else the window.
    QWidget *dialogParent() const;
    // Lets the windows paint and the panel take a click, at most as often as the eye can tell.
    void serviceEvents(bool now = false);
    void showPendingProgress();

    QPointer<QWidget> m_window;

    // One progress run; a begin inside a run (a rescan inside an install) only retitles it.
    int m_progressDepth = 0;
    QElapsedTimer m_progressStarted;
    QElapsedTimer m_lastService;
    QPointer<ProgressDialog> m_progress;
    bool m_progressDirty = false;
    QString m_progressTitle, m_progressUpper, m_progressLower;
    double m_progressValue = 0, m_progressMaximum = 0;
    bool m_progressCancelled = false;
};

} // namespace korvane
