#pragma once

#include "app/UpdateCheck.h"

#include <QObject>
#include <QPointer>
#include <QProgressDialog>

class QWidget;

namespace korvane {

class UserInterface;

// Check for Update as the window runs it: the version list is fetched while the windows stay
// usable, with a small panel whose Cancel stops it; then the answer through the interface, which
// opens the download page with the desktop's browser when asked to. At start-up the same check
// runs without the panel and speaks only of a newer version.
class UpdateCheckCommand : public QObject {
    Q_OBJECT
public:
    // The addresses are the run's (RunSettings), empty for the build's own.
    UpdateCheckCommand(UserInterface &ui, const QString &versionListUrl, const QString &downloadUrl,
                       QWidget *window);
    ~UpdateCheckCommand() override;

    void run();          // the Help menu's item
    void runAtStartup(); // "Check for updates at start-up"
    bool isRunning() const { return m_check.isRunning(); }
    QProgressDialog *panel() const { return m_panel; } // while a check asked for runs
    UpdateCheck &check() { return m_check; }

private:
    void closePanel();

    UpdateCheck m_check;
    QWidget *m_window;
    QPointer<QProgressDialog> m_panel;
};

} // namespace korvane
