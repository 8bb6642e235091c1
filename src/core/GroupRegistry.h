#pragma once

#include <QObject>
#include <QString>
#include <QStringList>
#include <functional>

namespace korvane {

class DataFiles;
class Locations;
class UserInterface;

// The groups a person made, kept in groups.plist: "no group" first, then every group by name. A
// plug-in's group is a position in this list, so renaming a group renames every member; the
// group editor's operations and the titles of the group submenu live here too.
class GroupRegistry : public QObject {
    Q_OBJECT
public:
    GroupRegistry(const Locations &locations, UserInterface &ui, DataFiles &dataFiles);

    void load();
    void save(); // the whole list to groups.plist, at quit

    // "No group" first, then every group by name.
    const QStringList &names() const { return m_names; }
    // The position of the group of that name; an unknown name is kept under the largest
    // positive int, a position past every group, so it reads as no group.
    int positionOf(const QString &name) const;
    // The group's name at position; empty for no group and for a position past the end.
    QString nameAt(int position) const;

    // The named groups, as the group editor lists them: the i-th from 0, "no group" aside.
    int groupCount() const;
    QString groupAt(int i) const;
    void setGroupAt(int i, const QString &name);
    void addGroup();
    // The editor table's selected row, -1 for none; asks first, naming how many plug-ins are in
    // the group. Its members are left without a group; every other assignment stays.
    void removeGroup(int selectedRow);
    // Who counts the plug-ins in the group at a position (the controller, over its managers).
    void setMemberCounter(std::function<int(int position)> count)
    {
        m_memberCount = std::move(count);
    }
    void showGroups();
    // The group submenu, as the titles of the items added behind the fixed "none" item.
    void updateGroupMenu();
    QStringList groupMenuTitles() const { return m_menuTitles; }

signals:
    void groupsChanged();
    void groupRemoved(int position); // members renumber before groupsChanged
    void groupMenuChanged();
    void groupEditorShown();

private:
    QString filePath() const;

    const Locations &m_locations;
    UserInterface &m_ui;
    DataFiles &m_dataFiles;
    QStringList m_names;
    QStringList m_menuTitles;
    std::function<int(int)> m_memberCount;
};

} // namespace korvane
