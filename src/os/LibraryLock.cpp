#include "os/LibraryLock.h"

#include "os/FileOperations.h"
#include "os/LockTable.h"
#include "os/PathBytes.h"
#include "os/ProcessList.h"

#include <QDateTime>
#include <QDeadlineTimer>
#include <QDir>
#include <QFileInfo>
#include <QLockFile>
#include <QSysInfo>
#include <QThread>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <memory>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace korvane {

namespace {

using Key = LockTable::Folder;

constexpr int kDefaultWaitMs = 10000;
constexpr qint64 kPollMs = 50;
constexpr qint64 kAbandonedMs = 5000;
constexpr int kAttempts = 10;
const QString kLockFileName = QStringLiteral(".korvane.lock");

// A folder opened for its lock.
struct Target {
    Key key;
    int fd = -1;
    QString path;
};

void closeAll(QList<Target> &targets)
{
    for (Target &target : targets)
        if (target.fd >= 0)
            ::close(std::exchange(target.fd, -1));
}

QString parentOf(const QString &path)
{
    const qsizetype slash = path.lastIndexOf(QLatin1Char('/'));
    if (slash < 0)
        return QStringLiteral(".");
    return slash == 0 ? QStringLiteral("/") : path.left(slash);
}

QString reasonFor(int errorNumber)
{
    return QString::fromLocal8Bit(std::strerror(errorNumber));
}

// The folder locked for a plug-in folder, open; -1 with errno when none can be opened.
int openLockedFolder(const QString &pluginFolder, QString *path)
{
    QString folder = parentOf(QDir::cleanPath(pluginFolder));
    for (;;) {
        *path = folder;
        const int fd = ::open(pathBytes(folder).constData(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
        if (fd >= 0 || (errno != ENOENT && errno != ENOTDIR))
            return fd;
        const QString up = parentOf(folder);
        if (up == folder)
            return -1;
        folder = up;
    }
}

bool keyOf(int fd, Key *key)
{
    struct stat info;
    if (::fstat(fd, &info) != 0)
        return false;
    *key = {quint64(info.st_dev), quint64(info.st_ino)};
    return true;
}

QString describeProcess(qint64 pid, const QString &program, const QString &host = {})
{
    QString text = QStringLiteral("%1 (process %2")
                       .arg(program.isEmpty() ? QStringLiteral("another program") : program)
                       .arg(pid);
    if (!host.isEmpty() && host != QSysInfo::machineHostName())
        text += QStringLiteral(" on %1").arg(host);
    return text + QLatin1Char(')');
}

QString describeFlockHolder(const Key &key)
{
    const std::optional<qint64> pid = flockHolder(key.first, key.second);
    return pid ? describeProcess(*pid, processName(*pid)) : QString();
}

QString describeLockFileHolder(const QLockFile &file)
{
    qint64 pid = 0;
    QString host, program;
    if (!file.getLockInfo(&pid, &host, &program))
        return {};
    return describeProcess(pid, program, host);
}

// A holder killed between making the lock file and writing who it is leaves the file empty, and
// nobody could ever tell that it died. Holders write their name at once, so an empty file that has
// stood this long is nobody's.
bool isAbandoned(const QLockFile &file, const QString &path)
{
    qint64 pid = 0;
    QString host, program;
    if (file.getLockInfo(&pid, &host, &program))
        return false;
    const QDateTime modified = QFileInfo(path).lastModified();
    return modified.isValid() && modified.msecsTo(QDateTime::currentDateTime()) > kAbandonedMs;
}

QString inUse(const QString &holder)
{
    return QStringLiteral("the plug-in library is in use by %1")
        .arg(holder.isEmpty() ? QStringLiteral("another program") : holder);
}

// Where the kernel keeps no locks for the folder's file system: a lock file in it, taken over
// from a holder that is gone.
bool takeLockFile(const Target &target, const QDeadlineTimer &deadline,
                  std::unique_ptr<QLockFile> *taken, QString *holder, QString *failure)
{
    const QString path = target.path + QLatin1Char('/') + kLockFileName;
    auto file = std::make_unique<QLockFile>(path);
    // Only a dead holder's lock is stale; a long move across disks must not lose it to age.
    file->setStaleLockTime(0);
    for (;;) {
        if (file->tryLock(int(std::min<qint64>(deadline.remainingTime(), kPollMs)))) {
            *taken = std::move(file);
            return true;
        }
        if (file->error() != QLockFile::LockFailedError || deadline.hasExpired())
            break;
        if (isAbandoned(*file, path))
            file->removeStaleLockFile();
    }
    if (file->error() == QLockFile::LockFailedError) {
        *holder = describeLockFileHolder(*file);
        *failure = inUse(*holder);
    } else {
        *failure = QStringLiteral("cannot lock the folder \"%1\": its file system keeps no locks, "
                                  "and no lock file can be made in it")
                       .arg(target.path);
    }
    return false;
}

bool isUnsupported(int errorNumber)
{
    return errorNumber == ENOLCK || errorNumber == EOPNOTSUPP || errorNumber == ENOTSUP
           || errorNumber == EBADF || errorNumber == EINVAL;
}

// Takes one folder's lock for the table's run, waiting for another holder until the deadline.
bool take(LockTable &locks, FileOperations &files, Target &target, const QDeadlineTimer &deadline,
          QString *holder, QString *failure)
{
    for (;;) {
        const int result = files.lockFolder(target.fd);
        if (result == 0) {
            locks.keep(target.key, std::exchange(target.fd, -1), nullptr);
            return true;
        }
        if (isUnsupported(result)) {
            std::unique_ptr<QLockFile> file;
            if (!takeLockFile(target, deadline, &file, holder, failure))
                return false;
            locks.keep(target.key, -1, std::move(file));
            return true;
        }
        if (result != EWOULDBLOCK) {
            *failure = QStringLiteral("cannot lock the folder \"%1\": %2")
                           .arg(target.path, reasonFor(result));
            return false;
        }
        if (deadline.hasExpired()) {
            *holder = describeFlockHolder(target.key);
            *failure = inUse(*holder);
            return false;
        }
        QThread::msleep(quint64(std::min<qint64>(deadline.remainingTime(), kPollMs)));
    }
}

} // namespace

LibraryLock::LibraryLock(LockTable &locks, FileOperations &files, const QStringList &pluginFolders,
                         int waitMs)
    : m_locks(locks)
{
    const QDeadlineTimer deadline(waitMs < 0 ? defaultWaitMs() : waitMs);
    for (int attempt = 1;; ++attempt) {
        QList<Target> targets;
        for (const QString &folder : pluginFolders) {
            if (folder.isEmpty())
                continue;
            Target target;
            target.fd = openLockedFolder(folder, &target.path);
            if (target.fd < 0 || !keyOf(target.fd, &target.key)) {
                m_failure = QStringLiteral("cannot open the folder \"%1\" to lock it: %2")
                                .arg(target.path, reasonFor(errno));
                if (target.fd >= 0)
                    ::close(target.fd);
                closeAll(targets);
                return;
            }
            targets.append(std::move(target));
        }
        // One order for every mover, and each folder once: a link or a bind mount may show one
        // folder under two paths, and a second lock on it would wait for this process itself.
        std::sort(targets.begin(), targets.end(),
                  [](const Target &a, const Target &b) { return a.key < b.key; });
        bool taken = true;
        for (qsizetype i = 0; i < targets.size() && taken; ++i) {
            Target &target = targets[i];
            if (i > 0 && targets.at(i - 1).key == target.key)
                continue;
            if (!m_locks.share(target.key)
                && !take(m_locks, files, target, deadline, &m_holder, &m_failure))
                taken = false;
            if (taken)
                m_keys.append(target.key);
        }
        closeAll(targets);
        if (!taken) {
            release();
            return;
        }
        // A missing folder made while this lock waited has its own lock now: take that instead.
        bool same = true;
        for (const QString &folder : pluginFolders) {
            QString path;
            const int fd = folder.isEmpty() ? -1 : openLockedFolder(folder, &path);
            Key key;
            same = same && (fd < 0 || (keyOf(fd, &key) && m_keys.contains(key)));
            if (fd >= 0)
                ::close(fd);
        }
        if (same) {
            m_locked = true;
            return;
        }
        release();
        if (attempt == kAttempts) {
            m_failure = QStringLiteral("the plug-in folders kept changing while they were locked");
            return;
        }
    }
}

LibraryLock::~LibraryLock()
{
    release();
}

void LibraryLock::release()
{
    for (const Key &key : std::as_const(m_keys))
        m_locks.leave(key);
    m_keys.clear();
}

QString LibraryLock::lockedFolder(const QString &pluginFolder)
{
    QString path;
    const int fd = openLockedFolder(pluginFolder, &path);
    if (fd >= 0)
        ::close(fd);
    return path;
}

int LibraryLock::defaultWaitMs()
{
    return kDefaultWaitMs;
}

} // namespace korvane
