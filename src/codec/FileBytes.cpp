#include "codec/FileBytes.h"

#include <QFile>

#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace korvane {

namespace {

QString systemError(int error)
{
    if (error == ENOTDIR)
        return QStringLiteral("cannot be read: a file stands where a folder should be");
    return QStringLiteral("cannot be read: %1").arg(QString::fromLocal8Bit(std::strerror(error)));
}

} // namespace

FileBytes FileBytes::read(const QString &path, qsizetype maxBytes, Mode mode)
{
    FileBytes result;
    const QByteArray native = QFile::encodeName(path);
    const int fd = ::open(native.constData(), O_RDONLY | O_NONBLOCK | O_CLOEXEC | O_NOCTTY);
    if (fd < 0) {
        result.errorNumber = errno;
        result.error = systemError(result.errorNumber);
        return result;
    }
    struct stat info {};
    const bool known = ::fstat(fd, &info) == 0;
    if (known) {
        result.size = qint64(info.st_size);
        result.modified = qint64(info.st_mtim.tv_sec) * 1000000000 + info.st_mtim.tv_nsec;
        result.changed = qint64(info.st_ctim.tv_sec) * 1000000000 + info.st_ctim.tv_nsec;
    }
    if (!known || !S_ISREG(info.st_mode)) {
        ::close(fd);
        result.error = S_ISDIR(info.st_mode) ? QStringLiteral("cannot be read: it is a folder")
                                             : QStringLiteral("cannot be read: not a regular file");
        return result;
    }
    if (mode == Whole && info.st_size > maxBytes) {
        ::close(fd);
        result.error = QStringLiteral("larger than %1 bytes").arg(maxBytes);
        return result;
    }
    // The size can change while reading; never more than maxBytes are kept.
    result.bytes.resize(qsizetype(std::min<qint64>(info.st_size, maxBytes)));
    qsizetype got = 0;
    while (got < result.bytes.size()) {
        const ssize_t n = ::read(fd, result.bytes.data() + got, size_t(result.bytes.size() - got));
        if (n < 0 && errno == EINTR)
            continue;
        if (n < 0) {
            result.errorNumber = errno;
            result.error = systemError(result.errorNumber);
            break;
        }
        if (n == 0)
            break;
        got += n;
    }
    ::close(fd);
    result.bytes.truncate(got);
    if (!result.error.isEmpty())
        result.bytes.clear();
    return result;
}

} // namespace korvane
