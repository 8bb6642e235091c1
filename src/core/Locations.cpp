#include "core/Locations.h"

#include "core/FormatTable.h"

#include <QDir>

namespace korvane {

namespace {
const QString kLibrary = QStringLiteral("/Library");
const QString kUsr = QStringLiteral("/usr");

bool startsWithFolder(const QString &path, const QString &folder)
{
    return path == folder
           || (path.startsWith(folder) && path.size() > folder.size()
               && path.at(folder.size()) == QLatin1Char('/'));
}
} // namespace

QString Locations::expand(const QString &path) const
{
    QString result = path;
    if (path == QLatin1String("~") || path.startsWith(QLatin1String("~/"))) {
        result = m_roots.home + path.mid(1);
    } else if (startsWithFolder(path, kLibrary) || startsWithFolder(path, kUsr)) {
        // With the root "/" this gives "/Library" unchanged.
        result = (m_roots.systemRoot == QLatin1String("/") ? QString() : m_roots.systemRoot) + path;
    }
    return result.isEmpty() ? result : QDir::cleanPath(result);
}

QString Locations::folderPath(const Format &format, int loc) const
{
    return expand(format.folder(loc));
}

std::array<QString, LocationCount> Locations::folderPaths(const Format &format) const
{
    std::array<QString, LocationCount> folders;
    for (int loc = 0; loc < LocationCount; ++loc)
        folders[size_t(loc)] = folderPath(format, loc);
    return folders;
}

QStringList Locations::allFolderPaths(const Format &format) const
{
    QStringList folders;
    folders.reserve(format.locationCount());
    for (int loc = 0; loc < format.locationCount(); ++loc)
        folders << folderPath(format, loc);
    return folders;
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

QStringList Locations::pluginFolders(const Format &format) const
{
    QStringList folders;
    for (int loc = 0; loc < format.locationCount(); ++loc) {
        folders << folderPath(format, loc);
        if (loc < LocationCount && !format.contentRoots[size_t(loc)].isEmpty())
            folders << expand(format.contentRoots[size_t(loc)]);
    }
    folders.removeDuplicates();
    return folders;
}

QStringList Locations::pluginFolders(const FormatTable &formats) const
{
    QStringList folders;
    for (const Format &format : formats)
        folders << pluginFolders(format);
    folders.removeDuplicates();
    return folders;
}

} // namespace korvane
