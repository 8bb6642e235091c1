#include "gui/table/PluginFilterProxy.h"

#include "gui/table/PluginTableModel.h"
#include "library/FormatManager.h"

namespace korvane {

PluginFilterProxy::PluginFilterProxy(PluginTableModel &source, QObject *parent)
    : QSortFilterProxyModel(parent), m_source(source)
{
    setSourceModel(&source);
}

void PluginFilterProxy::setFilter(const PluginFilter &filter)
{
    if (filter == m_filter)
        return;
    m_filter = filter;
    // One layout change for the whole table: row by row, a filter that hides every other row of
    // 10,000 made some 2,000 removals, each followed by the view, the header and the selection.
    invalidate();
    emit filterChanged();
}

void PluginFilterProxy::setFilterText(const QString &text)
{
    PluginFilter filter = m_filter;
    filter.text = text;
    setFilter(filter);
}

void PluginFilterProxy::setState(State state)
{
    PluginFilter filter = m_filter;
    filter.state = state;
    setFilter(filter);
}

void PluginFilterProxy::setPlace(Place place)
{
    PluginFilter filter = m_filter;
    filter.place = place;
    setFilter(filter);
}

int PluginFilterProxy::sourceRow(int row) const
{
    return mapToSource(index(row, 0)).row();
}

int PluginFilterProxy::proxyRow(int sourceRow) const
{
    return mapFromSource(m_source.index(sourceRow, 0)).row();
}

bool PluginFilterProxy::filterAcceptsRow(int sourceRow, const QModelIndex &) const
{
    if (!m_filter.isFiltering())
        return true;
    const FormatManager &manager = m_source.manager();
    const PluginPtr item = manager.itemAt(sourceRow);
    return item && m_filter.accepts(*item, manager.type(), manager.groupName(*item));
}

} // namespace korvane
