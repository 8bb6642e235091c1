#pragma once

#include "ui/UserInterface.h"

#include <QObject>
#include <QPointer>
#include <QWidget>

namespace korvane {

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

    int runAlert(const Alert &alert) override;
    std::optional<QString> runSavePanel(const SavePanelRequest &request) override;
    std::optional<QString> runOpenPanel(const OpenPanelRequest &request) override;
    int runMissingItems(const QString &list) override;
    void progressBegin(const QString &title) override;
    void progressText(const QString &upper) override;
    void progressDetail(const QString &lower) override;
    void progressValue(double value, double maximum) override;
    void progressEnd() override;
    void openUrl(const QUrl &url) override;
    void beep() override;
    bool progressCancelled() override;

private:
    QPointer<QWidget> m_window;
};

} // namespace korvane
