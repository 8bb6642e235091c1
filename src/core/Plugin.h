#pragma once

#include "core/PluginMetadata.h"

#include <QList>
#include <QString>
#include <QStringList>
#include <QVariant>
#include <array>
#include <memory>

namespace korvane {

class ScanCache;

struct Format;
struct ArchivedObject;

// One installed plug-in of any format: where it lies, whether it is on, its group, its companion
// content and the architecture of its executable. A value: whoever makes one (the scan, a drop,
// a set document) fills in its group and content from the registries.
class Plugin {
public:
    QString name() const { return m_name; }
    void setName(const QString &name) { m_name = name; }
    QString location() const { return m_location; }
    void setLocation(const QString &location) { m_location = location; }
    bool isGlobal() const { return m_global; }
    // A plug-in that changes scope goes to the first pair of the new scope.
    void setGlobal(bool global)
    {
        if (global != m_global)
            m_pair = -1;
        m_global = global;
    }
    // The folder pair it lies in (see Format::pairs); -1: the first pair of its scope.
    int pair() const { return m_pair; }
    void setPair(int pair) { m_pair = pair; }
    // Its location code in format: its pair, else the first of its scope, active or not.
    int locationCode(const Format &format) const;
    bool isActive() const { return m_active; }
    void setActive(bool active) { m_active = active; }
    int id() const { return m_id; }
    void setId(int id) { m_id = id; }
    int groupId() const { return m_groupId; }
    bool hasContent() const { return m_hasContent; }
    int architecture() const { return m_architecture; }
    // What its files say (null before a scan has read them).
    const PluginMetadata *metadata() const { return m_metadata.get(); }
    void setMetadata(std::shared_ptr<const PluginMetadata> metadata)
    {
        m_metadata = std::move(metadata);
    }

    // Its group, as a position in the group registry (GroupRegistry::positionOf), whose name
    // there is the group's: so a renamed group renames every member. 0: no group; a position past
    // the end reads as no group.
    void setGroupId(int position) { m_groupId = position; }
    // The group at position left the list: its members have none, later positions move up.
    void groupRemoved(int position);

    // Recomputes the location from the format's folders by location code
    // (Locations::allFolderPaths) and the two flags.
    void updateLocation(const Format &format, const QStringList &folders);

    // The content registry's entry for it: its name, then its companions; empty for none.
    void setContent(const QStringList &entry);
    const QStringList &contentEntry() const { return m_content; }
    int contentCount() const;
    QString contentAt(int i) const;
    // Edits of the list here only; whoever edits stores the plug-in in the content registry.
    void addContent(const QString &entry);
    void removeContent(int i);
    void replaceContent(const QString &entry, int i);

    // Architecture of the executable of the bundle at path (see MachOHeader), and the
    // architectures it holds (see MachOArchitectures); a path that is not a bundle reads as PPC.
    // The scan hands its cache; a caller without one reads the disk.
    void detectArchitecture(const QString &path, ScanCache *cache = nullptr);
    // The old code's word ("PPC", "Intel", "Universal Binary", "Unknown"), as KorvaneCMD lists it.
    QString architectureName() const { return architectureName(m_architecture); }
    static QString architectureName(int code);

    // The architectures its binary holds, named as the binary names them ("arm64", "x86_64",
    // "i386", "ppc", "aarch64", "armhf", a VST 3 bundle's "x86_64-win"): what its files said where
    // a scan read them, else what the bundle's Mach-O header holds. Empty when neither tells.
    QStringList architectures() const;
    // The same for people, in one order whatever the file's: "arm64 + x86_64"; empty: unknown.
    QString architecturesText() const;
    static QString architecturesText(QStringList architectures);

    // What the architecture commands (Plug-Ins > PowerPC On, ...) act on. A binary counts for every
    // architecture it holds, so a universal binary of x86_64 and arm64 counts for both and for
    // UniversalBinary (two architectures or more).
    enum ArchitectureCommand {
        PowerPC = 1,         // ppc, ppc64, ppc64le
        Intel32 = 2,         // i386
        UniversalBinary = 3, // more than one architecture
        Intel64 = 4,         // x86_64
        AppleSilicon = 5,    // arm64, arm64e, and aarch64, Linux's name for the same
    };
    bool holds(int command) const;

    // The archive form: name, location, then "YES"/"NO" for global and active.
    QStringList encode() const;
    // Rebuilds a plug-in from the four decoded objects; a flag is YES only for the string "YES",
    // a missing or non-string object counts as NO. Null when name or location is not a string.
    static std::shared_ptr<Plugin> decode(const QList<std::shared_ptr<ArchivedObject>> &objects);

private:
    QString m_name;
    QString m_location;
    int m_groupId = 0;
    bool m_global = false;
    bool m_active = false;
    bool m_hasContent = false;
    QStringList m_content; // empty: no list
    int m_id = 0;
    int m_pair = -1;
    int m_architecture = 0;
    QStringList m_architectures; // what detectArchitecture found
    std::shared_ptr<const PluginMetadata> m_metadata;
};

using PluginPtr = std::shared_ptr<Plugin>;

} // namespace korvane
