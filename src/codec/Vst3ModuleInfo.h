#pragma once

#include "codec/Json5.h"

#include <QByteArrayView>
#include <QList>
#include <QString>
#include <QStringList>
#include <optional>

namespace korvane {

// A VST 3 bundle's Contents/Resources/moduleinfo.json, read without loading the module.
struct Vst3ModuleInfo {
    struct Class {
        QString cid; // 32 hexadecimal digits, as written
        QString name;
        QString category; // "Audio Module Class", "Component Controller Class", ...
        QStringList subCategories;
        QString vendor;
        QString version;
        QString sdkVersion;
    };
    // A class ID that a newer class replaces.
    struct OldId {
        QString cid;
        // Set when the ID has the form the SDK gives a VST 2 plug-in ("VST" or "VSE", the
        // plug-in's four-character ID, the start of its name in lower case).
        std::optional<quint32> vst2Id;
        QString vst2IdText() const; // the four characters, or 0x12345678 when not printable
    };
    struct Compatibility {
        QString newCid;
        QList<OldId> old;
    };

    QString name;
    QString version;
    QString vendor;
    QString url;
    QString email;
    QList<Class> classes;
    QList<Compatibility> compatibility;

    // The processor classes ("Audio Module Class"), the plug-ins a host lists.
    QList<Class> audioModules() const;

    // Reads the file's bytes. Fields of the wrong type are left empty rather than refusing the
    // whole file; only text that is not JSON5, or a top value that is not an object, is an
    // error (with its line and column in *error).
    static std::optional<Vst3ModuleInfo> parse(QByteArrayView bytes, QString *error = nullptr,
                                               const Json5::Limits &limits = {});
    // The old ID's VST 2 form, if it has one.
    static std::optional<quint32> vst2IdFromCid(const QString &cid);
};

// The architectures a .vst3 bundle holds, from the names of its Contents/ subfolders (x86_64-linux,
// aarch64-linux, i386-linux, armv7l-linux, x86_64-win, arm64-win, arm64ec-win, x86-win; MacOS
// when it holds a Mach-O binary). A pure function of the names so that a scan can pass the
// listing it already made.
struct Vst3Architectures {
    struct Entry {
        QString folder;       // the subfolder's name: "x86_64-linux", "MacOS"
        QString architecture; // x86_64, aarch64, i386, armv7l, arm64, arm64ec, x86; "macOS"
        QString system;       // "Linux", "Windows", "macOS"
    };
    // Names that are not architecture folders (Resources, Info.plist, ...) are skipped; macOS
    // counts only when hasMachO is true. Sorted as the names come.
    static QList<Entry> fromFolderNames(const QStringList &contentsNames, bool hasMachO = false);
    // The entry for one name, if it names an architecture folder.
    static std::optional<Entry> fromFolderName(const QString &name);
};

} // namespace korvane
