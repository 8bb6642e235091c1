#pragma once

#include <QByteArray>
#include <QString>
#include <QVariantMap>

namespace korvane {

// Executable headers the architecture test tells apart.
namespace MachO {
QByteArray ppc();            // FE ED FA CE 00 00 00 12
QByteArray intel();          // CE FA ED FE 07 00 00 00
QByteArray universal2();     // CA FE BA BE 00 00 00 02, then slices ppc and i386
QByteArray universal3();     // CA FE BA BE 00 00 00 03, then slices ppc, i386 and x86_64
QByteArray x86_64();         // CF FA ED FE 07 00 00 01
QByteArray arm64();          // CF FA ED FE 0C 00 00 01
QByteArray appleUniversal(); // CA FE BA BE 00 00 00 02, then slices x86_64 and arm64
} // namespace MachO

// Writes plug-ins as the four formats lay them out: bundles with an Info.plist (XML or binary)
// and an executable that starts with a chosen header, and plain files with a Finder type.
class PluginLibraryBuilder {
public:
    enum PlistFormat { Xml, Binary };

    // Creates folder/name as a bundle: Contents/Info.plist with CFBundleExecutable (unless
    // executable is empty), CFBundleName, CFBundleVersion and the extra keys; and
    // Contents/MacOS/<executable> holding header followed by some padding. Parents are created.
    // Returns the bundle's path.
    static QString makeBundle(const QString &folder, const QString &name, const QByteArray &header,
                              const QVariantMap &extraInfo = {}, PlistFormat format = Xml,
                              const QString &executable = QStringLiteral("Plugin"));
    // A plain file holding data, with a Finder type when typeCode is four characters.
    static QString makeFile(const QString &folder, const QString &name,
                            const QString &typeCode = {},
                            const QByteArray &data = QByteArrayLiteral("plug-in"));
    // A folder (and its parents).
    static QString makeFolder(const QString &path);
    // An XML property list, written straight to the disk (parents are not created).
    static bool writePlist(const QString &path, const QVariant &root);

    // Format shortcuts, in the folder given. A name without its extension (".component", ".vst",
    // ".rtas" unless it ends in ".dpm") gets it added; MAS names are used as they are.
    static QString makeAudioUnit(const QString &folder, const QString &name,
                                 const QByteArray &header, PlistFormat format = Xml);
    static QString makeVST(const QString &folder, const QString &name, const QByteArray &header,
                           PlistFormat format = Xml);
    static QString makeRTAS(const QString &folder, const QString &name, const QByteArray &header,
                            PlistFormat format = Xml); // ".dpm" names get CFBundlePackageType TDMw
    static QString makeMAS(const QString &folder, const QString &name, const QByteArray &header,
                           PlistFormat format = Xml); // with a MotuPluginTypeUUID
};

} // namespace korvane
