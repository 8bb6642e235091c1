#include "codec/FinderInfo.h"

#include "os/PathBytes.h"
#include "os/ScanCache.h"

#include <QStringBuilder>
#include <QtEndian>

#include <cerrno>
#include <vector>

#include <fcntl.h>
#include <sys/stat.h>
#include <sys/xattr.h>
#include <unistd.h>

namespace korvane {

namespace {

const char *const kFinderInfoAttributes[] = {"com.apple.FinderInfo", "osx.com.apple.FinderInfo",
                                             "user.com.apple.FinderInfo"};
const char kWritableFinderInfoAttribute[] = "user.com.apple.FinderInfo";

constexpr int kFinderInfoSize = 32;
constexpr quint32 kAppleDoubleMagic = 0x00051607;
constexpr quint32 kAppleDoubleVersion1 = 0x00010000;
constexpr quint32 kAppleDoubleVersion2 = 0x00020000;
constexpr quint32 kFinderInfoEntry = 9;
constexpr qint64 kAppleDoubleHeaderSize = 26; // magic, version, 16 filler bytes, entry count
constexpr qint64 kAppleDoubleEntrySize = 12;  // id, offset, length

QString sidecarPath(const QString &path)
{
    const qsizetype slash = path.lastIndexOf(QLatin1Char('/'));
    return path.left(slash + 1) % QLatin1String("._") % path.mid(slash + 1);
}

// A file opened by its bytes (a name that is not UTF-8 opens too), closed as it goes.
class OpenFile {
public:
    OpenFile(const QString &path, int flags, mode_t mode = 0)
        : m_fd(::open(pathBytes(path).constData(), flags | O_CLOEXEC | O_NOCTTY, mode))
    {
    }
    ~OpenFile()
    {
        if (m_fd >= 0)
            ::close(m_fd);
    }
    OpenFile(const OpenFile &) = delete;
    OpenFile &operator=(const OpenFile &) = delete;
    bool isOpen() const { return m_fd >= 0; }
    qint64 size() const
    {
        struct stat info;
        return ::fstat(m_fd, &info) == 0 && S_ISREG(info.st_mode) ? qint64(info.st_size) : -1;
    }
    // Up to count bytes from offset; fewer where the file ends or fails.
    QByteArray read(qint64 offset, qint64 count) const
    {
        QByteArray bytes(qsizetype(count), Qt::Uninitialized);
        qint64 got = 0;
        while (got < count) {
            const ssize_t n = ::pread(m_fd, bytes.data() + got, size_t(count - got), offset + got);
            if (n < 0 && errno == EINTR)
                continue;
            if (n <= 0)
                break;
            got += n;
        }
        bytes.truncate(qsizetype(got));
        return bytes;
    }
    bool write(qint64 offset, const QByteArray &bytes) const
    {
        qint64 put = 0;
        while (put < bytes.size()) {
            const ssize_t n =
                ::pwrite(m_fd, bytes.constData() + put, size_t(bytes.size() - put), offset + put);
            if (n < 0 && errno == EINTR)
                continue;
            if (n <= 0)
                return false;
            put += n;
        }
        return true;
    }

private:
    int m_fd;
};

quint32 bigEndian32(const char *bytes)
{
    return qFromBigEndian<quint32>(bytes);
}

// The Finder info bytes stored in an extended attribute, in the first spelling present.
std::optional<QByteArray> finderInfoAttribute(const QString &path)
{
    const QByteArray name = pathBytes(path);
    for (const char *attribute : kFinderInfoAttributes) {
        // Finder info is 32 bytes; a larger value is asked for its size and read again.
        char small[64];
        ssize_t got = ::getxattr(name.constData(), attribute, small, sizeof small);
        if (got >= 0)
            return QByteArray(small, qsizetype(got));
        if (errno != ERANGE)
            continue;
        const ssize_t size = ::getxattr(name.constData(), attribute, nullptr, 0);
        if (size < 0)
            continue;
        std::vector<char> value(size_t(size) + 1);
        got = ::getxattr(name.constData(), attribute, value.data(), value.size());
        if (got < 0)
            continue;
        return QByteArray(value.data(), qsizetype(got));
    }
    return std::nullopt;
}

// Where the Finder info lies inside an AppleDouble sidecar.
struct SidecarEntry {
    qint64 offset = -1;
    qint64 length = 0;
};

bool isAppleDoubleHeader(QByteArrayView head)
{
    if (head.size() < kAppleDoubleHeaderSize)
        return false;
    const quint32 version = bigEndian32(head.data() + 4);
    return bigEndian32(head.data()) == kAppleDoubleMagic
           && (version == kAppleDoubleVersion1 || version == kAppleDoubleVersion2);
}

qint64 entryCount(QByteArrayView head)
{
    return qFromBigEndian<quint16>(head.data() + 24);
}

// The Finder info entry of a sidecar of `size` bytes that begins with `head` (its header and
// entry table at least); every number in it is checked against the real size before it is used.
SidecarEntry finderInfoEntry(QByteArrayView head, qint64 size)
{
    if (size < kAppleDoubleHeaderSize || !isAppleDoubleHeader(head))
        return {};
    const qint64 count = entryCount(head);
    if (count * kAppleDoubleEntrySize > size - kAppleDoubleHeaderSize
        || count * kAppleDoubleEntrySize > head.size() - kAppleDoubleHeaderSize)
        return {};
    for (qint64 i = 0; i < count; ++i) {
        const char *entry = head.data() + kAppleDoubleHeaderSize + i * kAppleDoubleEntrySize;
        if (bigEndian32(entry) != kFinderInfoEntry)
            continue;
        const qint64 offset = bigEndian32(entry + 4);
        const qint64 length = bigEndian32(entry + 8);
        if (offset > size || length > size - offset)
            return {};
        return SidecarEntry{offset, length};
    }
    return {};
}

// The same for an open sidecar, of which only the header and the entry table are read: the
// resource fork after them may be large.
SidecarEntry finderInfoEntry(const OpenFile &file)
{
    const qint64 size = file.size();
    if (size < kAppleDoubleHeaderSize)
        return {};
    QByteArray head = file.read(0, kAppleDoubleHeaderSize);
    if (!isAppleDoubleHeader(head))
        return {};
    head += file.read(kAppleDoubleHeaderSize, qMin(entryCount(head) * kAppleDoubleEntrySize,
                                                   size - kAppleDoubleHeaderSize));
    return finderInfoEntry(head, size);
}

std::optional<quint32> sidecarType(const QString &path)
{
    // Never blocks on a pipe someone named like a sidecar; size() refuses all but plain files.
    const OpenFile file(sidecarPath(path), O_RDONLY | O_NONBLOCK);
    if (!file.isOpen())
        return std::nullopt;
    const SidecarEntry entry = finderInfoEntry(file);
    if (entry.offset < 0)
        return std::nullopt;
    const qint64 wanted = qMin<qint64>(entry.length, kFinderInfoSize);
    const QByteArray bytes = file.read(entry.offset, wanted);
    if (bytes.size() != wanted)
        return std::nullopt;
    return FinderInfo::typeFromAttribute(bytes);
}

bool writeSidecar(const QString &path, quint32 code)
{
    QByteArray type(4, '\0');
    qToBigEndian(code, type.data());

    const QString sidecar = sidecarPath(path);
    {
        // Keep the rest of an existing sidecar (resource fork, other Finder flags).
        const OpenFile file(sidecar, O_RDWR | O_NONBLOCK);
        const SidecarEntry entry = file.isOpen() ? finderInfoEntry(file) : SidecarEntry{};
        if (entry.offset >= 0 && entry.length >= 4)
            return file.write(entry.offset, type);
    }

    QByteArray bytes(kAppleDoubleHeaderSize + kAppleDoubleEntrySize + kFinderInfoSize, '\0');
    char *data = bytes.data();
    qToBigEndian(kAppleDoubleMagic, data);
    qToBigEndian(kAppleDoubleVersion2, data + 4);
    qToBigEndian<quint16>(1, data + 24);
    qToBigEndian(kFinderInfoEntry, data + 26);
    qToBigEndian(quint32(kAppleDoubleHeaderSize + kAppleDoubleEntrySize), data + 30);
    qToBigEndian(quint32(kFinderInfoSize), data + 34);
    qToBigEndian(code, data + kAppleDoubleHeaderSize + kAppleDoubleEntrySize);
    const OpenFile file(sidecar, O_WRONLY | O_CREAT | O_TRUNC, 0666);
    return file.isOpen() && file.write(0, bytes);
}

} // namespace

std::optional<quint32> FinderInfo::fileType(const QString &path, ScanCache *cache)
{
    if (path.isEmpty() || ScanCache::kind(path, cache) == ScanCache::Missing)
        return std::nullopt;
    if (const std::optional<QByteArray> attribute = finderInfoAttribute(path))
        return typeFromAttribute(*attribute);
    return sidecarType(path);
}

std::optional<quint32> FinderInfo::typeFromAttribute(const QByteArray &finderInfo)
{
    if (finderInfo.size() < 4)
        return std::nullopt;
    const quint32 code = bigEndian32(finderInfo.constData());
    if (code == 0)
        return std::nullopt;
    return code;
}

std::optional<quint32> FinderInfo::typeFromAppleDouble(const QByteArray &sidecar)
{
    const SidecarEntry entry = finderInfoEntry(sidecar, sidecar.size());
    if (entry.offset < 0)
        return std::nullopt;
    return typeFromAttribute(
        sidecar.mid(entry.offset, qMin<qint64>(entry.length, kFinderInfoSize)));
}

QString FinderInfo::hfsTypeString(const QString &path, ScanCache *cache)
{
    const std::optional<quint32> code = fileType(path, cache);
    return code ? typeCodeString(*code) : QString();
}

QString FinderInfo::typeCodeString(quint32 code)
{
    if (code == 0)
        return {};
    QByteArray bytes(4, '\0');
    qToBigEndian(code, bytes.data());
    return QLatin1Char('\'') + QString::fromLatin1(bytes) + QLatin1Char('\'');
}

bool FinderInfo::setFileType(const QString &path, quint32 code)
{
    struct stat existing;
    if (path.isEmpty() || ::stat(pathBytes(path).constData(), &existing) != 0)
        return false;
    QByteArray info(kFinderInfoSize, '\0');
    if (const std::optional<QByteArray> current = finderInfoAttribute(path))
        info.replace(0, qMin<qsizetype>(current->size(), kFinderInfoSize),
                     current->left(kFinderInfoSize));
    qToBigEndian(code, info.data());
    const QByteArray name = pathBytes(path);
    if (::setxattr(name.constData(), kWritableFinderInfoAttribute, info.constData(),
                   size_t(info.size()), 0)
        == 0)
        return true;
    if (errno != ENOTSUP && errno != EOPNOTSUPP)
        return false;
    return writeSidecar(path, code);
}

} // namespace korvane
