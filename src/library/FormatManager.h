#pragma once

#include "core/PluginList.h"
#include "library/FormatSettings.h"
#include "library/FormatTraits.h"
#include "library/GroupAssignment.h"
#include "library/Maintenance.h"
#include "library/Marking.h"
#include "library/Scanner.h"
#include "library/SetController.h"
#include "library/TableState.h"
#include "os/FileOperations.h"

#include <QList>
#include <QObject>
#include <QString>

namespace korvane {

class ActivityLog;
class Authorization;
class ContentRegistry;
class DataFiles;
class GroupRegistry;
class Locations;
class MissingItemsPrompt;
class RightsMover;
class UndoHistory;
class UserInterface;
struct RunParts;

// The controllers a manager works with, made by AppContext.
struct ManagerParts {
    const RunParts &run; // roots, files, interface, formats
    ActivityLog &log;
    UndoHistory &undo;
    GroupRegistry &groups;
    ContentRegistry &content;
    DataFiles &dataFiles;
    const FormatSettings &settings; // the preferences
    MissingItemsPrompt &missingItems;
    Authorization &authorization;
    // The window's: system moves the person may not make alone go through it. None: they are
    // tried with the person's own rights.
    RightsMover *rights = nullptr;
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

// The manager of one format row: it owns the format's plug-in list and hands out the parts that
// work on it, each with one job: the scan (Scanner), the marks and their records (Marking), the
// set pop-up and documents (SetController), groups (GroupAssignment), the table's order,
// selection and columns (TableState) and the maintenance commands (Maintenance). The apply
// itself stays here, since it joins the rights mover, the lock, the Applier and the rescan.
//
// The manager keeps the list's order: sets, groups and deletion work in list order. Its signals
// announce every change, whichever part made it: itemsChanged for the rows whose values changed,
// a reorder after a sort, a removal per deleted row, and a reset only when a rescan rebuilt the
// list.
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
    int rowCount() const { return m_list.count(); }

    // The list made anew from the folders; the selection is found again by name and place.
    void rescan();
    // Whether this manager has scanned its folders since it was made.
    bool hasScanned() const { return m_scanned; }

    // --- Applying ------------------------------------------------------------------------------
    int pendingCount() const { return m_list.pendingCount(); }
    bool isApplyEnabled() const { return m_applyEnabled; }
    // Offers to save the set, makes the moves that need rights (RightsApply), then applyPending.
    void apply();
    QList<MoveOutcome> applyPending(); // every pending record, then one rescan

    // --- The parts -----------------------------------------------------------------------------
    Marking &marking() { return m_marking; }
    SetController &sets() { return m_sets; }
    const SetController &sets() const { return m_sets; }
    GroupAssignment &groups() { return m_groups; }
    TableState &table() { return m_table; }
    const TableState &table() const { return m_table; }
    Maintenance &maintenance() { return m_maintenance; }

    // What the manager works with (the run, log, undo history, registries, data files, settings),
    // for the parts that work on its plug-ins beside it.
    const ManagerParts &parts() const { return m_parts; }
    // The name of item's group, as the group registry has it now; empty for none.
    QString groupName(const Plugin &item) const;
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
    // The parts change the list and announce what they changed through the manager's signals;
    // nothing else may.
    friend class Marking;
    friend class SetController;
    friend class GroupAssignment;
    friend class TableState;
    friend class Maintenance;

    void setApplyEnabled(bool enabled);
    // itemsChanged with the rows the items stand in now.
    void announceChanged(const QList<PluginPtr> &items);

    FormatTraits m_traits;
    ManagerParts m_parts;
    PluginList m_list;
    Scanner m_scanner;
    Marking m_marking;
    SetController m_sets;
    GroupAssignment m_groups;
    TableState m_table;
    Maintenance m_maintenance;
    bool m_scanned = false;
    bool m_applyEnabled = false;
};

} // namespace korvane
