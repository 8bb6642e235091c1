#include "library/FormatManager.h"

#include "core/GroupRegistry.h"
#include "core/Locations.h"
#include "core/RunParts.h"
#include "core/Texts.h"
#include "core/UndoHistory.h"
#include "core/UndoStack.h"
#include "core/UserInterface.h"
#include "library/Applier.h"
#include "library/RightsApply.h"
#include "os/LibraryLock.h"

#include <algorithm>

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

FormatManager::FormatManager(const Format &format, const ManagerParts &parts)
    : m_traits(format), m_parts(parts), m_scanner(m_traits, m_parts), m_marking(*this, m_list),
      m_sets(*this, m_traits, m_parts), m_groups(*this), m_table(*this, m_list),
      m_maintenance(*this, m_parts)
{
}

FormatManager::~FormatManager() = default;

UserInterface &FormatManager::ui() const
{
    return m_parts.run.ui;
}

FileOperations &FormatManager::files() const
{
    return m_parts.run.files;
}

const Locations &FormatManager::locations() const
{
    return m_parts.run.locations;
}

QString FormatManager::groupName(const Plugin &item) const
{
    return m_parts.groups.nameAt(item.groupId());
}

void FormatManager::setApplyEnabled(bool enabled)
{
    if (m_applyEnabled == enabled)
        return;
    m_applyEnabled = enabled;
    emit applyEnabledChanged(enabled);
}

void FormatManager::announceChanged(const QList<PluginPtr> &items)
{
    QList<int> rows;
    rows.reserve(items.size());
    for (const PluginPtr &item : items)
        if (const int row = rowOf(item); row >= 0)
            rows << row;
    if (rows.isEmpty())
        return;
    std::sort(rows.begin(), rows.end());
    rows.erase(std::unique(rows.begin(), rows.end()), rows.end());
    emit itemsChanged(rows);
}

void FormatManager::rescan()
{
    m_parts.undo.stack()->removeActionsOf(this);
    m_parts.undo.updateTitles();

    // The selection outlives the rescan by name and place; the items themselves are made anew.
    const QList<QPair<QString, QString>> selected = m_table.selectionPlaces();

    emit itemsAboutToBeReset();
    m_scanned = true;

    m_scanner.scan(m_list);
    setApplyEnabled(false);
    m_table.sort();
    m_table.refindSelection(selected);
    emit itemsReset();
    emit selectionChanged();
}

void FormatManager::apply()
{
    if (!m_sets.offerToSaveSet())
        return;
    // Before the lock is taken: the helper takes the system folders' lock itself.
    if (m_parts.rights)
        RightsApply::run(m_traits, m_list, m_marking, m_parts.run, m_parts.log, *m_parts.rights);
    // Every marked plug-in moves: applying one per press left the rest to be marked again.
    applyPending();
}

QList<MoveOutcome> FormatManager::applyPending()
{
    const LibraryLock lock(m_parts.run.locks, files(), locations().pluginFolders(m_traits),
                           m_parts.run.lockWaitMs);
    if (!libraryLocked(lock, ui()))
        return {};
    QList<MoveOutcome> outcomes = Applier(m_traits, m_list, m_parts).applyPending();
    if (m_list.pendingCount() == 0)
        setApplyEnabled(false);
    rescan();
    return outcomes;
}

} // namespace korvane
