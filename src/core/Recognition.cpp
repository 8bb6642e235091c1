#include "core/Recognition.h"

#include "codec/Bundle.h"
#include "codec/FinderInfo.h"
#include "core/InterruptedMoves.h"
#include "os/ScanCache.h"

#include <QVariant>

namespace korvane {

namespace {

QString lastComponent(const QString &path)
{
    return path.mid(path.lastIndexOf(QLatin1Char('/')) + 1);
}

bool isFolder(const QString &path, ScanCache *cache)
{
    return ScanCache::kind(path, cache) == ScanCache::Folder;
}

// A plain file (anything that is not a folder) counts when it is not hidden and carries the
// format's Finder type.
bool isTypedFile(const QString &path, QLatin1StringView typeString, ScanCache *cache)
{
    if (lastComponent(path).startsWith(QLatin1Char('.')))
        return false;
    return FinderInfo::hfsTypeString(path, cache) == typeString;
}

bool holdsValue(const QVariant &value)
{
    switch (value.typeId()) {
    case QMetaType::QString:
        return !value.toString().isEmpty();
    case QMetaType::QByteArray:
        return !value.toByteArray().isEmpty();
    case QMetaType::QVariantList:
        return !value.toList().isEmpty();
    case QMetaType::QVariantMap:
        return !value.toMap().isEmpty();
    default:
        return value.isValid() && !value.isNull();
    }
}

} // namespace

bool isAppleDoubleName(const QString &name)
{
    return lastComponent(name).startsWith(QLatin1String("._"));
}

// A sidecar, and what a move cut short leaves behind, may look like a whole plug-in inside.
static bool isNeverPlugIn(const QString &name)
{
    return isAppleDoubleName(name) || InterruptedMoves::isLeftoverName(name);
}

// Any name ending in the nine letters counts, with or without the dot, bundle or not; only a
// sidecar or a leftover does not.
bool isAudioUnitName(const QString &name, ScanCache * /*cache: a name decides*/)
{
    return name.endsWith(QLatin1String("component")) && !isNeverPlugIn(name);
}

// The name is tested before the disk is asked, and a bundle's Info.plist read only when its name
// qualifies.
bool isVSTPlugInPath(const QString &path, ScanCache *cache)
{
    if (isNeverPlugIn(path))
        return false;
    if (lastComponent(path).endsWith(QLatin1String(".vst")) && Bundle::isFilePackage(path, cache))
        return true;
    return !isFolder(path, cache) && isTypedFile(path, QLatin1StringView("'aPcs'"), cache);
}

bool isRTASPlugInPath(const QString &path, ScanCache *cache)
{
    if (isNeverPlugIn(path))
        return false;
    const QString name = lastComponent(path);
    const bool rtas = name.endsWith(QLatin1String(".rtas"));
    if ((rtas || name.endsWith(QLatin1String(".dpm"))) && Bundle::isFilePackage(path, cache))
        return rtas
               || Bundle::infoValue(path, QStringLiteral("CFBundlePackageType"), cache).toString()
                      == QLatin1String("TDMw");
    return !isFolder(path, cache) && isTypedFile(path, QLatin1StringView("'TDMw'"), cache);
}

bool isMASPlugInPath(const QString &path, ScanCache *cache)
{
    if (isNeverPlugIn(path))
        return false;
    if (isFolder(path, cache))
        return Bundle::isFilePackage(path, cache)
               && holdsValue(Bundle::infoValue(path, QStringLiteral("MotuPluginTypeUUID"), cache));
    return isTypedFile(path, QLatin1StringView("'Mas!'"), cache);
}

} // namespace korvane
