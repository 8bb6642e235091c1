#pragma once

#include <QString>
#include <QStringList>

namespace korvane {

class FormatManager;

// What a drop does with a plug-in already installed. It used to copy nothing and say nothing,
// or make a second, active copy in the user's folder beside a system one. Now the person hears
// where it is installed, with versions where the bundles tell them, and chooses: Replace (the
// installed copies to the trash, the dropped one where a drop installs), Keep Both (the dropped
// one switched off), or Cancel (this one not installed).
class DropInstall {
public:
    enum class Choice { Install, Skip, Stop };

    // Installs the dropped paths where the format installs, after asking whether only the
    // plug-ins the format recognises or all files; then rescans. False when the person cancelled
    // before anything was copied.
    static bool install(FormatManager &manager, const QStringList &paths);

    // Before the dropped item at path is copied to target: the installed copies of its name,
    // asked about and dealt with. target may become the format's disabled folder (Keep Both).
    static Choice settle(FormatManager &manager, const QString &path, QString *target);
    // Copies path to target and says a failure; Stop when the person stops the drop there.
    static Choice copy(FormatManager &manager, const QString &path, const QString &target);

    // "version 1.2 (120)", "version 1.2", or empty where the bundle says none.
    static QString versionOf(const QString &path);
};

} // namespace korvane
