#pragma once

#include "core/Format.h"
#include "core/Plugin.h"

#include <QList>
#include <QString>
#include <QStringList>
#include <QVariant>

namespace korvane {

class FormatManager;

// What the table shows of a format manager's plug-ins and what a drag or a drop means there: the
// view's adapter over the manager, which knows rows only as the list's order.
namespace PluginTableSource {

// A column's value of one plug-in of manager's format, by column identifier
// (library/TableColumns.h): a flag, or the text the cell shows before translation (the location's
// "System" and "User" are the core's words); invalid for an identifier it does not know. What a
// plug-in's files do not say is empty.
QVariant valueOf(const FormatManager &manager, const Plugin &item, const QString &column);
// The same for the columns whose value does not depend on the format (flags, group,
// architectures and what the files say); invalid for the others. group: its group's name.
QVariant formatFreeValueOf(const Plugin &item, const QString &column, const QString &group);

// Where the plug-in lies, as the Location column says it: "System" or "User" for the first folder
// pair of each, else the pair's active folder as written ("/usr/lib/lv2", "~/.lv2").
QString locationOf(const Format &format, const Plugin &item);
// The same as the cell shows it: the scope in the person's language, a folder as shown.
QString shownLocationOf(const Format &format, const Plugin &item);

// Where the rows' plug-ins lie on disk, for a drag out of the table.
QStringList pathsOfRows(const FormatManager &manager, const QList<int> &rows);

// How a drop onto the table is to be treated.
struct DropValidation {
    int operation; // 0 none, 4 generic
    int row;       // retargeted row
    bool onRow;    // drop on a row (false: above)
};
// A drop from inside the program is refused; one on a row lands above the next.
DropValidation validateDrop(int proposedRow, bool proposedOnRow, bool fromInsideApplication);

} // namespace PluginTableSource

} // namespace korvane
