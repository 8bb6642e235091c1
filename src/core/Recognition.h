#pragma once

#include <QString>

namespace korvane {

class ScanCache;

// Recognition rules of the built-in formats, as the scan and the drop install use them; a scan
// hands its cache.
bool isAudioUnitName(const QString &name, ScanCache *cache = nullptr);
bool isVSTPlugInPath(const QString &path, ScanCache *cache = nullptr);
bool isRTASPlugInPath(const QString &path, ScanCache *cache = nullptr);
bool isMASPlugInPath(const QString &path, ScanCache *cache = nullptr);
// An AppleDouble sidecar ("._Name") carries another item's Finder information; never a plug-in.
bool isAppleDoubleName(const QString &name);

} // namespace korvane
