#pragma once

#include <QHash>
#include <QString>

namespace korvane {

// Where the system's "/Library" and the user's "~" are for one run of a program. A value handed
// to whoever resolves paths; only the programs' entry points read the environment for it.
struct Roots {
    QString systemRoot = QStringLiteral("/"); // "/Library" is this folder's Library
    QString home;                             // "~"
    QString dataHome;                         // the freedesktop data home; the trash is in it
    // The plug-in hosts' folder variables as the environment gave them ("LV2_PATH" -> "a:b").
    QHash<QString, QString> pluginPaths;

    // KORVANE_ROOT (default "/"), HOME (else the user database) and XDG_DATA_HOME (ignored unless
    // absolute; default HOME/.local/share), and the hosts' folder variables (LV2_PATH, VST3_PATH,
    // CLAP_PATH, LADSPA_PATH, DSSI_PATH, VST_PATH, LXVST_PATH). A relative root or home is taken
    // from the current folder, as --root and --home are.
    static Roots fromEnvironment();
    // Roots under another system root and home; the data home follows the home.
    static Roots at(const QString &systemRoot, const QString &home);

    // Why roots read from the environment cannot be used: the first of the system root (when
    // checkRoot) and the home (when checkHome) that is not a folder, as "HOME: no folder \"...\"";
    // empty when they are. A program refuses to start then, as it refuses a wrong --root or --home:
    // a missing root would be scanned as empty and a missing home created.
    QString missingFolder(bool checkRoot = true, bool checkHome = true) const;

    // Both programs' --root and --home (empty: not given). Why the roots they make cannot be used:
    // an option that names no folder ("--root: no folder \"...\""), else missingFolder for what
    // they leave in place; empty when every folder is there.
    QString refusalWithOptions(const QString &rootOption, const QString &homeOption) const;
    // These roots with the options over them; a new home brings its data home, and the hosts'
    // folder variables stay.
    Roots withOptions(const QString &rootOption, const QString &homeOption) const;

    QString trashFolder() const { return dataHome + QStringLiteral("/Trash"); }
    bool operator==(const Roots &) const = default;
};

} // namespace korvane
