#include "library/DuplicateReport.h"

#include "codec/Bundle.h"
#include "core/PluginList.h"
#include "core/PluginMetadata.h"

#include <QHash>

namespace korvane {

QList<QPair<QString, int>> DuplicateReport::counts(const QList<PluginPtr> &items)
{
    // One pass, each item looked at once: names in order of their first item, with their counts
    // (places holds a name's place in that list, plus one). A large list costs little more per
    // item than a small one.
    QHash<QString, qsizetype> places;
    places.reserve(items.size());
    QList<QPair<QString, int>> names;
    for (const PluginPtr &item : items) {
        QString name = item->name();
        qsizetype &place = places[name];
        if (place == 0) {
            names.append({std::move(name), 0});
            place = names.size();
        }
        ++names[place - 1].second;
    }
    names.removeIf([](const QPair<QString, int> &entry) { return entry.second < 2; });
    return names;
}

QList<DuplicateReport::Name> DuplicateReport::find(const PluginList &list,
                                                   const QStringList &folders)
{
    const QList<PluginPtr> &items = list.items();
    QHash<QString, qsizetype> places;
    places.reserve(items.size());
    QList<QList<PluginPtr>> groups;
    for (const PluginPtr &item : items) {
        qsizetype &place = places[item->name()];
        if (place == 0) {
            groups.append(QList<PluginPtr>());
            place = groups.size();
        }
        groups[place - 1].append(item);
    }
    // Only the copies of a name held twice are looked at on disk (their versions).
    QList<Name> names;
    for (const QList<PluginPtr> &group : std::as_const(groups)) {
        if (group.size() < 2)
            continue;
        Name name{group.first()->name(), {}};
        for (const PluginPtr &item : group) {
            const QString folder = list.folderOnDisk(*item);
            // An even location code is an active folder; a folder the format does not list (a
            // host's variable added it) shows the item's own state.
            const qsizetype loc = folders.indexOf(folder);
            const bool active = loc >= 0 ? loc % 2 == 0 : item->isActive();
            name.copies.append({item, folder, version(list, *item), active});
        }
        names.append(std::move(name));
    }
    return names;
}

QList<PluginPtr> DuplicateReport::items(const QList<Name> &names)
{
    QList<PluginPtr> items;
    for (const Name &name : names)
        for (const Copy &copy : name.copies)
            items << copy.item;
    return items;
}

QString DuplicateReport::version(const PluginList &list, const Plugin &item)
{
    if (item.metadata() && !item.metadata()->version.isEmpty())
        return item.metadata()->version.left(64);
    // Outside data: a version is a short text or none.
    const QString path = list.pathOnDisk(item);
    const QString shortVersion =
        Bundle::infoValue(path, QStringLiteral("CFBundleShortVersionString")).toString().left(32);
    const QString build =
        Bundle::infoValue(path, QStringLiteral("CFBundleVersion")).toString().left(32);
    if (shortVersion.isEmpty() || build.isEmpty() || shortVersion == build)
        return shortVersion.isEmpty() ? build : shortVersion;
    return QStringLiteral("%1 (%2)").arg(shortVersion, build);
}

} // namespace korvane
