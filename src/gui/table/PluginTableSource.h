#pragma once

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

// A column's value of one plug-in, by column identifier ("AUName", "AULocation", "AUActive",
// "AUGlobal", "AUGroup", "AUType"); invalid for another.
QVariant valueOf(const Plugin &item, const QString &column);

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
