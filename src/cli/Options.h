#pragma once

#include "core/FormatTable.h"

#include <QString>
#include <QStringList>
#include <array>
#include <optional>

namespace korvane {

// What KorvaneCMD was asked to do: the command line as data, parsed before anything is touched.
struct Options {
    // Apply: the set documents given with -AU, -VST, ...; ApplyList: "apply", a set as names.
    enum Command {
        Apply,
        List,
        Enable,
        Disable,
        Duplicates,
        SaveSet,
        ShowSet,
        ApplyList,
        Details,
        Backup,
        Restore,
        Help,
        Version
    };

    Command command = Apply;
    QString root{};        // --root; empty: KORVANE_ROOT as it stands
    QString home{};        // --home; empty: HOME as it stands
    QList<QString> sets{}; // -AU, -RTAS, -MAS, -VST, ... by type index; empty: none
    int format = -1;       // --format as a type index; -1: every format
    bool json = false;
    bool verbose = false;
    QStringList names{}; // enable, disable
    QString file{};      // save-set, show-set
    bool check = false;  // --check: the movers report what they would move, and move nothing
    QStringList on{};    // apply: --on, in the order given
    QStringList off{};   // apply: --off
    QString onFile{};    // apply: --on-file, names one a line
    QString offFile{};   // apply: --off-file
    bool only = false;   // apply: every plug-in of the format not named on goes off

    QString to{};         // backup: --to, the archive to write (restore reads file)
    bool replace = false; // restore: an installed copy goes to the trash for the saved one

    bool operator==(const Options &) const = default;
};

// Whether the command moves plug-ins (a set, apply, enable, disable): the commands that lock the
// library and take --check.
bool movesPlugIns(Options::Command command);

struct ParsedCommandLine {
    std::optional<Options> options; // empty when the command line is wrong
    QString error;                  // why, naming the offending argument
};

// The arguments after the program name. Pure: no file or environment is looked at.
ParsedCommandLine parseCommandLine(const QStringList &arguments,
                                   const FormatTable &formats = FormatTable::builtIn());
// The inverse: arguments that parse back to the same options.
QStringList toCommandLine(const Options &options,
                          const FormatTable &formats = FormatTable::builtIn());

QString helpText();
QString versionText();

} // namespace korvane
