#pragma once

#include <QList>
#include <QString>
#include <QStringList>
#include <optional>

namespace korvane {

class DataFiles;
class FormatTable;
class Locations;
class Plugin;
class ScanCache;

// The companion content of plug-ins, kept in content.plist: each entry is a plug-in's name
// followed by the paths of the files that move with it (presets, libraries). The scan leaves
// those paths out of the plug-ins it lists.
class ContentRegistry {
public:
    ContentRegistry(const Locations &locations, const FormatTable &formats, DataFiles &dataFiles);

    // The user's file, else the system-wide one (only read; the first save copies it to the
    // user), else an empty registry written for the user.
    void load();
    std::optional<QStringList> contentFor(const QString &key) const;
    // Replaces the entry of the same name or adds it, and writes the file.
    void store(const QStringList &entry);
    // Gives a plug-in made by a scan, a drop or a set document the content listed for its name.
    void fill(Plugin &item) const;
    // A plug-in's content as the info panel or a move of its companions left it.
    void store(const Plugin &item);
    const QList<QStringList> &entries() const { return m_entries; }

    // The scan paths of a format's folder without the companions some entry lists.
    QStringList withoutContentPaths(int type, const QStringList &scanPaths) const;
    // The plug-ins among a folder's listing: what lies inside a package is left out, and so are
    // the companions.
    QStringList relevantPaths(int type, int loc, const QStringList &scanPaths,
                              ScanCache *cache = nullptr) const;
    // Where name lies in the format's folder loc; empty when out of range or name leaves it.
    QString fullPath(const QString &name, int type, int loc) const;

private:
    void write();
    QString userFile() const;

    const Locations &m_locations;
    const FormatTable &m_formats;
    DataFiles &m_dataFiles;
    QList<QStringList> m_entries;
};

} // namespace korvane
