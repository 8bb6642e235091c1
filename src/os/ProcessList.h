#pragma once

#include <QByteArray>
#include <QString>

#include <optional>

namespace korvane {

// The running processes as "PID COMMAND" lines in ascending PID order, read from /proc: the
// command is the arguments joined by spaces, a kernel thread's name in brackets. Control
// characters in an argument show as '?', so no argument can forge a line of its own. ok is false
// when /proc cannot be listed.
QByteArray readProcessList(bool *ok);

// The process holding the kernel's flock(2) lock on a file (device and inode as stat gives them),
// from /proc/locks; none when nobody does or it cannot be told.
std::optional<qint64> flockHolder(quint64 device, quint64 inode);
// A process's program name (/proc/PID/comm, completed from its first argument where the kernel
// cut it short); empty when the process is gone.
QString processName(qint64 pid);
// When a process started, in clock ticks after boot (/proc/PID/stat, field 22): with its pid it
// names the process for good, as a pid alone may be reused. None when the process is gone.
std::optional<quint64> processStartTime(qint64 pid);

} // namespace korvane
