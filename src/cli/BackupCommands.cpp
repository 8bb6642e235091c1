#include "cli/BackupCommands.h"

#include "app/AppContext.h"
#include "cli/CliRunner.h"
#include "cli/CliSession.h"
#include "library/FormatManager.h"
#include "library/PluginBackup.h"
#include "os/PathBytes.h"

#include <QTextStream>

namespace korvane {

int backupCommand(CliSession &session, const Options &options, QTextStream &out, QTextStream &err)
{
    FormatManager *manager = session.controllers().manager(options.format);
    manager->rescan();
    const QString path = session.resolvePath(options.to);
    const PluginBackup::Result result = PluginBackup(*manager).backup(path);
    if (!result.ok) {
        err << "KorvaneCMD: backup not written: " << result.error << '\n';
        err.flush();
        return ExitMoveFailed;
    }
    out << "backed up " << result.count << " plug-ins to " << displayName(path) << '\n';
    out.flush();
    return ExitDone;
}

int restoreCommand(CliSession &session, const Options &options, QTextStream &out, QTextStream &err)
{
    FormatManager *manager = session.controllers().manager(options.format);
    const QString path = session.resolvePath(options.file);
    const bool replace = options.replace;
    const PluginBackup::Result result = PluginBackup(*manager).restore(
        path,
        [replace](const QString &, const QString &) {
            return replace ? PluginBackup::Conflict::Replace : PluginBackup::Conflict::Keep;
        },
        options.check);
    const char *restoredWord = options.check ? "would restore " : "restored ";
    for (const QString &restored : result.restored)
        out << restoredWord << displayName(restored) << '\n';
    if (options.check)
        for (const QString &replaced : result.replaced)
            out << "would move to the trash " << displayName(replaced) << '\n';
    out.flush();
    for (const QString &kept : result.kept)
        err << "KorvaneCMD: not restored, installed already: " << displayName(kept)
            << " (--replace puts the saved copy in its place)\n";
    if (!result.ok)
        err << "KorvaneCMD: " << (result.restored.isEmpty() ? "nothing restored: " : "")
            << result.error << '\n';
    err.flush();
    if (!result.ok)
        return result.badInput ? ExitUsage : ExitMoveFailed;
    if (options.check && !result.restored.isEmpty())
        return ExitWouldMove;
    return ExitDone;
}

} // namespace korvane
