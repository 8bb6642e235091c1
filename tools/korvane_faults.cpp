// Applies sets to a library of plug-ins, half of them on a second file system, while things go
// wrong: the tool killed at a random moment, a folder that refuses writes, a full file system, a
// source that vanishes, several appliers at once, movers of different homes over one system folder,
// a data-file writer killed mid-way. After every
// round it counts each plug-in: once, whole (every file's bytes as built), where the set asks,
// nothing hidden left behind. Prints one "name: value" line per figure; exits 0 when nothing was
// lost or damaged, 77 when no second file system can be mounted here.

#include "PluginLibraryBuilder.h"
#include "app/AppContext.h"
#include "app/AppController.h"
#include "core/FormatTable.h"
#include "core/Locations.h"
#include "library/FormatManager.h"
#include "os/AllowAllAuthorization.h"
#include "os/LocalFileOperations.h"

#include <QCoreApplication>
#include <QCryptographicHash>
#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QMap>
#include <QProcess>
#include <QRandomGenerator>
#include <QRegularExpression>
#include <QSet>
#include <QTemporaryDir>
#include <QTextStream>
#include <QThread>

#include <filesystem>
#include <memory>
#include <optional>
#include <sched.h>
#include <sys/mount.h>
#include <sys/statvfs.h>

using namespace korvane;
namespace fs = std::filesystem;

namespace {

QTextStream out(stdout);

constexpr int kSkipped = 77;

struct Settings {
    QString cmd;
    int plugins = 1000;
    int killRounds = 24;
    int injectRounds = 2; // of each kind
    int overlapRounds = 3;
    int dataRounds = 8;
    int homesRounds = 10;
    int homesPlugins = 40;
    int homesKb = 256;  // each plug-in's resource in the homes rounds
    qint64 seconds = 0; // long mode: kill rounds until this much time has passed
    quint32 seed = 0;
};

bool run(const QString &program, const QStringList &arguments)
{
    QProcess process;
    process.setProcessChannelMode(QProcess::ForwardedErrorChannel);
    process.start(program, arguments);
    return process.waitForFinished(-1) && process.exitStatus() == QProcess::NormalExit
           && process.exitCode() == 0;
}

// Every file, folder and link below path by its relative name, contents included.
QByteArray treeHash(const QString &path)
{
    QCryptographicHash hash(QCryptographicHash::Sha1);
    const fs::path top(path.toStdString());
    std::error_code error;
    if (!fs::exists(fs::symlink_status(top, error)))
        return {};
    std::vector<fs::path> entries{top};
    for (fs::recursive_directory_iterator it(top, error), end; !error && it != end;
         it.increment(error))
        entries.push_back(it->path());
    std::sort(entries.begin(), entries.end());
    for (const fs::path &entry : entries) {
        const fs::file_status status = fs::symlink_status(entry, error);
        hash.addData(QByteArray::fromStdString(entry.lexically_relative(top).string()));
        hash.addData(QByteArray::number(int(status.type())));
        if (fs::is_symlink(status)) {
            hash.addData(QByteArray::fromStdString(fs::read_symlink(entry, error).string()));
        } else if (fs::is_regular_file(status)) {
            QFile file(QString::fromStdString(entry.string()));
            if (!file.open(QIODevice::ReadOnly))
                return {};
            hash.addData(&file);
        }
    }
    return hash.result();
}

QStringList entriesOf(const QString &folder)
{
    return QDir(folder).entryList(
        QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot, QDir::Name);
}

// The library: Audio Units in the system's folder on this disk, and in its disabled folder on a
// tmpfs of its own, so every switch crosses file systems.
class Library {
public:
    enum Place { On, Off };

    // The library's own disk is a tmpfs too: a flush per move on a shared disk would time the
    // other programs' writes, not these moves.
    bool mount(qint64 megabytes)
    {
        if (!run("mount", {"-t", "tmpfs", "-o", QString("size=%1m").arg(megabytes), "tmpfs",
                           m_workspace.path()}))
            return false;
        m_workspaceMounted = true;
        m_root = m_workspace.path() + "/root";
        m_home = m_workspace.path() + "/home";
        m_held = m_workspace.path() + "/held";
        const Roots roots = Roots::at(m_root, m_home);
        const Format &au = FormatTable::builtIn().at(TypeAU);
        m_folders = {Locations(roots).folderPath(au, LocSystemActive),
                     Locations(roots).folderPath(au, LocSystemDisabled)};
        for (const QString &folder : m_folders + QStringList{m_home, m_held})
            QDir().mkpath(folder);
        m_mounted = run("mount", {"-t", "tmpfs", "-o", QString("size=%1m").arg(megabytes), "tmpfs",
                                  m_folders[Off]});
        return m_mounted;
    }
    ~Library()
    {
        m_context.reset();
        if (m_mounted && !run("umount", {m_folders[Off]}))
            run("umount", {"-l", m_folders[Off]});
        if (m_workspaceMounted && !run("umount", {m_workspace.path()}))
            run("umount", {"-l", m_workspace.path()});
    }

    QString root() const { return m_root; }
    QString home() const { return m_home; }
    QString folder(Place place) const { return m_folders[place]; }
    QString pathOf(const QString &name, Place place) const { return m_folders[place] + "/" + name; }
    QString held() const { return m_held; }

    // Each plug-in an Audio Unit with a resource of its own bytes, some with a link; of its own
    // size too unless resourceBytes gives one.
    void build(int n, int resourceBytes = 0)
    {
        m_resourceBytes = resourceBytes;
        for (int i = 0; i < n; ++i) {
            const QString name = QString("Plug%1.component").arg(i, 5, 10, QLatin1Char('0'));
            const Place place = i % 2 ? Off : On;
            makePlugIn(name, place);
            m_place[name] = place;
            m_hash[name] = treeHash(pathOf(name, place));
        }
    }
    void makePlugIn(const QString &name, Place place) const
    {
        const int i = name.mid(4, 5).toInt();
        const QString bundle = PluginLibraryBuilder::makeAudioUnit(
            m_folders[place], name, i % 2 ? MachO::intel() : MachO::x86_64());
        QRandomGenerator bytes(quint32(i) + 1);
        QByteArray data(m_resourceBytes > 0 ? m_resourceBytes
                                            : int(1024 + bytes.bounded(48 * 1024)),
                        Qt::Uninitialized);
        bytes.fillRange(reinterpret_cast<quint32 *>(data.data()), data.size() / 4);
        PluginLibraryBuilder::makeFile(bundle + "/Contents/Resources", "Data.bin", {}, data);
        if (i % 3 == 0)
            QFile::link("Resources/Data.bin", bundle + "/Contents/Current");
    }
    QStringList names() const { return m_hash.keys(); }
    const QMap<QString, Place> &places() const { return m_place; }
    void setPlaces(const QMap<QString, Place> &places) { m_place = places; }

    // The core on the same library, as the window would be.
    AppContext &core()
    {
        if (!m_context) {
            AppContext::Parts parts;
            parts.roots = Roots::at(m_root, m_home);
            parts.authorization = &m_authorization;
            parts.prepareWindow = false;
            m_context = std::make_unique<AppContext>(std::move(parts));
        }
        return *m_context;
    }
    FormatManager &au() { return *core().manager(TypeAU); }

    // A set that asks for each plug-in in the place given, written where the tool can read it.
    QString writeSet(const QMap<QString, Place> &wanted, const QString &name)
    {
        FormatManager &manager = au();
        manager.rescan();
        for (const PluginPtr &item : manager.items())
            item->setActive(wanted.value(item->name(), On) == On);
        QString path = m_workspace.path() + "/" + name + ".aukorv";
        QFile::remove(path);
        manager.sets().writeSet(path);
        manager.rescan();
        return path;
    }

    // Each plug-in flipped with the chance given.
    QMap<QString, Place> flipped(const QMap<QString, Place> &from, QRandomGenerator &random,
                                 double chance) const
    {
        QMap<QString, Place> wanted = from;
        for (auto it = wanted.begin(); it != wanted.end(); ++it)
            if (random.generateDouble() < chance)
                *it = *it == On ? Off : On;
        return wanted;
    }

    struct Count {
        int lost = 0, twice = 0, damaged = 0, misplaced = 0, leftovers = 0;
        QStringList notes;
        bool bad() const { return lost || twice || damaged || leftovers; }
    };
    // Every plug-in once and whole; where it is against wanted (those in gone are expected
    // nowhere); nothing else in either folder.
    Count count(const QMap<QString, Place> &wanted, const QSet<QString> &gone = {}) const
    {
        Count c;
        QMap<QString, QList<Place>> found;
        for (const Place place : {On, Off}) {
            for (const QString &entry : entriesOf(m_folders[place])) {
                if (m_hash.contains(entry)) {
                    found[entry] << place;
                } else {
                    ++c.leftovers;
                    c.notes << "left in " + m_folders[place] + ": " + entry;
                }
            }
        }
        for (auto it = m_hash.cbegin(); it != m_hash.cend(); ++it) {
            const QList<Place> places = found.value(it.key());
            if (gone.contains(it.key())) {
                if (!places.isEmpty()) {
                    ++c.twice;
                    c.notes << "back after it vanished: " + it.key();
                }
                continue;
            }
            if (places.isEmpty()) {
                ++c.lost;
                c.notes << "lost: " + it.key();
                continue;
            }
            if (places.size() > 1) {
                ++c.twice;
                c.notes << "in both folders: " + it.key();
            }
            for (const Place place : places) {
                if (treeHash(pathOf(it.key(), place)) != it.value()) {
                    ++c.damaged;
                    c.notes << "damaged: " + pathOf(it.key(), place);
                }
            }
            if (places.size() == 1 && places[0] != wanted.value(it.key()))
                ++c.misplaced;
        }
        return c;
    }
    // Where each plug-in is now, for the next round to start from.
    QMap<QString, Place> placesOnDisk() const
    {
        QMap<QString, Place> now;
        for (const QString &name : m_hash.keys())
            now[name] = QFileInfo::exists(pathOf(name, Off)) ? Off : On;
        return now;
    }
    int trashed() const { return int(entriesOf(m_home + "/.local/share/Trash/files").size()); }
    // Another person's home beside the library's own, made when missing.
    QString otherHome(const QString &name) const
    {
        QString home = m_workspace.path() + "/" + name;
        QDir().mkpath(home);
        return home;
    }
    // After a round that lost or damaged plug-ins: every plug-in anew, whole and in its place, so
    // the next round counts only its own losses.
    void rebuild()
    {
        for (const Place place : {On, Off})
            for (const QString &entry : entriesOf(m_folders[place]))
                fs::remove_all(fs::path((m_folders[place] + "/" + entry).toStdString()));
        for (auto it = m_place.cbegin(); it != m_place.cend(); ++it)
            makePlugIn(it.key(), it.value());
    }

    // The tool applying a set, started and left running; with the library's own home unless
    // another is given.
    std::unique_ptr<QProcess> start(const QString &cmd, const QString &set,
                                    const QString &home = {}) const
    {
        auto process = std::make_unique<QProcess>();
        const QString homeUsed = home.isEmpty() ? m_home : home;
        QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
        environment.insert("HOME", homeUsed);
        environment.insert("KORVANE_ROOT", m_root);
        environment.remove("XDG_DATA_HOME");
        environment.insert("KORVANE_LOCK_WAIT_MS", "600000");
        process->setProcessEnvironment(environment);
        process->start(cmd, {"--root=" + m_root, "--home=" + homeUsed, "-AU", set});
        process->waitForStarted();
        return process;
    }

    // How full the second file system is and what it may hold, in kilobytes.
    qint64 usedKb() const
    {
        struct statvfs info;
        if (::statvfs(QFile::encodeName(m_folders[Off]).constData(), &info) != 0)
            return 0;
        return qint64((info.f_blocks - info.f_bfree) * info.f_frsize / 1024);
    }
    bool resize(qint64 kb) const
    {
        return run("mount", {"-o", QString("remount,size=%1k").arg(kb), m_folders[Off]});
    }

private:
    QTemporaryDir m_workspace;
    QString m_root, m_home, m_held;
    QStringList m_folders;
    bool m_mounted = false, m_workspaceMounted = false;
    QMap<QString, QByteArray> m_hash;
    QMap<QString, Place> m_place;
    int m_resourceBytes = 0;
    AllowAllAuthorization m_authorization;
    std::unique_ptr<AppContext> m_context;
};

struct Totals {
    int rounds = 0, lost = 0, twice = 0, damaged = 0, misplaced = 0, leftovers = 0, messages = 0;
    int killedMidway = 0, failedRuns = 0;
    QStringList notes;
    void add(const Library::Count &c)
    {
        lost += c.lost;
        twice += c.twice;
        damaged += c.damaged;
        misplaced += c.misplaced;
        leftovers += c.leftovers;
        notes += c.notes.mid(0, 5);
    }
    bool bad() const { return lost || twice || damaged || leftovers || misplaced || failedRuns; }
    void print(const QString &name) const
    {
        out << name << "_rounds: " << rounds << "\n";
        out << name << "_lost: " << lost << "\n";
        out << name << "_in_two_places: " << twice << "\n";
        out << name << "_damaged: " << damaged << "\n";
        out << name << "_misplaced: " << misplaced << "\n";
        out << name << "_leftovers: " << leftovers << "\n";
        out << name << "_messages: " << messages << "\n";
        out << name << "_runs_failed: " << failedRuns << "\n";
        for (const QString &note : notes.mid(0, 20))
            out << name << "_note: " << note << "\n";
        out.flush();
    }
};

// Lines the tool wrote for a person, a failure each.
int messagesIn(const QByteArray &errors)
{
    int n = 0;
    for (const QByteArray &line : errors.split('\n'))
        if (!line.trimmed().isEmpty())
            ++n;
    return n;
}

// Runs the tool on set to the end; true when it exited 0.
bool complete(Library &library, const QString &cmd, const QString &set, int *messages = nullptr)
{
    auto process = library.start(cmd, set);
    process->waitForFinished(-1);
    if (messages)
        *messages += messagesIn(process->readAllStandardError());
    return process->exitStatus() == QProcess::NormalExit && process->exitCode() == 0;
}

// Killed at a random moment of an apply that moves most plug-ins, then run again to the end.
Totals killRounds(Library &library, const Settings &settings, QRandomGenerator &random)
{
    Totals totals;
    int hiddenAfterKill = 0;
    QElapsedTimer clock;
    clock.start();
    // The first apply runs whole: its time bounds the moment of every kill after it.
    QMap<QString, Library::Place> wanted = library.flipped(library.places(), random, 0.8);
    QElapsedTimer timer;
    timer.start();
    if (!complete(library, settings.cmd, library.writeSet(wanted, "kill")))
        ++totals.failedRuns;
    const qint64 fullMs = std::max<qint64>(timer.elapsed(), 50);
    totals.add(library.count(wanted));
    for (int round = 0; settings.seconds > 0 ? clock.elapsed() < settings.seconds * 1000
                                             : round < settings.killRounds;
         ++round) {
        wanted = library.flipped(wanted, random, 0.8);
        const QString set = library.writeSet(wanted, "kill");
        auto process = library.start(settings.cmd, set);
        if (!process->waitForFinished(int(random.bounded(fullMs)))) {
            process->kill();
            process->waitForFinished(-1);
            ++totals.killedMidway;
            // What a host would see now: hidden leftovers at most, never a plug-in's name on
            // half a copy or in both folders.
            Library::Count seen = library.count(wanted);
            hiddenAfterKill += seen.leftovers;
            seen.lost = seen.leftovers = seen.misplaced = 0;
            seen.notes = seen.notes.filter(QRegularExpression("^(damaged|in both)"));
            totals.add(seen);
        }
        if (!complete(library, settings.cmd, set, &totals.messages))
            ++totals.failedRuns;
        const Library::Count c = library.count(wanted);
        totals.add(c);
        ++totals.rounds;
        if (c.bad() || c.misplaced) {
            out << "kill round " << round << " went wrong\n";
            wanted = library.placesOnDisk();
        }
        // A long run stopped early still leaves its figures so far.
        if (settings.seconds > 0 && totals.rounds % 250 == 0) {
            out << "kill rounds so far: " << totals.rounds << " (killed mid-way "
                << totals.killedMidway << "; lost " << totals.lost << ", in two places "
                << totals.twice << ", damaged " << totals.damaged << ", leftovers "
                << totals.leftovers << ", misplaced " << totals.misplaced << ", runs failed "
                << totals.failedRuns << ")\n";
            out.flush();
        }
    }
    out << "kill_full_apply_ms: " << fullMs << "\n";
    out << "kill_killed_midway: " << totals.killedMidway << "\n";
    out << "kill_hidden_leftovers_seen_after_kills: " << hiddenAfterKill << "\n";
    out << "kill_trashed: " << library.trashed() << "\n";
    library.setPlaces(wanted);
    return totals;
}

// A fault made while the tool runs, and undone before it runs again to the end. Between the two
// runs every plug-in must be once and whole; after the second, also where the set asks.
Totals injectedRounds(Library &library, const Settings &settings, QRandomGenerator &random,
                      const QString &kind)
{
    Totals totals;
    QMap<QString, Library::Place> now = library.places();
    const qint64 roomyKb = library.usedKb() + 256 * 1024;
    for (int round = 0; round < settings.injectRounds; ++round) {
        const QMap<QString, Library::Place> wanted = library.flipped(now, random, 0.8);
        const QString set = library.writeSet(wanted, "inject");
        QSet<QString> gone;
        QString locked;
        if (kind == "full") {
            // Room for a few dozen plug-ins more, then the disk is full.
            library.resize(library.usedKb() + 1024);
        }
        auto process = library.start(settings.cmd, set);
        QThread::msleep(random.bounded(30U));
        if (kind == "immutable") {
            locked = random.bounded(2) ? library.folder(Library::On) : library.folder(Library::Off);
            run("chattr", {"+i", locked});
        } else if (kind == "vanish") {
            // Plug-ins about to leave this disk are taken out of the library at one stroke.
            for (int k = 0; k < 5; ++k) {
                const QString name =
                    library.names().at(int(random.bounded(library.names().size())));
                if (now.value(name) != Library::On || wanted.value(name) != Library::Off)
                    continue;
                if (QDir().rename(library.pathOf(name, Library::On), library.held() + "/" + name))
                    gone.insert(name);
            }
        }
        process->waitForFinished(-1);
        totals.messages += messagesIn(process->readAllStandardError());
        if (!locked.isEmpty())
            run("chattr", {"-i", locked});
        if (kind == "full")
            library.resize(roomyKb);
        Library::Count c = library.count(wanted, gone);
        // Hidden leftovers may stay in a folder that refused their removal: the next run settles.
        c.leftovers = 0;
        c.misplaced = 0;
        totals.add(c);

        for (const QString &name : gone)
            QDir().rename(library.held() + "/" + name, library.pathOf(name, Library::On));
        if (!complete(library, settings.cmd, set))
            ++totals.failedRuns;
        const Library::Count after = library.count(wanted);
        totals.add(after);
        ++totals.rounds;
        now = after.bad() || after.misplaced ? library.placesOnDisk() : wanted;
    }
    library.setPlaces(now);
    return totals;
}

// Two to four appliers at once: tools and the core standing for the window, each with a set of
// its own. Whatever order the lock gives them, every plug-in ends once, whole, and in a place
// one of the sets asks for.
Totals overlapRounds(Library &library, const Settings &settings, QRandomGenerator &random)
{
    Totals totals;
    int lastWins = 0;
    for (int round = 0; round < settings.overlapRounds; ++round) {
        const int appliers = 2 + int(random.bounded(3));
        const bool window = random.bounded(2) == 1;
        QList<QMap<QString, Library::Place>> sets;
        QStringList paths;
        for (int k = 0; k < appliers; ++k) {
            sets << library.flipped(library.places(), random, 0.6);
            paths << library.writeSet(sets.last(), QString("overlap%1").arg(k));
        }
        std::vector<std::unique_ptr<QProcess>> tools;
        const int toolCount = window ? appliers - 1 : appliers;
        for (int k = 0; k < toolCount; ++k) {
            tools.push_back(library.start(settings.cmd, paths[k]));
            QThread::msleep(random.bounded(20U));
        }
        if (window) {
            FormatManager &au = library.au();
            au.rescan();
            au.sets().mergeSet(paths.last());
            au.applyPending();
        }
        for (auto &tool : tools) {
            tool->waitForFinished(-1);
            totals.messages += messagesIn(tool->readAllStandardError());
        }
        const QMap<QString, Library::Place> now = library.placesOnDisk();
        Library::Count c = library.count(now);
        for (const auto &set : sets)
            if (set == now)
                ++lastWins;
        totals.add(c);
        ++totals.rounds;
        library.setPlaces(now);
    }
    out << "overlap_ended_as_one_set_asked: " << lastWins << "\n";
    return totals;
}

// Two people at once, each with a home of their own, over the same system folders: one applies a
// set with every plug-in on, the other one with every plug-in off, and the two swap sets each
// round. Movers of different homes must wait for each other as movers of one home do: every
// plug-in ends once, whole, and all of them where the set of the mover that came last asks.
Totals homesRounds(Library &library, const Settings &settings, QRandomGenerator &random)
{
    Totals totals;
    const QStringList homes{library.otherHome("h1"), library.otherHome("h2")};
    QMap<QString, Library::Place> allOn, allOff;
    for (const QString &name : library.names()) {
        allOn[name] = Library::On;
        allOff[name] = Library::Off;
    }
    const QStringList sets{library.writeSet(allOn, "homes-on"),
                           library.writeSet(allOff, "homes-off")};
    int asOneAsked = 0, badRounds = 0;
    for (int round = 0; round < settings.homesRounds; ++round) {
        // h1 starts first, with everything on one round and everything off the next.
        std::vector<std::unique_ptr<QProcess>> tools;
        for (int k = 0; k < 2; ++k) {
            tools.push_back(library.start(settings.cmd, sets[(k + round) % 2], homes[k]));
            QThread::msleep(random.bounded(5U));
        }
        for (auto &tool : tools) {
            tool->waitForFinished(-1);
            totals.messages += messagesIn(tool->readAllStandardError());
            if (tool->exitStatus() != QProcess::NormalExit || tool->exitCode() != 0)
                ++totals.failedRuns;
        }
        const QMap<QString, Library::Place> now = library.placesOnDisk();
        Library::Count c = library.count(now);
        int on = 0;
        for (const Library::Place place : now)
            on += place == Library::On ? 1 : 0;
        c.misplaced = std::min<int>(on, int(now.size()) - on);
        if (c.misplaced == 0)
            ++asOneAsked;
        totals.add(c);
        ++totals.rounds;
        library.setPlaces(now);
        if (c.bad() || c.misplaced) {
            out << "homes round " << round << " went wrong: lost " << c.lost << ", in two places "
                << c.twice << ", damaged " << c.damaged << ", leftovers " << c.leftovers
                << ", misplaced " << c.misplaced << "\n";
            out.flush();
            ++badRounds;
            library.rebuild();
        }
    }
    out << "homes_ended_as_one_set_asked: " << asOneAsked << "\n";
    out << "homes_rounds_gone_wrong: " << badRounds << "\n";
    return totals;
}

// What the child of dataRounds writes over a data file.
QByteArray writtenData()
{
    return QByteArray(64 * 1024 * 1024, 'x');
}

// A data file's writer killed mid-way through a large rewrite: the old file stays as it was, or,
// killed after its rename, the new one is whole.
Totals dataRounds(Library &library, const Settings &settings, QRandomGenerator &random)
{
    Totals totals;
    // The core writes every kind of data file once: content registry, groups, sets, preferences.
    FormatManager &au = library.au();
    au.rescan();
    library.core().main()->contentRegistry().store(
        QStringList{"Plug00000.component", "Library/Kept/Data"});
    library.core().main()->groupRegistry().save();
    au.groups().save();
    au.sets().saveSetList();
    const Locations locations(Roots::at(library.root(), library.home()));
    QStringList files;
    for (const QString &name : entriesOf(locations.supportFolderPath()))
        if (name.endsWith(".plist"))
            files << locations.supportFolderPath() + "/" + name;
    files << locations.expand(Locations::userPreferencesFile());
    const QByteArray written = writtenData();
    int survived = 0, finished = 0, killed = 0, temporaries = 0;
    for (int round = 0; round < settings.dataRounds; ++round) {
        const QString &path = files.at(round % files.size());
        QFile file(path);
        if (!file.open(QIODevice::ReadOnly)) {
            totals.notes << "no data file at " + path;
            ++totals.lost;
            continue;
        }
        const QByteArray before = file.readAll();
        file.close();
        QProcess writer;
        writer.start(QCoreApplication::applicationFilePath(), {"--write-data-file", path});
        writer.waitForReadyRead(-1); // the bytes are ready, the write begins
        if (!writer.waitForFinished(int(random.bounded(60)))) {
            writer.kill();
            writer.waitForFinished(-1);
            ++killed;
        }
        QFile again(path);
        const QByteArray after = again.open(QIODevice::ReadOnly) ? again.readAll() : QByteArray();
        again.close();
        const bool same = after == before;
        if (same)
            ++survived;
        else if (after == written)
            ++finished; // the kill came after the rename: the new file is whole
        else {
            ++totals.damaged;
            totals.notes << "neither the old file nor the new one: " + path;
        }
        // The old file goes back for the next round; a killed writer's temporary file stays
        // beside the data file, counted and cleared here.
        if (!same && QFile::remove(path) && again.open(QIODevice::WriteOnly))
            again.write(before);
        again.close();
        const QString folder = QFileInfo(path).path(), name = QFileInfo(path).fileName();
        for (const QString &entry : entriesOf(folder))
            if (entry.startsWith(name + ".") && !entry.contains(".damaged-")
                && QFile::remove(folder + "/" + entry))
                ++temporaries;
        ++totals.rounds;
    }
    out << "data_temporary_files_left: " << temporaries << "\n";
    out << "data_files: " << files.size() << "\n";
    out << "data_writers_killed: " << killed << "\n";
    out << "data_old_file_intact: " << survived << "\n";
    out << "data_new_file_whole: " << finished << "\n";
    return totals;
}

// The child of dataRounds: a large rewrite through the program's own atomic write.
int writeDataFile(const QString &path)
{
    const QByteArray bytes = writtenData();
    QTextStream(stdout) << "writing" << Qt::endl;
    LocalFileOperations files(Roots::at("/", QDir::homePath()));
    return files.writeFileAtomically(path, bytes) ? 0 : 1;
}

std::optional<Settings> parse(const QStringList &arguments)
{
    Settings settings;
    settings.seed = QRandomGenerator::global()->generate();
    for (qsizetype i = 1; i < arguments.size(); ++i) {
        const QString &argument = arguments[i];
        const QString value = arguments.value(i + 1);
        bool ok = true;
        if (argument == "--cmd")
            settings.cmd = value;
        else if (argument == "--plugins")
            settings.plugins = value.toInt(&ok);
        else if (argument == "--kill-rounds")
            settings.killRounds = value.toInt(&ok);
        else if (argument == "--seconds")
            settings.seconds = value.toLongLong(&ok);
        else if (argument == "--inject-rounds")
            settings.injectRounds = value.toInt(&ok);
        else if (argument == "--overlap-rounds")
            settings.overlapRounds = value.toInt(&ok);
        else if (argument == "--data-rounds")
            settings.dataRounds = value.toInt(&ok);
        else if (argument == "--homes-rounds")
            settings.homesRounds = value.toInt(&ok);
        else if (argument == "--homes-plugins")
            settings.homesPlugins = value.toInt(&ok);
        else if (argument == "--homes-kb")
            settings.homesKb = value.toInt(&ok);
        else if (argument == "--seed")
            settings.seed = value.toUInt(&ok);
        else
            return std::nullopt;
        if (!ok)
            return std::nullopt;
        ++i;
    }
    if (settings.cmd.isEmpty() || settings.plugins < 2 || settings.homesPlugins < 2
        || settings.homesKb < 1)
        return std::nullopt;
    return settings;
}

} // namespace

int main(int argc, char **argv)
{
    QCoreApplication app(argc, argv);
    const QStringList arguments = app.arguments();
    if (arguments.size() == 3 && arguments[1] == "--write-data-file")
        return writeDataFile(arguments[2]);
    const std::optional<Settings> settings = parse(arguments);
    if (!settings) {
        QTextStream(stderr) << "usage: korvane_faults --cmd KorvaneCMD [--plugins N] "
                               "[--kill-rounds N | --seconds S] [--inject-rounds N] "
                               "[--overlap-rounds N] [--data-rounds N] [--homes-rounds N] "
                               "[--homes-plugins N] [--homes-kb N] [--seed N]\n";
        return 2;
    }
    QRandomGenerator random(settings->seed);
    out << "seed: " << settings->seed << "\n";

    // Mounts of a namespace of its own go with the last process in it, even a killed harness.
    if (::unshare(CLONE_NEWNS) == 0)
        ::mount(nullptr, "/", nullptr, MS_REC | MS_PRIVATE, nullptr);
    Library library;
    if (!library.mount(512)) {
        out << "skipped: no tmpfs can be mounted here, so no move crosses file systems\n";
        return kSkipped;
    }
    QElapsedTimer timer;
    timer.start();
    library.build(settings->plugins);
    out << "plugins: " << settings->plugins << "\n";
    out << "build_ms: " << timer.restart() << "\n";
    out.flush();

    bool bad = false;
    const auto report = [&](const Totals &totals, const QString &name) {
        totals.print(name);
        out << name << "_ms: " << timer.restart() << "\n";
        out.flush();
        bad = bad || totals.bad();
    };
    report(killRounds(library, *settings, random), "kill");
    for (const char *kind : {"immutable", "full", "vanish"})
        report(injectedRounds(library, *settings, random, kind), kind);
    report(overlapRounds(library, *settings, random), "overlap");
    report(dataRounds(library, *settings, random), "data");
    if (settings->homesRounds > 0) {
        // A library of its own: fewer, larger plug-ins, so that each copy takes a while.
        Library homes;
        if (!homes.mount(512)) {
            out << "homes: no tmpfs could be mounted\n";
            bad = true;
        } else {
            homes.build(settings->homesPlugins, settings->homesKb * 1024);
            timer.restart();
            report(homesRounds(homes, *settings, random), "homes");
        }
    }
    out << (bad ? "result: FAILED\n" : "result: passed\n");
    return bad ? 1 : 0;
}
