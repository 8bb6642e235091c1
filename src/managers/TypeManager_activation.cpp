// Activation: the log records that say what is pending, applying a pending change on disk, moving
// companion content along, and the bulk marking commands.

#include "managers/TypeManager.h"

#include "app/AppServices.h"
#include "app/PathChecks.h"
#include "panels/MyPrefObj.h"
#include "platform/FormatTable.h"
#include "platform/LibraryLock.h"
#include "platform/Locations.h"
#include "platform/SystemLog.h"
#include "platform/Texts.h"
#include "privileged/BLAuthentication.h"
#include "ui/UserInterface.h"

#include <QDir>
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

} // namespace

CopyProgress TypeManager::copyProgressFor(const int &item, int count) const
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

void TypeManager::checkLogForUpdate(const AUItemPtr &item)
{
    const qsizetype index = m_list.recordIndexOf(*item);
    if (index < 0)
        return;
    AULog &record = m_list.record(index);
    const bool wasProcessed = record.isLogProcessed();
    record.checkAndUpdateLogID(item->getAUName(), item->getAULocation(), item->getItemID());
    m_list.noteRecordState(wasProcessed, record.isLogProcessed());
    if (!record.isLogProcessed())
        setApplyEnabled(true);
    else if (m_list.pendingCount() == 0)
        setApplyEnabled(false);
}

int TypeManager::findItemIndex(const QString &name, int itemID) const
{
    return m_list.findItemIndex(name, itemID);
}

// One apply over the pending records.
struct TypeManager::ApplyRun {
    // Where an installed copy lies: where the scan found each plug-in, then wherever a move of
    // this apply put it. A move onto one of these would replace a plug-in with its namesake.
    QSet<QString> installed;
    // Target folders this apply has made or found, so each is looked at once.
    QSet<QString> folders;
    // The user chose Stop at a failure: the records after it are left as they are.
    bool stopped = false;
};

void TypeManager::activate()
{
    const LibraryLock lock(files(), LibraryLock::foldersOf(locations(), m_traits));
    if (!libraryLocked(lock, ui()))
        return;
    updateSet();
    // Every marked plug-in moves: applying one per press left the rest to be marked again.
    applyAllPending();
}

QList<MoveOutcome> TypeManager::applyAllPending()
{
    const LibraryLock lock(files(), LibraryLock::foldersOf(locations(), m_traits));
    if (!libraryLocked(lock, ui()))
        return {};
    // Nothing depends on the answer: the moves succeed or fail by the file system's own rights.
    m_parts.authentication.requestActivationRight();
    ApplyRun run;
    const QList<AULog> &records = m_list.records();
    run.installed.reserve(records.size());
    for (const AULog &record : records)
        run.installed.insert(record.getLogPath() % QLatin1Char('/') % record.getLogName());

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
        if (records.at(i).isLogProcessed())
            continue;
        // A person may stop a long apply between plug-ins; what moved stays moved.
        if (!run.stopped && ui().progressCancelled())
            run.stopped = true;
        if (!run.stopped) {
            ui().progressText(records.at(i).getLogName());
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
        services().addLogEntry(
            this, korvane::tr("Stopped, not moved: %1\n").arg(left.join(QStringLiteral(", "))));
    }
    if (showProgress)
        ui().progressEnd();
    reloadData();
    return outcomes;
}

MoveOutcome TypeManager::pendingOutcome(int logIndex, AUItemPtr *item) const
{
    const AULog &record = m_list.records().at(logIndex);
    const QString from = record.getLogPath() % QLatin1Char('/') % record.getLogName();
    MoveOutcome outcome{record.getLogName(), from, QString(), false, false, FileError{}};
    const int index = findItemIndex(record.getLogName(), record.getLogID());
    if (index >= 0) {
        const AUItemPtr &found = m_list.at(index);
        outcome.to = found->getAULocation() % QLatin1Char('/') % found->getAUName();
        outcome.enabled = found->getAUActive();
        if (item)
            *item = found;
    }
    return outcome;
}

MoveOutcome TypeManager::applyRecord(int logIndex, ApplyRun &run)
{
    AUItemPtr item;
    MoveOutcome outcome = pendingOutcome(logIndex, &item);
    if (!item) {
        // The scan keeps items and records in step; a record without its item cannot be applied.
        outcome.error = {outcome.from, QStringLiteral(QT_TRANSLATE_NOOP(
                                           "korvane", "No plug-in matches the pending change"))};
        return outcome;
    }

    AppServices *main = &services();
    FileOperations &files = this->files();
    const auto reportFailure = [&](const FileError &error) {
        if (!main->fileManager(&files, QVariantMap{{QStringLiteral("Error"), error.reason},
                                                   {QStringLiteral("Path"), error.path}}))
            run.stopped = true;
        outcome.error = error;
    };
    const auto moveFailed = [&](const FileError &error) {
        reportFailure(error);
        systemLog(QStringLiteral("fehlgeschlagen"));
        return outcome;
    };

    const auto done = [&] {
        AULog &record = m_list.record(logIndex);
        m_list.noteRecordState(record.isLogProcessed(), true);
        record.setLogProcessed(true);
        run.installed.remove(outcome.from);
        run.installed.insert(outcome.to);
        if (m_list.pendingCount() == 0)
            setApplyEnabled(false);
        moveContent(item);
        outcome.ok = true;
        return outcome;
    };

    // Most moves meet an empty place in a folder already seen: the move alone finds that out.
    // A target in the way, a folder or the source gone takes the full path below, which looks
    // first; nothing has moved then, so the second attempt costs no copy.
    const QString toFolder = outcome.to.left(outcome.to.lastIndexOf(QLatin1Char('/')));
    if (!run.installed.contains(outcome.to)) {
        if (!run.folders.contains(toFolder)) {
            main->createFolders(outcome.to);
            run.folders.insert(toFolder);
        }
        FileError error;
        if (files.move(outcome.from, outcome.to, &error))
            return done();
        const bool plain = error.path == outcome.to || error.path == outcome.from;
        if (!plain || (error.code != EEXIST && error.code != ENOENT))
            return moveFailed(error);
    }

    // Two copies of one plug-in (system and user folder, or a set naming both) can be marked so
    // that one goes where the other lies; making room would delete the other copy.
    const bool otherCopy =
        run.installed.contains(outcome.to)
        || (files.isDirectory(outcome.to)
            && std::any_of(run.installed.cbegin(), run.installed.cend(),
                           [&](const QString &path) { return liesInside(path, outcome.to); }));
    // An identical copy already where the plug-in belongs (one copied there by hand, or what an
    // older version left when cut short) makes this one surplus: it goes to the trash.
    if (otherCopy && run.installed.contains(outcome.to)
        && files.holdsAllOf(outcome.to, outcome.from)
        && files.holdsAllOf(outcome.from, outcome.to)) {
        QString trashedTo;
        FileError trashError;
        if (!files.moveToTrash(outcome.from, &trashError, &trashedTo)) {
            reportFailure(trashError);
            return outcome;
        }
        systemLog(QStringLiteral("Identical copy at the target, the other moved to the trash: %1")
                      .arg(trashedTo));
        main->addLogEntry(this,
                          korvane::tr("%1 was already at %2; the identical copy from %3 is now in "
                                      "the trash: %4\n")
                              .arg(outcome.name, outcome.to, outcome.from, trashedTo));
        return done();
    }
    if (otherCopy) {
        systemLog(QStringLiteral("Target is an installed copy, both kept: %1").arg(outcome.to));
        main->addLogEntry(
            this, korvane::tr("%1 stays in %2: another installed copy lies at %3\n")
                      .arg(outcome.name, m_list.records().at(logIndex).getLogPath(), outcome.to));
        outcome.otherCopyAtTarget = true;
        reportFailure({outcome.to, QStringLiteral(QT_TRANSLATE_NOOP(
                                       "korvane", "Another installed copy of the plug-in lies "
                                                  "there; both copies are kept"))});
        return outcome;
    }

    main->createFolders(outcome.to);

    if (files.exists(outcome.to)) {
        const bool deletable = files.isDeletable(outcome.to);
        systemLog(QStringLiteral("Target exist: read %1, write %2, delete %3")
                      .arg(yesNo(files.isReadable(outcome.to)), yesNo(files.isWritable(outcome.to)),
                           yesNo(deletable)));
        if (!files.exists(outcome.from)) {
            // Whatever lies at the target may be the only copy left; the move below fails and
            // reports the missing source instead.
        } else {
            if (!deletable)
                m_parts.authentication.requestActivationRight();
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
            if (trashed) {
                systemLog(QStringLiteral("Target moved to the trash: %1").arg(trashedTo));
                main->addLogEntry(this,
                                  korvane::tr("%1 was in the way and is now in the trash: %2\n")
                                      .arg(outcome.to, trashedTo));
            } else if (deletable) {
                systemLog(QStringLiteral("Not moved to the trash: %1").arg(trashError.reason));
            }
        }
    }

    FileError error;
    if (!files.move(outcome.from, outcome.to, &error))
        return moveFailed(error);
    return done();
}

void TypeManager::moveContent(const AUItemPtr &item)
{
    if (!item->hasContent() || item->getContentMaxIndex() <= 0
        || !m_parts.prefs.moveContent(m_traits.type))
        return;

    QStringList prefixes;
    for (const QString &folder : locations().folderPaths(m_traits))
        prefixes << folder + QLatin1Char('/');

    FileOperations &files = this->files();
    const int count = item->getContentMaxIndex();
    for (int i = 0; i < count; ++i) {
        const QString entry = item->getContentByIndex(i);
        // content.plist is outside data: a ".." step could name any file above the folders.
        if (climbsUp(entry))
            continue;
        QString relative;
        for (const QString &prefix : prefixes) {
            if (entry.startsWith(prefix)) {
                relative = QDir::cleanPath(entry.mid(prefix.size()));
                break;
            }
        }
        // Outside the format's folders, or the folder itself.
        if (relative.isEmpty() || relative == QLatin1String(".")
            || relative.startsWith(QLatin1Char('/')))
            continue;

        const QString newPath = item->getAULocation() + QLatin1Char('/') + relative;
        const QStringList components = newPath.split(QLatin1Char('/'), Qt::SkipEmptyParts);
        QString folder;
        for (qsizetype c = 0; c + 1 < components.size(); ++c) {
            folder += QLatin1Char('/') + components.at(c);
            if (!files.exists(folder))
                files.createDirectory(folder);
        }
        // Content that does not move is not reported; the list follows the plug-in regardless.
        files.move(entry, newPath);
        item->replaceContent(newPath, i);
    }
}

void TypeManager::setAllActive()
{
    markAll([](const AUItem &item) { return !item.getAUActive(); }, true);
}

void TypeManager::setAllInactive()
{
    markAll([](const AUItem &item) { return item.getAUActive(); }, false);
}

void TypeManager::setGroupActive()
{
    const AUItemPtr selected = itemAt(selectedRow());
    if (!selected)
        return;
    const int group = selected->getGroupID();
    markAll(
        [group](const AUItem &item) { return !item.getAUActive() && item.groupIDEqualTo(group); },
        true);
}

void TypeManager::setGroupInactive()
{
    const AUItemPtr selected = itemAt(selectedRow());
    if (!selected)
        return;
    const int group = selected->getGroupID();
    markAll(
        [group](const AUItem &item) { return item.getAUActive() && item.groupIDEqualTo(group); },
        false);
}

// The selected-row commands set every selected item whatever its state, so each one's record is
// brought up to date even when nothing changes.
void TypeManager::setSelectedActive()
{
    const QList<AUItemPtr> selected = selectedItems();
    for (const AUItemPtr &item : selected)
        markActive(item, true);
    announceChanged(selected);
}

void TypeManager::setSelectedInactive()
{
    const QList<AUItemPtr> selected = selectedItems();
    for (const AUItemPtr &item : selected)
        markActive(item, false);
    announceChanged(selected);
}

} // namespace korvane
