#include "cli/CliRunner.h"
#include "cli/Options.h"
#include "os/Environment.h"
#include "os/PathBytes.h"
#include "os/SystemLog.h"

#include <QCoreApplication>
#include <QTextStream>

int main(int argc, char *argv[])
{
    QCoreApplication app(argc, argv);
    QCoreApplication::setApplicationName(QStringLiteral("KorvaneCMD"));
    QTextStream out(stdout);
    QTextStream err(stderr);

    // By their bytes: a plug-in or set named in bytes that are not UTF-8 must reach the disk as
    // they were given, which the decoding of arguments() would not keep.
    QStringList arguments;
    for (int i = 1; i < argc; ++i)
        arguments << korvane::pathFromBytes(argv[i]);
    const korvane::ParsedCommandLine parsed = korvane::parseCommandLine(arguments);
    if (!parsed.options) {
        err << "KorvaneCMD: " << parsed.error << "\nTry \"KorvaneCMD --help\".\n";
        return korvane::ExitUsage;
    }
    // The environment is read here once; everything below is handed what it uses of it.
    const korvane::Environment environment = korvane::Environment::read();
    korvane::sendSystemLogToSyslog(environment.settings.systemLog);
    return korvane::run(*parsed.options, environment, out, err);
}
