#pragma once

#include "cli/Options.h"
#include "library/FormatManager.h"
#include "os/Environment.h"

#include <QHash>
#include <QList>

class QTextStream;

namespace korvane {

// Exit statuses of the tool. ExitWouldMove only with --check: a script that knows only the first
// three never sees it.
enum ExitStatus { ExitDone = 0, ExitMoveFailed = 1, ExitUsage = 2, ExitWouldMove = 3 };

class AppContext;
class CliSession;
class MoveReport;

// Carries out parsed options: everything is checked before the first change on disk.
class CliRunner {
public:
    CliRunner(const Environment &environment, QTextStream &out, QTextStream &err);
    int run(const Options &options);

private:
    int applySets(CliSession &session, const Options &options);
    int applyList(CliSession &session, const Options &options);
    int list(CliSession &session, const Options &options);
    int switchNamed(CliSession &session, const Options &options, bool on);
    int details(CliSession &session, const Options &options);
    int duplicates(CliSession &session, const Options &options);
    int saveSet(CliSession &session, const Options &options);
    int showSet(CliSession &session, const Options &options);
    // The library's lock for the rest of the run, or an error saying who holds it. A check
    // goes on without it where the folders cannot be locked at all: it moves nothing.
    static bool lockLibrary(CliSession &session, const Options &options, MoveReport &report);
    int usageError(const QString &message);
    // Applies the manager's pending changes, or with --check foresees them, into the report;
    // before: each plug-in's state as scanned, ahead of the changes.
    static void applyPending(CliSession &session, const Options &options, FormatManager &manager,
                             const QHash<const Plugin *, bool> &before, MoveReport &report);
    static QList<int> formats(const Options &options); // --format, or all four in order
    // The managers of those formats, each freshly scanned.
    static QList<FormatManager *> scanned(CliSession &session, const Options &options);

    Environment m_environment;
    QTextStream &m_out;
    QTextStream &m_err;
};

// Runs one command line's options over the environment's roots (or the ones the options name)
// and returns the exit status.
int run(const Options &options, const Environment &environment, QTextStream &out, QTextStream &err);

} // namespace korvane
