#include "library/GroupAssignment.h"

#include "codec/PropertyList.h"
#include "core/AppServices.h"
#include "core/Locations.h"
#include "core/Texts.h"
#include "core/UndoStack.h"
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
        pairs << item->name() << item->group();
    AppServices &services = m_manager.services();
    services.createSupportFolder(); // a fresh home has none yet
    services.writeDataFile(filePath(), pairs, [](const QString &file) {
        return PropertyList::readArray(file).has_value();
    });
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
    AppServices &services = m_manager.services();
    UndoStack *undo = services.undoStack();

    const QString previous = item->group();
    QPointer<FormatManager> self(&m_manager);
    undo->registerUndo(&m_manager, [self, item, previous] {
        if (self)
            self->groups().changeGroup(item, previous);
    });
    item->setGroup(group);
    if (!undo->isUndoing())
        undo->setActionName(korvane::tr("%1 %2 for \"%3\"")
                                .arg(korvane::tr("setGroup"), item->group(), item->name()));
    if (undo->isUndoing() || undo->isRedoing())
        m_manager.announceChanged({item});
    services.updateUndoTitle();
    save();
}

void GroupAssignment::setGroup(const QString &menuTitle)
{
    const QString group =
        menuTitle == QLatin1String("none") ? QString(QLatin1String("")) : menuTitle;
    const QList<PluginPtr> selected = m_manager.table().selectedItems();
    for (const PluginPtr &item : selected)
        item->setGroup(group);
    m_manager.announceChanged(selected);
    save();
}

int GroupAssignment::choiceCount() const
{
    return int(m_manager.services().groups().size());
}

QString GroupAssignment::choiceAt(int index) const
{
    return m_manager.services().groups().value(index);
}

} // namespace korvane
