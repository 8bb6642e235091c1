#include "library/SetDocument.h"

#include "codec/SetArchive.h"
#include "core/ContentRegistry.h"
#include "os/FileOperations.h"

#include <QFile>

#include <cerrno>
#include <cstring>
#include <map>

#include <fcntl.h>
#include <poll.h>
#include <sys/stat.h>
#include <unistd.h>

namespace korvane {

namespace {

// A document of ten thousand plug-ins is about a megabyte; a file far beyond that is not one.
constexpr qint64 kMaxDocumentSize = 64 * 1024 * 1024;

// nullopt: not a set document. An empty list: a document of no items.
std::optional<QList<PluginPtr>> decodeItems(const QByteArray &bytes, const ContentRegistry *content)
{
    const std::optional<QList<QList<ArchivedObjectPtr>>> archived = SetArchive::decode(bytes);
    if (!archived)
        return std::nullopt;
    QList<PluginPtr> items;
    items.reserve(archived->size());
    for (const QList<ArchivedObjectPtr> &objects : *archived) {
        PluginPtr item = Plugin::decode(objects);
        if (!item)
            return std::nullopt;
        if (content)
            content->fill(*item);
        items.append(item);
    }
    return items;
}

std::optional<QByteArray> fail(QString *problem, const QString &why)
{
    if (problem)
        *problem = why;
    return std::nullopt;
}

// The bytes of a plain file or a pipe, read once.
std::optional<QByteArray> readOnce(const QString &path, QString *problem)
{
    // Opening a FIFO for reading would wait for a writer; without blocking it opens at once, and
    // with nobody writing the first read then finds its end.
    const int fd =
        ::open(QFile::encodeName(path).constData(), O_RDONLY | O_NONBLOCK | O_NOCTTY | O_CLOEXEC);
    if (fd < 0)
        return fail(problem, QString::fromLocal8Bit(std::strerror(errno)));
    struct stat info;
    const bool known = ::fstat(fd, &info) == 0;
    const int kind = known ? int(info.st_mode & S_IFMT) : 0;
    if (kind != S_IFREG && kind != S_IFIFO) {
        ::close(fd);
        return fail(problem, kind == S_IFDIR ? QStringLiteral("a folder, not a set document")
                                             : QStringLiteral("not a file or a pipe"));
    }
    // A file's size says at once what reading it to the limit would find out.
    if (kind == S_IFREG && qint64(info.st_size) > kMaxDocumentSize) {
        ::close(fd);
        return fail(problem, QStringLiteral("too large for a set document"));
    }
    // A pipe with a writer is read to its end, however slowly the writer sends.
    const int flags = ::fcntl(fd, F_GETFL);
    if (flags >= 0)
        ::fcntl(fd, F_SETFL, flags & ~O_NONBLOCK);

    QByteArray bytes;
    int failure = 0;
    char buffer[64 * 1024];
    while (bytes.size() <= kMaxDocumentSize) {
        const ssize_t got = ::read(fd, buffer, sizeof buffer);
        if (got < 0 && errno == EAGAIN) {
            pollfd wait{fd, POLLIN, 0};
            ::poll(&wait, 1, -1);
            continue;
        }
        if (got < 0 && errno == EINTR)
            continue;
        if (got < 0) {
            failure = errno;
            break;
        }
        if (got == 0)
            break;
        bytes.append(buffer, got);
    }
    ::close(fd);
    if (failure)
        return fail(problem, QString::fromLocal8Bit(std::strerror(failure)));
    if (bytes.size() > kMaxDocumentSize)
        return fail(problem, QStringLiteral("too large for a set document"));
    if (bytes.isEmpty() && kind == S_IFIFO)
        return fail(problem,
                    QStringLiteral("nothing to read: an empty pipe, or one that nobody writes to"));
    return bytes;
}

} // namespace

QByteArray SetDocument::encode(const QList<PluginPtr> &items)
{
    QList<QStringList> coded;
    coded.reserve(items.size());
    for (const PluginPtr &item : items) {
        if (item)
            coded.append(item->encode());
    }
    return SetArchive::encode(coded);
}

QList<PluginPtr> SetDocument::decode(const QByteArray &bytes, const ContentRegistry *content)
{
    return decodeItems(bytes, content).value_or(QList<PluginPtr>());
}

bool SetDocument::write(FileOperations &files, const QString &path, const QList<PluginPtr> &items,
                        FileError *error)
{
    // Written beside the target and renamed over it, so a failed save keeps the old document.
    return files.writeFileAtomically(path, encode(items), error);
}

std::optional<QList<PluginPtr>> SetDocument::load(const QString &path, QString *problem,
                                                  const ContentRegistry *content)
{
    const std::optional<QByteArray> bytes = readOnce(path, problem);
    if (!bytes)
        return std::nullopt;
    std::optional<QList<PluginPtr>> items = decodeItems(*bytes, content);
    if (!items && problem)
        *problem = QStringLiteral("not a set document");
    return items;
}

QList<PluginPtr> SetDocument::read(const QString &path, const ContentRegistry *content)
{
    return load(path, nullptr, content).value_or(QList<PluginPtr>());
}

} // namespace korvane
