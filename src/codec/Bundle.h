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

} // namespace korvane
