// The LV2 listing through the scan against lilv's lv2ls -n on Debian's real bundles copied into
// a temporary root, a rescan of the unchanged bundles, and a scan of a synthetic library of
// 10,000 plug-ins across the six Linux formats against the work it cannot avoid. Before every run
// of either, the copies' pages are dropped from the page cache (posix_fadvise, which needs no
// privilege), so both read the files cold; the programs' own code stays cached. Each side runs
// several times and keeps its best. Prints "name: value" lines; lv2_list_ratio is ours over
// lv2ls's, and should be at most 0.25; lv2_rescan_ms_per_1000 under 20; linux_scan_ratio_10000 at
// most 1.2.

#include "LinuxPluginFixtures.h"
#include "app/AppContext.h"
#include "codec/Lv2Bundle.h"
#include "core/FormatTable.h"
#include "library/FormatManager.h"

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

int typeOf(const char *name)
{
    return *FormatTable::builtIn().typeOfName(QLatin1String(name));
}

// The scan of one format under the roots, as the program makes it; the named plug-ins it found.
qint64 scanFormats(AppContext &context, const QList<int> &types, int *plugins)
{
    QElapsedTimer timer;
    timer.start();
    int count = 0;
    for (const int type : types) {
        FormatManager *manager = context.manager(type);
        manager->rescan();
        for (const PluginPtr &item : manager->items())
            if (const PluginMetadata *metadata = item->metadata())
                for (const PluginMetadata::Inner &inner : metadata->plugins)
                    count += inner.name.isEmpty() ? 0 : 1;
    }
    *plugins = count;
    return timer.nsecsElapsed();
}

std::unique_ptr<AppContext> contextAt(const QString &root, const QString &home)
{
    AppContext::Parts parts;
    parts.roots = Roots::at(root, home);
    parts.prepareWindow = false;
    return std::make_unique<AppContext>(std::move(parts));
}

// 10,000 plug-ins across the six formats' user folders: LV2 bundles with a manifest and a data
// file, VST 3 bundles with a module info, and shared objects holding a real ELF header.
void makeSyntheticLibrary(const QString &home, const QByteArray &elf)
{
    const auto write = [](const QString &path, const QByteArray &bytes) {
        QFile file(path);
        if (file.open(QIODevice::WriteOnly))
            file.write(bytes);
    };
    for (int i = 0; i < 10000; ++i) {
        const QString n = QString::number(i);
        switch (i % 6) {
        case 0: {
            const QString bundle = home + QStringLiteral("/.lv2/P") + n + QStringLiteral(".lv2");
            QDir().mkpath(bundle);
            write(bundle + QStringLiteral("/manifest.ttl"),
                  "@prefix lv2: <http://lv2plug.in/ns/lv2core#> .\n"
                  "@prefix rdfs: <http://www.w3.org/2000/01/rdf-schema#> .\n<urn:p:"
                      + n.toUtf8()
                      + "> a lv2:Plugin ; lv2:binary <p.so> ; rdfs:seeAlso <p.ttl> .\n");
            write(bundle + QStringLiteral("/p.ttl"),
                  "@prefix doap: <http://usefulinc.com/ns/doap#> .\n<urn:p:" + n.toUtf8()
                      + "> doap:name \"P" + n.toUtf8() + "\" .\n");
            break;
        }
        case 1: {
            const QString contents =
                home + QStringLiteral("/.vst3/P") + n + QStringLiteral(".vst3/Contents");
            QDir().mkpath(contents + QStringLiteral("/x86_64-linux"));
            QDir().mkpath(contents + QStringLiteral("/Resources"));
            write(contents + QStringLiteral("/Resources/moduleinfo.json"),
                  "{ // written by the SDK\n \"Name\": \"P" + n.toUtf8()
                      + "\", \"Vendor\": \"V\", \"Version\": \"1.0\",\n \"Classes\": [ {"
                        "\"CID\": \"00000000000000000000000000000001\", \"Category\": "
                        "\"Audio Module Class\", \"Name\": \"P\", },\n ],\n}\n");
            break;
        }
        default: {
            static const char *const folders[] = {"",          "",        "/.clap/",
                                                  "/.ladspa/", "/.dssi/", "/.vst/"};
            const QString folder = home + QLatin1String(folders[i % 6]);
            QDir().mkpath(folder);
            write(folder + QStringLiteral("P") + n
                      + (i % 6 == 2 ? QStringLiteral(".clap") : QStringLiteral(".so")),
                  elf);
        }
        }
    }
}

// What no scan can skip: list each folder, read each manifest and data file, module info and
// header once.
qint64 unavoidableWork(const QString &home)
{
    QElapsedTimer timer;
    timer.start();
    qint64 bytes = 0;
    for (const char *name : {"/.lv2", "/.vst3", "/.clap", "/.ladspa", "/.dssi", "/.vst"}) {
        const QString folder = home + QLatin1String(name);
        for (const QString &entry :
             QDir(folder).entryList(QDir::AllEntries | QDir::NoDotAndDotDot)) {
            const QString path = folder + u'/' + entry;
            const QStringList files =
                entry.endsWith(QLatin1String(".lv2"))
                    ? QStringList{path + QStringLiteral("/manifest.ttl"),
                                  path + QStringLiteral("/p.ttl")}
                : entry.endsWith(QLatin1String(".vst3"))
                    ? QStringList{path + QStringLiteral("/Contents/Resources/moduleinfo.json")}
                    : QStringList{path};
            if (entry.endsWith(QLatin1String(".vst3")))
                bytes += QDir(path + QStringLiteral("/Contents")).entryList().size();
            for (const QString &file : files) {
                QFile f(file);
                if (f.open(QIODevice::ReadOnly))
                    bytes += f.read(64 * 1024).size();
            }
        }
    }
    return bytes > 0 ? timer.nsecsElapsed() : -1;
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
    // "synthetic": only the 10,000 plug-ins, for profiling the scan without lv2ls's minutes.
    const bool syntheticOnly = argc > 1 && qstrcmp(argv[1], "synthetic") == 0;
    if (!LinuxPluginFixtures::systemHas(QStringLiteral("/usr/lib/lv2/lsp-plugins.lv2"))) {
        std::fprintf(stderr, "lsp-plugins-lv2 is not installed (tools/setup.sh)\n");
        return 77;
    }
    QTemporaryDir root, home;
    qint64 ours = -1, theirs = -1, rescan = -1;
    int ourPlugins = 0, theirPlugins = 0;
    qlonglong bundles = 0;
    const int lv2 = typeOf("lv2");
    if (!syntheticOnly) {
        LinuxPluginFixtures::copySystemFolder(QStringLiteral("/usr/lib/lv2"), root.path());
        const QString folder = root.path() + QStringLiteral("/usr/lib/lv2");

        for (int run = 0; run < kRuns; ++run) {
            dropFromPageCache(folder);
            // A new run each time: nothing is remembered from the run before.
            const auto context = contextAt(root.path(), home.path());
            const qint64 a = scanFormats(*context, {lv2}, &ourPlugins);
            ours = ours < 0 ? a : std::min(ours, a);
            dropFromPageCache(folder);
            const qint64 b = listLv2ls(folder, root.path(), &theirPlugins);
            if (b < 0) {
                std::fprintf(stderr, "lv2ls failed (lilv-utils, tools/setup.sh)\n");
                return 1;
            }
            theirs = theirs < 0 ? b : std::min(theirs, b);
        }
        bundles = QDir(folder).entryList(QDir::Dirs | QDir::NoDotAndDotDot).size();
        // A rescan of the unchanged bundles by the same run.
        {
            const auto context = contextAt(root.path(), home.path());
            int plugins = 0;
            scanFormats(*context, {lv2}, &plugins);
            for (int run = 0; run < kRuns; ++run) {
                const qint64 t = scanFormats(*context, {lv2}, &plugins);
                rescan = rescan < 0 ? t : std::min(rescan, t);
            }
        }
    }
    // 10,000 plug-ins across the six formats, warm, against the unavoidable reads.
    QTemporaryDir synthetic, syntheticHome;
    QFile elfSource(QStringLiteral("/usr/lib/ladspa/amp.so"));
    const QByteArray elf =
        elfSource.open(QIODevice::ReadOnly) ? elfSource.read(4096) : QByteArray();
    makeSyntheticLibrary(syntheticHome.path(), elf);
    const QList<int> six{
        lv2, typeOf("vst3"), typeOf("clap"), typeOf("ladspa"), typeOf("dssi"), typeOf("lxvst")};
    qint64 scan10k = -1, floor10k = -1;
    for (int run = 0; run < kRuns; ++run) {
        const auto context = contextAt(synthetic.path(), syntheticHome.path());
        int plugins = 0;
        const qint64 t = scanFormats(*context, six, &plugins);
        scan10k = scan10k < 0 ? t : std::min(scan10k, t);
        const qint64 f = unavoidableWork(syntheticHome.path());
        floor10k = floor10k < 0 ? f : std::min(floor10k, f);
    }
    std::printf("lv2_bundles: %lld\n", bundles);
    std::printf("lv2_plugins_ours: %d\n", ourPlugins);
    std::printf("lv2_plugins_lv2ls: %d\n", theirPlugins);
    std::printf("lv2_list_ms: %.1f\n", double(ours) / 1e6);
    std::printf("lv2ls_n_ms: %.1f\n", double(theirs) / 1e6);
    std::printf("lv2_list_ratio: %.3f\n", double(ours) / double(theirs));
    std::printf("lv2_rescan_ms_per_1000: %.2f\n", double(rescan) / 1e6 * 1000.0 / double(bundles));
    std::printf("linux_scan_10000_ms: %.1f\n", double(scan10k) / 1e6);
    std::printf("linux_unavoidable_10000_ms: %.1f\n", double(floor10k) / 1e6);
    std::printf("linux_scan_ratio_10000: %.2f\n", double(scan10k) / double(floor10k));
    return 0;
}
