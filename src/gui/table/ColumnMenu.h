#pragma once

namespace korvane {

class PluginTableView;

// The header's context menu: a tick per column to show or hide it (the name always stays), and
// the clicked column moved left or right. Columns can also be dragged; either way the table keeps
// the order, the widths and what is hidden in the preferences.
namespace ColumnMenu {

void attach(PluginTableView &table);

} // namespace ColumnMenu

} // namespace korvane
