// The LV2 listing against lilv's lv2ls -n on Debian's real bundles copied into a temporary
// folder. Before every run of either, the copies' pages are dropped from the page cache
// (posix_fadvise, which needs no privilege), so both read the files cold; the programs' own code
// stays cached. Each side runs several times and keeps its best. Prints "name: value" lines;
// lv2_list_ratio is ours over lv2ls's, and should be at most 0.25.

#include "LinuxPluginFixtures.h"
#include "codec/Lv2Bundle.h"

#include <QCoreApplication>
#include <QDir>
#include <QDirIterator>
#include <QElapsedTimer>
#include <QProcess>
#include <QProcessEnvironment>
#include <QTemporaryDir>

#include <cstdio>
#include <fcntl.h>
#include <unistd.h>

using namespace korvane;

namespace {

constexpr int kRuns = 5;

void dropFromPageCache(const QString &folder)
{
    QDirIterator it(folder, QDir::Files | QDir::Hidden, QDirIterator::Subdirectories);
    while (it.hasNext()) {
        const QByteArray path = QFile::encodeName(it.next());
        const int fd = ::open(path.constData(), O_RDONLY | O_CLOEXEC);
        if (fd < 0)
            continue;
        ::fdatasync(fd);
        ::posix_fadvise(fd, 0, 0, POSIX_FADV_DONTNEED);
        ::close(fd);
    }
}

// What the scan will do: list the folder, read each bundle's plug-ins with their names.
qint64 listOurs(const QString &folder, int *plugins)
{
    QElapsedTimer timer;
    timer.start();
    int count = 0;
    const QStringList bundles = QDir(folder).entryList(QDir::Dirs | QDir::NoDotAndDotDot);
    for (const QString &bundle : bundles) {
        for (const Lv2Plugin &plugin : Lv2Bundle::read(folder + u'/' + bundle).plugins)
            count += plugin.name.isEmpty() ? 0 : 1;
    }
    *plugins = count;
    return timer.nsecsElapsed();
}

qint64 listLv2ls(const QString &folder, const QString &home, int *plugins)
{
    QProcess process;
    QProcessEnvironment environment;
    environment.insert(QStringLiteral("LV2_PATH"), folder);
    environment.insert(QStringLiteral("HOME"), home);
    environment.insert(QStringLiteral("LANG"), QStringLiteral("C.UTF-8"));
    process.setProcessEnvironment(environment);
    QElapsedTimer timer;
    timer.start();
    process.start(QStringLiteral("lv2ls"), {QStringLiteral("-n")});
    process.waitForFinished(300000);
    const qint64 elapsed = timer.nsecsElapsed();
    *plugins = int(process.readAllStandardOutput().count('\n'));
    return process.exitCode() == 0 ? elapsed : -1;
}

} // namespace

int main(int argc, char **argv)
{
    QCoreApplication app(argc, argv);
    if (!LinuxPluginFixtures::systemHas(QStringLiteral("/usr/lib/lv2/lsp-plugins.lv2"))) {
        std::fprintf(stderr, "lsp-plugins-lv2 is not installed (tools/setup.sh)\n");
        return 77;
    }
    QTemporaryDir root;
    LinuxPluginFixtures::copySystemFolder(QStringLiteral("/usr/lib/lv2"), root.path());
    const QString folder = root.path() + QStringLiteral("/usr/lib/lv2");

    qint64 ours = -1, theirs = -1;
    int ourPlugins = 0, theirPlugins = 0;
    for (int run = 0; run < kRuns; ++run) {
        dropFromPageCache(folder);
        const qint64 a = listOurs(folder, &ourPlugins);
        ours = ours < 0 ? a : std::min(ours, a);
        dropFromPageCache(folder);
        const qint64 b = listLv2ls(folder, root.path(), &theirPlugins);
        if (b < 0) {
            std::fprintf(stderr, "lv2ls failed (lilv-utils, tools/setup.sh)\n");
            return 1;
        }
        theirs = theirs < 0 ? b : std::min(theirs, b);
    }
    std::printf("lv2_bundles: %lld\n",
                qlonglong(QDir(folder).entryList(QDir::Dirs | QDir::NoDotAndDotDot).size()));
    std::printf("lv2_plugins_ours: %d\n", ourPlugins);
    std::printf("lv2_plugins_lv2ls: %d\n", theirPlugins);
    std::printf("lv2_list_ms: %.1f\n", double(ours) / 1e6);
    std::printf("lv2ls_n_ms: %.1f\n", double(theirs) / 1e6);
    std::printf("lv2_list_ratio: %.3f\n", double(ours) / double(theirs));
    return 0;
}
