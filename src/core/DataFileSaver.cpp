#include "core/DataFileSaver.h"

#include "core/Texts.h"
#include "core/UserInterface.h"
#include "os/FileOperations.h"
#include "os/SystemLog.h"

#include <QFileInfo>

#include <utility>

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
    const QString folder = QFileInfo(path).absolutePath();
    QByteArray current = bytes;
    QString target = path;
    bool written = false;
    bool declined = false;
    for (;;) {
        QString reason;
        if (attempt(target, current, &reason)) {
            if (target == path) {
                m_declined.remove(path);
                written = true;
            } else {
                m_log(korvane::tr("Saved a copy of %1 as %2; the program still reads "
                                  "%1, which was not changed")
                          .arg(path, target)
                      + QLatin1Char('\n'));
            }
            break;
        }
        systemNotice(QStringLiteral("Could not save %1: %2").arg(target, reason));
        const QString line = korvane::tr("Could not save %1: %2").arg(target, reason);
        m_log(line + QLatin1Char('\n'));
        if (target == path && m_declined.contains(path))
            return false;
        // A question about this folder is open (this write comes from within its wait, as a
        // timer's save at start-up does): its answer settles this write too, rather than a
        // second alert over the first.
        if (m_asking.contains(folder)) {
            m_waiting.insert(path, current);
            return false;
        }

        Alert alert;
        alert.messageText =
            korvane::tr("“%1” could not be saved.").arg(QFileInfo(target).fileName());
        alert.informativeText = line;
        if (!m_ui.isInteractive()) {
            // Said once; nobody is there to choose again.
            alert.buttons = {korvane::tr("OK")};
            m_ui.runAlert(alert);
            break;
        }
        alert.buttons = {korvane::tr("Try Again"), korvane::tr("Save Elsewhere..."),
                         korvane::tr("Cancel")};
        alert.addedButtons = true;
        m_asking.insert(folder);
        const AlertAnswer answer = m_ui.runAlert(alert);
        m_asking.remove(folder);
        // What was asked to be written meanwhile is newer than what the question was about.
        if (m_waiting.contains(path))
            current = m_waiting.take(path);
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
        declined = true;
        break;
    }
    // The folder's other files held while the question was open follow its answer: after
    // Cancel they are only logged too; otherwise each is tried again.
    const QHash<QString, QByteArray> waiting = std::exchange(m_waiting, {});
    for (auto it = waiting.cbegin(); it != waiting.cend(); ++it) {
        if (QFileInfo(it.key()).absolutePath() != folder)
            m_waiting.insert(it.key(), it.value());
        else if (declined)
            m_declined.insert(it.key());
        else
            write(it.key(), it.value());
    }
    return written;
}

} // namespace korvane
