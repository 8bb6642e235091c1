#pragma once

class QTextStream;

namespace korvane {

class CliSession;
struct Options;

// "backup --format F --to FILE" and "restore --format F [--replace] FILE": exit 0 done, 1 a
// failure (the archive not written, a plug-in not put back, the library locked), 2 a damaged
// archive or one of another format, with nothing changed.
int backupCommand(CliSession &session, const Options &options, QTextStream &out, QTextStream &err);
int restoreCommand(CliSession &session, const Options &options, QTextStream &out, QTextStream &err);

} // namespace korvane
