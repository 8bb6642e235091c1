#include "platform/LocalFileOperations.h"

#include "platform/PathBytes.h"
#include "platform/PlatformFiles.h"
#include "platform/ScanCache.h"
#include "platform/StagingFolders.h"
#include "platform/SystemLog.h"

#include <QDateTime>
#include <QDir>
#include <QSaveFile>
#include <QStringBuilder>

#include <algorithm>
#include <cerrno>
#include <climits>
#include <cstdio>
#include <cstring>
#include <vector>

#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace korvane {

namespace {

using PlatformFiles::isLocked;
using PlatformFiles::renameNoReplace;
using PlatformFiles::syncFileSystem;
using PlatformFiles::syncFolder;

QByteArray encoded(const QString &path)
{
    return pathBytes(path);
}

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

bool lstatPath(const QString &path, struct stat *info)
{
    return !path.isEmpty() && ::lstat(encoded(path).constData(), info) == 0;
}

bool statPath(const QString &path, struct stat *info)
{
    return !path.isEmpty() && ::stat(encoded(path).constData(), info) == 0;
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

// The AppleDouble sidecar that carries an item's Finder information on foreign file systems: its
// name, and its path.
QString sidecarName(const QString &path)
{
    return QStringLiteral("._") + nameOf(path);
}

QString sidecarOf(const QString &path)
{
    return childOf(parentOf(path), sidecarName(path));
}

bool hasSidecar(const QString &path)
{
    struct stat info;
    return lstatPath(sidecarOf(path), &info) && !S_ISDIR(info.st_mode);
}

void reportSidecar(const QString &path, const QString &ownerTarget, const FileError &failure)
{
    systemLog(QStringLiteral("Sidecar %1 did not follow to %2 and stays: %3")
                  .arg(sidecarOf(path), ownerTarget, failure.reason));
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
    return ::access(encoded(parent).constData(), W_OK | X_OK) == 0 && !isLocked(parent);
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

// With a scan under way, each entry's kind is handed to its cache on the way.
QStringList listNames(const QString &path, bool rememberKinds = false)
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
        if (!rememberKinds)
            continue;
        if (const ScanCache::Kind kind = listedKind(entry->d_type); kind != ScanCache::Missing)
            ScanCache::rememberListed(childOf(path, names.constLast()), kind);
    }
    ::closedir(dir);
    std::sort(names.begin(), names.end());
    return names;
}

// Only the AppleDouble names, picked from the raw bytes: a batch lists big plug-in folders in
// which such names are rare, and decoding every other name cost as much as the moves.
QSet<QString> sidecarNamesIn(const QString &folder)
{
    QSet<QString> names;
    DIR *dir = ::opendir(encoded(folder).constData());
    if (!dir)
        return names;
    while (const dirent *entry = ::readdir(dir))
        if (entry->d_name[0] == '.' && entry->d_name[1] == '_')
            names.insert(pathFromBytes(entry->d_name));
    ::closedir(dir);
    return names;
}

void collectSubpaths(const FileOperations &operations, const QString &root, const QString &relative,
                     QStringList *result)
{
    const QStringList names =
        operations.directoryContents(relative.isEmpty() ? root : childOf(root, relative));
    for (const QString &name : names) {
        const QString entry = relative.isEmpty() ? name : relative + QLatin1Char('/') + name;
        result->append(entry);
        struct stat info; // symbolic links to folders are not followed
        if (lstatPath(childOf(root, entry), &info) && S_ISDIR(info.st_mode))
            collectSubpaths(operations, root, entry, result);
    }
}

bool removeTree(const QString &path, FileError *error = nullptr)
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

bool checkRemovableTree(const QString &path, FileError *error)
{
    struct stat info;
    if (!lstatPath(path, &info))
        return fail(error, path, errno);
    if (isLocked(path))
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

// Whether the whole of path could be removed, found out before anything is.
bool checkRemovable(const QString &path, FileError *error)
{
    if (!parentAllowsChanges(path))
        return fail(error, parentOf(path), isLocked(parentOf(path)) ? EPERM : EACCES);
    return checkRemovableTree(path, error);
}

bool failWith(FileError *error, const QString &path, const QString &reason, int code = 0)
{
    if (error)
        *error = FileError{path, reason, code};
    return false;
}

// path and its missing parents, each created 0700 as the freedesktop base-directory rules ask.
bool makeTrashFolders(const QString &path, FileError *error)
{
    struct stat info;
    if (statPath(path, &info)) {
        if (S_ISDIR(info.st_mode))
            return true;
        return failWith(error, path,
                        QStringLiteral("Cannot create the trash folder: ") + reasonFor(ENOTDIR));
    }
    if (!makeTrashFolders(parentOf(path), error))
        return false;
    if (::mkdir(encoded(path).constData(), 0700) != 0 && errno != EEXIST)
        return failWith(error, path,
                        QStringLiteral("Cannot create the trash folder: ") + reasonFor(errno));
    return true;
}

struct HomeTrash {
    QString files;
    QString info;
};

// The freedesktop home trash of the run's roots, made when missing. There is no other place to
// put an item: without a home folder, no trash.
bool openHomeTrash(const Roots &roots, HomeTrash *trash, FileError *error)
{
    const QString home = roots.home;
    struct stat info;
    if (!QDir::isAbsolutePath(home) || !statPath(home, &info) || !S_ISDIR(info.st_mode))
        return failWith(error, home,
                        QStringLiteral(QT_TRANSLATE_NOOP(
                            "korvane", "There is no trash: the home folder does not exist")));
    const QString top = QDir::cleanPath(roots.trashFolder());
    trash->files = childOf(top, QStringLiteral("files"));
    trash->info = childOf(top, QStringLiteral("info"));
    return makeTrashFolders(trash->files, error) && makeTrashFolders(trash->info, error);
}

const QString kTrashInfoSuffix = QStringLiteral(".trashinfo");
constexpr int kTrashNameAttempts = 1000;

// NAME, NAME.2, NAME.3, ..., shortened where NAME.trashinfo would not fit a file name.
QString trashName(const QString &name, int attempt)
{
    const QString number = attempt == 1 ? QString() : QLatin1Char('.') + QString::number(attempt);
    QString base = name;
    while (base.size() > 1 && encoded(base + number + kTrashInfoSuffix).size() > NAME_MAX) {
        // A pair goes whole; an escaped byte is a low surrogate on its own.
        const qsizetype last = base.size() - 1;
        base.chop(base.at(last).isLowSurrogate() && base.at(last - 1).isHighSurrogate() ? 2 : 1);
    }
    return base + number;
}

// Created exclusively, so it also reserves NAME in the trash; errno, or 0 when written.
int writeTrashInfo(const QString &infoPath, const QString &original)
{
    const QByteArray text =
        "[Trash Info]\nPath=" + encoded(original).toPercentEncoding("/") + "\nDeletionDate="
        + QDateTime::currentDateTime().toString(QStringLiteral("yyyy-MM-dd'T'HH:mm:ss")).toLatin1()
        + '\n';
    const QByteArray file = encoded(infoPath);
    const int fd =
        ::open(file.constData(), O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, 0600);
    if (fd < 0)
        return errno;
    int failure = 0;
    for (qsizetype written = 0; written < text.size();) {
        const ssize_t put = ::write(fd, text.constData() + written, size_t(text.size() - written));
        if (put < 0 && errno == EINTR)
            continue;
        if (put < 0) {
            failure = errno;
            break;
        }
        written += put;
    }
    if (::close(fd) != 0 && !failure)
        failure = errno;
    if (failure)
        ::unlink(file.constData());
    return failure;
}

// Where a symbolic link points; empty when it cannot be read.
QByteArray linkTarget(const QString &path)
{
    std::vector<char> target(PATH_MAX + 1, '\0');
    const ssize_t length = ::readlink(encoded(path).constData(), target.data(), PATH_MAX);
    return length < 0 ? QByteArray() : QByteArray(target.data(), qsizetype(length));
}

// Two regular files of the same size hold the same bytes.
bool sameBytes(const QString &a, const QString &b)
{
    const int first = ::open(encoded(a).constData(), O_RDONLY | O_NOFOLLOW | O_CLOEXEC);
    const int second = ::open(encoded(b).constData(), O_RDONLY | O_NOFOLLOW | O_CLOEXEC);
    bool same = first >= 0 && second >= 0;
    std::vector<char> one(64 * 1024), other(64 * 1024);
    while (same) {
        const ssize_t got = ::read(first, one.data(), one.size());
        if (got < 0 && errno == EINTR)
            continue;
        if (got <= 0) {
            char extra;
            same = got == 0 && ::read(second, &extra, 1) == 0;
            break;
        }
        for (ssize_t filled = 0; same && filled < got;) {
            const ssize_t put = ::read(second, other.data() + filled, size_t(got - filled));
            if (put < 0 && errno == EINTR)
                continue;
            same = put > 0;
            filled += put > 0 ? put : 0;
        }
        same = same && std::memcmp(one.data(), other.data(), size_t(got)) == 0;
    }
    if (first >= 0)
        ::close(first);
    if (second >= 0)
        ::close(second);
    return same;
}

} // namespace

LocalFileOperations::LocalFileOperations(Roots roots) : m_roots(std::move(roots)) {}

QStringList LocalFileOperations::directoryContents(const QString &path) const
{
    return listNames(path, ScanCache::current() != nullptr);
}

QStringList LocalFileOperations::subpaths(const QString &path) const
{
    QStringList result;
    collectSubpaths(*this, path, QString(), &result);
    return result;
}

bool LocalFileOperations::exists(const QString &path) const
{
    struct stat info;
    return statPath(path, &info);
}

bool LocalFileOperations::isDirectory(const QString &path) const
{
    struct stat info;
    return statPath(path, &info) && S_ISDIR(info.st_mode);
}

bool LocalFileOperations::isReadable(const QString &path) const
{
    return !path.isEmpty() && ::access(encoded(path).constData(), R_OK) == 0;
}

bool LocalFileOperations::isWritable(const QString &path) const
{
    return !path.isEmpty() && ::access(encoded(path).constData(), W_OK) == 0;
}

bool LocalFileOperations::isDeletable(const QString &path) const
{
    struct stat info;
    if (!lstatPath(path, &info) || !parentAllowsChanges(path) || isLocked(path))
        return false;
    // In a sticky folder only the owner of the item or of the folder (or root) may remove it.
    struct stat parent;
    const uid_t user = ::geteuid();
    if (user != 0 && lstatPath(parentOf(path), &parent) && (parent.st_mode & S_ISVTX))
        return info.st_uid == user || parent.st_uid == user;
    return true;
}

std::optional<FileIdentity> LocalFileOperations::identity(const QString &path,
                                                          bool followLinks) const
{
    struct stat info;
    if (!(followLinks ? statPath(path, &info) : lstatPath(path, &info)))
        return std::nullopt;
    return FileIdentity{quint64(info.st_dev), quint64(info.st_ino), S_ISDIR(info.st_mode),
                        S_ISLNK(info.st_mode)};
}

bool LocalFileOperations::holdsAllOf(const QString &whole, const QString &part) const
{
    struct stat partInfo, wholeInfo;
    if (!lstatPath(part, &partInfo) || !lstatPath(whole, &wholeInfo)
        || (partInfo.st_mode & S_IFMT) != (wholeInfo.st_mode & S_IFMT))
        return false;
    if (S_ISDIR(partInfo.st_mode)) {
        const QStringList names = listNames(part);
        return std::all_of(names.cbegin(), names.cend(), [&](const QString &name) {
            return holdsAllOf(childOf(whole, name), childOf(part, name));
        });
    }
    if (S_ISLNK(partInfo.st_mode))
        return linkTarget(part) == linkTarget(whole);
    return S_ISREG(partInfo.st_mode) && partInfo.st_size == wholeInfo.st_size
           && sameBytes(part, whole);
}

bool LocalFileOperations::createDirectory(const QString &path, FileError *error)
{
    if (path.isEmpty())
        return fail(error, path, ENOENT);
    if (::mkdir(encoded(path).constData(), 0777) != 0)
        return fail(error, path, errno);
    return true;
}

int LocalFileOperations::lockFolder(int folder)
{
    return PlatformFiles::lockExclusive(folder);
}

// A source that exists, a target that does not, and not a folder into itself: what move and copy
// both need before they touch anything. A target that is the source itself (a " (Disabled)"
// folder that is a link to or a bind mount of the active one) is said as such: taken for a
// target in the way, it would go to the trash, and with it the only copy.
static bool canPlace(const QString &from, const QString &to, struct stat *info, FileError *error)
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

bool LocalFileOperations::sidecarBeside(const QString &path)
{
    if (!m_sidecars)
        return hasSidecar(path);
    const QString folder = parentOf(path);
    auto listed = m_sidecars->find(folder);
    if (listed == m_sidecars->end())
        listed = m_sidecars->insert(folder, sidecarNamesIn(folder));
    return !listed->isEmpty() && listed->contains(sidecarName(path)) && hasSidecar(path);
}

void LocalFileOperations::noteSidecar(const QString &from, const QString &to, bool moved)
{
    if (!m_sidecars)
        return;
    if (const auto source = m_sidecars->find(parentOf(from)); moved && source != m_sidecars->end())
        source->remove(sidecarName(from));
    if (const auto target = m_sidecars->find(parentOf(to)); target != m_sidecars->end())
        target->insert(sidecarName(to));
}

bool LocalFileOperations::move(const QString &from, const QString &to, FileError *error)
{
    // An item whose sidecar cannot follow may not be recognised where it lands, and a stale
    // sidecar there would speak for it: nothing moves while one lies at the target.
    const bool sidecar = sidecarBeside(from);
    struct stat info;
    if (sidecar && lstatPath(sidecarOf(to), &info)) {
        // The item's own target speaks first: the source itself, or an item in the way.
        if (lstatPath(to, &info) && !canPlace(from, to, &info, error))
            return false;
        return fail(error, sidecarOf(to), EEXIST);
    }
    if (!relocate(from, to, error))
        return false;
    if (!sidecar)
        return true;
    FileError failure;
    if (relocate(sidecarOf(from), sidecarOf(to), &failure)) {
        noteSidecar(from, to, true);
        return true;
    }
    // The item goes back to its sidecar where a rename can take it; across file systems it
    // stays moved and the sidecar is reported.
    if (renameNoReplace(to, from) == 0) {
        if (error)
            *error = failure;
        return false;
    }
    reportSidecar(from, to, failure);
    return true;
}

bool LocalFileOperations::relocate(const QString &from, const QString &to, FileError *error)
{
    // The rename refuses a missing source, an occupied target and a folder into itself by
    // itself; the checks only run to say which, or before a copy.
    const int result = renameNoReplace(from, to);
    if (result == 0)
        return true;
    struct stat info;
    if (!canPlace(from, to, &info, error))
        return false;
    if (result == EXDEV)
        return moveAcrossFileSystems(from, to, error);
    // The kernel does not say which side refused; the source's folder is the usual suspect.
    const bool sourceSide =
        result != ENOENT && result != ENOTDIR && result != EEXIST && !parentAllowsChanges(from);
    return fail(error, sourceSide ? from : to, result);
}

bool LocalFileOperations::makeStagingFolder(const QString &folder, const QString &item,
                                            FileError *error)
{
    if (m_batchStaging.contains(folder))
        return true;
    if (::mkdir(encoded(folder).constData(), 0777) != 0) {
        const int failure = errno;
        struct stat info;
        // Hidden as the folder is, its failure is told as the item's own.
        if (failure != EEXIST || !lstatPath(folder, &info) || !S_ISDIR(info.st_mode))
            return fail(error, item, failure == EEXIST ? ENOTDIR : failure);
    }
    if (m_sidecars)
        m_batchStaging.insert(folder);
    return true;
}

void LocalFileOperations::removeIfEmpty(const QString &folder)
{
    // A batch keeps its staging folders until it ends: making and removing one per item cost
    // about as much as a small plug-in's copy.
    if (!m_batchStaging.contains(folder))
        ::rmdir(encoded(folder).constData());
}

void LocalFileOperations::endBatch()
{
    m_sidecars.reset();
    for (const QString &folder : std::as_const(m_batchStaging))
        ::rmdir(encoded(folder).constData());
    m_batchStaging.clear();
}

bool LocalFileOperations::moveAcrossFileSystems(const QString &from, const QString &to,
                                                FileError *error)
{
    // A source that could not be removed afterwards is not worth copying.
    if (!checkRemovable(from, error))
        return false;
    // Copied into this process's staging folder beside the target while the source stays whole
    // where it is; the item keeps its name there, so any name that fits a folder fits. A copy of
    // the name already there is this process's own, left by a clean-up that failed: never the
    // only copy of anything, as its source was still whole when it was left.
    const QString partialFolder = childOf(parentOf(to), StagingFolders::partialName());
    const QString partial = childOf(partialFolder, nameOf(to));
    if (!makeStagingFolder(partialFolder, to, error))
        return false;
    const auto dropPartial = [&] {
        removeTree(partial);
        removeIfEmpty(partialFolder);
    };
    struct stat info;
    if (lstatPath(partial, &info) && !removeTree(partial, error)) {
        removeIfEmpty(partialFolder);
        return false;
    }
    beginCopy(from);
    if (!copyTree(from, partial, error)) {
        dropPartial();
        return false;
    }
    // The copy must be on the disk before the source goes out of sight.
    if (const int result = syncFileSystem(partialFolder); result != 0) {
        dropPartial();
        return fail(error, to, result);
    }
    // Time has passed: every part of the source must still be removable, or nothing happens.
    if (!checkRemovable(from, error)) {
        dropPartial();
        return false;
    }

    // The source is hidden first and the copy takes the name second, so no moment shows the
    // item twice; a run cut short between the two leaves a pair a later scan puts right. An older
    // hidden copy of the name is left for that judgement too, and this one takes a fresh folder.
    QString removingFolder, removing;
    for (int n = 1; n < 100; ++n) {
        removingFolder = childOf(parentOf(from), StagingFolders::removingName(n));
        removing = childOf(removingFolder, nameOf(from));
        if (!lstatPath(removing, &info))
            break;
    }
    if (!makeStagingFolder(removingFolder, from, error)) {
        dropPartial();
        return false;
    }
    if (const int result = renameNoReplace(from, removing); result != 0) {
        dropPartial();
        removeIfEmpty(removingFolder);
        return fail(error, from, result);
    }
    if (const int result = renameNoReplace(partial, to); result != 0) {
        if (const int back = renameNoReplace(removing, from); back != 0) {
            systemLog(QStringLiteral("Could not put %1 back from %2 after a failed move: %3")
                          .arg(from, removing, reasonFor(back)));
            return fail(error, removing, result);
        }
        dropPartial();
        removeIfEmpty(removingFolder);
        return fail(error, to, result);
    }
    removeIfEmpty(partialFolder);
    // The item is whole at the target: the move has happened, whatever becomes of the hidden
    // remains of the old copy. They go only once the new name is on the disk.
    if (const int result = syncFolder(parentOf(to)); result != 0) {
        systemLog(QStringLiteral("Moved %1 to %2, but kept the hidden old copy %3: %4")
                      .arg(from, to, removing, reasonFor(result)));
        return true;
    }
    FileError leftover;
    if (remove(removing, &leftover))
        removeIfEmpty(removingFolder);
    else
        systemLog(
            QStringLiteral("Moved %1 to %2, but the hidden leftover %3 could not be removed: %4")
                .arg(from, to, leftover.path, leftover.reason));
    return true;
}

bool LocalFileOperations::copy(const QString &from, const QString &to, FileError *error)
{
    if (!duplicate(from, to, error))
        return false;
    if (sidecarBeside(from)) {
        FileError failure;
        if (duplicate(sidecarOf(from), sidecarOf(to), &failure))
            noteSidecar(from, to, false);
        else
            reportSidecar(from, to, failure);
    }
    return true;
}

bool LocalFileOperations::duplicate(const QString &from, const QString &to, FileError *error)
{
    struct stat info;
    if (!canPlace(from, to, &info, error))
        return false;
    beginCopy(from);
    if (!copyTree(from, to, error)) {
        removeTree(to);
        return false;
    }
    return true;
}

void LocalFileOperations::beginCopy(const QString &from)
{
    m_copied = 0;
    m_copyTotal = m_copyProgress ? treeBytes(from) : 0;
}

void LocalFileOperations::noteCopied(qint64 bytes)
{
    if (!m_copyProgress || m_copyTotal <= 0)
        return;
    m_copied = std::min(m_copied + bytes, m_copyTotal);
    m_copyProgress(m_copied, m_copyTotal);
}

bool LocalFileOperations::copyTree(const QString &from, const QString &to, FileError *error)
{
    struct stat info;
    if (!lstatPath(from, &info))
        return fail(error, from, errno);

    if (S_ISLNK(info.st_mode)) {
        std::vector<char> target(size_t(info.st_size > 0 ? info.st_size : PATH_MAX) + 1, '\0');
        const ssize_t length =
            ::readlink(encoded(from).constData(), target.data(), target.size() - 1);
        if (length < 0)
            return fail(error, from, errno);
        target[size_t(length)] = '\0';
        if (::symlink(target.data(), encoded(to).constData()) != 0)
            return fail(error, to, errno);
        return true;
    }

    if (S_ISDIR(info.st_mode)) {
        // Owner-writable while it fills; the real permissions follow once the contents are in.
        if (::mkdir(encoded(to).constData(), 0700) != 0)
            return fail(error, to, errno);
        const QStringList names = directoryContents(from);
        for (const QString &name : names) {
            if (!copyTree(childOf(from, name), childOf(to, name), error))
                return false;
        }
        const int source = ::open(encoded(from).constData(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
        const int target = ::open(encoded(to).constData(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
        if (source >= 0 && target >= 0)
            PlatformFiles::copyExtendedAttributes(source, target);
        if (source >= 0)
            ::close(source);
        if (target >= 0)
            ::close(target);
        const timespec times[2] = {info.st_atim, info.st_mtim};
        ::utimensat(AT_FDCWD, encoded(to).constData(), times, 0);
        if (::chmod(encoded(to).constData(), info.st_mode & 07777) != 0)
            return fail(error, to, errno);
        return true;
    }

    if (S_ISREG(info.st_mode))
        return copyFile(from, to, error);

    // Devices, sockets and pipes have no place in a plug-in.
    return fail(error, from, ENOTSUP);
}

bool LocalFileOperations::copyFile(const QString &from, const QString &to, FileError *error)
{
    const int source = ::open(encoded(from).constData(), O_RDONLY | O_CLOEXEC);
    if (source < 0)
        return fail(error, from, errno);
    struct stat info;
    if (::fstat(source, &info) != 0) {
        const int failure = errno;
        ::close(source);
        return fail(error, from, failure);
    }
    const int target =
        ::open(encoded(to).constData(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0600);
    if (target < 0) {
        const int failure = errno;
        ::close(source);
        return fail(error, to, failure);
    }

    int failure = 0;
    QString failedPath = to;
    std::vector<char> buffer(64 * 1024);
    for (;;) {
        const ssize_t got = ::read(source, buffer.data(), buffer.size());
        if (got < 0) {
            if (errno == EINTR)
                continue;
            failure = errno;
            failedPath = from;
            break;
        }
        if (got == 0)
            break;
        for (ssize_t written = 0; written < got;) {
            const ssize_t put = ::write(target, buffer.data() + written, size_t(got - written));
            if (put < 0) {
                if (errno == EINTR)
                    continue;
                failure = errno;
                break;
            }
            written += put;
        }
        if (failure)
            break;
        noteCopied(got);
    }
    if (!failure) {
        PlatformFiles::copyExtendedAttributes(source, target);
        const timespec times[2] = {info.st_atim, info.st_mtim};
        ::futimens(target, times);
        if (::fchmod(target, info.st_mode & 07777) != 0)
            failure = errno;
    }
    ::close(source);
    if (::close(target) != 0 && !failure)
        failure = errno;
    if (failure) {
        ::unlink(encoded(to).constData());
        return fail(error, failedPath, failure);
    }
    return true;
}

bool LocalFileOperations::remove(const QString &path, FileError *error)
{
    struct stat info;
    if (!lstatPath(path, &info))
        return fail(error, path, errno);
    // A removal that would stop half way leaves a plug-in broken: touch nothing unless all of it
    // can go.
    if (!checkRemovable(path, error) || !removeTree(path, error))
        return false;
    if (hasSidecar(path)) {
        const QString sidecar = sidecarOf(path);
        FileError failure;
        if (!checkRemovable(sidecar, &failure) || !removeTree(sidecar, &failure))
            systemLog(
                QStringLiteral("Sidecar %1 could not be removed: %2").arg(sidecar, failure.reason));
    }
    return true;
}

bool LocalFileOperations::moveToTrash(const QString &path, FileError *error, QString *trashedTo)
{
    struct stat info;
    if (!lstatPath(path, &info))
        return fail(error, path, errno);
    QString target;
    if (!trashItem(path, nameOf(path), error, &target))
        return false;
    // Named after the item's name in the trash, so the pair stays recognisable there.
    if (hasSidecar(path)) {
        FileError failure;
        if (!trashItem(sidecarOf(path), sidecarName(target), &failure, nullptr))
            reportSidecar(path, target, failure);
    }
    if (trashedTo)
        *trashedTo = target;
    return true;
}

bool LocalFileOperations::trashItem(const QString &path, const QString &preferredName,
                                    FileError *error, QString *trashedTo)
{
    if (preferredName.isEmpty())
        return fail(error, path, EINVAL);
    HomeTrash trash;
    if (!openHomeTrash(m_roots, &trash, error))
        return false;
    const QString original = QDir::cleanPath(QDir::current().absoluteFilePath(path));
    for (int attempt = 1; attempt <= kTrashNameAttempts; ++attempt) {
        const QString name = trashName(preferredName, attempt);
        const QString info = childOf(trash.info, name + kTrashInfoSuffix);
        const QString target = childOf(trash.files, name);
        const int written = writeTrashInfo(info, original);
        if (written == EEXIST)
            continue;
        if (written != 0)
            return failWith(error, info,
                            QStringLiteral("Cannot record the item in the trash: ")
                                + reasonFor(written));
        struct stat existing;
        if (lstatPath(target, &existing)) { // an entry without its record; not ours to replace
            ::unlink(encoded(info).constData());
            continue;
        }
        // A record without its item would promise what is not in the trash.
        if (!relocate(path, target, error)) {
            ::unlink(encoded(info).constData());
            return false;
        }
        if (trashedTo)
            *trashedTo = target;
        return true;
    }
    return failWith(error, path,
                    QStringLiteral(QT_TRANSLATE_NOOP(
                        "korvane", "The trash holds too many items of this name")));
}

bool LocalFileOperations::writeFileAtomically(const QString &path, const QByteArray &bytes,
                                              FileError *error)
{
    // The folder is not created here.
    QSaveFile file(path);
    if (!file.open(QIODevice::WriteOnly) || file.write(bytes) != bytes.size()) {
        if (error)
            *error = FileError{path, file.errorString()};
        file.cancelWriting();
        return false;
    }
    if (!file.commit()) {
        if (error)
            *error = FileError{path, file.errorString()};
        return false;
    }
    return true;
}

} // namespace korvane
