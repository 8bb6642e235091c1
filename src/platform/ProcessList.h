#pragma once

#include <QByteArray>

namespace korvane {

// The running processes as "PID COMMAND" lines in ascending PID order, read from /proc: the
// command is the arguments joined by spaces, a kernel thread's name in brackets. Control
// characters in an argument show as '?', so no argument can forge a line of its own. ok is false
// when /proc cannot be listed.
QByteArray readProcessList(bool *ok);

} // namespace korvane
