#pragma once

#include <QList>
#include <QString>
#include <QStringList>
#include <functional>

namespace korvane {

class FormatManager;

// A backup of one format's plug-ins, on and off, system and user: one archive (PluginArchive)
// holding a manifest, a set document of their states, and each plug-in under
// "plugins/<location code>/<its path below the folder>". Restoring checks the whole archive
// first, stages the plug-ins in the folders' own staging folders (so a kill leaves only what a
// later scan settles) and moves them into place under the folders' lock, never over an installed
// copy unless told to.
class PluginBackup {
public:
    explicit PluginBackup(FormatManager &manager) : m_manager(manager) {}

    struct Result {
        bool ok = false;
        bool cancelled = false;
        bool badInput = false; // the archive is no backup of this format, or is damaged
        QString error;         // what failed, for a person
        QStringList restored;  // plug-ins put in place (paths)
        QStringList kept;      // installed copies left as they were, in place of the saved ones
        QStringList replaced;  // installed copies that went to the trash for the saved ones
        QStringList failed;    // "path: reason" for each plug-in that could not be put back
        QStringList skipped;   // backup: items neither file, folder nor link, left out
        int count = 0;         // backup: plug-ins written
    };

    // Writes every plug-in of the format as it lies on disk now (a pending change is not yet
    // made, so it is not in the backup).
    Result backup(const QString &archivePath);

    enum class Conflict { Replace, Keep, Cancel };
    // Asked once per saved plug-in whose place (on or off) holds an installed copy, before
    // anything is touched: name, the installed copy's path.
    using ConflictAnswer = std::function<Conflict(const QString &name, const QString &installed)>;
    // checkOnly: every check and question as a restore makes them, then stops before anything is
    // written; restored and replaced say what a restore would do.
    Result restore(const QString &archivePath, const ConflictAnswer &answer,
                   bool checkOnly = false);

    // The window's commands: a save or open dialog, progress with Cancel, and an alert for
    // whatever failed. After a restore the saved set is loaded as the current one: installed
    // copies that were kept show their saved state as changes to apply.
    void backupWithDialogs();
    void restoreWithDialogs();

    // The archive's names of the manifest and the set document.
    static QString manifestName() { return QStringLiteral("korvane-backup/manifest.json"); }
    static QString setDocumentName() { return QStringLiteral("korvane-backup/set"); }

private:
    FormatManager &m_manager;
};

} // namespace korvane
