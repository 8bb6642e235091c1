#pragma once

#include "core/Plugin.h"

#include <QList>
#include <QPair>
#include <QString>
#include <QStringList>

namespace korvane {

class PluginList;

// The plug-ins of one format installed more than once under the same name, with what tells the
// copies apart: where each lies, its version and whether it is on. Both programs show it (the
// window's duplicates dialog, KorvaneCMD's duplicates) and the window selects the copies from it.
class DuplicateReport {
public:
    struct Copy {
        PluginPtr item;
        QString folder;      // the full folder it lies in on disk
        QString version;     // empty where its files name none
        bool active = false; // as it lies: in an active folder
    };
    struct Name {
        QString name;
        QList<Copy> copies; // in list order, two at least
    };

    // Every name held by more than one item, in the order of its first item. folders are the
    // format's folders by location code (Locations::allFolderPaths), which tell a copy's state
    // where it lies: a mark not yet applied changes nothing in the report.
    static QList<Name> find(const PluginList &list, const QStringList &folders);
    // The same names with their counts alone, without looking at any file.
    static QList<QPair<QString, int>> counts(const QList<PluginPtr> &items);
    // Every copy's item, for selecting them in the table.
    static QList<PluginPtr> items(const QList<Name> &names);
    // What the plug-in's files name as its version: the metadata the scan read, else the
    // bundle's Info.plist ("1.2 (120)" where the short version and the build differ).
    static QString version(const PluginList &list, const Plugin &item);
};

} // namespace korvane
