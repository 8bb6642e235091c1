// Activation: the records that say what is pending, applying a pending change on disk, moving
// companion content along, and the bulk marking commands.

#include "library/FormatManager.h"

#include "core/AppServices.h"
#include "core/Format.h"
#include "core/Locations.h"
#include "core/PathChecks.h"
#include "core/Texts.h"
#include "core/UserInterface.h"
#include "library/DistributionGuard.h"
#include "library/RightsApply.h"
#include "os/LibraryLock.h"
#include "os/SystemLog.h"

#include <QDir>
#include <QHash>
#include <QLocale>
#include <QSet>
#include <QStringBuilder>
#include <QVariantMap>
#include <algorithm>
#include <cerrno>
#include <memory>

namespace korvane {

namespace {

// Another program moving the same plug-ins at the same time could leave one in neither folder;
// while one does, nothing moves and the user is told who it is.
bool libraryLocked(const LibraryLock &lock, UserInterface &ui)
{
    if (lock.isLocked())
        return true;
    Alert alert;
    alert.messageText = korvane::tr("Plug-ins not moved");
    alert.informativeText =
        lock.holder().isEmpty()
            ? korvane::tr("The plug-in library could not be locked: %1.").arg(lock.failure())
            : korvane::tr("%1 is moving plug-ins. Try again when it has finished.")
                  .arg(lock.holder());
    alert.buttons = {korvane::tr("OK")};
    ui.runAlert(alert);
    return false;
}

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

QString filled(const QString &format, const QStringList &args)
{
    // All at once: a path holding "%1" must not be taken for a place to fill.
    switch (args.size()) {
    case 0:
        return format;
    case 1:
        return format.arg(args.at(0));
    case 2:
        return format.arg(args.at(0), args.at(1));
    case 3:
        return format.arg(args.at(0), args.at(1), args.at(2));
    default:
        return format.arg(args.at(0), args.at(1), args.at(2), args.value(3));
    }
}

const char *const kOnePlace = QT_TRANSLATE_NOOP(
    "korvane", "The source and the target are one and the same; nothing was moved");

} // namespace

void FormatManager::tell(const char *text, const QStringList &args)
{
    QString english = filled(QString::fromUtf8(text), args);
    if (english.endsWith(QLatin1Char('\n')))
        english.chop(1);
    systemNotice(english);
    QString shown = filled(korvane::tr(text), args);
    if (!shown.endsWith(QLatin1Char('\n')))
        shown += QLatin1Char('\n');
    services().appendLog(shown);
}

CopyProgress FormatManager::copyProgressFor(const int &item, int count) const
{
    UserInterface *ui = &this->ui();
    auto shownPercent = std::make_shared<int>(-1);
    return [ui, &item, count, shownPercent](qint64 copied, qint64 total) {
        // A small copy is over before anyone could read its figures.
        if (total < LongCopyBytes)
            return;
        const double part = double(copied) / double(total);
        ui->progressValue(item + part, count);
        // The text changes once per percent: formatting it per block written would cost more
        // than the copy of a small file.
        const int percent = int(part * 100);
        if (percent == *shownPercent)
            return;
        *shownPercent = percent;
        const QLocale locale;
        ui->progressDetail(
            korvane::tr("%1 of %2")
                .arg(locale.formattedDataSize(copied), locale.formattedDataSize(total)));
    };
}

void FormatManager::updateRecord(const PluginPtr &item)
{
    const qsizetype index = m_list.recordIndexOf(*item);
    if (index < 0)
        return;
    PluginRecord &record = m_list.record(index);
    const bool wasProcessed = record.isProcessed();
    record.update(item->name(), item->location(), item->id());
    m_list.noteRecordState(wasProcessed, record.isProcessed());
    if (!record.isProcessed())
        setApplyEnabled(true);
    else if (m_list.pendingCount() == 0)
        setApplyEnabled(false);
}

int FormatManager::findRow(const QString &name, int itemID) const
{
    return m_list.findRow(name, itemID);
}

// One apply over the pending records.
struct FormatManager::ApplyRun {
    // Where an installed copy lies: where the scan found each plug-in, then wherever a move of
    // this apply put it. A move onto one of these would replace a plug-in with its namesake.
    QSet<QString> installed;
    // Target folders this apply has made or found, so each is looked at once.
    QSet<QString> folders;
    // The folders' identities, each looked up once; a folder not there yet is looked for again.
    QHash<QString, FileIdentity> identities;
    std::optional<FileIdentity> folderIdentity(const FileOperations &files, const QString &folder)
    {
        if (const auto known = identities.constFind(folder); known != identities.cend())
            return *known;
        const std::optional<FileIdentity> found = files.identity(folder, true);
        if (found)
            identities.insert(folder, *found);
        return found;
    }
    // The user chose Stop at a failure: the records after it are left as they are.
    bool stopped = false;
};

void FormatManager::apply()
{
    if (!offerToSaveSet())
        return;
    // Before the lock is taken: the helper takes the system folders' lock itself.
    if (m_parts.rights)
        RightsApply::run(*this, *m_parts.rights);
    // Every marked plug-in moves: applying one per press left the rest to be marked again.
    applyPending();
}

void FormatManager::settleRecord(int recordIndex)
{
    PluginRecord &record = m_list.record(recordIndex);
    m_list.noteRecordState(record.isProcessed(), true);
    record.setProcessed(true);
    if (m_list.pendingCount() == 0)
        setApplyEnabled(false);
}

QList<MoveOutcome> FormatManager::applyPending()
{
    const LibraryLock lock(files(), locations().pluginFolders(m_traits));
    if (!libraryLocked(lock, ui()))
        return {};
    ApplyRun run;
    const QList<PluginRecord> &records = m_list.records();
    run.installed.reserve(records.size());
    for (const PluginRecord &record : records)
        run.installed.insert(record.folder() % QLatin1Char('/') % record.name());

    QList<MoveOutcome> outcomes;
    QStringList left;
    const int pending = m_list.pendingCount();
    outcomes.reserve(pending);
    int done = 0;
    const bool showProgress = pending > 0;
    if (showProgress)
        ui().progressBegin(korvane::tr("Moving plug-ins:"));
    // Moving to another file system copies every byte, and content such as a sample library can
    // be large: the bar moves within the plug-in, and the lower line says how much is done.
    const CopyProgressScope bytes(files(), copyProgressFor(done, pending));
    const BatchScope batch(files());
    for (qsizetype i = 0; i < records.size(); ++i) {
        if (records.at(i).isProcessed())
            continue;
        // A person may stop a long apply between plug-ins; what moved stays moved.
        if (!run.stopped && ui().progressCancelled())
            run.stopped = true;
        if (!run.stopped) {
            ui().progressText(records.at(i).name());
            ui().progressDetail(QString());
            ui().progressValue(done, pending);
            outcomes << applyRecord(int(i), run);
            ++done;
            continue;
        }
        MoveOutcome outcome = pendingOutcome(int(i));
        outcome.stopped = true;
        outcome.error = {outcome.from, QStringLiteral(QT_TRANSLATE_NOOP(
                                           "korvane", "Not moved: the apply was stopped"))};
        outcomes << outcome;
        left << outcome.name;
    }
    if (!left.isEmpty()) {
        systemLog(QStringLiteral("Stopped, not moved: %1").arg(left.join(QStringLiteral(", "))));
        services().appendLog(
            korvane::tr("Stopped, not moved: %1\n").arg(left.join(QStringLiteral(", "))));
    }
    if (showProgress)
        ui().progressEnd();
    rescan();
    return outcomes;
}

MoveOutcome FormatManager::pendingOutcome(int recordIndex, PluginPtr *item) const
{
    const PluginRecord &record = m_list.records().at(recordIndex);
    const QString from = record.folder() % QLatin1Char('/') % record.name();
    MoveOutcome outcome{record.name(), from, QString(), false, false, FileError{}};
    const int index = findRow(record.name(), record.id());
    if (index >= 0) {
        const PluginPtr &found = m_list.at(index);
        outcome.to = found->location() % QLatin1Char('/') % found->name();
        outcome.enabled = found->isActive();
        if (item)
            *item = found;
    }
    return outcome;
}

MoveOutcome FormatManager::applyRecord(int recordIndex, ApplyRun &run)
{
    PluginPtr item;
    MoveOutcome outcome = pendingOutcome(recordIndex, &item);
    if (!item) {
        // The scan keeps items and records in step; a record without its item cannot be applied.
        outcome.error = {outcome.from, QStringLiteral(QT_TRANSLATE_NOOP(
                                           "korvane", "No plug-in matches the pending change"))};
        return outcome;
    }

    AppServices *main = &services();
    FileOperations &files = this->files();
    const QString fromFolder = m_list.records().at(recordIndex).folder();
    // The distribution's folders are not ours to change: refused before anything moves.
    if (const QString refusal =
            DistributionGuard(m_traits, locations())
                .refusal(outcome.name, fromFolder, item->location(),
                         item->metadata() ? item->metadata()->package : QString());
        !refusal.isEmpty()) {
        tell("%1", {refusal});
        outcome.error = {outcome.from, refusal};
        return outcome;
    }
    const QString toFolder = item->location();
    const auto reportFailure = [&](const FileError &error) {
        if (main->askToProceedAfter(error) == FileErrorAnswer::Stop)
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
        tell(text, args);
        reportFailure(error);
        return outcome;
    };
    const auto refuseOnePlace = [&](const QString &at) {
        return refuse({at, QString::fromUtf8(kOnePlace)},
                      QT_TRANSLATE_NOOP("korvane", "%1 stays in %2: %3 is the same place"),
                      {outcome.name, fromFolder, at});
    };
    const auto refuseStep = [&](const FileError &error) {
        return refuse(
            error,
            QT_TRANSLATE_NOOP("korvane", "%1 stays in %2: %3 on the way is a link or no folder"),
            {outcome.name, fromFolder, error.path});
    };

    const auto done = [&] {
        PluginRecord &record = m_list.record(recordIndex);
        m_list.noteRecordState(record.isProcessed(), true);
        record.setProcessed(true);
        run.installed.remove(outcome.from);
        run.installed.insert(outcome.to);
        if (m_list.pendingCount() == 0)
            setApplyEnabled(false);
        moveContent(item);
        outcome.ok = true;
        return outcome;
    };

    // A " (Disabled)" folder that is a link to the active one, or a bind mount of it, holds the
    // plug-in already: whatever lies at the target would be the plug-in itself.
    const std::optional<FileIdentity> sourceFolder =
        run.folderIdentity(files, folderOf(outcome.from));
    const std::optional<FileIdentity> targetFolder =
        run.folderIdentity(files, folderOf(outcome.to));
    if (sourceFolder && targetFolder && sourceFolder->isSameItem(*targetFolder))
        return refuseOnePlace(folderOf(outcome.to));
    // Below the format's folder a plug-in moves only through real folders: a link on the way
    // would carry it out of the folders altogether.
    if (const std::optional<FileError> step = stepOffTheWay(files, fromFolder, outcome.from, false))
        return refuseStep(*step);
    // The format's folder as it is (it may be a link); the folders below it made real.
    const auto makeTargetFolders = [&]() -> std::optional<FileError> {
        const QString parent = folderOf(outcome.to);
        if (run.folders.contains(parent))
            return std::nullopt;
        main->createFolders(toFolder + QStringLiteral("/-"));
        if (std::optional<FileError> step = stepOffTheWay(files, toFolder, outcome.to, true))
            return step;
        run.folders.insert(parent);
        return std::nullopt;
    };
    // The move; when it fails only because Finder information of no plug-in lies where the
    // plug-in's own has to go, that goes to the trash like any other target in the way, and the
    // move is tried again. A trash that fails fails the move.
    const auto move = [&](FileError *error) {
        if (files.move(outcome.from, outcome.to, error))
            return true;
        const QString sidecar = sidecarOf(outcome.to);
        if (error->code != EEXIST || error->path != sidecar
            || files.identity(outcome.to, false).has_value())
            return false;
        const std::optional<FileIdentity> stale = files.identity(sidecar, false);
        const std::optional<FileIdentity> own = files.identity(sidecarOf(outcome.from), false);
        if (stale && own && stale->isSameItem(*own)) {
            *error = {sidecar, QString::fromUtf8(kOnePlace)};
            return false;
        }
        QString trashedTo;
        if (!files.moveToTrash(sidecar, error, &trashedTo)) {
            error->path = sidecar; // what stays in the way, whichever side refused
            return false;
        }
        tell(QT_TRANSLATE_NOOP("korvane", "%1 was in the way of the Finder information of %2 and "
                                          "is now in the trash: %3\n"),
             {sidecar, outcome.name, trashedTo});
        return files.move(outcome.from, outcome.to, error);
    };

    // Most moves meet an empty place in a folder already seen: the move alone finds that out.
    // A target in the way, a folder or the source gone takes the full path below, which looks
    // first; nothing has moved then, so the second attempt costs no copy.
    if (!run.installed.contains(outcome.to)) {
        if (const std::optional<FileError> step = makeTargetFolders())
            return refuseStep(*step);
        FileError error;
        if (move(&error))
            return done();
        const bool plain = error.path == outcome.to || error.path == outcome.from
                           || error.path == sidecarOf(outcome.to);
        if (!plain || (error.code != EEXIST && error.code != ENOENT))
            return moveFailed(error);
    }

    // What lies at the target may be the source itself by another way (a link, a hard link): it
    // is neither replaced nor taken for an identical copy.
    const std::optional<FileIdentity> there = files.identity(outcome.to, false);
    if (there) {
        const std::optional<FileIdentity> here = files.identity(outcome.from, false);
        if (here && here->isSameItem(*there))
            return refuseOnePlace(outcome.to);
    }
    // Two copies of one plug-in (system and user folder, or a set naming both) can be marked so
    // that one goes where the other lies; making room would delete the other copy.
    const bool scannedThere = run.installed.contains(outcome.to);
    bool otherCopy =
        scannedThere
        || (files.isDirectory(outcome.to)
            && std::any_of(run.installed.cbegin(), run.installed.cend(),
                           [&](const QString &path) { return liesInside(path, outcome.to); }));
    // An identical copy already where the plug-in belongs (one copied there by hand, or what an
    // older version left when cut short) makes this one surplus: it goes to the trash.
    if (scannedThere && files.holdsAllOf(outcome.to, outcome.from)
        && files.holdsAllOf(outcome.from, outcome.to)) {
        QString trashedTo;
        FileError trashError;
        if (!files.moveToTrash(outcome.from, &trashError, &trashedTo)) {
            reportFailure(trashError);
            return outcome;
        }
        tell(QT_TRANSLATE_NOOP("korvane", "%1 was already at %2; the identical copy from %3 is "
                                          "now in the trash: %4\n"),
             {outcome.name, outcome.to, outcome.from, trashedTo});
        return done();
    }
    // A copy that came after the scan and is one of the format's plug-ins is installed as much
    // as any the scan found: never made room for.
    if (!otherCopy && there
        && m_traits.recognise(m_traits.recognitionTakesFullPath ? outcome.to : outcome.name))
        otherCopy = true;
    if (otherCopy) {
        systemLog(QStringLiteral("Target is an installed copy, both kept: %1").arg(outcome.to));
        main->appendLog(korvane::tr("%1 stays in %2: another installed copy lies at %3\n")
                            .arg(outcome.name, fromFolder, outcome.to));
        outcome.otherCopyAtTarget = true;
        reportFailure({outcome.to, QStringLiteral(QT_TRANSLATE_NOOP(
                                       "korvane", "Another installed copy of the plug-in lies "
                                                  "there; both copies are kept"))});
        return outcome;
    }

    if (const std::optional<FileError> step = makeTargetFolders())
        return refuseStep(*step);

    if (files.identity(outcome.to, false)) {
        const bool deletable = files.isDeletable(outcome.to);
        systemLog(QStringLiteral("Target exist: read %1, write %2, delete %3")
                      .arg(yesNo(files.isReadable(outcome.to)), yesNo(files.isWritable(outcome.to)),
                           yesNo(deletable)));
        if (!files.exists(outcome.from)) {
            // Whatever lies at the target may be the only copy left; the move below fails and
            // reports the missing source instead.
        } else {
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
                    QT_TRANSLATE_NOOP("korvane", "%1 was in the way and is now in the trash: %2\n"),
                    {outcome.to, trashedTo});
            else if (deletable)
                systemLog(QStringLiteral("Not moved to the trash: %1").arg(trashError.reason));
        }
    }

    FileError error;
    if (!move(&error))
        return moveFailed(error);
    return done();
}

void FormatManager::moveContent(const PluginPtr &item)
{
    if (!item->hasContent() || item->contentCount() <= 0
        || !m_parts.settings.movesContent(m_traits.type))
        return;

    const std::array<QString, LocationCount> folders = locations().folderPaths(m_traits);
    FileOperations &files = this->files();
    const QString target = item->location();
    const int count = item->contentCount();
    for (int i = 0; i < count; ++i) {
        const QString entry = item->contentAt(i);
        // content.plist is outside data: a ".." step could name any file above the folders.
        if (climbsUp(entry))
            continue;
        QString folder;
        QString relative;
        for (const QString &candidate : folders) {
            if (liesInside(entry, candidate)) {
                folder = candidate;
                relative = QDir::cleanPath(entry.mid(candidate.size() + 1));
                break;
            }
        }
        // Outside the format's folders, or the folder itself.
        if (relative.isEmpty() || relative == QLatin1String(".")
            || relative.startsWith(QLatin1Char('/')))
            continue;

        // Its text says inside the folders; a link on the way could put its real place anywhere
        // (the move would carry a stranger's file off), and so could one on the way to the new
        // place. Only real folders lead to or from a companion.
        const QString newPath = target + QLatin1Char('/') + relative;
        std::optional<FileError> step =
            stepOffTheWay(files, folder, folder + QLatin1Char('/') + relative, false);
        if (!step)
            step = stepOffTheWay(files, target, newPath, true);
        if (step) {
            tell(QT_TRANSLATE_NOOP("korvane", "The companion %1 of %2 stays where it is: %3 on "
                                              "the way is a link or no folder"),
                 {entry, item->name(), step->path});
            continue;
        }
        // Content that does not move is not reported; the list follows the plug-in regardless.
        files.move(entry, newPath);
        item->replaceContent(newPath, i);
    }
}

void FormatManager::setAllActive()
{
    markAll([](const Plugin &item) { return !item.isActive(); }, true);
}

void FormatManager::setAllInactive()
{
    markAll([](const Plugin &item) { return item.isActive(); }, false);
}

void FormatManager::setGroupActive()
{
    const PluginPtr selected = itemAt(selectedRow());
    if (!selected)
        return;
    const int group = selected->groupId();
    markAll([group](const Plugin &item) { return !item.isActive() && item.groupId() == group; },
            true);
}

void FormatManager::setGroupInactive()
{
    const PluginPtr selected = itemAt(selectedRow());
    if (!selected)
        return;
    const int group = selected->groupId();
    markAll([group](const Plugin &item) { return item.isActive() && item.groupId() == group; },
            false);
}

// The selected-row commands set every selected item whatever its state, so each one's record is
// brought up to date even when nothing changes.
void FormatManager::setSelectedActive()
{
    const QList<PluginPtr> selected = selectedItems();
    for (const PluginPtr &item : selected)
        markActive(item, true);
    announceChanged(selected);
}

void FormatManager::setSelectedInactive()
{
    const QList<PluginPtr> selected = selectedItems();
    for (const PluginPtr &item : selected)
        markActive(item, false);
    announceChanged(selected);
}

} // namespace korvane
