#include "platform/Locations.h"

#include <QDir>
#include <QFile>

#include <pwd.h>
#include <unistd.h>

namespace korvane {

namespace {

const char *const kFormatFolders[TypeCount] = {
    "/Library/Audio/Plug-Ins/Components",
    "/Library/Application Support/Digidesign/Plug-Ins",
    "/Library/Audio/Plug-Ins/MAS",
    "/Library/Audio/Plug-Ins/VST",
};

const QString kLibrary = QStringLiteral("/Library");

} // namespace

QString Locations::systemRoot()
{
    const QString root = qEnvironmentVariable("KORVANE_ROOT");
    return root.isEmpty() ? QStringLiteral("/") : QDir::cleanPath(root);
}

QString Locations::home()
{
    QString home = qEnvironmentVariable("HOME");
    if (home.isEmpty()) {
        // Without HOME (a stripped environment under a privileged helper) ask the user database.
        if (const passwd *entry = getpwuid(getuid()); entry && entry->pw_dir)
            home = QFile::decodeName(entry->pw_dir);
        else
            home = QStringLiteral("/");
    }
    return QDir::cleanPath(home);
}

QString Locations::expand(const QString &path)
{
    QString result = path;
    if (path == QLatin1String("~") || path.startsWith(QLatin1String("~/"))) {
        result = home() + path.mid(1);
    } else if (path == kLibrary || path.startsWith(kLibrary + QLatin1Char('/'))) {
        const QString root = systemRoot();
        // With the root "/" this gives "/Library" unchanged.
        result = (root == QLatin1String("/") ? QString() : root) + path;
    }
    return result.isEmpty() ? result : QDir::cleanPath(result);
}

QString Locations::folder(int type, int loc)
{
    if (!isValidType(type) || !isValidLocation(loc))
        return {};
    QString path = QString::fromLatin1(kFormatFolders[type]);
    if (loc == LocUserActive || loc == LocUserDisabled)
        path.prepend(QLatin1Char('~'));
    if (loc == LocSystemDisabled || loc == LocUserDisabled)
        path += QStringLiteral(" (Disabled)");
    return path;
}

QString Locations::folderPath(int type, int loc)
{
    return expand(folder(type, loc));
}

QString Locations::supportFolder()
{
    return QStringLiteral("~/Library/Application Support/Korvane");
}

QString Locations::dataFile(const QString &fileName)
{
    return supportFolder() + QLatin1Char('/') + fileName;
}

QString Locations::userPreferencesFile()
{
    return QStringLiteral("~/Library/Preferences/com.velmora.Korvane.plist");
}

QString Locations::machinePreferencesFile()
{
    return QStringLiteral("/Library/Preferences/com.velmora.Korvane.plist");
}

QString typePrefix(int type)
{
    static const char *const prefixes[TypeCount] = {"AU", "RTAS", "MAS", "VST"};
    return isValidType(type) ? QString::fromLatin1(prefixes[type]) : QString();
}

} // namespace korvane
