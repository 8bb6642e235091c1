#include "os/PlatformFiles.h"

#include "os/PathBytes.h"

#include <cerrno>
#include <cstring>
#include <vector>

#include <fcntl.h>
#include <linux/fs.h>
#include <sys/file.h>
#include <sys/ioctl.h>
#include <sys/stat.h>
#include <sys/xattr.h>
#include <unistd.h>

namespace korvane::PlatformFiles {

namespace {

QByteArray encoded(const QString &path)
{
    return pathBytes(path);
}

} // namespace

int renameNoReplace(const QString &from, const QString &to)
{
    const QByteArray source = encoded(from);
    const QByteArray target = encoded(to);
    if (::renameat2(AT_FDCWD, source.constData(), AT_FDCWD, target.constData(), RENAME_NOREPLACE)
        == 0)
        return 0;
    if (errno != EINVAL && errno != ENOSYS)
        return errno;
    // A file system without the flag: check first, accepting the small window.
    struct stat info;
    if (::lstat(target.constData(), &info) == 0)
        return EEXIST;
    return ::rename(source.constData(), target.constData()) == 0 ? 0 : errno;
}

bool isLocked(const QString &path)
{
    struct stat info;
    if (path.isEmpty() || ::lstat(encoded(path).constData(), &info) != 0 || S_ISLNK(info.st_mode))
        return false;
    const int flags =
        O_RDONLY | O_NONBLOCK | O_NOFOLLOW | O_CLOEXEC | (S_ISDIR(info.st_mode) ? O_DIRECTORY : 0);
    const int fd = ::open(encoded(path).constData(), flags);
    if (fd < 0)
        return false;
    int attributes = 0;
    const bool known = ::ioctl(fd, FS_IOC_GETFLAGS, &attributes) == 0; // unsupported: not locked
    ::close(fd);
    return known && (attributes & (FS_IMMUTABLE_FL | FS_APPEND_FL));
}

int lockExclusive(int fd)
{
    for (;;) {
        if (::flock(fd, LOCK_EX | LOCK_NB) == 0)
            return 0;
        if (errno != EINTR)
            return errno == EAGAIN ? EWOULDBLOCK : errno;
    }
}

void copyExtendedAttributes(int from, int to)
{
    const ssize_t size = ::flistxattr(from, nullptr, 0);
    if (size <= 0)
        return;
    std::vector<char> names(size_t(size) + 1, '\0');
    const ssize_t got = ::flistxattr(from, names.data(), names.size() - 1);
    if (got <= 0)
        return;
    for (const char *name = names.data(); name < names.data() + got;
         name += std::strlen(name) + 1) {
        const ssize_t valueSize = ::fgetxattr(from, name, nullptr, 0);
        if (valueSize < 0)
            continue;
        std::vector<char> value(size_t(valueSize) + 1);
        const ssize_t valueGot = ::fgetxattr(from, name, value.data(), value.size());
        if (valueGot >= 0)
            ::fsetxattr(to, name, value.data(), size_t(valueGot), 0);
    }
}

int syncFileSystem(const QString &folder)
{
    const int fd = ::open(encoded(folder).constData(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (fd < 0)
        return errno;
    const int result = ::syncfs(fd) == 0 ? 0 : errno;
    ::close(fd);
    return result;
}

int syncFolder(const QString &folder)
{
    const int fd = ::open(encoded(folder).constData(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (fd < 0)
        return errno;
    const int result = ::fsync(fd) == 0 ? 0 : errno;
    ::close(fd);
    return result;
}

} // namespace korvane::PlatformFiles
