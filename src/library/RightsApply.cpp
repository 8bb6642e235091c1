#include "library/RightsApply.h"

#include "core/ActivityLog.h"
#include "core/DataFiles.h"
#include "core/FileErrorQuestion.h"
#include "core/FormatTable.h"
#include "core/Locations.h"
#include "core/PluginList.h"
#include "core/RunParts.h"
#include "core/Texts.h"
#include "core/UserInterface.h"
#include "library/DistributionGuard.h"
#include "library/FormatTraits.h"
#include "library/Marking.h"
#include "library/MovePlan.h"
#include "library/RightsMover.h"
#include "os/FileOperations.h"
#include "os/SystemLog.h"

#include <QDir>
#include <QFileInfo>

namespace korvane {

namespace {

// The folder a new item in folder would be made in: folder, or its nearest existing parent.
QString existingFolder(const FileOperations &files, QString folder)
{
    while (!folder.isEmpty() && !files.isDirectory(folder)) {
        const QString parent = QFileInfo(folder).absolutePath();
        if (parent == folder)
            break;
        folder = parent;
    }
    return folder;
}

bool writable(const FileOperations &files, const QString &folder)
{
    return files.isWritable(existingFolder(files, folder));
}

// Whether korvane-helper serves the folder: the system folders of the built-in rows alone. It
// reads no environment, so a folder a host's variable adds is not its to change, and one such
// move in a request would have the whole request refused.
bool helperServes(const Format &format, const Locations &locations, const QString &folder)
{
    const Format *builtIn = FormatTable::builtIn().find(format.type);
    if (!builtIn || builtIn->prefix != format.prefix)
        return false;
    for (int loc = 0; loc < builtIn->locationCount(); ++loc)
        if (builtIn->isSystem(loc) && locations.folderPath(*builtIn, loc) == folder)
            return true;
    return false;
}

// One pending change that needs rights.
struct Pending {
    int record = -1;
    QString name;
    QString from;
    QString to;
    bool switchOn = false;
    QString relative; // below the format's system folder it comes from
};

// A few lines of a long list, then how many more.
QString someOf(const QStringList &lines)
{
    constexpr int kShown = 10;
    QString text = lines.mid(0, kShown).join(QLatin1Char('\n'));
    if (lines.size() > kShown)
        text += QLatin1Char('\n') + korvane::tr("and %1 more").arg(lines.size() - kShown);
    return text;
}

// Says once which plug-ins stay because their folders are not the helper's, naming each folder
// and the variables that add such folders, and settles their records: the apply would only meet
// "Permission denied" once per plug-in.
void refuseUnserved(const Format &format, Marking &marking, const RunParts &run, ActivityLog &log,
                    const QList<Pending> &unserved)
{
    if (unserved.isEmpty())
        return;
    QStringList folders;
    QStringList names;
    for (const Pending &change : unserved) {
        for (const QString &path : {change.from, change.to}) {
            const QString folder = QFileInfo(path).path();
            if (!helperServes(format, run.locations, folder) && !folders.contains(folder))
                folders << folder;
        }
        names << change.name;
        marking.settleRecord(change.record);
    }
    const QString variables = format.pathVariables.join(QStringLiteral(", "));
    for (const Pending &change : unserved)
        log.append(korvane::tr("%1 stays in %2: that folder was added by %3, and "
                               "administrator rights are asked only for the formats' "
                               "own folders\n")
                       .arg(change.name, QFileInfo(change.from).path(), variables));
    Alert alert;
    alert.messageText = korvane::tr("%1 plug-ins in folders added by %2 were not switched")
                            .arg(names.size())
                            .arg(variables);
    alert.informativeText =
        korvane::tr("Korvane asks for administrator rights only for the formats' own system "
                    "folders. These folders need them and were added by a host's variable:\n%1\n\n"
                    "Make the folder writable for yourself, or switch these plug-ins with "
                    "KorvaneCMD run as root.")
            .arg(someOf(folders))
        + QStringLiteral("\n\n") + someOf(names);
    alert.buttons = {korvane::tr("OK")};
    run.ui.runAlert(alert);
}

} // namespace

bool RightsApply::needsRights(const Format &format, const Locations &locations,
                              const FileOperations &files, const Plugin &item)
{
    if (!item.isGlobal())
        return false;
    const int loc = item.locationCode(format);
    // No rights change what the distribution owns: such a plug-in is refused, not elevated.
    if (format.isDistributionOwned(loc))
        return false;
    // The other folder of its pair: where switching it on or off puts it.
    const QString other = locations.folderPath(format, loc ^ 1);
    return !writable(files, item.location()) || !writable(files, other);
}

void RightsApply::run(const FormatTraits &format, const PluginList &list, Marking &marking,
                      const RunParts &run, ActivityLog &log, RightsMover &mover)
{
    FileOperations &files = run.files;
    const Locations &locations = run.locations;
    // Pair 1 is every row's first user pair: where a copy for the person alone goes.
    const QString userFolder = locations.folderPath(format, LocUserActive);
    const DistributionGuard guard(format, locations);
    QList<Pending> pending;
    QList<Pending> unserved;
    const QList<PluginRecord> &records = list.records();
    // Where each change goes is the planner's, as for the applier and the check.
    const MovePlanner planner(files, format, list, locations);
    for (qsizetype i = 0; i < records.size(); ++i) {
        const PluginRecord &record = records.at(i);
        if (record.isProcessed())
            continue;
        const PlannedMove move = planner.pending(int(i));
        const PluginPtr &item = move.item;
        if (!item || !item->isGlobal())
            continue;
        // The distribution's folders first: the apply refuses those with the package named, and
        // no rights are asked for a move that may not happen at all.
        if (guard.owns(record.folder()) || guard.owns(item->location()))
            continue;
        if (writable(files, record.folder()) && writable(files, item->location()))
            continue;
        // A folder only a host's variable adds is refused here, named, before anything is
        // asked: the helper reads no environment and serves the formats' own folders alone.
        if (!helperServes(format, locations, record.folder())
            || !helperServes(format, locations, item->location())) {
            unserved << Pending{int(i), move.name, move.from, move.to, item->isActive(), {}};
            continue;
        }
        // The record's folder is the format folder it was found in, whichever pair that is.
        pending << Pending{int(i),           move.name,
                           move.from,        move.to,
                           item->isActive(), QDir(record.folder()).relativeFilePath(move.from)};
    }
    refuseUnserved(format, marking, run, log, unserved);
    if (pending.isEmpty())
        return;

    QList<QPair<QString, QString>> moves;
    for (const Pending &change : std::as_const(pending))
        moves << qMakePair(change.from, change.to);
    const RightsMover::Outcome outcome = mover.move(moves);
    UserInterface &ui = run.ui;
    // Settled either way: what is left is said here, and the apply that follows would only meet
    // "Permission denied" once per plug-in.
    for (const Pending &change : std::as_const(pending))
        marking.settleRecord(change.record);

    if (outcome.state == RightsMover::State::Done)
        return;
    if (outcome.state == RightsMover::State::Failed) {
        QStringList failed;
        for (qsizetype i = 0; i < pending.size() && i < outcome.results.size(); ++i) {
            const RightsMover::Result &result = outcome.results.at(i);
            if (result.ok)
                continue;
            failed << korvane::tr("%1: %2").arg(pending.at(i).name, result.error);
            log.append(
                korvane::tr("%1 stays in %2: %3\n")
                    .arg(pending.at(i).name, QFileInfo(pending.at(i).from).path(), result.error));
        }
        Alert alert;
        alert.messageText = korvane::tr("%1 of %2 system plug-ins could not be moved")
                                .arg(failed.size())
                                .arg(pending.size());
        alert.informativeText = someOf(failed);
        alert.buttons = {korvane::tr("OK")};
        ui.runAlert(alert);
        return;
    }
    if (outcome.state == RightsMover::State::Refused) {
        systemLog(QStringLiteral("System plug-ins not moved: ") + outcome.said);
        log.append(korvane::tr("System plug-ins not moved: %1\n").arg(outcome.said));
        Alert alert;
        alert.messageText = korvane::tr("Plug-ins not moved");
        alert.informativeText = outcome.said;
        alert.buttons = {korvane::tr("OK")};
        ui.runAlert(alert);
        return;
    }

    // No rights: said once for the whole apply, with what can be done without them.
    QList<Pending> copyable;
    for (const Pending &change : std::as_const(pending)) {
        if (change.switchOn)
            copyable << change;
    }
    QStringList names;
    for (const Pending &change : std::as_const(pending))
        names << change.name;
    Alert alert;
    alert.messageText = korvane::tr("Administrator rights are needed to switch %1 system plug-ins")
                            .arg(pending.size());
    QString text = outcome.said + QStringLiteral("\n\n") + someOf(names);
    if (!copyable.isEmpty())
        text += QStringLiteral("\n\n")
                + korvane::tr("Korvane can copy the %1 to be switched on into your own plug-in "
                              "folder instead, where they are on for you alone. The system "
                              "folders stay as they are.")
                      .arg(copyable.size());
    alert.informativeText = text;
    alert.addedButtons = true;
    alert.buttons = copyable.isEmpty()
                        ? QStringList{korvane::tr("Leave Them")}
                        : QStringList{korvane::tr("Copy to My Folder"), korvane::tr("Leave Them")};
    log.append(korvane::tr("System plug-ins not switched: %1\n").arg(outcome.said));
    if (ui.runAlert(alert) != AlertAnswer::First || copyable.isEmpty())
        return;
    for (const Pending &change : std::as_const(copyable)) {
        const QString target = userFolder + QLatin1Char('/') + change.relative;
        createFolders(run.files, target);
        FileError error;
        if (files.copy(change.from, target, &error)) {
            log.append(korvane::tr("Copied %1 to %2\n").arg(change.from, target));
        } else if (askToProceedAfter(run.ui, error) == FileErrorAnswer::Stop) {
            break;
        }
    }
}

} // namespace korvane
