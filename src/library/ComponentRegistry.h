#pragma once

#include <QByteArray>
#include <QString>
#include <QStringList>
#include <QtGlobal>
#include <optional>

namespace korvane {

class FileOperations;

struct ComponentDescription {
    quint32 componentType = 0;
    quint32 componentSubType = 0;
    quint32 componentManufacturer = 0;
    quint32 componentFlags = 0;
    quint32 componentFlagsMask = 0;
};

// A registered component: one AudioComponents entry of a .component bundle in an active
// Components folder.
struct Component {
    QString bundlePath;
    int index = 0; // position in the bundle's AudioComponents array
    bool operator==(const Component &) const = default;
};

// The Audio Units a host would find: the AudioComponents entries of the bundles in the active
// Components folders, read from their Info.plists without loading any code.
class ComponentRegistry {
public:
    // The next registered component after `after` (from the start when absent) matching the
    // description, zero fields matching anything; the bundles are those in the active folders,
    // system-wide first.
    static std::optional<Component> findNext(const FileOperations &files,
                                             const QStringList &activeFolders,
                                             const std::optional<Component> &after,
                                             const ComponentDescription &description);
    // Fills the description and the length-prefixed name; 0 on success.
    static int info(const Component &component, ComponentDescription *description,
                    QByteArray *pascalName);
    static quint32 fourCharCode(const QString &text); // "aumu" -> 0x61756D75; other lengths: 0
    static QString fourCharString(quint32 code);
};

} // namespace korvane
