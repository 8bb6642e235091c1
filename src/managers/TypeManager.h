#pragma once

#include "managers/FormatTraits.h"
#include "model/AUItem.h"
#include "model/AULog.h"
#include "platform/FileOperations.h"

#include <QList>
#include <QObject>
#include <QString>
#include <QStringList>
#include <QVariant>

namespace korvane {

// One column of the table's sort order.
struct SortDescriptor {
    QString key; // a column identifier: "AUName", "AULocation", "AUActive", "AUGlobal", "AUGroup", "AUType"
    bool ascending = true;
    bool caseInsensitive = false;
};

// What happened to one pending plug-in when it was applied.
struct MoveOutcome {
    QString name;
    QString from;  // full source path
    QString to;    // full target path
    bool enabled;  // moved into an active folder
    bool ok;
    FileError error;
    // Not moved because another installed copy of the plug-in lies at the target; both stay.
    bool otherCopyAtTarget = false;
    // Not tried: the user chose Stop at an earlier failure of the same apply.
    bool stopped = false;
};

// How a drop onto the table is to be treated.
struct DropValidation {
    int operation; // 0 none, 4 generic
    int row;       // retargeted row
    bool onRow;    // drop on a row (false: above)
};

// The one design of the four format managers: scanning, activation, sets, table, groups and
// maintenance. A subclass only supplies its FormatTraits and its own spellings.
class TypeManager : public QObject {
    Q_OBJECT
public:
    explicit TypeManager(const FormatTraits &traits);
    ~TypeManager() override;

    const FormatTraits &traits() const { return m_traits; }
    int typeIndex() const { return m_traits.type; }
    static TypeManager *forType(int type); // the shared manager of a type; nullptr for others

    // --- Scanning --------------------------------------------------------------------------
    void reloadData();
    bool recognise(const QString &nameOrPath) const { return m_traits.recognise(nameOrPath); }

    // --- Log records and activation ------------------------------------------------------------
    int countOfUnprocessedLogItems() const;
    void checkLogForUpdate(const AUItemPtr &item);
    int findItemIndex(const QString &name, int itemID) const;
    void activate();                       // offers to save the set, then applyAllPending
    QList<MoveOutcome> applyAllPending();  // every pending record, then one rescan
    void moveContent(const AUItemPtr &item);
    void setAllActive();
    void setAllInactive();
    void setGroupActive();
    void setGroupInactive();
    void setSelectedActive();
    void setSelectedInactive();

    // --- Sets ----------------------------------------------------------------------------------
    void awakeFromNib(); // the set pop-up from the sets file, apply off, window-load name
    void newButtonPressed();
    void save();
    void saveAs();
    void savePanelDidEnd(int returnCode, const QString &path);
    void open();
    void openPanelDidEnd(int returnCode, const QString &path);
    void openDefaultSet(const QString &path);
    void openSet(const QString &path);
    // The merge of openSet alone: no dialog, no apply; the names of saved items that match none.
    QStringList mergeSet(const QString &path);
    void selectSet(int index); // the pop-up's action with its new selection
    void updateSet();
    void saveSets();
    QString getSelectedSet() const; // null for "no set"
    bool archivePlugins(const QString &path) const;

    // --- Table ---------------------------------------------------------------------------------
    int numberOfRowsInTableView() const { return plugins.size(); }
    QVariant objectValue(int row, const QString &identifier) const;
    static QVariant itemValue(const AUItem &item, const QString &identifier);
    void setObjectValue(const QVariant &value, const QString &identifier, int row);
    void changeObject(const AUItemPtr &item, const QString &identifier, const QVariant &data);
    bool shouldSelectRow(int row);
    void sortDescriptorsDidChange(const QList<SortDescriptor> &descriptors);
    void sortPlugins();
    QStringList writeRows(const QList<int> &rows) const;
    DropValidation validateDrop(int proposedRow, bool proposedOnRow, bool fromInsideApplication) const;
    bool acceptDrop(const QStringList &paths);

    // --- Groups --------------------------------------------------------------------------------
    QString groupsFilePath() const;
    void saveGroups();
    static QString findGroup(const QVariantList &groups, const QString &name);
    void changeGroup(const AUItemPtr &item, const QString &group);
    void setGroup(const QString &menuTitle);
    int numberOfItemsInComboBoxCell() const;
    QString comboBoxCellObjectValue(int index) const;

    // --- Maintenance ---------------------------------------------------------------------------
    void rescan() { reloadData(); }
    void getInfo();
    void backup() {}
    void backupRestore();
    void checkForDuplicates();
    // Each name held by more than one item, once, at its first position, with its total count.
    static QList<QPair<QString, int>> duplicateNames(const QList<AUItemPtr> &items);
    void deleteItem();
    QString getIconFromObject(int row) const;
    void visiblePlattform(int state) { setPlattformVisible(state == 1); }
    void setPlattformVisible(bool visible);
    void setPlattformActive(int plattform, bool active);

    // --- State the window shows ----------------------------------------------------------------
    QList<AUItemPtr> plugins;
    QList<AULog> log;
    QString fileName;
    bool bChanged = false;

    bool isApplyEnabled() const { return pbActiveEnabled; }
    QString setName() const { return etName; }
    QStringList setTitles() const { return pbSetsTitles; }
    int selectedSetIndex() const { return pbSetsIndex; }
    void selectSetIndex(int index); // selection only, no action
    QStringList columns() const { return m_columns; }
    QList<SortDescriptor> sortDescriptors() const { return m_sortDescriptors; }

    // The table selection: rows ascending, and the row selected last (-1 for none).
    QList<int> selectedRows() const { return m_selectedRows; }
    int selectedRow() const { return m_selectedRow; }
    void selectRows(const QList<int> &rows, int lastSelected = -1);

signals:
    void tableReloaded();
    void applyEnabledChanged(bool enabled);
    void setNameChanged(const QString &name);
    void setsChanged();
    void columnsChanged();
    void selectionChanged();

protected:
    void setApplyEnabled(bool enabled);
    void setSetName(const QString &name);
    void reloadTable();
    struct ApplyRun;
    MoveOutcome applyRecord(int logIndex, ApplyRun &run);
    MoveOutcome pendingOutcome(int logIndex, AUItemPtr *item = nullptr) const;
    // The index in log of an item's record (matched by name and ID), or -1.
    qsizetype recordIndexOf(const AUItem &item) const;
    // Keeps the count of unprocessed records when one record's state may have changed.
    void noteRecordState(bool wasProcessed, bool isProcessed);
    void markActive(const AUItemPtr &item, bool active);
    QString undoActionName(const AUItem &item, bool globalFlag) const;

    FormatTraits m_traits;
    bool pbActiveEnabled = false;
    QString etName;
    QStringList pbSetsTitles{QStringLiteral("no set")};
    int pbSetsIndex = 0;
    QStringList m_columns;
    QList<SortDescriptor> m_sortDescriptors;
    QList<int> m_selectedRows;
    int m_selectedRow = -1;
    // Unprocessed records in log, kept as they change so that marking one item costs no walk of
    // the whole log; the records change state only through this class.
    int m_unprocessedRecords = 0;
};

} // namespace korvane
