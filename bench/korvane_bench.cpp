// Times the scan of large plug-in libraries against a plain loop that does only the unavoidable
// work, the set and duplicate commands at two sizes, applying 1,000 plug-ins on one file system
// and across two, and with the window layer built, the plug-in table; "list [TOOL...]" alone
// measures the peak memory of KorvaneCMD's listing of 100,000 plug-ins. Prints one "name: value"
// line per figure.

#include "PluginLibraryBuilder.h"
#include "app/AppContext.h"
#include "core/Locations.h"
#include "core/UserInterface.h"
#include "library/DuplicateReport.h"
#include "library/FormatManager.h"

#include <QCoreApplication>
#ifdef KORVANE_BENCH_GUI
#include <QApplication>
#endif
#include <QDir>
#include <QElapsedTimer>
#include <QProcess>
#include <QTemporaryDir>
#include <QTextStream>

#include <plist/plist.h>

#include <cstdio>
#include <cstdlib>
#include <dirent.h>
#include <fcntl.h>
#include <filesystem>
#include <sched.h>
#include <spawn.h>
#include <string>
#include <sys/mount.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <sys/xattr.h>
#include <unistd.h>
#include <vector>

using namespace korvane;

namespace {

// Counts what the scan asks of the progress panel, so the figures show whether it dominates.
class CountingUi : public HeadlessUi {
public:
    long calls = 0;
    void progressText(const QString &) override { ++calls; }
    void progressDetail(const QString &) override { ++calls; }
    void progressValue(double, double) override { ++calls; }
};

QByteArray header(int i)
{
    switch (i % 4) {
    case 0:
        return MachO::ppc();
    case 1:
        return MachO::intel();
    case 2:
        return MachO::universal2();
    default:
        return MachO::x86_64();
    }
}

// n plug-ins, a quarter per format, spread over the four folders of each; every eighth one of
// VST, RTAS and MAS a plain file with a Finder type.
void buildLibrary(const Locations &locations, int n)
{
    const int perFormat = n / 4;
    for (const Format &format : FormatTable::builtIn()) {
        const int type = format.type;
        for (int i = 0; i < perFormat; ++i) {
            const QString folder = locations.folderPath(format, i % 4);
            const auto plist = (i % 2) ? PluginLibraryBuilder::Binary : PluginLibraryBuilder::Xml;
            const QString base = QStringLiteral("Plug%1").arg(i, 5, 10, QLatin1Char('0'));
            const bool plain = type != TypeAU && i % 8 == 7;
            switch (type) {
            case TypeAU:
                PluginLibraryBuilder::makeAudioUnit(folder, base + ".component", header(i), plist);
                break;
            case TypeVST:
                if (plain)
                    PluginLibraryBuilder::makeFile(folder, base, QStringLiteral("aPcs"));
                else
                    PluginLibraryBuilder::makeVST(folder, base + ".vst", header(i), plist);
                break;
            case TypeRTAS:
                if (plain)
                    PluginLibraryBuilder::makeFile(folder, base, QStringLiteral("TDMw"));
                else
                    PluginLibraryBuilder::makeRTAS(folder, base + ".dpm", header(i), plist);
                break;
            case TypeMAS:
                if (plain)
                    PluginLibraryBuilder::makeFile(folder, base, QStringLiteral("Mas!"));
                else
                    PluginLibraryBuilder::makeMAS(folder, base + ".bundle", header(i), plist);
                break;
            }
        }
    }
}

std::string readFile(const std::string &path)
{
    std::string data;
    int fd = ::open(path.c_str(), O_RDONLY);
    if (fd < 0)
        return data;
    char buffer[65536];
    ssize_t got;
    while ((got = ::read(fd, buffer, sizeof buffer)) > 0)
        data.append(buffer, size_t(got));
    ::close(fd);
    return data;
}

// The unavoidable work, in plain C++: list the folders, parse each Info.plist, read each
// executable's first 8 bytes (or a plain file's Finder info). Returns the count found.
long baselineScan(const Locations &locations)
{
    long found = 0;
    for (const Format &format : FormatTable::builtIn()) {
        for (int loc = 0; loc < LocationCount; ++loc) {
            const std::string folder = locations.folderPath(format, loc).toStdString();
            DIR *dir = ::opendir(folder.c_str());
            if (!dir)
                continue;
            while (dirent *entry = ::readdir(dir)) {
                if (entry->d_name[0] == '.')
                    continue;
                const std::string path = folder + "/" + entry->d_name;
                const std::string info = readFile(path + "/Contents/Info.plist");
                if (info.empty()) {
                    char finder[32];
                    if (::getxattr(path.c_str(), "user.com.apple.FinderInfo", finder, 32) > 0)
                        ++found;
                    continue;
                }
                plist_t root = nullptr;
                if (info.compare(0, 6, "bplist") == 0)
                    plist_from_bin(info.data(), uint32_t(info.size()), &root);
                else
                    plist_from_xml(info.data(), uint32_t(info.size()), &root);
                if (!root)
                    continue;
                plist_t exec = plist_dict_get_item(root, "CFBundleExecutable");
                char *name = nullptr;
                if (exec)
                    plist_get_string_val(exec, &name);
                if (name) {
                    const std::string bytes = readFile(path + "/Contents/MacOS/" + name);
                    if (bytes.size() >= 8)
                        ++found;
                    free(name);
                }
                plist_free(root);
            }
            ::closedir(dir);
        }
    }
    return found;
}

double bestOf(int runs, const std::function<void()> &work)
{
    double best = 1e300;
    for (int r = 0; r < runs; ++r) {
        QElapsedTimer timer;
        timer.start();
        work();
        best = std::min(best, static_cast<double>(timer.nsecsElapsed()) / 1e6);
    }
    return best;
}

void measure(int n, QTextStream &out)
{
    QTemporaryDir root, home;
    const Roots roots = Roots::at(root.path(), home.path());
    const Locations locations(roots);
    buildLibrary(locations, n);

    CountingUi ui;
    AppContext::Parts parts;
    parts.roots = roots;
    parts.ui = &ui;
    parts.prepareWindow = false;
    AppContext context(std::move(parts));
    const QList<FormatManager *> managers = context.managers();

    // Warm the caches for both sides first, so neither pays for the first read from disk.
    baselineScan(locations);
    for (FormatManager *manager : managers)
        manager->rescan();

    const int runs = n >= 10000 ? 3 : 5;
    const double baseline = bestOf(runs, [&] { baselineScan(locations); });
    ui.calls = 0;
    const double scan = bestOf(runs, [&] {
        for (FormatManager *manager : managers)
            manager->rescan();
    });

    long items = 0;
    for (FormatManager *manager : managers)
        items += manager->rowCount();

    // A set of every Audio Unit with every state flipped, opened into the scanned list.
    FormatManager *au = context.manager(TypeAU);
    for (const PluginPtr &item : au->items())
        item->setActive(!item->isActive());
    const QString setPath = home.path() + "/bench.aukorv";
    au->sets().writeSet(setPath);
    au->rescan();
    // These two are compared across the sizes, so both sizes take the best of the same number of
    // runs: more tries at the small size alone would lower its minimum and inflate the ratio.
    const int sizeRuns = 5;
    const double openSet = bestOf(sizeRuns, [&] { au->sets().mergeSet(setPath); });

    // Every name twice: the system and the user folder hold the same plug-ins.
    QList<PluginPtr> doubled = au->items();
    for (const PluginPtr &item : au->items())
        doubled << std::make_shared<Plugin>(*item);
    const double duplicates = bestOf(sizeRuns, [&] { DuplicateReport::counts(doubled); });

    out << "items_" << n << ": " << items << "\n";
    out << "baseline_ms_" << n << ": " << QString::number(baseline, 'f', 1) << "\n";
    out << "scan_ms_" << n << ": " << QString::number(scan, 'f', 1) << "\n";
    out << "scan_ratio_" << n << ": " << QString::number(scan / baseline, 'f', 2) << "\n";
    out << "progress_calls_per_scan_" << n << ": " << ui.calls / runs << "\n";
    out << "open_set_ms_" << n << ": " << QString::number(openSet, 'f', 2) << "\n";
    out << "duplicates_ms_" << n << ": " << QString::number(duplicates, 'f', 2) << "\n";
    out.flush();
}

// n Audio Units in folder, each with a resource of 64 KiB, so a copy has bytes to move.
void buildAudioUnits(const QString &folder, int n)
{
    const QByteArray data(64 * 1024, 'r');
    for (int i = 0; i < n; ++i) {
        const QString bundle = PluginLibraryBuilder::makeAudioUnit(
            folder, QStringLiteral("Plug%1.component").arg(i, 5, 10, QLatin1Char('0')), header(i));
        PluginLibraryBuilder::makeFile(bundle + QStringLiteral("/Contents/Resources"),
                                       QStringLiteral("Data.bin"), {}, data);
    }
}

// Applying every Audio Unit pending: the moves timed up to the rescan the apply ends with, the
// rescan apart. Returns the moves' milliseconds.
double timedApply(FormatManager *au, bool active, double *rescanMs)
{
    active ? au->marking().setAllActive() : au->marking().setAllInactive();
    QElapsedTimer timer;
    qint64 movedNs = -1;
    const auto connection = QObject::connect(au, &FormatManager::itemsAboutToBeReset, [&] {
        if (movedNs < 0)
            movedNs = timer.nsecsElapsed();
    });
    timer.start();
    au->applyPending();
    const qint64 totalNs = timer.nsecsElapsed();
    QObject::disconnect(connection);
    *rescanMs = double(totalNs - movedNs) / 1e6;
    return double(movedNs) / 1e6;
}

// The same folders renamed one by one with nothing else done.
double timedRenames(const QString &from, const QString &to)
{
    const QStringList names = QDir(from).entryList(QDir::AllEntries | QDir::NoDotAndDotDot);
    QElapsedTimer timer;
    timer.start();
    for (const QString &name : names)
        std::rename(QFile::encodeName(from + QLatin1Char('/') + name).constData(),
                    QFile::encodeName(to + QLatin1Char('/') + name).constData());
    return static_cast<double>(timer.nsecsElapsed()) / 1e6;
}

double megabytesIn(const QString &folder)
{
    std::uintmax_t bytes = 0;
    std::error_code error;
    for (std::filesystem::recursive_directory_iterator it(folder.toStdString(), error), end;
         !error && it != end; it.increment(error))
        if (it->is_regular_file(error))
            bytes += it->file_size(error);
    return double(bytes) / (1024.0 * 1024.0);
}

bool run(const QString &program, const QStringList &arguments)
{
    QProcess process;
    process.start(program, arguments);
    return process.waitForFinished(-1) && process.exitStatus() == QProcess::NormalExit
           && process.exitCode() == 0;
}

// The manager's apply of 1,000 pending plug-ins against a plain loop of renames of the same
// folders on one file system; then across file systems against cp -a of the same tree.
void measureApply(QTextStream &out)
{
    const int n = 1000;
    QTemporaryDir root, home;
    const Roots roots = Roots::at(root.path(), home.path());
    const Locations locations(roots);
    const Format &format = FormatTable::builtIn().at(TypeAU);
    const QString on = locations.folderPath(format, LocSystemActive);
    const QString off = locations.folderPath(format, LocSystemDisabled);
    QDir().mkpath(off);
    buildAudioUnits(on, n);

    AppContext::Parts parts;
    parts.roots = roots;
    parts.prepareWindow = false;
    AppContext context(std::move(parts));
    FormatManager *au = context.manager(TypeAU);
    au->rescan();

    // Best of nine: a round is some 50 ms, and one write-back of the disk can double a figure.
    double best = 1e300, baseline = 1e300, rescan = 1e300;
    for (int r = 0; r < 9; ++r) {
        baseline = std::min(baseline, timedRenames(on, off));
        timedRenames(off, on);
        au->rescan();
        double rescanMs = 0;
        best = std::min(best, timedApply(au, false, &rescanMs));
        rescan = std::min(rescan, rescanMs);
        timedApply(au, true, &rescanMs);
    }
    out << "apply_ms_1000: " << QString::number(best, 'f', 1) << "\n";
    out << "renames_ms_1000: " << QString::number(baseline, 'f', 1) << "\n";
    out << "apply_ratio_1000: " << QString::number(best / baseline, 'f', 2) << "\n";
    out << "apply_rescan_ms_1000: " << QString::number(rescan, 'f', 1) << "\n";
    out.flush();

    // Across file systems: the disabled folder on a tmpfs of its own, where mounting is allowed,
    // in a mount namespace of this process's own so that the mount goes with it.
    if (::unshare(CLONE_NEWNS) == 0)
        ::mount(nullptr, "/", nullptr, MS_REC | MS_PRIVATE, nullptr);
    if (!run(QStringLiteral("mount"),
             {QStringLiteral("-t"), QStringLiteral("tmpfs"), QStringLiteral("-o"),
              QStringLiteral("size=512m"), QStringLiteral("tmpfs"), off})) {
        out << "apply_cross_mb_per_s: skipped, no tmpfs can be mounted here\n";
        return;
    }
    const double megabytes = megabytesIn(on);
    const auto perSecond = [&](double ms) {
        return QString::number(megabytes / (ms / 1000), 'f', 1);
    };
    const QString copy = off + QStringLiteral("/.cp-a");
    QElapsedTimer timer;
    timer.start();
    run(QStringLiteral("cp"), {QStringLiteral("-a"), on, copy});
    const double cpToTmpfs = static_cast<double>(timer.nsecsElapsed()) / 1e6;
    QDir(copy).removeRecursively();
    au->rescan();
    double rescanMs = 0;
    const double toTmpfs = timedApply(au, false, &rescanMs);
    const QString back = root.path() + QStringLiteral("/cp-a");
    timer.restart();
    run(QStringLiteral("cp"), {QStringLiteral("-a"), off, back});
    const double cpToDisk = static_cast<double>(timer.nsecsElapsed()) / 1e6;
    QDir(back).removeRecursively();
    const double toDisk = timedApply(au, true, &rescanMs);
    out << "cross_mb_1000: " << QString::number(megabytes, 'f', 1) << "\n";
    out << "apply_cross_mb_per_s: " << perSecond(toDisk) << "\n";
    out << "cp_a_cross_mb_per_s: " << perSecond(cpToDisk) << "\n";
    out << "apply_cross_to_tmpfs_mb_per_s: " << perSecond(toTmpfs) << "\n";
    out << "cp_a_cross_to_tmpfs_mb_per_s: " << perSecond(cpToTmpfs) << "\n";
    out.flush();
    if (!run(QStringLiteral("umount"), {off}))
        run(QStringLiteral("umount"), {QStringLiteral("-l"), off});
}

// The peak resident memory, in MB, of one run of program with arguments, its output discarded;
// negative when it could not be run or failed. Each run is a child of its own, waited for alone.
double peakMegabytes(const QString &program, const QStringList &arguments)
{
    std::vector<QByteArray> words{QFile::encodeName(program)};
    for (const QString &argument : arguments)
        words.push_back(argument.toLocal8Bit());
    std::vector<char *> argv;
    for (QByteArray &word : words)
        argv.push_back(word.data());
    argv.push_back(nullptr);
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_addopen(&actions, STDOUT_FILENO, "/dev/null", O_WRONLY, 0);
    pid_t child = 0;
    const int spawned = posix_spawn(&child, argv[0], &actions, nullptr, argv.data(), environ);
    posix_spawn_file_actions_destroy(&actions);
    if (spawned != 0)
        return -1;
    int status = 0;
    rusage usage{};
    if (::wait4(child, &status, 0, &usage) != child || !WIFEXITED(status)
        || WEXITSTATUS(status) != 0)
        return -1;
    return double(usage.ru_maxrss) / 1024.0; // kilobytes on Linux
}

// KorvaneCMD's list of 100,000 plug-ins as text and as JSON: the text keeps every row to align
// its columns, so it is the measure the JSON, written as it goes, is held to. Other builds of the
// tool (an older one, say) are measured on the same library after the built one.
void measureList(const QStringList &others, QTextStream &out)
{
    const int n = 100000;
    QTemporaryDir root, home;
    const Locations locations(Roots::at(root.path(), home.path()));
    buildLibrary(locations, n);
    const QStringList list{QStringLiteral("--root"), root.path(), QStringLiteral("--home"),
                           home.path(), QStringLiteral("list")};
    for (const QString &tool : QStringList{QStringLiteral(KORVANE_CMD)} + others) {
        const QString of = tool == QLatin1String(KORVANE_CMD) ? QString() : " (" + tool + ")";
        const double text = peakMegabytes(tool, list);
        const double json = peakMegabytes(tool, list + QStringList{QStringLiteral("--json")});
        out << "list_text_peak_mb_100000" << of << ": " << QString::number(text, 'f', 0) << "\n";
        out << "list_json_peak_mb_100000" << of << ": " << QString::number(json, 'f', 0) << "\n";
        out.flush();
    }
}

} // namespace

#ifdef KORVANE_BENCH_GUI
void measureGui(int n, QTextStream &out); // gui_bench.cpp
#endif

int main(int argc, char **argv)
{
#ifdef KORVANE_BENCH_GUI
    // The table's figures are measured offscreen, whatever display the shell has.
    qputenv("QT_QPA_PLATFORM", "offscreen");
    QApplication app(argc, argv);
#else
    QCoreApplication app(argc, argv);
#endif
    QTextStream out(stdout);
    if (app.arguments().value(1) == QLatin1String("list")) {
        measureList(app.arguments().mid(2), out);
        return 0;
    }
#ifdef KORVANE_BENCH_GUI
    // "gui" alone measures the window's figures only.
    if (app.arguments().value(1) == QLatin1String("gui")) {
        measureGui(10000, out);
        return 0;
    }
#endif
    // "apply" alone times the apply figures only.
    if (app.arguments().value(1) != QLatin1String("apply")) {
        measure(1000, out);
        measure(10000, out);
#ifdef KORVANE_BENCH_GUI
        measureGui(10000, out);
#endif
    }
    measureApply(out);
    return 0;
}
