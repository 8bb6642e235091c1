#include "cli/Options.h"

#include <QRegularExpression>

#include <utility>

namespace korvane {

namespace {

const QString kProgram = QStringLiteral("KorvaneCMD");

struct CommandWord {
    const char *word;
    Options::Command command;
};

constexpr CommandWord kCommands[] = {
    {"list", Options::List},        {"enable", Options::Enable},
    {"disable", Options::Disable},  {"duplicates", Options::Duplicates},
    {"save-set", Options::SaveSet}, {"show-set", Options::ShowSet},
    {"apply", Options::ApplyList},  {"details", Options::Details},
    {"backup", Options::Backup},    {"restore", Options::Restore},
};

// The options of the plain-list apply: each names plug-ins or a file of names.
const QStringList kListOptions{QStringLiteral("--on"), QStringLiteral("--off"),
                               QStringLiteral("--on-file"), QStringLiteral("--off-file")};

std::optional<Options::Command> commandFromWord(const QString &word)
{
    for (const CommandWord &entry : kCommands)
        if (word == QLatin1String(entry.word))
            return entry.command;
    return std::nullopt;
}

QString commandWord(Options::Command command)
{
    for (const CommandWord &entry : kCommands)
        if (entry.command == command)
            return QLatin1String(entry.word);
    return {};
}

// "-AU", "-rtas", ...: the set options of the launch script, in any case.
std::optional<int> setOptionType(const FormatTable &formats, const QString &arg)
{
    if (!arg.startsWith(QLatin1Char('-')) || arg.startsWith(QLatin1String("--")))
        return std::nullopt;
    return formats.typeOfName(arg.mid(1));
}

bool takesValue(const FormatTable &formats, const QString &name)
{
    return name == QLatin1String("--root") || name == QLatin1String("--home")
           || name == QLatin1String("--format") || name == QLatin1String("--to")
           || kListOptions.contains(name) || setOptionType(formats, name).has_value();
}

bool isKnownOption(const FormatTable &formats, const QString &arg)
{
    const QString name = arg.section(QLatin1Char('='), 0, 0);
    static const QStringList flags{QStringLiteral("--json"),    QStringLiteral("--verbose"),
                                   QStringLiteral("-v"),        QStringLiteral("--help"),
                                   QStringLiteral("-h"),        QStringLiteral("--version"),
                                   QStringLiteral("--check"),   QStringLiteral("--only"),
                                   QStringLiteral("--replace"), QStringLiteral("--")};
    return flags.contains(arg) || takesValue(formats, name);
}

class Parser {
public:
    Parser(const QStringList &arguments, const FormatTable &formats)
        : m_args(arguments), m_formats(formats)
    {
    }

    ParsedCommandLine parse()
    {
        for (m_index = 0; m_index < m_args.size(); ++m_index)
            step(m_args.at(m_index));

        if (m_help || m_version) {
            Options result;
            result.command = m_help ? Options::Help : Options::Version;
            return {result, {}};
        }
        if (m_error.isEmpty())
            check();
        if (!m_error.isEmpty())
            return {std::nullopt, m_error};
        return {m_options, {}};
    }

private:
    void fail(const QString &message)
    {
        if (m_error.isEmpty())
            m_error = message;
    }

    void step(const QString &arg)
    {
        if (m_endOfOptions || !arg.startsWith(QLatin1Char('-')) || arg == QLatin1String("-")) {
            positional(arg);
            return;
        }
        if (arg == QLatin1String("--")) {
            m_endOfOptions = true;
        } else if (arg == QLatin1String("--help") || arg == QLatin1String("-h")) {
            m_help = true;
        } else if (arg == QLatin1String("--version")) {
            m_version = true;
        } else if (arg == QLatin1String("--json")) {
            m_options.json = true;
            m_jsonGiven = true;
        } else if (arg == QLatin1String("--verbose") || arg == QLatin1String("-v")) {
            m_options.verbose = true;
        } else if (arg == QLatin1String("--check")) {
            m_options.check = true;
        } else if (arg == QLatin1String("--replace")) {
            m_options.replace = true;
        } else if (arg == QLatin1String("--only")) {
            m_options.only = true;
            m_listGiven = QStringLiteral("--only");
        } else {
            QString name = arg;
            std::optional<QString> inlineValue;
            if (arg.startsWith(QLatin1String("--")) && arg.contains(QLatin1Char('='))) {
                name = arg.section(QLatin1Char('='), 0, 0);
                inlineValue = arg.section(QLatin1Char('='), 1);
            }
            if (!takesValue(m_formats, name)) {
                // "-wav" is most likely a set of a format that does not exist.
                static const QRegularExpression word(QStringLiteral("^-[A-Za-z0-9]+$"));
                fail(word.match(arg).hasMatch()
                         ? QStringLiteral(
                               "unknown option \"%1\": no format is named \"%2\" (use %3)")
                               .arg(arg, arg.mid(1), formatNames())
                         : QStringLiteral("unknown option \"%1\"").arg(arg));
                return;
            }
            const std::optional<QString> value = inlineValue ? inlineValue : nextValue();
            if (!value || value->isEmpty()) {
                fail(QStringLiteral("option %1 needs %2").arg(name, valueName(name)));
                return;
            }
            assign(name, *value);
        }
    }

    // The next argument, unless there is none or it is an option itself: "-AU --json" lacks its
    // set.
    std::optional<QString> nextValue()
    {
        if (m_index + 1 >= m_args.size() || isKnownOption(m_formats, m_args.at(m_index + 1)))
            return std::nullopt;
        return m_args.at(++m_index);
    }

    QString valueName(const QString &name) const
    {
        if (name == QLatin1String("--format"))
            return QStringLiteral("a format (%1)").arg(formatNames());
        if (setOptionType(m_formats, name))
            return QStringLiteral("a set document");
        if (name == QLatin1String("--on") || name == QLatin1String("--off"))
            return QStringLiteral("the name of a plug-in");
        if (name.endsWith(QLatin1String("-file")))
            return QStringLiteral("a file of names");
        if (name == QLatin1String("--to"))
            return QStringLiteral("a file");
        return QStringLiteral("a folder");
    }

    void assign(const QString &name, const QString &value)
    {
        auto once = [&](QString &field) {
            if (!field.isEmpty())
                fail(QStringLiteral("option %1 given twice").arg(name));
            field = value;
        };
        if (name == QLatin1String("--root")) {
            once(m_options.root);
        } else if (name == QLatin1String("--home")) {
            once(m_options.home);
        } else if (name == QLatin1String("--to")) {
            once(m_options.to);
        } else if (name == QLatin1String("--format")) {
            const std::optional<int> type = m_formats.typeOfName(value);
            if (!type)
                fail(QStringLiteral("unknown format \"%1\" (use %2)").arg(value, formatNames()));
            else if (m_options.format >= 0)
                fail(QStringLiteral("option --format given twice"));
            else
                m_options.format = *type;
        } else if (kListOptions.contains(name)) {
            if (m_listGiven.isEmpty())
                m_listGiven = name;
            if (name == QLatin1String("--on"))
                m_options.on << value;
            else if (name == QLatin1String("--off"))
                m_options.off << value;
            else
                once(name == QLatin1String("--on-file") ? m_options.onFile : m_options.offFile);
        } else if (const std::optional<int> type = setOptionType(m_formats, name)) {
            // Only as long as the last format given: equal options compare equal.
            if (m_options.sets.size() <= *type)
                m_options.sets.resize(*type + 1);
            once(m_options.sets[*type]);
        }
    }

    void positional(const QString &arg)
    {
        if (!m_commandGiven && !m_endOfOptions) {
            const std::optional<Options::Command> command = commandFromWord(arg);
            if (!command) {
                fail(QStringLiteral("unknown command \"%1\"").arg(arg));
                return;
            }
            m_options.command = *command;
            m_commandGiven = true;
            return;
        }
        m_positional << arg;
    }

    void check()
    {
        const Options::Command command = m_options.command;
        const QString word = commandWord(command);
        bool anySet = false;
        for (const Format &format : m_formats) {
            if (m_options.sets.value(format.type).isEmpty())
                continue;
            anySet = true;
            if (command != Options::Apply)
                fail(QStringLiteral("%1 cannot be combined with %2")
                         .arg(format.commandLineFlag(), word));
        }

        const bool formatAllowed = command != Options::Apply && command != Options::ShowSet;
        const bool formatRequired = command == Options::Enable || command == Options::Disable
                                    || command == Options::Details || command == Options::SaveSet
                                    || command == Options::ApplyList || command == Options::Backup
                                    || command == Options::Restore;
        const bool jsonAllowed = command != Options::SaveSet && command != Options::Backup
                                 && command != Options::Restore;

        if (command == Options::Apply && !anySet)
            fail(QStringLiteral("nothing to do: give a set (%1) or a command").arg(setFlags()));
        if (m_options.format >= 0 && !formatAllowed)
            fail(command == Options::Apply ? QStringLiteral("--format needs a command")
                                           : QStringLiteral("%1 takes no --format").arg(word));
        if (formatRequired && m_options.format < 0)
            fail(QStringLiteral("%1 needs --format").arg(word));
        if (m_jsonGiven && !jsonAllowed)
            fail(QStringLiteral("%1 takes no --json").arg(word));
        if (m_options.check && !movesPlugIns(command))
            fail(QStringLiteral("%1 takes no --check: it moves nothing").arg(word));
        if (!m_options.to.isEmpty() && command != Options::Backup)
            fail(QStringLiteral("--to needs the command backup"));
        if (command == Options::Backup && m_options.to.isEmpty())
            fail(QStringLiteral("backup needs --to and the archive to write"));
        if (m_options.replace && command != Options::Restore)
            fail(QStringLiteral("--replace needs the command restore"));
        if (!m_listGiven.isEmpty() && command != Options::ApplyList)
            fail(QStringLiteral("%1 needs the command apply").arg(m_listGiven));
        if (command == Options::ApplyList) {
            if (m_options.on.isEmpty() && m_options.off.isEmpty() && m_options.onFile.isEmpty()
                && m_options.offFile.isEmpty() && !m_options.only)
                fail(QStringLiteral("apply needs --on, --off, --on-file, --off-file or --only"));
            for (const QString &name : std::as_const(m_options.on))
                if (m_options.off.contains(name))
                    fail(QStringLiteral("\"%1\" is named both --on and --off").arg(name));
        }

        switch (command) {
        case Options::Enable:
        case Options::Disable:
        case Options::Details:
            if (m_positional.isEmpty())
                fail(QStringLiteral("%1 needs the name of at least one plug-in").arg(word));
            m_options.names = m_positional;
            break;
        case Options::SaveSet:
        case Options::ShowSet:
        case Options::Restore:
            if (m_positional.isEmpty() || m_positional.first().isEmpty())
                fail(QStringLiteral("%1 needs a file").arg(word));
            else if (m_positional.size() > 1)
                fail(QStringLiteral("unexpected argument \"%1\"").arg(m_positional.at(1)));
            else
                m_options.file = m_positional.first();
            break;
        default:
            if (!m_positional.isEmpty())
                fail(QStringLiteral("unexpected argument \"%1\"").arg(m_positional.first()));
            break;
        }
    }

    QString formatNames() const
    {
        QStringList names;
        for (const Format &format : m_formats)
            names << format.commandLineName();
        const QString last = names.takeLast();
        return names.isEmpty() ? last
                               : names.join(QStringLiteral(", ")) + QStringLiteral(" or ") + last;
    }
    QString setFlags() const
    {
        QStringList flags;
        for (const Format &format : m_formats)
            flags << format.commandLineFlag() + QStringLiteral(" SET");
        return flags.join(QStringLiteral(", "));
    }

    const QStringList &m_args;
    const FormatTable &m_formats;
    qsizetype m_index = 0;
    Options m_options;
    QStringList m_positional;
    QString m_error;
    bool m_commandGiven = false;
    bool m_endOfOptions = false;
    bool m_jsonGiven = false;
    QString m_listGiven; // the first of --on, --off, --on-file, --off-file, --only
    bool m_help = false;
    bool m_version = false;
};

} // namespace

bool movesPlugIns(Options::Command command)
{
    return command == Options::Apply || command == Options::ApplyList || command == Options::Enable
           || command == Options::Disable || command == Options::Restore;
}

ParsedCommandLine parseCommandLine(const QStringList &arguments, const FormatTable &formats)
{
    return Parser(arguments, formats).parse();
}

QStringList toCommandLine(const Options &options, const FormatTable &formats)
{
    if (options.command == Options::Help)
        return {QStringLiteral("--help")};
    if (options.command == Options::Version)
        return {QStringLiteral("--version")};

    QStringList args;
    // Inline, so that a folder named like an option ("-VST", "--json") is not taken for one.
    if (!options.root.isEmpty())
        args << QStringLiteral("--root=") + options.root;
    if (!options.home.isEmpty())
        args << QStringLiteral("--home=") + options.home;
    if (options.verbose)
        args << QStringLiteral("--verbose");
    if (options.json)
        args << QStringLiteral("--json");
    if (options.check)
        args << QStringLiteral("--check");
    for (const Format &format : formats)
        if (!options.sets.value(format.type).isEmpty())
            args << format.commandLineFlag() << options.sets.value(format.type);
    if (options.command == Options::Apply)
        return args;

    args << commandWord(options.command);
    if (options.format >= 0)
        args << QStringLiteral("--format") << formats.at(options.format).commandLineName();
    // Inline as well: a plug-in may be named "-VST" or "--json".
    for (const QString &name : options.on)
        args << QStringLiteral("--on=") + name;
    for (const QString &name : options.off)
        args << QStringLiteral("--off=") + name;
    if (!options.onFile.isEmpty())
        args << QStringLiteral("--on-file=") + options.onFile;
    if (!options.offFile.isEmpty())
        args << QStringLiteral("--off-file=") + options.offFile;
    if (options.only)
        args << QStringLiteral("--only");
    if (!options.to.isEmpty())
        args << QStringLiteral("--to=") + options.to;
    if (options.replace)
        args << QStringLiteral("--replace");
    QStringList positional = options.names;
    if (!options.file.isEmpty())
        positional << options.file;
    for (const QString &arg : std::as_const(positional)) {
        if (arg.startsWith(QLatin1Char('-'))) {
            args << QStringLiteral("--");
            break;
        }
    }
    return args + positional;
}

QString versionText()
{
    return kProgram + QLatin1Char(' ') + QStringLiteral(KORVANE_VERSION);
}

namespace {

// The rows after the first four, with their folders and set flags.
QString formatsHelp()
{
    QString text = QStringLiteral(
        "\nMore formats (--format NAME; a set document with -FLAG SET, as -AU SET):\n");
    for (const Format &format : FormatTable::builtIn()) {
        if (format.helpText.isEmpty())
            continue;
        const QString name =
            format.commandLineName() + QStringLiteral(", ") + format.commandLineFlag().toUpper();
        text += QStringLiteral("  %1 %2\n").arg(name.leftJustified(22), format.helpText);
    }
    text += QStringLiteral(
        "  The Linux formats also search the folders their hosts' variables name (LV2_PATH,\n"
        "  VST3_PATH, CLAP_PATH, LADSPA_PATH, DSSI_PATH, VST_PATH, LXVST_PATH). A plug-in under\n"
        "  /usr outside /usr/local belongs to the distribution's package manager: it is listed\n"
        "  with its package, and switching it is refused (exit 1) naming the package; remove\n"
        "  the package or set the host's folders to hide it.\n");
    return text;
}

} // namespace

QString helpText()
{
    return QStringLiteral(
               "Usage: KorvaneCMD [--root DIR] [--home DIR] [--check] [--json]\n"
               "                  [-AU SET] [-RTAS SET] [-MAS SET] [-VST SET] [-LV2 SET] ...\n"
               "       KorvaneCMD [--root DIR] [--home DIR] apply --format F [--on NAME]... [--off "
               "NAME]...\n"
               "                  [--on-file FILE] [--off-file FILE] [--only] [--check] [--json]\n"
               "       KorvaneCMD [--root DIR] [--home DIR] COMMAND [--format F] [--json] "
               "[ARGUMENT...]\n"
               "\n"
               "Switches audio plug-ins on and off the way Korvane does: a plug-in is off while it "
               "lies "
               "in\n"
               "the \" (Disabled)\" folder beside its format's folder.\n"
               "\n"
               "Applying set documents:\n"
               "  -AU SET      apply an Audio Units set document (.aukorv)\n"
               "  -RTAS SET    apply an RTAS set document (.rtaskorv)\n"
               "  -MAS SET     apply a MAS set document (.maskorv)\n"
               "  -VST SET     apply a VST set document (.vstkorv)\n"
               "  SET may be a pipe, such as /dev/stdin; each document is read once.\n"
               "  For each format given, in the order AU, RTAS, MAS, VST: the format's folders are "
               "scanned,\n"
               "  the set is merged in and every plug-in whose state differs is moved, companion "
               "content\n"
               "  along when the format's move-content preference is on. Each move prints one "
               "line:\n"
               "  \"enabled NAME\", \"disabled NAME\", \"moved to system NAME\", \"moved to user "
               "NAME\", "
               "or a\n"
               "  state and a place joined by \"and\". Set entries naming no installed plug-in "
               "are\n"
               "  warnings on standard error. A plug-in whose place holds another installed copy "
               "stays\n"
               "  where it is, as an error. Whatever a move puts in the trash (a file in the way, "
               "a copy\n"
               "  identical to the one already there) is said on standard error.\n"
               "\n"
               "Applying a list of names:\n"
               "  apply --format F    switch the format's plug-ins named with these and apply, as "
               "a set\n"
               "  --on NAME           switch NAME on; may be given again\n"
               "  --off NAME          switch NAME off; may be given again\n"
               "  --on-file FILE      switch on each name in FILE\n"
               "  --off-file FILE     switch off each name in FILE\n"
               "  --only              switch off every plug-in of the format not named on\n"
               "  NAME as enable and disable take it. FILE holds one name a line; blank lines, "
               "lines\n"
               "  starting with \"#\" and spaces around a name are ignored; it must be a plain "
               "file of\n"
               "  at most 1 MiB. A name that matches no plug-in is an error (exit 1), a name both "
               "on and\n"
               "  off a wrong command line (exit 2); either way nothing moves.\n"
               "\n"
               "Commands:\n"
               "  list [--format F] [--json]    every plug-in, all formats unless --format: "
               "format, "
               "on/off,\n"
               "                                system/user, group, architecture, vendor, "
               "version,\n"
               "                                package (the last three where a plug-in's files "
               "say\n"
               "                                them), path; one plug-in a line, a line break, "
               "tab or\n"
               "                                backslash in a name escaped (\\n, \\t, \\\\). "
               "Titles\n"
               "                                at a terminal; fitted to its width (or "
               "$COLUMNS), the\n"
               "                                package, version, vendor and group go first\n"
               "  enable --format F NAME...     switch on every plug-in of each name and apply\n"
               "  disable --format F NAME...    switch off every plug-in of each name and apply\n"
               "                                NAME as list shows it (Foo.component), or without "
               "its\n"
               "                                extension (Foo) where no plug-in has that exact "
               "name.\n"
               "                                An unknown NAME changes nothing.\n"
               "  duplicates [--format F] [--json]\n"
               "                                names installed more than once: a line per copy\n"
               "                                with its count, state, version and folder\n"
               "  save-set --format F FILE      write the format's current state as a set "
               "document\n"
               "  show-set FILE [--json]        print the items of a set document\n"
               "  details --format F NAME...    what a plug-in's files say; for CLAP, LADSPA and "
               "DSSI\n"
               "                                also what loading it tells, in a separate process\n"
               "                                with a time and memory limit (never in a scan)\n"
               "  backup --format F --to FILE   write every plug-in of the format (on and off, "
               "system\n"
               "                                and user) and a set of their states into FILE, a "
               "tar\n"
               "                                archive compressed with xz; nothing is left at "
               "FILE\n"
               "                                when it fails\n"
               "  restore --format F [--replace] FILE\n"
               "                                put the plug-ins of a backup back where they were, "
               "on\n"
               "                                or off as saved. The whole archive is checked "
               "first: a\n"
               "                                damaged one changes nothing (exit 2). A plug-in "
               "that is\n"
               "                                installed (on or off) stays, and is named on "
               "standard\n"
               "                                error; with --replace the installed copy goes to "
               "the\n"
               "                                trash and the saved one takes its place\n"
               "\n"
               "Options (before or after the command):\n"
               "  --format F      au, rtas, mas, vst or a format below, in any case\n"
               "  --check         with a set, apply, enable, disable or restore: scan, merge "
               "and\n"
               "                  report every move that would be made, as a real run reports "
               "it, and\n"
               "                  move nothing; exit 3\n"
               "                  when a move is pending, 0 when the plug-ins are already as "
               "asked\n"
               "  --json          list, duplicates, show-set: a JSON array instead of text "
               "columns. A "
               "set,\n"
               "                  apply, enable, disable: one JSON object (changed, check, moves, "
               "warnings,\n"
               "                  errors, before, after) instead of the lines; errors go to "
               "standard "
               "error\n"
               "                  as well\n"
               "  --root DIR      the system root, the folder holding Library (default: "
               "$KORVANE_ROOT, or "
               "/)\n"
               "  --home DIR      the home folder (default: $HOME); either must be a folder\n"
               "  -v, --verbose   also print diagnostics and the questions answered on the way\n"
               "  -h, --help      this text\n"
               "  --version       the version\n"
               "  --              everything after it is an argument, not an option\n"
               "\n"
               "Only one program moves plug-ins at a time: apply, enable, disable and restore wait "
               "for\n"
               "another that is moving them (Korvane or KorvaneCMD), up to $KORVANE_LOCK_WAIT_MS\n"
               "milliseconds (default 10000). list, duplicates, show-set and details change "
               "nothing on\n"
               "disk and never wait; backup writes nothing but its archive.\n"
               "With --check nothing on disk changes either; the wait is only for the scan.\n"
               "\n"
               "Exit status: 0 done; 1 a plug-in could not be moved, a file not written, a name "
               "matched\n"
               "no plug-in, or another program kept the plug-ins locked (each on standard error "
               "with "
               "path\n"
               "and reason); 2 a wrong command line or an unreadable set document or list, with "
               "nothing\n"
               "changed. With --check: 3 when at least one move would be made, 0 when none would, "
               "1 when\n"
               "a move would fail. Only --check ever exits 3, so scripts written for the statuses "
               "above\n"
               "keep working.\n"
               "\n"
               "The JSON of a move: \"changed\" is true when plug-ins moved (with --check: would "
               "move);\n"
               "\"moves\" holds each move with \"name\", \"format\", \"from\", \"to\", \"action\" "
               "(\"enable\",\n"
               "\"disable\", \"move to system\", \"move to user\", or two joined by \" and \"), "
               "\"outcome\"\n"
               "(\"done\", \"would\", \"failed\", \"refused\": another installed copy lies at the "
               "target,\n"
               "\"stopped\") and \"error\" where there is one; \"warnings\" and \"errors\" hold "
               "the lines "
               "said on\n"
               "standard error; \"before\" and \"after\" name the plug-ins that are on, per "
               "format, "
               "before\n"
               "and after the run (with --check: after it, were it made).\n"
               "\n"
               "Examples:\n"
               "  KorvaneCMD -AU ~/Documents/Live.aukorv -VST ~/Documents/Live.vstkorv\n"
               "  KorvaneCMD list --format au\n"
               "  KorvaneCMD duplicates --json\n"
               "  KorvaneCMD disable --format vst \"Iris Pad.vst\"\n"
               "  KorvaneCMD --root /tmp/demo/root --home /tmp/demo/home save-set --format au "
               "Live.aukorv\n"
               "  KorvaneCMD apply --format au --on-file room-a.txt --only --check --json\n")
           + formatsHelp();
}

} // namespace korvane
