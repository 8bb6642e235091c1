#pragma once

#include "core/PluginList.h"
#include "library/FormatSettings.h"
#include "library/FormatTraits.h"
#include "library/Scanner.h"
#include "library/SetController.h"
#include "os/FileOperations.h"

#include <QList>
#include <QObject>
#include <QSet>
#include <QString>
#include <QStringList>
#include <QVariant>
#include <array>
#include <functional>

namespace korvane {

class AppServices;
class Authorization;
class Locations;
class MissingItemsPrompt;
class RightsMover;
class UserInterface;

// The controllers a manager works with, made by AppContext.
struct ManagerParts {
    AppServices &services; // registries, undo, log, file errors; roots, files, interface, formats
    const FormatSettings &settings; // the preferences
    MissingItemsPrompt &missingItems;
    Authorization &authorization;
    // The window's: system moves the person may not make alone go through it. None: they are
    // tried with the person's own rights.
    RightsMover *rights = nullptr;
};

// One column of the table's sort order.
struct SortKey {
    QString column; // a column identifier: "AUName", "AULocation", "AUActive", "AUGlobal",
                    // "AUGroup", "AUType"
    bool ascending = true;
    bool caseInsensitive = false;
};

// What happened to one pending plug-in when it was applied.
struct MoveOutcome {
    QString name;
    QString from; // full source path
    QString to;   // full target path
    bool enabled; // moved into an active folder
    bool ok;
    FileError error;
    // Not moved because another installed copy of the plug-in lies at the target; both stay.
    bool otherCopyAtTarget = false;
    // Not tried: the user chose Stop at an earlier failure of the same apply.
    bool stopped = false;
};

// The manager of one format row: scanning, activation, sets, table, groups and maintenance. Every
// format has one alike; what differs between formats is in the row.
//
// The manager keeps the list's order: sets, groups and deletion work in list order. It announces
// every change: itemsChanged for the rows whose values changed, a reorder after a sort, a removal
// per deleted row, and a reset only when a rescan rebuilt the list. The selection and the sort
// order are the view's: it hands them over as they change, and the selection is kept by identity,
// so no row number goes stale.
class FormatManager : public QObject {
    Q_OBJECT
public:
    FormatManager(const Format &format, const ManagerParts &parts);
    ~FormatManager() override;

    const FormatTraits &traits() const { return m_traits; }
    int type() const { return m_traits.type; }

    // --- The list ------------------------------------------------------------------------------
    const PluginList &plugins() const { return m_list; }
    const QList<PluginPtr> &items() const { return m_list.items(); }
    PluginPtr itemAt(int row) const
    {
        return m_list.isValidRow(row) ? m_list.at(row) : PluginPtr();
    }
    int rowOf(const PluginPtr &item) const { return item ? m_list.rowOf(item.get()) : -1; }

    // --- Scanning --------------------------------------------------------------------------
    void rescan();
    bool recognise(const QString &nameOrPath) const
    {
        return m_traits.recognise(nameOrPath, nullptr);
    }
    // Whether this manager has scanned its folders since it was made.
    bool hasScanned() const { return m_scanned; }

    // --- Records and activation ----------------------------------------------------------------
    int pendingCount() const { return m_list.pendingCount(); }
    void updateRecord(const PluginPtr &item);
    int findRow(const QString &name, int itemID) const;
    // Offers to save the set, makes the moves that need rights (RightsApply), then applyPending.
    void apply();
    QList<MoveOutcome> applyPending(); // every pending record, then one rescan
    // A pending record dealt with outside the apply (by the rights mover, or left by the person):
    // the apply passes it by, and its rescan shows where the plug-in is.
    void settleRecord(int recordIndex);
    void moveContent(const PluginPtr &item);
    void setAllActive();
    void setAllInactive();
    void setGroupActive();
    void setGroupInactive();
    void setSelectedActive();
    void setSelectedInactive();
    // Marks those of items not yet in the state as one undoable step with that name; the items
    // marked. The window's bulk commands (BulkMarks) come through here.
    QList<PluginPtr> markItems(const QList<PluginPtr> &items, bool active,
                               const QString &actionName);

    // --- Sets ----------------------------------------------------------------------------------
    SetController &sets() { return m_sets; }
    const SetController &sets() const { return m_sets; }
    void loadSetList(); // the set pop-up from the sets file, apply off
    // Merges saved entries into the list; the names of saved items that match none.
    QStringList mergeItems(const QList<PluginPtr> &saved);

    // --- Table ---------------------------------------------------------------------------------
    int rowCount() const { return m_list.count(); }
    // A flag column toggles whatever value it is given (undoably); the group column sets it.
    void changeItem(const PluginPtr &item, const QString &column, const QVariant &value);
    // The view's current row changed: the info panel follows it.
    void setCurrentRow(int row);
    void sortBy(const QList<SortKey> &keys);
    bool installDropped(const QStringList &paths);

    // --- Groups --------------------------------------------------------------------------------
    QString groupsFilePath() const;
    void saveGroups();
    static QString findGroup(const QVariantList &groups, const QString &name);
    void changeGroup(const PluginPtr &item, const QString &group);
    void setGroup(const QString &menuTitle);
    int groupChoiceCount() const;
    QString groupChoiceAt(int index) const;

    // --- Maintenance ---------------------------------------------------------------------------
    void requestInfo();
    // A backup of the format's plug-ins, and putting one back (PluginBackup, with its dialogs).
    void backup();
    void restoreBackup();
    void reportDuplicates();
    // Each name held by more than one item, once, at its first position, with its total count.
    static QList<QPair<QString, int>> duplicateNames(const QList<PluginPtr> &items);
    void moveSelectedToTrash();
    void showArchitectureColumn(bool visible);
    void setArchitectureActive(int architecture, bool active);

    // --- State the window shows ----------------------------------------------------------------
    bool isApplyEnabled() const { return m_applyEnabled; }
    QStringList columns() const { return m_columns; }
    QList<SortKey> sortKeys() const { return m_sortKeys; }

    // The view's selection, by identity; rows are where those items stand now, ascending, and the
    // row selected last (-1 for none).
    void selectItems(const QList<PluginPtr> &items, const PluginPtr &lastSelected = {});
    QList<PluginPtr> selectedItems() const;
    QList<int> selectedRows() const;
    int selectedRow() const;
    void selectRows(const QList<int> &rows, int lastSelected = -1);

    // What the manager works with, for the parts that work on its plug-ins beside it.
    AppServices &services() const { return m_parts.services; }
    UserInterface &ui() const;
    FileOperations &files() const;
    const Locations &locations() const;

signals:
    void itemsAboutToBeReset();
    void itemsReset();
    void itemsChanged(const QList<int> &rows);
    void itemsAboutToBeReordered();
    void itemsReordered();
    void itemAboutToBeRemoved(int row);
    void itemRemoved(int row);
    void applyEnabledChanged(bool enabled);
    void columnsChanged();
    void selectionChanged();
    // For the info panel: a row was selected in the table, or the info command was given.
    void rowSelected(const PluginPtr &item);
    void infoRequested(const PluginPtr &item, bool showContent);

private:
    void setApplyEnabled(bool enabled);
    void announceChanged(const QList<PluginPtr> &items);
    void sortPlugins();
    // Sets an item's active flag, its place and its record; true when it is now pending.
    void markActive(const PluginPtr &item, bool active);
    void markAll(const std::function<bool(const Plugin &)> &which, bool active);

    FormatTraits m_traits;
    ManagerParts m_parts;
    PluginList m_list;
    SetController m_sets;
    Scanner m_scanner;
    bool m_scanned = false;
    bool m_applyEnabled = false;
    QStringList m_columns;
    QList<SortKey> m_sortKeys;
    QList<PluginPtr> m_selection; // in the order the view gave them
    PluginPtr m_lastSelected;
};

} // namespace korvane
