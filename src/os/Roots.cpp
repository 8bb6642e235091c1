#include "os/Roots.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>

#include <pwd.h>
#include <unistd.h>

namespace korvane {

namespace {

QString clean(const QString &path)
{
    return path.isEmpty() ? path : QDir::cleanPath(path);
}

QString absolute(const QString &path)
{
    return path.isEmpty() ? path : QFileInfo(path).absoluteFilePath();
}

QString userDatabaseHome()
{
    // Without HOME (a stripped environment under a privileged helper) ask the user database.
    if (const passwd *entry = getpwuid(getuid()); entry && entry->pw_dir)
        return QFile::decodeName(entry->pw_dir);
    return QStringLiteral("/");
}

} // namespace

Roots Roots::fromEnvironment()
{
    const QString root = qEnvironmentVariable("KORVANE_ROOT");
    QString home = qEnvironmentVariable("HOME");
    if (home.isEmpty())
        home = userDatabaseHome();
    Roots roots = at(root.isEmpty() ? QStringLiteral("/") : absolute(root), absolute(home));
    // A relative data home is to be ignored, as the freedesktop rules say.
    const QString dataHome = qEnvironmentVariable("XDG_DATA_HOME");
    if (dataHome.startsWith(QLatin1Char('/')))
        roots.dataHome = clean(dataHome);
    for (const char *name : {"LV2_PATH", "VST3_PATH", "CLAP_PATH", "LADSPA_PATH", "DSSI_PATH",
                             "VST_PATH", "LXVST_PATH"})
        if (qEnvironmentVariableIsSet(name))
            roots.pluginPaths.insert(QLatin1String(name), qEnvironmentVariable(name));
    return roots;
}

QString Roots::missingFolder(bool checkRoot, bool checkHome) const
{
    const auto missing = [](const char *name, const QString &path) {
        return QStringLiteral("%1: no folder \"%2\"").arg(QLatin1String(name), path);
    };
    if (checkRoot && !QFileInfo(systemRoot).isDir())
        return missing("KORVANE_ROOT", systemRoot);
    if (checkHome && (home.isEmpty() || !QFileInfo(home).isDir()))
        return missing("HOME", home);
    return {};
}

QString Roots::refusalWithOptions(const QString &rootOption, const QString &homeOption) const
{
    // A mistyped root would be scanned as empty and get fresh folders made in it; a HOME pointing
    // nowhere would be created by the first write.
    if (!rootOption.isEmpty() && !QFileInfo(rootOption).isDir())
        return QStringLiteral("--root: no folder \"%1\"").arg(rootOption);
    if (!homeOption.isEmpty() && !QFileInfo(homeOption).isDir())
        return QStringLiteral("--home: no folder \"%1\"").arg(homeOption);
    return missingFolder(rootOption.isEmpty(), homeOption.isEmpty());
}

Roots Roots::withOptions(const QString &rootOption, const QString &homeOption) const
{
    Roots roots = *this;
    if (!rootOption.isEmpty())
        roots.systemRoot = QFileInfo(rootOption).absoluteFilePath();
    if (!homeOption.isEmpty()) {
        roots = at(roots.systemRoot, QFileInfo(homeOption).absoluteFilePath());
        roots.pluginPaths = pluginPaths;
    }
    return roots;
}

Roots Roots::at(const QString &systemRoot, const QString &home)
{
    Roots roots;
    roots.systemRoot = clean(systemRoot.isEmpty() ? QStringLiteral("/") : systemRoot);
    roots.home = clean(home);
    roots.dataHome = roots.home + QStringLiteral("/.local/share");
    return roots;
}

} // namespace korvane
