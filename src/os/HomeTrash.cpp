#include "os/HomeTrash.h"

#include "os/PathBytes.h"
#include "os/PosixFiles.h"

#include <QCoreApplication>
#include <QDateTime>
#include <QDir>

#include <cerrno>
#include <climits>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace korvane {

using namespace posix;

namespace {

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
    if (::mkdir(pathBytes(path).constData(), 0700) != 0 && errno != EEXIST)
        return failWith(error, path,
                        QStringLiteral("Cannot create the trash folder: ") + reasonFor(errno));
    return true;
}

const QString kTrashInfoSuffix = QStringLiteral(".trashinfo");
constexpr int kTrashNameAttempts = 1000;

// NAME, NAME.2, NAME.3, ..., shortened where NAME.trashinfo would not fit a file name.
QString trashName(const QString &name, int attempt)
{
    const QString number = attempt == 1 ? QString() : QLatin1Char('.') + QString::number(attempt);
    QString base = name;
    while (base.size() > 1 && pathBytes(base + number + kTrashInfoSuffix).size() > NAME_MAX) {
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
        "[Trash Info]\nPath=" + pathBytes(original).toPercentEncoding("/") + "\nDeletionDate="
        + QDateTime::currentDateTime().toString(QStringLiteral("yyyy-MM-dd'T'HH:mm:ss")).toLatin1()
        + '\n';
    const QByteArray file = pathBytes(infoPath);
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

} // namespace

std::optional<HomeTrash> HomeTrash::open(const Roots &roots, FileError *error)
{
    const QString home = roots.home;
    struct stat info;
    if (!QDir::isAbsolutePath(home) || !statPath(home, &info) || !S_ISDIR(info.st_mode)) {
        failWith(error, home,
                 QStringLiteral(QT_TRANSLATE_NOOP(
                     "korvane", "There is no trash: the home folder does not exist")));
        return std::nullopt;
    }
    const QString top = QDir::cleanPath(roots.trashFolder());
    HomeTrash trash;
    trash.m_files = childOf(top, QStringLiteral("files"));
    trash.m_info = childOf(top, QStringLiteral("info"));
    if (!makeTrashFolders(trash.m_files, error) || !makeTrashFolders(trash.m_info, error))
        return std::nullopt;
    return trash;
}

bool HomeTrash::put(const QString &path, const QString &preferredName, const Mover &move,
                    FileError *error, QString *trashedTo) const
{
    const QString original = QDir::cleanPath(QDir::current().absoluteFilePath(path));
    for (int attempt = 1; attempt <= kTrashNameAttempts; ++attempt) {
        const QString name = trashName(preferredName, attempt);
        const QString info = childOf(m_info, name + kTrashInfoSuffix);
        const QString target = childOf(m_files, name);
        const int written = writeTrashInfo(info, original);
        if (written == EEXIST)
            continue;
        if (written != 0)
            return failWith(error, info,
                            QStringLiteral("Cannot record the item in the trash: ")
                                + reasonFor(written));
        struct stat existing;
        if (lstatPath(target, &existing)) { // an entry without its record; not ours to replace
            ::unlink(pathBytes(info).constData());
            continue;
        }
        // A record without its item would promise what is not in the trash.
        if (!move(path, target, error)) {
            ::unlink(pathBytes(info).constData());
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

} // namespace korvane
