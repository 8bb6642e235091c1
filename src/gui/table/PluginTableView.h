#pragma once

#include "library/BulkMarks.h"

#include <QHash>
#include <QPointer>
#include <QTableView>
#include <QTimer>

class QDragMoveEvent;

namespace korvane {

class Preferences;
class PluginFilterProxy;
class PluginTableModel;
class FormatManager;

// The plug-in table of one format, bound to its manager: the manager's items are the rows, its
// change signals repaint only the rows they name, its sort and selection are the table's. Keeps
// its own column widths and order in the preferences file.
class PluginTableView : public QTableView {
    Q_OBJECT
public:
    // prefs keeps the column widths and sort order; without it (a test's bare table) they are
    // neither restored nor saved.
    PluginTableView(FormatManager &manager, Preferences *prefs, QWidget *parent = nullptr);
    ~PluginTableView() override;

    FormatManager &manager() const { return m_manager; }
    // Shows only the rows whose name, vendor or group contain text (with the quick filters).
    void setFilterText(const QString &text);

    // The bulk commands' view of the table: the rows the filter shows, and how many fit.
    BulkMarks::View bulkView() const;

    PluginTableModel &tableModel() const { return *m_model; }
    PluginFilterProxy &filterProxy() const { return *m_proxy; }
    // The preference that keeps this format's column order and widths.
    QString columnsKey() const;
    // The preference that keeps this format's sort order.
    QString sortKey() const;
    // What a drop of data at pos would do: a copy, or nothing when it is refused.
    Qt::DropAction dropActionFor(const QMimeData *dropped, const QPoint &pos,
                                 bool fromInsideApplication) const;
    bool isDropHighlighted() const { return m_dropHighlighted; }
    // The selected rows as the table shows them, tab-separated under the titles of the columns
    // shown, for a spreadsheet or a message; Ctrl+C puts it on the clipboard.
    QString selectedRowsText() const;
    // Space: the selected rows' Active flips, as one step; the current row decides the way.
    void toggleSelected();

signals:
    // The row menu's Move to Trash: the window asks first, as for the menu bar's command.
    void moveToTrashRequested();

protected:
    void selectionChanged(const QItemSelection &selected,
                          const QItemSelection &deselected) override;
    void currentChanged(const QModelIndex &current, const QModelIndex &previous) override;
    void startDrag(Qt::DropActions supportedActions) override;
    void dragEnterEvent(QDragEnterEvent *event) override;
    void dragMoveEvent(QDragMoveEvent *event) override;
    void dragLeaveEvent(QDragLeaveEvent *event) override;
    void dropEvent(QDropEvent *event) override;
    void hideEvent(QHideEvent *event) override;
    void keyPressEvent(QKeyEvent *event) override;

private:
    // Takes the drag as a copy where a drop would be taken, else refuses it.
    bool acceptDrag(QDragMoveEvent *event);
    void sortByHeader(int section, Qt::SortOrder order);
    void showSortIndicator();
    void saveSort();
    void restoreSort();
    void selectFromManager();
    void selectInManager();
    void restoreColumns();
    bool hiddenByDefault(const QString &identifier) const;
    void scheduleColumnsSave();
    void saveColumns();
    void setDropHighlighted(bool on);

    FormatManager &m_manager;
    PluginTableModel *m_model = nullptr;
    PluginFilterProxy *m_proxy = nullptr;
    QPointer<Preferences> m_prefs;
    QTimer m_saveColumns;
    QHash<QString, int> m_hiddenWidths; // the width each hidden column had
    bool m_syncing = false;         // the selection or sort indicator is being set from the manager
    bool m_restoring = false;       // the header is being laid out from the preferences
    bool m_managerChanging = false; // between a manager's announcement of a change and its end
    bool m_dropHighlighted = false;
};

} // namespace korvane
