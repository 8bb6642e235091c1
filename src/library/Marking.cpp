#include "library/Marking.h"

#include "core/Locations.h"
#include "core/UndoHistory.h"
#include "core/UndoStack.h"
#include "library/DistributionGuard.h"
#include "library/FormatManager.h"
#include "library/Reporting.h"
#include "library/TableColumns.h"

#include <QPointer>

namespace korvane {

Marking::Marking(FormatManager &manager, PluginList &list) : m_manager(manager), m_list(list) {}

void Marking::updateRecord(const PluginPtr &item)
{
    const qsizetype index = m_list.recordIndexOf(*item);
    if (index < 0)
        return;
    PluginRecord &record = m_list.record(index);
    const bool wasProcessed = record.isProcessed();
    record.update(item->name(), item->location(), item->id());
    m_list.noteRecordState(wasProcessed, record.isProcessed());
    if (!record.isProcessed())
        m_manager.setApplyEnabled(true);
    else if (m_list.pendingCount() == 0)
        m_manager.setApplyEnabled(false);
}

void Marking::settleRecord(int recordIndex)
{
    PluginRecord &record = m_list.record(recordIndex);
    m_list.noteRecordState(record.isProcessed(), true);
    record.setProcessed(true);
    if (m_list.pendingCount() == 0)
        m_manager.setApplyEnabled(false);
}

void Marking::changeItem(const PluginPtr &item, const QString &column, const QVariant &value)
{
    if (!item)
        return;
    const FormatTraits &traits = m_manager.traits();
    UndoHistory &history = m_manager.parts().undo;
    UndoStack *undo = history.stack();

    if (column == TableColumn::Group) {
        m_manager.groups().changeGroup(item, value.toString());
        item->updateLocation(traits, folderPaths());
        updateRecord(item);
        m_manager.announceChanged({item});
        return;
    }
    if (column != TableColumn::Active && column != TableColumn::Global)
        return;
    // A plug-in the distribution owns is not marked at all: the apply would refuse it anyway.
    if (const QString refusal =
            DistributionGuard(traits, m_manager.locations())
                .refusal(item->name(), m_list.folderOnDisk(*item), QString(),
                         item->metadata() ? item->metadata()->package : QString());
        !refusal.isEmpty()) {
        tell(m_manager.parts().log, "%1", {refusal});
        return;
    }

    // Every call toggles whatever value it is given, so the same call is its own inverse.
    QPointer<FormatManager> self(&m_manager);
    undo->registerUndo(&m_manager, [self, item, column, value] {
        if (self)
            self->marking().changeItem(item, column, value);
    });
    const bool globalFlag = column == TableColumn::Global;
    if (globalFlag)
        item->setGlobal(!item->isGlobal());
    else
        item->setActive(!item->isActive());
    if (!undo->isUndoing())
        undo->setActionName(
            traits.toggleActionName(item->name(), item->isActive(), item->isGlobal(), globalFlag));

    history.updateTitles();
    item->updateLocation(traits, folderPaths());
    updateRecord(item);
    m_manager.sets().noteItemChanged();
    m_manager.announceChanged({item});
}

QStringList Marking::folderPaths() const
{
    return m_manager.locations().allFolderPaths(m_manager.traits());
}

void Marking::markActive(const PluginPtr &item, bool active, const QStringList &folders)
{
    item->setActive(active);
    item->updateLocation(m_manager.traits(), folders);
    updateRecord(item);
}

QList<PluginPtr> Marking::markItems(const QList<PluginPtr> &items, bool active,
                                    const QString &actionName)
{
    QList<PluginPtr> changed;
    const QStringList folders = folderPaths();
    for (const PluginPtr &item : items) {
        if (!item || item->isActive() == active)
            continue;
        markActive(item, active, folders);
        changed << item;
    }
    if (changed.isEmpty())
        return changed;
    // One step however many moved, so that one Undo takes back one command.
    UndoHistory &history = m_manager.parts().undo;
    UndoStack *undo = history.stack();
    QPointer<FormatManager> self(&m_manager);
    undo->registerUndo(&m_manager, [self, changed, active, actionName] {
        if (self)
            self->marking().markItems(changed, !active, actionName);
    });
    if (!undo->isUndoing())
        undo->setActionName(actionName);
    history.updateTitles();
    m_manager.sets().noteItemChanged();
    m_manager.announceChanged(changed);
    return changed;
}

void Marking::markWhere(const std::function<bool(const Plugin &)> &which, bool active)
{
    QList<PluginPtr> changed;
    const QStringList folders = folderPaths();
    for (const PluginPtr &item : m_list.items()) {
        if (!which(*item))
            continue;
        markActive(item, active, folders);
        changed << item;
    }
    m_manager.announceChanged(changed);
}

void Marking::setAllActive()
{
    markWhere([](const Plugin &item) { return !item.isActive(); }, true);
}

void Marking::setAllInactive()
{
    markWhere([](const Plugin &item) { return item.isActive(); }, false);
}

void Marking::setGroupActive()
{
    markGroup(true);
}

void Marking::setGroupInactive()
{
    markGroup(false);
}

void Marking::markGroup(bool active)
{
    const PluginPtr selected = m_manager.itemAt(m_manager.table().selectedRow());
    if (!selected)
        return;
    const int group = selected->groupId();
    markWhere(
        [group, active](const Plugin &item) {
            return item.isActive() != active && item.groupId() == group;
        },
        active);
}

void Marking::setSelectedActive()
{
    markSelected(true);
}

void Marking::setSelectedInactive()
{
    markSelected(false);
}

void Marking::markSelected(bool active)
{
    const QList<PluginPtr> selected = m_manager.table().selectedItems();
    const QStringList folders = folderPaths();
    for (const PluginPtr &item : selected)
        markActive(item, active, folders);
    m_manager.announceChanged(selected);
}

} // namespace korvane
