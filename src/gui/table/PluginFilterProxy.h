#pragma once

#include "gui/table/PluginFilter.h"

#include <QSortFilterProxyModel>

namespace korvane {

class PluginTableModel;

// Hides the rows the search and the quick filters leave out (PluginFilter). It never sorts: the
// order is the manager's, so a visible row maps back to the manager's row.
class PluginFilterProxy : public QSortFilterProxyModel {
    Q_OBJECT
public:
    using State = PluginFilter::State;
    using Place = PluginFilter::Place;

    explicit PluginFilterProxy(PluginTableModel &source, QObject *parent = nullptr);

    const PluginFilter &filter() const { return m_filter; }
    void setFilter(const PluginFilter &filter);
    QString filterText() const { return m_filter.text; }
    void setFilterText(const QString &text);
    State state() const { return m_filter.state; }
    Place place() const { return m_filter.place; }
    void setState(State state);
    void setPlace(Place place);
    // Whether the search or a quick filter hides anything it could.
    bool isFiltering() const { return m_filter.isFiltering(); }
    // The manager's row of a visible row, -1 for none; and back.
    int sourceRow(int row) const;
    int proxyRow(int sourceRow) const;

    void sort(int, Qt::SortOrder) override {}

signals:
    // The rows shown changed in one layout change, which, unlike a removal, tells a selection
    // model nothing: the rows it lost went without a selectionChanged.
    void filterChanged();

protected:
    bool filterAcceptsRow(int sourceRow, const QModelIndex &sourceParent) const override;

private:
    PluginTableModel &m_source;
    PluginFilter m_filter;
};

} // namespace korvane
