#include "gui/table/PluginTableSource.h"

#include "library/FormatManager.h"

namespace korvane::PluginTableSource {

QVariant valueOf(const Plugin &item, const QString &column)
{
    if (column == QLatin1String("AUActive"))
        return item.isActive();
    if (column == QLatin1String("AUGlobal"))
        return item.isGlobal();
    if (column == QLatin1String("AUGroup"))
        return item.group();
    if (column == QLatin1String("AUType"))
        return item.architectureName();
    if (column == QLatin1String("AUName"))
        return item.name();
    if (column == QLatin1String("AULocation"))
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
