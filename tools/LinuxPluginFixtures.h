#pragma once

#include <QByteArray>
#include <QString>
#include <QStringList>

namespace korvane {

// Linux plug-in libraries on disk for tests and benchmarks: Debian's real plug-ins copied from
// /usr/lib into a temporary root (read only from /usr/lib, never written there), and the formats
// Debian ships none of (VST 3, CLAP) shaped from their published layouts around a real ELF object.
class LinuxPluginFixtures {
public:
    // Whether the system holds a path under /usr/lib (tests skip when a package is missing).
    static bool systemHas(const QString &systemPath);

    // Copies a file or folder from /usr/lib to root + the same path, recursively, links kept as
    // links. Refuses a source outside /usr/lib and a target inside /usr. Returns the copy's path,
    // empty on failure.
    static QString copyFromSystem(const QString &systemPath, const QString &root);
    // Copies the entries of a system folder (all, or those matching the name filters) the same
    // way; returns the copies' paths.
    static QStringList copySystemFolder(const QString &systemFolder, const QString &root,
                                        const QStringList &nameFilters = {});

    // folder/Name.vst3 with Contents/<arch>/Name.so (a copy of elfSource) for each architecture
    // folder, and Contents/Resources/moduleinfo.json holding moduleInfo. Returns the bundle.
    static QString makeVst3Bundle(const QString &folder, const QString &name,
                                  const QString &elfSource, const QByteArray &moduleInfo,
                                  const QStringList &architectures = {
                                      QStringLiteral("x86_64-linux")});
    // A moduleinfo.json as the SDK writes it, with comments and trailing commas: one processor
    // class (cid) and its controller, and a compatibility entry naming a VST 2 ID (four
    // characters) as the class it replaces.
    static QByteArray moduleInfo(const QString &name, const QString &vendor, const QString &cid,
                                 const QByteArray &vst2Id = "Gain");
    // The ID the SDK gives a VST 2 plug-in in VST 3 form, as 32 hexadecimal digits.
    static QString vst2Cid(const QByteArray &fourCharacters, const QByteArray &name);
    // folder/name.clap: a copy of elfSource (a .clap is a shared object exporting clap_entry).
    static QString makeClap(const QString &folder, const QString &name, const QString &elfSource);
};

} // namespace korvane
