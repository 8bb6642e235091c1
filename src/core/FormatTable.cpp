#include "core/FormatTable.h"

namespace korvane {

std::optional<int> FormatTable::typeOfName(const QString &name) const
{
    for (const Format &format : m_rows)
        if (name.compare(format.prefix, Qt::CaseInsensitive) == 0
            || name.compare(format.commandLineName(), Qt::CaseInsensitive) == 0)
            return format.type;
    return std::nullopt;
}

int FormatTable::typeOfTabIdentifier(const QString &identifier) const
{
    for (const Format &format : m_rows)
        if (identifier == format.tabIdentifier())
            return format.type;
    return -1;
}

FormatTable FormatTable::with(Format format) const
{
    FormatTable table = *this;
    format.type = count();
    table.m_rows.append(std::move(format));
    return table;
}

} // namespace korvane
