// Applying pending changes on disk and moving companion content along.

#include "library/Applier.h"

#include "core/ActivityLog.h"
#include "core/ContentRegistry.h"
#include "core/DataFiles.h"
#include "core/FileErrorQuestion.h"
#include "core/Locations.h"
#include "core/PathChecks.h"
#include "core/RunParts.h"
#include "core/Texts.h"
#include "core/UserInterface.h"
#include "library/Authorization.h"
#include "library/MovePlan.h"
#include "library/Reporting.h"
#include "os/SystemLog.h"

#include <QDir>
#include <QSet>
#include <QStringBuilder>
#include <cerrno>

namespace korvane {

namespace {

QString yesNo(bool flag)
{
    return flag ? QStringLiteral("yes") : QStringLiteral("no");
}

QString folderOf(const QString &path)
{
    return path.left(path.lastIndexOf(QLatin1Char('/')));
}

// The AppleDouble sidecar that carries path's Finder information, beside it.
QString sidecarOf(const QString &path)
{
    const qsizetype slash = path.lastIndexOf(QLatin1Char('/'));
    return path.left(slash + 1) + QStringLiteral("._") + path.mid(slash + 1);
}

// The move as the outcome reports it, before it is tried.
MoveOutcome outcomeOf(const PlannedMove &move)
{
    return {move.name, move.from, move.to, move.enabled, false, FileError{}};
}

} // namespace

Applier::Applier(const FormatTraits &traits, PluginList &list, const ManagerParts &parts)
    : m_traits(traits), m_list(list), m_parts(parts)
{
}

// One apply over the pending records.
struct Applier::Run {
    // Decides each move, and keeps where installed copies lie as the moves go.
    MovePlanner planner;
    // Target folders this apply has made or found, so each is looked at once.
    QSet<QString> folders;
    // The user chose Stop at a failure: the records after it are left as they are.
    bool stopped = false;
};

QList<MoveOutcome> Applier::applyPending()
{
    UserInterface &ui = m_parts.run.ui;
    FileOperations &files = m_parts.run.files;
    Run run{MovePlanner(files, m_traits, m_list, m_parts.run.locations), {}, false};
    const QList<PluginRecord> &records = m_list.records();

    QList<MoveOutcome> outcomes;
    QStringList left;
    const int pending = m_list.pendingCount();
    outcomes.reserve(pending);
    int done = 0;
    const bool showProgress = pending > 0;
    if (showProgress)
        ui.progressBegin(korvane::tr("Moving plug-ins:"));
    // Moving to another file system copies every byte, and content such as a sample library can
    // be large: the bar moves within the plug-in, and the lower line says how much is done.
    const CopyProgressScope bytes(files, copyProgressFor(ui, done, pending));
    const BatchScope batch(files);
    for (qsizetype i = 0; i < records.size(); ++i) {
        if (records.at(i).isProcessed())
            continue;
        // A person may stop a long apply between plug-ins; what moved stays moved.
        if (!run.stopped && ui.progressCancelled())
            run.stopped = true;
        if (!run.stopped) {
            ui.progressText(records.at(i).name());
            ui.progressDetail(QString());
            ui.progressValue(done, pending);
            outcomes << applyRecord(int(i), run);
            ++done;
            continue;
        }
        MoveOutcome outcome = outcomeOf(run.planner.pending(int(i)));
        outcome.stopped = true;
        outcome.error = {outcome.from, QStringLiteral(QT_TRANSLATE_NOOP(
                                           "korvane", "Not moved: the apply was stopped"))};
        outcomes << outcome;
        left << outcome.name;
    }
    if (!left.isEmpty()) {
        systemLog(QStringLiteral("Stopped, not moved: %1").arg(left.join(QStringLiteral(", "))));
        m_parts.log.append(
            korvane::tr("Stopped, not moved: %1\n").arg(left.join(QStringLiteral(", "))));
    }
    if (showProgress)
        ui.progressEnd();
    return outcomes;
}

MoveOutcome Applier::applyRecord(int recordIndex, Run &run)
{
    PlannedMove move = run.planner.pending(recordIndex);
    MoveOutcome outcome = outcomeOf(move);
    const PluginPtr &item = move.item;

    FileOperations &files = m_parts.run.files;
    const QString fromFolder = m_list.records().at(recordIndex).folder();
    const QString toFolder = move.to.isEmpty() ? QString() : item->location();
    const auto reportFailure = [&](const FileError &error) {
        if (askToProceedAfter(m_parts.run.ui, error) == FileErrorAnswer::Stop)
            run.stopped = true;
        outcome.error = error;
    };
    const auto moveFailed = [&](const FileError &error) {
        reportFailure(error);
        systemLog(QStringLiteral("fehlgeschlagen"));
        return outcome;
    };
    // A move that cannot be right is not tried: said, then failed like any other.
    const auto refuse = [&](const FileError &error, const char *text, const QStringList &args) {
        tell(m_parts.log, text, args);
        reportFailure(error);
        return outcome;
    };
    const auto refuseStep = [&](const FileError &error) {
        return refuse(
            error,
            QT_TRANSLATE_NOOP("korvane", "%1 stays in %2: %3 on the way is a link or no folder"),
            {outcome.name, fromFolder, error.path});
    };
    const auto refused = [&] {
        switch (move.verdict) {
        case MoveVerdict::NoItem:
            outcome.error = move.error;
            return outcome;
        case MoveVerdict::Distribution:
            tell(m_parts.log, "%1", {move.error.reason});
            outcome.error = move.error;
            return outcome;
        case MoveVerdict::OnePlace:
            return refuse(move.error,
                          QT_TRANSLATE_NOOP("korvane", "%1 stays in %2: %3 is the same place"),
                          {outcome.name, fromFolder, move.error.path});
        case MoveVerdict::StepOffTheWay:
            return refuseStep(move.error);
        default: // OtherCopy
            systemLog(QStringLiteral("Target is an installed copy, both kept: %1").arg(outcome.to));
            m_parts.log.append(korvane::tr("%1 stays in %2: another installed copy lies at %3\n")
                                   .arg(outcome.name, fromFolder, outcome.to));
            outcome.otherCopyAtTarget = true;
            reportFailure(move.error);
            return outcome;
        }
    };

    const auto done = [&] {
        PluginRecord &record = m_list.record(recordIndex);
        m_list.noteRecordState(record.isProcessed(), true);
        record.setProcessed(true);
        run.planner.moved(move);
        moveContent(item);
        outcome.ok = true;
        return outcome;
    };

    if (!run.planner.passesTheWay(move))
        return refused();
    // The format's folder as it is (it may be a link); the folders below it made real.
    const auto makeTargetFolders = [&]() -> std::optional<FileError> {
        const QString parent = folderOf(outcome.to);
        if (run.folders.contains(parent))
            return std::nullopt;
        createFolders(m_parts.run.files, toFolder + QStringLiteral("/-"));
        if (std::optional<FileError> step = stepOffTheWay(files, toFolder, outcome.to, true))
            return step;
        run.folders.insert(parent);
        return std::nullopt;
    };
    // The move; when it fails only because Finder information of no plug-in lies where the
    // plug-in's own has to go, that goes to the trash like any other target in the way, and the
    // move is tried again. A trash that fails fails the move.
    const auto moveItem = [&](FileError *error) {
        if (files.move(outcome.from, outcome.to, error))
            return true;
        const QString sidecar = sidecarOf(outcome.to);
        if (error->code != EEXIST || error->path != sidecar
            || files.identity(outcome.to, false).has_value())
            return false;
        const std::optional<FileIdentity> stale = files.identity(sidecar, false);
        const std::optional<FileIdentity> own = files.identity(sidecarOf(outcome.from), false);
        if (stale && own && stale->isSameItem(*own)) {
            *error = {sidecar, QString::fromUtf8(MovePlanner::reasonOf(MoveVerdict::OnePlace))};
            return false;
        }
        QString trashedTo;
        if (!files.moveToTrash(sidecar, error, &trashedTo)) {
            error->path = sidecar; // what stays in the way, whichever side refused
            return false;
        }
        tell(m_parts.log,
             QT_TRANSLATE_NOOP("korvane", "%1 was in the way of the Finder information of %2 and "
                                          "is now in the trash: %3\n"),
             {sidecar, outcome.name, trashedTo});
        return files.move(outcome.from, outcome.to, error);
    };

    // Most moves meet an empty place in a folder already seen: the move alone finds that out.
    // A target in the way, a folder or the source gone takes the full path below, which looks
    // first; nothing has moved then, so the second attempt costs no copy.
    if (!run.planner.isInstalledAt(outcome.to)) {
        if (const std::optional<FileError> step = makeTargetFolders())
            return refuseStep(*step);
        FileError error;
        if (moveItem(&error))
            return done();
        const bool plain = error.path == outcome.to || error.path == outcome.from
                           || error.path == sidecarOf(outcome.to);
        if (!plain || (error.code != EEXIST && error.code != ENOENT))
            return moveFailed(error);
    }

    run.planner.judgeTarget(move);
    switch (move.verdict) {
    case MoveVerdict::OnePlace:
    case MoveVerdict::OtherCopy:
        return refused();
    case MoveVerdict::TrashIdentical: {
        QString trashedTo;
        FileError trashError;
        if (!files.moveToTrash(outcome.from, &trashError, &trashedTo)) {
            reportFailure(trashError);
            return outcome;
        }
        tell(m_parts.log,
             QT_TRANSLATE_NOOP("korvane", "%1 was already at %2; the identical copy from %3 is "
                                          "now in the trash: %4\n"),
             {outcome.name, outcome.to, outcome.from, trashedTo});
        return done();
    }
    default:
        break;
    }

    if (const std::optional<FileError> step = makeTargetFolders())
        return refuseStep(*step);

    if (files.identity(outcome.to, false)) {
        const bool deletable = files.isDeletable(outcome.to);
        systemLog(QStringLiteral("Target exist: read %1, write %2, delete %3")
                      .arg(yesNo(files.isReadable(outcome.to)), yesNo(files.isWritable(outcome.to)),
                           yesNo(deletable)));
        // Without a source, whatever lies at the target may be the only copy left; the move
        // below fails and reports the missing source instead.
        if (move.verdict != MoveVerdict::SourceGone) {
            // Into the trash, never unlinked: the target may hold files the scan never showed,
            // such as a licence inside an older bundle. Should that fail, the target stays and
            // the move below fails.
            QString trashedTo;
            FileError trashError;
            const bool trashed = files.moveToTrash(outcome.to, &trashError, &trashedTo);
            if (!deletable)
                systemLog(QStringLiteral("Delete %1")
                              .arg(trashed ? QStringLiteral("sucessful")
                                           : QStringLiteral("not sucessful")));
            if (trashed)
                tell(
                    m_parts.log,
                    QT_TRANSLATE_NOOP("korvane", "%1 was in the way and is now in the trash: %2\n"),
                    {outcome.to, trashedTo});
            else if (deletable)
                systemLog(QStringLiteral("Not moved to the trash: %1").arg(trashError.reason));
        }
    }

    FileError error;
    if (!moveItem(&error))
        return moveFailed(error);
    return done();
}

void Applier::moveContent(const PluginPtr &item)
{
    if (!item->hasContent() || item->contentCount() <= 0
        || !m_parts.settings.movesContent(m_traits.type))
        return;

    // Every pair's folders, not only the first two pairs': a plug-in in /usr/local/lib/lv2 or in
    // a folder LV2_PATH adds has its companions beside it there.
    const QStringList folders = m_parts.run.locations.allFolderPaths(m_traits);
    FileOperations &files = m_parts.run.files;
    const QString target = item->location();
    const int count = item->contentCount();
    for (int i = 0; i < count; ++i) {
        const QString entry = item->contentAt(i);
        // content.plist is outside data: a ".." step could name any file above the folders.
        if (climbsUp(entry))
            continue;
        QString folder;
        int folderLoc = -1;
        // The deepest folder that holds it: one pair's folder may lie inside another's.
        for (int loc = 0; loc < folders.size(); ++loc) {
            const QString &candidate = folders.at(loc);
            if (liesInside(entry, candidate) && candidate.size() > folder.size()) {
                folder = candidate;
                folderLoc = loc;
            }
        }
        const QString relative =
            folder.isEmpty() ? QString() : QDir::cleanPath(entry.mid(folder.size() + 1));
        // Outside the format's folders, or the folder itself.
        if (relative.isEmpty() || relative == QLatin1String(".")
            || relative.startsWith(QLatin1Char('/')))
            continue;
        // What the distribution's packages own stays theirs, whoever names it as a companion.
        if (m_traits.isDistributionOwned(folderLoc)) {
            tell(m_parts.log,
                 QT_TRANSLATE_NOOP("korvane", "The companion %1 of %2 stays where it is: it lies "
                                              "in %3, which belongs to the distribution"),
                 {entry, item->name(), folder});
            continue;
        }

        // Its text says inside the folders; a link on the way could put its real place anywhere
        // (the move would carry a stranger's file off), and so could one on the way to the new
        // place. Only real folders lead to or from a companion.
        const QString newPath = target + QLatin1Char('/') + relative;
        std::optional<FileError> step =
            stepOffTheWay(files, folder, folder + QLatin1Char('/') + relative, false);
        if (!step)
            step = stepOffTheWay(files, target, newPath, true);
        if (step) {
            tell(m_parts.log,
                 QT_TRANSLATE_NOOP("korvane", "The companion %1 of %2 stays where it is: %3 on "
                                              "the way is a link or no folder"),
                 {entry, item->name(), step->path});
            continue;
        }
        // Content that does not move is not reported; the list follows the plug-in regardless.
        files.move(entry, newPath);
        item->replaceContent(newPath, i);
        m_parts.content.store(*item);
    }
}

} // namespace korvane
