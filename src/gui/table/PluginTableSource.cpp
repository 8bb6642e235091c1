#include "gui/table/PluginTableSource.h"

#include "library/FormatManager.h"
#include "library/TableColumns.h"

namespace korvane::PluginTableSource {

QVariant valueOf(const Plugin &item, const QString &column)
{
    if (column == TableColumn::Active)
        return item.isActive();
    if (column == TableColumn::Global)
        return item.isGlobal();
    if (column == TableColumn::Group)
        return item.group();
    if (column == TableColumn::Architecture)
        return item.architectureName();
    if (column == TableColumn::Name)
        return item.name();
    if (column == TableColumn::Location)
        return item.location();
    return QVariant();
}

QStringList pathsOfRows(const FormatManager &manager, const QList<int> &rows)
{
    QStringList paths;
    for (int row : rows) {
        if (const PluginPtr item = manager.itemAt(row))
            paths << manager.plugins().pathOnDisk(*item);
    }
    return paths;
}

DropValidation validateDrop(int proposedRow, bool proposedOnRow, bool fromInsideApplication)
{
    DropValidation validation{fromInsideApplication ? 0 : 4, proposedRow, proposedOnRow};
    if (proposedOnRow) {
        validation.row = proposedRow + 1;
        validation.onRow = false;
    }
    return validation;
}

} // namespace korvane::PluginTableSource
