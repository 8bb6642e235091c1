#pragma once

#include "core/UserInterface.h"

#include <QElapsedTimer>
#include <QStringList>

class QTextStream;

namespace korvane {

// The interface of the command-line tool: nobody is there to answer, so nothing ever waits.
// Alerts take their default button (after a failed move: Proceed, the rest still moves); panels
// are cancelled, missing items ignored. Progress goes to a terminal only, as one rewritten line.
class CliUi : public UserInterface {
public:
    // progress: where to draw progress, or nullptr for none (standard error is not a terminal).
    explicit CliUi(QTextStream *progress = nullptr);

    // Every alert answered so far, as "message: informative text -> button".
    QStringList answeredAlerts() const { return m_answered; }
    // Takes the progress line off the terminal, so a line of text can be written there; the next
    // progress call draws it again.
    void clearLine() { progressEnd(); }

    bool isInteractive() const override { return false; }
    AlertAnswer runAlert(const Alert &alert) override;
    std::optional<QString> runSavePanel(const SavePanelRequest &) override { return std::nullopt; }
    std::optional<QString> runOpenPanel(const OpenPanelRequest &) override { return std::nullopt; }
    MissingItemsAnswer runMissingItems(const QString &) override
    {
        return MissingItemsAnswer::Ignore;
    }
    void progressBegin(const QString &title) override;
    void progressText(const QString &upper) override;
    void progressDetail(const QString &) override {}
    void progressValue(double value, double maximum) override;
    void progressEnd() override;
    void openUrl(const QUrl &) override {}
    void beep() override {}

private:
    void draw(bool force);

    QTextStream *m_progress;
    QStringList m_answered;
    QString m_text;
    double m_value = 0, m_maximum = 0;
    QElapsedTimer m_sinceDrawn;
    bool m_drawn = false;
};

} // namespace korvane
