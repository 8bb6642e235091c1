#include "gui/table/PluginFilter.h"

#include <QSet>

namespace korvane {

bool PluginFilter::accepts(const Plugin &item, int formatType, const QString &group) const
{
    if (format >= 0 && formatType != format)
        return false;
    if (state != State::Any && item.isActive() != (state == State::On))
        return false;
    if (place != Place::Any && item.isGlobal() != (place == Place::System))
        return false;
    const PluginMetadata *metadata = item.metadata();
    if (unreadableOnly && (!metadata || metadata->unreadable.isEmpty()))
        return false;
    if (!architecture.isEmpty() && !item.architectures().contains(architecture))
        return false;
    if (text.isEmpty())
        return true;
    // The item's own values rather than the cells: a hidden column still filters.
    return item.name().contains(text, Qt::CaseInsensitive)
           || (metadata
               && (metadata->vendor.contains(text, Qt::CaseInsensitive)
                   || metadata->name.contains(text, Qt::CaseInsensitive)))
           || group.contains(text, Qt::CaseInsensitive);
}

QStringList PluginFilter::architecturesOf(const QList<PluginPtr> &items)
{
    QSet<QString> seen;
    for (const PluginPtr &item : items)
        for (const QString &architecture : item->architectures())
            seen.insert(architecture);
    QStringList names(seen.cbegin(), seen.cend());
    names.sort(); // the names are ASCII: "aarch64", "arm64", "i386", "ppc", "x86_64"
    return names;
}

} // namespace korvane
