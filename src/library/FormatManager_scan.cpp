// Rescanning: the list made anew by the Scanner, the selection found again by name and place.
#include "library/FormatManager.h"

#include "core/AppServices.h"
#include "core/UndoStack.h"

namespace korvane {

void FormatManager::rescan()
{
    AppServices &main = services();
    main.undoStack()->removeActionsOf(this);
    main.updateUndoTitle();
    main.updateRedoTitle();

    // The selection outlives the rescan by name and place; the items themselves are made anew.
    QList<QPair<QString, QString>> selected;
    for (const PluginPtr &item : selectedItems())
        selected.append({item->name(), item->location()});

    emit itemsAboutToBeReset();
    m_scanned = true;

    m_scanner.scan(m_list);
    setApplyEnabled(false);
    sortPlugins();

    QList<PluginPtr> reselected;
    for (const PluginPtr &item : m_list.items())
        if (selected.contains({item->name(), item->location()}))
            reselected << item;
    m_selection = reselected;
    m_lastSelected = reselected.isEmpty() ? PluginPtr() : reselected.last();
    emit itemsReset();
    emit selectionChanged();
}

} // namespace korvane
