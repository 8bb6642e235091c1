#include "cli/CliRunner.h"
#include "cli/Options.h"
#include "platform/Roots.h"

#include <QCoreApplication>
#include <QTextStream>

int main(int argc, char *argv[])
{
    QCoreApplication app(argc, argv);
    QCoreApplication::setApplicationName(QStringLiteral("KorvaneCMD"));
    QTextStream out(stdout);
    QTextStream err(stderr);

    const korvane::ParsedCommandLine parsed =
        korvane::parseCommandLine(QCoreApplication::arguments().mid(1));
    if (!parsed.options) {
        err << "KorvaneCMD: " << parsed.error << "\nTry \"KorvaneCMD --help\".\n";
        return korvane::ExitUsage;
    }
    // The environment is read here once; everything below is handed its roots.
    return korvane::run(*parsed.options, korvane::Roots::fromEnvironment(), out, err);
}
