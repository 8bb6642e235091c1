#pragma once

#include <QString>
#include <QVariant>
#include <optional>

namespace korvane {

class ScanCache;

// Bundles (folders shown as one file) on a file system that knows none. Each question takes the
// cache of the scan that asks, if one does.
class Bundle {
public:
    // A folder whose name ends in a bundle extension or that holds Contents/Info.plist.
    static bool isFilePackage(const QString &path, ScanCache *cache = nullptr);
    // Any existing folder opens as a bundle (it may lack Info.plist and executable).
    static bool canOpen(const QString &path, ScanCache *cache = nullptr);
    // Contents/Info.plist, XML or binary; absent when missing or malformed.
    static std::optional<QVariantMap> infoDictionary(const QString &bundlePath,
                                                     ScanCache *cache = nullptr);
    static QVariant infoValue(const QString &bundlePath, const QString &key,
                              ScanCache *cache = nullptr);
    // CFBundleExecutable when it names a file inside Contents/MacOS, without asking the disk.
    static QString executableName(const QString &bundlePath, ScanCache *cache = nullptr);
    // Contents/MacOS/<CFBundleExecutable>; empty when the key is missing or no such file exists.
    static QString executablePath(const QString &bundlePath, ScanCache *cache = nullptr);
};

} // namespace korvane
