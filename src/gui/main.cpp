// korvane: the desktop program. Reads its roots once, builds the controllers around the window's
// dialogs, and runs the controller's start and shut-down around the event loop.

#include "app/AboutText.h"
#include "app/AppContext.h"
#include "app/HelperRights.h"
#include "core/LinuxFormats.h"
#include "gui/Translations.h"
#include "gui/dialogs/QtUi.h"
#include "gui/main/MainWindow.h"
#include "os/Environment.h"
#include "os/SystemLog.h"

#include <QApplication>
#include <QCommandLineParser>
#include <QFileInfo>
#include <QSessionManager>
#include <QTextStream>

#include <optional>

namespace {

constexpr int ExitUsage = 2;

struct CommandLine {
    std::optional<korvane::Roots> roots; // empty: stop with exitCode
    int exitCode = 0;
};

// --root and --home as KorvaneCMD reads them: over KORVANE_ROOT and HOME, and only folders that
// exist, so a mistyped root is never scanned as empty and filled with fresh folders.
CommandLine parse(const QStringList &arguments, const korvane::Roots &fromEnvironment)
{
    QTextStream out(stdout);
    QTextStream err(stderr);
    QCommandLineParser parser;
    const QCommandLineOption root(QStringLiteral("root"), QString(), QStringLiteral("DIR"));
    const QCommandLineOption home(QStringLiteral("home"), QString(), QStringLiteral("DIR"));
    const QCommandLineOption help(QStringList{QStringLiteral("h"), QStringLiteral("help")});
    const QCommandLineOption version(QStringLiteral("version"));
    parser.addOption(root);
    parser.addOption(home);
    parser.addOption(help);
    parser.addOption(version);

    CommandLine result;
    auto usage = [&](const QString &error) {
        err << "korvane: " << error << "\nTry \"korvane --help\".\n";
        result.exitCode = ExitUsage;
        return result;
    };
    if (!parser.parse(arguments))
        return usage(parser.errorText());
    if (parser.isSet(help)) {
        out << "Usage: korvane [--root DIR] [--home DIR]\n"
               "Opens Korvane's window on the plug-ins of the system root and home folder.\n\n"
               "  --root DIR  the system root, the folder holding Library (default: "
               "$KORVANE_ROOT, or /)\n"
               "  --home DIR  the home folder (default: $HOME)\n"
               "  -h, --help  show this help and exit\n"
               "  --version   show the version and exit\n";
        return result;
    }
    if (parser.isSet(version)) {
        out << "korvane " << korvane::AboutText::version() << '\n';
        return result;
    }
    if (!parser.positionalArguments().isEmpty())
        return usage(QStringLiteral("unexpected argument \"%1\"")
                         .arg(parser.positionalArguments().constFirst()));
    if (parser.values(root).size() > 1 || parser.values(home).size() > 1)
        return usage(QStringLiteral("an option given twice"));

    for (const QCommandLineOption *option : {&root, &home})
        if (parser.isSet(*option) && parser.value(*option).isEmpty())
            return usage(QStringLiteral("--%1: no folder \"\"").arg(option->names().constFirst()));
    const QString rootValue = parser.value(root), homeValue = parser.value(home);
    if (const QString refusal = fromEnvironment.refusalWithOptions(rootValue, homeValue);
        !refusal.isEmpty())
        return usage(refusal);
    result.roots = fromEnvironment.withOptions(rootValue, homeValue);
    return result;
}

} // namespace

int main(int argc, char *argv[])
{
    // Read before the application exists: --help and a wrong option need no display.
    QStringList arguments;
    for (int i = 0; i < argc; ++i)
        arguments << QString::fromLocal8Bit(argv[i]);
    // The environment is read here once; everything below is handed what it uses of it.
    const korvane::Environment environment = korvane::Environment::read();
    korvane::sendSystemLogToSyslog(environment.settings.systemLog);
    const CommandLine commandLine = parse(arguments, environment.roots);
    if (!commandLine.roots)
        return commandLine.exitCode;

    QApplication app(argc, argv);
    QApplication::setApplicationName(QStringLiteral("Korvane"));
    QApplication::setApplicationVersion(korvane::AboutText::version());
    QApplication::setDesktopFileName(QStringLiteral("com.velmora.Korvane"));
    korvane::installTranslations(app);

    korvane::QtUi ui;
    korvane::AppContext::Parts parts;
    parts.roots = *commandLine.roots;
    parts.settings = environment.settings;
    parts.formats = korvane::withRunFolders(korvane::FormatTable::builtIn(), parts.roots,
                                            parts.roots.pluginPaths);
    parts.ui = &ui;
    // System plug-ins the person may not move alone go through korvane-helper, polkit asked once.
    korvane::HelperRights rights(*commandLine.roots, environment.settings.lockWaitMs);
    parts.rights = &rights;
    korvane::AppContext context(std::move(parts));

    korvane::MainWindow window(context);
    ui.setWindow(&window);
    // The desktop session may end without closing the window: save as at quit, go on until told.
    QObject::connect(&app, &QGuiApplication::commitDataRequest, &window,
                     [&window](QSessionManager &) { window.saveState(); });
    QObject::connect(&app, &QCoreApplication::aboutToQuit, &window, &korvane::MainWindow::shutDown);
    QObject::connect(&window, &korvane::MainWindow::closed, &app, &QCoreApplication::quit,
                     Qt::QueuedConnection);
    window.show();
    window.startWhenRunning();
    return app.exec();
}
