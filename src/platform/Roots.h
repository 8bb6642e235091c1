#pragma once

#include <QString>

namespace korvane {

// Where the system's "/Library" and the user's "~" are for one run of a program. A value handed
// to whoever resolves paths; only the programs' entry points read the environment for it.
struct Roots {
    QString systemRoot = QStringLiteral("/"); // "/Library" is this folder's Library
    QString home;                             // "~"
    QString dataHome;                         // the freedesktop data home; the trash is in it

    // KORVANE_ROOT (default "/"), HOME (else the user database) and XDG_DATA_HOME (ignored unless
    // absolute; default HOME/.local/share).
    static Roots fromEnvironment();
    // Roots under another system root and home; the data home follows the home.
    static Roots at(const QString &systemRoot, const QString &home);

    QString trashFolder() const { return dataHome + QStringLiteral("/Trash"); }
    bool operator==(const Roots &) const = default;
};

} // namespace korvane
