#include "os/LocalFileOperations.h"

#include "os/HomeTrash.h"
#include "os/PathBytes.h"
#include "os/PlatformFiles.h"
#include "os/PosixFiles.h"
#include "os/SystemLog.h"

#include <QSaveFile>

#include <algorithm>
#include <cerrno>
#include <climits>
#include <cstring>
#include <vector>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace korvane {

using namespace posix;
using PlatformFiles::isLocked;
using PlatformFiles::renameNoReplace;

namespace {

// What comparing and copying files read and write at a time.
constexpr size_t kBufferSize = size_t{64} << 10;

QByteArray encoded(const QString &path)
{
    return pathBytes(path);
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
    std::vector<char> one(kBufferSize), other(kBufferSize);
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

LocalFileOperations::LocalFileOperations(Roots roots)
    : m_roots(std::move(roots)), m_crossDevice(*this)
{
}

QStringList LocalFileOperations::directoryContents(const QString &path) const
{
    return listNames(path);
}

QStringList LocalFileOperations::listForScan(const QString &path, ScanCache *cache) const
{
    return listNames(path, cache);
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

bool LocalFileOperations::move(const QString &from, const QString &to, FileError *error)
{
    // An item whose sidecar cannot follow may not be recognised where it lands, and a stale
    // sidecar there would speak for it: nothing moves while one lies at the target.
    const bool sidecar = m_sidecars.beside(from);
    struct stat info;
    if (sidecar && lstatPath(Sidecars::pathOf(to), &info)) {
        // The item's own target speaks first: the source itself, or an item in the way.
        if (lstatPath(to, &info) && !canPlace(from, to, &info, error))
            return false;
        return fail(error, Sidecars::pathOf(to), EEXIST);
    }
    if (!relocate(from, to, error))
        return false;
    if (!sidecar)
        return true;
    FileError failure;
    if (relocate(Sidecars::pathOf(from), Sidecars::pathOf(to), &failure)) {
        m_sidecars.followed(from, to, true);
        return true;
    }
    // The item goes back to its sidecar where a rename can take it; across file systems it
    // stays moved and the sidecar is reported.
    if (renameNoReplace(to, from) == 0) {
        if (error)
            *error = failure;
        return false;
    }
    Sidecars::reportStays(from, to, failure);
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
        return m_crossDevice.run(from, to, error);
    // The kernel does not say which side refused; the source's folder is the usual suspect.
    const bool sourceSide =
        result != ENOENT && result != ENOTDIR && result != EEXIST && !parentAllowsChanges(from);
    return fail(error, sourceSide ? from : to, result);
}

void LocalFileOperations::beginBatch()
{
    m_sidecars.beginBatch();
    m_crossDevice.beginBatch();
}

void LocalFileOperations::endBatch()
{
    m_sidecars.endBatch();
    m_crossDevice.endBatch();
}

bool LocalFileOperations::copy(const QString &from, const QString &to, FileError *error)
{
    if (!duplicate(from, to, error))
        return false;
    if (m_sidecars.beside(from)) {
        FileError failure;
        if (duplicate(Sidecars::pathOf(from), Sidecars::pathOf(to), &failure))
            m_sidecars.followed(from, to, false);
        else
            Sidecars::reportStays(from, to, failure);
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
    std::vector<char> buffer(kBufferSize);
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
    if (Sidecars::exists(path)) {
        const QString sidecar = Sidecars::pathOf(path);
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
    if (Sidecars::exists(path)) {
        FileError failure;
        if (!trashItem(Sidecars::pathOf(path), Sidecars::nameOf(target), &failure, nullptr))
            Sidecars::reportStays(path, target, failure);
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
    const std::optional<HomeTrash> trash = HomeTrash::open(m_roots, error);
    return trash
           && trash->put(
               path, preferredName,
               [this](const QString &from, const QString &to, FileError *failure) {
                   return relocate(from, to, failure);
               },
               error, trashedTo);
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
