#pragma once

#include <QString>

namespace korvane {

// Recognition rules of the built-in formats, as the scan and the drop install use them.
bool isAudioUnitName(const QString &name);
bool isVSTPlugInPath(const QString &path);
bool isRTASPlugInPath(const QString &path);
bool isMASPlugInPath(const QString &path);
// An AppleDouble sidecar ("._Name") carries another item's Finder information; never a plug-in.
bool isAppleDoubleName(const QString &name);

} // namespace korvane
