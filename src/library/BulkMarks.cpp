#include "library/BulkMarks.h"

#include "core/ActivityLog.h"
#include "core/Locations.h"
#include "core/Texts.h"
#include "core/UserInterface.h"
#include "library/DistributionGuard.h"
#include "library/FormatManager.h"

#include <QSet>

namespace korvane {

QString BulkMarks::actionName(int count, bool active)
{
    if (count == 1)
        return active ? korvane::tr("Switch On 1 Plug-In") : korvane::tr("Switch Off 1 Plug-In");
    return (active ? korvane::tr("Switch On %1 Plug-Ins") : korvane::tr("Switch Off %1 Plug-Ins"))
        .arg(count);
}

QList<PluginPtr> BulkMarks::mark(FormatManager &manager, const QList<PluginPtr> &items,
                                 const View *view, bool active)
{
    // What the distribution owns is not marked: the apply could only refuse it, once per plug-in.
    const DistributionGuard guard(manager.traits(), manager.locations());
    QList<PluginPtr> changing;
    int owned = 0;
    for (const PluginPtr &item : items) {
        if (!item || item->isActive() == active)
            continue;
        if (guard.owns(manager.plugins().folderOnDisk(*item)))
            ++owned;
        else
            changing << item;
    }
    if (owned > 0)
        manager.parts().log.append(
            korvane::tr("%1 plug-ins in the distribution's folders stay as they are: its package "
                        "manager owns them\n")
                .arg(owned));
    if (changing.isEmpty())
        return {};
    int hidden = 0;
    if (view) {
        const QSet<const Plugin *> shown = [&] {
            QSet<const Plugin *> set;
            for (const PluginPtr &item : view->shown)
                set.insert(item.get());
            return set;
        }();
        for (const PluginPtr &item : std::as_const(changing))
            hidden += shown.contains(item.get()) ? 0 : 1;
    }
    const int count = int(changing.size());
    if ((view && count > view->screenful) || hidden > 0) {
        Alert alert;
        QString question =
            active ? korvane::tr("Switch on %1 plug-ins?") : korvane::tr("Switch off %1 plug-ins?");
        if (hidden > 0)
            question = (active ? korvane::tr("Switch on %1 plug-ins, %2 of them not shown?")
                               : korvane::tr("Switch off %1 plug-ins, %2 of them not shown?"))
                           .arg(count)
                           .arg(hidden);
        else
            question = question.arg(count);
        alert.messageText = question;
        alert.informativeText =
            korvane::tr("They move at the next Apply; Undo takes the marks back.");
        alert.buttons = {active ? korvane::tr("Switch On") : korvane::tr("Switch Off"),
                         korvane::tr("Cancel")};
        if (manager.ui().runAlert(alert) != AlertAnswer::Default)
            return {};
    }
    return manager.marking().markItems(changing, active, actionName(count, active));
}

QList<PluginPtr> BulkMarks::all(FormatManager &manager, const View &view, bool active)
{
    return mark(manager, view.shown, &view, active);
}

QList<PluginPtr> BulkMarks::selected(FormatManager &manager, bool active)
{
    // The selection holds only rows shown: the filter takes hidden ones out of it.
    return mark(manager, manager.table().selectedItems(), nullptr, active);
}

QList<PluginPtr> BulkMarks::group(FormatManager &manager, const View &view, const QString &group,
                                  bool active)
{
    QList<PluginPtr> members;
    for (const PluginPtr &item : manager.items())
        if (!group.isEmpty() && manager.groupName(*item) == group)
            members << item;
    return mark(manager, members, &view, active);
}

QStringList BulkMarks::groupsInUse(const FormatManager &manager)
{
    QStringList groups;
    for (const PluginPtr &item : manager.items()) {
        const QString group = manager.groupName(*item);
        if (item->groupId() > 0 && !group.isEmpty() && !groups.contains(group))
            groups << group;
    }
    groups.sort(Qt::CaseInsensitive);
    return groups;
}

} // namespace korvane
