// Merging a set document's entries into the list; the rest of sets is the SetController.
#include "library/FormatManager.h"

#include "core/Locations.h"
#include "core/PathChecks.h"

#include <QHash>
#include <array>
#include <vector>

namespace korvane {

QStringList FormatManager::mergeItems(const QList<PluginPtr> &saved)
{
    // A document saved while a plug-in was installed twice (system and user folder) names it
    // twice. Each saved entry goes to the copy that lies where the entry says, then to a copy in
    // the same scope (system or user), then to any copy still without an entry, in list order;
    // matching by name and position alone would follow the table's sort order and send one copy
    // onto the other's place. An entry left without a copy is missing like an unknown name.
    const QStringList folders = locations().allFolderPaths(m_traits);
    const QList<PluginPtr> &plugins = m_list.items();

    // The installed copies of each name in list order, where each lies on disk (the folder its
    // record was scanned in) and whether that is a system-wide folder.
    QHash<QString, QList<qsizetype>> copies;
    copies.reserve(plugins.size());
    std::vector<QString> where(size_t(plugins.size()));
    std::vector<bool> global(size_t(plugins.size()));
    for (qsizetype i = 0; i < plugins.size(); ++i) {
        const Plugin &item = *plugins.at(i);
        copies[item.name()].append(i);
        const QString folder = m_list.folderOnDisk(item);
        where[size_t(i)] = folder;
        const int loc = int(folders.indexOf(folder));
        global[size_t(i)] = loc >= 0 ? m_traits.isSystem(loc) : item.isGlobal();
    }

    std::vector<qsizetype> match(size_t(saved.size()), -1);
    std::vector<bool> taken(size_t(plugins.size()), false);
    const auto pass = [&](const auto &fits) {
        for (qsizetype s = 0; s < saved.size(); ++s) {
            if (match[size_t(s)] >= 0)
                continue;
            const Plugin &entry = *saved.at(s);
            // A name that leaves its folder never names an installed plug-in.
            if (!isContainedName(entry.name()))
                continue;
            const auto candidates = copies.constFind(entry.name());
            if (candidates == copies.cend())
                continue;
            for (const qsizetype index : *candidates) {
                if (!taken[size_t(index)] && fits(entry, index)) {
                    match[size_t(s)] = index;
                    taken[size_t(index)] = true;
                    break;
                }
            }
        }
    };
    pass([&](const Plugin &entry, qsizetype index) {
        return where[size_t(index)] == entry.location();
    });
    pass([&](const Plugin &entry, qsizetype index) {
        return global[size_t(index)] == entry.isGlobal();
    });
    pass([](const Plugin &, qsizetype) { return true; });

    QStringList missing;
    QList<PluginPtr> changed;
    for (qsizetype s = 0; s < saved.size(); ++s) {
        const Plugin &entry = *saved.at(s);
        if (match[size_t(s)] < 0) {
            missing << entry.name();
            continue;
        }
        const PluginPtr item = plugins.at(match[size_t(s)]);
        item->setName(entry.name());
        item->setLocation(entry.location());
        item->setGlobal(entry.isGlobal());
        item->setActive(entry.isActive());
        // The entry's folder finds its pair; one no pair has keeps the copy's pair in that scope.
        const int loc = int(folders.indexOf(entry.location()));
        if (loc >= 0 && m_traits.isSystem(loc) == entry.isGlobal())
            item->setPair(loc / 2);
        item->updateLocation(m_traits, folders);
        updateRecord(item);
        changed << item;
    }
    announceChanged(changed);
    return missing;
}

} // namespace korvane
