#include "platform/LibraryLock.h"

#include "platform/FileOperations.h"
#include "platform/Locations.h"

#include <QDateTime>
#include <QDeadlineTimer>
#include <QFileInfo>
#include <QLockFile>
#include <QSysInfo>

#include <algorithm>
#include <map>
#include <memory>

namespace korvane {

namespace {

constexpr int kDefaultWaitMs = 10000;
constexpr qint64 kPollMs = 200;
constexpr qint64 kAbandonedMs = 5000;

struct Hold {
    std::unique_ptr<QLockFile> file;
    int count = 0;
};

// This process's holds by lock file. Never destroyed: a hold may end while statics go at exit.
std::map<QString, Hold> &holds()
{
    static auto *map = new std::map<QString, Hold>();
    return *map;
}

bool createFolders(FileOperations &files, const QString &folder, FileError *error)
{
    if (files.isDirectory(folder))
        return true;
    const QString parent = QFileInfo(folder).absolutePath();
    if (parent != folder && !createFolders(files, parent, error))
        return false;
    return files.createDirectory(folder, error) || files.isDirectory(folder);
}

QString describeHolder(const QLockFile &file)
{
    qint64 pid = 0;
    QString host, program;
    if (!file.getLockInfo(&pid, &host, &program))
        return {};
    if (program.isEmpty())
        program = QStringLiteral("another program");
    QString text = QStringLiteral("%1 (process %2").arg(program).arg(pid);
    if (!host.isEmpty() && host != QSysInfo::machineHostName())
        text += QStringLiteral(" on %1").arg(host);
    return text + QLatin1Char(')');
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

} // namespace

LibraryLock::LibraryLock(FileOperations &files, const QString &lockFile, int waitMs)
    : m_path(lockFile)
{
    auto held = holds().find(m_path);
    if (held != holds().end()) {
        ++held->second.count;
        m_locked = true;
        return;
    }

    FileError error;
    if (!createFolders(files, QFileInfo(m_path).absolutePath(), &error)) {
        m_failure =
            QStringLiteral("cannot create the folder \"%1\": %2").arg(error.path, error.reason);
        return;
    }
    auto file = std::make_unique<QLockFile>(m_path);
    // Only a dead holder's lock is stale; a long move across disks must not lose it to age.
    file->setStaleLockTime(0);
    const QDeadlineTimer deadline(waitMs < 0 ? defaultWaitMs() : waitMs);
    for (;;) {
        if (file->tryLock(int(std::min<qint64>(deadline.remainingTime(), kPollMs)))) {
            holds()[m_path] = Hold{std::move(file), 1};
            m_locked = true;
            return;
        }
        if (file->error() != QLockFile::LockFailedError || deadline.hasExpired())
            break;
        if (isAbandoned(*file, m_path))
            file->removeStaleLockFile();
    }
    switch (file->error()) {
    case QLockFile::LockFailedError:
        m_holder = describeHolder(*file);
        m_failure = QStringLiteral("the plug-in library is in use by %1")
                        .arg(m_holder.isEmpty() ? QStringLiteral("another program") : m_holder);
        break;
    case QLockFile::PermissionError:
        m_failure = QStringLiteral("no permission to create the lock file \"%1\"").arg(m_path);
        break;
    default:
        m_failure = QStringLiteral("cannot create the lock file \"%1\"").arg(m_path);
        break;
    }
}

LibraryLock::~LibraryLock()
{
    if (!m_locked)
        return;
    auto held = holds().find(m_path);
    if (held != holds().end() && --held->second.count == 0)
        holds().erase(held); // the QLockFile removes its file as it goes
}

QString LibraryLock::lockFilePath(const Locations &locations)
{
    return locations.dataFilePath(QStringLiteral("library.lock"));
}

int LibraryLock::defaultWaitMs()
{
    bool ok = false;
    const int wait = qEnvironmentVariableIntValue("KORVANE_LOCK_WAIT_MS", &ok);
    return ok && wait >= 0 ? wait : kDefaultWaitMs;
}

} // namespace korvane
