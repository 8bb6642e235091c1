#include "gui/table/PluginTableSource.h"

#include "core/Texts.h"
#include "library/FormatManager.h"
#include "library/TableColumns.h"
#include "os/PathBytes.h"

#include <optional>

namespace korvane::PluginTableSource {

namespace {

// Whether the plug-in lies in the first folder pair of the system scope (true) or the user's
// (false), which the Location column names by the scope alone; nothing for any other pair.
std::optional<bool> firstPairScope(const Format &format, const Plugin &item)
{
    const int pair = item.locationCode(format) / 2;
    if (pair == format.firstPair(true))
        return true;
    if (pair == format.firstPair(false))
        return false;
    return std::nullopt;
}

// The active folder of the pair the plug-in lies in, as written.
QString pairFolder(const Format &format, const Plugin &item)
{
    const int pair = item.locationCode(format) / 2;
    return pair >= 0 && pair < format.pairs.size() ? format.pairs.at(pair).active : item.location();
}

} // namespace

QString locationOf(const Format &format, const Plugin &item)
{
    if (const std::optional<bool> system = firstPairScope(format, item))
        return *system ? QStringLiteral("System") : QStringLiteral("User");
    return pairFolder(format, item);
}

QString shownLocationOf(const Format &format, const Plugin &item)
{
    if (const std::optional<bool> system = firstPairScope(format, item))
        return *system ? korvane::tr("System") : korvane::tr("User");
    return displayName(pairFolder(format, item));
}

QVariant formatFreeValueOf(const Plugin &item, const QString &column, const QString &group)
{
    const PluginMetadata *metadata = item.metadata();
    if (column == TableColumn::Active)
        return item.isActive();
    if (column == TableColumn::Global)
        return item.isGlobal();
    if (column == TableColumn::Group)
        return group;
    if (column == TableColumn::Architecture)
        return item.architecturesText();
    if (column == TableColumn::Vendor)
        return metadata ? metadata->vendor : QString();
    if (column == TableColumn::Version)
        return metadata ? metadata->version : QString();
    if (column == TableColumn::Package)
        return metadata ? metadata->package : QString();
    return QVariant();
}

QVariant valueOf(const FormatManager &manager, const Plugin &item, const QString &column)
{
    const Format &format = manager.traits();
    if (column == TableColumn::Name)
        return item.name();
    if (column == TableColumn::Location)
        return locationOf(format, item);
    if (column == TableColumn::Format)
        return format.tabLabel;
    return formatFreeValueOf(item, column, manager.groupName(item));
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
