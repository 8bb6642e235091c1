#include "platform/ProcessList.h"

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <vector>

#include <dirent.h>
#include <fcntl.h>
#include <unistd.h>

namespace korvane {

namespace {

// ps shows arguments without a length limit; this one only keeps a hostile command line from
// filling memory.
constexpr qsizetype kCommandLimit = 64 * 1024;
constexpr qsizetype kNameLimit = 256;

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

} // namespace korvane
