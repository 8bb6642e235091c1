#include "library/GroupAssignment.h"

#include "codec/PropertyList.h"
#include "core/DataFiles.h"
#include "core/GroupRegistry.h"
#include "core/Locations.h"
#include "core/Texts.h"
#include "core/UndoHistory.h"
#include "library/FormatManager.h"

#include <QPointer>

namespace korvane {

GroupAssignment::GroupAssignment(FormatManager &manager) : m_manager(manager) {}

QString GroupAssignment::filePath() const
{
    return m_manager.locations().dataFilePath(m_manager.traits().groupsFile);
}

void GroupAssignment::save()
{
    // A format that was never scanned (switched off) holds no items: writing its list would wipe
    // the groups its plug-ins had.
    if (!m_manager.hasScanned())
        return;
    QVariantList pairs;
    for (const PluginPtr &item : m_manager.items())
        pairs << item->name() << m_manager.groupName(*item);
    DataFiles &dataFiles = m_manager.parts().dataFiles;
    dataFiles.createSupportFolder(); // a fresh home has none yet
    dataFiles.write(filePath(), pairs,
                    [](const QString &file) { return PropertyList::readArray(file).has_value(); });
}

QString GroupAssignment::findGroup(const QVariantList &groups, const QString &name)
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

void GroupAssignment::changeGroup(const PluginPtr &item, const QString &group)
{
    if (!item)
        return;
    UndoHistory &history = m_manager.parts().undo;
    UndoStack *undo = history.stack();

    const QString previous = m_manager.groupName(*item);
    QPointer<FormatManager> self(&m_manager);
    undo->registerUndo(&m_manager, [self, item, previous] {
        if (self)
            self->groups().changeGroup(item, previous);
    });
    item->setGroupId(m_manager.parts().groups.positionOf(group));
    if (!undo->isUndoing())
        undo->setActionName(
            korvane::tr("%1 %2 for \"%3\"")
                .arg(korvane::tr("setGroup"), m_manager.groupName(*item), item->name()));
    if (undo->isUndoing() || undo->isRedoing())
        m_manager.announceChanged({item});
    history.updateUndoTitle();
    save();
}

void GroupAssignment::setGroup(const QString &menuTitle)
{
    const QString group =
        menuTitle == QLatin1String("none") ? QString(QLatin1String("")) : menuTitle;
    const int position = m_manager.parts().groups.positionOf(group);
    const QList<PluginPtr> selected = m_manager.table().selectedItems();
    for (const PluginPtr &item : selected)
        item->setGroupId(position);
    m_manager.announceChanged(selected);
    save();
}

int GroupAssignment::choiceCount() const
{
    return int(m_manager.parts().groups.names().size());
}

QString GroupAssignment::choiceAt(int index) const
{
    return m_manager.parts().groups.names().value(index);
}

} // namespace korvane
