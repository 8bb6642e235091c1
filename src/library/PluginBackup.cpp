#include "library/PluginBackup.h"

#include "codec/PluginArchive.h"
#include "core/ActivityLog.h"
#include "core/Locations.h"
#include "core/RunParts.h"
#include "core/Texts.h"
#include "core/UserInterface.h"
#include "library/DistributionGuard.h"
#include "library/FormatManager.h"
#include "library/SetDocument.h"
#include "os/FileOperations.h"
#include "os/LibraryLock.h"
#include "os/PathBytes.h"
#include "os/StagingFolders.h"
#include "os/SystemLog.h"

#include <QDate>
#include <QFileInfo>
#include <QHash>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <memory>
#include <optional>

namespace korvane {

namespace {

constexpr int kManifestVersion = 1;

QString pluginEntry(int loc, const QString &relative)
{
    return QStringLiteral("plugins/%1/%2").arg(loc).arg(relative);
}

// One saved plug-in as the manifest lists it.
struct SavedPlugin {
    QString name;
    QString relative; // below its folder: the name, or "Sub/Name" from a subfolder
    int location = 0;
};

struct Manifest {
    QString format;
    QStringList folders; // by location code, as written
    QList<SavedPlugin> plugins;
};

QByteArray manifestBytes(const FormatManager &manager, const QList<SavedPlugin> &plugins)
{
    const FormatTraits &format = manager.traits();
    QJsonArray folders;
    for (int loc = 0; loc < format.locationCount(); ++loc)
        folders << format.folder(loc);
    QJsonArray list;
    for (const SavedPlugin &plugin : plugins)
        list << QJsonObject{
            {QStringLiteral("name"), plugin.name},
            {QStringLiteral("location"), plugin.location},
            {QStringLiteral("system"), format.isSystem(plugin.location)},
            {QStringLiteral("active"), isActiveLocation(plugin.location)},
            {QStringLiteral("entry"), pluginEntry(plugin.location, plugin.relative)}};
    const QJsonObject root{
        {QStringLiteral("korvaneBackup"), kManifestVersion},
        {QStringLiteral("format"), manager.traits().commandLineName()},
        {QStringLiteral("folders"), folders},
        {QStringLiteral("plugins"), list},
        {QStringLiteral("set"), PluginBackup::setDocumentName()},
        {QStringLiteral("created"), QDateTime::currentDateTimeUtc().toString(Qt::ISODate)}};
    return QJsonDocument(root).toJson();
}

// nullopt with the reason when the bytes are no manifest this program wrote.
std::optional<Manifest> parseManifest(const QByteArray &bytes, QString *problem)
{
    QJsonParseError error{};
    const QJsonDocument document = QJsonDocument::fromJson(bytes, &error);
    const QJsonObject root = document.object();
    if (error.error != QJsonParseError::NoError || !document.isObject()
        || root.value(QStringLiteral("korvaneBackup")).toInt() != kManifestVersion) {
        *problem = korvane::tr("It is not a Korvane backup.");
        return std::nullopt;
    }
    Manifest manifest;
    manifest.format = root.value(QStringLiteral("format")).toString();
    for (const QJsonValue value : root.value(QStringLiteral("folders")).toArray())
        manifest.folders << value.toString();
    // A row lists its folder pairs two by two; a backup lists them all, the first four at least.
    if (manifest.folders.size() % 2 != 0 || manifest.folders.size() < LocationCount
        || manifest.folders.contains(QString())) {
        *problem = korvane::tr("Its list of plug-ins is damaged.");
        return std::nullopt;
    }
    for (const QJsonValue value : root.value(QStringLiteral("plugins")).toArray()) {
        const QJsonObject object = value.toObject();
        SavedPlugin plugin;
        plugin.name = object.value(QStringLiteral("name")).toString();
        plugin.location = object.value(QStringLiteral("location")).toInt(-1);
        const QString entry = object.value(QStringLiteral("entry")).toString();
        const QString prefix = pluginEntry(plugin.location, QString());
        plugin.relative = entry.mid(prefix.size());
        if (plugin.name.isEmpty() || plugin.location < 0
            || plugin.location >= manifest.folders.size() || !entry.startsWith(prefix)
            || !PluginArchive::refusal(pathBytes(entry)).isEmpty()
            || (plugin.relative != plugin.name
                && QFileInfo(plugin.relative).fileName() != plugin.name)) {
            *problem = korvane::tr("Its list of plug-ins is damaged.");
            return std::nullopt;
        }
        manifest.plugins << plugin;
    }
    return manifest;
}

// Passes the archive's progress to the panel, a change per percent, and its Cancel back.
ArchiveProgress panelProgress(UserInterface &ui)
{
    auto shown = std::make_shared<int>(-1);
    return [&ui, shown](qint64 done, qint64 total) {
        const int percent = total > 0 ? int(done * 100 / total) : 0;
        if (percent != *shown) {
            *shown = percent;
            ui.progressValue(percent, 100);
            const QLocale locale;
            ui.progressDetail(
                korvane::tr("%1 of %2")
                    .arg(locale.formattedDataSize(done), locale.formattedDataSize(total)));
        }
        return !ui.progressCancelled();
    };
}

class ProgressScope {
public:
    ProgressScope(UserInterface &ui, const QString &title) : m_ui(ui) { m_ui.progressBegin(title); }
    ~ProgressScope() { m_ui.progressEnd(); }
    ProgressScope(const ProgressScope &) = delete;
    ProgressScope &operator=(const ProgressScope &) = delete;

private:
    UserInterface &m_ui;
};

// Said where a person will see it: the log window in their language, the system log and
// KorvaneCMD's standard error in English.
void tell(FormatManager &manager, const char *text, const QStringList &args)
{
    // One pass fills every place, so a "%2" in a file name stays as it is.
    auto fill = [&args](const QString &format) {
        return args.size() == 1 ? format.arg(args.at(0)) : format.arg(args.at(0), args.at(1));
    };
    const QString english = fill(QString::fromUtf8(text));
    const QString shown = fill(korvane::tr(text));
    systemNotice(english);
    manager.parts().log.append(shown + QLatin1Char('\n'));
}

void showAlert(UserInterface &ui, const QString &message, const QString &informative,
               Alert::Style style = Alert::Warning)
{
    Alert alert;
    alert.messageText = message;
    alert.informativeText = informative;
    alert.buttons = {korvane::tr("OK")};
    alert.style = style;
    ui.runAlert(alert);
}

} // namespace

PluginBackup::Result PluginBackup::backup(const QString &archivePath)
{
    Result result;
    const FormatTraits &format = m_manager.traits();
    // Every pair of the row: a Linux format's plug-ins lie in many folders.
    const QStringList folders = m_manager.locations().allFolderPaths(format);
    QList<SavedPlugin> saved;
    QList<ArchiveTree> trees;
    QList<PluginPtr> states;
    int owned = 0;
    for (const PluginPtr &item : m_manager.items()) {
        // The folder the scan found it in, not a change still pending in the table.
        const int loc = int(folders.indexOf(m_manager.plugins().folderOnDisk(*item)));
        if (loc < 0)
            continue;
        // What the distribution installed is the package manager's to put back, and a restore
        // could create nothing there.
        if (format.isDistributionOwned(loc)) {
            ++owned;
            continue;
        }
        const QString path = m_manager.plugins().pathOnDisk(*item);
        const SavedPlugin plugin{item->name(), item->name(), loc};
        saved << plugin;
        trees << ArchiveTree{path, pluginEntry(loc, plugin.relative)};
        auto state = std::make_shared<Plugin>();
        state->setName(item->name());
        state->setLocation(QFileInfo(path).path());
        state->setGlobal(format.isSystem(loc));
        state->setPair(loc / 2);
        state->setActive(isActiveLocation(loc));
        states << state;
    }
    const QList<ArchiveDocument> documents{
        {manifestName(), manifestBytes(m_manager, saved)},
        {setDocumentName() + QLatin1Char('.') + format.defaultSetExtension,
         SetDocument::encode(states)}};

    UserInterface &ui = m_manager.ui();
    const ProgressScope panel(ui, korvane::tr("Backing up %1").arg(format.tabLabel));
    ui.progressText(QFileInfo(archivePath).fileName());
    const ArchiveResult written =
        PluginArchive::write(archivePath, documents, trees, panelProgress(ui));
    result.ok = written.ok;
    result.cancelled = written.cancelled;
    result.error = written.error;
    result.skipped = written.skipped;
    result.count = int(saved.size());
    if (result.ok && owned > 0)
        tell(m_manager,
             QT_TRANSLATE_NOOP("korvane", "Left out of the backup: %1 plug-ins in the "
                                          "distribution's folders, which its package manager "
                                          "restores"),
             {QString::number(owned)});
    if (result.ok)
        for (const QString &skipped : std::as_const(result.skipped))
            tell(m_manager,
                 QT_TRANSLATE_NOOP("korvane", "Left out of the backup (neither a file, a folder "
                                              "nor a link inside its plug-in): %1"),
                 {displayName(skipped)});
    return result;
}

PluginBackup::Result PluginBackup::restore(const QString &archivePath, const ConflictAnswer &answer,
                                           bool checkOnly)
{
    Result result;
    const FormatTraits &format = m_manager.traits();
    FileOperations &files = m_manager.files();
    UserInterface &ui = m_manager.ui();
    ArchiveLimits limits;
    // plugins/<loc>/<name>: a link inside one plug-in may not point into another.
    limits.linkScopeDepth = 3;

    const ProgressScope panel(ui, korvane::tr("Restoring %1").arg(format.tabLabel));
    ui.progressText(korvane::tr("Checking the backup"));
    const std::optional<QByteArray> manifestData =
        PluginArchive::readDocument(archivePath, manifestName(), limits);
    QString problem;
    std::optional<Manifest> manifest;
    if (!manifestData)
        problem = korvane::tr("It is not a Korvane backup.");
    else
        manifest = parseManifest(*manifestData, &problem);
    if (manifest && manifest->format != format.commandLineName())
        problem = korvane::tr("It is a backup of another format (%1).").arg(manifest->format);
    if (!problem.isEmpty()) {
        result.badInput = true;
        result.error = displayName(archivePath) + QStringLiteral(": ") + problem;
        return result;
    }
    // Nothing of an archive is put anywhere before all of it has been read and found whole.
    const ArchiveResult verified =
        PluginArchive::verify(archivePath, limits, nullptr, panelProgress(ui));
    if (!verified.ok) {
        result.cancelled = verified.cancelled;
        result.badInput = !verified.cancelled;
        result.error = verified.error;
        return result;
    }

    // A check writes nothing, the lock file included; its answer may go stale, as any check's.
    std::optional<LibraryLock> lock;
    if (!checkOnly)
        lock.emplace(m_manager.parts().run.locks, files,
                     m_manager.locations().pluginFolders(format));
    if (lock && !lock->isLocked()) {
        result.error =
            lock->holder().isEmpty()
                ? korvane::tr("The plug-in library could not be locked: %1.").arg(lock->failure())
                : korvane::tr("%1 is moving plug-ins. Try again when it has finished.")
                      .arg(lock->holder());
        return result;
    }

    // Every question first: a Cancel leaves everything as it was.
    const QStringList folders = m_manager.locations().allFolderPaths(format);
    const DistributionGuard guard(format, m_manager.locations());
    struct Placement {
        SavedPlugin plugin;
        int location = -1; // this run's code of the folder it was saved from
        QString target;
        QString staged;
        QString installed; // to the trash first
    };
    QList<Placement> placements;
    for (const SavedPlugin &plugin : std::as_const(manifest->plugins)) {
        // By the folder as written: the pairs a run adds from the hosts' variables may differ
        // from those of the run that wrote the backup.
        const QString savedFolder = manifest->folders.at(plugin.location);
        int loc = -1;
        for (int candidate = 0; candidate < format.locationCount() && loc < 0; ++candidate)
            if (format.folder(candidate) == savedFolder)
                loc = candidate;
        if (loc < 0) {
            result.failed << korvane::tr("%1: its folder %2 is not one of the format's folders")
                                 .arg(plugin.name, savedFolder);
            continue;
        }
        const QString target = folders.at(loc) + QLatin1Char('/') + plugin.relative;
        if (const QString refusal = guard.refusal(plugin.name, folders.at(loc), QString(), {});
            !refusal.isEmpty()) {
            result.failed << refusal;
            continue;
        }
        const QString sibling = folders.at(loc ^ 1) + QLatin1Char('/') + plugin.relative;
        QString installed;
        if (files.identity(target, false))
            installed = target;
        else if (files.identity(sibling, false))
            installed = sibling;
        Placement placement{plugin, loc, target, {}, {}};
        if (!installed.isEmpty()) {
            const Conflict choice = answer ? answer(plugin.name, installed) : Conflict::Keep;
            if (choice == Conflict::Cancel) {
                result.cancelled = true;
                return result;
            }
            if (choice == Conflict::Keep) {
                result.kept << installed;
                continue;
            }
            placement.installed = installed;
        }
        placements << placement;
    }
    if (checkOnly) {
        for (const Placement &placement : std::as_const(placements)) {
            result.restored << placement.target;
            if (!placement.installed.isEmpty())
                result.replaced << placement.installed;
        }
        result.ok = result.failed.isEmpty();
        if (!result.ok)
            result.error = result.failed.join(QStringLiteral("; "));
        return result;
    }

    // Staged in each folder's own staging folder: a rename away from its place, and what a later
    // scan recognises as this process's copies under way should it die.
    QHash<QString, int> byEntry;
    QSet<QString> stagingFolders;
    FileError error;
    for (int i = 0; i < placements.size(); ++i) {
        Placement &placement = placements[i];
        const QString &folder = folders.at(placement.location);
        if (!makePath(files, folder, &error)) {
            result.error = error.path + QStringLiteral(": ") + error.reason;
            return result;
        }
        const QString staging = folder + QLatin1Char('/') + StagingFolders::partialName();
        stagingFolders.insert(staging);
        placement.staged = staging + QLatin1Char('/') + placement.plugin.relative;
        byEntry.insert(pluginEntry(placement.plugin.location, placement.plugin.relative), i);
    }
    auto removeStaging = [&] {
        for (const QString &staging : std::as_const(stagingFolders)) {
            FileError leftover;
            if (files.exists(staging) && !files.remove(staging, &leftover))
                systemLog(
                    QStringLiteral("Staged copies left in %1: %2").arg(staging, leftover.reason));
        }
    };
    ui.progressText(korvane::tr("Unpacking the plug-ins"));
    const ArchiveResult extracted = PluginArchive::extract(
        archivePath,
        [&](const QByteArray &entry) -> QByteArray {
            // The plug-in's own entry or one below it.
            QString name = pathFromBytes(entry);
            for (;;) {
                const auto it = byEntry.constFind(name);
                if (it != byEntry.constEnd())
                    return pathBytes(placements.at(*it).staged
                                     + pathFromBytes(entry).mid(name.size()));
                const qsizetype slash = name.lastIndexOf(QLatin1Char('/'));
                if (slash < 0)
                    return {};
                name.truncate(slash);
            }
        },
        limits, panelProgress(ui));
    if (!extracted.ok) {
        // The archive still holds every plug-in: what was staged goes, nothing else changed.
        removeStaging();
        result.cancelled = extracted.cancelled;
        result.error = extracted.error;
        return result;
    }

    ui.progressText(korvane::tr("Putting the plug-ins back"));
    int done = 0;
    for (const Placement &placement : std::as_const(placements)) {
        ui.progressValue(done++, double(placements.size()));
        FileError failure;
        if (!placement.installed.isEmpty()) {
            QString trashedTo;
            if (!files.moveToTrash(placement.installed, &failure, &trashedTo)) {
                result.failed << placement.installed + QStringLiteral(": ") + failure.reason;
                continue;
            }
            tell(m_manager, QT_TRANSLATE_NOOP("korvane", "%1 is now in the trash: %2"),
                 {placement.installed, trashedTo});
            result.replaced << placement.installed;
        }
        if (!makePath(files, QFileInfo(placement.target).path(), &failure)
            || !files.move(placement.staged, placement.target, &failure)) {
            result.failed << placement.target + QStringLiteral(": ") + failure.reason;
            continue;
        }
        result.restored << placement.target;
    }
    removeStaging();
    result.ok = result.failed.isEmpty();
    if (!result.ok)
        result.error = result.failed.join(QLatin1Char('\n'));
    return result;
}

void PluginBackup::backupWithDialogs()
{
    UserInterface &ui = m_manager.ui();
    const FormatTraits &format = m_manager.traits();
    SavePanelRequest request;
    request.directory = m_manager.locations().documentsFolder();
    request.fileName = korvane::tr("%1 Backup %2.tar.xz")
                           .arg(format.tabLabel, QDate::currentDate().toString(Qt::ISODate));
    request.allowedTypes = {QStringLiteral("xz")};
    const std::optional<QString> path = ui.runSavePanel(request);
    if (!path)
        return;
    const Result result = backup(*path);
    if (result.cancelled)
        return;
    if (!result.ok) {
        showAlert(ui, korvane::tr("The backup could not be written"),
                  result.error + QLatin1Char('\n')
                      + korvane::tr("Nothing was written to \"%1\".").arg(displayName(*path)),
                  Alert::Critical);
        return;
    }
    // Said where the person looks: the log comes forward, as it does for the duplicate report.
    m_manager.parts().log.show();
    m_manager.parts().log.append(korvane::tr("%1 plug-ins backed up to %2\n")
                                     .arg(QString::number(result.count), displayName(*path)));
}

void PluginBackup::restoreWithDialogs()
{
    UserInterface &ui = m_manager.ui();
    OpenPanelRequest request;
    request.directory = m_manager.locations().documentsFolder();
    request.allowedTypes = {QStringLiteral("xz")};
    const std::optional<QString> path = ui.runOpenPanel(request);
    if (!path)
        return;
    const Result result = restore(*path, [&ui](const QString &name, const QString &installed) {
        Alert alert;
        alert.messageText = korvane::tr("\"%1\" is installed already").arg(displayName(name));
        alert.informativeText =
            korvane::tr("Replace puts the installed copy at \"%1\" in the trash and the saved one "
                        "in its place.")
                .arg(displayName(installed));
        alert.buttons = {korvane::tr("Keep Installed"), korvane::tr("Replace"),
                         korvane::tr("Cancel")};
        alert.addedButtons = true;
        switch (ui.runAlert(alert)) {
        case AlertAnswer::Second:
            return Conflict::Replace;
        case AlertAnswer::First:
            return Conflict::Keep;
        default:
            return Conflict::Cancel;
        }
    });
    if (result.cancelled && result.restored.isEmpty())
        return;
    if (!result.restored.isEmpty() || !result.kept.isEmpty())
        m_manager.parts().log.show();
    for (const QString &restored : result.restored)
        m_manager.parts().log.append(korvane::tr("Restored %1\n").arg(displayName(restored)));
    for (const QString &kept : result.kept)
        m_manager.parts().log.append(korvane::tr("Kept the installed %1\n").arg(displayName(kept)));
    if (!result.restored.isEmpty() || !result.replaced.isEmpty())
        m_manager.rescan();
    if (!result.ok && !result.error.isEmpty()) {
        showAlert(ui,
                  result.restored.isEmpty() ? korvane::tr("The backup was not restored")
                                            : korvane::tr("Not everything could be restored"),
                  result.error, Alert::Critical);
        if (result.restored.isEmpty())
            return;
    }
    // The saved states become the current set: a kept copy in another state shows as a change.
    const std::optional<QByteArray> set = PluginArchive::readDocument(
        *path, setDocumentName() + QLatin1Char('.') + m_manager.traits().defaultSetExtension);
    if (set)
        m_manager.sets().mergeEntries(SetDocument::decode(*set, &m_manager.parts().content));
}

} // namespace korvane
