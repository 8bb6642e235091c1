#pragma once

#include "core/Plugin.h"

#include <functional>

class QMenu;
class QWidget;

namespace korvane {

class FormatManager;

// The menu a right click on the table's rows opens: On, Off, Set Group, Info, Show in File
// Manager and Move to Trash, each acting on the selected rows as the menu bar's commands do.
namespace RowMenu {

// moveToTrash runs Move to Trash, which asks before anything goes.
QMenu *make(FormatManager &manager, QWidget *parent, const std::function<void()> &moveToTrash);

// Opens the folder that holds the selected plug-in in the desktop's file manager; false when
// nothing is selected or the desktop could not open it.
bool showInFileManager(const FormatManager &manager);
bool showInFileManager(const FormatManager &manager, const PluginPtr &item);
// The same for one plug-in of the manager, selected or not; where no file manager answers, an
// alert names the folder instead.
bool showFolderOf(const FormatManager &manager, const PluginPtr &item);

} // namespace RowMenu

} // namespace korvane
