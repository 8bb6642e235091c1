#pragma once

#include "core/Plugin.h"

#include <QList>
#include <QString>
#include <QVariant>
#include <functional>

namespace korvane {

class FormatManager;
class PluginList;

// Marking a format's plug-ins on or off (and system or user) before the apply moves them: each
// mark sets the item's place and brings its record up to date, so the list knows what is
// pending and the Apply button follows it.
class Marking {
public:
    Marking(FormatManager &manager, PluginList &list);

    // The item's record follows its place; the Apply button follows the pending count.
    void updateRecord(const PluginPtr &item);
    // A pending record dealt with outside the apply (by the rights mover, or left by the person):
    // the apply passes it by, and its rescan shows where the plug-in is.
    void settleRecord(int recordIndex);

    // The table's edit of one cell: a flag column toggles whatever value it is given (undoably);
    // the group column sets the group.
    void changeItem(const PluginPtr &item, const QString &column, const QVariant &value);

    void setAllActive();
    void setAllInactive();
    // Every plug-in in the group of the row selected last.
    void setGroupActive();
    void setGroupInactive();
    // Every selected plug-in, whatever its state, so each record is brought up to date.
    void setSelectedActive();
    void setSelectedInactive();
    // Marks those of items not yet in the state as one undoable step with that name; the items
    // marked. The window's bulk commands (BulkMarks) come through here.
    QList<PluginPtr> markItems(const QList<PluginPtr> &items, bool active,
                               const QString &actionName);
    // Marks every plug-in which answers true for, without an undo step.
    void markWhere(const std::function<bool(const Plugin &)> &which, bool active);

private:
    // The group of the row selected last, those of its members not yet in the state.
    void markGroup(bool active);
    // Every selected plug-in, whatever its state, so each record is brought up to date.
    void markSelected(bool active);
    // Sets an item's active flag, its place among folders (folderPaths) and its record.
    void markActive(const PluginPtr &item, bool active, const QStringList &folders);
    // The format's folders by location code, expanded once per command.
    QStringList folderPaths() const;

    FormatManager &m_manager;
    PluginList &m_list;
};

} // namespace korvane
