#include "cli/CliRunner.h"

#include "app/AppContext.h"
#include "cli/BackupCommands.h"
#include "cli/CliSession.h"
#include "cli/MoveReport.h"
#include "cli/NameList.h"
#include "cli/ShownText.h"
#include "cli/TextTable.h"
#include "core/Locations.h"
#include "library/DuplicateReport.h"
#include "library/MovePlan.h"
#include "library/SetDocument.h"
#include "probe/ProbeRunner.h"

#include <QDir>
#include <QFileInfo>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QSet>
#include <QTextStream>

#include <algorithm>
#include <map>
#include <tuple>

#include <sys/ioctl.h>
#include <unistd.h>

namespace korvane {

namespace {

// A command's rows: with --json an array of objects, else aligned text columns, a row a line.
// The array is written object by object as the rows come: a document of every plug-in built
// first took three times the memory of the plug-ins themselves.
class Listing {
public:
    Listing(bool json, QTextStream &out) : m_json(json), m_out(out) {}
    void add(const QJsonObject &object, const QStringList &cells)
    {
        if (!m_json) {
            QStringList shown;
            shown.reserve(cells.size());
            for (const QString &cell : cells)
                shown << shownLine(cell);
            m_table.addRow(shown);
            return;
        }
        // Laid out as a whole indented document lays out its elements.
        QByteArray text = QJsonDocument(object).toJson(QJsonDocument::Indented);
        text.chop(1);
        text.replace('\n', QByteArrayLiteral("\n    "));
        m_out << (m_count++ == 0 ? "[\n    " : ",\n    ") << QString::fromUtf8(text);
    }
    void setColumns(const QList<TextTable::Column> &columns) { m_table.setColumns(columns); }
    void print(int width = 0, bool header = false)
    {
        if (m_json)
            m_out << (m_count == 0 ? "[\n]\n" : "\n]\n");
        else
            m_table.print(m_out, width, header);
        m_out.flush();
    }

private:
    bool m_json;
    QTextStream &m_out;
    qsizetype m_count = 0;
    TextTable m_table;
};

QString onOff(bool active)
{
    return active ? QStringLiteral("on") : QStringLiteral("off");
}

QString scope(bool global)
{
    return global ? QStringLiteral("system") : QStringLiteral("user");
}

QString fullPath(const Plugin &item)
{
    return item.location() + QLatin1Char('/') + item.name();
}

// "Foo" names Foo.component by its stem, a folder part staying ("Sub/Foo"); a name given with
// the extension names only itself, so "Echo.vst" never switches Echo.vst.vst.
bool stemNamesItem(const QString &name, const Plugin &item)
{
    const QString itemName = item.name();
    const qsizetype dot = itemName.lastIndexOf(QLatin1Char('.'));
    if (dot <= itemName.lastIndexOf(QLatin1Char('/')) + 1)
        return false;
    return QStringView(itemName).left(dot) == name
           && !name.endsWith(QStringView(itemName).mid(dot));
}

// The location code of the folder that holds name at path; -1 for none of the format's folders.
int locationOf(const QStringList &folders, const QString &path, const QString &name)
{
    return int(folders.indexOf(path.left(path.size() - name.size() - 1)));
}

// What a move from one folder of the format to another does, as done and as wanted:
// "enabled"/"enable", "disabled", "moved to system", "moved to user", or a state and a place
// joined by "and". Paths outside the four folders go by enabledFallback.
std::pair<QString, QString> moveWords(const Format &format, const QStringList &folders,
                                      const QString &from, const QString &to, const QString &name,
                                      bool enabledFallback)
{
    const int source = locationOf(folders, from, name);
    const int target = locationOf(folders, to, name);
    if (source < 0 || target < 0)
        return enabledFallback ? std::pair(QStringLiteral("enabled"), QStringLiteral("enable"))
                               : std::pair(QStringLiteral("disabled"), QStringLiteral("disable"));
    const bool wasActive = isActiveLocation(source);
    const bool isActive = isActiveLocation(target);
    const bool wasSystem = format.isSystem(source);
    const bool isSystem = format.isSystem(target);
    QStringList done, wanted;
    if (wasActive != isActive) {
        done << (isActive ? QStringLiteral("enabled") : QStringLiteral("disabled"));
        wanted << (isActive ? QStringLiteral("enable") : QStringLiteral("disable"));
    }
    if (wasSystem != isSystem || done.isEmpty()) {
        done << (isSystem ? QStringLiteral("moved to system") : QStringLiteral("moved to user"));
        wanted << (isSystem ? QStringLiteral("move to system") : QStringLiteral("move to user"));
    }
    return {done.join(QStringLiteral(" and ")), wanted.join(QStringLiteral(" and "))};
}

using ActiveStates = QHash<const Plugin *, bool>;

// Each plug-in's state as scanned, before anything is marked.
ActiveStates activeStates(const FormatManager &manager)
{
    ActiveStates states;
    for (const PluginPtr &item : manager.items())
        states.insert(item.get(), item->isActive());
    return states;
}

// The names of the plug-ins that are on, by each one's state in states, else its own.
QStringList activeNames(const FormatManager &manager, const ActiveStates &states = {})
{
    QStringList names;
    for (const PluginPtr &item : manager.items())
        if (states.value(item.get(), item->isActive()))
            names << item->name();
    return names;
}

// The plug-ins a name given on the command line stands for: every copy of an exact name; only
// where no plug-in has that name, those of that stem.
QList<PluginPtr> pluginsNamed(const FormatManager &manager, const QString &name)
{
    QList<PluginPtr> named;
    for (const PluginPtr &item : manager.items())
        if (item->name() == name)
            named << item;
    if (named.isEmpty())
        for (const PluginPtr &item : manager.items())
            if (stemNamesItem(name, *item))
                named << item;
    return named;
}

// The fields a plug-in's files give, for list --json.
void addMetadata(QJsonObject *object, const PluginMetadata &metadata)
{
    QJsonArray plugins;
    for (const PluginMetadata::Inner &inner : metadata.plugins)
        plugins.append(QJsonObject{{QStringLiteral("name"), displayName(inner.name)},
                                   {QStringLiteral("id"), displayName(inner.id)}});
    QJsonArray architectures, identifiers;
    for (const QString &architecture : metadata.architectures)
        architectures.append(displayName(architecture));
    for (const QString &identifier : metadata.identifiers)
        identifiers.append(displayName(identifier));
    object->insert(QStringLiteral("architecture"), displayName(metadata.architectures.join(',')));
    object->insert(QStringLiteral("displayName"), displayName(metadata.name));
    object->insert(QStringLiteral("vendor"), displayName(metadata.vendor));
    object->insert(QStringLiteral("version"), displayName(metadata.version));
    object->insert(QStringLiteral("architectures"), architectures);
    object->insert(QStringLiteral("package"), displayName(metadata.package));
    object->insert(QStringLiteral("plugins"), plugins);
    object->insert(QStringLiteral("identifiers"), identifiers);
    if (!metadata.unreadable.isEmpty())
        object->insert(QStringLiteral("unreadable"), displayName(metadata.unreadable));
}

// The text listing's architecture column for a plug-in whose files were read: its
// architectures, vendor and version, or why it cannot be read (the details command's summary).
QString metadataSummary(const PluginMetadata &metadata)
{
    if (!metadata.unreadable.isEmpty())
        return shownLine(metadata.unreadable);
    QStringList parts{metadata.architectures.isEmpty() ? QStringLiteral("-")
                                                       : metadata.architectures.join(',')};
    if (!metadata.vendor.isEmpty())
        parts << shownLine(metadata.vendor);
    if (!metadata.version.isEmpty())
        parts << shownLine(metadata.version);
    if (!metadata.package.isEmpty())
        parts << QStringLiteral("(%1)").arg(shownLine(metadata.package));
    return parts.join(QLatin1Char(' '));
}

QString orDash(const QString &text)
{
    return text.isEmpty() ? QStringLiteral("-") : text;
}

// The text listing's columns: what a plug-in's files say each in its own, the vendor, version
// and package left out where no plug-in listed has one. At a terminal's width the package goes
// first, then the architectures and the vendor are cut, then the version, vendor, group and scope
// go, in that order; the path stays whole.
QList<TextTable::Column> listColumns()
{
    return {{QStringLiteral("FORMAT"), 0, 0, false}, {QStringLiteral("STATE"), 0, 0, false},
            {QStringLiteral("SCOPE"), 6, 0, false},  {QStringLiteral("GROUP"), 5, 8, false},
            {QStringLiteral("ARCH"), 0, 8, false},   {QStringLiteral("VENDOR"), 4, 10, true},
            {QStringLiteral("VERSION"), 3, 0, true}, {QStringLiteral("PACKAGE"), 1, 0, true},
            {QStringLiteral("PATH"), 0, 0, false}};
}

// How wide the text listing may be: $COLUMNS where set, else the terminal's, else unlimited
// (a pipe gets every column whole).
int listingWidth(int columns)
{
    if (columns > 0)
        return columns;
    winsize size{};
    if (::isatty(STDOUT_FILENO) && ::ioctl(STDOUT_FILENO, TIOCGWINSZ, &size) == 0)
        return size.ws_col;
    return 0;
}

// Marks a plug-in to be switched, as a click in its row would.
void mark(FormatManager &manager, const PluginPtr &item, bool on)
{
    if (item->isActive() == on)
        return;
    item->setActive(on);
    item->updateLocation(manager.traits(), manager.locations().allFolderPaths(manager.traits()));
    manager.marking().updateRecord(item);
}

// The apply's plan for the pending changes, as a check reports it: a move the apply would make,
// with a warning for what it would put in the trash, or the refusal or failure it would meet.
struct Foreseen {
    MoveOutcome move;
    MoveReport::Outcome outcome = MoveReport::Would;
    const Plugin *item = nullptr;
    QString warning;
};

Foreseen foreseen(const PlannedMove &planned)
{
    Foreseen next{{planned.name, planned.from, planned.to, planned.enabled, false, planned.error},
                  MoveReport::Would,
                  planned.item.get(),
                  QString()};
    switch (planned.verdict) {
    case MoveVerdict::Move:
        break;
    case MoveVerdict::TrashIdentical:
        next.warning = QStringLiteral("%1 is already at %2; the identical copy from %3 "
                                      "would go to the trash")
                           .arg(planned.name, planned.to, planned.from);
        break;
    case MoveVerdict::TrashInTheWay:
        next.warning = QStringLiteral("%1 is in the way and would go to the trash").arg(planned.to);
        break;
    case MoveVerdict::OtherCopy:
        next.outcome = MoveReport::Refused;
        break;
    default:
        next.outcome = MoveReport::Failed;
        break;
    }
    return next;
}

MoveReport::Outcome outcomeOf(const MoveOutcome &move)
{
    if (move.ok)
        return MoveReport::Done;
    if (move.stopped)
        return MoveReport::Stopped;
    return move.otherCopyAtTarget ? MoveReport::Refused : MoveReport::Failed;
}

} // namespace

CliRunner::CliRunner(const Environment &environment, QTextStream &out, QTextStream &err)
    : m_environment(environment), m_out(out), m_err(err)
{
}

int CliRunner::run(const Options &options)
{
    if (options.command == Options::Help) {
        m_out << helpText();
        m_out.flush();
        return ExitDone;
    }
    if (options.command == Options::Version) {
        m_out << versionText() << '\n';
        m_out.flush();
        return ExitDone;
    }
    if (const QString refusal = m_environment.roots.refusalWithOptions(options.root, options.home);
        !refusal.isEmpty())
        return usageError(refusal);

    CliSession session(options, m_environment, m_err);
    switch (options.command) {
    case Options::Apply:
        return applySets(session, options);
    case Options::ApplyList:
        return applyList(session, options);
    case Options::List:
        return list(session, options);
    case Options::Enable:
        return switchNamed(session, options, true);
    case Options::Disable:
        return switchNamed(session, options, false);
    case Options::Duplicates:
        return duplicates(session, options);
    case Options::SaveSet:
        return saveSet(session, options);
    case Options::ShowSet:
        return showSet(session, options);
    case Options::Details:
        return details(session, options);
    case Options::Backup:
        return backupCommand(session, options, m_out, m_err);
    case Options::Restore:
        return restoreCommand(session, options, m_out, m_err);
    default:
        return ExitUsage;
    }
}

int CliRunner::applySets(CliSession &session, const Options &options)
{
    MoveReport report(options.json, options.check, m_out, m_err);
    // Each document is read once, before anything is locked or changed: a pipe gives its bytes
    // only once, and a bad document must stop the run while nothing has happened yet.
    const FormatTable &table = FormatTable::builtIn();
    std::map<QString, QList<PluginPtr>> documents;
    QList<QString> paths(table.count());
    for (const Format &format : table) {
        const QString given = options.sets.value(format.type);
        if (given.isEmpty())
            continue;
        paths[format.type] = session.resolvePath(given);
        if (documents.count(paths[format.type]))
            continue;
        QString problem;
        std::optional<QList<PluginPtr>> items = SetDocument::load(paths[format.type], &problem);
        if (!items) {
            report.error(QStringLiteral("KorvaneCMD: %1 set \"%2\": %3")
                             .arg(format.prefix, shownLine(given), problem));
            return report.finish(ExitUsage, session.notices());
        }
        documents[paths[format.type]] = *items;
    }

    if (!lockLibrary(session, options, report))
        return report.finish(ExitMoveFailed, session.notices());
    AppContext &context = session.controllers();
    for (const Format &format : table) {
        if (paths.at(format.type).isEmpty())
            continue;
        FormatManager *manager = context.manager(format.type);
        manager->rescan();
        const ActiveStates before = activeStates(*manager);
        for (const QString &name :
             manager->sets().mergeEntries(documents.at(paths.at(format.type))))
            report.warning(QStringLiteral("warning: %1 set \"%2\": no installed plug-in \"%3\"")
                               .arg(format.prefix, shownLine(options.sets.value(format.type)),
                                    shownLine(name)));
        applyPending(session, options, *manager, before, report);
    }
    return report.finish(ExitDone, session.notices());
}

int CliRunner::applyList(CliSession &session, const Options &options)
{
    MoveReport report(options.json, options.check, m_out, m_err);
    // The files are read before the lock, as set documents are: bad input stops the run first.
    QStringList on = options.on, off = options.off;
    for (const auto &[option, file, names] :
         {std::tuple(QStringLiteral("--on-file"), options.onFile, &on),
          std::tuple(QStringLiteral("--off-file"), options.offFile, &off)}) {
        if (file.isEmpty())
            continue;
        QString problem;
        const std::optional<QStringList> read = readNameList(session.resolvePath(file), &problem);
        if (!read) {
            report.error(
                QStringLiteral("KorvaneCMD: %1 \"%2\": %3").arg(option, shownLine(file), problem));
            return report.finish(ExitUsage, session.notices());
        }
        *names += *read;
    }
    for (const QString &name : std::as_const(on)) {
        if (off.contains(name)) {
            report.error(
                QStringLiteral("KorvaneCMD: \"%1\" is named both on and off").arg(shownLine(name)));
            return report.finish(ExitUsage, session.notices());
        }
    }

    if (!lockLibrary(session, options, report))
        return report.finish(ExitMoveFailed, session.notices());
    FormatManager &manager = *session.controllers().manager(options.format);
    manager.rescan();
    const ActiveStates before = activeStates(manager);
    const QString format = manager.traits().prefix;

    // Every name is looked up before anything is marked: a name the library lacks moves nothing.
    QSet<const Plugin *> wantedOn, wantedOff;
    QStringList unknown;
    for (const auto &[names, wanted] : {std::pair(&on, &wantedOn), std::pair(&off, &wantedOff)}) {
        for (const QString &name : std::as_const(*names)) {
            const QList<PluginPtr> named = pluginsNamed(manager, name);
            if (named.isEmpty() && !unknown.contains(name))
                unknown << name;
            for (const PluginPtr &item : named)
                wanted->insert(item.get());
        }
    }
    if (!unknown.isEmpty()) {
        for (const QString &name : std::as_const(unknown))
            report.error(QStringLiteral("KorvaneCMD: no %1 plug-in named \"%2\"")
                             .arg(format, shownLine(name)));
        report.error(QStringLiteral("KorvaneCMD: nothing changed"));
        return report.finish(ExitMoveFailed, session.notices());
    }
    // "Foo" on and "Foo.component" off: the same plug-in asked both ways.
    for (const PluginPtr &item : manager.items()) {
        if (wantedOn.contains(item.get()) && wantedOff.contains(item.get())) {
            report.error(QStringLiteral("KorvaneCMD: %1 plug-in \"%2\" is named both on and off")
                             .arg(format, shownLine(item->name())));
            return report.finish(ExitUsage, session.notices());
        }
    }

    for (const PluginPtr &item : manager.items()) {
        if (wantedOn.contains(item.get()))
            mark(manager, item, true);
        else if (wantedOff.contains(item.get()) || options.only)
            mark(manager, item, false);
    }
    applyPending(session, options, manager, before, report);
    return report.finish(ExitDone, session.notices());
}

int CliRunner::list(CliSession &session, const Options &options)
{
    Listing listing(options.json, m_out);
    listing.setColumns(listColumns());
    for (FormatManager *manager : scanned(session, options)) {
        const QString format = manager->traits().prefix;
        for (const PluginPtr &item : manager->items()) {
            const QString group = manager->groupName(*item);
            QJsonObject object{{QStringLiteral("format"), format},
                               {QStringLiteral("name"), displayName(item->name())},
                               {QStringLiteral("location"), displayName(item->location())},
                               {QStringLiteral("global"), item->isGlobal()},
                               {QStringLiteral("active"), item->isActive()},
                               {QStringLiteral("group"), displayName(group)},
                               {QStringLiteral("architecture"), item->architectureName()}};
            QString architecture = item->architectureName();
            QString vendor, version, package;
            if (const PluginMetadata *metadata = item->metadata()) {
                addMetadata(&object, *metadata);
                architecture = !metadata->unreadable.isEmpty()
                                   ? shownLine(metadata->unreadable)
                                   : orDash(metadata->architectures.join(','));
                vendor = orDash(shownLine(metadata->vendor));
                version = orDash(shownLine(metadata->version));
                package = orDash(shownLine(metadata->package));
            }
            listing.add(object,
                        {format, onOff(item->isActive()), scope(item->isGlobal()),
                         group.isEmpty() ? QStringLiteral("-") : group, architecture,
                         orDash(vendor), orDash(version), orDash(package), fullPath(*item)});
        }
    }
    // The titles only for a person at a terminal: a script counts and splits lines.
    listing.print(listingWidth(m_environment.settings.columns), ::isatty(STDOUT_FILENO) != 0);
    return ExitDone;
}

int CliRunner::switchNamed(CliSession &session, const Options &options, bool on)
{
    MoveReport report(options.json, options.check, m_out, m_err);
    if (!lockLibrary(session, options, report))
        return report.finish(ExitMoveFailed, session.notices());
    FormatManager &manager = *session.controllers().manager(options.format);
    manager.rescan();
    const ActiveStates before = activeStates(manager);

    // Every name is checked before anything moves: a typo must not leave half a change behind.
    QList<PluginPtr> targets;
    QStringList unknown;
    for (const QString &name : options.names) {
        const QList<PluginPtr> named = pluginsNamed(manager, name);
        if (named.isEmpty())
            unknown << name;
        targets << named;
    }
    if (!unknown.isEmpty()) {
        for (const QString &name : std::as_const(unknown))
            report.error(QStringLiteral("KorvaneCMD: no %1 plug-in named \"%2\"")
                             .arg(manager.traits().prefix, shownLine(name)));
        report.error(QStringLiteral("KorvaneCMD: nothing changed"));
        return report.finish(ExitUsage, session.notices());
    }

    for (const PluginPtr &item : std::as_const(targets))
        mark(manager, item, on);
    applyPending(session, options, manager, before, report);
    return report.finish(ExitDone, session.notices());
}

int CliRunner::details(CliSession &session, const Options &options)
{
    FormatManager &manager = *session.controllers().manager(options.format);
    manager.rescan();
    const Format &format = manager.traits();
    // Only these formats have descriptors the probe can read; it loads the code, so it runs here,
    // asked for, never in a scan.
    const QString prefix = format.prefix;
    const QString probeFormat = prefix == QLatin1String("CLAP")     ? QStringLiteral("clap")
                                : prefix == QLatin1String("LADSPA") ? QStringLiteral("ladspa")
                                : prefix == QLatin1String("DSSI")   ? QStringLiteral("dssi")
                                                                    : QString();
    ProbeRunner probe;
    Listing listing(options.json, m_out);
    int status = ExitDone;
    for (const QString &name : options.names) {
        const QList<PluginPtr> named = pluginsNamed(manager, name);
        if (named.isEmpty()) {
            m_err << QStringLiteral("KorvaneCMD: no %1 plug-in named \"%2\"\n")
                         .arg(prefix, shownLine(name));
            status = ExitMoveFailed;
        }
        for (const PluginPtr &item : named) {
            QJsonObject object{{QStringLiteral("format"), prefix},
                               {QStringLiteral("name"), displayName(item->name())},
                               {QStringLiteral("location"), displayName(item->location())}};
            QString summary = item->metadata() ? metadataSummary(*item->metadata()) : QString();
            if (item->metadata())
                addMetadata(&object, *item->metadata());
            if (!probeFormat.isEmpty()) {
                const ProbeResult result = probe.probe(fullPath(*item), probeFormat);
                QJsonArray loaded;
                for (const ProbedPlugin &plugin : result.report.plugins) {
                    loaded.append(
                        QJsonObject{{QStringLiteral("id"), displayName(plugin.id)},
                                    {QStringLiteral("name"), displayName(plugin.name)},
                                    {QStringLiteral("vendor"), displayName(plugin.vendor)}});
                    summary += QStringLiteral("; ") + shownLine(plugin.name) + QStringLiteral(" (")
                               + shownLine(plugin.id) + QLatin1Char(')');
                }
                object.insert(QStringLiteral("loaded"), loaded);
                if (!result.ok()) {
                    const QString why =
                        result.message.isEmpty() ? result.report.error : result.message;
                    object.insert(QStringLiteral("probeError"), displayName(why));
                    summary += QStringLiteral("; ") + shownLine(why);
                }
            }
            listing.add(object, {prefix, summary, fullPath(*item)});
        }
    }
    listing.print();
    return status;
}

int CliRunner::duplicates(CliSession &session, const Options &options)
{
    Listing listing(options.json, m_out);
    for (FormatManager *manager : scanned(session, options)) {
        const QString format = manager->traits().prefix;
        const QStringList folders = manager->locations().allFolderPaths(manager->traits());
        for (const DuplicateReport::Name &name :
             DuplicateReport::find(manager->plugins(), folders)) {
            const QString count = QString::number(name.copies.size());
            QJsonArray copies;
            for (const DuplicateReport::Copy &copy : name.copies)
                copies.append(QJsonObject{{QStringLiteral("location"), displayName(copy.folder)},
                                          {QStringLiteral("version"), displayName(copy.version)},
                                          {QStringLiteral("active"), copy.active}});
            if (options.json) {
                listing.add(QJsonObject{{QStringLiteral("format"), format},
                                        {QStringLiteral("name"), displayName(name.name)},
                                        {QStringLiteral("count"), int(name.copies.size())},
                                        {QStringLiteral("copies"), copies}},
                            {});
                continue;
            }
            // A line per copy: what tells the copies apart is the point of the report.
            for (const DuplicateReport::Copy &copy : name.copies)
                listing.add({}, {format, count, name.name, onOff(copy.active),
                                 copy.version.isEmpty() ? QStringLiteral("-") : copy.version,
                                 copy.folder});
        }
    }
    listing.print();
    return ExitDone;
}

int CliRunner::saveSet(CliSession &session, const Options &options)
{
    AppContext &context = session.controllers();
    FormatManager *manager = context.manager(options.format);
    manager->rescan();
    const QString path = session.resolvePath(options.file);
    if (!SetDocument::write(session.files(), path, manager->items())) {
        m_err << QStringLiteral("KorvaneCMD: could not write \"%1\"\n").arg(path);
        m_err.flush();
        return ExitMoveFailed;
    }
    return ExitDone;
}

int CliRunner::showSet(CliSession &session, const Options &options)
{
    QString problem;
    // Decoded without controllers: showing a document must not touch the user's data.
    const std::optional<QList<PluginPtr>> items =
        SetDocument::load(session.resolvePath(options.file), &problem);
    if (!items)
        return usageError(QStringLiteral("\"%1\": %2").arg(options.file, problem));

    Listing listing(options.json, m_out);
    for (const PluginPtr &item : *items)
        listing.add(QJsonObject{{QStringLiteral("name"), displayName(item->name())},
                                {QStringLiteral("location"), displayName(item->location())},
                                {QStringLiteral("global"), item->isGlobal()},
                                {QStringLiteral("active"), item->isActive()}},
                    {onOff(item->isActive()), scope(item->isGlobal()), fullPath(*item)});
    listing.print();
    return ExitDone;
}

bool CliRunner::lockLibrary(CliSession &session, const Options &options, MoveReport &report)
{
    QString failure;
    bool held = false;
    if (session.lockLibrary(&failure, &held))
        return true;
    // Another mover at work would make the check's answer stale at once; a file system that
    // keeps no locks leaves a check, which moves nothing, as good as without.
    if (options.check && !held) {
        report.warning(QStringLiteral("KorvaneCMD: checked without the lock: ") + failure);
        return true;
    }
    report.error((options.check ? QStringLiteral("KorvaneCMD: nothing checked: ")
                                : QStringLiteral("KorvaneCMD: nothing moved: "))
                 + failure);
    return false;
}

int CliRunner::usageError(const QString &message)
{
    m_err << "KorvaneCMD: " << message << '\n';
    m_err.flush();
    return ExitUsage;
}

void CliRunner::applyPending(CliSession &session, const Options &options, FormatManager &manager,
                             const ActiveStates &before, MoveReport &report)
{
    const AppContext &context = session.controllers();
    const Format &row = context.formats().at(manager.type());
    const QStringList folders = context.locations().allFolderPaths(row);
    const QString format = manager.traits().prefix;
    report.setBefore(format, activeNames(manager, before));
    const auto add = [&](const MoveOutcome &outcome, MoveReport::Outcome kind) {
        const auto [done, wanted] =
            moveWords(row, folders, outcome.from, outcome.to, outcome.name, outcome.enabled);
        MoveReport::Move move{format, outcome.name, outcome.from,         outcome.to, done,
                              wanted, kind,         outcome.error.reason, QString()};
        // The failing path is usually one of the two; it is named when it is something else.
        const QString &at = outcome.error.path;
        if (!at.isEmpty() && at != outcome.from && at != outcome.to)
            move.at = at;
        report.add(move);
    };

    if (!options.check) {
        for (const MoveOutcome &outcome : manager.applyPending())
            add(outcome, outcomeOf(outcome));
        report.setAfter(format, activeNames(manager)); // as the apply's own rescan found them
        return;
    }
    // As the marks stand, except where the move would not be made.
    ActiveStates after = before;
    MovePlanner planner(session.files(), manager.traits(), manager.plugins(), manager.locations());
    for (const PlannedMove &planned : planner.forecast()) {
        const Foreseen next = foreseen(planned);
        if (!next.warning.isEmpty())
            report.warning(QStringLiteral("KorvaneCMD: ") + shownLine(next.warning));
        add(next.move, next.outcome);
        if (next.item && next.outcome == MoveReport::Would)
            after[next.item] = next.item->isActive();
    }
    report.setAfter(format, activeNames(manager, after));
}

QList<FormatManager *> CliRunner::scanned(CliSession &session, const Options &options)
{
    QList<FormatManager *> managers;
    for (int type : formats(options)) {
        managers << session.controllers().manager(type);
        managers.constLast()->rescan();
    }
    return managers;
}

QList<int> CliRunner::formats(const Options &options)
{
    if (options.format >= 0)
        return {options.format};
    QList<int> all;
    for (const Format &format : FormatTable::builtIn())
        all << format.type;
    return all;
}

int run(const Options &options, const Environment &environment, QTextStream &out, QTextStream &err)
{
    return CliRunner(environment, out, err).run(options);
}

} // namespace korvane
