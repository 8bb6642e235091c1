#include "core/GroupRegistry.h"

#include "codec/PropertyList.h"
#include "core/DataFiles.h"
#include "core/Locations.h"
#include "core/Texts.h"
#include "core/UserInterface.h"

#include <climits>

namespace korvane {

GroupRegistry::GroupRegistry(const Locations &locations, UserInterface &ui, DataFiles &dataFiles)
    : m_locations(locations), m_ui(ui), m_dataFiles(dataFiles)
{
    load();
}

QString GroupRegistry::filePath() const
{
    return m_locations.dataFilePath(QStringLiteral("groups.plist"));
}

void GroupRegistry::load()
{
    // A file holding anything but strings reads as absent, like an unreadable one.
    const std::optional<QStringList> stored = PropertyList::readStringArray(filePath());
    if (!stored || stored->isEmpty()) {
        m_names = QStringList{QString()};
    } else {
        m_names = *stored;
        m_names[0] = QString();
    }
    emit groupsChanged();
}

void GroupRegistry::save()
{
    QVariantList root;
    root.reserve(m_names.size());
    for (const QString &name : std::as_const(m_names))
        root.append(name);
    m_dataFiles.createSupportFolder();
    m_dataFiles.write(filePath(), root, [](const QString &path) {
        return PropertyList::readStringArray(path).has_value();
    });
}

int GroupRegistry::positionOf(const QString &name) const
{
    const qsizetype index = m_names.indexOf(name);
    return index < 0 ? INT_MAX : int(index);
}

QString GroupRegistry::nameAt(int position) const
{
    return position < 0 ? QString() : m_names.value(position);
}

int GroupRegistry::groupCount() const
{
    return m_names.isEmpty() ? 0 : int(m_names.size() - 1);
}

QString GroupRegistry::groupAt(int i) const
{
    return m_names.value(qsizetype(i) + 1);
}

void GroupRegistry::setGroupAt(int i, const QString &name)
{
    const qsizetype position = qsizetype(i) + 1;
    if (position < 0)
        return;
    if (position < m_names.size())
        m_names[position] = name;
    else
        m_names.append(name);
    emit groupsChanged();
    updateGroupMenu();
}

void GroupRegistry::addGroup()
{
    m_names.append(korvane::tr("New Group"));
    emit groupsChanged();
    updateGroupMenu();
}

void GroupRegistry::removeGroup(int selectedRow)
{
    // Without a selection there is nothing to remove: taking out the empty entry would shift
    // every group and so every plug-in's group by one.
    const qsizetype position = qsizetype(selectedRow) + 1;
    if (position < 1 || position >= m_names.size())
        return;
    const int members = m_memberCount ? m_memberCount(int(position)) : 0;
    Alert alert;
    alert.messageText = korvane::tr("Delete the group “%1”?").arg(m_names.at(position));
    alert.informativeText =
        members == 1 ? korvane::tr("1 plug-in is in it and will have no group.")
                     : korvane::tr("%1 plug-ins are in it and will have no group.").arg(members);
    alert.buttons = {korvane::tr("Delete"), korvane::tr("Cancel")};
    if (members > 0 && m_ui.runAlert(alert) != AlertAnswer::Default)
        return;
    m_names.removeAt(position);
    // A group is a position in the list: without this its members took the next group's.
    emit groupRemoved(int(position));
    emit groupsChanged();
    updateGroupMenu();
}

void GroupRegistry::showGroups()
{
    emit groupEditorShown();
}

void GroupRegistry::updateGroupMenu()
{
    m_menuTitles = m_names.mid(1);
    emit groupMenuChanged();
}

} // namespace korvane
