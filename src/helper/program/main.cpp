// korvane-helper: moves plug-ins inside the system-wide plug-in folders for a person who may not
// change them, run as root through pkexec:
//
//   pkexec /usr/libexec/korvane/korvane-helper --root R --home H [--wait-ms N] < request
//
// The request on standard input is JSON (helper/HelperProtocol.h); each move's outcome goes to
// standard output as one JSON line, then a closing line. Exit status: 0 every move made, 1 some
// failed, 2 the request was refused and nothing touched, 3 another mover held the folders.
// Nothing is taken from the environment, no shell is started, and no link on the way is followed.

#include "helper/HelperRun.h"
#include "os/LocalFileOperations.h"
#include "os/PathBytes.h"

#include <QByteArray>
#include <QStringList>

#include <cerrno>
#include <csignal>
#include <cstdio>

#include <sys/stat.h>
#include <unistd.h>

namespace {

void writeOut(const QByteArray &line)
{
    std::fwrite(line.constData(), 1, size_t(line.size()), stdout);
    std::fflush(stdout);
}

// Standard input up to one byte past the limit, so that a larger request is known to be one.
bool readRequest(QByteArray *request)
{
    char buffer[64 * 1024];
    for (;;) {
        const ssize_t got = ::read(STDIN_FILENO, buffer, sizeof buffer);
        if (got < 0 && errno == EINTR)
            continue;
        if (got < 0)
            return false;
        if (got == 0)
            return true;
        request->append(buffer, got);
        if (request->size() > korvane::helper::MaxRequestBytes)
            return true;
    }
}

int refuse(const QString &why)
{
    korvane::helper::Ending ending;
    ending.kind = korvane::helper::Ending::Refused;
    ending.error = why;
    writeOut(korvane::helper::encodeEnding(ending));
    std::fprintf(stderr, "korvane-helper: %s\n", why.toLocal8Bit().constData());
    return korvane::helper::ExitRefused;
}

} // namespace

int main(int argc, char *argv[])
{
    using namespace korvane;
    // Folders made for a target are root's and readable by all, whatever mask pkexec passed on.
    ::umask(022);
    // A program that went away while its moves were made does not stop them halfway through the
    // list: each move is whole or not made, and the next scan shows where everything is.
    std::signal(SIGPIPE, SIG_IGN);
    QStringList arguments;
    for (int i = 1; i < argc; ++i)
        arguments << pathFromBytes(argv[i]);
    QString why;
    const std::optional<helper::HelperArguments> parsed = helper::parseArguments(arguments, &why);
    if (!parsed)
        return refuse(why);
    QByteArray request;
    if (!readRequest(&request))
        return refuse(QStringLiteral("the request could not be read"));
    // Default roots: no trash, so nothing is ever written into a person's home.
    LocalFileOperations files;
    const int exit = helper::runRequest(request, *parsed, files, writeOut);
    if (exit == helper::ExitRefused || exit == helper::ExitLockNotTaken)
        std::fputs("korvane-helper: nothing was moved\n", stderr);
    return exit;
}
