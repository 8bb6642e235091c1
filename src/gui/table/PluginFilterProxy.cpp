#include "gui/table/PluginFilterProxy.h"

#include "gui/table/PluginTableModel.h"
#include "library/FormatManager.h"

namespace korvane {

PluginFilterProxy::PluginFilterProxy(PluginTableModel &source, QObject *parent)
    : QSortFilterProxyModel(parent), m_source(source)
{
    setSourceModel(&source);
}

void PluginFilterProxy::setFilterText(const QString &text)
{
    if (text == m_text)
        return;
    m_text = text;
    invalidateRowsFilter();
}

void PluginFilterProxy::setState(State state)
{
    if (state == m_state)
        return;
    m_state = state;
    invalidateRowsFilter();
}

void PluginFilterProxy::setPlace(Place place)
{
    if (place == m_place)
        return;
    m_place = place;
    invalidateRowsFilter();
}

bool PluginFilterProxy::isFiltering() const
{
    return !m_text.isEmpty() || m_state != State::Any || m_place != Place::Any;
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
    if (!isFiltering())
        return true;
    const PluginPtr item = m_source.manager().itemAt(sourceRow);
    if (!item)
        return false;
    // What the row shows, marks included: a plug-in just unticked counts as off.
    if (m_state != State::Any && item->isActive() != (m_state == State::On))
        return false;
    if (m_place != Place::Any && item->isGlobal() != (m_place == Place::System))
        return false;
    // The item's own values rather than the cells: a hidden column still filters.
    return m_text.isEmpty() || item->name().contains(m_text, Qt::CaseInsensitive)
           || item->group().contains(m_text, Qt::CaseInsensitive);
}

} // namespace korvane
