#include "core/LinuxRecognition.h"

#include "core/InterruptedMoves.h"
#include "core/Recognition.h"
#include "os/ScanCache.h"

namespace korvane {

namespace {

QStringView lastComponent(const QString &path)
{
    return QStringView(path).mid(path.lastIndexOf(QLatin1Char('/')) + 1);
}

// Hidden entries, sidecars and a cut-short move's leftovers are never plug-ins.
bool isCandidate(const QString &path)
{
    const QStringView name = lastComponent(path);
    return !name.startsWith(QLatin1Char('.')) && !isAppleDoubleName(path)
           && !InterruptedMoves::isLeftoverName(name.toString());
}

bool endsWith(const QString &path, QLatin1StringView extension)
{
    const QStringView name = lastComponent(path);
    return name.size() > extension.size() && name.endsWith(extension, Qt::CaseInsensitive);
}

} // namespace

bool isLv2BundlePath(const QString &path, ScanCache *cache)
{
    if (!isCandidate(path))
        return false;
    if (endsWith(path, QLatin1StringView(".lv2")))
        return true;
    return ScanCache::kind(path, cache) == ScanCache::Folder
           && ScanCache::kind(path + QStringLiteral("/manifest.ttl"), cache) == ScanCache::File;
}

bool isVst3Path(const QString &path, ScanCache * /*cache: a name decides*/)
{
    return isCandidate(path) && endsWith(path, QLatin1StringView(".vst3"));
}

bool isClapPath(const QString &path, ScanCache * /*cache: a name decides*/)
{
    return isCandidate(path) && endsWith(path, QLatin1StringView(".clap"));
}

bool isSharedObjectPath(const QString &path, ScanCache *cache)
{
    return isCandidate(path) && endsWith(path, QLatin1StringView(".so"))
           && ScanCache::kind(path, cache) != ScanCache::Folder;
}

bool isAaxPath(const QString &path, ScanCache * /*cache: a name decides*/)
{
    return isCandidate(path) && endsWith(path, QLatin1StringView(".aaxplugin"));
}

} // namespace korvane
