#include "os/ProcessList.h"

#include <QList>

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <vector>

#include <dirent.h>
#include <fcntl.h>
#include <sys/sysmacros.h>
#include <unistd.h>

namespace korvane {

namespace {

// ps shows arguments without a length limit; this one only keeps a hostile command line from
// filling memory.
constexpr qsizetype kCommandLimit = 64 * 1024;
constexpr qsizetype kNameLimit = 256;
// The kernel keeps this many bytes of a program's name, its final NUL included.
constexpr qsizetype kCommLength = 16;
constexpr qsizetype kLocksLimit = 4 * 1024 * 1024;

QByteArray readLimited(const QByteArray &path, qsizetype limit)
{
    QByteArray bytes;
    const int fd = ::open(path.constData(), O_RDONLY | O_CLOEXEC);
    if (fd < 0)
        return bytes;
    // Files under /proc report no size: read until the end or the limit.
    char buffer[4096];
    while (bytes.size() < limit) {
        const ssize_t got =
            ::read(fd, buffer, size_t(std::min<qsizetype>(sizeof buffer, limit - bytes.size())));
        if (got < 0 && errno == EINTR)
            continue;
        if (got <= 0)
            break;
        bytes.append(buffer, qsizetype(got));
    }
    ::close(fd);
    return bytes;
}

QByteArray commandOf(const QByteArray &pidText)
{
    const QByteArray folder = "/proc/" + pidText;
    QByteArray command = readLimited(folder + "/cmdline", kCommandLimit);
    while (command.endsWith('\0'))
        command.chop(1);
    if (command.isEmpty()) {
        // Kernel threads and zombies have no arguments; ps shows their name in brackets.
        QByteArray name = readLimited(folder + "/comm", kNameLimit).trimmed();
        if (name.isEmpty())
            return {};
        command = '[' + name + ']';
    }
    for (char &c : command) {
        if (c == '\0')
            c = ' ';
        else if (static_cast<unsigned char>(c) < 0x20 || c == 0x7f)
            c = '?';
    }
    return command;
}

} // namespace

QByteArray readProcessList(bool *ok)
{
    if (ok)
        *ok = false;
    DIR *dir = ::opendir("/proc");
    if (!dir)
        return {};
    std::vector<long> pids;
    while (const dirent *entry = ::readdir(dir)) {
        char *end = nullptr;
        const long pid = std::strtol(entry->d_name, &end, 10);
        if (pid > 0 && end && *end == '\0' && entry->d_name[0] >= '0' && entry->d_name[0] <= '9')
            pids.push_back(pid);
    }
    ::closedir(dir);
    std::sort(pids.begin(), pids.end());

    QByteArray list;
    for (long pid : pids) {
        const QByteArray pidText = QByteArray::number(qlonglong(pid));
        const QByteArray command = commandOf(pidText);
        if (command.isEmpty()) // gone while we looked
            continue;
        list += pidText.rightJustified(5, ' ') + ' ' + command + '\n';
    }
    if (ok)
        *ok = true;
    return list;
}

std::optional<qint64> flockHolder(quint64 device, quint64 inode)
{
    // "1: FLOCK  ADVISORY  WRITE 4242 08:01:1234567 0 EOF"; a waiter's line has "->" after the
    // number. The device is the file system's, in hexadecimal major and minor.
    const QByteArray locks = readLimited("/proc/locks", kLocksLimit);
    std::optional<qint64> exact, byInode;
    int inodeMatches = 0;
    for (const QByteArray &line : locks.split('\n')) {
        const QList<QByteArray> fields = line.simplified().split(' ');
        if (fields.size() < 6 || fields.at(1) != "FLOCK")
            continue;
        const QList<QByteArray> place = fields.at(5).split(':');
        bool pidOk = false, majorOk = false, minorOk = false, inodeOk = false;
        const qint64 pid = fields.at(4).toLongLong(&pidOk);
        if (place.size() != 3 || !pidOk || pid <= 0)
            continue;
        const quint64 major = place.at(0).toULongLong(&majorOk, 16);
        const quint64 minor = place.at(1).toULongLong(&minorOk, 16);
        if (place.at(2).toULongLong(&inodeOk) != inode || !inodeOk || !majorOk || !minorOk)
            continue;
        if (major == ::major(device) && minor == ::minor(device))
            exact = pid;
        byInode = pid;
        ++inodeMatches;
    }
    // Some file systems show stat a device of their own; then the inode alone, where it is clear.
    if (!exact && inodeMatches == 1)
        return byInode;
    return exact;
}

QString processName(qint64 pid)
{
    const QByteArray folder = "/proc/" + QByteArray::number(pid);
    const QByteArray name = readLimited(folder + "/comm", kNameLimit).trimmed();
    if (name.size() == kCommLength - 1) {
        // Cut short: the first argument's last step, where it begins with what was kept.
        const QByteArray command = readLimited(folder + "/cmdline", kCommandLimit);
        QByteArray first = command.left(command.indexOf('\0'));
        first = first.mid(first.lastIndexOf('/') + 1);
        if (first.startsWith(name))
            return QString::fromUtf8(first);
    }
    return QString::fromUtf8(name);
}

std::optional<quint64> processStartTime(qint64 pid)
{
    const QByteArray stat = readLimited("/proc/" + QByteArray::number(pid) + "/stat", 4096);
    // "PID (COMM) STATE PPID ...": the name may hold spaces and brackets, so fields count from
    // the last closing bracket, where the third field begins.
    const qsizetype close = stat.lastIndexOf(')');
    if (close < 0)
        return std::nullopt;
    const QList<QByteArray> fields = stat.mid(close + 1).simplified().split(' ');
    constexpr qsizetype kStartTime = 22 - 3;
    bool ok = false;
    const quint64 start = fields.value(kStartTime).toULongLong(&ok);
    return ok ? std::optional<quint64>(start) : std::nullopt;
}

} // namespace korvane
