#include "library/DropInstall.h"

#include "codec/Bundle.h"
#include "core/ActivityLog.h"
#include "core/DataFiles.h"
#include "core/FileErrorQuestion.h"
#include "core/Locations.h"
#include "core/Texts.h"
#include "core/UserInterface.h"
#include "library/DistributionGuard.h"
#include "library/FormatManager.h"
#include "library/Reporting.h"
#include "os/FileOperations.h"
#include "os/SystemLog.h"

#include <QFileInfo>

namespace korvane {

namespace {

// The last component of a dropped path; a folder may arrive with a trailing separator.
QString lastPathComponent(QString path)
{
    while (path.size() > 1 && path.endsWith(QLatin1Char('/')))
        path.chop(1);
    return path.mid(path.lastIndexOf(QLatin1Char('/')) + 1);
}

} // namespace

QString DropInstall::versionOf(const QString &path)
{
    const QString shortVersion =
        Bundle::infoValue(path, QStringLiteral("CFBundleShortVersionString")).toString().left(32);
    const QString build =
        Bundle::infoValue(path, QStringLiteral("CFBundleVersion")).toString().left(32);
    if (shortVersion.isEmpty() && build.isEmpty())
        return QString();
    if (shortVersion.isEmpty() || build.isEmpty() || shortVersion == build)
        return korvane::tr("version %1").arg(shortVersion.isEmpty() ? build : shortVersion);
    return korvane::tr("version %1 (%2)").arg(shortVersion, build);
}

DropInstall::Choice DropInstall::settle(FormatManager &manager, const QString &path,
                                        QString *target)
{
    const QString name = QFileInfo(path).fileName();
    QStringList installed;
    for (const PluginPtr &item : manager.items())
        if (item->name() == name)
            installed << manager.plugins().pathOnDisk(*item);
    if (installed.isEmpty())
        return Choice::Install;

    const auto described = [](const QString &copy) {
        const QString version = versionOf(copy);
        return version.isEmpty() ? copy : korvane::tr("%1 (%2)").arg(copy, version);
    };
    QStringList lines;
    for (const QString &copy : std::as_const(installed))
        lines << described(copy);
    Alert alert;
    alert.messageText = korvane::tr("“%1” is already installed").arg(name);
    alert.informativeText = korvane::tr("Installed: %1\nDropped: %2\n\nReplace puts the installed "
                                        "copies in the trash; Keep Both installs the dropped one "
                                        "switched off.")
                                .arg(lines.join(QStringLiteral("\n")), described(path));
    alert.buttons = {korvane::tr("Replace"), korvane::tr("Keep Both"), korvane::tr("Cancel")};
    alert.addedButtons = true;
    FileOperations &files = manager.files();
    switch (manager.ui().runAlert(alert)) {
    case AlertAnswer::First: {
        // The distribution's copy is its package manager's: never trashed, and the dropped one
        // beside it would be the duplicate Replace is meant to avoid.
        const DistributionGuard guard(manager.traits(), manager.locations());
        for (const PluginPtr &item : manager.items()) {
            const QString folder = manager.plugins().folderOnDisk(*item);
            if (item->name() != name || !guard.owns(folder))
                continue;
            const QString refusal = guard.refusal(
                name, folder, QString(), item->metadata() ? item->metadata()->package : QString());
            manager.parts().log.append(korvane::tr("%1 not installed: %2\n").arg(path, refusal));
            return Choice::Skip;
        }
        for (const QString &copy : std::as_const(installed)) {
            FileError error;
            QString trashedTo;
            if (!files.moveToTrash(copy, &error, &trashedTo)) {
                // The old copy stays; installing beside it would make the duplicate this avoids.
                manager.parts().log.append(
                    korvane::tr("%1 not installed: %2 could not go to the trash: %3\n")
                        .arg(name, copy, error.reason));
                return askToProceedAfter(manager.ui(), error) == FileErrorAnswer::Stop
                           ? Choice::Stop
                           : Choice::Skip;
            }
            manager.parts().log.append(
                korvane::tr("%1 was replaced and is now in the trash: %2\n").arg(copy, trashedTo));
        }
        return Choice::Install;
    }
    case AlertAnswer::Second:
        *target = manager.locations().folderPath(manager.traits(), LocUserDisabled)
                  + QLatin1Char('/') + name;
        return Choice::Install;
    default:
        return Choice::Skip;
    }
}

DropInstall::Choice DropInstall::copy(FormatManager &manager, const QString &path,
                                      const QString &target)
{
    // A fresh account may have no plug-in folder yet; a drop should still install.
    createFolders(manager.files(), target);
    FileError error;
    if (manager.files().copy(path, target, &error))
        return Choice::Install;
    manager.parts().log.append(korvane::tr("%1 not installed: %2\n").arg(path, error.reason));
    return askToProceedAfter(manager.ui(), error) == FileErrorAnswer::Stop ? Choice::Stop
                                                                           : Choice::Skip;
}

bool DropInstall::install(FormatManager &manager, const QStringList &paths)
{
    const FormatTraits &traits = manager.traits();
    UserInterface &ui = manager.ui();
    Alert alert;
    alert.style = Alert::Informational;
    alert.messageText = korvane::tr("Install Files");
    alert.informativeText = korvane::tr(traits.texts.installInformative);
    alert.buttons = {korvane::tr(traits.texts.installFirstButton), korvane::tr("All Files"),
                     korvane::tr("Cancel")};
    alert.addedButtons = true;
    const AlertAnswer answer = ui.runAlert(alert);
    if (answer != AlertAnswer::First && answer != AlertAnswer::Second)
        return false;
    const bool allFiles = answer == AlertAnswer::Second;

    ui.progressBegin(korvane::tr(traits.texts.installProgressTitle));
    ui.progressDetail(QString());
    FileOperations &files = manager.files();
    const int count = int(paths.size());
    int i = 0;
    {
        const CopyProgressScope bytes(files, copyProgressFor(ui, i, count));
        for (; i < count; ++i) {
            // A person may stop a long install between files; what was copied stays.
            if (ui.progressCancelled())
                break;
            const QString &path = paths.at(i);
            const QString name = lastPathComponent(path);
            ui.progressText(path);
            ui.progressDetail(QString());
            ui.progressValue(i + 1, count);
            const bool recognised =
                traits.recognise(traits.recognitionTakesFullPath ? path : name, nullptr);
            if (!recognised && !allFiles)
                continue;
            QString target = manager.locations().expand(traits.installPath(name));
            // An installed copy is asked about, and every failure said.
            Choice choice = settle(manager, path, &target);
            if (choice == Choice::Install)
                choice = copy(manager, path, target);
            if (choice == Choice::Stop) {
                ++i; // this one was tried
                break;
            }
        }
    }
    if (i < count) {
        const QString left = paths.mid(i).join(QStringLiteral(", "));
        systemLog(QStringLiteral("Stopped, not installed: %1").arg(left));
        manager.parts().log.append(korvane::tr("Stopped, not installed: %1\n").arg(left));
    }
    manager.rescan();
    ui.progressEnd();
    return true;
}

} // namespace korvane
