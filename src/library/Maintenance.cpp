#include "library/Maintenance.h"

#include "core/ActivityLog.h"
#include "core/PluginList.h"
#include "core/Texts.h"
#include "core/UserInterface.h"
#include "library/DuplicateReport.h"
#include "library/FormatManager.h"
#include "library/PluginBackup.h"
#include "library/Reporting.h"
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

} // namespace

Maintenance::Maintenance(FormatManager &manager, const ManagerParts &parts)
    : m_manager(manager), m_parts(parts)
{
}

void Maintenance::requestInfo()
{
    const FormatTraits &traits = m_manager.traits();
    const PluginPtr selected = m_manager.itemAt(m_manager.table().selectedRow());
    // Without a selection the panel only learns whether to show content.
    emit m_manager.infoRequested(selected, m_parts.settings.showsContent(traits.type));
    if (!selected)
        showOkAlert(m_manager.ui(), korvane::tr(traits.texts.infoMessage),
                    korvane::tr(traits.texts.infoText));
}

void Maintenance::backup()
{
    PluginBackup(m_manager).backupWithDialogs();
}

void Maintenance::restoreBackup()
{
    PluginBackup(m_manager).restoreWithDialogs();
}

void Maintenance::reportDuplicates()
{
    ActivityLog &log = m_manager.parts().log;
    log.show();
    log.append(korvane::tr("----- %1 -----\n")
                   .arg(QLocale().toString(QDateTime::currentDateTime(), QLocale::LongFormat)));

    // The lines go to the log as one entry: the same text, and one append instead of one per
    // line keeps a long report linear however the log stores its text.
    const QList<QPair<QString, int>> names = DuplicateReport::counts(m_manager.items());
    // The line is looked up once; arg() fills both places in one pass, so a "%2" in a name
    // stays as it is.
    const QString line = korvane::tr("Plugin %1 is found %2 times\n");
    QString report;
    qsizetype length = 0;
    for (const auto &[name, count] : names)
        length += name.size() + line.size() + 8; // the name, the words around it and the count
    report.reserve(length);
    for (const auto &[name, count] : names)
        report += line.arg(name, QString::number(count));
    if (!report.isEmpty())
        log.append(report);
}

void Maintenance::moveSelectedToTrash()
{
    PluginList &list = m_manager.m_list;
    QList<int> rows = m_manager.table().selectedRows();
    // Highest row first, so a removal never shifts a row still to come.
    std::sort(rows.begin(), rows.end(), std::greater<int>());
    FileOperations &files = m_manager.files();
    for (int row : std::as_const(rows)) {
        const PluginPtr item = list.at(row);
        const QString path = list.pathOnDisk(*item);
        // Nothing is left to apply for a row that is gone.
        if (const qsizetype index = list.recordIndexOf(*item); index >= 0) {
            PluginRecord &record = list.record(index);
            list.noteRecordState(record.isProcessed(), true);
            record.setProcessed(true);
        }
        QString trashedTo;
        FileError error;
        // The item leaves the list either way; the next rescan shows one whose trash failed.
        if (files.moveToTrash(path, &error, &trashedTo))
            tell(m_manager.parts().log, QT_TRANSLATE_NOOP("korvane", "%1 is now in the trash: %2"),
                 {path, trashedTo});
        else
            tell(m_manager.parts().log,
                 QT_TRANSLATE_NOOP("korvane", "%1 could not go to the trash: %2"),
                 {path, error.reason});
        emit m_manager.itemAboutToBeRemoved(row);
        list.removeAt(row);
        emit m_manager.itemRemoved(row);
    }
    if (list.pendingCount() == 0)
        m_manager.setApplyEnabled(false);
    if (list.isEmpty())
        m_manager.table().selectItems({});
    else
        m_manager.table().selectItems({list.at(0)});
}

void Maintenance::setArchitectureActive(int command, bool active)
{
    // Every plug-in whose binary holds the architecture, a universal one for each of its own.
    m_manager.marking().markWhere([command](const Plugin &item) { return item.holds(command); },
                                  active);
}

} // namespace korvane
