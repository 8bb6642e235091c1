// Times the scan of large plug-in libraries against a plain loop that does only the unavoidable
// work, and the set and duplicate commands at two sizes; with the window layer built, the plug-in
// table too. Prints one "name: value" line per figure.

#include "PluginLibraryBuilder.h"
#include "managers/MyAdminObj.h"
#include "managers/MyMASObj.h"
#include "managers/MyRTASObj.h"
#include "managers/MyVSTObj.h"
#include "platform/Bundle.h"
#include "platform/Locations.h"
#include "shell/AppContext.h"
#include "ui/UserInterface.h"

#include <QCoreApplication>
#ifdef KORVANE_BENCH_GUI
#include <QApplication>
#endif
#include <QDir>
#include <QElapsedTimer>
#include <QTemporaryDir>
#include <QTextStream>

#include <plist/plist.h>

#include <cstdio>
#include <dirent.h>
#include <fcntl.h>
#include <string>
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
            const auto format = (i % 2) ? PluginLibraryBuilder::Binary : PluginLibraryBuilder::Xml;
            const QString base = QStringLiteral("Plug%1").arg(i, 5, 10, QLatin1Char('0'));
            const bool plain = type != TypeAU && i % 8 == 7;
            switch (type) {
            case TypeAU:
                PluginLibraryBuilder::makeAudioUnit(folder, base + ".component", header(i), format);
                break;
            case TypeVST:
                if (plain)
                    PluginLibraryBuilder::makeFile(folder, base, QStringLiteral("aPcs"));
                else
                    PluginLibraryBuilder::makeVST(folder, base + ".vst", header(i), format);
                break;
            case TypeRTAS:
                if (plain)
                    PluginLibraryBuilder::makeFile(folder, base, QStringLiteral("TDMw"));
                else
                    PluginLibraryBuilder::makeRTAS(folder, base + ".dpm", header(i), format);
                break;
            case TypeMAS:
                if (plain)
                    PluginLibraryBuilder::makeFile(folder, base, QStringLiteral("Mas!"));
                else
                    PluginLibraryBuilder::makeMAS(folder, base + ".bundle", header(i), format);
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
        best = std::min(best, timer.nsecsElapsed() / 1e6);
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
    parts.awakeFromNib = false;
    AppContext context(std::move(parts));
    const QList<TypeManager *> managers = context.managers();

    // Warm the caches for both sides first, so neither pays for the first read from disk.
    baselineScan(locations);
    for (TypeManager *manager : managers)
        manager->reloadData();

    const int runs = n >= 10000 ? 3 : 5;
    const double baseline = bestOf(runs, [&] { baselineScan(locations); });
    ui.calls = 0;
    const double scan = bestOf(runs, [&] {
        for (TypeManager *manager : managers)
            manager->reloadData();
    });

    long items = 0;
    for (TypeManager *manager : managers)
        items += manager->numberOfRowsInTableView();

    // A set of every Audio Unit with every state flipped, opened into the scanned list.
    TypeManager *au = context.manager(TypeAU);
    for (const AUItemPtr &item : au->items())
        item->setAUActive(!item->getAUActive());
    const QString setPath = home.path() + "/bench.aukorv";
    au->archivePlugins(setPath);
    au->reloadData();
    // These two are compared across the sizes, so both sizes take the best of the same number of
    // runs: more tries at the small size alone would lower its minimum and inflate the ratio.
    const int sizeRuns = 5;
    const double openSet = bestOf(sizeRuns, [&] { au->mergeSet(setPath); });

    // Every name twice: the system and the user folder hold the same plug-ins.
    QList<AUItemPtr> doubled = au->items();
    for (const AUItemPtr &item : au->items())
        doubled << std::make_shared<AUItem>(*item);
    const double duplicates = bestOf(sizeRuns, [&] { TypeManager::duplicateNames(doubled); });

    out << "items_" << n << ": " << items << "\n";
    out << "baseline_ms_" << n << ": " << QString::number(baseline, 'f', 1) << "\n";
    out << "scan_ms_" << n << ": " << QString::number(scan, 'f', 1) << "\n";
    out << "scan_ratio_" << n << ": " << QString::number(scan / baseline, 'f', 2) << "\n";
    out << "progress_calls_per_scan_" << n << ": " << ui.calls / runs << "\n";
    out << "open_set_ms_" << n << ": " << QString::number(openSet, 'f', 2) << "\n";
    out << "duplicates_ms_" << n << ": " << QString::number(duplicates, 'f', 2) << "\n";
    out.flush();
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
    measure(1000, out);
    measure(10000, out);
#ifdef KORVANE_BENCH_GUI
    measureGui(10000, out);
#endif
    return 0;
}
