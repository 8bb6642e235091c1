#pragma once

#include "cli/Options.h"
#include "library/FormatManager.h"
#include "os/Roots.h"

#include <QList>

class QTextStream;

namespace korvane {

// Exit statuses of the tool.
enum ExitStatus { ExitDone = 0, ExitMoveFailed = 1, ExitUsage = 2 };

class AppContext;
class CliSession;

// Carries out parsed options: everything is checked before the first change on disk.
class CliRunner {
public:
    CliRunner(const Roots &defaults, QTextStream &out, QTextStream &err);
    int run(const Options &options);

private:
    int applySets(CliSession &session, const Options &options);
    int list(CliSession &session, const Options &options);
    int switchNamed(CliSession &session, const Options &options, bool on);
    int duplicates(CliSession &session, const Options &options);
    int saveSet(CliSession &session, const Options &options);
    int showSet(CliSession &session, const Options &options);
    // The library's lock for the rest of the run, or an error saying who holds it.
    bool lockLibrary(CliSession &session);
    int usageError(const QString &message);
    // Prints one line per plug-in moved and one error per failure; ExitMoveFailed on a failure.
    int report(const AppContext &context, int type, const QList<MoveOutcome> &outcomes);
    static QList<int> formats(const Options &options); // --format, or all four in order
    // The managers of those formats, each freshly scanned.
    static QList<FormatManager *> scanned(CliSession &session, const Options &options);

    Roots m_defaults;
    QTextStream &m_out;
    QTextStream &m_err;
};

// Runs one command line's options over the default roots (or the ones the options name) and
// returns the exit status.
int run(const Options &options, const Roots &defaults, QTextStream &out, QTextStream &err);

} // namespace korvane
