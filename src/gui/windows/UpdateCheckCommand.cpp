#include "gui/windows/UpdateCheckCommand.h"

#include "core/Texts.h"

#include <QProgressDialog>

namespace korvane {

UpdateCheckCommand::UpdateCheckCommand(UserInterface &ui, const QString &versionListUrl,
                                       const QString &downloadUrl, QWidget *window)
    : m_check(ui, versionListUrl, downloadUrl), m_window(window)
{
}

UpdateCheckCommand::~UpdateCheckCommand()
{
    m_check.cancel();
    delete m_panel;
}

void UpdateCheckCommand::run()
{
    if (!m_check.isConfigured()) {
        m_check.reportNotConfigured();
        return;
    }
    if (m_panel) { // already asked: the panel comes forward
        m_panel->raise();
        return;
    }
    // A check that started with the program is asked again, now with every outcome said.
    m_check.cancel();
    auto *panel = new QProgressDialog(m_window);
    m_panel = panel;
    panel->setWindowTitle(korvane::tr("Update check"));
    panel->setLabelText(korvane::tr("Checking for updates..."));
    panel->setCancelButtonText(korvane::tr("Cancel"));
    panel->setRange(0, 0); // no measure of how far an answer is
    panel->setMinimumDuration(0);
    panel->setWindowModality(Qt::NonModal);
    panel->setAutoClose(false);
    panel->setAutoReset(false);
    connect(panel, &QProgressDialog::canceled, this, [this] {
        m_check.cancel();
        closePanel();
    });
    panel->show();
    m_check.start([this](const std::optional<QVariantMap> &list) {
        closePanel(); // gone before the answer is asked
        m_check.report(list, UpdateCheck::Asked::ByPerson);
    });
}

void UpdateCheckCommand::runAtStartup()
{
    if (!m_check.isConfigured() || m_check.isRunning())
        return;
    m_check.start([this](const std::optional<QVariantMap> &list) {
        m_check.report(list, UpdateCheck::Asked::AtStartup);
    });
}

void UpdateCheckCommand::closePanel()
{
    if (QProgressDialog *panel = m_panel) {
        m_panel = nullptr;
        panel->hide();
        panel->deleteLater();
    }
}

} // namespace korvane
