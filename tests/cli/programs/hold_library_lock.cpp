// Holds the lock of every format's plug-in folders under $KORVANE_ROOT and $HOME until it is
// killed: the other program of the command-line tests' lock cases.

#include "core/FormatTable.h"
#include "core/Locations.h"
#include "os/LibraryLock.h"
#include "os/LocalFileOperations.h"
#include "os/LockTable.h"

#include <QCoreApplication>

#include <cstdio>
#include <unistd.h>

int main(int argc, char *argv[])
{
    QCoreApplication app(argc, argv);
    const korvane::Roots roots = korvane::Roots::fromEnvironment();
    korvane::LocalFileOperations files(roots);
    korvane::LockTable locks;
    const korvane::LibraryLock lock(
        locks, files, korvane::Locations(roots).pluginFolders(korvane::FormatTable::builtIn()), 0);
    if (!lock.isLocked()) {
        std::fprintf(stderr, "%s\n", qPrintable(lock.failure()));
        return 1;
    }
    std::puts("locked");
    std::fflush(stdout);
    for (;;)
        ::pause();
}
