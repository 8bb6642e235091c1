// Maintenance commands: info on the selected plug-in, the duplicate report, moving plug-ins to the
// trash, and the architecture column and switches.
#include "library/FormatManager.h"

#include "core/AppServices.h"
#include "core/Texts.h"
#include "core/UserInterface.h"
#include "library/PluginBackup.h"
#include "library/Reporting.h"
#include "library/TableColumns.h"
#include "os/FileOperations.h"

#include <QDateTime>
#include <QHash>
#include <QLocale>
#include <algorithm>
#include <functional>

namespace korvane {

namespace {

void showOkAlert(UserInterface &ui, const QString &message, const QString &informative)
{
    Alert alert;
    alert.messageText = message;
    alert.informativeText = informative;
    alert.buttons = {korvane::tr("Ok")};
    ui.runAlert(alert);
}

QString trText(const QString &english)
{
    return korvane::tr(english.toUtf8().constData());
}

} // namespace

void FormatManager::requestInfo()
{
    const PluginPtr selected = itemAt(selectedRow());
    // Without a selection the panel only learns whether to show content.
    emit infoRequested(selected, m_parts.settings.showsContent(m_traits.type));
    if (!selected)
        showOkAlert(ui(), trText(m_traits.infoMessage), trText(m_traits.infoText));
}

void FormatManager::backup()
{
    PluginBackup(*this).backupWithDialogs();
}

void FormatManager::restoreBackup()
{
    PluginBackup(*this).restoreWithDialogs();
}

void FormatManager::reportDuplicates()
{
    AppServices *services = &this->services();
    services->showLog();
    services->appendLog(
        korvane::tr("----- %@ -----\n")
            .replace(QLatin1String("%@"),
                     QLocale().toString(QDateTime::currentDateTime(), QLocale::LongFormat)));

    // The lines go to the log as one entry: the same text, and one append instead of one per
    // line keeps a long report linear however the log stores its text.
    const QList<QPair<QString, int>> names = duplicateNames(m_list.items());
    // The line is looked up once; arg() fills both places in one pass, so a "%2" in a name
    // stays as it is.
    const QString line = korvane::tr("Plugin %@ is found %d times\n")
                             .replace(QLatin1String("%@"), QLatin1String("%1"))
                             .replace(QLatin1String("%d"), QLatin1String("%2"));
    QString report;
    qsizetype length = 0;
    for (const auto &[name, count] : names)
        length += name.size() + line.size() + 8; // the name, the words around it and the count
    report.reserve(length);
    for (const auto &[name, count] : names)
        report += line.arg(name, QString::number(count));
    if (!report.isEmpty())
        services->appendLog(report);
}

QList<QPair<QString, int>> FormatManager::duplicateNames(const QList<PluginPtr> &items)
{
    // One pass, each item looked at once: names in order of their first item, with their counts
    // (places holds a name's place in that list, plus one). A large list costs little more per
    // item than a small one.
    QHash<QString, qsizetype> places;
    places.reserve(items.size());
    QList<QPair<QString, int>> names;
    for (const PluginPtr &item : items) {
        QString name = item->name();
        qsizetype &place = places[name];
        if (place == 0) {
            names.append({std::move(name), 0});
            place = names.size();
        }
        ++names[place - 1].second;
    }
    names.removeIf([](const QPair<QString, int> &entry) { return entry.second < 2; });
    return names;
}

void FormatManager::moveSelectedToTrash()
{
    QList<int> rows = selectedRows();
    // Highest row first, so a removal never shifts a row still to come.
    std::sort(rows.begin(), rows.end(), std::greater<int>());
    FileOperations &files = this->files();
    for (int row : std::as_const(rows)) {
        const PluginPtr item = m_list.at(row);
        const QString path = m_list.pathOnDisk(*item);
        // Nothing is left to apply for a row that is gone.
        if (const qsizetype index = m_list.recordIndexOf(*item); index >= 0) {
            PluginRecord &record = m_list.record(index);
            m_list.noteRecordState(record.isProcessed(), true);
            record.setProcessed(true);
        }
        QString trashedTo;
        FileError error;
        // The item leaves the list either way; the next rescan shows one whose trash failed.
        if (files.moveToTrash(path, &error, &trashedTo))
            tell(services(), QT_TRANSLATE_NOOP("korvane", "%1 is now in the trash: %2"),
                 {path, trashedTo});
        else
            tell(services(), QT_TRANSLATE_NOOP("korvane", "%1 could not go to the trash: %2"),
                 {path, error.reason});
        emit itemAboutToBeRemoved(row);
        m_list.removeAt(row);
        emit itemRemoved(row);
    }
    if (m_list.pendingCount() == 0)
        setApplyEnabled(false);
    if (m_list.isEmpty())
        selectItems({});
    else
        selectItems({m_list.at(0)});
}

void FormatManager::showArchitectureColumn(bool visible)
{
    // Showing twice adds a second column and hiding removes one; callers ask once per load.
    if (visible)
        m_columns << TableColumn::Architecture;
    else
        m_columns.removeOne(TableColumn::Architecture);
    emit columnsChanged();
}

void FormatManager::setArchitectureActive(int command, bool active)
{
    // Every plug-in whose binary holds the architecture, a universal one for each of its own.
    markAll([command](const Plugin &item) { return item.holds(command); }, active);
}

} // namespace korvane
