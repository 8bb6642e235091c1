#include "library/ProductFormats.h"

#include "core/Locations.h"

#include "library/FormatManager.h"
#include "os/ReadOnlyFileOperations.h"

#include <QHash>
#include <QSet>
#include <QStringBuilder>
#include <algorithm>
#include <map>
#include <memory>

namespace korvane {

namespace {

// One planner per format, over file operations that cannot change a thing.
struct Planner {
    std::unique_ptr<ReadOnlyFileOperations> files;
    std::unique_ptr<MovePlanner> planner;
};

} // namespace

int ProductFormats::Preview::switching() const
{
    int count = 0;
    for (const Change &change : changes)
        count += change.switches() ? 1 : 0;
    return count;
}

int ProductFormats::Preview::refused() const
{
    return int(changes.size()) - switching();
}

QStringList ProductFormats::formatsOf(const QList<Product> &products)
{
    QStringList formats;
    for (const Product &product : products)
        if (product.inSeveralFormats())
            for (const QString &format : product.formats())
                if (!formats.contains(format))
                    formats << format;
    return formats;
}

ProductFormats::Preview ProductFormats::preview(const QList<Product> &products,
                                                const QStringList &kept)
{
    Preview result;
    std::map<FormatManager *, Planner> planners;
    for (const Product &product : products) {
        if (!product.inSeveralFormats())
            continue;
        const QStringList formats = product.formats();
        const bool keepsOne = std::any_of(formats.cbegin(), formats.cend(),
                                          [&](const QString &f) { return kept.contains(f); });
        if (!keepsOne)
            continue;
        for (const ProductSource &member : product.members) {
            if (kept.contains(member.format) || !member.manager || !member.item->isActive())
                continue;
            FormatManager &manager = *member.manager;
            const qsizetype record = manager.plugins().recordIndexOf(*member.item);
            if (record < 0)
                continue;
            Planner &planner = planners[&manager];
            if (!planner.planner) {
                planner.files = std::make_unique<ReadOnlyFileOperations>(manager.files());
                planner.planner = std::make_unique<MovePlanner>(
                    *planner.files, manager.traits(), manager.plugins(), manager.locations());
                result.otherPending += manager.pendingCount();
            }
            // The mark not made yet: a copy of the plug-in as it would be once marked off.
            auto off = std::make_shared<Plugin>(*member.item);
            off->setActive(false);
            off->updateLocation(manager.traits(),
                                manager.locations().allFolderPaths(manager.traits()));
            const PluginRecord &found = manager.plugins().records().at(record);
            Change change{&manager, member.item, product.name, member.format, {}, false};
            change.move.record = int(record);
            change.move.item = off;
            change.move.name = found.name();
            change.move.from = found.folder() % QLatin1Char('/') % found.name();
            change.move.to = off->location() % QLatin1Char('/') % off->name();
            change.move.enabled = false;
            if (change.move.from == change.move.to)
                change.takesBackMark = true;
            else
                planner.planner->judge(change.move);
            if (change.move.moves())
                planner.planner->moved(change.move);
            result.changes << change;
        }
    }
    return result;
}

QStringList ProductFormats::apply(const Preview &preview, const QString &actionName)
{
    QList<FormatManager *> order;
    QHash<FormatManager *, QList<PluginPtr>> items;
    for (const Change &change : preview.changes) {
        if (!change.switches())
            continue;
        if (!items.contains(change.manager))
            order << change.manager;
        items[change.manager] << change.item;
    }
    QStringList applied;
    for (FormatManager *manager : order) {
        manager->marking().markItems(items.value(manager), false, actionName);
        if (manager->pendingCount() > 0)
            manager->apply();
        applied << manager->traits().tabLabel;
    }
    return applied;
}

} // namespace korvane
