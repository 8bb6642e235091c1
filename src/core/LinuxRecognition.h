#pragma once

#include <QString>

namespace korvane {

class ScanCache;

// Recognition rules of the Linux formats and of the newer formats of the macOS layout. Each
// decides from the name and at most one question to the disk, so that a bundle that cannot be
// read (a file named like a bundle, a link that leads nowhere) is still listed, with its reason.

// An LV2 bundle: a folder holding manifest.ttl, or anything named "*.lv2".
bool isLv2BundlePath(const QString &path, ScanCache *cache = nullptr);
// A VST 3 bundle folder or an older single-file module: "*.vst3".
bool isVst3Path(const QString &path, ScanCache *cache = nullptr);
// A CLAP plug-in: "*.clap" (a shared object on Linux, a bundle on macOS).
bool isClapPath(const QString &path, ScanCache *cache = nullptr);
// A LADSPA, DSSI or Linux VST 2 plug-in: a "*.so" that is not a folder.
bool isSharedObjectPath(const QString &path, ScanCache *cache = nullptr);
// An AAX plug-in bundle: "*.aaxplugin".
bool isAaxPath(const QString &path, ScanCache *cache = nullptr);

} // namespace korvane
