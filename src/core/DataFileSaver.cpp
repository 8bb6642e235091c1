#include "core/DataFileSaver.h"

#include "core/Texts.h"
#include "core/UserInterface.h"
#include "os/FileOperations.h"
#include "os/SystemLog.h"

#include <QFileInfo>

namespace korvane {

DataFileSaver::DataFileSaver(FileOperations &files, UserInterface &ui, QString elsewhere, Log log)
    : m_files(files), m_ui(ui), m_elsewhere(std::move(elsewhere)), m_log(std::move(log))
{
}

bool DataFileSaver::makeFolders(const QString &folder, QString *reason)
{
    FileError error;
    if (makePath(m_files, folder, &error))
        return true;
    const QString failed = error.path.isEmpty() ? folder : error.path; // the level that failed
    *reason = korvane::tr("The folder %1 could not be made: %2").arg(failed, error.reason);
    return false;
}

bool DataFileSaver::attempt(const QString &path, const QByteArray &bytes, QString *reason)
{
    if (!makeFolders(QFileInfo(path).absolutePath(), reason))
        return false;
    FileError error;
    if (m_files.writeFileAtomically(path, bytes, &error))
        return true;
    *reason = error.reason.isEmpty() ? korvane::tr("unknown error") : error.reason;
    return false;
}

bool DataFileSaver::write(const QString &path, const QByteArray &bytes)
{
    // A reporting run writes nothing, by design; there is nothing to say.
    if (m_files.isReadOnly() || bytes.isEmpty())
        return false;
    QString target = path;
    for (;;) {
        QString reason;
        if (attempt(target, bytes, &reason)) {
            if (target == path) {
                m_declined.remove(path);
                return true;
            }
            const QString line = korvane::tr("Saved a copy of %1 as %2; the program still reads "
                                             "%1, which was not changed")
                                     .arg(path, target);
            m_log(line + QLatin1Char('\n'));
            return false;
        }
        systemNotice(QStringLiteral("Could not save %1: %2").arg(target, reason));
        const QString line = korvane::tr("Could not save %1: %2").arg(target, reason);
        m_log(line + QLatin1Char('\n'));
        if (target == path && m_declined.contains(path))
            return false;

        Alert alert;
        alert.messageText =
            korvane::tr("“%1” could not be saved.").arg(QFileInfo(target).fileName());
        alert.informativeText = line;
        if (!m_ui.isInteractive()) {
            // Said once; nobody is there to choose again.
            alert.buttons = {korvane::tr("OK")};
            m_ui.runAlert(alert);
            return false;
        }
        alert.buttons = {korvane::tr("Try Again"), korvane::tr("Save Elsewhere..."),
                         korvane::tr("Cancel")};
        alert.addedButtons = true;
        const AlertAnswer answer = m_ui.runAlert(alert);
        if (answer == AlertAnswer::First)
            continue;
        if (answer == AlertAnswer::Second) {
            SavePanelRequest request;
            request.directory = m_elsewhere;
            request.fileName = QFileInfo(path).fileName();
            if (const std::optional<QString> chosen = m_ui.runSavePanel(request)) {
                target = *chosen;
                continue;
            }
        }
        m_declined.insert(path);
        return false;
    }
}

} // namespace korvane
