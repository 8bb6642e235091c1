// Activation: the log records that say what is pending, applying a pending change on disk, moving
// companion content along, and the bulk marking commands.

#include "managers/TypeManager.h"

#include "app/AppServices.h"
#include "panels/MyPrefObj.h"
#include "platform/LibraryLock.h"
#include "platform/Locations.h"
#include "platform/SystemLog.h"
#include "platform/Texts.h"
#include "privileged/BLAuthentication.h"
#include "ui/UserInterface.h"

#include <QVariantMap>

namespace korvane {

namespace {

// Nothing depends on the answer: the moves succeed or fail by the file system's own rights.
void requestActivationRight()
{
    BLAuthentication::sharedInstance()->requestActivationRight();
}

// Another program moving the same plug-ins at the same time could leave one in neither folder;
// while one does, nothing moves and the user is told who it is.
bool libraryLocked(const LibraryLock &lock) {
    if (lock.isLocked())
        return true;
    Alert alert;
    alert.messageText = tr("Plug-ins not moved");
    alert.informativeText =
        lock.holder().isEmpty()
            ? tr("The plug-in library could not be locked: %1.").arg(lock.failure())
            : tr("%1 is moving plug-ins. Try again when it has finished.").arg(lock.holder());
    alert.buttons = {tr("OK")};
    UserInterface::current().runAlert(alert);
    return false;
}

QString yesNo(bool flag)
{
    return flag ? QStringLiteral("yes") : QStringLiteral("no");
}

} // namespace

int TypeManager::countOfUnprocessedLogItems() const
{
    int count = 0;
    for (const AULog &record : log)
        if (!record.isLogProcessed())
            ++count;
    return count;
}

void TypeManager::checkLogForUpdate(const AUItemPtr &item)
{
    const QString name = item->getAUName();
    const int id = item->getItemID();
    // A scan gives record i the ID i, so the item's record is normally at its ID; the walk is
    // left for a list that does not hold it there.
    AULog *record = nullptr;
    if (id >= 0 && id < log.size() && log.at(id).getLogID() == id
        && log.at(id).getLogName() == name) {
        record = &log[id];
    } else {
        for (AULog &candidate : log) {
            // The ID is the cheap half of the match; most records differ in it.
            if (candidate.getLogID() == id && candidate.getLogName() == name) {
                record = &candidate;
                break;
            }
        }
    }
    if (!record)
        return;
    const bool wasProcessed = record->isLogProcessed();
    record->checkAndUpdateLogID(name, item->getAULocation(), id);
    noteRecordState(wasProcessed, record->isLogProcessed());
    if (!record->isLogProcessed())
        setApplyEnabled(true);
    else if (m_unprocessedRecords == 0)
        setApplyEnabled(false);
}

void TypeManager::noteRecordState(bool wasProcessed, bool isProcessed)
{
    if (wasProcessed != isProcessed)
        m_unprocessedRecords += isProcessed ? -1 : 1;
}

int TypeManager::findItemIndex(const QString &name, int itemID) const
{
    for (qsizetype i = 0; i < plugins.size(); ++i) {
        const AUItem &item = *plugins.at(i);
        if (item.getItemID() == itemID && item.getAUName() == name)
            return int(i);
    }
    return -1;
}

void TypeManager::activate()
{
    const LibraryLock lock;
    if (!libraryLocked(lock))
        return;
    updateSet();
    requestActivationRight();
    for (qsizetype i = 0; i < log.size(); ++i) {
        if (!log.at(i).isLogProcessed()) {
            applyRecord(int(i));
            break;
        }
    }
    // One change per action: the rescan shows every other mark in its state on disk again.
    reloadData();
}

QList<MoveOutcome> TypeManager::applyAllPending()
{
    const LibraryLock lock;
    if (!libraryLocked(lock))
        return {};
    requestActivationRight();
    QList<MoveOutcome> outcomes;
    for (qsizetype i = 0; i < log.size(); ++i)
        if (!log.at(i).isLogProcessed())
            outcomes << applyRecord(int(i));
    reloadData();
    return outcomes;
}

MoveOutcome TypeManager::applyRecord(int logIndex)
{
    AULog &record = log[logIndex];
    const QString source = record.getLogPath() + QLatin1Char('/') + record.getLogName();
    MoveOutcome outcome{record.getLogName(), source, QString(), false, false, FileError{}};

    const int index = findItemIndex(record.getLogName(), record.getLogID());
    if (index < 0) {
        // The scan keeps items and records in step; a record without its item cannot be applied.
        outcome.error = {outcome.from, QStringLiteral("No plug-in matches the pending change")};
        return outcome;
    }
    const AUItemPtr item = plugins.at(index);
    outcome.to = item->getAULocation() + QLatin1Char('/') + item->getAUName();
    outcome.enabled = item->getAUActive();

    AppServices *main = AppServices::getMainObj();
    FileOperations &files = FileOperations::current();
    main->createFolders(outcome.to);

    if (files.exists(outcome.to)) {
        const bool deletable = files.isDeletable(outcome.to);
        systemLog(QStringLiteral("Target exist: read %1, write %2, delete %3")
                      .arg(yesNo(files.isReadable(outcome.to)), yesNo(files.isWritable(outcome.to)),
                           yesNo(deletable)));
        if (!files.exists(outcome.from)) {
            // Whatever lies at the target may be the only copy left; the move below fails and
            // reports the missing source instead.
        } else if (deletable) {
            files.remove(outcome.to);
        } else {
            requestActivationRight();
            const bool removed = files.remove(outcome.to);
            systemLog(QStringLiteral("Delete %1").arg(removed ? QStringLiteral("sucessful")
                                                              : QStringLiteral("not sucessful")));
        }
    }

    FileError error;
    if (!files.move(outcome.from, outcome.to, &error)) {
        main->fileManager(&files, QVariantMap{{QStringLiteral("Error"), error.reason},
                                              {QStringLiteral("Path"), error.path}});
        systemLog(QStringLiteral("fehlgeschlagen"));
        outcome.error = error;
        return outcome;
    }

    noteRecordState(record.isLogProcessed(), true);
    record.setLogProcessed(true);
    if (m_unprocessedRecords == 0)
        setApplyEnabled(false);
    moveContent(item);
    outcome.ok = true;
    return outcome;
}

void TypeManager::moveContent(const AUItemPtr &item)
{
    if (!MyPrefObj::getPref()->moveContent(m_traits.type) || !item->hasContent()
        || item->getContentMaxIndex() <= 0)
        return;

    QStringList prefixes;
    for (int loc = LocSystemActive; loc <= LocUserDisabled; ++loc)
        prefixes << Locations::folderPath(m_traits.type, loc) + QLatin1Char('/');

    FileOperations &files = FileOperations::current();
    const int count = item->getContentMaxIndex();
    for (int i = 0; i < count; ++i) {
        const QString entry = item->getContentByIndex(i);
        QString relative;
        bool inFormatFolder = false;
        for (const QString &prefix : prefixes) {
            if (entry.startsWith(prefix)) {
                relative = entry.mid(prefix.size());
                inFormatFolder = true;
                break;
            }
        }
        if (!inFormatFolder)
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
    for (const AUItemPtr &item : plugins)
        if (!item->getAUActive())
            markActive(item, true);
    reloadTable();
}

void TypeManager::setAllInactive()
{
    for (const AUItemPtr &item : plugins)
        if (item->getAUActive())
            markActive(item, false);
    reloadTable();
}

void TypeManager::setGroupActive()
{
    const int row = selectedRow();
    if (row < 0 || row >= plugins.size())
        return;
    const int group = plugins.at(row)->getGroupID();
    for (const AUItemPtr &item : plugins)
        if (!item->getAUActive() && item->groupIDEqualTo(group))
            markActive(item, true);
    reloadTable();
}

void TypeManager::setGroupInactive()
{
    const int row = selectedRow();
    if (row < 0 || row >= plugins.size())
        return;
    const int group = plugins.at(row)->getGroupID();
    for (const AUItemPtr &item : plugins)
        if (item->getAUActive() && item->groupIDEqualTo(group))
            markActive(item, false);
    reloadTable();
}

// The selected-row commands set every selected item whatever its state, so each one's record is
// brought up to date even when nothing changes.
void TypeManager::setSelectedActive()
{
    for (int row : selectedRows())
        if (row >= 0 && row < plugins.size())
            markActive(plugins.at(row), true);
    reloadTable();
}

void TypeManager::setSelectedInactive()
{
    for (int row : selectedRows())
        if (row >= 0 && row < plugins.size())
            markActive(plugins.at(row), false);
    reloadTable();
}

} // namespace korvane
