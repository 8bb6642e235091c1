#include "os/ScanCache.h"

#include "os/PathBytes.h"

#include <sys/stat.h>

namespace korvane {

namespace {

constexpr quint8 kKindMask = 0x0F;
constexpr quint8 kNoLink = 0x10;

ScanCache::Kind kindOf(const struct stat &info)
{
    if (S_ISDIR(info.st_mode))
        return ScanCache::Folder;
    return S_ISREG(info.st_mode) ? ScanCache::File : ScanCache::Other;
}

} // namespace

ScanCache::Kind ScanCache::kind(const QString &path, ScanCache *cache)
{
    if (cache) {
        // One entry's path is asked about several times in a row, the same string each time.
        if (!path.isEmpty() && path.constData() == cache->m_lastPath.constData()
            && path.size() == cache->m_lastPath.size())
            return cache->m_lastKind;
        const auto found = cache->m_kinds.constFind(path);
        if (found != cache->m_kinds.constEnd()) {
            cache->m_lastPath = path;
            cache->m_lastKind = Kind(found.value() & kKindMask);
            return cache->m_lastKind;
        }
    }
    struct stat info;
    const Kind kind =
        !path.isEmpty() && ::stat(pathBytes(path).constData(), &info) == 0 ? kindOf(info) : Missing;
    if (cache)
        cache->m_kinds.insert(path, kind);
    return kind;
}

bool ScanCache::isRealFolder(const QString &path, ScanCache *cache)
{
    if (cache) {
        const auto found = cache->m_kinds.constFind(path);
        if (found != cache->m_kinds.constEnd() && (found.value() & kNoLink))
            return (found.value() & kKindMask) == Folder;
    }
    struct stat info;
    if (path.isEmpty() || ::lstat(pathBytes(path).constData(), &info) != 0)
        return false;
    // Anything but a link is what stat would say too; remember it for the questions to come.
    if (cache && !S_ISLNK(info.st_mode))
        cache->rememberListed(path, kindOf(info));
    return S_ISDIR(info.st_mode);
}

void ScanCache::rememberListed(const QString &path, Kind kind)
{
    m_kinds.insert(path, quint8(kind | kNoLink));
    m_lastPath = QString();
}

} // namespace korvane
