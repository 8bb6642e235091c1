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

bool isFolder(const QString &path)
{
    return ScanCache::kind(path) == ScanCache::Folder;
}

// A plain file (anything that is not a folder) counts when it is not hidden and carries the
// format's Finder type.
bool isTypedFile(const QString &path, QLatin1StringView typeString)
{
    if (lastComponent(path).startsWith(QLatin1Char('.')))
        return false;
    return FinderInfo::hfsTypeString(path) == typeString;
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
bool isAudioUnitName(const QString &name)
{
    return name.endsWith(QLatin1String("component")) && !isNeverPlugIn(name);
}

// The name is tested before the disk is asked, and a bundle's Info.plist read only when its name
// qualifies.
bool isVSTPlugInPath(const QString &path)
{
    if (isNeverPlugIn(path))
        return false;
    if (lastComponent(path).endsWith(QLatin1String(".vst")) && Bundle::isFilePackage(path))
        return true;
    return !isFolder(path) && isTypedFile(path, QLatin1StringView("'aPcs'"));
}

bool isRTASPlugInPath(const QString &path)
{
    if (isNeverPlugIn(path))
        return false;
    const QString name = lastComponent(path);
    const bool rtas = name.endsWith(QLatin1String(".rtas"));
    if ((rtas || name.endsWith(QLatin1String(".dpm"))) && Bundle::isFilePackage(path))
        return rtas
               || Bundle::infoValue(path, QStringLiteral("CFBundlePackageType")).toString()
                      == QLatin1String("TDMw");
    return !isFolder(path) && isTypedFile(path, QLatin1StringView("'TDMw'"));
}

bool isMASPlugInPath(const QString &path)
{
    if (isNeverPlugIn(path))
        return false;
    if (isFolder(path))
        return Bundle::isFilePackage(path)
               && holdsValue(Bundle::infoValue(path, QStringLiteral("MotuPluginTypeUUID")));
    return isTypedFile(path, QLatin1StringView("'Mas!'"));
}

} // namespace korvane
