#pragma once

#include <QString>
#include <QVariant>
#include <optional>

namespace korvane {

// Bundles (folders shown as one file) on a file system that knows none.
class Bundle {
public:
    // A folder whose name ends in a bundle extension or that holds Contents/Info.plist.
    static bool isFilePackage(const QString &path);
    // Any existing folder opens as a bundle (it may lack Info.plist and executable).
    static bool canOpen(const QString &path);
    // Contents/Info.plist, XML or binary; absent when missing or malformed.
    static std::optional<QVariantMap> infoDictionary(const QString &bundlePath);
    static QVariant infoValue(const QString &bundlePath, const QString &key);
    // CFBundleExecutable when it names a file inside Contents/MacOS, without asking the disk.
    static QString executableName(const QString &bundlePath);
    // Contents/MacOS/<CFBundleExecutable>; empty when the key is missing or no such file exists.
    static QString executablePath(const QString &bundlePath);
};

// The first bytes of an executable and what the architecture test makes of them.
class MachOHeader {
public:
    enum Architecture { Unknown = 0, PPC = 1, Intel = 2, Universal = 3 };
    // Up to count bytes from the start of a plain file; empty when it cannot be read.
    static QByteArray firstBytes(const QString &path, int count = 8);
    // An exact match of the eight bytes against the three known patterns, else Unknown.
    static Architecture classify(const QByteArray &firstEight);
};

// The Finder file type of a plain file: com.apple.FinderInfo (three attribute spellings), then an
// AppleDouble "._name" sidecar.
class FinderInfo {
public:
    static std::optional<quint32> fileType(const QString &path);
    // The type held in the bytes of a com.apple.FinderInfo attribute; none when it is zero.
    static std::optional<quint32> typeFromAttribute(const QByteArray &finderInfo);
    // The type held in a whole AppleDouble file's Finder info entry.
    static std::optional<quint32> typeFromAppleDouble(const QByteArray &sidecar);
    // The type as NSFileTypeForHFSTypeCode writes it: "'aPcs'"; empty when the file has none.
    static QString hfsTypeString(const QString &path);
    static QString typeCodeString(quint32 code);
    // Gives a file a Finder type (an xattr, else an AppleDouble sidecar); for tests and the demo.
    static bool setFileType(const QString &path, quint32 code);
};

} // namespace korvane
