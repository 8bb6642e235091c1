// Groups within a format: the per-format groups file, assigning groups (undoable from the table)
// and the combo box that offers the global group names.
#include "library/FormatManager.h"

#include "codec/PropertyList.h"
#include "core/AppServices.h"
#include "core/Locations.h"
#include "core/Texts.h"

#include <QPointer>

namespace korvane {

QString FormatManager::groupsFilePath() const
{
    return locations().dataFilePath(m_traits.groupsFile);
}

void FormatManager::saveGroups()
{
    // A format that was never scanned (switched off) holds no items: writing its list would wipe
    // the groups its plug-ins had.
    if (!m_scanned)
        return;
    QVariantList pairs;
    for (const PluginPtr &item : m_list.items())
        pairs << item->name() << item->group();
    services().createSupportFolder(); // a fresh home has none yet
    services().writeDataFile(groupsFilePath(), pairs, [](const QString &file) {
        return PropertyList::readArray(file).has_value();
    });
}

QString FormatManager::findGroup(const QVariantList &groups, const QString &name)
{
    // The file is read from disk: anything but a string pair is passed over, never trusted.
    for (qsizetype i = 0; i + 1 < groups.size(); i += 2) {
        const QVariant &key = groups.at(i);
        if (key.typeId() != QMetaType::QString || key.toString() != name)
            continue;
        const QVariant &group = groups.at(i + 1);
        return group.typeId() == QMetaType::QString ? group.toString() : QString(QLatin1String(""));
    }
    return QStringLiteral("");
}

void FormatManager::changeGroup(const PluginPtr &item, const QString &group)
{
    if (!item)
        return;
    UndoStack *undo = services().undoStack();

    const QString previous = item->group();
    QPointer<FormatManager> self(this);
    undo->registerUndo(this, [self, item, previous] {
        if (self)
            self->changeGroup(item, previous);
    });
    item->setGroup(group);
    if (!undo->isUndoing())
        undo->setActionName(fillFormat(korvane::tr("%@ %@ for \"%@\""),
                                       {korvane::tr("setGroup"), item->group(), item->name()}));
    if (undo->isUndoing() || undo->isRedoing())
        announceChanged({item});
    services().updateUndoTitle();
    saveGroups();
}

void FormatManager::setGroup(const QString &menuTitle)
{
    const QString group =
        menuTitle == QLatin1String("none") ? QString(QLatin1String("")) : menuTitle;
    const QList<PluginPtr> selected = selectedItems();
    for (const PluginPtr &item : selected)
        item->setGroup(group);
    announceChanged(selected);
    saveGroups();
}

int FormatManager::groupChoiceCount() const
{
    return int(services().groups().size());
}

QString FormatManager::groupChoiceAt(int index) const
{
    return services().groups().value(index);
}

} // namespace korvane
