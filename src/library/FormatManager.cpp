#include "library/FormatManager.h"

#include "core/AppServices.h"
#include "core/Locations.h"
#include "core/UndoStack.h"
#include "library/TableColumns.h"

#include <QPointer>

#include <algorithm>

namespace korvane {

FormatManager::FormatManager(const Format &format, const ManagerParts &parts)
    : m_traits(format), m_parts(parts), m_sets(*this, m_traits, m_parts),
      m_scanner(m_traits, m_parts),
      m_columns(TableColumn::Defaults), m_sortKeys{{TableColumn::Name, true, true}}
{
}

FormatManager::~FormatManager() = default;

UserInterface &FormatManager::ui() const
{
    return services().ui();
}

FileOperations &FormatManager::files() const
{
    return services().files();
}

const Locations &FormatManager::locations() const
{
    return services().locations();
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

void FormatManager::loadSetList()
{
    m_sets.loadSetList();
    setApplyEnabled(false);
}

void FormatManager::selectItems(const QList<PluginPtr> &items, const PluginPtr &lastSelected)
{
    m_selection.clear();
    for (const PluginPtr &item : items)
        if (item && !m_selection.contains(item))
            m_selection << item;
    if (lastSelected && !m_selection.contains(lastSelected))
        m_selection << lastSelected;
    // Without a word on which came last, the last one given stands for it.
    m_lastSelected =
        lastSelected ? lastSelected : (m_selection.isEmpty() ? PluginPtr() : m_selection.last());
    emit selectionChanged();
}

QList<PluginPtr> FormatManager::selectedItems() const
{
    QList<PluginPtr> items;
    for (int row : selectedRows())
        items << m_list.at(row);
    return items;
}

QList<int> FormatManager::selectedRows() const
{
    QList<int> rows;
    for (const PluginPtr &item : m_selection)
        if (const int row = rowOf(item); row >= 0)
            rows << row;
    std::sort(rows.begin(), rows.end());
    return rows;
}

int FormatManager::selectedRow() const
{
    return rowOf(m_lastSelected);
}

void FormatManager::selectRows(const QList<int> &rows, int lastSelected)
{
    QList<PluginPtr> items;
    for (int row : rows)
        if (m_list.isValidRow(row))
            items << m_list.at(row);
    selectItems(items, itemAt(lastSelected));
}

void FormatManager::markActive(const PluginPtr &item, bool active)
{
    item->setActive(active);
    item->updateLocation(m_traits.type);
    updateRecord(item);
}

QList<PluginPtr> FormatManager::markItems(const QList<PluginPtr> &items, bool active,
                                          const QString &actionName)
{
    QList<PluginPtr> changed;
    for (const PluginPtr &item : items) {
        if (!item || item->isActive() == active)
            continue;
        markActive(item, active);
        changed << item;
    }
    if (changed.isEmpty())
        return changed;
    // One step however many moved, so that one Undo takes back one command.
    UndoStack *undo = services().undoStack();
    QPointer<FormatManager> self(this);
    undo->registerUndo(this, [self, changed, active, actionName] {
        if (self)
            self->markItems(changed, !active, actionName);
    });
    if (!undo->isUndoing())
        undo->setActionName(actionName);
    services().updateUndoTitle();
    services().updateRedoTitle();
    m_sets.noteItemChanged();
    announceChanged(changed);
    return changed;
}

void FormatManager::markAll(const std::function<bool(const Plugin &)> &which, bool active)
{
    QList<PluginPtr> changed;
    for (const PluginPtr &item : m_list.items()) {
        if (!which(*item))
            continue;
        markActive(item, active);
        changed << item;
    }
    announceChanged(changed);
}

} // namespace korvane
