#include "gui/table/PluginTableView.h"

#include "managers/TypeManager.h"

namespace korvane {

PluginTableView::PluginTableView(TypeManager &manager, QWidget *parent)
    : QTableView(parent), m_manager(manager)
{
}

PluginTableView::~PluginTableView() = default;

void PluginTableView::setFilterText(const QString &) {}

} // namespace korvane
