// Activation: the records that say what is pending, applying them (through the Applier), and
// the bulk marking commands.

#include "library/FormatManager.h"

#include "core/AppServices.h"
#include "core/Locations.h"
#include "core/Texts.h"
#include "core/UserInterface.h"
#include "library/Applier.h"
#include "library/RightsApply.h"
#include "os/LibraryLock.h"

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

} // namespace

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

void FormatManager::apply()
{
    if (!m_sets.offerToSaveSet())
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
    const LibraryLock lock(files(), locations().pluginFolders(m_traits),
                           services().parts().lockWaitMs);
    if (!libraryLocked(lock, ui()))
        return {};
    QList<MoveOutcome> outcomes = Applier(m_traits, m_list, m_parts).applyPending();
    if (m_list.pendingCount() == 0)
        setApplyEnabled(false);
    rescan();
    return outcomes;
}

void FormatManager::moveContent(const PluginPtr &item)
{
    Applier(m_traits, m_list, m_parts).moveContent(item);
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
