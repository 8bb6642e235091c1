#pragma once

#include "core/Plugin.h"

#include <QCollator>
#include <QHash>
#include <QList>
#include <QLocale>
#include <QPair>
#include <QString>
#include <QStringList>
#include <optional>

namespace korvane {

class FormatManager;
class PluginList;

// One column of the table's sort order.
struct SortKey {
    QString column; // a column identifier (TableColumn): "AUName", "AUVendor", "AULocation"...
    bool ascending = true;
    bool caseInsensitive = false;
};

// The table's view of a format's list: its columns, its sort order and the selection. The view
// hands the sort order and the selection over as they change; the selection is kept by
// identity, so no row number goes stale, and the sort reorders the list itself (sets, groups and
// deletion work in list order).
class TableState {
public:
    TableState(FormatManager &manager, PluginList &list);

    QStringList columns() const { return m_columns; }
    void showArchitectureColumn(bool visible);

    QList<SortKey> sortKeys() const { return m_sortKeys; }
    void sortBy(const QList<SortKey> &keys); // announced as a reorder
    void sort();                             // in the current order, unannounced (a rescan)

    // The selection; rows are where those items stand now, ascending, and the row selected last
    // (-1 for none).
    void selectItems(const QList<PluginPtr> &items, const PluginPtr &lastSelected = {});
    void selectRows(const QList<int> &rows, int lastSelected = -1);
    QList<PluginPtr> selectedItems() const;
    QList<int> selectedRows() const;
    int selectedRow() const;
    // The view's current row changed: the info panel follows it.
    void setCurrentRow(int row);

    // The selection by name and place, to be found again in a list scanned anew; refinding it
    // announces nothing.
    QList<QPair<QString, QString>> selectionPlaces() const;
    void refindSelection(const QList<QPair<QString, QString>> &places);

    // Collation keys of the texts sorted naturally (names, vendors, versions), kept between sorts
    // (a header click sorts the same texts again), for one locale and up to a bound.
    struct NaturalKeys {
        QLocale locale;
        std::optional<QCollator> collator;
        QHash<QString, QCollatorSortKey> keys;
    };

private:
    FormatManager &m_manager;
    PluginList &m_list;
    QStringList m_columns;
    QList<SortKey> m_sortKeys;
    QList<PluginPtr> m_selection; // in the order the view gave them
    PluginPtr m_lastSelected;
    NaturalKeys m_naturalKeys;
};

} // namespace korvane
