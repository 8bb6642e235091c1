#pragma once

#include "core/Plugin.h"

#include <QString>
#include <QVariantList>

namespace korvane {

class FormatManager;

// Groups within a format: the format's groups file, assigning a plug-in its group (undoably from
// the table, or to the selection from the menu) and the names the table's group editor offers.
class GroupAssignment {
public:
    explicit GroupAssignment(FormatManager &manager);

    QString filePath() const;
    // Writes every plug-in's group; a format never scanned writes nothing.
    void save();
    // The group the file's name-and-group pairs give name; empty for none.
    static QString findGroup(const QVariantList &groups, const QString &name);

    void changeGroup(const PluginPtr &item, const QString &group); // undoable
    // The Groups menu's title for the selected plug-ins; "none" takes their group away.
    void setGroup(const QString &menuTitle);

    // The global group names, as the group editor offers them.
    int choiceCount() const;
    QString choiceAt(int index) const;

private:
    FormatManager &m_manager;
};

} // namespace korvane
