#include "os/PosixFiles.h"

#include "os/PathBytes.h"
#include "os/PlatformFiles.h"
#include "os/ScanCache.h"

#include <QDir>
#include <QStringBuilder>

#include <algorithm>
#include <cerrno>
#include <cstring>

#include <dirent.h>
#include <unistd.h>

namespace korvane::posix {

namespace {

QByteArray encoded(const QString &path)
{
    return pathBytes(path);
}

// Most paths here are a folder and a name joined, clean already; cleaning them again cost more
// than the rename they were for.
bool isClean(QStringView path)
{
    const qsizetype n = path.size();
    if (n == 0 || path[0] == u'.' || path[n - 1] == u'/')
        return path == u"/";
    const char16_t *c = path.utf16();
    for (qsizetype i = 0; i + 1 < n; ++i) {
        if (c[i] != u'/')
            continue;
        // "//", "/." and "/.." as whole components are what cleaning would change.
        if (c[i + 1] == u'/')
            return false;
        if (c[i + 1] == u'.') {
            const qsizetype dots = i + 2 < n && c[i + 2] == u'.' ? 2 : 1;
            if (i + 1 + dots == n || c[i + 1 + dots] == u'/')
                return false;
        }
    }
    return true;
}

// The kind a listing gives an entry that is no link; Missing where it does not say.
ScanCache::Kind listedKind(unsigned char type)
{
    switch (type) {
    case DT_DIR:
        return ScanCache::Folder;
    case DT_REG:
        return ScanCache::File;
    case DT_FIFO:
    case DT_CHR:
    case DT_BLK:
    case DT_SOCK:
        return ScanCache::Other;
    default: // a link, or a file system that does not tell
        return ScanCache::Missing;
    }
}

bool checkRemovableTree(const QString &path, FileError *error)
{
    struct stat info;
    if (!lstatPath(path, &info))
        return fail(error, path, errno);
    if (PlatformFiles::isLocked(path))
        return fail(error, path, EPERM);
    if (!S_ISDIR(info.st_mode))
        return true;
    if (::access(encoded(path).constData(), R_OK | W_OK | X_OK) != 0)
        return fail(error, path, errno);
    const QStringList names = listNames(path);
    for (const QString &name : names) {
        if (!checkRemovableTree(childOf(path, name), error))
            return false;
    }
    return true;
}

} // namespace

QString reasonFor(int errorNumber)
{
    return QString::fromLocal8Bit(std::strerror(errorNumber));
}

bool fail(FileError *error, const QString &path, int errorNumber)
{
    if (error)
        *error = FileError{path, reasonFor(errorNumber), errorNumber};
    return false;
}

bool failWith(FileError *error, const QString &path, const QString &reason, int code)
{
    if (error)
        *error = FileError{path, reason, code};
    return false;
}

bool lstatPath(const QString &path, struct stat *info)
{
    return !path.isEmpty() && ::lstat(encoded(path).constData(), info) == 0;
}

bool statPath(const QString &path, struct stat *info)
{
    return !path.isEmpty() && ::stat(encoded(path).constData(), info) == 0;
}

QString cleaned(const QString &path)
{
    return isClean(path) ? path : QDir::cleanPath(path);
}

QString parentOf(const QString &path)
{
    const QString clean = cleaned(path);
    const qsizetype slash = clean.lastIndexOf(QLatin1Char('/'));
    if (slash < 0)
        return QStringLiteral(".");
    return slash == 0 ? QStringLiteral("/") : clean.left(slash);
}

QString nameOf(const QString &path)
{
    const QString clean = cleaned(path);
    return clean.mid(clean.lastIndexOf(QLatin1Char('/')) + 1);
}

QString childOf(const QString &folder, const QString &name)
{
    if (folder.endsWith(QLatin1Char('/')))
        return folder + name;
    return folder % QLatin1Char('/') % name;
}

bool isInside(const QString &path, const QString &folder)
{
    const QString cleanFolder = QDir::cleanPath(folder);
    return QDir::cleanPath(path).startsWith(
        cleanFolder == QLatin1String("/") ? cleanFolder : cleanFolder + QLatin1Char('/'));
}

bool parentAllowsChanges(const QString &path)
{
    const QString parent = parentOf(path);
    return ::access(encoded(parent).constData(), W_OK | X_OK) == 0
           && !PlatformFiles::isLocked(parent);
}

QStringList listNames(const QString &path, ScanCache *cache)
{
    QStringList names;
    if (path.isEmpty())
        return names;
    DIR *dir = ::opendir(encoded(path).constData());
    if (!dir)
        return names;
    while (const dirent *entry = ::readdir(dir)) {
        if (std::strcmp(entry->d_name, ".") == 0 || std::strcmp(entry->d_name, "..") == 0)
            continue;
        names.append(pathFromBytes(entry->d_name));
        if (!cache)
            continue;
        if (const ScanCache::Kind kind = listedKind(entry->d_type); kind != ScanCache::Missing)
            cache->rememberListed(childOf(path, names.constLast()), kind);
    }
    ::closedir(dir);
    std::sort(names.begin(), names.end());
    return names;
}

bool removeTree(const QString &path, FileError *error)
{
    struct stat info;
    if (!lstatPath(path, &info))
        return fail(error, path, errno);
    if (S_ISDIR(info.st_mode)) {
        const QStringList names = listNames(path);
        for (const QString &name : names) {
            if (!removeTree(childOf(path, name), error))
                return false;
        }
        if (::rmdir(encoded(path).constData()) != 0)
            return fail(error, path, errno);
        return true;
    }
    if (::unlink(encoded(path).constData()) != 0)
        return fail(error, path, errno);
    return true;
}

// The bytes of the plain files in a tree; links count as nothing.
qint64 treeBytes(const QString &path)
{
    struct stat info;
    if (!lstatPath(path, &info))
        return 0;
    if (S_ISREG(info.st_mode))
        return qint64(info.st_size);
    if (!S_ISDIR(info.st_mode))
        return 0;
    qint64 total = 0;
    for (const QString &name : listNames(path))
        total += treeBytes(childOf(path, name));
    return total;
}

// Whether the whole of path could be removed, found out before anything is.
bool checkRemovable(const QString &path, FileError *error)
{
    if (!parentAllowsChanges(path))
        return fail(error, parentOf(path),
                    PlatformFiles::isLocked(parentOf(path)) ? EPERM : EACCES);
    return checkRemovableTree(path, error);
}

// A source that exists, a target that does not, and not a folder into itself: what move and copy
// both need before they touch anything. A target that is the source itself (a " (Disabled)"
// folder that is a link to or a bind mount of the active one) is said as such: taken for a
// target in the way, it would go to the trash, and with it the only copy.
bool canPlace(const QString &from, const QString &to, struct stat *info, FileError *error)
{
    if (!lstatPath(from, info))
        return fail(error, from, errno);
    struct stat existing;
    if (lstatPath(to, &existing)) {
        if (existing.st_dev == info->st_dev && existing.st_ino == info->st_ino)
            return failWith(error, to,
                            QStringLiteral(QT_TRANSLATE_NOOP(
                                "korvane", "The source and the target are the same item")),
                            EINVAL);
        return fail(error, to, EEXIST);
    }
    if (S_ISDIR(info->st_mode) && isInside(to, from))
        return fail(error, to, EINVAL);
    return true;
}

} // namespace korvane::posix
