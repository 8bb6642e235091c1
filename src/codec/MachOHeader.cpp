#include "codec/MachOHeader.h"

#include "os/PathBytes.h"

#include <cerrno>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace korvane {

QByteArray MachOHeader::firstBytes(const QString &path, int count)
{
    if (count <= 0 || path.isEmpty())
        return {};
    // A link is followed only to a plain file: opening a device it may lead to can have effects
    // of its own (anyone can make a link; a device node takes root). Everything else is opened
    // as it is, without blocking on a pipe, and read only when it is a plain file. A status call
    // first for every file would cost as much as the open itself.
    const QByteArray name = pathBytes(path);
    constexpr int flags = O_RDONLY | O_NONBLOCK | O_NOCTTY | O_CLOEXEC;
    int fd = ::open(name.constData(), flags | O_NOFOLLOW);
    struct stat info;
    if (fd < 0 && errno == ELOOP) {
        if (::stat(name.constData(), &info) != 0 || !S_ISREG(info.st_mode))
            return {};
        fd = ::open(name.constData(), flags);
    }
    if (fd < 0)
        return {};
    if (::fstat(fd, &info) != 0 || !S_ISREG(info.st_mode)) {
        ::close(fd);
        return {};
    }
    QByteArray bytes(count, Qt::Uninitialized);
    qsizetype got = 0;
    while (got < count) {
        const ssize_t n = ::read(fd, bytes.data() + got, size_t(count - got));
        if (n < 0 && errno == EINTR)
            continue;
        if (n <= 0)
            break;
        got += n;
    }
    ::close(fd);
    bytes.truncate(got);
    return bytes;
}

MachOHeader::Architecture MachOHeader::classify(const QByteArray &firstEight)
{
    static constexpr char kPPC[] = "\xfe\xed\xfa\xce\x00\x00\x00\x12";
    static constexpr char kIntel[] = "\xce\xfa\xed\xfe\x07\x00\x00\x00";
    static constexpr char kUniversal[] = "\xca\xfe\xba\xbe\x00\x00\x00\x02";
    if (firstEight.size() < 8)
        return Unknown;
    const QByteArrayView bytes(firstEight.constData(), 8);
    if (bytes == QByteArrayView(kPPC, 8))
        return PPC;
    if (bytes == QByteArrayView(kIntel, 8))
        return Intel;
    if (bytes == QByteArrayView(kUniversal, 8))
        return Universal;
    return Unknown;
}

} // namespace korvane
