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
    if (m_text.isEmpty())
        return true;
    const PluginPtr item = m_source.manager().itemAt(sourceRow);
    if (!item)
        return false;
    // The item's own values rather than the cells: a hidden column still filters.
    for (const QString &value :
         {item->name(), item->group(), item->location(), item->architectureName()})
        if (value.contains(m_text, Qt::CaseInsensitive))
            return true;
    return false;
}

} // namespace korvane
